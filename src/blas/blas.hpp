// Decision routines of BLAS in the native calling form: they choose a number of threads and a path.
#pragma once

#include "qrv/native.h"

extern "C" {

// General matrix product; takes the arguments of SGEMM, respectively CGEMM, unchecked.
void qrv_blas_sgemm(const char* transa, const char* transb, const int* m, const int* n, const int* k,
                    const float* alpha, const float* a, const int* lda, const float* b, const int* ldb,
                    const float* beta, float* c, const int* ldc);
void qrv_blas_cgemm(const char* transa, const char* transb, const int* m, const int* n, const int* k,
                    const qrv_complex* alpha, const qrv_complex* a, const int* lda, const qrv_complex* b,
                    const int* ldb, const qrv_complex* beta, qrv_complex* c, const int* ldc);
}
