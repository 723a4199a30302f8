// The dispatched kernels of BLAS level 2: result, name, parameters, arguments (see kernels.hpp).
#pragma once

#include "blas/complex.hpp"

// clang-format off
#define QRV_LEVEL2_KERNELS(KERNEL)
// clang-format on
