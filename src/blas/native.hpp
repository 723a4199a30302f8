// The C names of BLAS by element type, so that one template or one row serves both types: blas::Native<float>::gemm is
// qrv_blas_sgemm, kernel::Native<float>::gemm is qrv_blas_sgemm_kernel. By value they are in blas/calls.hpp.
//
// A row names a routine for both element types and tells what there is of it:
//
//   KERNEL    its kernel
//   DECIDED   qrv_blas_<name> too, which chooses a number of threads and a path
//   ON_TEAM   and qrv_blas_<name>_omp, the same on a team of at most *threads, for a matrix that is not empty
//
// All take the arguments of the kernel, unchecked. Real elements have the names of both complex routines of which
// theirs is the special case: geru and gerc are SGER, symm and hemm are SSYMM. Where only the Hermitian one exists, it
// gives the name: hemv is SSYMV.
#pragma once

#include "blas/kernel/kernels.hpp"

// clang-format off
#define QRV_BLAS_NAMES(REAL, COMPLEX)                                  \
    REAL(ON_TEAM, axpy, saxpy)        COMPLEX(ON_TEAM, axpy, caxpy)    \
    REAL(ON_TEAM, copy, scopy)        COMPLEX(ON_TEAM, copy, ccopy)    \
    REAL(ON_TEAM, swap, sswap)        COMPLEX(ON_TEAM, swap, cswap)    \
    REAL(ON_TEAM, dotc, sdot)         COMPLEX(ON_TEAM, dotc, cdotc)    \
    REAL(ON_TEAM, dotu, sdot)         COMPLEX(ON_TEAM, dotu, cdotu)    \
    REAL(ON_TEAM, rot, srot)                                           \
    REAL(ON_TEAM, rotm, srotm)                                         \
    REAL(ON_TEAM, scal, sscal)        COMPLEX(ON_TEAM, scal, cscal)    \
    REAL(ON_TEAM, rscal, sscal)       COMPLEX(ON_TEAM, rscal, csscal)  \
    REAL(ON_TEAM, asum, sasum)        COMPLEX(ON_TEAM, asum, scasum)   \
    REAL(ON_TEAM, nrm2, snrm2)        COMPLEX(ON_TEAM, nrm2, scnrm2)   \
    REAL(ON_TEAM, iamax, isamax)      COMPLEX(ON_TEAM, iamax, icamax)  \
    REAL(ON_TEAM, gemv, sgemv)        COMPLEX(ON_TEAM, gemv, cgemv)    \
    REAL(KERNEL, gemvt, sgemvt)       COMPLEX(KERNEL, gemvt, cgemvt)   \
    REAL(ON_TEAM, hemv, ssymv)        COMPLEX(ON_TEAM, hemv, chemv)    \
    REAL(ON_TEAM, her, ssyr)          COMPLEX(ON_TEAM, her, cher)      \
    REAL(ON_TEAM, her2, ssyr2)        COMPLEX(ON_TEAM, her2, cher2)    \
    REAL(ON_TEAM, geru, sger)         COMPLEX(ON_TEAM, geru, cgeru)    \
    REAL(ON_TEAM, gerc, sger)         COMPLEX(ON_TEAM, gerc, cgerc)    \
    REAL(ON_TEAM, trmv, strmv)        COMPLEX(ON_TEAM, trmv, ctrmv)    \
    REAL(KERNEL, trsv, strsv)         COMPLEX(KERNEL, trsv, ctrsv)     \
    REAL(DECIDED, gemm, sgemm)        COMPLEX(DECIDED, gemm, cgemm)    \
    REAL(DECIDED, symm, ssymm)        COMPLEX(DECIDED, symm, csymm)    \
    REAL(DECIDED, hemm, ssymm)        COMPLEX(DECIDED, hemm, chemm)    \
    REAL(DECIDED, syrk, ssyrk)        COMPLEX(DECIDED, syrk, csyrk)    \
    REAL(DECIDED, herk, ssyrk)        COMPLEX(DECIDED, herk, cherk)    \
    REAL(DECIDED, syr2k, ssyr2k)      COMPLEX(DECIDED, syr2k, csyr2k)  \
    REAL(DECIDED, her2k, ssyr2k)      COMPLEX(DECIDED, her2k, cher2k)  \
    REAL(DECIDED, trmm, strmm)        COMPLEX(DECIDED, trmm, ctrmm)    \
    REAL(DECIDED, trsm, strsm)        COMPLEX(DECIDED, trsm, ctrsm)
// clang-format on

namespace qrv {

template <class Routine>
struct OnTeamOf;
template <class Result, class... Arguments>
struct OnTeamOf<Result(Arguments...)> {
    using Type = Result(const int* threads, Arguments...);
};
template <class Routine>
using OnTeam = typename OnTeamOf<Routine>::Type;

} // namespace qrv

#define QRV_NONE(...)
#define QRV_DECLARE(what, name, routine) QRV_DECLARE_##what(routine)
#define QRV_DECLARE_KERNEL(routine)
#define QRV_DECLARE_DECIDED(routine) decltype(qrv_blas_##routine##_kernel) qrv_blas_##routine;
#define QRV_DECLARE_ON_TEAM(routine)                                                                                   \
    QRV_DECLARE_DECIDED(routine)                                                                                       \
    qrv::OnTeam<decltype(qrv_blas_##routine##_kernel)> qrv_blas_##routine##_omp;
#define QRV_NAME(what, name, routine) static constexpr auto& name = qrv_blas_##routine##_kernel;
#define QRV_NAME_DECISION(what, name, routine) QRV_NAME_##what(name, routine)
#define QRV_NAME_KERNEL(name, routine)
#define QRV_NAME_DECIDED(name, routine) static constexpr auto& name = qrv_blas_##routine;
#define QRV_NAME_ON_TEAM(name, routine) QRV_NAME_DECIDED(name, routine)
#define QRV_NAME_SLICE(name, routine) static constexpr auto& name = qrv_blas_##routine;
#define QRV_NAME_PIECES(gemm)                                                                                          \
    static constexpr auto& scale_c = qrv_blas_##gemm##_scale_c;                                                        \
    static constexpr auto& plan_available = qrv_blas_##gemm##_plan_available;                                          \
    static constexpr auto& plan_reset = qrv_blas_##gemm##_plan_reset;                                                  \
    static constexpr auto& plan_load = qrv_blas_##gemm##_plan_load;                                                    \
    static constexpr auto& plan_set_blocks = qrv_blas_##gemm##_plan_set_blocks;                                        \
    static constexpr auto& buffer_sizes = qrv_blas_##gemm##_buffer_sizes;                                              \
    static constexpr auto& blocked = qrv_blas_##gemm##_blocked;

extern "C" {
QRV_BLAS_NAMES(QRV_DECLARE, QRV_DECLARE)
}

// Serial kernels, each behind its dispatch slot, and the pieces of GEMM, for its team.
namespace qrv::kernel {

template <class T>
struct Native;
template <class T>
struct Native<const T> : Native<T> {};

template <>
struct Native<float> {
    QRV_BLAS_NAMES(QRV_NAME, QRV_NONE)
    QRV_NAME(KERNEL, trmv_band, strmv_band)
    QRV_NAME_SLICE(nrm2_squares, snrm2_squares)
    QRV_NAME_SLICE(iamax_slice, isamax_slice)
    QRV_NAME_SLICE(hemv_strip, ssymv_strip)
    QRV_NAME_SLICE(her_strip, ssyr_strip)
    QRV_NAME_SLICE(her2_strip, ssyr2_strip)
    QRV_NAME_PIECES(sgemm)
};
template <>
struct Native<SingleComplex> {
    QRV_BLAS_NAMES(QRV_NONE, QRV_NAME)
    QRV_NAME(KERNEL, trmv_band, ctrmv_band)
    QRV_NAME_SLICE(nrm2_squares, scnrm2_squares)
    QRV_NAME_SLICE(iamax_slice, icamax_slice)
    QRV_NAME_SLICE(hemv_strip, chemv_strip)
    QRV_NAME_SLICE(her_strip, cher_strip)
    QRV_NAME_SLICE(her2_strip, cher2_strip)
    QRV_NAME_PIECES(cgemm)
};

} // namespace qrv::kernel

// Decision routines; where a routine has none, its kernel.
namespace qrv::blas {

template <class T>
struct Native;
template <class T>
struct Native<const T> : Native<T> {};

template <>
struct Native<float> : kernel::Native<float> {
    QRV_BLAS_NAMES(QRV_NAME_DECISION, QRV_NONE)
};
template <>
struct Native<SingleComplex> : kernel::Native<SingleComplex> {
    QRV_BLAS_NAMES(QRV_NONE, QRV_NAME_DECISION)
};

} // namespace qrv::blas

#undef QRV_NONE
#undef QRV_DECLARE
#undef QRV_DECLARE_KERNEL
#undef QRV_DECLARE_DECIDED
#undef QRV_DECLARE_ON_TEAM
#undef QRV_NAME
#undef QRV_NAME_DECISION
#undef QRV_NAME_KERNEL
#undef QRV_NAME_DECIDED
#undef QRV_NAME_ON_TEAM
#undef QRV_NAME_SLICE
#undef QRV_NAME_PIECES
