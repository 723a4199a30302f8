// Vectors of the sse42 build. Its processors load from any address at the price of an aligned load, unless it crosses
// a line.
#pragma once

#include <nmmintrin.h>

#include "blas/kernel/common/unaligned_by_load.hpp"
#include "blas/kernel/common/vec4f.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

using Vec = Vec4f;

} // namespace qrv::kernel::QRV_KERNEL_BUILD
