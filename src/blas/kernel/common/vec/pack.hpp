// What the level 2 kernels do with elements of a matrix, for the builds with vectors. vec.hpp comes first and says what
// Vec is.
//
// A pack is one vector of neighbouring elements. Complex elements lie in it as in memory, real part first. Their
// products are summed with the real and the imaginary part of one operand apart, both sums plain products of floats,
// and put together once at the end: two steps an element, as many as four real products take, and no shuffle.
#pragma once

#include <cstddef>
#include <type_traits>
#ifdef __SSE3__
#include <pmmintrin.h>
#endif

#include "blas/complex.hpp"
#include "blas/kernel/common/count.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Lanes `from` to `to` - 1 of a vector, none if to <= from.
template <class V, int lanes = V::lanes>
struct LaneRange { // four
    int from, to;
    V kept(V x) const {
        const __m128i lane = _mm_setr_epi32(0, 1, 2, 3);
        const __m128i outside =
            _mm_or_si128(_mm_cmplt_epi32(lane, _mm_set1_epi32(from)), _mm_cmpgt_epi32(lane, _mm_set1_epi32(to - 1)));
        return {_mm_andnot_ps(_mm_castsi128_ps(outside), x.v)};
    }
    // These lanes from memory, zeros around them; nothing else is read.
    V load(const float* p) const {
        const int count = to - from;
        if (count <= 0)
            return V::zero();
        p += from;
        const __m128i x = _mm_castps_si128((count == 4 ? V::load(p) : load_part<V>(p, count)).v);
        return {_mm_castsi128_ps(from == 0   ? x
                                 : from == 1 ? _mm_slli_si128(x, 4)
                                 : from == 2 ? _mm_slli_si128(x, 8)
                                             : _mm_slli_si128(x, 12))};
    }
    // Writes these lanes, nothing else.
    void store(float* p, V v) const {
        const int count = to - from;
        if (count <= 0)
            return;
        const __m128i bits = _mm_castps_si128(v.v);
        const V x{_mm_castsi128_ps(from == 0   ? bits
                                   : from == 1 ? _mm_srli_si128(bits, 4)
                                   : from == 2 ? _mm_srli_si128(bits, 8)
                                               : _mm_srli_si128(bits, 12))};
        if (count == 4)
            x.store(p);
        else
            store_part(p + from, x, count);
    }
    // a*b + c in these lanes, c in the others.
    V times_plus(V a, V b, V c) const { return c + kept(a * b); }
};
template <class V>
struct LaneRange<V, 8> {
    typename V::Mask mask;
    LaneRange(int from, int to) : mask(V::Mask::first(to)) {
        mask.bits = _mm256_andnot_ps(V::Mask::first(from).bits, mask.bits);
    }
    V load(const float* p) const { return load_kept(p, mask); }
    void store(float* p, V x) const { store_kept(p, x, mask); }
    V times_plus(V a, V b, V c) const { return c + (a * b).kept(mask); }
};
template <class V>
struct LaneRange<V, 16> {
    typename V::Mask mask;
    LaneRange(int from, int to) : mask(V::Mask::first(to)) { mask.bits &= ~V::Mask::first(from).bits; }
    V load(const float* p) const { return load_kept(p, mask); }
    void store(float* p, V x) const { store_kept(p, x, mask); }
    V times_plus(V a, V b, V c) const { return {_mm512_mask3_fmadd_ps(a.v, b.v, c.v, mask.bits)}; }
};

// Stands for all elements of a pack where others give their number; and where the pack is on a boundary.
struct All {};
struct AllAligned {};

template <class T>
struct Pack {
    static constexpr int count = Vec::lanes / floatsIn<T>;
    Vec v;

    static Pack zero() { return {Vec::zero()}; }
    static Pack load(const T* p) { return {Vec::load(floats(p))}; }
    static Pack load(const T* p, All) { return load(p); }
    static Pack load(const T* p, int n) {
        return Vec::lanes == 4 && n == count ? load(p) : Pack{load_part<Vec>(floats(p), n * floatsIn<T>)};
    }
    // For a loop that stores as much: see load_halves().
    template <class Part>
    static Pack load_between_stores(const T* p, Part part) {
        if constexpr ((Vec::lanes > 4) && std::is_same_v<Part, All>)
            return {load_halves(floats(p))};
        else if constexpr (std::is_same_v<Part, AllAligned>)
            return {Vec::load_aligned(floats(p))};
        else
            return load(p, part);
    }
    // Elements of a range, zeros around them; nothing else is read, respectively written.
    static Pack load(const T* p, const LaneRange<Vec>& range) { return {range.load(floats(p))}; }
    void store(T* p, const LaneRange<Vec>& range) const { range.store(floats(p), v); }
    void store(T* p) const { v.store(floats(p)); }
    void store(T* p, All) const { store(p); }
    void store(T* p, AllAligned) const { v.store_aligned(floats(p)); }
    void store(T* p, int n) const {
        if (n == count)
            store(p);
        else
            store_part(floats(p), v, n * floatsIn<T>);
    }

    static LaneRange<Vec> range(int from, int to) { return {from * floatsIn<T>, to * floatsIn<T>}; }
    static const float* floats(const T* p) { return reinterpret_cast<const float*>(p); }
    static float* floats(T* p) { return reinterpret_cast<float*>(p); }
};

// ---- Complex elements ---------------------------------------------------------------------------------------------

// The real parts (part 0) or the imaginary parts (part 1) with the opposite sign.
template <int part, class V>
QRV_INLINE V negate_part(V x) {
    return change_signs(x, V::alternate(part == 0 ? -0.0F : 0.0F, part == 1 ? -0.0F : 0.0F));
}

// x + y with the real parts of y taken off.
template <class V>
QRV_INLINE V add_turned(V x, V y) {
    return x + negate_part<0>(y);
}
#ifdef __SSE3__
QRV_INLINE Vec4f add_turned(Vec4f x, Vec4f y) {
    return {_mm_addsub_ps(x.v, y.v)};
}
#endif

// ---- Transposition ------------------------------------------------------------------------------------------------

// A few elements in a square, each column a quad of floats.
template <class T>
struct SmallSquare {
    static constexpr int parts = floatsIn<T>, side = 4 / parts;
    Vec4f column[side];

    QRV_INLINE static SmallSquare load(const T* a, std::ptrdiff_t lda) {
        SmallSquare x;
        QRV_UNROLL
        for (int k = 0; k < side; ++k)
            x.column[k] = Vec4f::load(reinterpret_cast<const float*>(a + k * lda));
        return x;
    }
    QRV_INLINE void store(T* out, std::ptrdiff_t ldo) const {
        QRV_UNROLL
        for (int k = 0; k < side; ++k)
            column[k].store(reinterpret_cast<float*>(out + k * ldo));
    }
    // May be conjugated on the way.
    template <bool conjugated>
    QRV_INLINE SmallSquare transposed() const {
        SmallSquare x = *this;
        if constexpr (isComplex<T>) {
            const Vec4f signs = Vec4f::alternate(0, conjugated ? -0.0F : 0.0F);
            x.column[0] = change_signs(low_halves(column[0], column[1]), signs);
            x.column[1] = change_signs(high_halves(column[0], column[1]), signs);
        } else {
            qrv::kernel::QRV_KERNEL_BUILD::transpose(x.column[0], x.column[1], x.column[2], x.column[3]);
        }
        return x;
    }
    // out := a'
    template <bool conjugated>
    QRV_INLINE static void transpose(const T* a, std::ptrdiff_t lda, T* out, std::ptrdiff_t ldo) {
        load(a, lda).template transposed<conjugated>().store(out, ldo);
    }
    // out := the whole of a symmetric or Hermitian a, of which one triangle is read.
    template <bool hermitian, bool upper>
    QRV_INLINE static void expand(const T* a, std::ptrdiff_t lda, T* out, std::ptrdiff_t ldo) {
        SmallSquare x;
        repeat<side>([&](auto k) __attribute__((always_inline)) {
            constexpr int own = k() * parts;
            const auto* from = reinterpret_cast<const float*>(a + k() * lda);
            if constexpr (upper)
                x.column[k()] = load_first<own + parts>(from);
            else
                x.column[k()].v = _mm_castsi128_ps(
                    _mm_slli_si128(_mm_castps_si128(load_first<4 - own>(from + own).v), own * sizeof(float)));
            if constexpr (hermitian)
                x.column[k()] = lanes(0, own + 1, x.column[k()]) | lanes(own + 2, 4, x.column[k()]);
        });
        const SmallSquare mirrored = x.template transposed<hermitian>();
        repeat<side>([&](auto k) __attribute__((always_inline)) {
            constexpr int own = k() * parts;
            x.column[k()] = x.column[k()] | lanes(upper ? own + parts : 0, upper ? 4 : own, mirrored.column[k()]);
        });
        x.store(out, ldo);
    }

private:
    QRV_INLINE static Vec4f lanes(int from, int to, Vec4f x) { return LaneRange<Vec4f>{from, to}.kept(x); }
};

// ---- Sums of products ---------------------------------------------------------------------------------------------

template <class T>
QRV_INLINE Pack<T> loaded_once(Pack<T> x) {
    return {loaded_once(x.v)};
}

// One number for all elements of a pack.
template <class T>
struct Factor;
template <>
struct Factor<float> {
    Vec re;
    Factor() = default;
    explicit Factor(float x) : re(Vec::splat(x)) {}
};
template <>
struct Factor<SingleComplex> {
    Vec re, im;
    Factor() = default;
    explicit Factor(SingleComplex x) : re(Vec::splat(x.re)), im(Vec::splat(x.im)) {}
};

// A pack y to which multiples a*s are added.
template <class T>
struct ScaledSum;
template <>
struct ScaledSum<float> {
    Vec sum;
    ScaledSum() = default;
    explicit ScaledSum(Pack<float> y) : sum(y.v) {}
    ScaledSum(Pack<float> a, const Factor<float>& s) : sum(a.v * s.re) {} // y is 0
    ScaledSum(Pack<float> y, Pack<float> a, const Factor<float>& s) : sum(multiply_add(a.v, s.re, y.v)) {}
    void add(Pack<float> a, const Factor<float>& s) { sum = multiply_add(a.v, s.re, sum); }
    void add(Pack<float> a, const Factor<float>& s, const LaneRange<Vec>& range) {
        sum = range.times_plus(a.v, s.re, sum);
    }
    void join(const ScaledSum& other) { sum = sum + other.sum; }
    Pack<float> result() const { return {sum}; }
};
template <>
struct ScaledSum<SingleComplex> {
    Vec re, im; // y and a times the real part of s, a times the imaginary part
    ScaledSum() = default;
    explicit ScaledSum(Pack<SingleComplex> y) : re(y.v), im(Vec::zero()) {}
    ScaledSum(Pack<SingleComplex> a, const Factor<SingleComplex>& s) : re(a.v * s.re), im(a.v * s.im) {}
    ScaledSum(Pack<SingleComplex> y, Pack<SingleComplex> a, const Factor<SingleComplex>& s) {
        a = loaded_once(a);
        re = multiply_add(a.v, s.re, y.v);
        im = a.v * s.im;
    }
    void add(Pack<SingleComplex> a, const Factor<SingleComplex>& s) {
        a = loaded_once(a); // goes into two products
        re = multiply_add(a.v, s.re, re);
        im = multiply_add(a.v, s.im, im);
    }
    void add(Pack<SingleComplex> a, const Factor<SingleComplex>& s, const LaneRange<Vec>& range) {
        re = range.times_plus(a.v, s.re, re);
        im = range.times_plus(a.v, s.im, im);
    }
    void join(const ScaledSum& other) {
        re = re + other.re;
        im = im + other.im;
    }
    Pack<SingleComplex> result() const { return {add_turned(re, swap_parts(im))}; }
};

// One number by which an added pack is multiplied: what its sign is to do to the parts of x is done once.
template <class T>
struct AddedFactor : Factor<T> {
    using Factor<T>::Factor;
};
template <>
struct AddedFactor<SingleComplex> {
    Vec re, im;
    AddedFactor() = default;
    explicit AddedFactor(SingleComplex x) : re(Vec::splat(x.re)), im(negate_part<0>(Vec::splat(x.im))) {}
};

// A pack x of which multiples are added to others.
template <class T>
struct AddedPack;
template <>
struct AddedPack<float> {
    Vec v;
    AddedPack() = default;
    explicit AddedPack(Pack<float> x) : v(x.v) {}
    Pack<float> add_to(const AddedFactor<float>& s, Pack<float> a) const { return {multiply_add(v, s.re, a.v)}; }
};
template <>
struct AddedPack<SingleComplex> {
    Vec v, swapped;
    AddedPack() = default;
    explicit AddedPack(Pack<SingleComplex> x) : v(loaded_once(x.v)), swapped(swap_parts(v)) {}
    Pack<SingleComplex> add_to(const AddedFactor<SingleComplex>& s, Pack<SingleComplex> a) const {
        return {multiply_add(swapped, s.im, multiply_add(v, s.re, a.v))};
    }
};

// A pack as the right-hand operand of dot products.
template <class T>
struct DotOperand;
template <>
struct DotOperand<float> {
    Vec v;
    explicit DotOperand(Pack<float> x) : v(x.v) {}
};
template <>
struct DotOperand<SingleComplex> {
    Vec v, swapped;
    explicit DotOperand(Pack<SingleComplex> x) : v(x.v), swapped(swap_parts(x.v)) {}
};

// The sum of op(a)*x over all elements, where op conjugates or not.
template <bool conjugated, class T>
struct DotSum;
template <bool conjugated>
struct DotSum<conjugated, float> {
    Vec sum;
    static DotSum zero() { return {Vec::zero()}; }
    void add(Pack<float> a, const DotOperand<float>& x) { sum = multiply_add(a.v, x.v, sum); }
    void add(Pack<float> a, const DotOperand<float>& x, const LaneRange<Vec>& range) {
        sum = range.times_plus(a.v, x.v, sum);
    }
    // Moves what was summed to lanes so many elements on, the last ones to the first. Vectors of more than a quad only.
    template <class Number>
    void rotate(Number elements) {
        sum = rotate_lanes(sum, elements);
    }
    // What the lanes of out[] add up to is the result, part after part.
    void lanes(Vec* out) const { out[0] = sum; }
};
template <bool conjugated>
struct DotSum<conjugated, SingleComplex> {
    Vec like, cross; // re*re, im*im; re*im, im*re
    static DotSum zero() { return {Vec::zero(), Vec::zero()}; }
    void add(Pack<SingleComplex> a, const DotOperand<SingleComplex>& x) {
        a = loaded_once(a);
        like = multiply_add(a.v, x.v, like);
        cross = multiply_add(a.v, x.swapped, cross);
    }
    void add(Pack<SingleComplex> a, const DotOperand<SingleComplex>& x, const LaneRange<Vec>& range) {
        like = range.times_plus(a.v, x.v, like);
        cross = range.times_plus(a.v, x.swapped, cross);
    }
    template <class Number>
    void rotate(Number elements) {
        like = rotate_lanes(like, 2 * elements);
        cross = rotate_lanes(cross, 2 * elements);
    }
    void lanes(Vec* out) const {
        out[0] = conjugated ? like : negate_part<1>(like);
        out[1] = conjugated ? negate_part<1>(cross) : cross;
    }
};

// The four floats of which x, y, z and w hold the lanes.
template <class V>
QRV_INLINE void add_lanes(V x, V y, V z, V w, float* out) {
    if constexpr (V::lanes == 4)
        sum_lanes(x, y, z, w).store(out);
    else
        _mm_storeu_ps(out, lane_sums(x, y, z, w));
}

// Several sums, empty as yet.
template <class Sum, int count>
QRV_INLINE void clear(Sum (&sums)[count]) {
    QRV_UNROLL
    for (int i = 0; i < count; ++i)
        sums[i] = Sum::zero();
}

// The results of several sums, one behind the other.
template <int count, bool conjugated, class T>
QRV_INLINE void store_dots(const DotSum<conjugated, T> (&sums)[count], T* out) {
    constexpr int floats = count * floatsIn<T>, padded = (floats + 3) / 4 * 4;
    Vec x[padded];
    QRV_UNROLL
    for (int i = 0; i < padded; ++i)
        x[i] = Vec::zero();
    QRV_UNROLL
    for (int i = 0; i < count; ++i)
        sums[i].lanes(x + i * floatsIn<T>);
    float few[4]; // what is not a whole quad
    QRV_UNROLL
    for (int i = 0; i < padded; i += 4)
        add_lanes(x[i], x[i + 1], x[i + 2], x[i + 3], floats < 4 ? few : Pack<T>::floats(out) + i);
    if constexpr (floats < 4)
        __builtin_memcpy(out, few, sizeof(float) * floats);
}

// y[k] := y[k] + alpha * the result of sums[k]. By quads, as a wider load would wait for their stores.
template <int count, bool conjugated, class T>
QRV_INLINE void add_dots(const DotSum<conjugated, T> (&sums)[count], T alpha, T* y) {
    T dots[count];
    store_dots(sums, dots);
    if constexpr (!isComplex<T> && count % 4 == 0) {
        QRV_UNROLL
        for (int k = 0; k < count; k += 4)
            (Vec4f::load(y + k) + Vec4f::splat(alpha) * Vec4f::load(dots + k)).store(y + k);
    } else {
        QRV_UNROLL
        for (int k = 0; k < count; ++k)
            y[k] += alpha * dots[k];
    }
}

// Products of elements that lie one behind the other with the lanes of x, added in pairs of neighbours, and pairs of
// those, until each lane is the sum of `group`.
template <int group>
QRV_INLINE Vec group_sums(const float* a, Vec x) {
    if constexpr (group == 1)
        return Vec::load(a) * x;
    else
        return sum_neighbours(group_sums<group / 2>(a, x), group_sums<group / 2>(a + group / 2 * Vec::lanes, x));
}
// y := y + alpha*A'*x for columns of `rows` elements without gaps between them.
template <int rows>
[[gnu::noinline]] void add_dots_without_gaps(Count<rows>, int n, float alpha, const float* a, const float* x,
                                             float* y) {
    constexpr int lanes = Vec::lanes;
    alignas(64) float buffer[rows * lanes];
    for (int i = 0; i < lanes; ++i)
        buffer[i] = x[i % rows];
    const Vec xs = Vec::load_aligned(buffer), factor = Vec::splat(alpha);
    const auto dots = [=](const float* columns) __attribute__((always_inline)) {
        if constexpr (rows == 3) {
            Vec first, second, third;
            load_triples(columns, first, second, third);
            return multiply_add(Vec::splat(x[2]), third,
                                multiply_add(Vec::splat(x[1]), second, Vec::splat(x[0]) * first));
        } else {
            return group_sums<rows>(columns, xs);
        }
    };
    for (; n >= lanes; n -= lanes, a += rows * lanes, y += lanes)
        multiply_add(factor, dots(a), Vec::load(y)).store(y);
    if (n == 0)
        return;
    for (int i = 0, left = rows * n; i < rows * lanes; i += lanes, left -= lanes)
        (left >= lanes ? Vec::load(a + i)
         : left > 0    ? load_part<Vec>(a + i, left)
                       : Vec::zero())
            .store_aligned(buffer + i);
    Pack<float>{multiply_add(factor, dots(buffer), Pack<float>::load(y, n).v)}.store(y, n);
}

// a*b + c, rounded as in the lanes of a vector.
inline float multiply_add_element(float a, float b, float c) {
    if constexpr (Vec::lanes > 4)
        return __builtin_fmaf(a, b, c);
    else
        return a * b + c;
}

// ---- Columns of a matrix that one pass takes ----------------------------------------------------------------------

constexpr int registers = Vec::lanes == 16 ? 32 : sizeof(void*) == 8 ? 16 : 8;

// So many that what a pass keeps of each, in `vectors` registers, fills half of them.
constexpr int columns_for(int vectors, int most) {
    const int fitting = registers / 2 / vectors;
    return fitting < 1 ? 1 : fitting < most ? fitting : most;
}
template <class T>
constexpr int columnsAtOnce = columns_for(floatsIn<T>, 8); // their factors or their sums
template <class T>
constexpr int columnsOfBothHalves = columns_for(2 * floatsIn<T>, 8); // factors and sums
template <class T, int terms>
constexpr int columnsOfUpdate = columns_for(terms* floatsIn<T>, 4); // factors

} // namespace qrv::kernel::QRV_KERNEL_BUILD
