// The C names of BLAS by element type, so that one template or one row serves both types: blas::Native<float>::gemm is
// qrv_blas_sgemm, kernel::Native<float>::gemm is qrv_blas_sgemm_kernel.
//
// Real elements have the names of both complex routines of which theirs is the special case: geru and gerc are SGER,
// symm and hemm are SSYMM. Where only the Hermitian one exists, it gives the name: hemv is SSYMV.
#pragma once

#include "blas/blas.hpp"
#include "blas/kernel/kernels.hpp"

// ---- Serial kernels, each behind its dispatch slot ------------------------------------------------------------------

namespace qrv::kernel {

template <class T>
struct Native;
template <class T>
struct Native<const T> : Native<T> {};

template <>
struct Native<float> {
    static constexpr auto& axpy = qrv_blas_saxpy_kernel;
    static constexpr auto& copy = qrv_blas_scopy_kernel;
    static constexpr auto& swap = qrv_blas_sswap_kernel;
    static constexpr auto& scal = qrv_blas_sscal_kernel;
    static constexpr auto& rscal = qrv_blas_sscal_kernel; // by a real factor
    static constexpr auto& dotc = qrv_blas_sdot_kernel;
    static constexpr auto& dotu = qrv_blas_sdot_kernel;
    static constexpr auto& asum = qrv_blas_sasum_kernel;
    static constexpr auto& nrm2 = qrv_blas_snrm2_kernel;
    static constexpr auto& iamax = qrv_blas_isamax_kernel;
    static constexpr auto& rot = qrv_blas_srot_kernel;

    static constexpr auto& gemv = qrv_blas_sgemv_kernel;
    static constexpr auto& hemv = qrv_blas_ssymv_kernel;
    static constexpr auto& geru = qrv_blas_sger_kernel;
    static constexpr auto& gerc = qrv_blas_sger_kernel;
    static constexpr auto& her = qrv_blas_ssyr_kernel;
    static constexpr auto& her2 = qrv_blas_ssyr2_kernel;
    static constexpr auto& trmv = qrv_blas_strmv_kernel;
    static constexpr auto& trsv = qrv_blas_strsv_kernel;
    static constexpr auto& trmv_band = qrv_blas_strmv_band_kernel;

    static constexpr auto& gemm = qrv_blas_sgemm_kernel;
    static constexpr auto& symm = qrv_blas_ssymm_kernel;
    static constexpr auto& hemm = qrv_blas_ssymm_kernel;
    static constexpr auto& syrk = qrv_blas_ssyrk_kernel;
    static constexpr auto& herk = qrv_blas_ssyrk_kernel;
    static constexpr auto& syr2k = qrv_blas_ssyr2k_kernel;
    static constexpr auto& her2k = qrv_blas_ssyr2k_kernel;
    static constexpr auto& trmm = qrv_blas_strmm_kernel;
    static constexpr auto& trsm = qrv_blas_strsm_kernel;

    // Pieces of GEMM, for its team.
    static constexpr auto& scale_c = qrv_blas_sgemm_scale_c;
    static constexpr auto& plan_available = qrv_blas_sgemm_plan_available;
    static constexpr auto& plan_reset = qrv_blas_sgemm_plan_reset;
    static constexpr auto& plan_load = qrv_blas_sgemm_plan_load;
    static constexpr auto& plan_set_blocks = qrv_blas_sgemm_plan_set_blocks;
    static constexpr auto& buffer_sizes = qrv_blas_sgemm_buffer_sizes;
    static constexpr auto& blocked = qrv_blas_sgemm_blocked;
};

template <>
struct Native<SingleComplex> {
    static constexpr auto& axpy = qrv_blas_caxpy_kernel;
    static constexpr auto& copy = qrv_blas_ccopy_kernel;
    static constexpr auto& swap = qrv_blas_cswap_kernel;
    static constexpr auto& scal = qrv_blas_cscal_kernel;
    static constexpr auto& rscal = qrv_blas_csscal_kernel; // by a real factor
    static constexpr auto& dotc = qrv_blas_cdotc_kernel;
    static constexpr auto& dotu = qrv_blas_cdotu_kernel;
    static constexpr auto& asum = qrv_blas_scasum_kernel;
    static constexpr auto& nrm2 = qrv_blas_scnrm2_kernel;
    static constexpr auto& iamax = qrv_blas_icamax_kernel;

    static constexpr auto& gemv = qrv_blas_cgemv_kernel;
    static constexpr auto& hemv = qrv_blas_chemv_kernel;
    static constexpr auto& geru = qrv_blas_cgeru_kernel;
    static constexpr auto& gerc = qrv_blas_cgerc_kernel;
    static constexpr auto& her = qrv_blas_cher_kernel;
    static constexpr auto& her2 = qrv_blas_cher2_kernel;
    static constexpr auto& trmv = qrv_blas_ctrmv_kernel;
    static constexpr auto& trsv = qrv_blas_ctrsv_kernel;
    static constexpr auto& trmv_band = qrv_blas_ctrmv_band_kernel;

    static constexpr auto& gemm = qrv_blas_cgemm_kernel;
    static constexpr auto& symm = qrv_blas_csymm_kernel;
    static constexpr auto& hemm = qrv_blas_chemm_kernel;
    static constexpr auto& syrk = qrv_blas_csyrk_kernel;
    static constexpr auto& herk = qrv_blas_cherk_kernel;
    static constexpr auto& syr2k = qrv_blas_csyr2k_kernel;
    static constexpr auto& her2k = qrv_blas_cher2k_kernel;
    static constexpr auto& trmm = qrv_blas_ctrmm_kernel;
    static constexpr auto& trsm = qrv_blas_ctrsm_kernel;

    // Pieces of GEMM, for its team.
    static constexpr auto& scale_c = qrv_blas_cgemm_scale_c;
    static constexpr auto& plan_available = qrv_blas_cgemm_plan_available;
    static constexpr auto& plan_reset = qrv_blas_cgemm_plan_reset;
    static constexpr auto& plan_load = qrv_blas_cgemm_plan_load;
    static constexpr auto& plan_set_blocks = qrv_blas_cgemm_plan_set_blocks;
    static constexpr auto& buffer_sizes = qrv_blas_cgemm_buffer_sizes;
    static constexpr auto& blocked = qrv_blas_cgemm_blocked;
};

} // namespace qrv::kernel

// ---- Decision routines; where a routine has none, its kernel
// ---------------------------------------------------------

namespace qrv::blas {

template <class T>
struct Native;
template <class T>
struct Native<const T> : Native<T> {};

template <>
struct Native<float> : kernel::Native<float> {
    static constexpr auto& axpy = qrv_blas_saxpy;
    static constexpr auto& copy = qrv_blas_scopy;
    static constexpr auto& swap = qrv_blas_sswap;
    static constexpr auto& dotc = qrv_blas_sdot;
    static constexpr auto& dotu = qrv_blas_sdot;
    static constexpr auto& rot = qrv_blas_srot;

    static constexpr auto& gemv = qrv_blas_sgemv;
    static constexpr auto& hemv = qrv_blas_ssymv;
    static constexpr auto& her = qrv_blas_ssyr;
    static constexpr auto& her2 = qrv_blas_ssyr2;
    static constexpr auto& trmv = qrv_blas_strmv;

    static constexpr auto& gemm = qrv_blas_sgemm;
    static constexpr auto& symm = qrv_blas_ssymm;
    static constexpr auto& hemm = qrv_blas_ssymm;
    static constexpr auto& syrk = qrv_blas_ssyrk;
    static constexpr auto& herk = qrv_blas_ssyrk;
    static constexpr auto& syr2k = qrv_blas_ssyr2k;
    static constexpr auto& her2k = qrv_blas_ssyr2k;
    static constexpr auto& trmm = qrv_blas_strmm;
    static constexpr auto& trsm = qrv_blas_strsm;
};

template <>
struct Native<SingleComplex> : kernel::Native<SingleComplex> {
    static constexpr auto& axpy = qrv_blas_caxpy;
    static constexpr auto& copy = qrv_blas_ccopy;
    static constexpr auto& swap = qrv_blas_cswap;
    static constexpr auto& dotc = qrv_blas_cdotc;

    static constexpr auto& gemv = qrv_blas_cgemv;
    static constexpr auto& trmv = qrv_blas_ctrmv;

    static constexpr auto& gemm = qrv_blas_cgemm;
    static constexpr auto& symm = qrv_blas_csymm;
    static constexpr auto& hemm = qrv_blas_chemm;
    static constexpr auto& syrk = qrv_blas_csyrk;
    static constexpr auto& herk = qrv_blas_cherk;
    static constexpr auto& syr2k = qrv_blas_csyr2k;
    static constexpr auto& her2k = qrv_blas_cher2k;
    static constexpr auto& trmm = qrv_blas_ctrmm;
    static constexpr auto& trsm = qrv_blas_ctrsm;
};

} // namespace qrv::blas
