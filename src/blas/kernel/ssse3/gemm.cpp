// TEMPORARY: forwards to the generic build until this build's own GEMM replaces it.
#include "blas/kernel/common/gemm_pairs.hpp"
#include "blas/kernel/common/no_plan.hpp"
#include "blas/kernel/kernels.hpp"

namespace qrv::kernel::ssse3 {

void load_row(int, GemmPlan<float>* plan) {
    plan->copyAN = pairs::copy_an;
    plan->copyAT = plan->copyAC = pairs::copy_at;
    plan->copyBN = pairs::copy_bn;
    plan->copyBT = plan->copyBC = pairs::copy_bt;
    plan->micro = pairs::micro;
}

void blas_sgemm_kernel(QRV_GEMM_PARAMETERS(float)) {
    generic::blas_sgemm_kernel(QRV_GEMM_ARGUMENTS);
}
void blas_sgemm_scale_c(const int* m, const int* n, const float* beta, float* c, const int* ldc) {
    generic::blas_sgemm_scale_c(m, n, beta, c, ldc);
}

} // namespace qrv::kernel::ssse3
