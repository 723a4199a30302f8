// The routines of BLAS levels 2 and 3 but GEMM: one row each, for the kernels of every build and the threaded routines.
#pragma once

#include "blas/native.hpp"
#include "blas/thread/32/level3/level3_threads.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/machine.hpp"
#include "support/builds.hpp"
#include "support/problem.hpp"

namespace qrv::test {

template <class T>
struct Routine {
    const char* name;
    Operation operation;
    void (*kernel)(const VectorBuild& build, const Call<T>& v);
    void (*decided)(const Call<T>& v) = nullptr;                     // if it has a threaded form
    int (*threads)(const Call<T>& v) = nullptr;                      // what that decides
    void (*on_team)(const int* threads, const Call<T>& v) = nullptr; // if the number can be given
};

inline const float* real_part(const float& x) {
    return &x;
}
inline const float* real_part(const SingleComplex& x) {
    return &x.re;
}

#define QRV_GEMV_OF(v) &v.trans, &v.m, &v.n, &v.alpha, v.a, &v.lda, v.b, &v.ldb, &v.beta, v.c, &v.ldc
#define QRV_GBMV_OF(v) &v.trans, &v.m, &v.n, &v.k, &v.ku, &v.alpha, v.a, &v.lda, v.b, &v.ldb, &v.beta, v.c, &v.ldc
#define QRV_SYMV_OF(v) &v.uplo, &v.n, &v.alpha, v.a, &v.lda, v.b, &v.ldb, &v.beta, v.c, &v.ldc
#define QRV_SBMV_OF(v) &v.uplo, &v.n, &v.k, &v.alpha, v.a, &v.lda, v.b, &v.ldb, &v.beta, v.c, &v.ldc
#define QRV_TRMV_OF(v) &v.uplo, &v.trans, &v.diag, &v.n, v.a, &v.lda, v.c, &v.ldc
#define QRV_TBMV_OF(v) &v.uplo, &v.trans, &v.diag, &v.n, &v.k, v.a, &v.lda, v.c, &v.ldc
#define QRV_GER_OF(v) &v.m, &v.n, &v.alpha, v.a, &v.lda, v.b, &v.ldb, v.c, &v.ldc
#define QRV_SYR_OF(v) &v.uplo, &v.n, real_part(v.alpha), v.a, &v.lda, v.c, &v.ldc
#define QRV_SYR2_OF(v) &v.uplo, &v.n, &v.alpha, v.a, &v.lda, v.b, &v.ldb, v.c, &v.ldc
#define QRV_SYMM_OF(v) &v.side, &v.uplo, &v.m, &v.n, &v.alpha, v.a, &v.lda, v.b, &v.ldb, &v.beta, v.c, &v.ldc
#define QRV_TRMM_OF(v) &v.side, &v.uplo, &v.trans, &v.diag, &v.m, &v.n, &v.alpha, v.a, &v.lda, v.c, &v.ldc
#define QRV_SYRK_OF(v) &v.uplo, &v.trans, &v.n, &v.k, &v.alpha, v.a, &v.lda, &v.beta, v.c, &v.ldc
#define QRV_SYR2K_OF(v) &v.uplo, &v.trans, &v.n, &v.k, &v.alpha, v.a, &v.lda, v.b, &v.ldb, &v.beta, v.c, &v.ldc
#define QRV_HERK_OF(v) &v.uplo, &v.trans, &v.n, &v.k, real_part(v.alpha), v.a, &v.lda, real_part(v.beta), v.c, &v.ldc
#define QRV_HER2K_OF(v)                                                                                                \
    &v.uplo, &v.trans, &v.n, &v.k, &v.alpha, v.a, &v.lda, v.b, &v.ldb, real_part(v.beta), v.c, &v.ldc

#define QRV_SERIAL(name, arguments)                                                                                    \
    [](const VectorBuild& build, const auto& v) { build.blas_##name##_kernel(arguments(v)); }
#define QRV_DECIDED(name, arguments, threads)                                                                          \
    QRV_SERIAL(name, arguments), [](const auto& v) { qrv_blas_##name(arguments(v)); }, [](const auto& v) {             \
        [[maybe_unused]] const ThisMachine here;                                                                       \
        return threads;                                                                                                \
    }
#define QRV_ON_TEAM(name, arguments, threads)                                                                          \
    QRV_DECIDED(name, arguments, threads),                                                                             \
        [](const int* team, const auto& v) { qrv_blas_##name##_omp(team, arguments(v)); }

// By work one thread scales y, if that is all.
template <class T>
int symv_team(const SymvRule& rule, const Call<T>& v) {
    const bool scales = v.alpha == scalar<T>(0) && goes_by_work(ThisMachine{});
    return scales ? 1 : symv_threads(rule, v.n, ThisMachine{});
}

// What the routines of level 3 decide for a call.
template <SlicedCall slice(Side, int, int), class T>
int sliced_threads(const Call<T>& v) {
    return sliced_team(slice(side_of(v.side), v.m, v.n), ThisMachine{}).threads;
}
template <class T>
int update_threads(const Call<T>& v, int products) {
    return update_team(v.n, products * work_of<T>(v.n, v.n, v.k) / 2, ThisMachine{}).threads;
}

template <class T>
const std::vector<Routine<T>>& routines();

template <>
inline const std::vector<Routine<float>>& routines<float>() {
    using enum What;
    using enum Form::Kind;
    static const std::vector<Routine<float>> list = {
        {"sgemv",
         {product, general, true},
         QRV_ON_TEAM(sgemv, QRV_GEMV_OF, gemv_threads(sgemvRule, op_of(v.trans), v.m, v.n, here))},
        {"sgbmv", {product, general, true, true}, QRV_SERIAL(sgbmv, QRV_GBMV_OF)},
        {"ssymv", {product, symmetric, true}, QRV_ON_TEAM(ssymv, QRV_SYMV_OF, symv_team(ssymvRule, v))},
        {"ssbmv", {product, symmetric, true, true}, QRV_SERIAL(ssbmv, QRV_SBMV_OF)},
        {"strmv", {inPlace, triangular, true}, QRV_ON_TEAM(strmv, QRV_TRMV_OF, trmv_threads(strmvRule, v.n, here))},
        {"stbmv", {inPlace, triangular, true, true}, QRV_SERIAL(stbmv, QRV_TBMV_OF)},
        {"strsv", {solve, triangular, true}, QRV_SERIAL(strsv, QRV_TRMV_OF)},
        {"stbsv", {solve, triangular, true, true}, QRV_SERIAL(stbsv, QRV_TBMV_OF)},
        {"sger", {update, general, true}, QRV_ON_TEAM(sger, QRV_GER_OF, ger_threads(sgerRule, v.m, v.n, here))},
        {"ssyr", {update, symmetric, true}, QRV_ON_TEAM(ssyr, QRV_SYR_OF, syr_threads(ssyrRule, v.n, here))},
        {"ssyr2", {update2, symmetric, true}, QRV_ON_TEAM(ssyr2, QRV_SYR2_OF, syr_threads(ssyr2Rule, v.n, here))},
        {"strmm", {inPlace, triangular}, QRV_DECIDED(strmm, QRV_TRMM_OF, sliced_threads<product_call<float>>(v))},
        {"strsm", {solve, triangular}, QRV_DECIDED(strsm, QRV_TRMM_OF, sliced_threads<solve_call<float>>(v))},
        {"ssymm", {product, symmetric}, QRV_DECIDED(ssymm, QRV_SYMM_OF, sliced_threads<symmetric_call<float>>(v))},
        {"ssyrk", {update, symmetric}, QRV_DECIDED(ssyrk, QRV_SYRK_OF, update_threads(v, 1))},
        {"ssyr2k", {update2, symmetric}, QRV_DECIDED(ssyr2k, QRV_SYR2K_OF, update_threads(v, 2))},
    };
    return list;
}

template <>
inline const std::vector<Routine<SingleComplex>>& routines<SingleComplex>() {
    using enum What;
    using enum Form::Kind;
    using C = SingleComplex;
    static const std::vector<Routine<C>> list = {
        {"cgemv",
         {product, general, true},
         QRV_ON_TEAM(cgemv, QRV_GEMV_OF, gemv_threads(cgemvRule, op_of(v.trans), v.m, v.n, here))},
        {"chemv", {product, hermitian, true}, QRV_ON_TEAM(chemv, QRV_SYMV_OF, symv_team(chemvRule, v))},
        {"ctrmv", {inPlace, triangular, true}, QRV_ON_TEAM(ctrmv, QRV_TRMV_OF, trmv_threads(ctrmvRule, v.n, here))},
        {"ctrsv", {solve, triangular, true}, QRV_SERIAL(ctrsv, QRV_TRMV_OF)},
        {"cgeru", {update, general, true}, QRV_ON_TEAM(cgeru, QRV_GER_OF, ger_threads(cgerRule, v.m, v.n, here))},
        {"cgerc",
         {update, general, true, false, true},
         QRV_ON_TEAM(cgerc, QRV_GER_OF, ger_threads(cgerRule, v.m, v.n, here))},
        {"cher", {update, hermitian, true}, QRV_ON_TEAM(cher, QRV_SYR_OF, syr_threads(cherRule, v.n, here))},
        {"cher2", {update2, hermitian, true}, QRV_ON_TEAM(cher2, QRV_SYR2_OF, syr_threads(cher2Rule, v.n, here))},
        {"ctrmm", {inPlace, triangular}, QRV_DECIDED(ctrmm, QRV_TRMM_OF, sliced_threads<product_call<C>>(v))},
        {"ctrsm", {solve, triangular}, QRV_DECIDED(ctrsm, QRV_TRMM_OF, sliced_threads<solve_call<C>>(v))},
        {"csymm", {product, symmetric}, QRV_DECIDED(csymm, QRV_SYMM_OF, sliced_threads<symmetric_call<C>>(v))},
        {"chemm", {product, hermitian}, QRV_DECIDED(chemm, QRV_SYMM_OF, sliced_threads<symmetric_call<C>>(v))},
        {"csyrk", {update, symmetric}, QRV_DECIDED(csyrk, QRV_SYRK_OF, update_threads(v, 1))},
        {"cherk", {update, hermitian}, QRV_DECIDED(cherk, QRV_HERK_OF, update_threads(v, 1))},
        {"csyr2k", {update2, symmetric}, QRV_DECIDED(csyr2k, QRV_SYR2K_OF, update_threads(v, 2))},
        {"cher2k", {update2, hermitian}, QRV_DECIDED(cher2k, QRV_HER2K_OF, update_threads(v, 2))},
    };
    return list;
}

// body(routine) for each of a level, real and complex.
template <class Body>
void each_routine(bool vectors, const Body& body) {
    for_both_elements([&]<class T>() {
        for (const Routine<T>& routine : routines<T>())
            if (routine.operation.vectors == vectors)
                body(routine);
    });
}

} // namespace qrv::test
