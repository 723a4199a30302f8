// Vectors of the sse42 build. Its processors load from any address at the price of an aligned load, unless it crosses
// a line.
#pragma once

#include <nmmintrin.h>

#include "blas/kernel/common/unaligned_by_load.hpp"
#include "blas/kernel/common/vec4f.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

using Vec = Vec4f;

// Of each two lanes that are magnitudes the larger, or NaN if either is: as an integer NaN is above all numbers.
inline Vec4f larger_magnitude(Vec4f a, Vec4f b) {
    return {_mm_castsi128_ps(_mm_max_epi32(_mm_castps_si128(a.v), _mm_castps_si128(b.v)))};
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
