// The Euclidean norm on a team: from the sums of squares of its slices, in double as one thread has them.
#include <cmath>

#include "blas/thread/common/level1/vector_team_omp.hpp"

namespace qrv {
namespace {

template <class T>
float nrm2_omp(int threads, int n, Vector<const T> x) {
    const double squares = of_slices(
        threads, n, [&](Slice part) { return kernel::squares(part.count, slice_of(x, n, part)); }, sum<double>);
    return static_cast<float>(std::sqrt(squares));
}

template <class T>
float nrm2(int n, Vector<const T> x) {
    const int threads = vector_threads(row_for<T>(snrm2Row, scnrm2Row), n, x.inc, x.inc, ThisMachine{});
    return threads > 1 ? nrm2_omp(threads, n, x) : kernel::nrm2(n, x);
}

} // namespace
} // namespace qrv

using namespace qrv;

float qrv_blas_snrm2(QRV_VECTOR(float)) {
    return nrm2<float>(*n, {x, *incx});
}
float qrv_blas_scnrm2(QRV_VECTOR(SingleComplex)) {
    return nrm2<SingleComplex>(*n, {x, *incx});
}
float qrv_blas_snrm2_omp(const int* threads, QRV_VECTOR(float)) {
    return nrm2_omp<float>(*threads, *n, {x, *incx});
}
float qrv_blas_scnrm2_omp(const int* threads, QRV_VECTOR(SingleComplex)) {
    return nrm2_omp<SingleComplex>(*threads, *n, {x, *incx});
}
