// The dispatched kernels of BLAS level 2: result, name, parameters, arguments (see kernels.hpp). All take the arguments
// of the published routine, by address; nothing is checked.
#pragma once

#include "blas/complex.hpp"

// clang-format off
/* Products and updates with general, symmetric and Hermitian matrices. */
#define QRV_FULL_MATRIX_KERNELS(KERNEL)
/* Triangular and banded matrices. */
#define QRV_TRIANGULAR_KERNELS(KERNEL)
#define QRV_BANDED_KERNELS(KERNEL)
// clang-format on

#define QRV_LEVEL2_KERNELS(KERNEL)                                                                                     \
    QRV_FULL_MATRIX_KERNELS(KERNEL)                                                                                    \
    QRV_TRIANGULAR_KERNELS(KERNEL)                                                                                     \
    QRV_BANDED_KERNELS(KERNEL)
