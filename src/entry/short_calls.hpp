// What the entries of BLAS call: as blas::Native (blas/native.hpp), but straight through the slot of the kernel where
// there is no decision, or where the sizes alone decide for one thread. Of a call of few elements each hop between
// entry and kernel is a tenth.
#pragma once

#include "blas/kernel/slots.hpp"
#include "blas/native.hpp"
#include "blas/thread/32/level3/level3_threads.hpp"
#include "blas/thread/common/level1/level1_threads.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/level3/gemm_partition.hpp"
#include "blas/thread/common/machine.hpp"

namespace qrv::entry {

#define QRV_NONE(...)
#define QRV_SLOT(what, name, routine) static constexpr auto& name = kernel::blas_##routine##_kernel_slot;
#define QRV_SLOT_ALONE(what, name, routine) QRV_SLOT_ALONE_##what(name, routine)
#define QRV_SLOT_ALONE_KERNEL(name, routine) QRV_SLOT(KERNEL, name, routine)
#define QRV_SLOT_ALONE_DECIDED(name, routine)
#define QRV_SLOT_ALONE_ON_TEAM(name, routine)

template <class T>
struct Slots;
template <>
struct Slots<float> {
    QRV_BLAS_NAMES(QRV_SLOT, QRV_NONE)
};
template <>
struct Slots<SingleComplex> {
    QRV_BLAS_NAMES(QRV_NONE, QRV_SLOT)
};

// The slot's kernel for a short call, else the decision.
template <class Slot, class Decision, class... Arguments>
[[gnu::always_inline]] inline auto choose(bool isShort, Slot& slot, Decision& decision, Arguments... arguments) {
    if (isShort) [[likely]]
        return slot(arguments...);
    return decision(arguments...);
}

template <class T>
struct ShortCalls : blas::Native<T> {
    using Slot = Slots<T>;
    using Decision = blas::Native<T>;

    static void axpy(const int* n, const T* alpha, QRV_VECTORS_TO_Y(T)) {
        choose(is_short(row_for<T>(saxpyRow, caxpyRow), *n), Slot::axpy, Decision::axpy, n, alpha, x, incx, y, incy);
    }
    static void copy(const int* n, QRV_VECTORS_TO_Y(T)) {
        choose(is_short(row_for<T>(scopyRow, ccopyRow), *n), Slot::copy, Decision::copy, n, x, incx, y, incy);
    }
    static void swap(QRV_BOTH_VECTORS(T)) {
        choose(is_short(row_for<T>(sswapRow, cswapRow), *n), Slot::swap, Decision::swap, n, x, incx, y, incy);
    }
    static void scal(const int* n, const T* alpha, T* x, const int* incx) {
        choose(is_short(row_for<T>(sscalRow, cscalRow), *n), Slot::scal, Decision::scal, n, alpha, x, incx);
    }
    static void rscal(const int* n, const float* alpha, T* x, const int* incx) {
        choose(is_short(row_for<T>(sscalRow, csscalRow), *n), Slot::rscal, Decision::rscal, n, alpha, x, incx);
    }
    static float asum(QRV_VECTOR(T)) {
        return choose(is_short(row_for<T>(sasumRow, scasumRow), *n), Slot::asum, Decision::asum, n, x, incx);
    }
    static float nrm2(QRV_VECTOR(T)) {
        return choose(is_short(row_for<T>(snrm2Row, scnrm2Row), *n), Slot::nrm2, Decision::nrm2, n, x, incx);
    }
    static int iamax(QRV_VECTOR(T)) {
        return choose(is_short(row_for<T>(isamaxRow, icamaxRow), *n), Slot::iamax, Decision::iamax, n, x, incx);
    }
    static void gemv(QRV_GEMV_PARAMETERS(T)) {
        choose(is_short(row_for<T>(sgemvRule, cgemvRule), *m, *n), Slot::gemv, Decision::gemv, QRV_GEMV_ARGUMENTS);
    }
    static void geru(QRV_GER_PARAMETERS(T)) {
        choose(is_short(row_for<T>(sgerRule, cgerRule), *m, *n), Slot::geru, Decision::geru, QRV_GER_ARGUMENTS);
    }
    static void gerc(QRV_GER_PARAMETERS(T)) {
        choose(is_short(row_for<T>(sgerRule, cgerRule), *m, *n), Slot::gerc, Decision::gerc, QRV_GER_ARGUMENTS);
    }
    static void hemv(QRV_SYMV_PARAMETERS(T)) {
        choose(is_short(row_for<T>(ssymvRule, chemvRule), *n), Slot::hemv, Decision::hemv, QRV_SYMV_ARGUMENTS);
    }
    static void her(QRV_SYR_PARAMETERS(T)) {
        choose(is_short(row_for<T>(ssyrRule, cherRule), *n), Slot::her, Decision::her, QRV_SYR_ARGUMENTS);
    }
    static void her2(QRV_SYR2_PARAMETERS(T)) {
        choose(is_short(row_for<T>(ssyr2Rule, cher2Rule), *n), Slot::her2, Decision::her2, QRV_SYR2_ARGUMENTS);
    }
    static void gemm(QRV_GEMM_PARAMETERS(T)) {
        choose(!gemm_may_thread({*m, *n, *k}), Slot::gemm, Decision::gemm, QRV_GEMM_ARGUMENTS);
    }
#define QRV_SHORT(name, rule, m, n, parameters, arguments)                                                             \
    static void name parameters {                                                                                      \
        choose(is_short(rule, m, n), Slot::name, Decision::name, arguments);                                           \
    }
    QRV_SHORT(syrk, updateRule, *n, *n, (QRV_SYRK_PARAMETERS(T, T)), QRV_SYRK_ARGUMENTS)
    QRV_SHORT(herk, updateRule, *n, *n, (QRV_SYRK_PARAMETERS(T, float)), QRV_SYRK_ARGUMENTS)
    QRV_SHORT(syr2k, updateRule, *n, *n, (QRV_SYR2K_PARAMETERS(T, T)), QRV_SYR2K_ARGUMENTS)
    QRV_SHORT(her2k, updateRule, *n, *n, (QRV_SYR2K_PARAMETERS(T, float)), QRV_SYR2K_ARGUMENTS)
    QRV_SHORT(symm, slicedRule, *m, *n, (QRV_SYMM_PARAMETERS(T)), QRV_SYMM_ARGUMENTS)
    QRV_SHORT(hemm, slicedRule, *m, *n, (QRV_SYMM_PARAMETERS(T)), QRV_SYMM_ARGUMENTS)
    QRV_SHORT(trmm, slicedRule, *m, *n, (QRV_TRSM_PARAMETERS(T)), QRV_TRSM_ARGUMENTS)
    QRV_SHORT(trsm, slicedRule, *m, *n, (QRV_TRSM_PARAMETERS(T)), QRV_TRSM_ARGUMENTS)
#undef QRV_SHORT
    static void trmv(QRV_TRIANGULAR_PARAMETERS(T)) {
        choose(is_short(row_for<T>(strmvRule, ctrmvRule), *n), Slot::trmv, Decision::trmv, QRV_TRIANGULAR_ARGUMENTS);
    }
};

template <class T>
struct Native;
template <>
struct Native<float> : ShortCalls<float> {
    QRV_BLAS_NAMES(QRV_SLOT_ALONE, QRV_NONE)

    static float dotu(QRV_VECTORS(float)) {
        return choose(is_short(sdotRow, *n), Slot::dotu, Decision::dotu, n, x, incx, y, incy);
    }
    static void rot(QRV_BOTH_VECTORS(float), const float* c, const float* s) {
        choose(is_short(srotRow, *n), Slot::rot, Decision::rot, n, x, incx, y, incy, c, s);
    }
    static void rotm(QRV_BOTH_VECTORS(float), const float* param) {
        choose(is_short(srotmRow, *n), Slot::rotm, Decision::rotm, n, x, incx, y, incy, param);
    }
};
template <>
struct Native<SingleComplex> : ShortCalls<SingleComplex> {
    QRV_BLAS_NAMES(QRV_NONE, QRV_SLOT_ALONE)

    static void dotc(SingleComplex* result, QRV_VECTORS(SingleComplex)) {
        choose(is_short(cdotcRow, *n), Slot::dotc, Decision::dotc, result, n, x, incx, y, incy);
    }
    static void dotu(SingleComplex* result, QRV_VECTORS(SingleComplex)) {
        choose(is_short(cdotuRow, *n), Slot::dotu, Decision::dotu, result, n, x, incx, y, incy);
    }
};

#undef QRV_NONE
#undef QRV_SLOT
#undef QRV_SLOT_ALONE
#undef QRV_SLOT_ALONE_KERNEL
#undef QRV_SLOT_ALONE_DECIDED
#undef QRV_SLOT_ALONE_ON_TEAM

} // namespace qrv::entry
