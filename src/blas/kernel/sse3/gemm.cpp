// TEMPORARY: forwards to the generic build until this build's own GEMM replaces it.
#include "blas/kernel/common/gemm_small.hpp"
#include "blas/kernel/common/no_plan.hpp"
#include "blas/kernel/kernels.hpp"

namespace qrv::kernel::sse3 {

void blas_sgemm_kernel(QRV_GEMM_PARAMETERS(float)) {
    gemm_small(QRV_GEMM_ARGUMENTS);
}
void blas_sgemm_scale_c(const int* m, const int* n, const float* beta, float* c, const int* ldc) {
    gemm_scale_c(m, n, beta, c, ldc);
}

} // namespace qrv::kernel::sse3
