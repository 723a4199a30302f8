// Vectors at addresses off a 16-byte boundary: unaligned loads.
#pragma once

#include "blas/kernel/common/vec/vec4f.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Calls use(source) with a source of the vectors at x.
template <class Use>
[[gnu::always_inline]] inline void with_unaligned_source(const float* x, const Use& use) {
    use(Loads<false>(x));
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
