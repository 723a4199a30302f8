// Vectors of the sse3 build: it adds the horizontal add.
#pragma once

#include <pmmintrin.h>

#include "blas/kernel/common/vec/unaligned_by_load.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"

#define QRV_VECTOR_LANES 4

namespace qrv::kernel::QRV_KERNEL_BUILD {

using Vec = Vec4f;

// The sums of the lanes of a, b, c and d.
inline Vec4f horizontal_sums(Vec4f a, Vec4f b, Vec4f c, Vec4f d) {
    return {_mm_hadd_ps(_mm_hadd_ps(a.v, b.v), _mm_hadd_ps(c.v, d.v))};
}

using Peak = TestedPeak;

} // namespace qrv::kernel::QRV_KERNEL_BUILD
