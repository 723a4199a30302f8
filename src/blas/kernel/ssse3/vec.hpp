// Vectors of the ssse3 build: it adds byte shifts across two vectors.
#pragma once

#include <tmmintrin.h>

#include "blas/kernel/common/unaligned_by_shift.hpp"
#include "blas/kernel/common/vec4f.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

using Vec = Vec4f;

using Peak = TestedPeak;

} // namespace qrv::kernel::QRV_KERNEL_BUILD
