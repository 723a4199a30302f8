// SLAR1V: a vector from the twisted factorization N D N' of L D L' - lambda, whose row r is the last one from both
// ends.
#include "lapack/kernel/source/tridiagonal/mrrr.hpp"

namespace qrv::lapack {
namespace {

constexpr float eps = machine::precision;

// Multipliers from both ends, and what is carried along: s without lambda from the front, p from the back.
struct TwistWork {
    float *lPlus, *uMinus, *s, *p;
};

// From row 0 to row `end`; counts negative pivots before row `counted`. With `guarded` no pivot is 0.
int eliminate_down(const Representation& x, float lambda, int end, int counted, bool guarded, float leastPivot,
                   const TwistWork& t) {
    int negative = 0;
    float s = -lambda;
    t.s[0] = 0;
    for (int i = 0; i < end; ++i) {
        float pivot = x.d[i] + s;
        if (guarded && std::fabs(pivot) < leastPivot)
            pivot = -leastPivot;
        t.lPlus[i] = x.ld[i] / pivot;
        negative += i < counted && pivot < 0;
        t.s[i + 1] = s * t.lPlus[i] * x.l[i];
        if (guarded && t.lPlus[i] == 0)
            t.s[i + 1] = x.lld[i];
        s = t.s[i + 1] - lambda;
    }
    return negative;
}

// From the last row to row `end`; counts negative pivots.
int eliminate_up(const Representation& x, float lambda, int end, bool guarded, float leastPivot, const TwistWork& t) {
    int negative = 0;
    t.p[x.n - 1] = x.d[x.n - 1] - lambda;
    for (int i = x.n - 2; i >= end; --i) {
        float pivot = x.lld[i] + t.p[i + 1];
        if (guarded && std::fabs(pivot) < leastPivot)
            pivot = -leastPivot;
        const float ratio = x.d[i] / pivot;
        negative += pivot < 0;
        t.uMinus[i] = x.l[i] * ratio;
        t.p[i] = t.p[i + 1] * ratio - lambda;
        if (guarded && ratio == 0)
            t.p[i] = x.d[i] - lambda;
    }
    return negative;
}

// The last pivot of the factorization that is twisted at i.
float gamma(const TwistWork& t, int i) {
    const float value = t.s[i] + t.p[i];
    return value == 0 ? eps * t.s[i] : value;
}

} // namespace

void lar1v(const Representation& x, float lambda, float leastPivot, float negligible, float* z, Twisted& result,
           float* work) {
    const int n = x.n;
    const TwistWork t{work, work + n, work + 2 * std::ptrdiff_t{n}, work + 3 * std::ptrdiff_t{n}};
    const int lowest = result.r < 0 ? 0 : result.r, highest = result.r < 0 ? n - 1 : result.r;
    int negative = eliminate_down(x, lambda, highest, lowest, false, leastPivot, t);
    const bool guardedDown = t.s[highest] != t.s[highest];
    if (guardedDown)
        negative = eliminate_down(x, lambda, highest, lowest, true, leastPivot, t);
    int negativeUp = eliminate_up(x, lambda, lowest, false, leastPivot, t);
    const bool guardedUp = t.p[lowest] != t.p[lowest];
    if (guardedUp)
        negativeUp = eliminate_up(x, lambda, lowest, true, leastPivot, t);
    result.below = negative + negativeUp + (t.s[lowest] + t.p[lowest] < 0);

    int r = lowest;
    float least = gamma(t, r);
    for (int i = lowest + 1; i <= highest; ++i)
        if (const float value = gamma(t, i); std::fabs(value) <= std::fabs(least)) {
            least = value;
            r = i;
        }

    // From row r outward, as far as it matters.
    const bool guarded = guardedDown || guardedUp;
    result.first = 0;
    result.last = n - 1;
    z[r] = 1;
    float squares = 1;
    for (int i = r - 1; i >= 0; --i) {
        z[i] = guarded && z[i + 1] == 0 && i + 2 < n ? -(x.ld[i + 1] / x.ld[i]) * z[i + 2] : -(t.lPlus[i] * z[i + 1]);
        if ((std::fabs(z[i]) + std::fabs(z[i + 1])) * std::fabs(x.ld[i]) < negligible) {
            z[i] = 0;
            result.first = i + 1;
            break;
        }
        squares += z[i] * z[i];
    }
    for (int i = r; i < n - 1; ++i) {
        z[i + 1] = guarded && z[i] == 0 && i > 0 ? -(x.ld[i - 1] / x.ld[i]) * z[i - 1] : -(t.uMinus[i] * z[i]);
        if ((std::fabs(z[i]) + std::fabs(z[i + 1])) * std::fabs(x.ld[i]) < negligible) {
            z[i + 1] = 0;
            result.last = i;
            break;
        }
        squares += z[i + 1] * z[i + 1];
    }
    result.r = r;
    result.scale = 1 / std::sqrt(squares);
    result.residual = std::fabs(least) * result.scale;
    result.correction = least / squares;
}

} // namespace qrv::lapack
