// The dispatch slots of the kernels, for callers to whom a hop over the dispatcher counts: blas_sdot_kernel_slot is
// what is behind qrv_blas_sdot_kernel.
#pragma once

#include "blas/kernel/kernels.hpp"
#include "service/dispatch.hpp"

namespace qrv::kernel {

#define QRV_DECLARE_SLOT(Result, name, parameters, arguments) extern DispatchSlot<Result parameters> name##_slot;
QRV_KERNELS(QRV_DECLARE_SLOT)
#undef QRV_DECLARE_SLOT

} // namespace qrv::kernel
