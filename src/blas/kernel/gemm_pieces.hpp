// The pieces of GEMM that are reached by name and not through a slot: by the build itself, and by tests.
#pragma once

#include "blas/kernel/kernels.hpp"
#include "service/vector_form.hpp"

#define QRV_DECLARE_VECTOR_PIECES_OF(T, gemm)                                                                          \
    /* The whole operation without packing and without work memory. */                                                 \
    void blas_##gemm##_small(QRV_GEMM_PARAMETERS(T));
#define QRV_DECLARE_PLAN_PIECES_OF(T, gemm)                                                                            \
    QRV_DECLARE_VECTOR_PIECES_OF(T, gemm)                                                                              \
    /* packBoth or packA, by the size of a block of B. */                                                              \
    GemmMode blas_##gemm##_pick_mode(QRV_GEMM_PARAMETERS(T), GemmPlan<T>* plan);                                       \
    /* The whole serial GEMM by the plan, whatever its size. */                                                        \
    void blas_##gemm##_by_plan(QRV_GEMM_PARAMETERS(T));
#define QRV_DECLARE_VECTOR_PIECES                                                                                      \
    QRV_DECLARE_VECTOR_PIECES_OF(float, sgemm)                                                                         \
    QRV_DECLARE_VECTOR_PIECES_OF(SingleComplex, cgemm)
#define QRV_DECLARE_PLAN_PIECES                                                                                        \
    QRV_DECLARE_PLAN_PIECES_OF(float, sgemm)                                                                           \
    QRV_DECLARE_PLAN_PIECES_OF(SingleComplex, cgemm)

namespace qrv::kernel::sse2 {
QRV_DECLARE_VECTOR_PIECES
}
namespace qrv::kernel::sse3 {
QRV_DECLARE_VECTOR_PIECES
}

namespace qrv::kernel::ssse3 {
QRV_DECLARE_PLAN_PIECES
// The plan row for a processor with or without SSE4.1, and blas_sgemm_plan_load, blas_cgemm_plan_load with a given row.
int plan_row(bool hasSse41);
void load_row(int rowIndex, GemmPlan<float>* plan);
void load_row(int rowIndex, GemmPlan<SingleComplex>* plan);
} // namespace qrv::kernel::ssse3

namespace qrv::kernel::sse42 {
QRV_DECLARE_PLAN_PIECES
// blas_sgemm_plan_load and blas_cgemm_plan_load with the micro-kernel of a vector form.
void plan_load_for(VectorForm form, GemmPlan<float>* plan);
void plan_load_for(VectorForm form, GemmPlan<SingleComplex>* plan);
// Whether a form computes a product of these sizes, all of them positive, without packing, and the routine that does
// so; it takes no heed of k = 0 and alpha = 0.
template <class T>
bool goes_direct(VectorForm form, bool transposedA, bool transposedB, int m, int n, int k);
template <class T>
using DirectGemm = void(QRV_GEMM_PARAMETERS(T));
template <class T>
DirectGemm<T>* direct_gemm(VectorForm form);
} // namespace qrv::kernel::sse42

#undef QRV_DECLARE_PLAN_PIECES
#undef QRV_DECLARE_VECTOR_PIECES
#undef QRV_DECLARE_PLAN_PIECES_OF
#undef QRV_DECLARE_VECTOR_PIECES_OF
