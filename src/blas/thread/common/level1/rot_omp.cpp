// Plane rotation of x and y on a team.
#include "blas/thread/common/level1/vector_team_omp.hpp"

using namespace qrv;

void qrv_blas_srot(const int* n, float* x, const int* incx, float* y, const int* incy, const float* c, const float* s) {
    call_by_length<srotRow, qrv_blas_srot_kernel, qrv_blas_srot_omp>(*n, *incx, *incy, n, x, incx, y, incy, c, s);
}
void qrv_blas_srot_omp(const int* threads, const int* n, float* x, const int* incx, float* y, const int* incy,
                       const float* c, const float* s) {
    const VectorOperand<float> vx{x, *n, *incx}, vy{y, *n, *incy};
    on_slices(*threads, *n,
              [&](Slice part) { qrv_blas_srot_kernel(&part.count, vx.slice(part), incx, vy.slice(part), incy, c, s); });
}
