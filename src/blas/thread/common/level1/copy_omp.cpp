// y := x on a team.
#include "blas/thread/common/level1/vector_team_omp.hpp"

namespace qrv {
namespace {

template <class T>
void copy_omp(int threads, int n, Vector<const T> x, Vector<T> y) {
    on_slices(threads, n, [&](Slice part) { kernel::copy(part.count, slice_of(x, n, part), slice_of(y, n, part)); });
}

} // namespace

template <class T>
void blas::copy(int n, VectorIn<T> x, Vector<T> y) {
    const int threads = vector_threads(row_for<T>(scopyRow, ccopyRow), n, x.inc, y.inc, ThisMachine{});
    if (threads > 1)
        copy_omp<T>(threads, n, x, y);
    else
        kernel::copy(n, x, y);
}

template void blas::copy(int, Vector<const float>, Vector<float>);
template void blas::copy(int, Vector<const SingleComplex>, Vector<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_scopy(const int* n, const float* x, const int* incx, float* y, const int* incy) {
    blas::copy<float>(*n, {x, *incx}, {y, *incy});
}
void qrv_blas_ccopy(const int* n, const qrv_complex* x, const int* incx, qrv_complex* y, const int* incy) {
    blas::copy<SingleComplex>(*n, {x, *incx}, {y, *incy});
}
void qrv_blas_scopy_omp(const int* threads, const int* n, const float* x, const int* incx, float* y, const int* incy) {
    copy_omp<float>(*threads, *n, {x, *incx}, {y, *incy});
}
void qrv_blas_ccopy_omp(const int* threads, const int* n, const qrv_complex* x, const int* incx, qrv_complex* y,
                        const int* incy) {
    copy_omp<SingleComplex>(*threads, *n, {x, *incx}, {y, *incy});
}
