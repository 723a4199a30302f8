// What there is to test of SGEMM on this machine, in this run.
#pragma once

#include <vector>

#include "blas/kernel/gemm_pieces.hpp"
#include "support/builds.hpp"
#include "support/gemm_case.hpp"

namespace qrv::test {

// As long as it lives, no vector form wider than this one is taken.
class RestrictedForm {
public:
    explicit RestrictedForm(VectorForm form) { restrict_vector_form(form); }
    ~RestrictedForm() { restrict_vector_form(VectorForm::avx512); }
};

// ---- Whole products: every routine with the kernel's arguments -----------------------------------------------------

struct Subject {
    const char* name;
    int cpuType;
    Sgemm* sgemm;
    VectorForm form = VectorForm::sse;
};

template <int row>
void ssse3_by_row(QRV_GEMM_PARAMETERS(float)) {
    GemmPlan<float> plan;
    kernel::ssse3::load_row(row, &plan);
    EXPECT_EQ(kernel::ssse3::blas_sgemm_blocked(QRV_GEMM_ARGUMENTS, GemmMode::choose, &plan), 0);
}
template <VectorForm form>
void sse42_by_plan(QRV_GEMM_PARAMETERS(float)) {
    const RestrictedForm restricted(form);
    kernel::sse42::blas_sgemm_by_plan(QRV_GEMM_ARGUMENTS);
}
// What the unpacked path leaves to its caller goes to the kernel.
template <VectorForm form>
void sse42_direct(QRV_GEMM_PARAMETERS(float)) {
    const bool something = *m > 0 && *n > 0 && *k > 0 && *alpha != 0;
    (something ? *kernel::sse42::direct_gemm<float>(form) : kernel::sse42::blas_sgemm_kernel)(QRV_GEMM_ARGUMENTS);
}

inline const std::vector<Subject>& subjects() {
    using namespace kernel;
    static const std::vector<Subject> list =
        runnable<Subject>({{"generic", 0, generic::blas_sgemm_kernel},
                           {"sse2", 2, sse2::blas_sgemm_kernel},
                           {"sse2 small", 2, sse2::blas_sgemm_small},
                           {"sse3", 3, sse3::blas_sgemm_kernel},
                           {"sse3 small", 3, sse3::blas_sgemm_small},
                           {"ssse3", 4, ssse3::blas_sgemm_kernel},
                           {"ssse3 small", 4, ssse3::blas_sgemm_small},
                           {"ssse3 row 0", 4, ssse3_by_row<0>},
                           {"ssse3 row 1", 4, ssse3_by_row<1>},
                           {"sse42", 5, sse42::blas_sgemm_kernel},
                           {"sse42 small", 5, sse42::blas_sgemm_small},
                           {"sse42 by plan", 5, sse42_by_plan<VectorForm::sse>},
                           {"avx2 by plan", 5, sse42_by_plan<VectorForm::avx2>, VectorForm::avx2},
                           {"avx512 by plan", 5, sse42_by_plan<VectorForm::avx512>, VectorForm::avx512},
                           {"avx2 direct", 5, sse42_direct<VectorForm::avx2>, VectorForm::avx2},
                           {"avx512 direct", 5, sse42_direct<VectorForm::avx512>, VectorForm::avx512}});
    return list;
}

// ---- Plans: every row, and every vector form of the sse42 row ------------------------------------------------------

struct PlanBuild {
    const char* name;
    int cpuType;
    VectorForm form;
    void (*load)(GemmPlan<float>*);
    decltype(&kernel::sse42::blas_sgemm_blocked) blocked;
    decltype(&kernel::sse42::blas_sgemm_pick_mode) pickMode;
    bool pairs = false; // panels of two columns, k in pairs

    GemmPlan<float> loaded() const {
        GemmPlan<float> plan{};
        load(&plan);
        return plan;
    }
};

inline std::ostream& operator<<(std::ostream& out, const PlanBuild& build) {
    return out << build.name;
}

template <VectorForm form>
PlanBuild sse42_plan(const char* name) {
    using namespace kernel::sse42;
    return {name,
            5,
            form,
            [](GemmPlan<float>* plan) { plan_load_for(form, plan); },
            blas_sgemm_blocked,
            blas_sgemm_pick_mode};
}
template <int row>
PlanBuild ssse3_plan(const char* name) {
    using namespace kernel::ssse3;
    return {name,
            4,
            VectorForm::sse,
            [](GemmPlan<float>* plan) { load_row(row, plan); },
            blas_sgemm_blocked,
            blas_sgemm_pick_mode,
            row == 0};
}

inline const std::vector<PlanBuild>& plan_builds() {
    static const std::vector<PlanBuild> list = runnable<PlanBuild>(
        {ssse3_plan<0>("ssse3 row 0"), ssse3_plan<1>("ssse3 row 1"), sse42_plan<VectorForm::sse>("sse42"),
         sse42_plan<VectorForm::avx2>("avx2"), sse42_plan<VectorForm::avx512>("avx512")});
    return list;
}

} // namespace qrv::test
