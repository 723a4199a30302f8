// The kernels of BLAS level 3 but GEMM, compiled once for each build, in its namespace: each hands over to its family's
// template.
#include "blas/kernel/common/level3/symm.hpp"
#include "blas/kernel/common/level3/syrk.hpp"
#include "blas/kernel/common/level3/trmm.hpp"
#include "blas/kernel/common/level3/trsm.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/options.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

void blas_ssyrk_kernel(QRV_SYRK_PARAMETERS(float, float)) {
    syrk<Symmetry::symmetric, float>(uplo_of(*uplo), op_of(*trans), *n, *k, *alpha, {a, *lda}, *beta, {c, *ldc});
}
void blas_csyrk_kernel(QRV_SYRK_PARAMETERS(SingleComplex, SingleComplex)) {
    syrk<Symmetry::symmetric, SingleComplex>(uplo_of(*uplo), op_of(*trans), *n, *k, *alpha, {a, *lda}, *beta,
                                             {c, *ldc});
}
void blas_cherk_kernel(QRV_SYRK_PARAMETERS(SingleComplex, float)) {
    syrk<Symmetry::hermitian, SingleComplex>(uplo_of(*uplo), op_of(*trans), *n, *k, *alpha, {a, *lda}, *beta,
                                             {c, *ldc});
}
void blas_ssyr2k_kernel(QRV_SYR2K_PARAMETERS(float, float)) {
    syr2k<Symmetry::symmetric, float>(uplo_of(*uplo), op_of(*trans), *n, *k, *alpha, {a, *lda}, {b, *ldb}, *beta,
                                      {c, *ldc});
}
void blas_csyr2k_kernel(QRV_SYR2K_PARAMETERS(SingleComplex, SingleComplex)) {
    syr2k<Symmetry::symmetric, SingleComplex>(uplo_of(*uplo), op_of(*trans), *n, *k, *alpha, {a, *lda}, {b, *ldb},
                                              *beta, {c, *ldc});
}
void blas_cher2k_kernel(QRV_SYR2K_PARAMETERS(SingleComplex, float)) {
    syr2k<Symmetry::hermitian, SingleComplex>(uplo_of(*uplo), op_of(*trans), *n, *k, *alpha, {a, *lda}, {b, *ldb},
                                              *beta, {c, *ldc});
}
void blas_ssymm_kernel(QRV_SYMM_PARAMETERS(float)) {
    symm<Symmetry::symmetric, float>(side_of(*side), uplo_of(*uplo), *m, *n, *alpha, {a, *lda}, {b, *ldb}, *beta,
                                     {c, *ldc});
}
void blas_csymm_kernel(QRV_SYMM_PARAMETERS(SingleComplex)) {
    symm<Symmetry::symmetric, SingleComplex>(side_of(*side), uplo_of(*uplo), *m, *n, *alpha, {a, *lda}, {b, *ldb},
                                             *beta, {c, *ldc});
}
void blas_chemm_kernel(QRV_SYMM_PARAMETERS(SingleComplex)) {
    symm<Symmetry::hermitian, SingleComplex>(side_of(*side), uplo_of(*uplo), *m, *n, *alpha, {a, *lda}, {b, *ldb},
                                             *beta, {c, *ldc});
}

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
