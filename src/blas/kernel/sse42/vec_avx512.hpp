// Vectors of the form of the sse42 build with AVX-512.
#pragma once

#include "blas/kernel/common/vec/vec16f.hpp"

#define QRV_VECTOR_LANES 16

namespace qrv::kernel::QRV_KERNEL_BUILD {

using Vec = Vec16f;
using Peak = IntegerPeak<Vec>;

} // namespace qrv::kernel::QRV_KERNEL_BUILD
