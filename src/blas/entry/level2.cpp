// Guarded entries of BLAS level 2: the argument check, then the decision routine, or the kernel of a routine that has
// none.
#include "blas/blas.hpp"
#include "blas/kernel/kernels.hpp"
#include "service/entry.hpp"

using namespace qrv;

int SGEMV(const char* trans, const int* m, const int* n, const float* alpha, const float* a, const int* lda,
          const float* x, const int* incx, const float* beta, float* y, const int* incy) {
    return guarded<entry_row("SGEMV")>(qrv_blas_sgemv, trans, m, n, alpha, a, lda, x, incx, beta, y, incy);
}
int CGEMV(const char* trans, const int* m, const int* n, const qrv_complex* alpha, const qrv_complex* a, const int* lda,
          const qrv_complex* x, const int* incx, const qrv_complex* beta, qrv_complex* y, const int* incy) {
    return guarded<entry_row("CGEMV")>(qrv_blas_cgemv, trans, m, n, alpha, a, lda, x, incx, beta, y, incy);
}
int SGBMV(const char* trans, const int* m, const int* n, const int* kl, const int* ku, const float* alpha,
          const float* a, const int* lda, const float* x, const int* incx, const float* beta, float* y,
          const int* incy) {
    return guarded<entry_row("SGBMV")>(qrv_blas_sgbmv_kernel, trans, m, n, kl, ku, alpha, a, lda, x, incx, beta, y,
                                       incy);
}
int SSYMV(const char* uplo, const int* n, const float* alpha, const float* a, const int* lda, const float* x,
          const int* incx, const float* beta, float* y, const int* incy) {
    return guarded<entry_row("SSYMV")>(qrv_blas_ssymv, uplo, n, alpha, a, lda, x, incx, beta, y, incy);
}
int CHEMV(const char* uplo, const int* n, const qrv_complex* alpha, const qrv_complex* a, const int* lda,
          const qrv_complex* x, const int* incx, const qrv_complex* beta, qrv_complex* y, const int* incy) {
    return guarded<entry_row("CHEMV")>(qrv_blas_chemv_kernel, uplo, n, alpha, a, lda, x, incx, beta, y, incy);
}
int SSBMV(const char* uplo, const int* n, const int* k, const float* alpha, const float* a, const int* lda,
          const float* x, const int* incx, const float* beta, float* y, const int* incy) {
    return guarded<entry_row("SSBMV")>(qrv_blas_ssbmv_kernel, uplo, n, k, alpha, a, lda, x, incx, beta, y, incy);
}
int STRMV(const char* uplo, const char* trans, const char* diag, const int* n, const float* a, const int* lda, float* x,
          const int* incx) {
    return guarded<entry_row("STRMV")>(qrv_blas_strmv, uplo, trans, diag, n, a, lda, x, incx);
}
int CTRMV(const char* uplo, const char* trans, const char* diag, const int* n, const qrv_complex* a, const int* lda,
          qrv_complex* x, const int* incx) {
    return guarded<entry_row("CTRMV")>(qrv_blas_ctrmv, uplo, trans, diag, n, a, lda, x, incx);
}
int STBMV(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const float* a,
          const int* lda, float* x, const int* incx) {
    return guarded<entry_row("STBMV")>(qrv_blas_stbmv_kernel, uplo, trans, diag, n, k, a, lda, x, incx);
}
int STRSV(const char* uplo, const char* trans, const char* diag, const int* n, const float* a, const int* lda, float* x,
          const int* incx) {
    return guarded<entry_row("STRSV")>(qrv_blas_strsv_kernel, uplo, trans, diag, n, a, lda, x, incx);
}
int CTRSV(const char* uplo, const char* trans, const char* diag, const int* n, const qrv_complex* a, const int* lda,
          qrv_complex* x, const int* incx) {
    return guarded<entry_row("CTRSV")>(qrv_blas_ctrsv_kernel, uplo, trans, diag, n, a, lda, x, incx);
}
int STBSV(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const float* a,
          const int* lda, float* x, const int* incx) {
    return guarded<entry_row("STBSV")>(qrv_blas_stbsv_kernel, uplo, trans, diag, n, k, a, lda, x, incx);
}
int SGER(const int* m, const int* n, const float* alpha, const float* x, const int* incx, const float* y,
         const int* incy, float* a, const int* lda) {
    return guarded<entry_row("SGER")>(qrv_blas_sger_kernel, m, n, alpha, x, incx, y, incy, a, lda);
}
int CGERU(const int* m, const int* n, const qrv_complex* alpha, const qrv_complex* x, const int* incx,
          const qrv_complex* y, const int* incy, qrv_complex* a, const int* lda) {
    return guarded<entry_row("CGERU")>(qrv_blas_cgeru_kernel, m, n, alpha, x, incx, y, incy, a, lda);
}
int CGERC(const int* m, const int* n, const qrv_complex* alpha, const qrv_complex* x, const int* incx,
          const qrv_complex* y, const int* incy, qrv_complex* a, const int* lda) {
    return guarded<entry_row("CGERC")>(qrv_blas_cgerc_kernel, m, n, alpha, x, incx, y, incy, a, lda);
}
int SSYR(const char* uplo, const int* n, const float* alpha, const float* x, const int* incx, float* a,
         const int* lda) {
    return guarded<entry_row("SSYR")>(qrv_blas_ssyr, uplo, n, alpha, x, incx, a, lda);
}
int CHER(const char* uplo, const int* n, const float* alpha, const qrv_complex* x, const int* incx, qrv_complex* a,
         const int* lda) {
    return guarded<entry_row("CHER")>(qrv_blas_cher_kernel, uplo, n, alpha, x, incx, a, lda);
}
int SSYR2(const char* uplo, const int* n, const float* alpha, const float* x, const int* incx, const float* y,
          const int* incy, float* a, const int* lda) {
    return guarded<entry_row("SSYR2")>(qrv_blas_ssyr2, uplo, n, alpha, x, incx, y, incy, a, lda);
}
int CHER2(const char* uplo, const int* n, const qrv_complex* alpha, const qrv_complex* x, const int* incx,
          const qrv_complex* y, const int* incy, qrv_complex* a, const int* lda) {
    return guarded<entry_row("CHER2")>(qrv_blas_cher2_kernel, uplo, n, alpha, x, incx, y, incy, a, lda);
}
