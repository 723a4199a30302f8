// Symmetric and Hermitian rank updates and products: each hands over to its family's template.
#pragma once

#include "blas/kernel/common/symm.hpp"
#include "blas/kernel/common/syrk.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

void blas_ssyrk_kernel(QRV_SYRK_PARAMETERS(float, float)) {
    syrk<Symmetry::symmetric, float>(QRV_SYRK_ARGUMENTS);
}
void blas_csyrk_kernel(QRV_SYRK_PARAMETERS(SingleComplex, SingleComplex)) {
    syrk<Symmetry::symmetric, SingleComplex>(QRV_SYRK_ARGUMENTS);
}
void blas_cherk_kernel(QRV_SYRK_PARAMETERS(SingleComplex, float)) {
    syrk<Symmetry::hermitian, SingleComplex>(QRV_SYRK_ARGUMENTS);
}
void blas_ssyr2k_kernel(QRV_SYR2K_PARAMETERS(float, float)) {
    syr2k<Symmetry::symmetric, float>(QRV_SYR2K_ARGUMENTS);
}
void blas_csyr2k_kernel(QRV_SYR2K_PARAMETERS(SingleComplex, SingleComplex)) {
    syr2k<Symmetry::symmetric, SingleComplex>(QRV_SYR2K_ARGUMENTS);
}
void blas_cher2k_kernel(QRV_SYR2K_PARAMETERS(SingleComplex, float)) {
    syr2k<Symmetry::hermitian, SingleComplex>(QRV_SYR2K_ARGUMENTS);
}
void blas_ssymm_kernel(QRV_SYMM_PARAMETERS(float)) {
    symm<Symmetry::symmetric, float>(QRV_SYMM_ARGUMENTS);
}
void blas_csymm_kernel(QRV_SYMM_PARAMETERS(SingleComplex)) {
    symm<Symmetry::symmetric, SingleComplex>(QRV_SYMM_ARGUMENTS);
}
void blas_chemm_kernel(QRV_SYMM_PARAMETERS(SingleComplex)) {
    symm<Symmetry::hermitian, SingleComplex>(QRV_SYMM_ARGUMENTS);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
