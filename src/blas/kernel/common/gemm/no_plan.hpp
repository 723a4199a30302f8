// The pieces of the plan-driven GEMM in a build that has no plan: never reached, since the plan is said not to be
// available there. Included once, by such a build's gemm.cpp.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/kernels.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

#define QRV_DEFINE_NO_PLAN(T, gemm)                                                                                    \
    int blas_##gemm##_plan_available() {                                                                               \
        return 0;                                                                                                      \
    }                                                                                                                  \
    void blas_##gemm##_plan_reset(GemmPlan<T>*) {}                                                                     \
    void blas_##gemm##_plan_load(GemmPlan<T>*) {}                                                                      \
    void blas_##gemm##_plan_set_blocks(int, int, int, GemmPlan<T>*) {}                                                 \
    int blas_##gemm##_buffer_sizes(BufferSet, BlockClip, const int*, const int*, const int*, GemmPlan<T>*) {           \
        return 1;                                                                                                      \
    }                                                                                                                  \
    int blas_##gemm##_blocked(const char*, const char*, const int*, const int*, const int*, const T*, const T*,        \
                              const int*, const T*, const int*, const T*, T*, const int*, GemmMode, GemmPlan<T>*) {    \
        return 1;                                                                                                      \
    }                                                                                                                  \
    bool blas_##gemm##_triangle(const char*, const char*, const char*, const int*, const int*, const int*, const T*,   \
                                const T*, const int*, const T*, const int*, const T*, T*, const int*) {                \
        return false;                                                                                                  \
    }
QRV_DEFINE_NO_PLAN(float, sgemm)
QRV_DEFINE_NO_PLAN(SingleComplex, cgemm)
#undef QRV_DEFINE_NO_PLAN

} // namespace qrv::kernel::QRV_KERNEL_BUILD
