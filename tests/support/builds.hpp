// The kernel builds that this machine can run, so that one run of a test covers all of them.
#pragma once

#include <vector>

#include "blas/kernel/kernels.hpp"
#include "service/processor.hpp"

namespace qrv::test {

// The GEMM kernels of one build, called directly and not through their slots.
struct GemmBuild {
    int cpuType;
    const char* name;
    decltype(&kernel::generic::blas_sgemm_kernel) sgemm;
    decltype(&kernel::generic::blas_sgemm_scale_c) scaleC;
};

inline std::vector<GemmBuild> gemm_builds() {
    using namespace kernel;
    const GemmBuild all[] = {{0, "generic", generic::blas_sgemm_kernel, generic::blas_sgemm_scale_c},
                             {2, "sse2", sse2::blas_sgemm_kernel, sse2::blas_sgemm_scale_c},
                             {3, "sse3", sse3::blas_sgemm_kernel, sse3::blas_sgemm_scale_c},
                             {4, "ssse3", ssse3::blas_sgemm_kernel, ssse3::blas_sgemm_scale_c},
                             {5, "sse42", sse42::blas_sgemm_kernel, sse42::blas_sgemm_scale_c}};
    std::vector<GemmBuild> runnable;
    for (const GemmBuild& build : all)
        if (build.cpuType <= cpu_type_of(cpuid(1)))
            runnable.push_back(build);
    return runnable;
}

} // namespace qrv::test
