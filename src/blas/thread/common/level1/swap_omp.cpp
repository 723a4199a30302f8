// Exchange of x and y on a team.
#include "blas/thread/common/level1/vector_team_omp.hpp"

namespace qrv {
namespace {

template <class T>
void swap_omp(int threads, int n, Vector<T> x, Vector<T> y) {
    on_slices(threads, n, [&](Slice part) { kernel::swap(part.count, slice_of(x, n, part), slice_of(y, n, part)); });
}

} // namespace

template <class T>
void blas::swap(int n, Vector<T> x, Vector<T> y) {
    const int threads = vector_threads(row_for<T>(sswapRow, cswapRow), n, x.inc, y.inc, ThisMachine{});
    if (threads > 1)
        swap_omp(threads, n, x, y);
    else
        kernel::swap(n, x, y);
}

template void blas::swap(int, Vector<float>, Vector<float>);
template void blas::swap(int, Vector<SingleComplex>, Vector<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_sswap(const int* n, float* x, const int* incx, float* y, const int* incy) {
    blas::swap<float>(*n, {x, *incx}, {y, *incy});
}
void qrv_blas_cswap(const int* n, qrv_complex* x, const int* incx, qrv_complex* y, const int* incy) {
    blas::swap<SingleComplex>(*n, {x, *incx}, {y, *incy});
}
void qrv_blas_sswap_omp(const int* threads, const int* n, float* x, const int* incx, float* y, const int* incy) {
    swap_omp<float>(*threads, *n, {x, *incx}, {y, *incy});
}
void qrv_blas_cswap_omp(const int* threads, const int* n, qrv_complex* x, const int* incx, qrv_complex* y,
                        const int* incy) {
    swap_omp<SingleComplex>(*threads, *n, {x, *incx}, {y, *incy});
}
