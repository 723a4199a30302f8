// Position, from 1, of the first element of largest magnitude, on a team: by the rule of one thread (iamax.hpp), by
// which an element takes over unless the best so far is at least as large, and all that is in front of a NaN has no
// say.
#include <cstdlib>

#include "blas/thread/common/level1/vector_team_omp.hpp"

namespace qrv {
namespace {

template <class T>
int iamax_omp(int threads, int n, Vector<const T> x) {
    const auto magnitude = [&](int position) { return abs1(x[position - 1]); };
    return of_slices(
        threads, n,
        [&](Slice part) {
            const int found = kernel::iamax_slice(part.count, slice_of(x, n, part));
            return found < 0 ? found - part.first : found > 0 ? found + part.first : 0;
        },
        [&](const int* found, int count) {
            int best = 0;
            for (int i = 0; i < count; ++i) {
                const int position = std::abs(found[i]);
                if (found[i] < 0 || (found[i] > 0 && !(best > 0 && magnitude(best) >= magnitude(position))))
                    best = position;
            }
            return best;
        });
}

template <class T>
int iamax(int n, Vector<const T> x) {
    const int threads = vector_threads(row_for<T>(isamaxRow, icamaxRow), n, x.inc, x.inc, ThisMachine{});
    return threads > 1 ? iamax_omp(threads, n, x) : kernel::iamax(n, x);
}

} // namespace
} // namespace qrv

using namespace qrv;

int qrv_blas_isamax(QRV_VECTOR(float)) {
    return iamax<float>(*n, {x, *incx});
}
int qrv_blas_icamax(QRV_VECTOR(SingleComplex)) {
    return iamax<SingleComplex>(*n, {x, *incx});
}
int qrv_blas_isamax_omp(const int* threads, QRV_VECTOR(float)) {
    return iamax_omp<float>(*threads, *n, {x, *incx});
}
int qrv_blas_icamax_omp(const int* threads, QRV_VECTOR(SingleComplex)) {
    return iamax_omp<SingleComplex>(*threads, *n, {x, *incx});
}
