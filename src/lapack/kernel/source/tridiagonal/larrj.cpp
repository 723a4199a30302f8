// SLARRJ: eigenvalues of a symmetric tridiagonal matrix refined by bisection to an accuracy beside their own size.
#include "lapack/calls/mrrr.hpp"

namespace qrv::lapack {

void larrj(const Sturm& t, int m, int number, float* w, float* werr, float tolerance, float diameter) {
    const int steps = bisection_steps(diameter, t.leastPivot);
    constexpr int doublings = 260; // from the smallest to the largest number
    for (int i = 0; i < m; ++i, ++number) {
        Interval range{w[i] - werr[i], w[i] + werr[i]};
        float step = std::max(werr[i], t.leastPivot);
        for (int k = 0; k < doublings && t.count(range.low) >= number; ++k, step *= 2)
            range.low -= step;
        step = std::max(werr[i], t.leastPivot);
        for (int k = 0; k < doublings && t.count(range.high) < number; ++k, step *= 2)
            range.high += step;
        for (int k = 0; k < steps && !((range.high - range.low) / 2 < tolerance * range.size()); ++k) {
            const float middle = range.middle();
            (t.count(middle) < number ? range.low : range.high) = middle;
        }
        w[i] = range.middle();
        werr[i] = range.high - w[i];
    }
}

} // namespace qrv::lapack
