// SGEMM for processors with SSE4.2: plan-driven, 4 x 4 tile. Processors with wider vectors take a wider micro-kernel
// in the same plan.
#include "blas/kernel/common/sgemm_plan.hpp"
#include "blas/kernel/sse42/wide.hpp"

namespace qrv::kernel::sse42 {
namespace {

constexpr GemmPlanRow<float> row = sgemm_row<sgemmBlocksSse42>(0);

// The micro-kernel of a vector form, and the sliver it wants.
struct MicroChoice {
    GemmPlan<float>::Micro* micro;
    int smallFactor;
};
constexpr MicroChoice micro_of(VectorForm form) {
#ifdef QRV_WIDE_KERNELS
    if (form == VectorForm::avx512)
        return {sse42_avx512::gemm_micro, sse42_avx512::sliverFactor};
    if (form == VectorForm::avx2)
        return {sse42_avx2::gemm_micro, sse42_avx2::sliverFactor};
#endif
    static_cast<void>(form);
    return {row.micro, row.smallFactor};
}

} // namespace

void plan_load_for(VectorForm form, GemmPlan<float>* plan) {
    fill_plan(row, plan);
    const MicroChoice choice = micro_of(form);
    plan->micro = choice.micro;
    plan->smallFactor = choice.smallFactor;
}
void blas_sgemm_plan_load(GemmPlan<float>* plan) {
    plan_load_for(vector_form(), plan);
}

} // namespace qrv::kernel::sse42
