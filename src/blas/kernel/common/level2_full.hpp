// The kernels of BLAS level 2 with general, symmetric and Hermitian matrices: each hands over to its family's template.
#pragma once

#include "blas/kernel/common/gemv.hpp"
#include "blas/kernel/kernels.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

void blas_sgemv_kernel(QRV_GEMV_PARAMETERS(float)) {
    gemv<float>(*trans, *m, *n, *alpha, {a, *lda}, x, *incx, *beta, y, *incy);
}
void blas_cgemv_kernel(QRV_GEMV_PARAMETERS(SingleComplex)) {
    gemv<SingleComplex>(*trans, *m, *n, *alpha, {a, *lda}, x, *incx, *beta, y, *incy);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
