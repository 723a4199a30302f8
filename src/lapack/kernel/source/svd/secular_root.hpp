// A root of a secular equation, a sum of poles that grows between them:
//
//   f(x) = constant + sum of w(j) / (p(j) - x) = 0,   w(j) >= 0
//
// A step solves c + s1 / (p(1) - x) + s2 / (p(2) - x) = 0 for the two poles beside the root, such that the value of f
// and the slopes of the terms on either side fit. What leaves the bracket, or does not make f half as large, is
// replaced by a bisection.
#pragma once

#include <algorithm>
#include <cmath>

namespace qrv::lapack {

struct SecularValue {
    double f, size, slopeBelow, slopeAbove; // size: of the terms; slopes: of those on either side of the root
};

// The step from x, as far from the two poles as `below` and `above`. Beyond the last pole it is above both.
inline double two_pole_step(const SecularValue& v, double below, double above, bool beyond) {
    const double c = v.f - below * v.slopeBelow - above * v.slopeAbove,
                 a = (below + above) * v.f - below * above * (v.slopeBelow + v.slopeAbove), b = below * above * v.f;
    const double root = std::sqrt(std::max(0.0, a * a - 4 * b * c));
    if (beyond)
        return a >= 0 ? (a + root) / (2 * c) : 2 * b / (a - root);
    return a <= 0 ? (a - root) / (2 * c) : 2 * b / (a + root);
}

// The root in [low, high], from x on, where f is `v`; `at` gives f, p1 and p2 are the poles. False if there is no end.
template <class At>
bool find_secular_root(const At& at, double p1, double p2, bool beyond, double low, double high, double& x,
                       SecularValue v) {
    constexpr int mostSteps = 400;
    constexpr double accuracy = 0x1p-32;  // of x and of f, relative
    constexpr double smallStep = 0x1p-19; // behind such a step, as they converge quadratically
    double before = HUGE_VAL;
    for (int step = 0; step < mostSteps; ++step) {
        if (!(std::fabs(v.f) <= HUGE_VAL))
            return false;
        if (std::fabs(v.f) <= accuracy * v.size)
            return true;
        (v.f < 0 ? low : high) = x;
        double next = x + two_pole_step(v, p1 - x, p2 - x, beyond);
        if (!(next > low && next < high) || (step > 2 && std::fabs(v.f) > before / 2))
            next = low + (high - low) / 2;
        const double moved = std::fabs(next - x);
        x = next;
        if (moved <= smallStep * std::fabs(x) && step > 0)
            return true;
        before = std::fabs(v.f);
        v = at(x);
    }
    return false;
}

} // namespace qrv::lapack
