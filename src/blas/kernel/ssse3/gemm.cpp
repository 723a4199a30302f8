// SGEMM for processors with SSSE3: plan-driven. Those with SSE4.1 take the 4 x 4 tile.
#include "blas/kernel/common/sgemm_plan.hpp"

namespace qrv::kernel::ssse3 {
namespace {

constexpr BlockRule rule{
    .kbFull = 256,
    .kbLeast = 128,
    .cacheLevel = 2, // the last level of these processors
    .cacheLimit = 3145728,
    .mbSmall = 896,
    .mbLarge = 2000,
    .nbMost = 5000,
    .nbFilled = true,
};
constexpr GemmPlanRow<float> row = sgemm_row<rule>(1);

// Row 0, for processors without SSE4.1, is the same until it has kernels of its own.
constexpr const GemmPlanRow<float>& row_of(bool hasSse41) {
    return hasSse41 ? row : row;
}

} // namespace

void plan_load_for(bool hasSse41, GemmPlan<float>* plan) {
    load_row(row_of(hasSse41), plan);
}
void blas_sgemm_plan_load(GemmPlan<float>* plan) {
    constexpr int withoutSse41 = 32; // the CpuMa of this class when bit 19 of leaf 1's ECX is clear
    plan_load_for(qrv_serv_get_cpu_ma() != withoutSse41, plan);
}

void blas_sgemm_small(QRV_GEMM_PARAMETERS(float)) {
    generic::blas_sgemm_kernel(QRV_GEMM_ARGUMENTS);
}
void blas_sgemm_scale_c(const int* m, const int* n, const float* beta, float* c, const int* ldc) {
    generic::blas_sgemm_scale_c(m, n, beta, c, ldc);
}

} // namespace qrv::kernel::ssse3
