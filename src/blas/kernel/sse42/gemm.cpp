// SGEMM for processors with SSE4.2: plan-driven, 4 x 4 tile. Processors with wider vectors take a wider micro-kernel
// in the same plan.
#include "blas/kernel/common/sgemm_plan.hpp"

namespace qrv::kernel::sse42 {
namespace {

constexpr BlockRule rule{
    .kbFull = 256,
    .kbLeast = 128,
    .cacheLevel = 3, // the block of A, up to 1.25 MB, is read again for each sliver of B
    .cacheLimit = 4194304,
    .mbSmall = 768,
    .mbLarge = 1280,
    .nbMost = 5000,
    .nbFilled = true,
};
constexpr GemmPlanRow<float> row = sgemm_row<rule>(0);

// The micro-kernel of a vector form, and the sliver it wants.
struct MicroChoice {
    GemmPlan<float>::Micro* micro;
    int smallFactor;
};
constexpr MicroChoice micro_of(VectorForm) {
    return {row.micro, row.smallFactor};
}

} // namespace

void plan_load_for(VectorForm form, GemmPlan<float>* plan) {
    load_row(row, plan);
    const MicroChoice choice = micro_of(form);
    plan->micro = choice.micro;
    plan->smallFactor = choice.smallFactor;
}
void blas_sgemm_plan_load(GemmPlan<float>* plan) {
    plan_load_for(vector_form(), plan);
}

void blas_sgemm_small(QRV_GEMM_PARAMETERS(float)) {
    generic::blas_sgemm_kernel(QRV_GEMM_ARGUMENTS);
}
void blas_sgemm_scale_c(const int* m, const int* n, const float* beta, float* c, const int* ldc) {
    generic::blas_sgemm_scale_c(m, n, beta, c, ldc);
}

} // namespace qrv::kernel::sse42
