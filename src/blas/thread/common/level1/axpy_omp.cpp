// y := alpha*x + y on a team.
#include "blas/thread/common/level1/vector_team_omp.hpp"

namespace qrv {
namespace {

template <class T>
void axpy_omp(int threads, int n, T alpha, Vector<const T> x, Vector<T> y) {
    on_slices(threads, n,
              [&](Slice part) { kernel::axpy(part.count, alpha, slice_of(x, n, part), slice_of(y, n, part)); });
}

} // namespace

template <class T>
void blas::axpy(int n, Scalar<T> alpha, VectorIn<T> x, Vector<T> y) {
    const int threads = vector_threads(row_for<T>(saxpyRow, caxpyRow), n, x.inc, y.inc, ThisMachine{});
    if (threads > 1)
        axpy_omp<T>(threads, n, alpha, x, y);
    else
        kernel::axpy(n, alpha, x, y);
}

template void blas::axpy(int, float, Vector<const float>, Vector<float>);
template void blas::axpy(int, SingleComplex, Vector<const SingleComplex>, Vector<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_saxpy(const int* n, const float* alpha, const float* x, const int* incx, float* y, const int* incy) {
    blas::axpy<float>(*n, *alpha, {x, *incx}, {y, *incy});
}
void qrv_blas_caxpy(const int* n, const qrv_complex* alpha, const qrv_complex* x, const int* incx, qrv_complex* y,
                    const int* incy) {
    blas::axpy<SingleComplex>(*n, *alpha, {x, *incx}, {y, *incy});
}
void qrv_blas_saxpy_omp(const int* threads, const int* n, const float* alpha, const float* x, const int* incx, float* y,
                        const int* incy) {
    axpy_omp<float>(*threads, *n, *alpha, {x, *incx}, {y, *incy});
}
void qrv_blas_caxpy_omp(const int* threads, const int* n, const qrv_complex* alpha, const qrv_complex* x,
                        const int* incx, qrv_complex* y, const int* incy) {
    axpy_omp<SingleComplex>(*threads, *n, *alpha, {x, *incx}, {y, *incy});
}
