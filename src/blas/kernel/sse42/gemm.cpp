// SGEMM for processors with SSE4.2: plan-driven, 4 x 4 tile. Processors with wider vectors take a wider micro-kernel
// in the same plan.
#include "blas/kernel/common/sgemm_plan.hpp"
#include "blas/kernel/sse42/wide.hpp"

namespace qrv::kernel::sse42 {
namespace {

constexpr GemmPlanRow<float> row = sgemm_row<sgemmBlocksSse42>(0);

// Up to which product of the sizes a form computes without packing, by whether A is transposed.
struct DirectLimit {
    int straight, transposed;
};
constexpr DirectLimit directLimits[] = {
    {0, 0},             // sse
    {1 << 21, 1 << 21}, // avx2
    {1 << 21, 1 << 21}, // avx512
};

} // namespace

bool goes_direct(VectorForm form, bool transposedA, int m, int n, int k) {
    const DirectLimit& limit = directLimits[static_cast<int>(form)];
    return std::int64_t{m} * n * k <= (transposedA ? limit.transposed : limit.straight);
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
#ifdef QRV_WIDE_KERNELS
    const VectorForm form = vector_form();
    if (*alpha != 0 && *k > 0 && goes_direct(form, transposes(*transa), *m, *n, *k))
        return form == VectorForm::avx512 ? sse42_avx512::direct(QRV_GEMM_ARGUMENTS)
                                          : sse42_avx2::direct(QRV_GEMM_ARGUMENTS);
#endif
    sgemm_by_plan(QRV_GEMM_ARGUMENTS);
}

} // namespace qrv::kernel::sse42
