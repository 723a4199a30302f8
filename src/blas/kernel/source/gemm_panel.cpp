// The GEMM of a build with the C-panel design, real and complex: compiled once for each.
#include "blas/kernel/common/gemm/gemm_panel.hpp"
#include "blas/kernel/common/gemm/no_plan.hpp"
#include "blas/kernel/gemm_pieces.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

#define QRV_DEFINE_PANEL_GEMM(T, gemm)                                                                                 \
    void blas_##gemm##_kernel(QRV_GEMM_PARAMETERS(T)) {                                                                \
        gemm_panel(gemm_call<T>(QRV_GEMM_ARGUMENTS));                                                                  \
    }                                                                                                                  \
    void blas_##gemm##_small(QRV_GEMM_PARAMETERS(T)) {                                                                 \
        gemm_small(gemm_call<T>(QRV_GEMM_ARGUMENTS));                                                                  \
    }                                                                                                                  \
    void blas_##gemm##_scale_c(const int* m, const int* n, const T* beta, T* c, const int* ldc) {                      \
        gemm_scale_c(*m, *n, *beta, Matrix<T>{c, *ldc});                                                               \
    }
QRV_DEFINE_PANEL_GEMM(float, sgemm)
QRV_DEFINE_PANEL_GEMM(SingleComplex, cgemm)
#undef QRV_DEFINE_PANEL_GEMM

} // namespace qrv::kernel::QRV_KERNEL_BUILD
