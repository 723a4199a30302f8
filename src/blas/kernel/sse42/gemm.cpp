// SGEMM for processors with SSE4.2: plan-driven, 4 x 4 tile. Processors with wider vectors take a wider micro-kernel
// in the same plan.
#include "blas/kernel/common/sgemm_plan.hpp"
#include "blas/kernel/sse42/wide.hpp"

namespace qrv::kernel::sse42 {
namespace {

constexpr GemmPlanRow<float> row = sgemm_row<sgemmBlocksSse42>(0);

// Which products a wide form computes without packing.
struct DirectRange {
    int work;  // m*n*k at most: beyond it, operands come from the outer caches again and again
    int area;  // m*n at most if k is less than `depth`: the time goes into C then, and the row tiles take it across
    int depth; // its columns
};
constexpr DirectRange directRanges[] = {
    {},
    {.work = 1 << 27, .area = 1 << 19, .depth = 64},
    {.work = 1 << 27, .area = 1 << 19, .depth = 64},
};

} // namespace

bool goes_direct(VectorForm form, int m, int n, int k) {
    const DirectRange& range = directRanges[static_cast<int>(form)];
    const std::int64_t area = std::int64_t{m} * n;
    return area <= (k < range.depth ? range.area : range.work) && area * k <= range.work;
}

DirectSgemm* direct_sgemm(VectorForm form) {
#ifdef QRV_WIDE_KERNELS
    if (form == VectorForm::avx512)
        return sse42_avx512::direct;
    if (form == VectorForm::avx2)
        return sse42_avx2::direct;
#endif
    static_cast<void>(form);
    return nullptr;
}

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
    if (*m <= 0 || *n <= 0)
        return;
    const VectorForm form = vector_form();
    if (*k > 0 && *alpha != 0 && goes_direct(form, *m, *n, *k))
        return direct_sgemm(form)(QRV_GEMM_ARGUMENTS);
    blas_sgemm_by_plan(QRV_GEMM_ARGUMENTS);
}

} // namespace qrv::kernel::sse42
