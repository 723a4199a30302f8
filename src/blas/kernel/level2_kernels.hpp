// The dispatched kernels of BLAS level 2: result, name, parameters, arguments (see kernels.hpp). All take the arguments
// of the published routine, by address; nothing is checked.
#pragma once

#include "blas/complex.hpp"

// clang-format off
#define QRV_GEMV_PARAMETERS(T)                                                                                       \
    const char *trans, const int *m, const int *n, const T *alpha, const T *a, const int *lda, const T *x,           \
        const int *incx, const T *beta, T *y, const int *incy
#define QRV_SYMV_PARAMETERS(T)                                                                                       \
    const char *uplo, const int *n, const T *alpha, const T *a, const int *lda, const T *x, const int *incx,         \
        const T *beta, T *y, const int *incy
#define QRV_GER_PARAMETERS(T)                                                                                        \
    const int *m, const int *n, const T *alpha, const T *x, const int *incx, const T *y, const int *incy, T *a,      \
        const int *lda
/* alpha is real. */
#define QRV_SYR_PARAMETERS(T)                                                                                        \
    const char *uplo, const int *n, const float *alpha, const T *x, const int *incx, T *a, const int *lda
#define QRV_SYR2_PARAMETERS(T)                                                                                       \
    const char *uplo, const int *n, const T *alpha, const T *x, const int *incx, const T *y, const int *incy, T *a,  \
        const int *lda
/* A band: the last `width` rows of the leading lower triangle, or columns of the leading upper triangle, of order
   `length`. x and y are that long; a is the band's first element, in column 0 or row 0 of the matrix. */
#define QRV_SYR_BAND_PARAMETERS                                                                                      \
    const char *uplo, const int *width, const int *length, const float *alpha, const float *x, const int *incx,      \
        float *a, const int *lda
#define QRV_SYR2_BAND_PARAMETERS                                                                                     \
    const char *uplo, const int *width, const int *length, const float *alpha, const float *x, const int *incx,      \
        const float *y, const int *incy, float *a, const int *lda

/* A strip of a symmetric matrix of order n, with its mirror image: the last `columns` columns of an upper triangle, or the
   first ones of a lower triangle. y, and A of an update, become what they would with zeros in all other columns. */
#define QRV_SYMV_STRIP_PARAMETERS(T)                                                                                 \
    const char *uplo, const int *n, const int *columns, const T *alpha, const T *a, const int *lda, const T *x,      \
        const int *incx, const T *beta, T *y, const int *incy
#define QRV_SYR_STRIP_PARAMETERS(T)                                                                                  \
    const char *uplo, const int *n, const int *columns, const float *alpha, const T *x, const int *incx, T *a,       \
        const int *lda
#define QRV_SYR2_STRIP_PARAMETERS(T)                                                                                 \
    const char *uplo, const int *n, const int *columns, const T *alpha, const T *x, const int *incx, const T *y,     \
        const int *incy, T *a, const int *lda
#define QRV_SYMV_STRIP_ARGUMENTS uplo, n, columns, alpha, a, lda, x, incx, beta, y, incy
#define QRV_SYR_STRIP_ARGUMENTS uplo, n, columns, alpha, x, incx, a, lda
#define QRV_SYR2_STRIP_ARGUMENTS uplo, n, columns, alpha, x, incx, y, incy, a, lda

#define QRV_GEMV_ARGUMENTS trans, m, n, alpha, a, lda, x, incx, beta, y, incy
#define QRV_SYMV_ARGUMENTS uplo, n, alpha, a, lda, x, incx, beta, y, incy
#define QRV_GER_ARGUMENTS m, n, alpha, x, incx, y, incy, a, lda
#define QRV_SYR_ARGUMENTS uplo, n, alpha, x, incx, a, lda
#define QRV_SYR2_ARGUMENTS uplo, n, alpha, x, incx, y, incy, a, lda

/* Products and updates with general, symmetric and Hermitian matrices. */
#define QRV_FULL_MATRIX_KERNELS(KERNEL)                                                                              \
    KERNEL(void, blas_sgemv_kernel, (QRV_GEMV_PARAMETERS(float)),                                                    \
           (QRV_GEMV_ARGUMENTS))                                                     \
    KERNEL(void, blas_cgemv_kernel, (QRV_GEMV_PARAMETERS(qrv::SingleComplex)),                                       \
           (QRV_GEMV_ARGUMENTS))                                                     \
    KERNEL(void, blas_ssymv_kernel, (QRV_SYMV_PARAMETERS(float)), (QRV_SYMV_ARGUMENTS))  \
    KERNEL(void, blas_chemv_kernel, (QRV_SYMV_PARAMETERS(qrv::SingleComplex)),                                       \
           (QRV_SYMV_ARGUMENTS))                                                         \
    KERNEL(void, blas_sger_kernel, (QRV_GER_PARAMETERS(float)), (QRV_GER_ARGUMENTS))             \
    KERNEL(void, blas_cgeru_kernel, (QRV_GER_PARAMETERS(qrv::SingleComplex)), (QRV_GER_ARGUMENTS)) \
    KERNEL(void, blas_cgerc_kernel, (QRV_GER_PARAMETERS(qrv::SingleComplex)), (QRV_GER_ARGUMENTS)) \
    KERNEL(void, blas_ssyr_kernel, (QRV_SYR_PARAMETERS(float)), (QRV_SYR_ARGUMENTS))                   \
    KERNEL(void, blas_cher_kernel, (QRV_SYR_PARAMETERS(qrv::SingleComplex)), (QRV_SYR_ARGUMENTS))      \
    KERNEL(void, blas_ssyr2_kernel, (QRV_SYR2_PARAMETERS(float)), (QRV_SYR2_ARGUMENTS))        \
    KERNEL(void, blas_cher2_kernel, (QRV_SYR2_PARAMETERS(qrv::SingleComplex)),                                       \
           (QRV_SYR2_ARGUMENTS))                                                               \
    KERNEL(void, blas_ssyr_band_kernel, (QRV_SYR_BAND_PARAMETERS), (uplo, width, length, alpha, x, incx, a, lda))    \
    KERNEL(void, blas_ssyr2_band_kernel, (QRV_SYR2_BAND_PARAMETERS),                                                 \
           (uplo, width, length, alpha, x, incx, y, incy, a, lda))                                                  \
    KERNEL(void, blas_ssymv_strip, (QRV_SYMV_STRIP_PARAMETERS(float)), (QRV_SYMV_STRIP_ARGUMENTS))                   \
    KERNEL(void, blas_chemv_strip, (QRV_SYMV_STRIP_PARAMETERS(qrv::SingleComplex)), (QRV_SYMV_STRIP_ARGUMENTS))      \
    KERNEL(void, blas_ssyr_strip, (QRV_SYR_STRIP_PARAMETERS(float)), (QRV_SYR_STRIP_ARGUMENTS))                      \
    KERNEL(void, blas_cher_strip, (QRV_SYR_STRIP_PARAMETERS(qrv::SingleComplex)), (QRV_SYR_STRIP_ARGUMENTS))         \
    KERNEL(void, blas_ssyr2_strip, (QRV_SYR2_STRIP_PARAMETERS(float)), (QRV_SYR2_STRIP_ARGUMENTS))                   \
    KERNEL(void, blas_cher2_strip, (QRV_SYR2_STRIP_PARAMETERS(qrv::SingleComplex)), (QRV_SYR2_STRIP_ARGUMENTS))
/* Triangular and banded matrices. */
#define QRV_TRIANGULAR_PARAMETERS(T)                                                                                 \
    const char *uplo, const char *trans, const char *diag, const int *n, const T *a, const int *lda, T *x,           \
        const int *incx
#define QRV_TRIANGULAR_ARGUMENTS uplo, trans, diag, n, a, lda, x, incx

/* One band of a triangular product, for a thread of a team: `width` elements of op(A)*x from `length` elements of x,
   which are next to each other and are not y. The band begins at a; its diagonal block is at the near end if op(A) is
   upper triangular, at the far end if it is lower. */
#define QRV_TRIANGLE_BAND_PARAMETERS(T)                                                                              \
    const char *uplo, const char *trans, const char *diag, const int *width, const int *length, const T *a,          \
        const int *lda, const T *x, T *y, const int *incy
#define QRV_TRIANGLE_BAND_ARGUMENTS uplo, trans, diag, width, length, a, lda, x, y, incy

#define QRV_TRIANGULAR_KERNELS(KERNEL)                                                                               \
    KERNEL(void, blas_strmv_kernel, (QRV_TRIANGULAR_PARAMETERS(float)), (QRV_TRIANGULAR_ARGUMENTS))                  \
    KERNEL(void, blas_ctrmv_kernel, (QRV_TRIANGULAR_PARAMETERS(qrv::SingleComplex)), (QRV_TRIANGULAR_ARGUMENTS))     \
    KERNEL(void, blas_strsv_kernel, (QRV_TRIANGULAR_PARAMETERS(float)), (QRV_TRIANGULAR_ARGUMENTS))                  \
    KERNEL(void, blas_ctrsv_kernel, (QRV_TRIANGULAR_PARAMETERS(qrv::SingleComplex)), (QRV_TRIANGULAR_ARGUMENTS))     \
    KERNEL(void, blas_strmv_band_kernel, (QRV_TRIANGLE_BAND_PARAMETERS(float)), (QRV_TRIANGLE_BAND_ARGUMENTS))       \
    KERNEL(void, blas_ctrmv_band_kernel, (QRV_TRIANGLE_BAND_PARAMETERS(qrv::SingleComplex)),                         \
           (QRV_TRIANGLE_BAND_ARGUMENTS))

#define QRV_GBMV_PARAMETERS(T)                                                                                       \
    const char *trans, const int *m, const int *n, const int *kl, const int *ku, const T *alpha, const T *a,         \
        const int *lda, const T *x, const int *incx, const T *beta, T *y, const int *incy
#define QRV_SBMV_PARAMETERS(T)                                                                                       \
    const char *uplo, const int *n, const int *k, const T *alpha, const T *a, const int *lda, const T *x,            \
        const int *incx, const T *beta, T *y, const int *incy
#define QRV_TRIANGULAR_BAND_PARAMETERS(T)                                                                            \
    const char *uplo, const char *trans, const char *diag, const int *n, const int *k, const T *a, const int *lda,   \
        T *x, const int *incx

#define QRV_BANDED_KERNELS(KERNEL)                                                                                   \
    KERNEL(void, blas_sgbmv_kernel, (QRV_GBMV_PARAMETERS(float)),                                                    \
           (trans, m, n, kl, ku, alpha, a, lda, x, incx, beta, y, incy))                                             \
    KERNEL(void, blas_ssbmv_kernel, (QRV_SBMV_PARAMETERS(float)),                                                    \
           (uplo, n, k, alpha, a, lda, x, incx, beta, y, incy))                                                      \
    KERNEL(void, blas_stbmv_kernel, (QRV_TRIANGULAR_BAND_PARAMETERS(float)),                                         \
           (uplo, trans, diag, n, k, a, lda, x, incx))                                                               \
    KERNEL(void, blas_stbsv_kernel, (QRV_TRIANGULAR_BAND_PARAMETERS(float)),                                         \
           (uplo, trans, diag, n, k, a, lda, x, incx))

/* A sequence of plane rotations, of LAPACK. */
#define QRV_ROTATION_KERNELS(KERNEL)                                                                                 \
    KERNEL(void, blas_slasr_kernel,                                                                                  \
           (const char* side, const char* pivot, const char* direct, const int* m, const int* n, const float* c,     \
            const float* s, float* a, const int* lda),                                                               \
           (side, pivot, direct, m, n, c, s, a, lda))

/* Reflectors of order 3 side by side, and both products of a bidiagonal reduction's step, of LAPACK (larf3.hpp,
   gemvt.hpp). */
#define QRV_GEMVT_PARAMETERS(T)                                                                                      \
    const int *m, const int *n, const T *tau, const T *a, const int *lda, const T *v, T *x, const int *incx, T *y,   \
        const int *incy, T *z
#define QRV_REFLECTOR_KERNELS(KERNEL)                                                                                \
    KERNEL(void, blas_sgemvt_kernel, (QRV_GEMVT_PARAMETERS(float)),                                                  \
           (m, n, tau, a, lda, v, x, incx, y, incy, z))                                                              \
    KERNEL(void, blas_cgemvt_kernel, (QRV_GEMVT_PARAMETERS(qrv::SingleComplex)),                                     \
           (m, n, tau, a, lda, v, x, incx, y, incy, z))                                                              \
    KERNEL(void, blas_slarf3_left_kernel,                                                                            \
           (const int* count, const int* n, const float* v, const int* ldv, float* a, const int* lda),               \
           (count, n, v, ldv, a, lda))                                                                               \
    KERNEL(void, blas_slarf3_right_kernel,                                                                           \
           (const int* count, const int* begin, const int* end, const int* beginStep, const int* endStep,            \
            const float* v, const int* ldv, float* a, const int* lda),                                               \
           (count, begin, end, beginStep, endStep, v, ldv, a, lda))
// clang-format on

#define QRV_LEVEL2_KERNELS(KERNEL)                                                                                     \
    QRV_FULL_MATRIX_KERNELS(KERNEL)                                                                                    \
    QRV_TRIANGULAR_KERNELS(KERNEL)                                                                                     \
    QRV_BANDED_KERNELS(KERNEL)                                                                                         \
    QRV_ROTATION_KERNELS(KERNEL)                                                                                       \
    QRV_REFLECTOR_KERNELS(KERNEL)
