// What there is to test of GEMM on this machine, in this run.
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

// The kernels of an element type, as values: sse42::blas_##gemm##_blocked and so on.
template <class T>
struct Subject {
    const char* name;
    int cpuType;
    Gemm<T>* gemm;
    VectorForm form = VectorForm::sse;
};

template <class T>
struct PlanBuild {
    const char* name;
    int cpuType;
    VectorForm form;
    void (*load)(GemmPlan<T>*);
    int (*blocked)(QRV_GEMM_PARAMETERS(T), GemmMode mode, GemmPlan<T>* plan);
    GemmMode (*pickMode)(QRV_GEMM_PARAMETERS(T), GemmPlan<T>* plan);
    bool firstRow = false; // of ssse3: real operands in panels of two columns, k in pairs

    bool pairs() const { return firstRow && !isComplex<T>; }
    GemmPlan<T> loaded() const {
        GemmPlan<T> plan{};
        load(&plan);
        return plan;
    }
};

template <class T>
std::ostream& operator<<(std::ostream& out, const PlanBuild<T>& build) {
    return out << build.name;
}

template <class T>
std::vector<Subject<T>> all_subjects();
template <class T>
std::vector<PlanBuild<T>> all_plan_builds();

// Every routine with the kernel's arguments: whole products.
template <class T>
const std::vector<Subject<T>>& subjects() {
    static const std::vector<Subject<T>> list = runnable(all_subjects<T>());
    return list;
}
// Every row, and every vector form of the sse42 row.
template <class T>
const std::vector<PlanBuild<T>>& plan_builds() {
    static const std::vector<PlanBuild<T>> list = runnable(all_plan_builds<T>());
    return list;
}

template <class T, int row>
void load_ssse3(GemmPlan<T>* plan) {
    kernel::ssse3::load_row(row, plan);
}
template <class T, VectorForm form>
void load_sse42(GemmPlan<T>* plan) {
    kernel::sse42::plan_load_for(form, plan);
}

template <class T, auto blocked, int row>
void ssse3_by_row(QRV_GEMM_PARAMETERS(T)) {
    GemmPlan<T> plan;
    load_ssse3<T, row>(&plan);
    EXPECT_EQ(blocked(QRV_GEMM_ARGUMENTS, GemmMode::choose, &plan), 0);
}
template <class T, auto by_plan, VectorForm form>
void sse42_by_plan(QRV_GEMM_PARAMETERS(T)) {
    const RestrictedForm restricted(form);
    by_plan(QRV_GEMM_ARGUMENTS);
}
// What the unpacked path leaves to its caller goes to the kernel.
template <class T, auto whole, VectorForm form>
void sse42_direct(QRV_GEMM_PARAMETERS(T)) {
    const bool something = *m > 0 && *n > 0 && *k > 0 && *alpha != scalar<T>(0);
    (something ? *kernel::sse42::direct_gemm<T>(form) : whole)(QRV_GEMM_ARGUMENTS);
}

#define QRV_GEMM_SUBJECTS(T, gemm)                                                                                     \
    template <>                                                                                                        \
    inline std::vector<Subject<T>> all_subjects<T>() {                                                                 \
        using namespace kernel;                                                                                        \
        constexpr auto sse42Kernel = sse42::blas_##gemm##_kernel, byPlan = sse42::blas_##gemm##_by_plan;               \
        constexpr auto ssse3Blocked = ssse3::blas_##gemm##_blocked;                                                    \
        return {{"generic", 0, generic::blas_##gemm##_kernel},                                                         \
                {"sse2", 2, sse2::blas_##gemm##_kernel},                                                               \
                {"sse2 small", 2, sse2::blas_##gemm##_small},                                                          \
                {"sse3", 3, sse3::blas_##gemm##_kernel},                                                               \
                {"sse3 small", 3, sse3::blas_##gemm##_small},                                                          \
                {"ssse3", 4, ssse3::blas_##gemm##_kernel},                                                             \
                {"ssse3 small", 4, ssse3::blas_##gemm##_small},                                                        \
                {"ssse3 row 0", 4, ssse3_by_row<T, ssse3Blocked, 0>},                                                  \
                {"ssse3 row 1", 4, ssse3_by_row<T, ssse3Blocked, 1>},                                                  \
                {"sse42", 5, sse42Kernel},                                                                             \
                {"sse42 small", 5, sse42::blas_##gemm##_small},                                                        \
                {"sse42 by plan", 5, sse42_by_plan<T, byPlan, VectorForm::sse>},                                       \
                {"avx2 by plan", 5, sse42_by_plan<T, byPlan, VectorForm::avx2>, VectorForm::avx2},                     \
                {"avx512 by plan", 5, sse42_by_plan<T, byPlan, VectorForm::avx512>, VectorForm::avx512},               \
                {"avx2 direct", 5, sse42_direct<T, sse42Kernel, VectorForm::avx2>, VectorForm::avx2},                  \
                {"avx512 direct", 5, sse42_direct<T, sse42Kernel, VectorForm::avx512>, VectorForm::avx512}};           \
    }                                                                                                                  \
    template <>                                                                                                        \
    inline std::vector<PlanBuild<T>> all_plan_builds<T>() {                                                            \
        const auto ssse3 = [](const char* name, auto load, bool firstRow) {                                            \
            using namespace kernel::ssse3;                                                                             \
            return PlanBuild<T>{name,    4, VectorForm::sse, load, blas_##gemm##_blocked, blas_##gemm##_pick_mode,     \
                                firstRow};                                                                             \
        };                                                                                                             \
        const auto sse42 = [](const char* name, auto load, VectorForm form) {                                          \
            using namespace kernel::sse42;                                                                             \
            return PlanBuild<T>{name, 5, form, load, blas_##gemm##_blocked, blas_##gemm##_pick_mode};                  \
        };                                                                                                             \
        return {ssse3("ssse3 row 0", load_ssse3<T, 0>, true), ssse3("ssse3 row 1", load_ssse3<T, 1>, false),           \
                sse42("sse42", load_sse42<T, VectorForm::sse>, VectorForm::sse),                                       \
                sse42("avx2", load_sse42<T, VectorForm::avx2>, VectorForm::avx2),                                      \
                sse42("avx512", load_sse42<T, VectorForm::avx512>, VectorForm::avx512)};                               \
    }
QRV_GEMM_SUBJECTS(float, sgemm)
QRV_GEMM_SUBJECTS(SingleComplex, cgemm)
#undef QRV_GEMM_SUBJECTS

} // namespace qrv::test
