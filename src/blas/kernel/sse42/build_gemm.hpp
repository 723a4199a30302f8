// The forms for wider vectors have no GEMM kernel of their own: that of the sse42 build chooses a form in its plan.
#pragma once

#include "blas/kernel/kernels.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

using sse42::blas_cgemm_kernel;
using sse42::blas_cgemm_scale_c;
using sse42::blas_sgemm_kernel;
using sse42::blas_sgemm_scale_c;

} // namespace qrv::kernel::QRV_KERNEL_BUILD
