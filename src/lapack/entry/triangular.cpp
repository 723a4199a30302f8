// Framed entries of triangular matrices, and of the estimates and scaled solves that serve condition numbers.
#include "lapack/lapack.hpp"
#include "service/entry.hpp"

using namespace qrv;

void SRSCL(const int* n, const float* sa, float* sx, const int* incx) {
    framed(qrv_lapack_srscl, n, sa, sx, incx);
}
void CSRSCL(const int* n, const float* sa, qrv_complex* sx, const int* incx) {
    framed(qrv_lapack_csrscl, n, sa, sx, incx);
}
void SLACN2(const int* n, float* v, float* x, int* isgn, float* est, int* kase, int* isave) {
    framed(qrv_lapack_slacn2, n, v, x, isgn, est, kase, isave);
}
void CLACN2(const int* n, qrv_complex* v, qrv_complex* x, float* est, int* kase, int* isave) {
    framed(qrv_lapack_clacn2, n, v, x, est, kase, isave);
}
void SLATRS(const char* uplo, const char* trans, const char* diag, const char* normin, const int* n, const float* a,
            const int* lda, float* x, float* scale, float* cnorm, int* info) {
    framed(qrv_lapack_slatrs, uplo, trans, diag, normin, n, a, lda, x, scale, cnorm, info);
}
void CLATRS(const char* uplo, const char* trans, const char* diag, const char* normin, const int* n,
            const qrv_complex* a, const int* lda, qrv_complex* x, float* scale, float* cnorm, int* info) {
    framed(qrv_lapack_clatrs, uplo, trans, diag, normin, n, a, lda, x, scale, cnorm, info);
}
void STRTI2(const char* uplo, const char* diag, const int* n, float* a, const int* lda, int* info) {
    framed(qrv_lapack_strti2, uplo, diag, n, a, lda, info);
}
void CTRTI2(const char* uplo, const char* diag, const int* n, qrv_complex* a, const int* lda, int* info) {
    framed(qrv_lapack_ctrti2, uplo, diag, n, a, lda, info);
}
void STRTRI(const char* uplo, const char* diag, const int* n, float* a, const int* lda, int* info) {
    framed(qrv_lapack_strtri, uplo, diag, n, a, lda, info);
}
void CTRTRI(const char* uplo, const char* diag, const int* n, qrv_complex* a, const int* lda, int* info) {
    framed(qrv_lapack_ctrtri, uplo, diag, n, a, lda, info);
}
void STRTRS(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs, const float* a,
            const int* lda, float* b, const int* ldb, int* info) {
    framed(qrv_lapack_strtrs, uplo, trans, diag, n, nrhs, a, lda, b, ldb, info);
}
void CTRTRS(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs, const qrv_complex* a,
            const int* lda, qrv_complex* b, const int* ldb, int* info) {
    framed(qrv_lapack_ctrtrs, uplo, trans, diag, n, nrhs, a, lda, b, ldb, info);
}
void STRCON(const char* norm, const char* uplo, const char* diag, const int* n, const float* a, const int* lda,
            float* rcond, float* work, int* iwork, int* info) {
    framed(qrv_lapack_strcon, norm, uplo, diag, n, a, lda, rcond, work, iwork, info);
}
void CTRCON(const char* norm, const char* uplo, const char* diag, const int* n, const qrv_complex* a, const int* lda,
            float* rcond, qrv_complex* work, float* rwork, int* info) {
    framed(qrv_lapack_ctrcon, norm, uplo, diag, n, a, lda, rcond, work, rwork, info);
}
