// Vectors of the sse2 build.
#pragma once

#include "blas/kernel/common/vec/unaligned_by_load.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"

#define QRV_VECTOR_LANES 4

namespace qrv::kernel::QRV_KERNEL_BUILD {

using Vec = Vec4f;

// The sums of the lanes of a, b, c and d: the shuffles that every build has.
inline Vec4f horizontal_sums(Vec4f a, Vec4f b, Vec4f c, Vec4f d) {
    return sum_lanes(a, b, c, d);
}

using Peak = TestedPeak;

} // namespace qrv::kernel::QRV_KERNEL_BUILD
