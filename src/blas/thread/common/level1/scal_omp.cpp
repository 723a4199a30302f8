// x := alpha*x on a team, by an element or by a real factor.
#include "blas/thread/common/level1/vector_team_omp.hpp"

namespace qrv {
namespace {

template <class Alpha, class T>
void scal_omp(int threads, int n, Alpha alpha, Vector<T> x) {
    on_slices(threads, n, [&](Slice part) { kernel::scal(part.count, alpha, slice_of(x, n, part)); });
}

template <class Alpha, class T>
void scal(const VectorRow& row, int n, Alpha alpha, Vector<T> x) {
    const int threads = vector_threads(row, n, x.inc, x.inc, ThisMachine{});
    if (threads > 1)
        scal_omp(threads, n, alpha, x);
    else
        kernel::scal(n, alpha, x);
}

} // namespace
} // namespace qrv

using namespace qrv;

void qrv_blas_sscal(const int* n, const float* alpha, float* x, const int* incx) {
    scal<float, float>(sscalRow, *n, *alpha, {x, *incx});
}
void qrv_blas_cscal(const int* n, const qrv_complex* alpha, qrv_complex* x, const int* incx) {
    scal<SingleComplex, SingleComplex>(cscalRow, *n, *alpha, {x, *incx});
}
void qrv_blas_csscal(const int* n, const float* alpha, qrv_complex* x, const int* incx) {
    scal<float, SingleComplex>(csscalRow, *n, *alpha, {x, *incx});
}
void qrv_blas_sscal_omp(const int* threads, const int* n, const float* alpha, float* x, const int* incx) {
    scal_omp<float, float>(*threads, *n, *alpha, {x, *incx});
}
void qrv_blas_cscal_omp(const int* threads, const int* n, const qrv_complex* alpha, qrv_complex* x, const int* incx) {
    scal_omp<SingleComplex, SingleComplex>(*threads, *n, *alpha, {x, *incx});
}
void qrv_blas_csscal_omp(const int* threads, const int* n, const float* alpha, qrv_complex* x, const int* incx) {
    scal_omp<float, SingleComplex>(*threads, *n, *alpha, {x, *incx});
}
