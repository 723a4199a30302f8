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
// The largest lane, in every lane.
inline Vec4f spread_largest(Vec4f x) {
    x = larger_magnitude(x, swap_halves(x));
    return larger_magnitude(x, {_mm_shuffle_ps(x.v, x.v, 0xB1)});
}
inline float first_lane(Vec4f x) {
    return _mm_cvtss_f32(x.v);
}
using Peak = IntegerPeak<Vec4f>;

} // namespace qrv::kernel::QRV_KERNEL_BUILD
