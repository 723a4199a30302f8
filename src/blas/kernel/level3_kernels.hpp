// The dispatched kernels of BLAS level 3 but GEMM: result, name, parameters, arguments (see kernels.hpp). All take the
// arguments of the published routine, by address; nothing is checked.
#pragma once

#include "blas/complex.hpp"

// clang-format off
#define QRV_TRSM_PARAMETERS(T)                                                                                       \
    const char *side, const char *uplo, const char *transa, const char *diag, const int *m, const int *n,            \
        const T *alpha, const T *a, const int *lda, T *b, const int *ldb
#define QRV_TRSM_ARGUMENTS side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb

#define QRV_LEVEL3_TRIANGULAR_KERNELS(KERNEL)                                                                        \
    KERNEL(void, blas_strsm_kernel, (QRV_TRSM_PARAMETERS(float)), (QRV_TRSM_ARGUMENTS))                              \
    KERNEL(void, blas_ctrsm_kernel, (QRV_TRSM_PARAMETERS(qrv::SingleComplex)), (QRV_TRSM_ARGUMENTS))                 \
    KERNEL(void, blas_strmm_kernel, (QRV_TRSM_PARAMETERS(float)), (QRV_TRSM_ARGUMENTS))                              \
    KERNEL(void, blas_ctrmm_kernel, (QRV_TRSM_PARAMETERS(qrv::SingleComplex)), (QRV_TRSM_ARGUMENTS))

/* S is the type of a scalar: real for the scalars of HERK and for HER2K's beta. */
#define QRV_SYRK_PARAMETERS(T, S)                                                                                    \
    const char *uplo, const char *trans, const int *n, const int *k, const S *alpha, const T *a, const int *lda,     \
        const S *beta, T *c, const int *ldc
#define QRV_SYRK_ARGUMENTS uplo, trans, n, k, alpha, a, lda, beta, c, ldc
#define QRV_SYR2K_PARAMETERS(T, S)                                                                                   \
    const char *uplo, const char *trans, const int *n, const int *k, const T *alpha, const T *a, const int *lda,     \
        const T *b, const int *ldb, const S *beta, T *c, const int *ldc
#define QRV_SYR2K_ARGUMENTS uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc
#define QRV_SYMM_PARAMETERS(T)                                                                                       \
    const char *side, const char *uplo, const int *m, const int *n, const T *alpha, const T *a, const int *lda,      \
        const T *b, const int *ldb, const T *beta, T *c, const int *ldc
#define QRV_SYMM_ARGUMENTS side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc

#define QRV_LEVEL3_SYMMETRIC_KERNELS(KERNEL)                                                                         \
    KERNEL(void, blas_ssyrk_kernel, (QRV_SYRK_PARAMETERS(float, float)), (QRV_SYRK_ARGUMENTS))                       \
    KERNEL(void, blas_csyrk_kernel, (QRV_SYRK_PARAMETERS(qrv::SingleComplex, qrv::SingleComplex)),                   \
           (QRV_SYRK_ARGUMENTS))                                                                                     \
    KERNEL(void, blas_cherk_kernel, (QRV_SYRK_PARAMETERS(qrv::SingleComplex, float)), (QRV_SYRK_ARGUMENTS))          \
    KERNEL(void, blas_ssyr2k_kernel, (QRV_SYR2K_PARAMETERS(float, float)), (QRV_SYR2K_ARGUMENTS))                    \
    KERNEL(void, blas_csyr2k_kernel, (QRV_SYR2K_PARAMETERS(qrv::SingleComplex, qrv::SingleComplex)),                 \
           (QRV_SYR2K_ARGUMENTS))                                                                                    \
    KERNEL(void, blas_cher2k_kernel, (QRV_SYR2K_PARAMETERS(qrv::SingleComplex, float)), (QRV_SYR2K_ARGUMENTS))       \
    KERNEL(void, blas_ssymm_kernel, (QRV_SYMM_PARAMETERS(float)), (QRV_SYMM_ARGUMENTS))                              \
    KERNEL(void, blas_csymm_kernel, (QRV_SYMM_PARAMETERS(qrv::SingleComplex)), (QRV_SYMM_ARGUMENTS))                 \
    KERNEL(void, blas_chemm_kernel, (QRV_SYMM_PARAMETERS(qrv::SingleComplex)), (QRV_SYMM_ARGUMENTS))
// clang-format on
