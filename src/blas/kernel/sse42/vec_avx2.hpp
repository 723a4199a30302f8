// Vectors of the form of the sse42 build with AVX2 and FMA.
#pragma once

#include "blas/kernel/common/vec/vec8f.hpp"

#define QRV_VECTOR_LANES 8

namespace qrv::kernel::QRV_KERNEL_BUILD {

using Vec = Vec8f;
using Peak = IntegerPeak<Vec>;

} // namespace qrv::kernel::QRV_KERNEL_BUILD
