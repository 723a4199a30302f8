// LAPACK routines in the native calling form: every argument by address. Those of published routines take the
// published arguments and check them; entries frame them. Callers in C++ use calls.hpp.
#pragma once

#include "qrv/native.h"

extern "C" {

// ---- Norms and copies ---------------------------------------------------------------------------------------------

void qrv_lapack_slassq(const int* n, const float* x, const int* incx, float* scale, float* sumsq);
void qrv_lapack_classq(const int* n, const qrv_complex* x, const int* incx, float* scale, float* sumsq);
float qrv_lapack_slange(const char* norm, const int* m, const int* n, const float* a, const int* lda, float* work);
float qrv_lapack_clange(const char* norm, const int* m, const int* n, const qrv_complex* a, const int* lda,
                        float* work);
float qrv_lapack_slantr(const char* norm, const char* uplo, const char* diag, const int* m, const int* n,
                        const float* a, const int* lda, float* work);
float qrv_lapack_clantr(const char* norm, const char* uplo, const char* diag, const int* m, const int* n,
                        const qrv_complex* a, const int* lda, float* work);
void qrv_lapack_slacpy(const char* uplo, const int* m, const int* n, const float* a, const int* lda, float* b,
                       const int* ldb);
void qrv_lapack_clacpy(const char* uplo, const int* m, const int* n, const qrv_complex* a, const int* lda,
                       qrv_complex* b, const int* ldb);
}
