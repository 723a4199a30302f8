// GEMM for processors with SSSE3: plan-driven. Row 0 of the plan table, for those without SSE4.1, takes the k of real
// operands in pairs; row 1 has the 4 x 4 tile of the sse42 build. The complex rows differ in their blocks only.
#include "blas/kernel/common/gemm/gemm_pairs.hpp"
#include "blas/kernel/common/gemm/gemm_plan_pieces.hpp"

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
constexpr GemmPlanRow<SingleComplex> complexRows[] = {cgemm_row<cgemmBlocksPlain>(0, 2 * complexSliverFactor),
                                                      cgemm_row<cgemmBlocksSsse3>(1, complexSliverFactor)};

// The row for the processor in use.
int own_row() {
    constexpr int withoutSse41 = 32; // the CpuMa of this class when bit 19 of leaf 1's ECX is clear
    return plan_row(qrv_serv_get_cpu_ma() != withoutSse41);
}

} // namespace

int plan_row(bool hasSse41) {
    return hasSse41 ? 1 : 0;
}

void load_row(int rowIndex, GemmPlan<float>* plan) {
    fill_plan(rowIndex == pairsRow.rowIndex ? pairsRow : tileRow, plan);
}
void load_row(int rowIndex, GemmPlan<SingleComplex>* plan) {
    fill_plan(complexRows[rowIndex], plan);
}

void blas_sgemm_plan_load(GemmPlan<float>* plan) {
    load_row(own_row(), plan);
}
void blas_cgemm_plan_load(GemmPlan<SingleComplex>* plan) {
    load_row(own_row(), plan);
}

void blas_sgemm_kernel(QRV_GEMM_PARAMETERS(float)) {
    if (*m > 0 && *n > 0)
        blas_sgemm_by_plan(QRV_GEMM_ARGUMENTS);
}
void blas_cgemm_kernel(QRV_GEMM_PARAMETERS(SingleComplex)) {
    if (*m > 0 && *n > 0)
        blas_cgemm_by_plan(QRV_GEMM_ARGUMENTS);
}

} // namespace qrv::kernel::ssse3
