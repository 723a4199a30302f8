// y := x on a team.
#include "blas/thread/common/level1/vector_team_omp.hpp"

namespace qrv {
namespace {

template <auto& kernel, class T>
void copy_omp(int threads, int n, VectorOperand<const T> x, VectorOperand<T> y) {
    on_slices(threads, n, [&](Slice part) { kernel(&part.count, x.slice(part), &x.inc, y.slice(part), &y.inc); });
}

} // namespace
} // namespace qrv

using namespace qrv;

void qrv_blas_scopy(const int* n, const float* x, const int* incx, float* y, const int* incy) {
    call_by_length<scopyRow, qrv_blas_scopy_kernel, qrv_blas_scopy_omp>(*n, *incx, *incy, n, x, incx, y, incy);
}
void qrv_blas_ccopy(const int* n, const qrv_complex* x, const int* incx, qrv_complex* y, const int* incy) {
    call_by_length<ccopyRow, qrv_blas_ccopy_kernel, qrv_blas_ccopy_omp>(*n, *incx, *incy, n, x, incx, y, incy);
}
void qrv_blas_scopy_omp(const int* threads, const int* n, const float* x, const int* incx, float* y, const int* incy) {
    copy_omp<qrv_blas_scopy_kernel, float>(*threads, *n, {x, *n, *incx}, {y, *n, *incy});
}
void qrv_blas_ccopy_omp(const int* threads, const int* n, const qrv_complex* x, const int* incx, qrv_complex* y,
                        const int* incy) {
    copy_omp<qrv_blas_ccopy_kernel, SingleComplex>(*threads, *n, {x, *n, *incx}, {y, *n, *incy});
}
