// Vectors of the sse42 build. Its processors load from any address at the price of an aligned load, unless it crosses
// a line.
#pragma once

#include <nmmintrin.h>

#include "blas/kernel/common/vec/unaligned_by_load.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"

#define QRV_VECTOR_LANES 4

namespace qrv::kernel::QRV_KERNEL_BUILD {

using Vec = Vec4f;

// Of each two lanes that are magnitudes the larger, NaN being above all.
inline Vec4f larger_magnitude(Vec4f a, Vec4f b) {
    return {_mm_castsi128_ps(_mm_max_epi32(_mm_castps_si128(a.v), _mm_castps_si128(b.v)))};
}
inline float largest_lane(Vec4f x) {
    const Vec4f pairs = larger_magnitude(x, swap_halves(x));
    return _mm_cvtss_f32(larger_magnitude(pairs, {_mm_shuffle_ps(pairs.v, pairs.v, 1)}).v);
}
using Peak = IntegerPeak<Vec4f>;

} // namespace qrv::kernel::QRV_KERNEL_BUILD
