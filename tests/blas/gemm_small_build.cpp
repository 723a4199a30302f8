// The unpacked GEMM under a name of its own in each vector build: compiled once a build, with that build's flags.
#include "blas/kernel/common/gemm_small.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

void sgemm_small_under_test(QRV_GEMM_PARAMETERS(float)) {
    gemm_small(QRV_GEMM_ARGUMENTS);
}
void sgemm_scale_c_under_test(const int* m, const int* n, const float* beta, float* c, const int* ldc) {
    gemm_scale_c(m, n, beta, c, ldc);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
