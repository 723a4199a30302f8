// Exchange of x and y on a team.
#include "blas/thread/common/level1/vector_team_omp.hpp"

namespace qrv {
namespace {

template <auto& kernel, class T>
void swap_omp(int threads, int n, VectorOperand<T> x, VectorOperand<T> y) {
    on_slices(threads, n, [&](Slice part) { kernel(&part.count, x.slice(part), &x.inc, y.slice(part), &y.inc); });
}

} // namespace
} // namespace qrv

using namespace qrv;

void qrv_blas_sswap(const int* n, float* x, const int* incx, float* y, const int* incy) {
    call_by_length<sswapRow, qrv_blas_sswap_kernel, qrv_blas_sswap_omp>(*n, *incx, *incy, n, x, incx, y, incy);
}
void qrv_blas_cswap(const int* n, qrv_complex* x, const int* incx, qrv_complex* y, const int* incy) {
    call_by_length<cswapRow, qrv_blas_cswap_kernel, qrv_blas_cswap_omp>(*n, *incx, *incy, n, x, incx, y, incy);
}
void qrv_blas_sswap_omp(const int* threads, const int* n, float* x, const int* incx, float* y, const int* incy) {
    swap_omp<qrv_blas_sswap_kernel, float>(*threads, *n, {x, *n, *incx}, {y, *n, *incy});
}
void qrv_blas_cswap_omp(const int* threads, const int* n, qrv_complex* x, const int* incx, qrv_complex* y,
                        const int* incy) {
    swap_omp<qrv_blas_cswap_kernel, SingleComplex>(*threads, *n, {x, *n, *incx}, {y, *n, *incy});
}
