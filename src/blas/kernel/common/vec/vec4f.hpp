// Four floats in one 128-bit register, with what every vector build has. A build's own vec.hpp includes this and
// adds what that build does better.
#pragma once

#include <cstdint>
#include <emmintrin.h>

#include "blas/kernel/common/vec/unrolling.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

struct Vec4f {
    static constexpr int lanes = 4;
    __m128 v;

    static Vec4f zero() { return {_mm_setzero_ps()}; }
    static Vec4f splat(float x) { return {_mm_set1_ps(x)}; }
    static Vec4f alternate(float even, float odd) { return {_mm_setr_ps(even, odd, even, odd)}; }
    static Vec4f load(const float* p) { return {_mm_loadu_ps(p)}; }
    static Vec4f load_aligned(const float* p) { return {_mm_load_ps(p)}; }
    void store(float* p) const { _mm_storeu_ps(p, v); }
    void store_aligned(float* p) const { _mm_store_ps(p, v); }

    friend Vec4f operator+(Vec4f a, Vec4f b) { return {_mm_add_ps(a.v, b.v)}; }
    friend Vec4f operator-(Vec4f a, Vec4f b) { return {_mm_sub_ps(a.v, b.v)}; }
    friend Vec4f operator*(Vec4f a, Vec4f b) { return {_mm_mul_ps(a.v, b.v)}; }
    friend Vec4f operator|(Vec4f a, Vec4f b) { return {_mm_or_ps(a.v, b.v)}; }
};

// x2 x3 x0 x1
inline Vec4f swap_halves(Vec4f x) {
    return {_mm_shuffle_ps(x.v, x.v, _MM_SHUFFLE(1, 0, 3, 2))};
}
// a0 a1 b0 b1
inline Vec4f low_halves(Vec4f a, Vec4f b) {
    return {_mm_movelh_ps(a.v, b.v)};
}
// a2 a3 b2 b3
inline Vec4f high_halves(Vec4f a, Vec4f b) {
    return {_mm_movehl_ps(b.v, a.v)};
}
// a0 a1 b2 b3
inline Vec4f join_halves(Vec4f a, Vec4f b) {
    return {_mm_shuffle_ps(a.v, b.v, _MM_SHUFFLE(3, 2, 1, 0))};
}
// a0 b0 a1 b1 and a2 b2 a3 b3
inline Vec4f interleave_low(Vec4f a, Vec4f b) {
    return {_mm_unpacklo_ps(a.v, b.v)};
}
inline Vec4f interleave_high(Vec4f a, Vec4f b) {
    return {_mm_unpackhi_ps(a.v, b.v)};
}
// a0 a2 b0 b2 and a1 a3 b1 b3
inline Vec4f unzip_even(Vec4f a, Vec4f b) {
    return {_mm_shuffle_ps(a.v, b.v, _MM_SHUFFLE(2, 0, 2, 0))};
}
inline Vec4f unzip_odd(Vec4f a, Vec4f b) {
    return {_mm_shuffle_ps(a.v, b.v, _MM_SHUFFLE(3, 1, 3, 1))};
}
// x1 x0 x3 x2: real and imaginary parts for each other. The shuffle of integers leaves x where it is, so it needs no
// copy, and runs on more units than that of floats.
inline Vec4f swap_parts(Vec4f x) {
    return {_mm_castsi128_ps(_mm_shuffle_epi32(_mm_castps_si128(x.v), _MM_SHUFFLE(2, 3, 0, 1)))};
}
// x with the signs flipped where `signs` has a minus: its lanes are 0 and -0.
inline Vec4f change_signs(Vec4f x, Vec4f signs) {
    return {_mm_xor_ps(x.v, signs.v)};
}
inline void transpose(Vec4f& a, Vec4f& b, Vec4f& c, Vec4f& d) {
    _MM_TRANSPOSE4_PS(a.v, b.v, c.v, d.v);
}

// The two floats at p, aligned to 8 bytes, as one 64-bit value for a broadcast.
inline double float_pair(const float* p) {
    using FloatPair [[gnu::may_alias]] = double;
    return *reinterpret_cast<const FloatPair*>(p);
}

// Asks for the line at p, wherever p points: no fault. The second form is for data that is read once.
inline void prefetch(const float* p) {
    _mm_prefetch(reinterpret_cast<const char*>(p), _MM_HINT_T0);
}
inline void prefetch_once(const float* p) {
    _mm_prefetch(reinterpret_cast<const char*>(p), _MM_HINT_NTA);
}

// The sums of the lanes of a, b, c and d.
inline Vec4f sum_lanes(Vec4f a, Vec4f b, Vec4f c, Vec4f d) {
    const __m128 ab = _mm_add_ps(_mm_unpacklo_ps(a.v, b.v), _mm_unpackhi_ps(a.v, b.v)); // a02 b02 a13 b13
    const __m128 cd = _mm_add_ps(_mm_unpacklo_ps(c.v, d.v), _mm_unpackhi_ps(c.v, d.v));
    return {_mm_add_ps(_mm_movelh_ps(ab, cd), _mm_movehl_ps(cd, ab))};
}

// The first `count` lanes, 1 to 4, from memory, zeros behind them; nothing past them is read or written.
template <int count>
Vec4f load_first(const float* p) {
    static_assert(count >= 1 && count <= 4);
    if constexpr (count == 4)
        return Vec4f::load(p);
    else if constexpr (count == 3)
        return low_halves(load_first<2>(p), load_first<1>(p + 2));
    else if constexpr (count == 2)
        return {_mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(p))};
    else
        return {_mm_load_ss(p)};
}
template <int count>
void store_first(float* p, Vec4f x) {
    static_assert(count >= 1 && count <= 4);
    if constexpr (count == 4) {
        x.store(p);
    } else if constexpr (count == 1) {
        _mm_store_ss(p, x.v);
    } else {
        _mm_storel_pi(reinterpret_cast<__m64*>(p), x.v);
        if constexpr (count == 3)
            _mm_store_ss(p + 2, _mm_movehl_ps(x.v, x.v));
    }
}

// Lane i of x, y and z is element 3 i, 3 i + 1 and 3 i + 2 of p.
inline void load_triples(const float* p, Vec4f& x, Vec4f& y, Vec4f& z) {
    const __m128 a = _mm_loadu_ps(p), b = _mm_loadu_ps(p + 4), c = _mm_loadu_ps(p + 8); // xyzx yzxy zxyz
    const __m128 xy = _mm_shuffle_ps(b, c, _MM_SHUFFLE(2, 1, 3, 2));                    // x2 y2 x3 y3
    const __m128 yz = _mm_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 2, 1));                    // y0 z0 y1 z1
    x.v = _mm_shuffle_ps(a, xy, _MM_SHUFFLE(2, 0, 3, 0));
    y.v = _mm_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0));
    z.v = _mm_shuffle_ps(yz, c, _MM_SHUFFLE(3, 0, 3, 1));
}
inline void store_triples(float* p, Vec4f x, Vec4f y, Vec4f z) {
    const __m128 xy = _mm_shuffle_ps(x.v, y.v, _MM_SHUFFLE(2, 0, 2, 0)); // x0 x2 y0 y2
    const __m128 yz = _mm_shuffle_ps(y.v, z.v, _MM_SHUFFLE(3, 1, 3, 1)); // y1 y3 z1 z3
    const __m128 zx = _mm_shuffle_ps(z.v, x.v, _MM_SHUFFLE(3, 1, 2, 0)); // z0 z2 x1 x3
    _mm_storeu_ps(p, _mm_shuffle_ps(xy, zx, _MM_SHUFFLE(2, 0, 2, 0)));
    _mm_storeu_ps(p + 4, _mm_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0)));
    _mm_storeu_ps(p + 8, _mm_shuffle_ps(zx, yz, _MM_SHUFFLE(3, 1, 3, 1)));
}

// ---- For level 1 --------------------------------------------------------------------------------------------------

// a*b + c, rounded twice
inline Vec4f multiply_add(Vec4f a, Vec4f b, Vec4f c) {
    return a * b + c;
}
// c - a*b, rounded twice
inline Vec4f subtract_product(Vec4f a, Vec4f b, Vec4f c) {
    return c - a * b;
}
// x, loaded once: an empty statement that changes it keeps the compiler from loading it again for every use.
inline Vec4f loaded_once(Vec4f x) {
    asm("" : "+x"(x.v));
    return x;
}
// x, computed before what is written behind it: the compiler keeps the order of such statements.
template <class V>
[[gnu::always_inline]] inline V in_order(V x) {
    asm volatile("" : "+v"(x.v));
    return x;
}
// x with its parts swapped, at hand before x is used further: what then overwrites x or this needs no copy.
template <class V>
[[gnu::always_inline]] inline V parts_swapped(V& x) {
    x = loaded_once(x);
    V swapped = swap_parts(x);
    asm("" : "+v"(x.v), "+v"(swapped.v));
    return swapped;
}
// The sum of a vector's quads.
inline Vec4f sum_quads(Vec4f x) {
    return x;
}
// The sums of the lanes of x and of y with even numbers, then of those with odd ones: both from one addition.
inline Vec4f sum_pairs(Vec4f x, Vec4f y) {
    return interleave_low(x, y) + interleave_high(x, y);
}

// Floats past a 16-byte boundary.
inline int past_boundary(const float* p) {
    return static_cast<int>(reinterpret_cast<std::uintptr_t>(p) / sizeof(float) % Vec4f::lanes);
}
// Hands out the vectors at x one after the other.
template <bool aligned>
class Loads {
public:
    static constexpr int readsPast = 0;

    explicit Loads(const float* x) : x_(x) {}
    [[gnu::always_inline]] Vec4f next() {
        const Vec4f read = aligned ? Vec4f::load_aligned(x_) : Vec4f::load(x_);
        x_ += Vec4f::lanes;
        return read;
    }

private:
    const float* x_;
};

// ---- For the routines of one vector ---------------------------------------------------------------------------------

// The first `count` lanes, fewer than all; the others are 0, respectively not written. Nothing past them is read.
template <class V>
V load_part(const float* p, int count);
template <>
inline Vec4f load_part<Vec4f>(const float* p, int count) {
    return count == 1 ? load_first<1>(p) : count == 2 ? load_first<2>(p) : load_first<3>(p);
}
inline void store_part(float* p, Vec4f x, int count) {
    count == 1 ? store_first<1>(p, x) : count == 2 ? store_first<2>(p, x) : store_first<3>(p, x);
}
inline Vec4f abs(Vec4f x) {
    return {_mm_and_ps(_mm_castsi128_ps(_mm_set1_epi32(0x7FFFFFFF)), x.v)};
}
inline float sum_of_lanes(Vec4f x) {
    const Vec4f pairs = x + swap_halves(x);
    return _mm_cvtss_f32(_mm_add_ss(pairs.v, _mm_shuffle_ps(pairs.v, pairs.v, 1)));
}
// a0+a1 a2+a3 b0+b1 b2+b3
inline Vec4f sum_neighbours(Vec4f a, Vec4f b) {
    return {_mm_add_ps(_mm_shuffle_ps(a.v, b.v, _MM_SHUFFLE(2, 0, 2, 0)),
                       _mm_shuffle_ps(a.v, b.v, _MM_SHUFFLE(3, 1, 3, 1)))};
}
// The largest of the magnitudes taken in, NaN if one is NaN. For builds that compare integers: as such NaN is above all
// numbers (larger_magnitude).
template <class V>
class IntegerPeak {
public:
    void take(V a) { largest_ = larger_magnitude(largest_, a); }
    void take(V a, V b, V c, V d) { take(larger_magnitude(larger_magnitude(a, b), larger_magnitude(c, d))); }
    float value() const { return first_lane(spread()); }
    // The same in every lane.
    V spread() const { return spread_largest(largest_); }

private:
    V largest_ = V::zero();
};
// The same for builds that compare floats only, of which a NaN takes no notice.
class TestedPeak {
public:
    void take(Vec4f a) { take(a, a, a, a); }
    void take(Vec4f a, Vec4f b, Vec4f c, Vec4f d) {
        largest_ = max(max(max(a, b), max(c, d)), largest_); // max gives its second operand if either is NaN
        nan_ = _mm_or_ps(nan_, _mm_or_ps(_mm_cmpunord_ps(a.v, b.v), _mm_cmpunord_ps(c.v, d.v)));
    }
    float value() const {
        if (_mm_movemask_ps(nan_) != 0)
            return __builtin_nanf("");
        const Vec4f pairs = max(largest_, swap_halves(largest_));
        return _mm_cvtss_f32(_mm_max_ss(pairs.v, _mm_shuffle_ps(pairs.v, pairs.v, 1)));
    }
    Vec4f spread() const { return Vec4f::splat(value()); }

private:
    static Vec4f max(Vec4f a, Vec4f b) { return {_mm_max_ps(a.v, b.v)}; }
    Vec4f largest_ = Vec4f::zero();
    __m128 nan_ = _mm_setzero_ps();
};
// Bit i is set where lane i of a, or of a, b, c and d one behind the other, is x.
inline std::uint64_t equal_lanes(Vec4f x, Vec4f a) {
    return static_cast<unsigned>(_mm_movemask_ps(_mm_cmpeq_ps(x.v, a.v)));
}
inline std::uint64_t equal_lanes(Vec4f x, Vec4f a, Vec4f b, Vec4f c, Vec4f d) {
    const auto equal = [x](Vec4f y) { return _mm_castps_si128(_mm_cmpeq_ps(x.v, y.v)); };
    const __m128i ab = _mm_packs_epi32(equal(a), equal(b)), cd = _mm_packs_epi32(equal(c), equal(d));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(ab, cd)));
}

// The lanes of a vector in double.
template <class V>
struct Doubles;
template <>
struct Doubles<Vec4f> {
    __m128d low, high;

    static Doubles zero() { return {_mm_setzero_pd(), _mm_setzero_pd()}; }
    static Doubles widen(Vec4f x) { return {_mm_cvtps_pd(x.v), _mm_cvtps_pd(_mm_movehl_ps(x.v, x.v))}; }
    // p is on a boundary. Two loads: widening from memory takes one step less than from a register.
    static Doubles widen_peeled(const float* p) {
        return {_mm_cvtps_pd(_mm_load_ps(p)),
                _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 2))))};
    }
    void add_squares(Doubles x) {
        low = _mm_add_pd(low, _mm_mul_pd(x.low, x.low));
        high = _mm_add_pd(high, _mm_mul_pd(x.high, x.high));
    }
    friend Doubles operator+(Doubles a, Doubles b) { return {_mm_add_pd(a.low, b.low), _mm_add_pd(a.high, b.high)}; }
    double sum() const {
        const __m128d pairs = _mm_add_pd(low, high);
        return _mm_cvtsd_f64(_mm_add_sd(pairs, _mm_unpackhi_pd(pairs, pairs)));
    }
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
