// Plane rotations of x and y on a team, and modified ones.
#include "blas/thread/common/level1/vector_team_omp.hpp"

namespace qrv {
namespace {

void rot_omp(int threads, int n, Vector<float> x, Vector<float> y, float c, float s) {
    on_slices(threads, n,
              [&](Slice part) { kernel::rot(part.count, slice_of(x, n, part), slice_of(y, n, part), c, s); });
}
void rotm_omp(int threads, int n, Vector<float> x, Vector<float> y, const float* param) {
    on_slices(threads, n,
              [&](Slice part) { kernel::rotm(part.count, slice_of(x, n, part), slice_of(y, n, part), param); });
}

} // namespace

void blas::rot(int n, Vector<float> x, Vector<float> y, float c, float s) {
    const int threads = vector_threads(srotRow, n, x.inc, y.inc, ThisMachine{});
    if (threads > 1)
        rot_omp(threads, n, x, y, c, s);
    else
        kernel::rot(n, x, y, c, s);
}

} // namespace qrv

using namespace qrv;

void qrv_blas_srot(const int* n, float* x, const int* incx, float* y, const int* incy, const float* c, const float* s) {
    blas::rot(*n, {x, *incx}, {y, *incy}, *c, *s);
}
void qrv_blas_srot_omp(const int* threads, const int* n, float* x, const int* incx, float* y, const int* incy,
                       const float* c, const float* s) {
    rot_omp(*threads, *n, {x, *incx}, {y, *incy}, *c, *s);
}
void qrv_blas_srotm(QRV_BOTH_VECTORS(float), const float* param) {
    const int threads = vector_threads(srotmRow, *n, *incx, *incy, ThisMachine{});
    if (threads > 1)
        rotm_omp(threads, *n, {x, *incx}, {y, *incy}, param);
    else
        qrv_blas_srotm_kernel(n, x, incx, y, incy, param);
}
void qrv_blas_srotm_omp(const int* threads, QRV_BOTH_VECTORS(float), const float* param) {
    rotm_omp(*threads, *n, {x, *incx}, {y, *incy}, param);
}
