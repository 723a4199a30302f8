// SGEMM for processors with SSE4.2: plan-driven, 4 x 4 tile. Processors with wider vectors take a wider micro-kernel
// in the same plan.
#include "blas/kernel/common/sgemm_plan.hpp"
#include "blas/kernel/sse42/wide.hpp"

namespace qrv::kernel::sse42 {
namespace {

constexpr GemmPlanRow<float> row = sgemm_row<sgemmBlocksSse42>(0);

// A product that a wider form does better without packing.
bool done_in_place(QRV_GEMM_PARAMETERS(float)) {
#ifdef QRV_WIDE_KERNELS
    switch (vector_form()) {
    case VectorForm::avx512:
        return sse42_avx512::direct(QRV_GEMM_ARGUMENTS);
    case VectorForm::avx2:
        return sse42_avx2::direct(QRV_GEMM_ARGUMENTS);
    case VectorForm::sse:
        break;
    }
#endif
    return false;
}

} // namespace

void plan_load_for(VectorForm form, GemmPlan<float>* plan) {
    fill_plan(row, plan);
#ifdef QRV_WIDE_KERNELS
    if (form == VectorForm::avx512)
        sse42_avx512::use_form(plan);
    else if (form == VectorForm::avx2)
        sse42_avx2::use_form(plan);
#endif
    static_cast<void>(form);
}
void blas_sgemm_plan_load(GemmPlan<float>* plan) {
    plan_load_for(vector_form(), plan);
}

void blas_sgemm_kernel(QRV_GEMM_PARAMETERS(float)) {
    if (!done_in_place(QRV_GEMM_ARGUMENTS))
        planned_sgemm(QRV_GEMM_ARGUMENTS);
}

} // namespace qrv::kernel::sse42
