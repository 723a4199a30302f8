// BLAS by value, for the callers above: factorizations read like their textbook form.
//
// Two namespaces say which layer is meant: blas::gemm is the decision routine, which may thread; kernel::gemm is the
// serial kernel behind its slot. An overload for each element type; scalars are elements.
#pragma once

#include "blas/blas.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/options.hpp"

// ---- Bodies, the same for both layers: `routine` is called in the native form ---------------------------------------

#define QRV_DEFINE_GEMM_CALL(T, routine)                                                                               \
    inline void gemm(Op opA, Op opB, int m, int n, int k, T alpha, Matrix<const T> a, Matrix<const T> b, T beta,       \
                     Matrix<T> c) {                                                                                    \
        const char transa = letter(opA), transb = letter(opB);                                                         \
        const int lda = static_cast<int>(a.ld), ldb = static_cast<int>(b.ld), ldc = static_cast<int>(c.ld);            \
        routine(&transa, &transb, &m, &n, &k, &alpha, a.data, &lda, b.data, &ldb, &beta, c.data, &ldc);                \
    }
// Solve or product: B is overwritten.
#define QRV_DEFINE_TRSM_CALL(T, name, routine)                                                                         \
    inline void name(Side side, Uplo uplo, Op opA, Diag diag, int m, int n, T alpha, Matrix<const T> a, Matrix<T> b) { \
        const char options[] = {letter(side), letter(uplo), letter(opA), letter(diag)};                                \
        const int lda = static_cast<int>(a.ld), ldb = static_cast<int>(b.ld);                                          \
        routine(options, options + 1, options + 2, options + 3, &m, &n, &alpha, a.data, &lda, b.data, &ldb);           \
    }
#define QRV_DEFINE_GEMV_CALL(T, routine)                                                                               \
    inline void gemv(Op opA, int m, int n, T alpha, Matrix<const T> a, const T* x, int incx, T beta, T* y, int incy) { \
        const char trans = letter(opA);                                                                                \
        const int lda = static_cast<int>(a.ld);                                                                        \
        routine(&trans, &m, &n, &alpha, a.data, &lda, x, &incx, &beta, y, &incy);                                      \
    }
#define QRV_DEFINE_SWAP_CALL(T, routine)                                                                               \
    inline void swap(int n, T* x, int incx, T* y, int incy) {                                                          \
        routine(&n, x, &incx, y, &incy);                                                                               \
    }
#define QRV_DEFINE_SCAL_CALL(T, routine)                                                                               \
    inline void scal(int n, T alpha, T* x, int incx) {                                                                 \
        routine(&n, &alpha, x, &incx);                                                                                 \
    }
// By a real factor.
#define QRV_DEFINE_REAL_SCAL_CALL(T, routine)                                                                          \
    inline void scal(int n, float alpha, T* x, int incx) {                                                             \
        routine(&n, &alpha, x, &incx);                                                                                 \
    }
#define QRV_DEFINE_AXPY_CALL(T, routine)                                                                               \
    inline void axpy(int n, T alpha, const T* x, int incx, T* y, int incy) {                                           \
        routine(&n, &alpha, x, &incx, y, &incy);                                                                       \
    }
#define QRV_DEFINE_COPY_CALL(T, routine)                                                                               \
    inline void copy(int n, const T* x, int incx, T* y, int incy) {                                                    \
        routine(&n, x, &incx, y, &incy);                                                                               \
    }
// Of abs1.
#define QRV_DEFINE_ASUM_CALL(T, routine)                                                                               \
    inline float asum(int n, const T* x, int incx) {                                                                   \
        return routine(&n, x, &incx);                                                                                  \
    }
// dotc takes the conjugates of the x(i).
#define QRV_DEFINE_DOT_CALL(name, routine)                                                                             \
    inline float name(int n, const float* x, int incx, const float* y, int incy) {                                     \
        return routine(&n, x, &incx, y, &incy);                                                                        \
    }
#define QRV_DEFINE_COMPLEX_DOT_CALL(name, routine)                                                                     \
    inline SingleComplex name(int n, const SingleComplex* x, int incx, const SingleComplex* y, int incy) {             \
        SingleComplex sum{};                                                                                           \
        routine(&sum, &n, x, &incx, y, &incy);                                                                         \
        return sum;                                                                                                    \
    }
// Product or solve: x is overwritten.
#define QRV_DEFINE_TRMV_CALL(T, name, routine)                                                                         \
    inline void name(Uplo uplo, Op opA, Diag diag, int n, Matrix<const T> a, T* x, int incx) {                         \
        const char options[] = {letter(uplo), letter(opA), letter(diag)};                                              \
        const int lda = static_cast<int>(a.ld);                                                                        \
        routine(options, options + 1, options + 2, &n, a.data, &lda, x, &incx);                                        \
    }
// Counted from 1; 0 if there is none.
#define QRV_DEFINE_IAMAX_CALL(T, routine)                                                                              \
    inline int iamax(int n, const T* x, int incx) {                                                                    \
        return routine(&n, x, &incx);                                                                                  \
    }

// ---- Decision routines --------------------------------------------------------------------------------------------

namespace qrv::blas {

QRV_DEFINE_GEMM_CALL(float, qrv_blas_sgemm)
QRV_DEFINE_GEMM_CALL(SingleComplex, qrv_blas_cgemm)
QRV_DEFINE_TRSM_CALL(float, trsm, qrv_blas_strsm)
QRV_DEFINE_TRSM_CALL(SingleComplex, trsm, qrv_blas_ctrsm)
QRV_DEFINE_TRSM_CALL(float, trmm, qrv_blas_strmm)
QRV_DEFINE_TRSM_CALL(SingleComplex, trmm, qrv_blas_ctrmm)

} // namespace qrv::blas

// ---- Serial kernels -----------------------------------------------------------------------------------------------

namespace qrv::kernel {

QRV_DEFINE_GEMV_CALL(float, qrv_blas_sgemv_kernel)
QRV_DEFINE_GEMV_CALL(SingleComplex, qrv_blas_cgemv_kernel)
QRV_DEFINE_SWAP_CALL(float, qrv_blas_sswap_kernel)
QRV_DEFINE_SWAP_CALL(SingleComplex, qrv_blas_cswap_kernel)
QRV_DEFINE_SCAL_CALL(float, qrv_blas_sscal_kernel)
QRV_DEFINE_SCAL_CALL(SingleComplex, qrv_blas_cscal_kernel)
QRV_DEFINE_REAL_SCAL_CALL(SingleComplex, qrv_blas_csscal_kernel)
QRV_DEFINE_AXPY_CALL(float, qrv_blas_saxpy_kernel)
QRV_DEFINE_AXPY_CALL(SingleComplex, qrv_blas_caxpy_kernel)
QRV_DEFINE_COPY_CALL(float, qrv_blas_scopy_kernel)
QRV_DEFINE_COPY_CALL(SingleComplex, qrv_blas_ccopy_kernel)
QRV_DEFINE_ASUM_CALL(float, qrv_blas_sasum_kernel)
QRV_DEFINE_ASUM_CALL(SingleComplex, qrv_blas_scasum_kernel)
QRV_DEFINE_DOT_CALL(dotc, qrv_blas_sdot_kernel)
QRV_DEFINE_DOT_CALL(dotu, qrv_blas_sdot_kernel)
QRV_DEFINE_COMPLEX_DOT_CALL(dotc, qrv_blas_cdotc_kernel)
QRV_DEFINE_COMPLEX_DOT_CALL(dotu, qrv_blas_cdotu_kernel)
QRV_DEFINE_TRMV_CALL(float, trmv, qrv_blas_strmv_kernel)
QRV_DEFINE_TRMV_CALL(SingleComplex, trmv, qrv_blas_ctrmv_kernel)
QRV_DEFINE_TRMV_CALL(float, trsv, qrv_blas_strsv_kernel)
QRV_DEFINE_TRMV_CALL(SingleComplex, trsv, qrv_blas_ctrsv_kernel)
QRV_DEFINE_IAMAX_CALL(float, qrv_blas_isamax_kernel)
QRV_DEFINE_IAMAX_CALL(SingleComplex, qrv_blas_icamax_kernel)

} // namespace qrv::kernel

#undef QRV_DEFINE_GEMM_CALL
#undef QRV_DEFINE_TRSM_CALL
#undef QRV_DEFINE_GEMV_CALL
#undef QRV_DEFINE_SWAP_CALL
#undef QRV_DEFINE_SCAL_CALL
#undef QRV_DEFINE_REAL_SCAL_CALL
#undef QRV_DEFINE_AXPY_CALL
#undef QRV_DEFINE_COPY_CALL
#undef QRV_DEFINE_ASUM_CALL
#undef QRV_DEFINE_DOT_CALL
#undef QRV_DEFINE_COMPLEX_DOT_CALL
#undef QRV_DEFINE_TRMV_CALL
#undef QRV_DEFINE_IAMAX_CALL
