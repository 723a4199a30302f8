// SLAR1V: a vector from the twisted factorization N D N' of L D L' - lambda, whose row r is the last one from both
// ends; in double it is that of L and D as they are, whereas in float as if these were changed by some roundings.
//
// The quotients of one factorization wait for each other, those of several do not: in double up to four are made side
// by side, two of them in a vector. An element of theirs is a V, and the work of `groups` of them lies together row by
// row.
#include "blas/kernel/common/vec/unrolling.hpp"
#include "lapack/calls/mrrr.hpp"

namespace qrv::lapack {
namespace {

using Pair [[gnu::may_alias]] = double __attribute__((vector_size(16)));
template <class V>
constexpr int lanesOf = sizeof(V) == sizeof(Pair) ? 2 : 1;

template <class V>
using ElementOf = std::conditional_t<lanesOf<V> == 1, V, double>;

template <class V>
V spread(ElementOf<V> x) {
    if constexpr (lanesOf<V> == 1)
        return x;
    else
        return V{x, x};
}
template <class V>
V magnitude(V x) {
    return x < 0 ? -x : x;
}
template <class V>
auto& element(V& x, int lane) {
    return reinterpret_cast<ElementOf<V>*>(&x)[lane];
}

// Of `groups` factorizations: multipliers from both ends, and what is carried along: s without lambda from the front, p
// from the back.
template <class V, int groups>
struct TwistWork {
    V (*lPlus)[groups], (*uMinus)[groups], (*s)[groups], (*p)[groups];

    TwistWork(V* work, int n)
        : lPlus(reinterpret_cast<V (*)[groups]>(work)), uMinus(lPlus + n), s(uMinus + n), p(s + n) {}
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

// Elimination from one end; with `guarded` no pivot is 0. Steps give the pivot.
template <class V, bool guarded>
struct Down {
    V lambda, s; // what is carried, less lambda

    V step(V d, V l, V ld, V lld, V leastPivot, V& lPlus, V& carried) {
        V pivot = d + s;
        if (guarded)
            pivot = magnitude(pivot) < leastPivot ? -leastPivot : pivot;
        lPlus = ld / pivot;
        V next = s * l * lPlus; // the first product does not wait for the quotient
        if (guarded)
            next = lPlus == 0 ? lld : next;
        carried = next;
        s = next - lambda;
        return pivot;
    }
};
template <class V, bool guarded>
struct Up {
    V lambda, p;

    V step(V d, V l, V lld, V leastPivot, V& uMinus, V& carried) {
        V pivot = lld + p;
        if (guarded)
            pivot = magnitude(pivot) < leastPivot ? -leastPivot : pivot;
        const V ratio = d / pivot;
        uMinus = l * ratio;
        p = p * ratio - lambda;
        if (guarded)
            p = ratio == 0 ? d - lambda : p;
        carried = p;
        return pivot;
    }
};

// From the front to row `highest`, and from the back to row `lowest`; both together as far as both go, since neither
// waits for the other. Of each factorization the negative pivots before its row r and behind it.
template <bool guarded, class V, int groups>
void eliminate(const Representation& x, V above, const V (&lambda)[groups], const V (&r)[groups], int lowest,
               int highest, V leastPivot, const TwistWork<V, groups>& t, V (&negative)[groups]) {
    using T = ElementOf<V>;
    const Products<T> products{x};
    const V zero{}, one = spread<V>(1);
    Down<V, guarded> down[groups];
    Up<V, guarded> up[groups];
    QRV_UNROLL
    for (int g = 0; g < groups; ++g) {
        negative[g] = zero;
        t.s[0][g] = above;
        down[g] = {lambda[g], above - lambda[g]};
        up[g] = {lambda[g], spread<V>(x.d[x.n - 1]) - lambda[g]};
        t.p[x.n - 1][g] = up[g].p;
    }
    int i = 0, k = x.n - 2;
    const auto step_down = [&] {
        const V row = spread<V>(static_cast<T>(i)), d = spread<V>(x.d[i]), l = spread<V>(x.l[i]);
        const V ld = spread<V>(products.ld(i)), lld = spread<V>(products.lld(i));
        QRV_UNROLL
        for (int g = 0; g < groups; ++g) {
            const V pivot = down[g].step(d, l, ld, lld, leastPivot, t.lPlus[i][g], t.s[i + 1][g]);
            negative[g] += ((pivot < 0) & (row < r[g])) ? one : zero;
        }
        ++i;
    };
    const auto step_up = [&] {
        const V row = spread<V>(static_cast<T>(k)), d = spread<V>(x.d[k]), l = spread<V>(x.l[k]);
        const V lld = spread<V>(products.lld(k));
        QRV_UNROLL
        for (int g = 0; g < groups; ++g) {
            const V pivot = up[g].step(d, l, lld, leastPivot, t.uMinus[k][g], t.p[k][g]);
            negative[g] += ((pivot < 0) & (row >= r[g])) ? one : zero;
        }
        --k;
    };
    while (i < highest && k >= lowest) {
        step_down();
        step_up();
    }
    while (i < highest)
        step_down();
    while (k >= lowest)
        step_up();
}

// One of the factorizations.
template <class T>
struct Twist {
    const T *lPlusOfAll, *uMinusOfAll, *sOfAll, *pOfAll;
    int step;

    template <class V, int groups>
    Twist(const TwistWork<V, groups>& t, int lane)
        : lPlusOfAll(reinterpret_cast<const T*>(t.lPlus) + lane),
          uMinusOfAll(reinterpret_cast<const T*>(t.uMinus) + lane), sOfAll(reinterpret_cast<const T*>(t.s) + lane),
          pOfAll(reinterpret_cast<const T*>(t.p) + lane), step(groups * lanesOf<V>) {}

    T l_plus(int i) const { return lPlusOfAll[place(i)]; }
    T u_minus(int i) const { return uMinusOfAll[place(i)]; }
    T s(int i) const { return sOfAll[place(i)]; }
    T p(int i) const { return pOfAll[place(i)]; }
    // The last pivot of the factorization that is twisted at i.
    T gamma(int i) const {
        const T value = s(i) + p(i);
        return value == 0 ? std::numeric_limits<T>::epsilon() * s(i) : value;
    }

private:
    std::ptrdiff_t place(int i) const { return std::ptrdiff_t{i} * step; }
};

// The vector from the factorization and what it tells. negative: pivots before and behind row result.r, or behind all
// of them if that is to be found.
template <class T>
void finish(const Representation& x, const Twist<T>& t, bool guarded, int negative, float negligible, float* z,
            Twisted& result) {
    const int n = x.n;
    const Products<T> products{x};
    const int lowest = result.r < 0 ? 0 : result.r, highest = result.r < 0 ? n - 1 : result.r;
    result.below = negative + (t.s(lowest) + t.p(lowest) < 0);

    int r = lowest;
    T least = t.gamma(r);
    for (int i = lowest + 1; i <= highest; ++i)
        if (const T value = t.gamma(i); std::fabs(value) <= std::fabs(least)) {
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
        T next = -(t.l_plus(i) * inner);
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
        T next = -(t.u_minus(i) * inner);
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

// As many as fit into `groups` elements V; those behind the last one are eliminated with it.
template <class V, int groups>
void make_several(const Representation& x, float leastPivot, TwistedVector* const* vectors, int count, double* work) {
    constexpr int width = lanesOf<V>;
    const TwistWork<V, groups> t(reinterpret_cast<V*>(work), x.n);
    V lambda[groups], r[groups], negative[groups];
    int lowest = x.n - 1, highest = 0;
    for (int lane = 0; lane < groups * width; ++lane) {
        const TwistedVector& v = *vectors[std::min(lane, count - 1)];
        const int first = std::max(v.twisted.r, 0);
        lowest = std::min(lowest, first);
        highest = std::max(highest, v.twisted.r < 0 ? x.n - 1 : first);
        element(lambda[lane / width], lane % width) = v.lambda;
        element(r[lane / width], lane % width) = first;
    }
    eliminate<true, V, groups>(x, V{}, lambda, r, lowest, highest, spread<V>(leastPivot), t, negative);
    for (int lane = 0; lane < count; ++lane) {
        TwistedVector& v = *vectors[lane];
        finish(x, Twist<double>(t, lane), true, static_cast<int>(element(negative[lane / width], lane % width)),
               v.negligible, v.z, v.twisted);
    }
}

} // namespace

void lar1v(const Representation& x, float above, float lambda, float leastPivot, float negligible, float* z,
           Twisted& result, float* work) {
    const int lowest = std::max(result.r, 0), highest = result.r < 0 ? x.n - 1 : result.r;
    const TwistWork<float, 1> t(work, x.n);
    const float lambdas[1] = {lambda}, r[1] = {static_cast<float>(lowest)};
    float negative[1];
    eliminate<false>(x, above, lambdas, r, lowest, highest, leastPivot, t, negative);
    const Twist<float> twist(t, 0);
    // Pivots are kept away from 0 for matrices that need it.
    const bool guarded = std::isnan(twist.s(highest)) || std::isnan(twist.p(lowest));
    if (guarded)
        eliminate<true>(x, above, lambdas, r, lowest, highest, leastPivot, t, negative);
    finish(x, twist, guarded, static_cast<int>(negative[0]), negligible, z, result);
}

// Quotients by the least pivot stay in range in double.
void lar1v(const Representation& x, float leastPivot, TwistedVector* const* vectors, int count, double* work) {
    if (count == 1)
        make_several<double, 1>(x, leastPivot, vectors, count, work);
    else if (count == 2)
        make_several<Pair, 1>(x, leastPivot, vectors, count, work);
    else
        make_several<Pair, 2>(x, leastPivot, vectors, count, work);
}

} // namespace qrv::lapack
