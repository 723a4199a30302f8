// Guarded entries of BLAS level 3: the argument check, then the decision routine.
#include "blas/blas.hpp"
#include "qrv/native.h"
#include "service/entry.hpp"

using namespace qrv;

int SGEMM(const char* transa, const char* transb, const int* m, const int* n, const int* k, const float* alpha,
          const float* a, const int* lda, const float* b, const int* ldb, const float* beta, float* c, const int* ldc) {
    return guarded<entry_row("SGEMM")>(qrv_blas_sgemm, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
int CGEMM(const char* transa, const char* transb, const int* m, const int* n, const int* k, const qrv_complex* alpha,
          const qrv_complex* a, const int* lda, const qrv_complex* b, const int* ldb, const qrv_complex* beta,
          qrv_complex* c, const int* ldc) {
    return guarded<entry_row("CGEMM")>(qrv_blas_cgemm, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
int SSYMM(const char* side, const char* uplo, const int* m, const int* n, const float* alpha, const float* a,
          const int* lda, const float* b, const int* ldb, const float* beta, float* c, const int* ldc) {
    return guarded<entry_row("SSYMM")>(qrv_blas_ssymm, side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
}
int CSYMM(const char* side, const char* uplo, const int* m, const int* n, const qrv_complex* alpha,
          const qrv_complex* a, const int* lda, const qrv_complex* b, const int* ldb, const qrv_complex* beta,
          qrv_complex* c, const int* ldc) {
    return guarded<entry_row("CSYMM")>(qrv_blas_csymm, side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
}
int CHEMM(const char* side, const char* uplo, const int* m, const int* n, const qrv_complex* alpha,
          const qrv_complex* a, const int* lda, const qrv_complex* b, const int* ldb, const qrv_complex* beta,
          qrv_complex* c, const int* ldc) {
    return guarded<entry_row("CHEMM")>(qrv_blas_chemm, side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
}
int STRMM(const char* side, const char* uplo, const char* transa, const char* diag, const int* m, const int* n,
          const float* alpha, const float* a, const int* lda, float* b, const int* ldb) {
    return guarded<entry_row("STRMM")>(qrv_blas_strmm, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
int CTRMM(const char* side, const char* uplo, const char* transa, const char* diag, const int* m, const int* n,
          const qrv_complex* alpha, const qrv_complex* a, const int* lda, qrv_complex* b, const int* ldb) {
    return guarded<entry_row("CTRMM")>(qrv_blas_ctrmm, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
int STRSM(const char* side, const char* uplo, const char* transa, const char* diag, const int* m, const int* n,
          const float* alpha, const float* a, const int* lda, float* b, const int* ldb) {
    return guarded<entry_row("STRSM")>(qrv_blas_strsm, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
int CTRSM(const char* side, const char* uplo, const char* transa, const char* diag, const int* m, const int* n,
          const qrv_complex* alpha, const qrv_complex* a, const int* lda, qrv_complex* b, const int* ldb) {
    return guarded<entry_row("CTRSM")>(qrv_blas_ctrsm, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
int SSYRK(const char* uplo, const char* trans, const int* n, const int* k, const float* alpha, const float* a,
          const int* lda, const float* beta, float* c, const int* ldc) {
    return guarded<entry_row("SSYRK")>(qrv_blas_ssyrk, uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
}
int CSYRK(const char* uplo, const char* trans, const int* n, const int* k, const qrv_complex* alpha,
          const qrv_complex* a, const int* lda, const qrv_complex* beta, qrv_complex* c, const int* ldc) {
    return guarded<entry_row("CSYRK")>(qrv_blas_csyrk, uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
}
int CHERK(const char* uplo, const char* trans, const int* n, const int* k, const float* alpha, const qrv_complex* a,
          const int* lda, const float* beta, qrv_complex* c, const int* ldc) {
    return guarded<entry_row("CHERK")>(qrv_blas_cherk, uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
}
int SSYR2K(const char* uplo, const char* trans, const int* n, const int* k, const float* alpha, const float* a,
           const int* lda, const float* b, const int* ldb, const float* beta, float* c, const int* ldc) {
    return guarded<entry_row("SSYR2K")>(qrv_blas_ssyr2k, uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
int CSYR2K(const char* uplo, const char* trans, const int* n, const int* k, const qrv_complex* alpha,
           const qrv_complex* a, const int* lda, const qrv_complex* b, const int* ldb, const qrv_complex* beta,
           qrv_complex* c, const int* ldc) {
    return guarded<entry_row("CSYR2K")>(qrv_blas_csyr2k, uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
int CHER2K(const char* uplo, const char* trans, const int* n, const int* k, const qrv_complex* alpha,
           const qrv_complex* a, const int* lda, const qrv_complex* b, const int* ldb, const float* beta,
           qrv_complex* c, const int* ldc) {
    return guarded<entry_row("CHER2K")>(qrv_blas_cher2k, uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
