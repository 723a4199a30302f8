// SLARRK: one eigenvalue of a symmetric tridiagonal matrix by bisection.
#include "lapack/calls/bisection.hpp"

namespace qrv::lapack {

FoundValue larrk(int n, int number, float low, float high, const float* d, const float* e2, float leastPivot,
                 float relativeTolerance) {
    if (n <= 0)
        return {};
    Interval range{low, high};
    range.widen(2 * range.size() * machine::precision * static_cast<float>(n) + 4 * leastPivot);
    const BisectionTolerance tolerance{4 * leastPivot, relativeTolerance};
    range = find_value({n, d, e2, leastPivot}, number, range, tolerance);
    return {range.middle(), std::fabs(range.high - range.low) / 2, tolerance.met_by(range)};
}

} // namespace qrv::lapack
