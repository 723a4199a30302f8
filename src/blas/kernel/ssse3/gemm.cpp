// SGEMM for processors with SSSE3: plan-driven. Row 0 of the plan table, for those without SSE4.1, takes k in pairs;
// row 1 has the 4 x 4 tile of the sse42 build.
#include "blas/kernel/common/gemm_pairs.hpp"
#include "blas/kernel/common/sgemm_plan.hpp"

namespace qrv::kernel::ssse3 {
namespace {

constexpr GemmPlanRow<float> pairsRow{
    .rowIndex = 0,
    .tableTag = planTag,
    .mUnit = pairs::rowUnit,
    .nUnit = pairs::columnUnit,
    .kUnit = pairs::pair,
    .smallFactor = 8, // four panels of two columns, each value of B twice
    .smallM = 4,
    .smallN = 8,
    .smallK = 2,
    .setBlocks = set_blocks<float, sgemmBlocksPairs>,
    .copyAN = pairs::copy_an,
    .copyAT = pairs::copy_at,
    .copyAC = pairs::copy_at,
    .copyBN = pairs::copy_bn,
    .copyBT = pairs::copy_bt,
    .copyBC = pairs::copy_bt,
    .micro = pairs::micro,
};

constexpr GemmPlanRow<float> tileRow = sgemm_row<sgemmBlocksSsse3>(1);

} // namespace

int plan_row(bool hasSse41) {
    return hasSse41 ? tileRow.rowIndex : pairsRow.rowIndex;
}

void load_row(int rowIndex, GemmPlan<float>* plan) {
    fill_plan(rowIndex == pairsRow.rowIndex ? pairsRow : tileRow, plan);
}

void blas_sgemm_plan_load(GemmPlan<float>* plan) {
    constexpr int withoutSse41 = 32; // the CpuMa of this class when bit 19 of leaf 1's ECX is clear
    load_row(plan_row(qrv_serv_get_cpu_ma() != withoutSse41), plan);
}

void blas_sgemm_kernel(QRV_GEMM_PARAMETERS(float)) {
    planned_sgemm(QRV_GEMM_ARGUMENTS);
}

} // namespace qrv::kernel::ssse3
