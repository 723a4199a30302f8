// Every dispatched kernel: its declaration in the namespace of each build, and its dispatcher `qrv_<name>`.
//
// The kernels are listed once, by level (gemm_kernels.hpp, level1_kernels.hpp and so on). From the lists come these
// declarations and, in kernels.cpp, the DispatchSlots. To add a kernel, add a line there and a body to each build. All
// but GEMM have forms of the sse42 build for wider vectors too, which the slot chooses among; GEMM chooses for itself,
// in its plan.
//
// This header holds declarations only: kernel sources include it, and nothing inline may be shared between
// builds.
#pragma once

#include "blas/kernel/gemm_kernels.hpp"
#include "blas/kernel/level1_kernels.hpp"
#include "blas/kernel/level2_kernels.hpp"
#include "blas/kernel/level3_kernels.hpp"

#define QRV_VECTOR_KERNELS(KERNEL)                                                                                     \
    QRV_LEVEL1_KERNELS(KERNEL)                                                                                         \
    QRV_LEVEL2_KERNELS(KERNEL)                                                                                         \
    QRV_LEVEL3_TRIANGULAR_KERNELS(KERNEL)                                                                              \
    QRV_LEVEL3_SYMMETRIC_KERNELS(KERNEL)
#define QRV_KERNELS(KERNEL)                                                                                            \
    QRV_GEMM_KERNELS(KERNEL)                                                                                           \
    QRV_VECTOR_KERNELS(KERNEL)

namespace qrv::kernel {

#define QRV_DECLARE_KERNEL(Result, name, parameters, arguments) Result name parameters;
namespace generic {
QRV_KERNELS(QRV_DECLARE_KERNEL)
}
namespace sse2 {
QRV_KERNELS(QRV_DECLARE_KERNEL)
}
namespace sse3 {
QRV_KERNELS(QRV_DECLARE_KERNEL)
}
namespace ssse3 {
QRV_KERNELS(QRV_DECLARE_KERNEL)
}
namespace sse42 {
QRV_KERNELS(QRV_DECLARE_KERNEL)
}
// What is built on GEMM in a form calls that of the sse42 build.
#define QRV_USE_GEMM_OF_THE_BUILD                                                                                      \
    using sse42::blas_cgemm_kernel;                                                                                    \
    using sse42::blas_cgemm_scale_c;                                                                                   \
    using sse42::blas_sgemm_kernel;                                                                                    \
    using sse42::blas_sgemm_scale_c;
namespace sse42_avx2 {
QRV_VECTOR_KERNELS(QRV_DECLARE_KERNEL)
QRV_USE_GEMM_OF_THE_BUILD
} // namespace sse42_avx2
namespace sse42_avx512 {
QRV_VECTOR_KERNELS(QRV_DECLARE_KERNEL)
QRV_USE_GEMM_OF_THE_BUILD
} // namespace sse42_avx512
#undef QRV_DECLARE_KERNEL
#undef QRV_USE_GEMM_OF_THE_BUILD

} // namespace qrv::kernel

extern "C" {
#define QRV_DECLARE_DISPATCHER(Result, name, parameters, arguments) Result qrv_##name parameters;
QRV_KERNELS(QRV_DECLARE_DISPATCHER)
#undef QRV_DECLARE_DISPATCHER
}
