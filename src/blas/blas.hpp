// Decision routines of BLAS in the native calling form: they choose a number of threads and a path. Each takes the
// arguments of its entry, unchecked. Routines without one are called by their kernel's dispatcher.
#pragma once

#include "blas/kernel/level2_kernels.hpp"
#include "blas/kernel/level3_kernels.hpp"
#include "qrv/native.h"

extern "C" {

// ---- Level 1 ----------------------------------------------------------------------------------------------------

void qrv_blas_saxpy(const int* n, const float* alpha, const float* x, const int* incx, float* y, const int* incy);
void qrv_blas_caxpy(const int* n, const qrv_complex* alpha, const qrv_complex* x, const int* incx, qrv_complex* y,
                    const int* incy);
void qrv_blas_scopy(const int* n, const float* x, const int* incx, float* y, const int* incy);
void qrv_blas_ccopy(const int* n, const qrv_complex* x, const int* incx, qrv_complex* y, const int* incy);
float qrv_blas_sdot(const int* n, const float* x, const int* incx, const float* y, const int* incy);
void qrv_blas_cdotc(qrv_complex* result, const int* n, const qrv_complex* x, const int* incx, const qrv_complex* y,
                    const int* incy);
void qrv_blas_srot(const int* n, float* x, const int* incx, float* y, const int* incy, const float* c, const float* s);
void qrv_blas_sswap(const int* n, float* x, const int* incx, float* y, const int* incy);
void qrv_blas_cswap(const int* n, qrv_complex* x, const int* incx, qrv_complex* y, const int* incy);

// The same on a team of at most *threads.
void qrv_blas_saxpy_omp(const int* threads, const int* n, const float* alpha, const float* x, const int* incx, float* y,
                        const int* incy);
void qrv_blas_caxpy_omp(const int* threads, const int* n, const qrv_complex* alpha, const qrv_complex* x,
                        const int* incx, qrv_complex* y, const int* incy);
void qrv_blas_scopy_omp(const int* threads, const int* n, const float* x, const int* incx, float* y, const int* incy);
void qrv_blas_ccopy_omp(const int* threads, const int* n, const qrv_complex* x, const int* incx, qrv_complex* y,
                        const int* incy);
float qrv_blas_sdot_omp(const int* threads, const int* n, const float* x, const int* incx, const float* y,
                        const int* incy);
void qrv_blas_cdotc_omp(const int* threads, qrv_complex* result, const int* n, const qrv_complex* x, const int* incx,
                        const qrv_complex* y, const int* incy);
void qrv_blas_srot_omp(const int* threads, const int* n, float* x, const int* incx, float* y, const int* incy,
                       const float* c, const float* s);
void qrv_blas_sswap_omp(const int* threads, const int* n, float* x, const int* incx, float* y, const int* incy);
void qrv_blas_cswap_omp(const int* threads, const int* n, qrv_complex* x, const int* incx, qrv_complex* y,
                        const int* incy);

// ---- Level 2 ----------------------------------------------------------------------------------------------------

void qrv_blas_sgemv(QRV_GEMV_PARAMETERS(float));
void qrv_blas_cgemv(QRV_GEMV_PARAMETERS(qrv_complex));
void qrv_blas_ssymv(QRV_SYMV_PARAMETERS(float));
void qrv_blas_strmv(QRV_TRIANGULAR_PARAMETERS(float));
void qrv_blas_ctrmv(QRV_TRIANGULAR_PARAMETERS(qrv_complex));
void qrv_blas_ssyr(QRV_SYR_PARAMETERS(float));
void qrv_blas_ssyr2(QRV_SYR2_PARAMETERS(float));

// The same on a team of at most *threads; the matrix is not empty.
void qrv_blas_sgemv_omp(const int* threads, QRV_GEMV_PARAMETERS(float));
void qrv_blas_cgemv_omp(const int* threads, QRV_GEMV_PARAMETERS(qrv_complex));
void qrv_blas_ssymv_omp(const int* threads, QRV_SYMV_PARAMETERS(float));
void qrv_blas_strmv_omp(const int* threads, QRV_TRIANGULAR_PARAMETERS(float));
void qrv_blas_ctrmv_omp(const int* threads, QRV_TRIANGULAR_PARAMETERS(qrv_complex));
void qrv_blas_ssyr_omp(const int* threads, QRV_SYR_PARAMETERS(float));
void qrv_blas_ssyr2_omp(const int* threads, QRV_SYR2_PARAMETERS(float));

// ---- Level 3 ----------------------------------------------------------------------------------------------------

// General matrix product.
void qrv_blas_sgemm(const char* transa, const char* transb, const int* m, const int* n, const int* k,
                    const float* alpha, const float* a, const int* lda, const float* b, const int* ldb,
                    const float* beta, float* c, const int* ldc);
void qrv_blas_cgemm(const char* transa, const char* transb, const int* m, const int* n, const int* k,
                    const qrv_complex* alpha, const qrv_complex* a, const int* lda, const qrv_complex* b,
                    const int* ldb, const qrv_complex* beta, qrv_complex* c, const int* ldc);

// Triangular solve and product, symmetric and Hermitian rank updates and products.
void qrv_blas_strsm(QRV_TRSM_PARAMETERS(float));
void qrv_blas_ctrsm(QRV_TRSM_PARAMETERS(qrv_complex));
void qrv_blas_strmm(QRV_TRSM_PARAMETERS(float));
void qrv_blas_ctrmm(QRV_TRSM_PARAMETERS(qrv_complex));
void qrv_blas_ssyrk(QRV_SYRK_PARAMETERS(float, float));
void qrv_blas_csyrk(QRV_SYRK_PARAMETERS(qrv_complex, qrv_complex));
void qrv_blas_cherk(QRV_SYRK_PARAMETERS(qrv_complex, float));
void qrv_blas_ssyr2k(QRV_SYR2K_PARAMETERS(float, float));
void qrv_blas_csyr2k(QRV_SYR2K_PARAMETERS(qrv_complex, qrv_complex));
void qrv_blas_cher2k(QRV_SYR2K_PARAMETERS(qrv_complex, float));
void qrv_blas_ssymm(QRV_SYMM_PARAMETERS(float));
void qrv_blas_csymm(QRV_SYMM_PARAMETERS(qrv_complex));
void qrv_blas_chemm(QRV_SYMM_PARAMETERS(qrv_complex));
}
