// The SGEMM plan with the 4 x 4 tile and the kernels around it: what the builds that use it have in common.
#pragma once

#include "blas/kernel/common/gemm_core.hpp"
#include "blas/kernel/common/gemm_micro.hpp"
#include "blas/kernel/common/gemm_pack.hpp"
#include "blas/kernel/common/gemm_scale_c.hpp"
#include "blas/kernel/common/gemm_small.hpp"
#include "blas/kernel/gemm_pieces.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int planTag = 126;

// The row of a build: rows of the tile differ in their number and in the size of the blocks only.
template <const BlockRule& rule>
constexpr GemmPlanRow<float> sgemm_row(int rowIndex) {
    return {
        .rowIndex = rowIndex,
        .tableTag = planTag,
        .mUnit = tileRows,
        .nUnit = tileColumns,
        .kUnit = packUnit,
        .smallFactor = 2, // the sliver holds each value of B twice
        .smallM = 4,
        .smallN = 4,
        .smallK = 4,
        .setBlocks = set_blocks<float, rule>,
        .copyAN = sgemm_copy_a<false>,
        .copyAT = sgemm_copy_a<true>,
        .copyAC = sgemm_copy_a<true>,
        .copyBN = sgemm_copy_b<false>,
        .copyBT = sgemm_copy_b<true>,
        .copyBC = sgemm_copy_b<true>,
        .micro = sgemm_micro,
    };
}

constexpr GemmFallback<float> sgemmFallback{blas_sgemm_small, blas_sgemm_scale_c};

void blas_sgemm_small(QRV_GEMM_PARAMETERS(float)) {
    gemm_small(QRV_GEMM_ARGUMENTS);
}
void blas_sgemm_scale_c(const int* m, const int* n, const float* beta, float* c, const int* ldc) {
    gemm_scale_c(m, n, beta, c, ldc);
}

int blas_sgemm_plan_available() {
    return 1;
}
void blas_sgemm_plan_reset(GemmPlan<float>* plan) {
    *plan = {};
}
void blas_sgemm_plan_set_blocks(int mb, int nb, int kb, GemmPlan<float>* plan) {
    plan->mb = mb;
    plan->nb = nb;
    plan->kb = kb;
}
int blas_sgemm_buffer_sizes(BufferSet set, BlockClip clip, const int* m, const int* n, const int* k,
                            GemmPlan<float>* plan) {
    return buffer_sizes(set, clip, m, n, k, plan);
}
GemmMode blas_sgemm_pick_mode(QRV_GEMM_PARAMETERS(float), GemmPlan<float>* plan) {
    static_cast<void>(transa), static_cast<void>(transb), static_cast<void>(m);
    static_cast<void>(alpha), static_cast<void>(a), static_cast<void>(lda), static_cast<void>(b);
    static_cast<void>(ldb), static_cast<void>(beta), static_cast<void>(c), static_cast<void>(ldc);
    return pick_mode(*n, *k, *plan);
}
int blas_sgemm_blocked(QRV_GEMM_PARAMETERS(float), GemmMode mode, GemmPlan<float>* plan) {
    return blocked(QRV_GEMM_ARGUMENTS, mode, plan, sgemmFallback);
}

// The whole operation by a plan. Out of line, so that a call that needs none does not pay for its frame.
[[gnu::noinline]] void blas_sgemm_by_plan(QRV_GEMM_PARAMETERS(float)) {
    GemmPlan<float> plan; // loading resets all that is read before it is set
    blas_sgemm_plan_load(&plan);
    serial_gemm(QRV_GEMM_ARGUMENTS, &plan, sgemmFallback);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
