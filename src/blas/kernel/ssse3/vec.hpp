// Vectors of the ssse3 build: it adds byte shifts across two vectors.
#pragma once

#include <tmmintrin.h>

#include "blas/kernel/common/unaligned_by_shift.hpp"
#include "blas/kernel/common/vec4f.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

using Vec = Vec4f;

// Of each two lanes that are magnitudes the larger, or NaN if either is.
inline Vec4f larger_magnitude(Vec4f a, Vec4f b) {
    return larger_or_nan(a, b);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
