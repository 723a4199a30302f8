// SLAED6: the root that is nearest to 0 of a secular equation with three poles.
#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/secular_root.hpp"

namespace qrv::lapack {

int laed6(bool betweenLast, float rho, const float* d, const float* z, float atZero, float* tau) {
    const int lower = betweenLast ? 1 : 0;
    const auto at = [&](double x) {
        SecularValue v{rho, std::fabs(double{rho}), 0, 0};
        for (int j = 0; j < 3; ++j) {
            const double quotient = z[j] / (d[j] - x);
            v.f += quotient;
            v.size += std::fabs(quotient);
            (j <= lower ? v.slopeBelow : v.slopeAbove) += quotient / (d[j] - x);
        }
        return v;
    };
    double low = d[lower], high = d[lower + 1], x = 0;
    (atZero < 0 ? low : high) = 0;
    SecularValue v = at(0);
    v.f = atZero;
    *tau = 0;
    if (atZero == 0)
        return 0;
    const bool found = find_secular_root(at, d[lower], d[lower + 1], false, low, high, x, v);
    *tau = static_cast<float>(x);
    return found ? 0 : 1;
}

} // namespace qrv::lapack
