// The kernels of BLAS level 2 with triangular and banded matrices: each hands over to its family's template.
#pragma once

#include "blas/kernel/kernels.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {} // namespace qrv::kernel::QRV_KERNEL_BUILD
