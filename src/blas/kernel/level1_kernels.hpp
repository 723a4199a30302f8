// The dispatched kernels of BLAS level 1: result, name, parameters, arguments (see kernels.hpp). All take the arguments
// of the published routine, by address; n <= 0 does nothing and gives 0.
#pragma once

#include "blas/complex.hpp"

// n, x, incx and n, x, incx, y, incy: the vectors of most routines. x is written only where QRV_INOUT_VECTOR names it.
#define QRV_VECTOR(T) const int *n, const T *x, const int *incx
#define QRV_VECTORS(T) const int *n, const T *x, const int *incx, const T *y, const int *incy
#define QRV_VECTORS_TO_Y(T) const T *x, const int *incx, T *y, const int *incy
#define QRV_BOTH_VECTORS(T) const int *n, T *x, const int *incx, T *y, const int *incy

// clang-format off
#define QRV_LEVEL1_KERNELS(KERNEL)                                                                                   \
    KERNEL(void, blas_saxpy_kernel, (const int* n, const float* alpha, QRV_VECTORS_TO_Y(float)),                     \
           (n, alpha, x, incx, y, incy))                                                                             \
    KERNEL(void, blas_caxpy_kernel, (const int* n, const qrv::SingleComplex* alpha, QRV_VECTORS_TO_Y(qrv::SingleComplex)), \
           (n, alpha, x, incx, y, incy))                                                                             \
    KERNEL(void, blas_scopy_kernel, (const int* n, QRV_VECTORS_TO_Y(float)), (n, x, incx, y, incy))                  \
    KERNEL(void, blas_ccopy_kernel, (const int* n, QRV_VECTORS_TO_Y(qrv::SingleComplex)), (n, x, incx, y, incy))     \
    KERNEL(void, blas_sswap_kernel, (QRV_BOTH_VECTORS(float)), (n, x, incx, y, incy))                                \
    KERNEL(void, blas_cswap_kernel, (QRV_BOTH_VECTORS(qrv::SingleComplex)), (n, x, incx, y, incy))                   \
    KERNEL(float, blas_sdot_kernel, (QRV_VECTORS(float)), (n, x, incx, y, incy))                                     \
    KERNEL(void, blas_cdotc_kernel, (qrv::SingleComplex* result, QRV_VECTORS(qrv::SingleComplex)),                   \
           (result, n, x, incx, y, incy))                                                                            \
    KERNEL(void, blas_cdotu_kernel, (qrv::SingleComplex* result, QRV_VECTORS(qrv::SingleComplex)),                   \
           (result, n, x, incx, y, incy))                                                                            \
    KERNEL(void, blas_srot_kernel, (QRV_BOTH_VECTORS(float), const float* c, const float* s),                        \
           (n, x, incx, y, incy, c, s))                                                                              \
    KERNEL(void, blas_sscal_kernel, (const int* n, const float* alpha, float* x, const int* incx), (n, alpha, x, incx)) \
    KERNEL(void, blas_cscal_kernel, (const int* n, const qrv::SingleComplex* alpha, qrv::SingleComplex* x, const int* incx), \
           (n, alpha, x, incx))                                                                                      \
    KERNEL(void, blas_csscal_kernel, (const int* n, const float* alpha, qrv::SingleComplex* x, const int* incx),     \
           (n, alpha, x, incx))                                                                                      \
    KERNEL(float, blas_sasum_kernel, (QRV_VECTOR(float)), (n, x, incx))                                              \
    KERNEL(float, blas_scasum_kernel, (QRV_VECTOR(qrv::SingleComplex)), (n, x, incx))                                \
    KERNEL(float, blas_snrm2_kernel, (QRV_VECTOR(float)), (n, x, incx))                                              \
    KERNEL(float, blas_scnrm2_kernel, (QRV_VECTOR(qrv::SingleComplex)), (n, x, incx))                                \
    /* Their sums of squares, of which a team adds up those of its slices: finite for what is finite. */              \
    KERNEL(double, blas_snrm2_squares, (QRV_VECTOR(float)), (n, x, incx))                                            \
    KERNEL(double, blas_scnrm2_squares, (QRV_VECTOR(qrv::SingleComplex)), (n, x, incx))                              \
    KERNEL(int, blas_isamax_kernel, (QRV_VECTOR(float)), (n, x, incx))                                               \
    KERNEL(int, blas_icamax_kernel, (QRV_VECTOR(qrv::SingleComplex)), (n, x, incx))                                  \
    /* The same for a slice: negative if an element is NaN, which takes over from all in front of it. */             \
    KERNEL(int, blas_isamax_slice, (QRV_VECTOR(float)), (n, x, incx))                                                \
    KERNEL(int, blas_icamax_slice, (QRV_VECTOR(qrv::SingleComplex)), (n, x, incx))                                   \
    KERNEL(void, blas_srotg_kernel, (float* a, float* b, float* c, float* s), (a, b, c, s))                          \
    KERNEL(void, blas_srotm_kernel, (QRV_BOTH_VECTORS(float), const float* param), (n, x, incx, y, incy, param))     \
    KERNEL(void, blas_srotmg_kernel, (float* d1, float* d2, float* x1, const float* y1, float* param),               \
           (d1, d2, x1, y1, param))                                                                                  \
    /* The secular equation of singular values, of LAPACK (secular.hpp). */                                          \
    KERNEL(void, blas_ssecular_sums_kernel,                                                                          \
           (const int* n, const float* d, const float* z, const double* origin, const double* mu, double* sum,       \
            double* slope),                                                                                          \
           (n, d, z, origin, mu, sum, slope))                                                                        \
    KERNEL(void, blas_ssecular_factors_kernel,                                                                       \
           (const int* n, const float* d, const float* other, const float* difference, const float* sum,             \
            double* product),                                                                                        \
           (n, d, other, difference, sum, product))                                                                  \
    KERNEL(void, blas_ssecular_vectors_kernel,                                                                       \
           (const int* n, const float* d, const float* z, float* left, float* right), (n, d, z, left, right))
// clang-format on
