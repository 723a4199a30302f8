// The pieces of SGEMM that are reached by name and not through a slot: by the build itself, and by tests.
#pragma once

#include "blas/kernel/kernels.hpp"
#include "service/vector_form.hpp"

#define QRV_DECLARE_VECTOR_PIECES                                                                                      \
    /* The whole operation without packing and without work memory. */                                                 \
    void blas_sgemm_small(QRV_GEMM_PARAMETERS(float));

#define QRV_DECLARE_PLAN_PIECES                                                                                        \
    QRV_DECLARE_VECTOR_PIECES                                                                                          \
    /* packBoth or packA, by the size of a block of B. */                                                              \
    GemmMode blas_sgemm_pick_mode(QRV_GEMM_PARAMETERS(float), GemmPlan<float>* plan);                                  \
    /* The whole serial GEMM by the plan, whatever its size. */                                                        \
    void blas_sgemm_by_plan(QRV_GEMM_PARAMETERS(float));

namespace qrv::kernel::sse2 {
QRV_DECLARE_VECTOR_PIECES
}
namespace qrv::kernel::sse3 {
QRV_DECLARE_VECTOR_PIECES
}

namespace qrv::kernel::ssse3 {
QRV_DECLARE_PLAN_PIECES
// The plan row for a processor with or without SSE4.1, and blas_sgemm_plan_load with a given row.
int plan_row(bool hasSse41);
void load_row(int rowIndex, GemmPlan<float>* plan);
} // namespace qrv::kernel::ssse3

namespace qrv::kernel::sse42 {
QRV_DECLARE_PLAN_PIECES
// blas_sgemm_plan_load with the micro-kernel of a vector form.
void plan_load_for(VectorForm form, GemmPlan<float>* plan);
// Whether a form computes a product of these sizes, all of them positive, without packing, and the routine that does
// so; it takes no heed of k = 0 and alpha = 0.
bool goes_direct(VectorForm form, bool transposedA, bool transposedB, int m, int n, int k);
using DirectSgemm = void(QRV_GEMM_PARAMETERS(float));
DirectSgemm* direct_sgemm(VectorForm form);
} // namespace qrv::kernel::sse42

#undef QRV_DECLARE_PLAN_PIECES
#undef QRV_DECLARE_VECTOR_PIECES
