// Decision routines of BLAS in the native calling form: they choose a number of threads and a path. Each takes the
// arguments of its kernel, unchecked. Routines without one are called by their kernel's dispatcher. By value they are
// in blas/calls.hpp.
#pragma once

#include "blas/kernel/kernels.hpp"

namespace qrv {

// The same operation on a team of at most *threads.
template <class Routine>
struct OnTeamOf;
template <class Result, class... Arguments>
struct OnTeamOf<Result(Arguments...)> {
    using Type = Result(const int* threads, Arguments...);
};
template <class Routine>
using OnTeam = typename OnTeamOf<Routine>::Type;

} // namespace qrv

extern "C" {

// ---- Level 1 ----------------------------------------------------------------------------------------------------

decltype(qrv_blas_saxpy_kernel) qrv_blas_saxpy;
decltype(qrv_blas_caxpy_kernel) qrv_blas_caxpy;
decltype(qrv_blas_scopy_kernel) qrv_blas_scopy;
decltype(qrv_blas_ccopy_kernel) qrv_blas_ccopy;
decltype(qrv_blas_sdot_kernel) qrv_blas_sdot;
decltype(qrv_blas_cdotc_kernel) qrv_blas_cdotc;
decltype(qrv_blas_srot_kernel) qrv_blas_srot;
decltype(qrv_blas_sswap_kernel) qrv_blas_sswap;
decltype(qrv_blas_cswap_kernel) qrv_blas_cswap;

qrv::OnTeam<decltype(qrv_blas_saxpy_kernel)> qrv_blas_saxpy_omp;
qrv::OnTeam<decltype(qrv_blas_caxpy_kernel)> qrv_blas_caxpy_omp;
qrv::OnTeam<decltype(qrv_blas_scopy_kernel)> qrv_blas_scopy_omp;
qrv::OnTeam<decltype(qrv_blas_ccopy_kernel)> qrv_blas_ccopy_omp;
qrv::OnTeam<decltype(qrv_blas_sdot_kernel)> qrv_blas_sdot_omp;
qrv::OnTeam<decltype(qrv_blas_cdotc_kernel)> qrv_blas_cdotc_omp;
qrv::OnTeam<decltype(qrv_blas_srot_kernel)> qrv_blas_srot_omp;
qrv::OnTeam<decltype(qrv_blas_sswap_kernel)> qrv_blas_sswap_omp;
qrv::OnTeam<decltype(qrv_blas_cswap_kernel)> qrv_blas_cswap_omp;

// ---- Level 2; on a team, the matrix is not empty ------------------------------------------------------------------

decltype(qrv_blas_sgemv_kernel) qrv_blas_sgemv;
decltype(qrv_blas_cgemv_kernel) qrv_blas_cgemv;
decltype(qrv_blas_ssymv_kernel) qrv_blas_ssymv;
decltype(qrv_blas_strmv_kernel) qrv_blas_strmv;
decltype(qrv_blas_ctrmv_kernel) qrv_blas_ctrmv;
decltype(qrv_blas_ssyr_kernel) qrv_blas_ssyr;
decltype(qrv_blas_ssyr2_kernel) qrv_blas_ssyr2;

qrv::OnTeam<decltype(qrv_blas_sgemv_kernel)> qrv_blas_sgemv_omp;
qrv::OnTeam<decltype(qrv_blas_cgemv_kernel)> qrv_blas_cgemv_omp;
qrv::OnTeam<decltype(qrv_blas_ssymv_kernel)> qrv_blas_ssymv_omp;
qrv::OnTeam<decltype(qrv_blas_strmv_kernel)> qrv_blas_strmv_omp;
qrv::OnTeam<decltype(qrv_blas_ctrmv_kernel)> qrv_blas_ctrmv_omp;
qrv::OnTeam<decltype(qrv_blas_ssyr_kernel)> qrv_blas_ssyr_omp;
qrv::OnTeam<decltype(qrv_blas_ssyr2_kernel)> qrv_blas_ssyr2_omp;

// ---- Level 3 ----------------------------------------------------------------------------------------------------

decltype(qrv_blas_sgemm_kernel) qrv_blas_sgemm;
decltype(qrv_blas_cgemm_kernel) qrv_blas_cgemm;
decltype(qrv_blas_strsm_kernel) qrv_blas_strsm;
decltype(qrv_blas_ctrsm_kernel) qrv_blas_ctrsm;
decltype(qrv_blas_strmm_kernel) qrv_blas_strmm;
decltype(qrv_blas_ctrmm_kernel) qrv_blas_ctrmm;
decltype(qrv_blas_ssyrk_kernel) qrv_blas_ssyrk;
decltype(qrv_blas_csyrk_kernel) qrv_blas_csyrk;
decltype(qrv_blas_cherk_kernel) qrv_blas_cherk;
decltype(qrv_blas_ssyr2k_kernel) qrv_blas_ssyr2k;
decltype(qrv_blas_csyr2k_kernel) qrv_blas_csyr2k;
decltype(qrv_blas_cher2k_kernel) qrv_blas_cher2k;
decltype(qrv_blas_ssymm_kernel) qrv_blas_ssymm;
decltype(qrv_blas_csymm_kernel) qrv_blas_csymm;
decltype(qrv_blas_chemm_kernel) qrv_blas_chemm;
}
