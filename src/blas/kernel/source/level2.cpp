// The kernels of BLAS level 2, compiled once for each build, in its namespace: each hands over to its family's
// template.
#include "blas/kernel/common/level2/banded.hpp"
#include "blas/kernel/common/level2/gemv.hpp"
#include "blas/kernel/common/level2/gemvt.hpp"
#include "blas/kernel/common/level2/ger.hpp"
#include "blas/kernel/common/level2/larf3.hpp"
#include "blas/kernel/common/level2/lasr.hpp"
#include "blas/kernel/common/level2/symv.hpp"
#include "blas/kernel/common/level2/syr.hpp"
#include "blas/kernel/common/level2/trmv.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/options.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// ---- General, symmetric and Hermitian -----------------------------------------------------------------------------

void blas_sgemv_kernel(QRV_GEMV_PARAMETERS(float)) {
    gemv<float>(op_of(*trans), *m, *n, *alpha, {a, *lda}, x, *incx, *beta, y, *incy);
}
void blas_cgemv_kernel(QRV_GEMV_PARAMETERS(SingleComplex)) {
    gemv<SingleComplex>(op_of(*trans), *m, *n, *alpha, {a, *lda}, x, *incx, *beta, y, *incy);
}
void blas_ssymv_kernel(QRV_SYMV_PARAMETERS(float)) {
    symv<float>(uplo_of(*uplo), *n, *alpha, {a, *lda}, x, *incx, *beta, y, *incy);
}
void blas_chemv_kernel(QRV_SYMV_PARAMETERS(SingleComplex)) {
    symv<SingleComplex>(uplo_of(*uplo), *n, *alpha, {a, *lda}, x, *incx, *beta, y, *incy);
}
void blas_sger_kernel(QRV_GER_PARAMETERS(float)) {
    ger<false, float>(*m, *n, *alpha, x, *incx, y, *incy, {a, *lda});
}
void blas_cgeru_kernel(QRV_GER_PARAMETERS(SingleComplex)) {
    ger<false, SingleComplex>(*m, *n, *alpha, x, *incx, y, *incy, {a, *lda});
}
void blas_cgerc_kernel(QRV_GER_PARAMETERS(SingleComplex)) {
    ger<true, SingleComplex>(*m, *n, *alpha, x, *incx, y, *incy, {a, *lda});
}
void blas_ssyr_kernel(QRV_SYR_PARAMETERS(float)) {
    syr<float>(whole_triangle(uplo_of(*uplo), *n), *alpha, {*n, x, *incx}, {a, *lda});
}
void blas_cher_kernel(QRV_SYR_PARAMETERS(SingleComplex)) {
    syr<SingleComplex>(whole_triangle(uplo_of(*uplo), *n), *alpha, {*n, x, *incx}, {a, *lda});
}
void blas_ssyr2_kernel(QRV_SYR2_PARAMETERS(float)) {
    syr2<float>(whole_triangle(uplo_of(*uplo), *n), *alpha, {*n, x, *incx}, {*n, y, *incy}, {a, *lda});
}
void blas_cher2_kernel(QRV_SYR2_PARAMETERS(SingleComplex)) {
    syr2<SingleComplex>(whole_triangle(uplo_of(*uplo), *n), *alpha, {*n, x, *incx}, {*n, y, *incy}, {a, *lda});
}
void blas_ssyr_band_kernel(QRV_SYR_BAND_PARAMETERS) {
    const TriangleBand band = last_band(uplo_of(*uplo), *width, *length);
    syr<float>(band, *alpha, {*length, x, *incx}, whole_of_band(band, a, *lda));
}
void blas_ssyr2_band_kernel(QRV_SYR2_BAND_PARAMETERS) {
    const TriangleBand band = last_band(uplo_of(*uplo), *width, *length);
    syr2<float>(band, *alpha, {*length, x, *incx}, {*length, y, *incy}, whole_of_band(band, a, *lda));
}
void blas_ssymv_strip(QRV_SYMV_STRIP_PARAMETERS(float)) {
    symv_strip<float>(uplo_of(*uplo), *n, *columns, *alpha, {a, *lda}, x, *incx, *beta, y, *incy);
}
void blas_ssyr_strip(QRV_SYR_STRIP_PARAMETERS(float)) {
    syr<float>(strip_of_triangle(uplo_of(*uplo), *n, *columns), *alpha, {*n, x, *incx}, {a, *lda});
}
void blas_ssyr2_strip(QRV_SYR2_STRIP_PARAMETERS(float)) {
    const TriangleBand strip = strip_of_triangle(uplo_of(*uplo), *n, *columns);
    syr2<float>(strip, *alpha, {*n, x, *incx}, {*n, y, *incy}, {a, *lda});
}
void blas_chemv_strip(QRV_SYMV_STRIP_PARAMETERS(SingleComplex)) {
    symv_strip<SingleComplex>(uplo_of(*uplo), *n, *columns, *alpha, {a, *lda}, x, *incx, *beta, y, *incy);
}
void blas_cher_strip(QRV_SYR_STRIP_PARAMETERS(SingleComplex)) {
    syr<SingleComplex>(strip_of_triangle(uplo_of(*uplo), *n, *columns), *alpha, {*n, x, *incx}, {a, *lda});
}
void blas_cher2_strip(QRV_SYR2_STRIP_PARAMETERS(SingleComplex)) {
    const TriangleBand strip = strip_of_triangle(uplo_of(*uplo), *n, *columns);
    syr2<SingleComplex>(strip, *alpha, {*n, x, *incx}, {*n, y, *incy}, {a, *lda});
}

// ---- Triangular and banded ----------------------------------------------------------------------------------------

void blas_strmv_kernel(QRV_TRIANGULAR_PARAMETERS(float)) {
    trmv<float>(uplo_of(*uplo), op_of(*trans), diag_of(*diag), *n, {a, *lda}, x, *incx);
}
void blas_ctrmv_kernel(QRV_TRIANGULAR_PARAMETERS(SingleComplex)) {
    trmv<SingleComplex>(uplo_of(*uplo), op_of(*trans), diag_of(*diag), *n, {a, *lda}, x, *incx);
}
void blas_strsv_kernel(QRV_TRIANGULAR_PARAMETERS(float)) {
    trsv<float>(uplo_of(*uplo), op_of(*trans), diag_of(*diag), *n, {a, *lda}, x, *incx);
}
void blas_ctrsv_kernel(QRV_TRIANGULAR_PARAMETERS(SingleComplex)) {
    trsv<SingleComplex>(uplo_of(*uplo), op_of(*trans), diag_of(*diag), *n, {a, *lda}, x, *incx);
}
void blas_strmv_band_kernel(QRV_TRIANGLE_BAND_PARAMETERS(float)) {
    trmv_band<float>(uplo_of(*uplo), op_of(*trans), diag_of(*diag), *width, *length, {a, *lda}, x, y, *incy);
}
void blas_ctrmv_band_kernel(QRV_TRIANGLE_BAND_PARAMETERS(SingleComplex)) {
    trmv_band<SingleComplex>(uplo_of(*uplo), op_of(*trans), diag_of(*diag), *width, *length, {a, *lda}, x, y, *incy);
}
void blas_sgbmv_kernel(QRV_GBMV_PARAMETERS(float)) {
    gbmv<float>(op_of(*trans), *m, *n, *kl, *ku, *alpha, {a, *lda}, x, *incx, *beta, y, *incy);
}
void blas_ssbmv_kernel(QRV_SBMV_PARAMETERS(float)) {
    sbmv<float>(uplo_of(*uplo), *n, *k, *alpha, {a, *lda}, x, *incx, *beta, y, *incy);
}
void blas_stbmv_kernel(QRV_TRIANGULAR_BAND_PARAMETERS(float)) {
    banded_triangular<Action::multiply, float>(uplo_of(*uplo), op_of(*trans), diag_of(*diag), *n, *k, {a, *lda}, x,
                                               *incx);
}
void blas_stbsv_kernel(QRV_TRIANGULAR_BAND_PARAMETERS(float)) {
    banded_triangular<Action::solve, float>(uplo_of(*uplo), op_of(*trans), diag_of(*diag), *n, *k, {a, *lda}, x, *incx);
}

// ---- Rotations ------------------------------------------------------------------------------------------------------

void blas_slasr_kernel(const char* side, const char* pivot, const char* direct, const int* m, const int* n,
                       const float* c, const float* s, float* a, const int* lda) {
    lasr(side_of(*side), pivot_of(*pivot), direct_of(*direct), *m, *n, c, s, {a, *lda});
}

// ---- Reflectors -----------------------------------------------------------------------------------------------------

void blas_sgemvt_kernel(QRV_GEMVT_PARAMETERS(float)) {
    gemvt<float>(*m, *n, *tau, {a, *lda}, v, x, *incx, y, *incy, z);
}
void blas_cgemvt_kernel(QRV_GEMVT_PARAMETERS(SingleComplex)) {
    gemvt<SingleComplex>(*m, *n, *tau, {a, *lda}, v, x, *incx, y, *incy, z);
}
void blas_slarf3_left_kernel(const int* count, const int* n, const float* v, const int* ldv, float* a, const int* lda) {
    larf3_left(*count, *n, {v, *ldv}, {a, *lda});
}
void blas_slarf3_right_kernel(const int* count, const int* begin, const int* end, const int* beginStep,
                              const int* endStep, const float* v, const int* ldv, float* a, const int* lda) {
    larf3_right(*count, {*begin, *end, *beginStep, *endStep}, {v, *ldv}, {a, *lda});
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
