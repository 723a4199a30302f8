// The sum of magnitudes on a team: of the sums of its slices.
#include "blas/thread/common/level1/vector_team_omp.hpp"

namespace qrv {
namespace {

template <class T>
float asum_omp(int threads, int n, Vector<const T> x) {
    return of_slices(
        threads, n, [&](Slice part) { return kernel::asum(part.count, slice_of(x, n, part)); }, sum<float>);
}

template <class T>
float asum(int n, Vector<const T> x) {
    const int threads = vector_threads(row_for<T>(sasumRow, scasumRow), n, x.inc, x.inc, ThisMachine{});
    return threads > 1 ? asum_omp(threads, n, x) : kernel::asum(n, x);
}

} // namespace
} // namespace qrv

using namespace qrv;

float qrv_blas_sasum(QRV_VECTOR(float)) {
    return asum<float>(*n, {x, *incx});
}
float qrv_blas_scasum(QRV_VECTOR(SingleComplex)) {
    return asum<SingleComplex>(*n, {x, *incx});
}
float qrv_blas_sasum_omp(const int* threads, QRV_VECTOR(float)) {
    return asum_omp<float>(*threads, *n, {x, *incx});
}
float qrv_blas_scasum_omp(const int* threads, QRV_VECTOR(SingleComplex)) {
    return asum_omp<SingleComplex>(*threads, *n, {x, *incx});
}
