// The plans of the plan-driven SGEMM that this machine can run: every row, and every vector form of the sse42 row.
#pragma once

#include <vector>

#include "blas/kernel/gemm_plan_pieces.hpp"
#include "service/processor.hpp"

namespace qrv::test {

struct PlanBuild {
    const char* name;
    int cpuType; // that the machine must have
    VectorForm form;
    void (*load)(GemmPlan<float>*);
    decltype(&kernel::sse42::blas_sgemm_blocked) blocked;
    decltype(&kernel::sse42::blas_sgemm_pick_mode) pickMode;
};

inline std::vector<PlanBuild> plan_builds() {
    using namespace kernel;
    using Plan = GemmPlan<float>;
    const PlanBuild all[] = {
        {"ssse3 row 0", 4, VectorForm::sse, [](Plan* plan) { ssse3::load_row(0, plan); }, ssse3::blas_sgemm_blocked,
         ssse3::blas_sgemm_pick_mode},
        {"ssse3 row 1", 4, VectorForm::sse, [](Plan* plan) { ssse3::load_row(1, plan); }, ssse3::blas_sgemm_blocked,
         ssse3::blas_sgemm_pick_mode},
        {"sse42", 5, VectorForm::sse, [](Plan* plan) { sse42::plan_load_for(VectorForm::sse, plan); },
         sse42::blas_sgemm_blocked, sse42::blas_sgemm_pick_mode},
        {"sse42 avx2", 5, VectorForm::avx2, [](Plan* plan) { sse42::plan_load_for(VectorForm::avx2, plan); },
         sse42::blas_sgemm_blocked, sse42::blas_sgemm_pick_mode},
        {"sse42 avx512", 5, VectorForm::avx512, [](Plan* plan) { sse42::plan_load_for(VectorForm::avx512, plan); },
         sse42::blas_sgemm_blocked, sse42::blas_sgemm_pick_mode},
    };
    std::vector<PlanBuild> runnable;
    for (const PlanBuild& build : all)
        if (build.cpuType <= cpu_type_of(cpuid(1)) && build.form <= vector_form())
            runnable.push_back(build);
    return runnable;
}

} // namespace qrv::test
