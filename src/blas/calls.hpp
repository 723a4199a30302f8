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
// Counted from 1; 0 if there is none.
#define QRV_DEFINE_IAMAX_CALL(T, routine)                                                                              \
    inline int iamax(int n, const T* x, int incx) {                                                                    \
        return routine(&n, x, &incx);                                                                                  \
    }

// ---- Decision routines
// -----------------------------------------------------------------------------------------------

namespace qrv::blas {

QRV_DEFINE_GEMM_CALL(float, qrv_blas_sgemm)
QRV_DEFINE_GEMM_CALL(SingleComplex, qrv_blas_cgemm)
QRV_DEFINE_TRSM_CALL(float, trsm, qrv_blas_strsm)
QRV_DEFINE_TRSM_CALL(SingleComplex, trsm, qrv_blas_ctrsm)

} // namespace qrv::blas

// ---- Serial kernels
// --------------------------------------------------------------------------------------------------

namespace qrv::kernel {

QRV_DEFINE_GEMV_CALL(float, qrv_blas_sgemv_kernel)
QRV_DEFINE_GEMV_CALL(SingleComplex, qrv_blas_cgemv_kernel)
QRV_DEFINE_SWAP_CALL(float, qrv_blas_sswap_kernel)
QRV_DEFINE_SWAP_CALL(SingleComplex, qrv_blas_cswap_kernel)
QRV_DEFINE_SCAL_CALL(float, qrv_blas_sscal_kernel)
QRV_DEFINE_SCAL_CALL(SingleComplex, qrv_blas_cscal_kernel)
QRV_DEFINE_IAMAX_CALL(float, qrv_blas_isamax_kernel)
QRV_DEFINE_IAMAX_CALL(SingleComplex, qrv_blas_icamax_kernel)

} // namespace qrv::kernel

#undef QRV_DEFINE_GEMM_CALL
#undef QRV_DEFINE_TRSM_CALL
#undef QRV_DEFINE_GEMV_CALL
#undef QRV_DEFINE_SWAP_CALL
#undef QRV_DEFINE_SCAL_CALL
#undef QRV_DEFINE_IAMAX_CALL
