// Vectors of the ssse3 build: it adds byte shifts across two vectors.
#pragma once

#include <tmmintrin.h>

#include "blas/kernel/common/vec/unaligned_by_shift.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"

#define QRV_VECTOR_LANES 4

namespace qrv::kernel::QRV_KERNEL_BUILD {

using Vec = Vec4f;

using Peak = TestedPeak;

} // namespace qrv::kernel::QRV_KERNEL_BUILD
