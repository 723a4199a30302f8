// Framed entries of norms and copies.
#include "lapack/lapack.hpp"
#include "service/entry.hpp"

using namespace qrv;

void SLASSQ(const int* n, const float* x, const int* incx, float* scale, float* sumsq) {
    framed(qrv_lapack_slassq, n, x, incx, scale, sumsq);
}
void CLASSQ(const int* n, const qrv_complex* x, const int* incx, float* scale, float* sumsq) {
    framed(qrv_lapack_classq, n, x, incx, scale, sumsq);
}
float SLANGE(const char* norm, const int* m, const int* n, const float* a, const int* lda, float* work) {
    return framed(qrv_lapack_slange, norm, m, n, a, lda, work);
}
float CLANGE(const char* norm, const int* m, const int* n, const qrv_complex* a, const int* lda, float* work) {
    return framed(qrv_lapack_clange, norm, m, n, a, lda, work);
}
float SLANTR(const char* norm, const char* uplo, const char* diag, const int* m, const int* n, const float* a,
             const int* lda, float* work) {
    return framed(qrv_lapack_slantr, norm, uplo, diag, m, n, a, lda, work);
}
float CLANTR(const char* norm, const char* uplo, const char* diag, const int* m, const int* n, const qrv_complex* a,
             const int* lda, float* work) {
    return framed(qrv_lapack_clantr, norm, uplo, diag, m, n, a, lda, work);
}
void SLACPY(const char* uplo, const int* m, const int* n, const float* a, const int* lda, float* b, const int* ldb) {
    framed(qrv_lapack_slacpy, uplo, m, n, a, lda, b, ldb);
}
void CLACPY(const char* uplo, const int* m, const int* n, const qrv_complex* a, const int* lda, qrv_complex* b,
            const int* ldb) {
    framed(qrv_lapack_clacpy, uplo, m, n, a, lda, b, ldb);
}
