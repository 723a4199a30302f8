// Plane rotation of x and y on a team.
#include "blas/thread/common/level1/vector_team_omp.hpp"

namespace qrv {
namespace {

void rot_omp(int threads, int n, Vector<float> x, Vector<float> y, float c, float s) {
    on_slices(threads, n,
              [&](Slice part) { kernel::rot(part.count, slice_of(x, n, part), slice_of(y, n, part), c, s); });
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
