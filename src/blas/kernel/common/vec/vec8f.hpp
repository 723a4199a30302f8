// Eight floats in one 256-bit register, for the forms compiled with AVX2 and FMA. "Quad" is a group of four lanes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <immintrin.h>

#include "blas/kernel/common/vec/vec4f.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

struct Vec8f {
    static constexpr int lanes = 8;
    static constexpr int quads = lanes / 4;
    static constexpr bool masksStores = false; // some processors take many steps for a masked store
    __m256 v;

    static Vec8f zero() { return {_mm256_setzero_ps()}; }
    static Vec8f splat(float x) { return {_mm256_set1_ps(x)}; }
    static Vec8f load(const float* p) { return {_mm256_loadu_ps(p)}; }
    static Vec8f load_aligned(const float* p) { return {_mm256_load_ps(p)}; }
    void store(float* p) const { _mm256_storeu_ps(p, v); }
    void store_aligned(float* p) const { _mm256_store_ps(p, v); }
    // The two floats at p, aligned to 8 bytes, in every pair of lanes; the four at p in every quad.
    static Vec8f repeat_pair(const float* p) { return {_mm256_castpd_ps(_mm256_set1_pd(float_pair(p)))}; }
    static Vec8f repeat_quad(const float* p) { return {_mm256_broadcast_ps(reinterpret_cast<const __m128*>(p))}; }

    // p0 p0 p2 p2 ..., respectively p1 p1 p3 p3 ...: loads without a shuffle.
    static Vec8f load_even_twice(const float* p) { return {_mm256_moveldup_ps(_mm256_load_ps(p))}; }
    static Vec8f load_odd_twice(const float* p) { return {_mm256_movehdup_ps(_mm256_load_ps(p))}; }
    // x in even lanes, y in odd ones; and by quads
    static Vec8f alternate(float x, float y) { return {_mm256_setr_ps(x, y, x, y, x, y, x, y)}; }
    static Vec8f alternate_quads(float x, float y) { return {_mm256_setr_ps(x, x, x, x, y, y, y, y)}; }

    friend Vec8f operator+(Vec8f a, Vec8f b) { return {_mm256_add_ps(a.v, b.v)}; }
    friend Vec8f operator*(Vec8f a, Vec8f b) { return {_mm256_mul_ps(a.v, b.v)}; }

    // Lanes in groups of `group`, of which the first `count` (none if negative) are kept.
    struct Mask {
        __m256 bits;
        Mask(int group, int count)
            : bits(_mm256_castsi256_ps(_mm256_cmpgt_epi32(
                  _mm256_set1_epi32(count), _mm256_and_si256(_mm256_set1_epi32(group - 1), lane_numbers())))) {}
        static Mask first(int count) { return {lanes, count}; }
        // In each group the lanes from `count` on.
        static Mask from(int group, int count) {
            Mask mask(group, count);
            mask.bits = _mm256_xor_ps(mask.bits, _mm256_castsi256_ps(_mm256_set1_epi32(-1)));
            return mask;
        }
    };
    Vec8f kept(Mask mask) const { return {_mm256_and_ps(mask.bits, v)}; }

    static __m256i lane_numbers() { return _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7); }
};

inline Vec8f load_halves(const float* p) {
    return Vec8f::load(p);
}

// a*b + c, rounded once
inline Vec8f multiply_add(Vec8f a, Vec8f b, Vec8f c) {
    return {_mm256_fmadd_ps(a.v, b.v, c.v)};
}
// c - a*b, rounded once
inline Vec8f subtract_product(Vec8f a, Vec8f b, Vec8f c) {
    return {_mm256_fnmadd_ps(a.v, b.v, c.v)};
}
// x with the sign changed where `signs` has -0 and kept where it has 0
inline Vec8f change_signs(Vec8f x, Vec8f signs) {
    return {_mm256_xor_ps(x.v, signs.v)};
}
// x1 x0 x3 x2 in each quad: real and imaginary parts for each other
inline Vec8f swap_parts(Vec8f x) {
    return {_mm256_permute_ps(x.v, 0xB1)};
}
// Each quad changes places with its neighbour.
inline Vec8f swap_quads(Vec8f x) {
    return {_mm256_permute2f128_ps(x.v, x.v, 0x01)};
}
// a0 b0 a1 b1, respectively a2 b2 a3 b3, in each quad
inline Vec8f low_pairs(Vec8f a, Vec8f b) {
    return {_mm256_unpacklo_ps(a.v, b.v)};
}
inline Vec8f high_pairs(Vec8f a, Vec8f b) {
    return {_mm256_unpackhi_ps(a.v, b.v)};
}
// a0 a2 b0 b2, respectively a1 a3 b1 b3, in each quad
inline Vec8f unzip_even(Vec8f a, Vec8f b) {
    return {_mm256_shuffle_ps(a.v, b.v, _MM_SHUFFLE(2, 0, 2, 0))};
}
inline Vec8f unzip_odd(Vec8f a, Vec8f b) {
    return {_mm256_shuffle_ps(a.v, b.v, _MM_SHUFFLE(3, 1, 3, 1))};
}
// a0 a1 b0 b1 in each quad
inline Vec8f low_halves(Vec8f a, Vec8f b) {
    return {_mm256_castpd_ps(_mm256_unpacklo_pd(_mm256_castps_pd(a.v), _mm256_castps_pd(b.v)))};
}
// a2 a3 b2 b3 in each quad
inline Vec8f high_halves(Vec8f a, Vec8f b) {
    return {_mm256_castpd_ps(_mm256_unpackhi_pd(_mm256_castps_pd(a.v), _mm256_castps_pd(b.v)))};
}
// Quad i of x[j] becomes quad j of x[i].
inline void transpose_quads(Vec8f (&x)[Vec8f::quads]) {
    const __m256 low = _mm256_permute2f128_ps(x[0].v, x[1].v, 0x20);
    x[1].v = _mm256_permute2f128_ps(x[0].v, x[1].v, 0x31);
    x[0].v = low;
}

// The same of two vectors, whose octets are of a quad of each then.
inline void pair_quads(Vec8f a, Vec8f b, Vec8f (&pair)[2]) {
    pair[0] = a;
    pair[1] = b;
    transpose_quads(pair);
}
inline __m256 octet(const Vec8f (&pair)[2], int i) {
    return pair[i].v;
}
inline __m128 quad_of(Vec8f x, int i) {
    return i == 0 ? _mm256_castps256_ps128(x.v) : _mm256_extractf128_ps(x.v, 1);
}

// Four complex rows of a step become their four real parts, then their four imaginary parts.
inline void separate_parts(Vec8f (&x)[1]) {
    x[0].v = _mm256_permutevar8x32_ps(x[0].v, _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7));
}
inline Vec8f join(const __m128 (&quad)[Vec8f::quads]) {
    return {_mm256_set_m128(quad[1], quad[0])};
}

// The first `count` floats at p, the rest zero; nothing past them is read.
inline __m128 load_quad(const float* p, int count) {
    return _mm_maskload_ps(p, _mm_cmpgt_epi32(_mm_set1_epi32(count), _mm_setr_epi32(0, 1, 2, 3)));
}

// The first `rows` floats of c; the others are neither read nor written.
inline __m256i row_mask(int rows) {
    return _mm256_cmpgt_epi32(_mm256_set1_epi32(rows), Vec8f::lane_numbers());
}
inline Vec8f load_rows(const float* c, int rows) {
    if (rows == 8)
        return Vec8f::load(c);
    if (rows == 4)
        return {_mm256_zextps128_ps256(_mm_loadu_ps(c))};
    return {_mm256_maskload_ps(c, row_mask(rows))};
}
inline void store_rows(float* c, Vec8f x, int rows) {
    if (rows == 8)
        x.store(c);
    else if (rows == 4)
        _mm_storeu_ps(c, _mm256_castps256_ps128(x.v));
    else
        _mm256_maskstore_ps(c, row_mask(rows), x.v);
}

// Loads, respectively stores, the lanes that the mask keeps; the others are zero, respectively not written.
inline Vec8f load_kept(const float* p, Vec8f::Mask mask) {
    return {_mm256_maskload_ps(p, _mm256_castps_si256(mask.bits))};
}
inline void store_kept(float* p, Vec8f x, Vec8f::Mask mask) {
    _mm256_maskstore_ps(p, _mm256_castps_si256(mask.bits), x.v);
}

// Lane i becomes lane i + by, the last ones the first.
inline Vec8f rotate_lanes(Vec8f x, int by) {
    const __m256i lane = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    return {_mm256_permutevar8x32_ps(x.v, _mm256_sub_epi32(lane, _mm256_set1_epi32(by)))};
}

// The first `count` lanes, fewer than all, by whole stores.
inline void store_in_pieces(float* p, Vec8f x, int count) {
    __m128 quad = _mm256_castps256_ps128(x.v);
    if (count & 4) {
        _mm_storeu_ps(p, quad);
        quad = _mm256_extractf128_ps(x.v, 1);
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

// The sums over the lanes of a, b, c and d.
inline __m128 lane_sums(Vec8f a, Vec8f b, Vec8f c, Vec8f d) {
    const __m256 sums = _mm256_hadd_ps(_mm256_hadd_ps(a.v, b.v), _mm256_hadd_ps(c.v, d.v));
    return _mm_add_ps(_mm256_castps256_ps128(sums), _mm256_extractf128_ps(sums, 1));
}
// The first `count` lanes.
inline void store_quad(float* p, __m128 x, int count) {
    if (count == 4)
        _mm_storeu_ps(p, x);
    else
        store_in_pieces(p, {_mm256_castps128_ps256(x)}, count);
}

// Steps l to l+3 of four rows, each contiguous in memory, one quad a step. Steps from `count` on are zero and not read.
inline void transpose_rows(const float* const (&row)[4], int l, int count, Vec8f (&x)[2]) {
    const auto quad = [=](const float* p) { return count >= 4 ? _mm_loadu_ps(p + l) : load_quad(p + l, count); };
    const __m256 even = _mm256_set_m128(quad(row[2]), quad(row[0])), odd = _mm256_set_m128(quad(row[3]), quad(row[1]));
    const auto in_order = [](__m256 pairs) {
        return Vec8f{_mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(pairs), 0xD8))};
    };
    x[0] = in_order(_mm256_unpacklo_ps(even, odd));
    x[1] = in_order(_mm256_unpackhi_ps(even, odd));
}

// Lane i of x, y and z is element 3 i, 3 i + 1 and 3 i + 2 of p: as Vec4f's in either half.
inline void load_triples(const float* p, Vec8f& x, Vec8f& y, Vec8f& z) {
    const auto halves = [=](int i) {
        return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(p + i)), _mm_loadu_ps(p + 12 + i), 1);
    };
    const __m256 a = halves(0), b = halves(4), c = halves(8);
    const __m256 xy = _mm256_shuffle_ps(b, c, _MM_SHUFFLE(2, 1, 3, 2));
    const __m256 yz = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 2, 1));
    x.v = _mm256_shuffle_ps(a, xy, _MM_SHUFFLE(2, 0, 3, 0));
    y.v = _mm256_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0));
    z.v = _mm256_shuffle_ps(yz, c, _MM_SHUFFLE(3, 0, 3, 1));
}
inline void store_triples(float* p, Vec8f x, Vec8f y, Vec8f z) {
    const __m256 xy = _mm256_shuffle_ps(x.v, y.v, _MM_SHUFFLE(2, 0, 2, 0));
    const __m256 yz = _mm256_shuffle_ps(y.v, z.v, _MM_SHUFFLE(3, 1, 3, 1));
    const __m256 zx = _mm256_shuffle_ps(z.v, x.v, _MM_SHUFFLE(3, 1, 2, 0));
    const auto store_halves = [=](int i, __m256 half) {
        _mm_storeu_ps(p + i, _mm256_castps256_ps128(half));
        _mm_storeu_ps(p + 12 + i, _mm256_extractf128_ps(half, 1));
    };
    store_halves(0, _mm256_shuffle_ps(xy, zx, _MM_SHUFFLE(2, 0, 2, 0)));
    store_halves(4, _mm256_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0)));
    store_halves(8, _mm256_shuffle_ps(zx, yz, _MM_SHUFFLE(3, 1, 3, 1)));
}

// ---- For level 1 --------------------------------------------------------------------------------------------------

inline Vec8f loaded_once(Vec8f x) {
    asm("" : "+x"(x.v));
    return x;
}
// The sum of its quads.
inline Vec4f sum_quads(Vec8f x) {
    return {_mm_add_ps(_mm256_castps256_ps128(x.v), _mm256_extractf128_ps(x.v, 1))};
}
// The first `count` lanes, fewer than all; the others are 0, respectively not written.
template <>
inline Vec8f load_part<Vec8f>(const float* p, int count) {
    return {_mm256_maskload_ps(p, row_mask(count))};
}
inline void store_part(float* p, Vec8f x, int count) {
    store_in_pieces(p, x, count);
}
template <int count>
Vec8f load_piece(const float* p) {
    return {_mm256_zextps128_ps256(load_first<count>(p).v)};
}
template <int count>
void store_piece(float* p, Vec8f x) {
    store_first<count>(p, Vec4f{_mm256_castps256_ps128(x.v)});
}

// ---- For the routines of one vector ---------------------------------------------------------------------------------

inline Vec8f abs(Vec8f x) {
    return {_mm256_andnot_ps(_mm256_set1_ps(-0.0F), x.v)};
}
inline float sum_of_lanes(Vec8f x) {
    return sum_of_lanes(sum_quads(x));
}
// a0+a1 a2+a3 .. a6+a7 b0+b1 .. b6+b7
inline Vec8f sum_neighbours(Vec8f a, Vec8f b) {
    const __m256d quads = _mm256_castps_pd(_mm256_hadd_ps(a.v, b.v));
    return {_mm256_castpd_ps(_mm256_permute4x64_pd(quads, 0xD8))};
}
// Of each two lanes that are magnitudes the larger, NaN being above all.
inline Vec8f larger_magnitude(Vec8f a, Vec8f b) {
    return {_mm256_castsi256_ps(_mm256_max_epi32(_mm256_castps_si256(a.v), _mm256_castps_si256(b.v)))};
}
// The largest lane, in every lane.
inline Vec8f spread_largest(Vec8f x) {
    x = larger_magnitude(x, {_mm256_permute2f128_ps(x.v, x.v, 1)});
    x = larger_magnitude(x, {_mm256_permute_ps(x.v, 0x4E)});
    return larger_magnitude(x, {_mm256_permute_ps(x.v, 0xB1)});
}
inline float first_lane(Vec8f x) {
    return _mm256_cvtss_f32(x.v);
}
// Bit i is set where lane i of a, or of a, b, c and d one behind the other, is x.
inline std::uint64_t equal_lanes(Vec8f x, Vec8f a) {
    return static_cast<unsigned>(_mm256_movemask_ps(_mm256_cmp_ps(x.v, a.v, _CMP_EQ_OQ)));
}
inline std::uint64_t equal_lanes(Vec8f x, Vec8f a, Vec8f b, Vec8f c, Vec8f d) {
    constexpr int lanes = Vec8f::lanes;
    return (equal_lanes(x, a) | equal_lanes(x, b) << lanes) | (equal_lanes(x, c) | equal_lanes(x, d) << lanes)
                                                                  << 2 * lanes;
}

// The lanes of a vector in double.
template <>
struct Doubles<Vec8f> {
    __m256d low, high;

    static Doubles zero() { return {_mm256_setzero_pd(), _mm256_setzero_pd()}; }
    static Doubles widen(Vec8f x) {
        return {_mm256_cvtps_pd(_mm256_castps256_ps128(x.v)), _mm256_cvtps_pd(_mm256_extractf128_ps(x.v, 1))};
    }
    static Doubles widen_peeled(const float* p) {
        return {_mm256_cvtps_pd(_mm_loadu_ps(p)), _mm256_cvtps_pd(_mm_loadu_ps(p + 4))};
    }
    void add_squares(Doubles x) {
        low = _mm256_fmadd_pd(x.low, x.low, low);
        high = _mm256_fmadd_pd(x.high, x.high, high);
    }
    friend Doubles operator+(Doubles a, Doubles b) {
        return {_mm256_add_pd(a.low, b.low), _mm256_add_pd(a.high, b.high)};
    }
    double sum() const {
        const __m256d fours = _mm256_add_pd(low, high);
        return Doubles<Vec4f>{_mm256_castpd256_pd128(fours), _mm256_extractf128_pd(fours, 1)}.sum();
    }
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
