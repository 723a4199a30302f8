// Inner products on a team. Each thread forms that of its slices; the partial results are added up afterwards, so the
// last bits depend on the team's size, and on nothing else.
#include "blas/thread/common/level1/vector_team_omp.hpp"

namespace qrv {
namespace {

template <bool conjugated, class T>
T dot_of(int n, Vector<const T> x, Vector<const T> y) {
    return conjugated ? kernel::dotc(n, x, y) : kernel::dotu(n, x, y);
}

template <bool conjugated, class T>
T dot_omp(int threads, int n, Vector<const T> x, Vector<const T> y) {
    return of_slices(
        threads, n,
        [&](Slice part) { return dot_of<conjugated>(part.count, slice_of(x, n, part), slice_of(y, n, part)); },
        [](const T* partial, int count) { return sum(partial, count); });
}

template <bool conjugated, class T>
T dot(int n, Vector<const T> x, Vector<const T> y) {
    const int threads =
        vector_threads(row_for<T>(sdotRow, conjugated ? cdotcRow : cdotuRow), n, x.inc, y.inc, ThisMachine{});
    return threads > 1 ? dot_omp<conjugated>(threads, n, x, y) : dot_of<conjugated>(n, x, y);
}

} // namespace

float blas::dotc(int n, Vector<const float> x, Vector<const float> y) {
    return dot<true>(n, x, y);
}
SingleComplex blas::dotc(int n, Vector<const SingleComplex> x, Vector<const SingleComplex> y) {
    return dot<true>(n, x, y);
}
SingleComplex blas::dotu(int n, Vector<const SingleComplex> x, Vector<const SingleComplex> y) {
    return dot<false>(n, x, y);
}

} // namespace qrv

using namespace qrv;

float qrv_blas_sdot(const int* n, const float* x, const int* incx, const float* y, const int* incy) {
    return dot<true, float>(*n, {x, *incx}, {y, *incy});
}
void qrv_blas_cdotc(qrv_complex* result, const int* n, const qrv_complex* x, const int* incx, const qrv_complex* y,
                    const int* incy) {
    *result = dot<true, SingleComplex>(*n, {x, *incx}, {y, *incy});
}
void qrv_blas_cdotu(qrv_complex* result, const int* n, const qrv_complex* x, const int* incx, const qrv_complex* y,
                    const int* incy) {
    *result = dot<false, SingleComplex>(*n, {x, *incx}, {y, *incy});
}
float qrv_blas_sdot_omp(const int* threads, const int* n, const float* x, const int* incx, const float* y,
                        const int* incy) {
    return dot_omp<true, float>(*threads, *n, {x, *incx}, {y, *incy});
}
void qrv_blas_cdotc_omp(const int* threads, qrv_complex* result, const int* n, const qrv_complex* x, const int* incx,
                        const qrv_complex* y, const int* incy) {
    *result = dot_omp<true, SingleComplex>(*threads, *n, {x, *incx}, {y, *incy});
}
void qrv_blas_cdotu_omp(const int* threads, qrv_complex* result, const int* n, const qrv_complex* x, const int* incx,
                        const qrv_complex* y, const int* incy) {
    *result = dot_omp<false, SingleComplex>(*threads, *n, {x, *incx}, {y, *incy});
}
