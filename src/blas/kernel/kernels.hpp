// Every dispatched kernel, listed once: result, name, parameters, arguments.
//
// From the list come the declaration of each kernel in the namespace of each build and, in kernels.cpp, its
// DispatchSlot and its dispatcher `qrv_<name>`. To add a kernel, add a line here and a body to each build.
//
// This header holds declarations only: kernel sources include it, and nothing inline may be shared between
// builds.
#pragma once

// clang-format off
#define QRV_KERNELS(KERNEL)                                                                                          \
    /* Serial GEMM: C := alpha*op(A)*op(B) + beta*C. Options are 'N' or 'n', anything else transposes. Arguments   */ \
    /* are not checked.                                                                                            */ \
    KERNEL(void, blas_sgemm_kernel,                                                                                  \
           (const char* transa, const char* transb, const int* m, const int* n, const int* k, const float* alpha,    \
            const float* a, const int* lda, const float* b, const int* ldb, const float* beta, float* c,             \
            const int* ldc),                                                                                         \
           (transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc))                                           \
    /* C := beta*C for an m x n matrix; beta = 0 stores zeros and does not read C.                                 */ \
    KERNEL(void, blas_sgemm_scale_c,                                                                                 \
           (const int* m, const int* n, const float* beta, float* c, const int* ldc),                                \
           (m, n, beta, c, ldc))
// clang-format on

namespace qrv::kernel {

#define QRV_DECLARE_KERNEL(Result, name, parameters, arguments) Result name parameters;
namespace generic {
QRV_KERNELS(QRV_DECLARE_KERNEL)
}
#undef QRV_DECLARE_KERNEL

// The build that serves GEMM on a CpuType.
const char* gemm_build_name(int cpuType);

} // namespace qrv::kernel

extern "C" {
#define QRV_DECLARE_DISPATCHER(Result, name, parameters, arguments) Result qrv_##name parameters;
QRV_KERNELS(QRV_DECLARE_DISPATCHER)
#undef QRV_DECLARE_DISPATCHER
}
