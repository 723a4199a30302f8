// The kernels of BLAS level 1, compiled once for each build, in its namespace: each hands over to its family's
// template.
#include "blas/kernel/common/level1/secular.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/kernel/vec.hpp"

#if QRV_VECTOR_LANES == 1
#include "blas/kernel/generic/level1.hpp"
#else
#include "blas/kernel/common/level1/asum.hpp"
#include "blas/kernel/common/level1/axpy.hpp"
#include "blas/kernel/common/level1/copy.hpp"
#include "blas/kernel/common/level1/dot.hpp"
#include "blas/kernel/common/level1/iamax.hpp"
#include "blas/kernel/common/level1/nrm2.hpp"
#include "blas/kernel/common/level1/rot.hpp"
#include "blas/kernel/common/level1/rotg.hpp"
#include "blas/kernel/common/level1/rotm.hpp"
#include "blas/kernel/common/level1/scal.hpp"
#endif

namespace qrv::kernel::QRV_KERNEL_BUILD {

void blas_saxpy_kernel(const int* n, const float* alpha, QRV_VECTORS_TO_Y(float)) {
    if (*alpha != 0)
        axpy(*n, *alpha, x, *incx, y, *incy);
}
void blas_caxpy_kernel(const int* n, const SingleComplex* alpha, QRV_VECTORS_TO_Y(SingleComplex)) {
    if (*alpha != SingleComplex{0, 0})
        axpy(*n, *alpha, x, *incx, y, *incy);
}
void blas_scopy_kernel(const int* n, QRV_VECTORS_TO_Y(float)) {
    copy(*n, x, *incx, y, *incy);
}
void blas_ccopy_kernel(const int* n, QRV_VECTORS_TO_Y(SingleComplex)) {
    copy(*n, x, *incx, y, *incy);
}
void blas_sswap_kernel(QRV_BOTH_VECTORS(float)) {
    swap(*n, x, *incx, y, *incy);
}
void blas_cswap_kernel(QRV_BOTH_VECTORS(SingleComplex)) {
    swap(*n, x, *incx, y, *incy);
}
float blas_sdot_kernel(QRV_VECTORS(float)) {
    return dot<false>(*n, x, *incx, y, *incy);
}
void blas_cdotc_kernel(SingleComplex* result, QRV_VECTORS(SingleComplex)) {
    *result = dot<true>(*n, x, *incx, y, *incy);
}
void blas_cdotu_kernel(SingleComplex* result, QRV_VECTORS(SingleComplex)) {
    *result = dot<false>(*n, x, *incx, y, *incy);
}
void blas_srot_kernel(QRV_BOTH_VECTORS(float), const float* c, const float* s) {
    rot(*n, x, *incx, y, *incy, *c, *s);
}
void blas_sscal_kernel(const int* n, const float* alpha, float* x, const int* incx) {
    scal(*n, *alpha, x, *incx);
}
void blas_cscal_kernel(const int* n, const SingleComplex* alpha, SingleComplex* x, const int* incx) {
    scal(*n, *alpha, x, *incx);
}
void blas_csscal_kernel(const int* n, const float* alpha, SingleComplex* x, const int* incx) {
    scal(*n, *alpha, x, *incx);
}
float blas_sasum_kernel(QRV_VECTOR(float)) {
    return asum(*n, x, *incx);
}
float blas_scasum_kernel(QRV_VECTOR(SingleComplex)) {
    return asum(*n, x, *incx);
}
float blas_snrm2_kernel(QRV_VECTOR(float)) {
    return nrm2(*n, x, *incx);
}
float blas_scnrm2_kernel(QRV_VECTOR(SingleComplex)) {
    return nrm2(*n, x, *incx);
}
double blas_snrm2_squares(QRV_VECTOR(float)) {
    return squares(*n, x, *incx);
}
double blas_scnrm2_squares(QRV_VECTOR(SingleComplex)) {
    return squares(*n, x, *incx);
}
int blas_isamax_kernel(QRV_VECTOR(float)) {
    return __builtin_abs(iamax_of_slice(*n, x, *incx));
}
int blas_icamax_kernel(QRV_VECTOR(SingleComplex)) {
    return __builtin_abs(iamax_of_slice(*n, x, *incx));
}
int blas_isamax_slice(QRV_VECTOR(float)) {
    return iamax_of_slice(*n, x, *incx);
}
int blas_icamax_slice(QRV_VECTOR(SingleComplex)) {
    return iamax_of_slice(*n, x, *incx);
}
void blas_srotg_kernel(float* a, float* b, float* c, float* s) {
    rotg(*a, *b, *c, *s);
}
void blas_srotm_kernel(QRV_BOTH_VECTORS(float), const float* param) {
    rotm(*n, x, *incx, y, *incy, param);
}
void blas_srotmg_kernel(float* d1, float* d2, float* x1, const float* y1, float* param) {
    rotmg(*d1, *d2, *x1, *y1, param);
}
void blas_ssecular_sums_kernel(const int* n, const float* d, const float* z, const double* origin, const double* mu,
                               double* sum, double* slope) {
    secular_sums(*n, d, z, *origin, *mu, *sum, *slope);
}
void blas_ssecular_factors_kernel(const int* n, const float* d, const float* other, const float* difference,
                                  const float* sum, double* product) {
    secular_factors(*n, d, *other, difference, sum, product);
}
void blas_ssecular_vectors_kernel(const int* n, const float* d, const float* z, float* left, float* right) {
    secular_vectors(*n, d, z, left, right);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
