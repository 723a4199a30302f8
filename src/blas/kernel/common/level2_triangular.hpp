// The kernels of BLAS level 2 with triangular and banded matrices: each hands over to its family's template.
#pragma once

#include "blas/kernel/common/banded.hpp"
#include "blas/kernel/common/trmv.hpp"
#include "blas/kernel/kernels.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

void blas_strmv_kernel(QRV_TRIANGULAR_PARAMETERS(float)) {
    trmv(*uplo, *trans, *diag, *n, a, *lda, x, *incx);
}
void blas_ctrmv_kernel(QRV_TRIANGULAR_PARAMETERS(SingleComplex)) {
    trmv(*uplo, *trans, *diag, *n, a, *lda, x, *incx);
}
void blas_strsv_kernel(QRV_TRIANGULAR_PARAMETERS(float)) {
    trsv(*uplo, *trans, *diag, *n, a, *lda, x, *incx);
}
void blas_ctrsv_kernel(QRV_TRIANGULAR_PARAMETERS(SingleComplex)) {
    trsv(*uplo, *trans, *diag, *n, a, *lda, x, *incx);
}
void blas_strmv_band_kernel(QRV_TRIANGLE_BAND_PARAMETERS(float)) {
    trmv_band(*uplo, *trans, *diag, *width, *length, a, *lda, x, y, *incy);
}
void blas_ctrmv_band_kernel(QRV_TRIANGLE_BAND_PARAMETERS(SingleComplex)) {
    trmv_band(*uplo, *trans, *diag, *width, *length, a, *lda, x, y, *incy);
}
void blas_sgbmv_kernel(QRV_GBMV_PARAMETERS(float)) {
    gbmv(*trans, *m, *n, *kl, *ku, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}
void blas_ssbmv_kernel(QRV_SBMV_PARAMETERS(float)) {
    sbmv(*uplo, *n, *k, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}
void blas_stbmv_kernel(QRV_TRIANGULAR_BAND_PARAMETERS(float)) {
    banded_triangular<Action::multiply>(*uplo, *trans, *diag, *n, *k, a, *lda, x, *incx);
}
void blas_stbsv_kernel(QRV_TRIANGULAR_BAND_PARAMETERS(float)) {
    banded_triangular<Action::solve>(*uplo, *trans, *diag, *n, *k, a, *lda, x, *incx);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
