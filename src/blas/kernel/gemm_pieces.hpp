// The pieces of GEMM that are reached by name and not through a slot: by the build itself, and by tests.
#pragma once

#include "blas/kernel/kernels.hpp"
#include "service/vector_form.hpp"

#define QRV_DECLARE_VECTOR_PIECES_OF(T, gemm)                                                                          \
    /* The whole operation without packing and without work memory. */                                                 \
    void blas_##gemm##_small(QRV_GEMM_PARAMETERS(T));
#define QRV_DECLARE_PLAN_PIECES_OF(T, gemm)                                                                            \
    QRV_DECLARE_VECTOR_PIECES_OF(T, gemm)                                                                              \
    /* The whole serial GEMM by the plan, whatever its size. */                                                        \
    void blas_##gemm##_by_plan(QRV_GEMM_PARAMETERS(T));                                                                \
    /* A triangle of a square C by the plan; false if memory is refused: nothing has been done then. */                \
    bool blas_##gemm##_triangle(const char* uplo, QRV_GEMM_PARAMETERS(T));
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
// What the route of a product depends on. `conflicting`: columns of A, which is not transposed, displace each other in
// the innermost cache. `shortColumns`: those of A, which is transposed, have few elements and follow each other without
// gaps.
struct GemmShape {
    bool transposedA, transposedB, conjugatedA, conjugatedB, conflicting, shortColumns;
    int m, n, k;
};
// columns  one or few of them: products of level 2
// rows     the same
// direct   operands as they lie, without work memory
// panels   from copies, by the same tiles; in short of memory as direct
// packed   by the plan
enum class GemmRoute { columns, rows, direct, panels, packed };
// The way of a form to compute a product of these sizes, all of them positive.
template <class T>
GemmRoute gemm_route(VectorForm form, const GemmShape& shape);
// The direct routine of a form; it takes no heed of k = 0 and alpha = 0.
template <class T>
using DirectGemm = void(QRV_GEMM_PARAMETERS(T));
template <class T>
DirectGemm<T>* direct_gemm(VectorForm form);
// The routine of the route `panels`, which only the AVX-512 form takes; k and alpha are not 0 here either.
template <class T>
void multiply_by_panels(QRV_GEMM_PARAMETERS(T));
} // namespace qrv::kernel::sse42

#undef QRV_DECLARE_PLAN_PIECES
#undef QRV_DECLARE_VECTOR_PIECES
#undef QRV_DECLARE_PLAN_PIECES_OF
#undef QRV_DECLARE_VECTOR_PIECES_OF
