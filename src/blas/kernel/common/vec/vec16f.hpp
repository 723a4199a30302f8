// Sixteen floats in one 512-bit register, for the forms compiled with AVX-512 (F, VL, DQ, BW). "Quad" is a group of
// four lanes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <immintrin.h>

#include "blas/kernel/common/vec/vec4f.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

struct Vec16f {
    static constexpr int lanes = 16;
    static constexpr int quads = lanes / 4;
    static constexpr bool masksStores = true; // at the price of whole ones
    __m512 v;

    static Vec16f zero() { return {_mm512_setzero_ps()}; }
    static Vec16f splat(float x) { return {_mm512_set1_ps(x)}; }
    static Vec16f load(const float* p) { return {_mm512_loadu_ps(p)}; }
    static Vec16f load_aligned(const float* p) { return {_mm512_load_ps(p)}; }
    void store(float* p) const { _mm512_storeu_ps(p, v); }
    void store_aligned(float* p) const { _mm512_store_ps(p, v); }
    // The two floats at p, aligned to 8 bytes, in every pair of lanes; the four at p in every quad.
    static Vec16f repeat_pair(const float* p) { return {_mm512_castpd_ps(_mm512_set1_pd(float_pair(p)))}; }
    static Vec16f repeat_quad(const float* p) { return {_mm512_broadcast_f32x4(_mm_load_ps(p))}; }

    // p0 p0 p2 p2 ..., respectively p1 p1 p3 p3 ...: loads without a shuffle.
    static Vec16f load_even_twice(const float* p) { return {_mm512_moveldup_ps(_mm512_load_ps(p))}; }
    static Vec16f load_odd_twice(const float* p) { return {_mm512_movehdup_ps(_mm512_load_ps(p))}; }
    // x in even lanes, y in odd ones; and by quads
    static Vec16f alternate(float x, float y) { return {_mm512_setr4_ps(x, y, x, y)}; }
    static Vec16f alternate_quads(float x, float y) {
        return {_mm512_mask_mov_ps(_mm512_set1_ps(x), 0xF0F0, _mm512_set1_ps(y))};
    }

    friend Vec16f operator+(Vec16f a, Vec16f b) { return {_mm512_add_ps(a.v, b.v)}; }
    friend Vec16f operator*(Vec16f a, Vec16f b) { return {_mm512_mul_ps(a.v, b.v)}; }

    // Lanes in groups of `group`, of which the first `count` (none if negative) are kept.
    struct Mask {
        __mmask16 bits;
        Mask(int group, int count)
            : bits(_mm512_cmpgt_epi32_mask(_mm512_set1_epi32(count),
                                           _mm512_and_si512(_mm512_set1_epi32(group - 1), lane_numbers()))) {}
        explicit Mask(__mmask16 x) : bits(x) {}
        static Mask first(int count) { return Mask(static_cast<__mmask16>((1U << count) - 1)); }
        static Mask from(int lane) { return Mask(static_cast<__mmask16>(~0U << lane)); }
        friend Mask operator&(Mask x, Mask y) { return Mask(static_cast<__mmask16>(x.bits & y.bits)); }
    };
    Vec16f kept(Mask mask) const { return {_mm512_maskz_mov_ps(mask.bits, v)}; }

    static __m512i lane_numbers() { return _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15); }
};

// The lower half of a vector where no more is needed: half the work of processors that take 512 bits in two steps.
struct LowerHalf16f {
    __m256 v;

    static LowerHalf16f zero() { return {_mm256_setzero_ps()}; }
    static LowerHalf16f splat(float x) { return {_mm256_set1_ps(x)}; }

    LowerHalf16f operator+(LowerHalf16f b) const { return {_mm256_add_ps(v, b.v)}; }
};
inline LowerHalf16f lower_half(Vec16f x) {
    return {_mm512_castps512_ps256(x.v)};
}
inline Vec16f whole(LowerHalf16f x) {
    return {_mm512_zextps256_ps512(x.v)};
}
inline LowerHalf16f multiply_add(LowerHalf16f a, LowerHalf16f b, LowerHalf16f c) {
    return {_mm256_fmadd_ps(a.v, b.v, c.v)};
}

// Vec16f::load by two loads: a load may wait for a store before it whose address ends alike, one of 512 bits ten times
// as long.
inline Vec16f load_halves(const float* p) {
    const __m512 low = _mm512_castps256_ps512(_mm256_loadu_ps(p));
    return {_mm512_insertf32x8(low, _mm256_loadu_ps(p + 8), 1)};
}

inline __mmask16 first_lanes(int count) {
    return static_cast<__mmask16>((1U << count) - 1);
}

// a*b + c, rounded once
inline Vec16f multiply_add(Vec16f a, Vec16f b, Vec16f c) {
    return {_mm512_fmadd_ps(a.v, b.v, c.v)};
}
// The same in the lanes that the mask keeps, c in the others, where a is 0.
inline Vec16f multiply_add_kept(Vec16f a, Vec16f b, Vec16f c, Vec16f::Mask mask) {
    return {_mm512_mask3_fmadd_ps(a.v, b.v, c.v, mask.bits)};
}
// c - a*b, rounded once
inline Vec16f subtract_product(Vec16f a, Vec16f b, Vec16f c) {
    return {_mm512_fnmadd_ps(a.v, b.v, c.v)};
}
// x with the sign changed where `signs` has -0 and kept where it has 0
inline Vec16f change_signs(Vec16f x, Vec16f signs) {
    return {_mm512_xor_ps(x.v, signs.v)};
}
// x1 x0 x3 x2 in each quad: real and imaginary parts for each other
inline Vec16f swap_parts(Vec16f x) {
    return {_mm512_permute_ps(x.v, 0xB1)};
}
// Each quad changes places with its neighbour.
inline Vec16f swap_quads(Vec16f x) {
    return {_mm512_shuffle_f32x4(x.v, x.v, 0xB1)};
}
// a0 b0 a1 b1, respectively a2 b2 a3 b3, in each quad
inline Vec16f low_pairs(Vec16f a, Vec16f b) {
    return {_mm512_unpacklo_ps(a.v, b.v)};
}
inline Vec16f high_pairs(Vec16f a, Vec16f b) {
    return {_mm512_unpackhi_ps(a.v, b.v)};
}
// a0 a2 b0 b2, respectively a1 a3 b1 b3, in each quad
inline Vec16f unzip_even(Vec16f a, Vec16f b) {
    return {_mm512_shuffle_ps(a.v, b.v, _MM_SHUFFLE(2, 0, 2, 0))};
}
inline Vec16f unzip_odd(Vec16f a, Vec16f b) {
    return {_mm512_shuffle_ps(a.v, b.v, _MM_SHUFFLE(3, 1, 3, 1))};
}
// a0 a1 b0 b1 in each quad
inline Vec16f low_halves(Vec16f a, Vec16f b) {
    return {_mm512_castpd_ps(_mm512_unpacklo_pd(_mm512_castps_pd(a.v), _mm512_castps_pd(b.v)))};
}
// a2 a3 b2 b3 in each quad
inline Vec16f high_halves(Vec16f a, Vec16f b) {
    return {_mm512_castpd_ps(_mm512_unpackhi_pd(_mm512_castps_pd(a.v), _mm512_castps_pd(b.v)))};
}
// Quad i of x[j] becomes quad j of x[i].
inline void transpose_quads(Vec16f (&x)[Vec16f::quads]) {
    const __m512 low01 = _mm512_shuffle_f32x4(x[0].v, x[1].v, 0x44);
    const __m512 high01 = _mm512_shuffle_f32x4(x[0].v, x[1].v, 0xEE);
    const __m512 low23 = _mm512_shuffle_f32x4(x[2].v, x[3].v, 0x44);
    const __m512 high23 = _mm512_shuffle_f32x4(x[2].v, x[3].v, 0xEE);
    x[0].v = _mm512_shuffle_f32x4(low01, low23, 0x88);
    x[1].v = _mm512_shuffle_f32x4(low01, low23, 0xDD);
    x[2].v = _mm512_shuffle_f32x4(high01, high23, 0x88);
    x[3].v = _mm512_shuffle_f32x4(high01, high23, 0xDD);
}

// Quads of a and of b in turn: a0 b0 a1 b1 and a2 b2 a3 b3. Two of them are an octet.
inline void pair_quads(Vec16f a, Vec16f b, Vec16f (&pair)[2]) {
    const auto pick = [=](__m512i order) {
        return _mm512_castpd_ps(_mm512_permutex2var_pd(_mm512_castps_pd(a.v), order, _mm512_castps_pd(b.v)));
    };
    pair[0].v = pick(_mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11));
    pair[1].v = pick(_mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15));
}
inline __m256 octet(const Vec16f (&pair)[2], int i) {
    const __m512 x = pair[i / 2].v;
    return i % 2 == 0 ? _mm512_castps512_ps256(x) : _mm512_extractf32x8_ps(x, 1);
}
inline __m128 quad_of(Vec16f x, int i) {
    return i == 0   ? _mm512_castps512_ps128(x.v)
           : i == 1 ? _mm512_extractf32x4_ps(x.v, 1)
           : i == 2 ? _mm512_extractf32x4_ps(x.v, 2)
                    : _mm512_extractf32x4_ps(x.v, 3);
}

// The first `count` floats at p, the rest zero; nothing past them is read.
inline __m128 load_quad(const float* p, int count) {
    return _mm_maskz_loadu_ps(static_cast<__mmask8>((1U << count) - 1), p);
}
// Four quads side by side.
inline __m512 join_quads(__m128 q0, __m128 q1, __m128 q2, __m128 q3) {
    __m512 x = _mm512_castps128_ps512(q0);
    x = _mm512_mask_broadcast_f32x4(x, 0x00F0, q1);
    x = _mm512_mask_broadcast_f32x4(x, 0x0F00, q2);
    return _mm512_mask_broadcast_f32x4(x, 0xF000, q3);
}
inline Vec16f join(const __m128 (&quad)[Vec16f::quads]) {
    return {join_quads(quad[0], quad[1], quad[2], quad[3])};
}
// Two steps of eight complex rows become the two steps of their first four and of their last four rows, four real
// parts followed by four imaginary parts.
inline void separate_parts(Vec16f (&x)[2]) {
    const __m512i first = _mm512_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7, 16, 18, 20, 22, 17, 19, 21, 23);
    const __m512 low = _mm512_permutex2var_ps(x[0].v, first, x[1].v);
    x[1].v = _mm512_permutex2var_ps(x[0].v, _mm512_add_epi32(first, _mm512_set1_epi32(8)), x[1].v);
    x[0].v = low;
}

// The first `rows` floats of c; the others are neither read nor written.
inline Vec16f load_rows(const float* c, int rows) {
    return rows == 16 ? Vec16f::load(c) : Vec16f{_mm512_maskz_loadu_ps(first_lanes(rows), c)};
}
inline void store_rows(float* c, Vec16f x, int rows) {
    if (rows == 16)
        x.store(c);
    else
        _mm512_mask_storeu_ps(c, first_lanes(rows), x.v);
}

// Loads, respectively stores, the lanes that the mask keeps; the others are zero, respectively not written.
inline Vec16f load_kept(const float* p, Vec16f::Mask mask) {
    return {_mm512_maskz_loadu_ps(mask.bits, p)};
}
inline void store_kept(float* p, Vec16f x, Vec16f::Mask mask) {
    _mm512_mask_storeu_ps(p, mask.bits, x.v);
}

// Lane i becomes lane i + by, the last ones the first.
inline Vec16f rotate_lanes(Vec16f x, int by) {
    return {_mm512_permutexvar_ps(_mm512_sub_epi32(Vec16f::lane_numbers(), _mm512_set1_epi32(by)), x.v)};
}

// The first `count` lanes, fewer than all, by whole stores.
inline void store_in_pieces(float* p, __m256 x, int count) {
    __m128 quad = _mm256_castps256_ps128(x);
    if (count & 4) {
        _mm_storeu_ps(p, quad);
        quad = _mm256_extractf128_ps(x, 1);
        p += 4;
    }
    if (count & 2) {
        _mm_storel_pi(reinterpret_cast<__m64*>(p), quad);
        quad = _mm_movehl_ps(quad, quad);
        p += 2;
    }
    if (count & 1)
        _mm_store_ss(p, quad);
}
inline void store_in_pieces(float* p, Vec16f x, int count) {
    __m256 half = _mm512_castps512_ps256(x.v);
    if (count & 8) {
        _mm256_storeu_ps(p, half);
        half = _mm512_extractf32x8_ps(x.v, 1);
        p += 8;
    }
    store_in_pieces(p, half, count & 7);
}

// The sums over the lanes of a, b, c and d.
inline __m128 lane_sums(Vec16f a, Vec16f b, Vec16f c, Vec16f d) {
    const auto fold = [](__m512 x, __m512 y) { // lanes of x and of y in turn
        return _mm512_add_ps(_mm512_unpacklo_ps(x, y), _mm512_unpackhi_ps(x, y));
    };
    const __m512 ab = fold(a.v, b.v), cd = fold(c.v, d.v);
    const __m512 quads = _mm512_add_ps(_mm512_shuffle_ps(ab, cd, 0x44), _mm512_shuffle_ps(ab, cd, 0xEE));
    const __m256 two = _mm256_add_ps(_mm512_castps512_ps256(quads), _mm512_extractf32x8_ps(quads, 1));
    return _mm_add_ps(_mm256_castps256_ps128(two), _mm256_extractf128_ps(two, 1));
}
// The first `count` lanes.
inline void store_quad(float* p, __m128 x, int count) {
    _mm_mask_storeu_ps(p, static_cast<__mmask8>((1U << count) - 1), x);
}

// Steps l to l+3 of four rows, each contiguous in memory, one quad a step. Steps from `count` on are zero and not read.
inline void transpose_rows(const float* const (&row)[4], int l, int count, Vec16f (&x)[1]) {
    const auto quad = [=](const float* p) { return count >= 4 ? _mm_loadu_ps(p + l) : load_quad(p + l, count); };
    const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    x[0].v = _mm512_permutexvar_ps(order, join_quads(quad(row[0]), quad(row[1]), quad(row[2]), quad(row[3])));
}

// Lane i of x, y and z is element 3 i, 3 i + 1 and 3 i + 2 of p.
inline void load_triples(const float* p, Vec16f& x, Vec16f& y, Vec16f& z) {
    const __m512 a = _mm512_loadu_ps(p), b = _mm512_loadu_ps(p + 16), c = _mm512_loadu_ps(p + 32);
    const auto pick = [=](__m512i fromAB, __m512i andC) {
        return _mm512_permutex2var_ps(_mm512_permutex2var_ps(a, fromAB, b), andC, c);
    };
    x.v = pick(_mm512_setr_epi32(0, 3, 6, 9, 12, 15, 18, 21, 24, 27, 30, 0, 0, 0, 0, 0),
               _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 17, 20, 23, 26, 29));
    y.v = pick(_mm512_setr_epi32(1, 4, 7, 10, 13, 16, 19, 22, 25, 28, 31, 0, 0, 0, 0, 0),
               _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 18, 21, 24, 27, 30));
    z.v = pick(_mm512_setr_epi32(2, 5, 8, 11, 14, 17, 20, 23, 26, 29, 0, 0, 0, 0, 0, 0),
               _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 16, 19, 22, 25, 28, 31));
}
inline void store_triples(float* p, Vec16f x, Vec16f y, Vec16f z) {
    const auto store = [=](float* to, __m512i fromXY, __m512i andZ) {
        _mm512_storeu_ps(to, _mm512_permutex2var_ps(_mm512_permutex2var_ps(x.v, fromXY, y.v), andZ, z.v));
    };
    store(p + 0, _mm512_setr_epi32(0, 16, 0, 1, 17, 0, 2, 18, 0, 3, 19, 0, 4, 20, 0, 5),
          _mm512_setr_epi32(0, 1, 16, 3, 4, 17, 6, 7, 18, 9, 10, 19, 12, 13, 20, 15));
    store(p + 16, _mm512_setr_epi32(21, 0, 6, 22, 0, 7, 23, 0, 8, 24, 0, 9, 25, 0, 10, 26),
          _mm512_setr_epi32(0, 21, 2, 3, 22, 5, 6, 23, 8, 9, 24, 11, 12, 25, 14, 15));
    store(p + 32, _mm512_setr_epi32(0, 11, 27, 0, 12, 28, 0, 13, 29, 0, 14, 30, 0, 15, 31, 0),
          _mm512_setr_epi32(26, 1, 2, 27, 4, 5, 28, 7, 8, 29, 10, 11, 30, 13, 14, 31));
}

// ---- For level 1 --------------------------------------------------------------------------------------------------

inline Vec16f loaded_once(Vec16f x) {
    asm("" : "+v"(x.v));
    return x;
}
// The sum of its quads.
inline Vec4f sum_quads(Vec16f x) {
    const __m256 half = _mm256_add_ps(_mm512_castps512_ps256(x.v), _mm512_extractf32x8_ps(x.v, 1));
    return {_mm_add_ps(_mm256_castps256_ps128(half), _mm256_extractf128_ps(half, 1))};
}
// The first `count` lanes, fewer than all; the others are 0, respectively not written.
template <>
inline Vec16f load_part<Vec16f>(const float* p, int count) {
    return {_mm512_maskz_loadu_ps(first_lanes(count), p)};
}
inline void store_part(float* p, Vec16f x, int count) {
    _mm512_mask_storeu_ps(p, first_lanes(count), x.v);
}
template <int count>
Vec16f load_piece(const float* p) {
    if constexpr (count == 8)
        return {_mm512_zextps256_ps512(_mm256_loadu_ps(p))};
    else
        return {_mm512_zextps128_ps512(load_first<count>(p).v)};
}
template <int count>
void store_piece(float* p, Vec16f x) {
    if constexpr (count == 8)
        _mm256_storeu_ps(p, _mm512_castps512_ps256(x.v));
    else
        store_first<count>(p, Vec4f{_mm512_castps512_ps128(x.v)});
}

// ---- For the routines of one vector ---------------------------------------------------------------------------------

inline Vec16f abs(Vec16f x) {
    return {_mm512_abs_ps(x.v)};
}
inline float sum_of_lanes(Vec16f x) {
    return sum_of_lanes(sum_quads(x));
}
// a0+a1 a2+a3 .. a14+a15 b0+b1 .. b14+b15
inline Vec16f sum_neighbours(Vec16f a, Vec16f b) {
    const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const __m512i odd = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
    return {_mm512_add_ps(_mm512_permutex2var_ps(a.v, even, b.v), _mm512_permutex2var_ps(a.v, odd, b.v))};
}
// Of each two lanes that are magnitudes the larger, NaN being above all.
inline Vec16f larger_magnitude(Vec16f a, Vec16f b) {
    return {_mm512_castsi512_ps(_mm512_max_epi32(_mm512_castps_si512(a.v), _mm512_castps_si512(b.v)))};
}
// The largest lane, in every lane.
inline Vec16f spread_largest(Vec16f x) {
    x = larger_magnitude(x, {_mm512_shuffle_f32x4(x.v, x.v, 0x4E)});
    x = larger_magnitude(x, {_mm512_shuffle_f32x4(x.v, x.v, 0xB1)});
    x = larger_magnitude(x, {_mm512_permute_ps(x.v, 0x4E)});
    return larger_magnitude(x, {_mm512_permute_ps(x.v, 0xB1)});
}
inline float first_lane(Vec16f x) {
    return _mm512_cvtss_f32(x.v);
}
// Bit i is set where lane i of a, or of a, b, c and d one behind the other, is x.
inline std::uint64_t equal_lanes(Vec16f x, Vec16f a) {
    return _mm512_cmp_ps_mask(x.v, a.v, _CMP_EQ_OQ);
}
inline std::uint64_t equal_lanes(Vec16f x, Vec16f a, Vec16f b, Vec16f c, Vec16f d) {
    constexpr int lanes = Vec16f::lanes;
    return (equal_lanes(x, a) | equal_lanes(x, b) << lanes) | (equal_lanes(x, c) | equal_lanes(x, d) << lanes)
                                                                  << 2 * lanes;
}

// The lanes of a vector in double.
template <>
struct Doubles<Vec16f> {
    __m512d low, high;

    static Doubles zero() { return {_mm512_setzero_pd(), _mm512_setzero_pd()}; }
    static Doubles widen(Vec16f x) {
        return {_mm512_cvtps_pd(_mm512_castps512_ps256(x.v)), _mm512_cvtps_pd(_mm512_extractf32x8_ps(x.v, 1))};
    }
    static Doubles widen_peeled(const float* p) {
        return {_mm512_cvtps_pd(_mm256_loadu_ps(p)), _mm512_cvtps_pd(_mm256_loadu_ps(p + 8))};
    }
    void add_squares(Doubles x) {
        low = _mm512_fmadd_pd(x.low, x.low, low);
        high = _mm512_fmadd_pd(x.high, x.high, high);
    }
    friend Doubles operator+(Doubles a, Doubles b) {
        return {_mm512_add_pd(a.low, b.low), _mm512_add_pd(a.high, b.high)};
    }
    double sum() const { return _mm512_reduce_add_pd(_mm512_add_pd(low, high)); }
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
