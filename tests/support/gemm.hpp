// What there is to test of GEMM on this machine, in this run.
#pragma once

#include "blas/kernel/gemm_pieces.hpp"
#include "blas/thread/common/level3/gemm_partition.hpp"
#include "support/builds.hpp"
#include "support/shapes.hpp"

namespace qrv::test {

template <class T>
using Gemm = void(QRV_GEMM_PARAMETERS(T));

// Calls a routine that has the kernel's arguments and perhaps others.
template <class T, class Routine, class... More>
auto call_gemm(const Routine& routine, const Call<T>& v, More... more) {
    return routine(&v.trans, &v.transb, &v.m, &v.n, &v.k, &v.alpha, v.a, &v.lda, v.b, &v.ldb, &v.beta, v.c, &v.ldc,
                   more...);
}

template <class T>
struct GemmCase : Problem<T> {
    explicit GemmCase(const Shape& shape) : Problem<T>({What::product}, shape) {}
};

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
};

// Every routine with the kernel's arguments: whole products.
template <class T>
const std::vector<Subject<T>>& subjects();
// Every row, and every vector form of the sse42 row.
template <class T>
const std::vector<PlanBuild<T>>& plan_builds();

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
template <class T, auto gemm, VectorForm form>
void sse42_in(QRV_GEMM_PARAMETERS(T)) {
    const RestrictedForm restricted(form);
    gemm(QRV_GEMM_ARGUMENTS);
}
// Without packing, or by panels; what these leave to their caller goes to the kernel.
template <class T, auto whole, VectorForm form, bool panels = false>
void sse42_part(QRV_GEMM_PARAMETERS(T)) {
    const bool something = *m > 0 && *n > 0 && *k > 0 && *alpha != scalar<T>(0);
    (!something ? whole
     : panels   ? *kernel::sse42::multiply_by_panels<T>
                : *kernel::sse42::direct_gemm<T>(form))(QRV_GEMM_ARGUMENTS);
}

#define QRV_GEMM_SUBJECTS(T, gemm)                                                                                     \
    template <>                                                                                                        \
    inline const std::vector<Subject<T>>& subjects<T>() {                                                              \
        using namespace kernel;                                                                                        \
        constexpr auto sse42Kernel = sse42::blas_##gemm##_kernel, byPlan = sse42::blas_##gemm##_by_plan;               \
        constexpr auto ssse3Blocked = ssse3::blas_##gemm##_blocked;                                                    \
        static const auto list = runnable<Subject<T>>(                                                                 \
            {{"generic", 0, generic::blas_##gemm##_kernel},                                                            \
             {"sse2", 2, sse2::blas_##gemm##_kernel},                                                                  \
             {"sse2 small", 2, sse2::blas_##gemm##_small},                                                             \
             {"sse3", 3, sse3::blas_##gemm##_kernel},                                                                  \
             {"sse3 small", 3, sse3::blas_##gemm##_small},                                                             \
             {"ssse3", 4, ssse3::blas_##gemm##_kernel},                                                                \
             {"ssse3 small", 4, ssse3::blas_##gemm##_small},                                                           \
             {"ssse3 row 0", 4, ssse3_by_row<T, ssse3Blocked, 0>},                                                     \
             {"ssse3 row 1", 4, ssse3_by_row<T, ssse3Blocked, 1>},                                                     \
             {"sse42", 5, sse42Kernel},                                                                                \
             {"sse42 of 128 bits", 5, sse42_in<T, sse42Kernel, VectorForm::sse>},                                      \
             {"sse42 of 256 bits", 5, sse42_in<T, sse42Kernel, VectorForm::avx2>, VectorForm::avx2},                   \
             {"sse42 small", 5, sse42::blas_##gemm##_small},                                                           \
             {"sse42 by plan", 5, sse42_in<T, byPlan, VectorForm::sse>},                                               \
             {"avx2 by plan", 5, sse42_in<T, byPlan, VectorForm::avx2>, VectorForm::avx2},                             \
             {"avx512 by plan", 5, sse42_in<T, byPlan, VectorForm::avx512>, VectorForm::avx512},                       \
             {"avx2 direct", 5, sse42_part<T, sse42Kernel, VectorForm::avx2>, VectorForm::avx2},                       \
             {"avx512 direct", 5, sse42_part<T, sse42Kernel, VectorForm::avx512>, VectorForm::avx512},                 \
             {"avx512 panels", 5, sse42_part<T, sse42Kernel, VectorForm::avx512, true>, VectorForm::avx512}});         \
        return list;                                                                                                   \
    }                                                                                                                  \
    template <>                                                                                                        \
    inline const std::vector<PlanBuild<T>>& plan_builds<T>() {                                                         \
        using enum VectorForm;                                                                                         \
        constexpr auto *ssse3 = kernel::ssse3::blas_##gemm##_blocked, *sse42 = kernel::sse42::blas_##gemm##_blocked;   \
        static const auto list = runnable<PlanBuild<T>>({{"ssse3 row 0", 4, sse, load_ssse3<T, 0>, ssse3},             \
                                                         {"ssse3 row 1", 4, sse, load_ssse3<T, 1>, ssse3},             \
                                                         {"sse42", 5, sse, load_sse42<T, sse>, sse42},                 \
                                                         {"avx2", 5, avx2, load_sse42<T, avx2>, sse42},                \
                                                         {"avx512", 5, avx512, load_sse42<T, avx512>, sse42}});        \
        return list;                                                                                                   \
    }
QRV_GEMM_SUBJECTS(float, sgemm)
QRV_GEMM_SUBJECTS(SingleComplex, cgemm)
#undef QRV_GEMM_SUBJECTS

// ---- Packed operands -----------------------------------------------------------------------------------------------

constexpr int fill_up(int x, int unit) {
    return (x + unit - 1) / unit * unit;
}

// A packed operand: panels of `unit` lanes, rows of op(A) or columns of op(B), with a gap behind each, in memory up to
// a guarded page at most 63 bytes behind it. All of it is NaN before.
template <class T>
struct Packed {
    int stride, floats;
    GuardPageArray memory;

    // copy(buffer, stride) packs.
    template <class Copy>
    Packed(int lanes, int k, int unit, int kUnit, const Copy& copy)
        : stride(unit * fill_up(k, kUnit) + 8),
          floats(fill_up(fill_up(lanes, unit) / unit * stride * int(sizeof(T) / sizeof(float)), 16)),
          memory(std::size_t(floats)) {
        std::fill_n(memory.data(), floats, nan);
        copy(data(), &stride);
    }
    T* data() { return reinterpret_cast<T*>(memory.data()); }
};

} // namespace qrv::test
