// y := alpha*x + y on a team.
#include "blas/thread/common/level1/vector_team_omp.hpp"

namespace qrv {
namespace {

template <auto& kernel, class T>
void axpy_omp(int threads, int n, const T* alpha, VectorOperand<const T> x, VectorOperand<T> y) {
    on_slices(threads, n,
              [&](Slice part) { kernel(&part.count, alpha, x.slice(part), &x.inc, y.slice(part), &y.inc); });
}

} // namespace
} // namespace qrv

using namespace qrv;

void qrv_blas_saxpy(const int* n, const float* alpha, const float* x, const int* incx, float* y, const int* incy) {
    call_by_length<saxpyRow, qrv_blas_saxpy_kernel, qrv_blas_saxpy_omp>(*n, *incx, *incy, n, alpha, x, incx, y, incy);
}
void qrv_blas_caxpy(const int* n, const qrv_complex* alpha, const qrv_complex* x, const int* incx, qrv_complex* y,
                    const int* incy) {
    call_by_length<caxpyRow, qrv_blas_caxpy_kernel, qrv_blas_caxpy_omp>(*n, *incx, *incy, n, alpha, x, incx, y, incy);
}
void qrv_blas_saxpy_omp(const int* threads, const int* n, const float* alpha, const float* x, const int* incx, float* y,
                        const int* incy) {
    axpy_omp<qrv_blas_saxpy_kernel>(*threads, *n, alpha, {x, *n, *incx}, {y, *n, *incy});
}
void qrv_blas_caxpy_omp(const int* threads, const int* n, const qrv_complex* alpha, const qrv_complex* x,
                        const int* incx, qrv_complex* y, const int* incy) {
    axpy_omp<qrv_blas_caxpy_kernel>(*threads, *n, alpha, {x, *n, *incx}, {y, *n, *incy});
}
