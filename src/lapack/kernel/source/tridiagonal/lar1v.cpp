// SLAR1V: a vector from the twisted factorization N D N' of L D L' - lambda, whose row r is the last one from both
// ends.
#include "lapack/calls/mrrr.hpp"

namespace qrv::lapack {
namespace {

constexpr float eps = machine::precision;

// Multipliers from both ends, and what is carried along: s without lambda from the front, p from the back.
struct TwistWork {
    float *lPlus, *uMinus, *s, *p;
};

// Elimination from one end; with `guarded` no pivot is 0. Steps tell whether their pivot is negative.
template <bool guarded>
struct Down {
    const Representation& x;
    float lambda, leastPivot;
    const TwistWork& t;
    float s = t.s[0] - lambda; // t.s less lambda

    bool step(int i) {
        float pivot = x.d[i] + s;
        if (guarded && std::fabs(pivot) < leastPivot)
            pivot = -leastPivot;
        t.lPlus[i] = x.ld[i] / pivot;
        float next = s * t.lPlus[i] * x.l[i];
        if (guarded && t.lPlus[i] == 0)
            next = x.lld[i];
        t.s[i + 1] = next;
        s = next - lambda;
        return pivot < 0;
    }
};
template <bool guarded>
struct Up {
    const Representation& x;
    float lambda, leastPivot;
    const TwistWork& t;
    float p = x.d[x.n - 1] - lambda;

    bool step(int i) {
        float pivot = x.lld[i] + p;
        if (guarded && std::fabs(pivot) < leastPivot)
            pivot = -leastPivot;
        const float ratio = x.d[i] / pivot;
        t.uMinus[i] = x.l[i] * ratio;
        p = p * ratio - lambda;
        if (guarded && ratio == 0)
            p = x.d[i] - lambda;
        t.p[i] = p;
        return pivot < 0;
    }
};

// From the front to row `highest`, and from the back to row `lowest`; both together as far as both go, since neither
// waits for the other. Counts the negative pivots before row `lowest` and behind it.
template <bool guarded>
int eliminate(const Representation& x, float above, float lambda, int lowest, int highest, float leastPivot,
              const TwistWork& t) {
    t.s[0] = above;
    Down<guarded> down{x, lambda, leastPivot, t};
    Up<guarded> up{x, lambda, leastPivot, t};
    int negative = 0, i = 0, k = x.n - 2;
    t.p[x.n - 1] = up.p;
    const auto step_down = [&] {
        const bool isNegative = down.step(i);
        negative += i < lowest && isNegative;
        ++i;
    };
    while (i < highest && k >= lowest) {
        step_down();
        negative += up.step(k--);
    }
    while (i < highest)
        step_down();
    while (k >= lowest)
        negative += up.step(k--);
    return negative;
}

// The last pivot of the factorization that is twisted at i.
float gamma(const TwistWork& t, int i) {
    const float value = t.s[i] + t.p[i];
    return value == 0 ? eps * t.s[i] : value;
}

} // namespace

void lar1v(const Representation& x, float above, float lambda, float leastPivot, float negligible, float* z,
           Twisted& result, float* work) {
    const int n = x.n;
    const TwistWork t{work, work + n, work + 2 * std::ptrdiff_t{n}, work + 3 * std::ptrdiff_t{n}};
    const int lowest = result.r < 0 ? 0 : result.r, highest = result.r < 0 ? n - 1 : result.r;
    int negative = eliminate<false>(x, above, lambda, lowest, highest, leastPivot, t);
    const bool guarded = t.s[highest] != t.s[highest] || t.p[lowest] != t.p[lowest];
    if (guarded)
        negative = eliminate<true>(x, above, lambda, lowest, highest, leastPivot, t);
    result.below = negative + (t.s[lowest] + t.p[lowest] < 0);

    int r = lowest;
    float least = gamma(t, r);
    for (int i = lowest + 1; i <= highest; ++i)
        if (const float value = gamma(t, i); std::fabs(value) <= std::fabs(least)) {
            least = value;
            r = i;
        }

    // From row r outward, as far as it matters.
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
    result.gamma = least;
    result.squares = squares;
    result.scale = 1 / std::sqrt(squares);
    result.residual = std::fabs(least) * result.scale;
    result.correction = least / squares;
}

} // namespace qrv::lapack
