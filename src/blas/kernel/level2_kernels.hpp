// The dispatched kernels of BLAS level 2: result, name, parameters, arguments (see kernels.hpp). All take the arguments
// of the published routine, by address; nothing is checked.
#pragma once

#include "blas/complex.hpp"

// clang-format off
#define QRV_GEMV_PARAMETERS(T)                                                                                       \
    const char *trans, const int *m, const int *n, const T *alpha, const T *a, const int *lda, const T *x,           \
        const int *incx, const T *beta, T *y, const int *incy

/* Products and updates with general, symmetric and Hermitian matrices. */
#define QRV_FULL_MATRIX_KERNELS(KERNEL)                                                                              \
    KERNEL(void, blas_sgemv_kernel, (QRV_GEMV_PARAMETERS(float)),                                                    \
           (trans, m, n, alpha, a, lda, x, incx, beta, y, incy))                                                     \
    KERNEL(void, blas_cgemv_kernel, (QRV_GEMV_PARAMETERS(qrv::SingleComplex)),                                       \
           (trans, m, n, alpha, a, lda, x, incx, beta, y, incy))
/* Triangular and banded matrices. */
#define QRV_TRIANGULAR_KERNELS(KERNEL)
#define QRV_BANDED_KERNELS(KERNEL)
// clang-format on

#define QRV_LEVEL2_KERNELS(KERNEL)                                                                                     \
    QRV_FULL_MATRIX_KERNELS(KERNEL)                                                                                    \
    QRV_TRIANGULAR_KERNELS(KERNEL)                                                                                     \
    QRV_BANDED_KERNELS(KERNEL)
