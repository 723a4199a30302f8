// SLAR1V: a vector from the twisted factorization N D N' of L D L' - lambda, whose row r is the last one from both
// ends; in double it is that of L and D as they are, whereas in float as if these were changed by some roundings.
#include "lapack/calls/mrrr.hpp"

namespace qrv::lapack {
namespace {

// Multipliers from both ends, and what is carried along: s without lambda from the front, p from the back.
template <class T>
struct TwistWork {
    T *lPlus, *uMinus, *s, *p;
};

// The products D L and D L L, in double from D and L themselves.
template <class T>
struct Products {
    const Representation& x;

    T ld(int i) const {
        if constexpr (std::is_same_v<T, float>)
            return x.ld[i];
        else
            return T{x.d[i]} * x.l[i];
    }
    T lld(int i) const {
        if constexpr (std::is_same_v<T, float>)
            return x.lld[i];
        else
            return ld(i) * x.l[i];
    }
};

// Elimination from one end; with `guarded` no pivot is 0. Steps tell whether their pivot is negative.
template <class T, bool guarded>
struct Down {
    const Representation& x;
    T lambda, leastPivot;
    const TwistWork<T>& t;
    T s = t.s[0] - lambda; // t.s less lambda

    bool step(int i) {
        T pivot = x.d[i] + s;
        if (guarded && std::fabs(pivot) < leastPivot)
            pivot = -leastPivot;
        t.lPlus[i] = Products<T>{x}.ld(i) / pivot;
        T next = s * x.l[i] * t.lPlus[i]; // the first product does not wait for the quotient
        if (guarded && t.lPlus[i] == 0)
            next = Products<T>{x}.lld(i);
        t.s[i + 1] = next;
        s = next - lambda;
        return pivot < 0;
    }
};
template <class T, bool guarded>
struct Up {
    const Representation& x;
    T lambda, leastPivot;
    const TwistWork<T>& t;
    T p = x.d[x.n - 1] - lambda;

    bool step(int i) {
        T pivot = Products<T>{x}.lld(i) + p;
        if (guarded && std::fabs(pivot) < leastPivot)
            pivot = -leastPivot;
        const T ratio = x.d[i] / pivot;
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
template <bool guarded, class T>
int eliminate(const Representation& x, T above, T lambda, int lowest, int highest, T leastPivot,
              const TwistWork<T>& t) {
    t.s[0] = above;
    Down<T, guarded> down{x, lambda, leastPivot, t};
    Up<T, guarded> up{x, lambda, leastPivot, t};
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
template <class T>
T gamma(const TwistWork<T>& t, int i) {
    const T value = t.s[i] + t.p[i];
    return value == 0 ? std::numeric_limits<T>::epsilon() * t.s[i] : value;
}

} // namespace

template <class T>
void lar1v(const Representation& x, T above, T lambda, float leastPivot, float negligible, float* z, Twisted& result,
           T* work) {
    const int n = x.n;
    const TwistWork<T> t{work, work + n, work + 2 * std::ptrdiff_t{n}, work + 3 * std::ptrdiff_t{n}};
    const Products<T> products{x};
    const int lowest = result.r < 0 ? 0 : result.r, highest = result.r < 0 ? n - 1 : result.r;
    // Quotients by the least pivot stay in range in double; in float it is kept for matrices that need it.
    bool guarded = std::is_same_v<T, double>;
    int negative = eliminate<std::is_same_v<T, double>, T>(x, above, lambda, lowest, highest, leastPivot, t);
    if (t.s[highest] != t.s[highest] || t.p[lowest] != t.p[lowest]) {
        guarded = true;
        negative = eliminate<true, T>(x, above, lambda, lowest, highest, leastPivot, t);
    }
    result.below = negative + (t.s[lowest] + t.p[lowest] < 0);

    int r = lowest;
    T least = gamma(t, r);
    for (int i = lowest + 1; i <= highest; ++i)
        if (const T value = gamma(t, i); std::fabs(value) <= std::fabs(least)) {
            least = value;
            r = i;
        }

    // From row r outward, as far as it matters and a float can tell.
    const auto vanishes = [&](T outer, T inner, int i) {
        const T size = std::fabs(outer) + std::fabs(inner);
        return size * std::fabs(x.ld[i]) < negligible || size < 0x1p-149F;
    };
    result.first = 0;
    result.last = n - 1;
    z[r] = 1;
    T squares = 1;
    T inner = 1, before = 0; // the two elements that came last
    for (int i = r - 1; i >= 0; --i) {
        T next = -(t.lPlus[i] * inner);
        if (guarded && inner == 0 && products.ld(i) != 0) // not in the first step
            next = -(products.ld(i + 1) / products.ld(i)) * before;
        if (vanishes(next, inner, i)) {
            z[i] = 0;
            result.first = i + 1;
            break;
        }
        squares += next * next;
        z[i] = static_cast<float>(next);
        before = inner;
        inner = next;
    }
    inner = 1;
    for (int i = r; i < n - 1; ++i) {
        T next = -(t.uMinus[i] * inner);
        if (guarded && inner == 0 && products.ld(i) != 0)
            next = -(products.ld(i - 1) / products.ld(i)) * before;
        if (vanishes(next, inner, i)) {
            z[i + 1] = 0;
            result.last = i;
            break;
        }
        squares += next * next;
        z[i + 1] = static_cast<float>(next);
        before = inner;
        inner = next;
    }
    const T scale = 1 / std::sqrt(squares);
    result.r = r;
    result.gamma = static_cast<float>(least);
    result.squares = static_cast<float>(squares);
    result.scale = static_cast<float>(scale);
    result.residual = static_cast<float>(std::fabs(least) * scale);
    result.correction = static_cast<float>(least / squares);
}

template void lar1v(const Representation&, float, float, float, float, float*, Twisted&, float*);
template void lar1v(const Representation&, double, double, float, float, float*, Twisted&, double*);

} // namespace qrv::lapack
