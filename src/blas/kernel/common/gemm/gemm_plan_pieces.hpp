// The rows and pieces of the plan-driven GEMM, real and complex: what the builds that have a plan have in common.
// Included once, by such a build's gemm.cpp.
#pragma once

#include "blas/complex.hpp"
#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/cgemm_micro.hpp"
#include "blas/kernel/common/gemm/cgemm_pack.hpp"
#include "blas/kernel/common/gemm/cgemm_small.hpp"
#include "blas/kernel/common/gemm/gemm_core.hpp"
#include "blas/kernel/common/gemm/gemm_micro.hpp"
#include "blas/kernel/common/gemm/gemm_pack.hpp"
#include "blas/kernel/common/gemm/gemm_scale_c.hpp"
#include "blas/kernel/common/gemm/gemm_small.hpp"
#include "blas/kernel/gemm_pieces.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int planTag = 126;

// Rows with the 4 x 4 tile: they differ in their number and in the size of the blocks only.
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

// The complex rows, all with the 4 x 2 tile.
template <const BlockRule& rule>
constexpr GemmPlanRow<SingleComplex> cgemm_row(int rowIndex, int smallFactor) {
    using namespace complex_tile;
    return {
        .rowIndex = rowIndex,
        .tableTag = planTag,
        .mUnit = rowUnit,
        .nUnit = columnUnit,
        .kUnit = stepUnit,
        .smallFactor = smallFactor,
        .smallM = 4,
        .smallN = 8,
        .smallK = 2,
        .setBlocks = set_blocks<SingleComplex, rule>,
        .copyAN = copy_a<false, false>,
        .copyAT = copy_a<true, false>,
        .copyAC = copy_a<true, true>,
        .copyBN = copy_b<false, false>,
        .copyBT = copy_b<true, false>,
        .copyBC = copy_b<true, true>,
        .micro = micro,
    };
}
// Four pairs of columns, each value of B twice.
constexpr int complexSliverFactor = 8;
static_assert(complex_tile::columnUnit * complexSliverFactor * complex_tile::parts ==
              complex_tile::sliverColumns / complex_tile::columnUnit * complex_tile::sliverStep);

#define QRV_DEFINE_PLANNED_GEMM(T, gemm)                                                                               \
    void blas_##gemm##_small(QRV_GEMM_PARAMETERS(T)) {                                                                 \
        gemm_unpacked(gemm_call<T>(QRV_GEMM_ARGUMENTS));                                                               \
    }                                                                                                                  \
    void blas_##gemm##_scale_c(const int* m, const int* n, const T* beta, T* c, const int* ldc) {                      \
        gemm_scale_c(*m, *n, *beta, Matrix<T>{c, *ldc});                                                               \
    }                                                                                                                  \
    int blas_##gemm##_plan_available() {                                                                               \
        return 1;                                                                                                      \
    }                                                                                                                  \
    void blas_##gemm##_plan_reset(GemmPlan<T>* plan) {                                                                 \
        *plan = {};                                                                                                    \
    }                                                                                                                  \
    void blas_##gemm##_plan_set_blocks(int mb, int nb, int kb, GemmPlan<T>* plan) {                                    \
        store_blocks(mb, nb, kb, plan);                                                                                \
    }                                                                                                                  \
    int blas_##gemm##_buffer_sizes(BufferSet set, BlockClip clip, const int* m, const int* n, const int* k,            \
                                   GemmPlan<T>* plan) {                                                                \
        return buffer_sizes(set, clip, m, n, k, plan);                                                                 \
    }                                                                                                                  \
    int blas_##gemm##_blocked(QRV_GEMM_PARAMETERS(T), GemmMode mode, GemmPlan<T>* plan) {                              \
        return blocked(gemm_call<T>(QRV_GEMM_ARGUMENTS), mode, plan);                                                  \
    }                                                                                                                  \
    bool blas_##gemm##_triangle(const char* uplo, QRV_GEMM_PARAMETERS(T)) {                                            \
        GemmPlan<T> plan;                                                                                              \
        blas_##gemm##_plan_load(&plan);                                                                                \
        return triangle_by_plan(uplo_of(*uplo), gemm_call<T>(QRV_GEMM_ARGUMENTS), &plan);                              \
    }                                                                                                                  \
    /* Out of line, so that a call that needs no plan does not pay for its frame. */                                   \
    [[gnu::noinline]] void blas_##gemm##_by_plan(QRV_GEMM_PARAMETERS(T)) {                                             \
        GemmPlan<T> plan; /* loading resets all that is read before it is set */                                       \
        blas_##gemm##_plan_load(&plan);                                                                                \
        serial_gemm(gemm_call<T>(QRV_GEMM_ARGUMENTS), &plan);                                                          \
    }

QRV_DEFINE_PLANNED_GEMM(float, sgemm)
QRV_DEFINE_PLANNED_GEMM(SingleComplex, cgemm)
#undef QRV_DEFINE_PLANNED_GEMM

} // namespace qrv::kernel::QRV_KERNEL_BUILD
