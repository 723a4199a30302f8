// Framed entries of what works from LU factors: solves, inverse, condition estimate.
#include "lapack/lapack.hpp"
#include "service/entry.hpp"

using namespace qrv;

void SGETRS(const char* trans, const int* n, const int* nrhs, const float* a, const int* lda, const int* ipiv, float* b,
            const int* ldb, int* info) {
    framed(qrv_lapack_sgetrs, trans, n, nrhs, a, lda, ipiv, b, ldb, info);
}
void CGETRS(const char* trans, const int* n, const int* nrhs, const qrv_complex* a, const int* lda, const int* ipiv,
            qrv_complex* b, const int* ldb, int* info) {
    framed(qrv_lapack_cgetrs, trans, n, nrhs, a, lda, ipiv, b, ldb, info);
}
void SGETRI(const int* n, float* a, const int* lda, const int* ipiv, float* work, const int* lwork, int* info) {
    framed(qrv_lapack_sgetri, n, a, lda, ipiv, work, lwork, info);
}
void CGETRI(const int* n, qrv_complex* a, const int* lda, const int* ipiv, qrv_complex* work, const int* lwork,
            int* info) {
    framed(qrv_lapack_cgetri, n, a, lda, ipiv, work, lwork, info);
}
void SGECON(const char* norm, const int* n, const float* a, const int* lda, const float* anorm, float* rcond,
            float* work, int* iwork, int* info) {
    framed(qrv_lapack_sgecon, norm, n, a, lda, anorm, rcond, work, iwork, info);
}
void CGECON(const char* norm, const int* n, const qrv_complex* a, const int* lda, const float* anorm, float* rcond,
            qrv_complex* work, float* rwork, int* info) {
    framed(qrv_lapack_cgecon, norm, n, a, lda, anorm, rcond, work, rwork, info);
}
