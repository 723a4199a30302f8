// The pieces of the plan-driven GEMM in a build that has no plan: never reached, since blas_sgemm_plan_available
// answers 0 there. Included once, by such a build's gemm.cpp.
#pragma once

#include "blas/kernel/kernels.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

int blas_sgemm_plan_available() {
    return 0;
}
void blas_sgemm_plan_reset(GemmPlan<float>*) {}
void blas_sgemm_plan_load(GemmPlan<float>*) {}
void blas_sgemm_plan_set_blocks(int, int, int, GemmPlan<float>*) {}
int blas_sgemm_buffer_sizes(BufferSet, BlockClip, const int*, const int*, const int*, GemmPlan<float>*) {
    return 1;
}
int blas_sgemm_blocked(const char*, const char*, const int*, const int*, const int*, const float*, const float*,
                       const int*, const float*, const int*, const float*, float*, const int*, GemmMode,
                       GemmPlan<float>*) {
    return 1;
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
