// Direct entries of BLAS level 1: the decision routine, or the kernel of a routine that is never threaded. Nothing is
// checked.
#include "blas/blas.hpp"
#include "blas/kernel/kernels.hpp"

void SAXPY(const int* n, const float* alpha, const float* x, const int* incx, float* y, const int* incy) {
    qrv_blas_saxpy(n, alpha, x, incx, y, incy);
}
void CAXPY(const int* n, const qrv_complex* alpha, const qrv_complex* x, const int* incx, qrv_complex* y,
           const int* incy) {
    qrv_blas_caxpy(n, alpha, x, incx, y, incy);
}
void SCOPY(const int* n, const float* x, const int* incx, float* y, const int* incy) {
    qrv_blas_scopy(n, x, incx, y, incy);
}
void CCOPY(const int* n, const qrv_complex* x, const int* incx, qrv_complex* y, const int* incy) {
    qrv_blas_ccopy(n, x, incx, y, incy);
}
void SSWAP(const int* n, float* x, const int* incx, float* y, const int* incy) {
    qrv_blas_sswap(n, x, incx, y, incy);
}
void CSWAP(const int* n, qrv_complex* x, const int* incx, qrv_complex* y, const int* incy) {
    qrv_blas_cswap(n, x, incx, y, incy);
}
void SSCAL(const int* n, const float* alpha, float* x, const int* incx) {
    qrv_blas_sscal_kernel(n, alpha, x, incx);
}
void CSCAL(const int* n, const qrv_complex* alpha, qrv_complex* x, const int* incx) {
    qrv_blas_cscal_kernel(n, alpha, x, incx);
}
void CSSCAL(const int* n, const float* alpha, qrv_complex* x, const int* incx) {
    qrv_blas_csscal_kernel(n, alpha, x, incx);
}

float SDOT(const int* n, const float* x, const int* incx, const float* y, const int* incy) {
    return qrv_blas_sdot(n, x, incx, y, incy);
}
void CDOTC(qrv_complex* result, const int* n, const qrv_complex* x, const int* incx, const qrv_complex* y,
           const int* incy) {
    qrv_blas_cdotc(result, n, x, incx, y, incy);
}
void CDOTU(qrv_complex* result, const int* n, const qrv_complex* x, const int* incx, const qrv_complex* y,
           const int* incy) {
    qrv_blas_cdotu_kernel(result, n, x, incx, y, incy);
}
float SNRM2(const int* n, const float* x, const int* incx) {
    return qrv_blas_snrm2_kernel(n, x, incx);
}
float SCNRM2(const int* n, const qrv_complex* x, const int* incx) {
    return qrv_blas_scnrm2_kernel(n, x, incx);
}
float SASUM(const int* n, const float* x, const int* incx) {
    return qrv_blas_sasum_kernel(n, x, incx);
}
float SCASUM(const int* n, const qrv_complex* x, const int* incx) {
    return qrv_blas_scasum_kernel(n, x, incx);
}
int ISAMAX(const int* n, const float* x, const int* incx) {
    return qrv_blas_isamax_kernel(n, x, incx);
}
int ICAMAX(const int* n, const qrv_complex* x, const int* incx) {
    return qrv_blas_icamax_kernel(n, x, incx);
}

void SROT(const int* n, float* x, const int* incx, float* y, const int* incy, const float* c, const float* s) {
    qrv_blas_srot(n, x, incx, y, incy, c, s);
}
void SROTG(float* a, float* b, float* c, float* s) {
    qrv_blas_srotg_kernel(a, b, c, s);
}
void SROTM(const int* n, float* x, const int* incx, float* y, const int* incy, const float* param) {
    qrv_blas_srotm_kernel(n, x, incx, y, incy, param);
}
void SROTMG(float* d1, float* d2, float* x1, const float* y1, float* param) {
    qrv_blas_srotmg_kernel(d1, d2, x1, y1, param);
}
