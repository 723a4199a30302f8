// Solves and products with triangular matrices: each hands over to its family's template.
#pragma once

#include "blas/kernel/common/own_gemm.hpp"
#include "blas/kernel/common/trmm.hpp"
#include "blas/kernel/common/trsm.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

#define QRV_DEFINE_TRIANGULAR(T, name, Operation)                                                                      \
    void name(QRV_TRSM_PARAMETERS(T)) {                                                                                \
        triangular<Operation, T>(side_of(*side), uplo_of(*uplo), op_of(*transa), diag_of(*diag), *m, *n, *alpha,       \
                                 {a, *lda}, {b, *ldb});                                                                \
    }
QRV_DEFINE_TRIANGULAR(float, blas_strsm_kernel, Solve)
QRV_DEFINE_TRIANGULAR(SingleComplex, blas_ctrsm_kernel, Solve)
QRV_DEFINE_TRIANGULAR(float, blas_strmm_kernel, Multiply)
QRV_DEFINE_TRIANGULAR(SingleComplex, blas_ctrmm_kernel, Multiply)
#undef QRV_DEFINE_TRIANGULAR

} // namespace qrv::kernel::QRV_KERNEL_BUILD
