// LAPACK routines in the native calling form: every argument by address. Those of published routines take the
// published arguments and check them; entries frame them. Callers in C++ use calls.hpp.
#pragma once

#include "qrv/native.h"

extern "C" {

// ---- LU factorization: see kernel/source/lu/getrf.hpp -------------------------------------------------------------

void qrv_lapack_sgetrf(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info);
void qrv_lapack_cgetrf(const int* m, const int* n, qrv_complex* a, const int* lda, int* ipiv, int* info);

// Its routes; the first one checks too.
void qrv_lapack_sgetrf_ib_omp(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info);
void qrv_lapack_cgetrf_ib_omp(const int* m, const int* n, qrv_complex* a, const int* lda, int* ipiv, int* info);
void qrv_lapack_sgetrf_serial(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info);
void qrv_lapack_cgetrf_serial(const int* m, const int* n, qrv_complex* a, const int* lda, int* ipiv, int* info);
void qrv_lapack_sgetrf_unblocked(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info);
void qrv_lapack_cgetrf_unblocked(const int* m, const int* n, qrv_complex* a, const int* lda, int* ipiv, int* info);

// The thread and the first column are for the progress routine only. Result: 0, or 1 if that asked to stop.
int qrv_lapack_sgetrf_recursive(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info,
                                const int* thread, const int* offset);
int qrv_lapack_cgetrf_recursive(const int* m, const int* n, qrv_complex* a, const int* lda, int* ipiv, int* info,
                                const int* thread, const int* offset);

// From its factors: solves, inverse, condition estimate.
void qrv_lapack_sgetrs(const char* trans, const int* n, const int* nrhs, const float* a, const int* lda,
                       const int* ipiv, float* b, const int* ldb, int* info);
void qrv_lapack_cgetrs(const char* trans, const int* n, const int* nrhs, const qrv_complex* a, const int* lda,
                       const int* ipiv, qrv_complex* b, const int* ldb, int* info);
void qrv_lapack_sgetri(const int* n, float* a, const int* lda, const int* ipiv, float* work, const int* lwork,
                       int* info);
void qrv_lapack_cgetri(const int* n, qrv_complex* a, const int* lda, const int* ipiv, qrv_complex* work,
                       const int* lwork, int* info);
void qrv_lapack_sgecon(const char* norm, const int* n, const float* a, const int* lda, const float* anorm, float* rcond,
                       float* work, int* iwork, int* info);
void qrv_lapack_cgecon(const char* norm, const int* n, const qrv_complex* a, const int* lda, const float* anorm,
                       float* rcond, qrv_complex* work, float* rwork, int* info);

// Row interchanges.
void qrv_lapack_slaswp(const int* n, float* a, const int* lda, const int* k1, const int* k2, const int* ipiv,
                       const int* incx);
void qrv_lapack_claswp(const int* n, qrv_complex* a, const int* lda, const int* k1, const int* k2, const int* ipiv,
                       const int* incx);

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

// ---- Triangular matrices ------------------------------------------------------------------------------------------

void qrv_lapack_srscl(const int* n, const float* sa, float* sx, const int* incx);
void qrv_lapack_csrscl(const int* n, const float* sa, qrv_complex* sx, const int* incx);
void qrv_lapack_slacn2(const int* n, float* v, float* x, int* isgn, float* est, int* kase, int* isave);
void qrv_lapack_clacn2(const int* n, qrv_complex* v, qrv_complex* x, float* est, int* kase, int* isave);
void qrv_lapack_slatrs(const char* uplo, const char* trans, const char* diag, const char* normin, const int* n,
                       const float* a, const int* lda, float* x, float* scale, float* cnorm, int* info);
void qrv_lapack_clatrs(const char* uplo, const char* trans, const char* diag, const char* normin, const int* n,
                       const qrv_complex* a, const int* lda, qrv_complex* x, float* scale, float* cnorm, int* info);
void qrv_lapack_strti2(const char* uplo, const char* diag, const int* n, float* a, const int* lda, int* info);
void qrv_lapack_ctrti2(const char* uplo, const char* diag, const int* n, qrv_complex* a, const int* lda, int* info);
void qrv_lapack_strtri(const char* uplo, const char* diag, const int* n, float* a, const int* lda, int* info);
void qrv_lapack_ctrtri(const char* uplo, const char* diag, const int* n, qrv_complex* a, const int* lda, int* info);
void qrv_lapack_strtrs(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs,
                       const float* a, const int* lda, float* b, const int* ldb, int* info);
void qrv_lapack_ctrtrs(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs,
                       const qrv_complex* a, const int* lda, qrv_complex* b, const int* ldb, int* info);
void qrv_lapack_strcon(const char* norm, const char* uplo, const char* diag, const int* n, const float* a,
                       const int* lda, float* rcond, float* work, int* iwork, int* info);
void qrv_lapack_ctrcon(const char* norm, const char* uplo, const char* diag, const int* n, const qrv_complex* a,
                       const int* lda, float* rcond, qrv_complex* work, float* rwork, int* info);
}
