// Serial kernels of this build, by value: level 3 is built on them, never through the slots. Where GEMM has no form of
// its own for wider vectors, the plan of the sse42 build chooses one.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/action.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// C := alpha*op(A)*op(B) + beta*C
inline void gemm(Op opA, Op opB, int m, int n, int k, float alpha, Matrix<const float> a, Matrix<const float> b,
                 float beta, Matrix<float> c) {
    const char transa = letter(opA), transb = letter(opB);
    const int lda = static_cast<int>(a.ld), ldb = static_cast<int>(b.ld), ldc = static_cast<int>(c.ld);
    blas_sgemm_kernel(&transa, &transb, &m, &n, &k, &alpha, a.data, &lda, b.data, &ldb, &beta, c.data, &ldc);
}
inline void gemm(Op opA, Op opB, int m, int n, int k, SingleComplex alpha, Matrix<const SingleComplex> a,
                 Matrix<const SingleComplex> b, SingleComplex beta, Matrix<SingleComplex> c) {
    const char transa = letter(opA), transb = letter(opB);
    const int lda = static_cast<int>(a.ld), ldb = static_cast<int>(b.ld), ldc = static_cast<int>(c.ld);
    blas_cgemm_kernel(&transa, &transb, &m, &n, &k, &alpha, a.data, &lda, b.data, &ldb, &beta, c.data, &ldc);
}

// The same for a triangle of a square C, its diagonal included, from copies in work memory; m, n and k are positive.
// False if memory is refused, or the build has no such way: nothing has been done then.
bool blas_sgemm_triangle(const char* uplo, QRV_GEMM_PARAMETERS(float));
bool blas_cgemm_triangle(const char* uplo, QRV_GEMM_PARAMETERS(SingleComplex));
template <class T>
bool gemm_triangle(Uplo uplo, Op opA, Op opB, int n, int k, T alpha, Matrix<const T> a, Matrix<const T> b, T beta,
                   Matrix<T> c) {
    const char uploLetter = letter(uplo), transa = letter(opA), transb = letter(opB);
    const int lda = static_cast<int>(a.ld), ldb = static_cast<int>(b.ld), ldc = static_cast<int>(c.ld);
    const auto multiply = [&](auto& triangle) {
        return triangle(&uploLetter, &transa, &transb, &n, &n, &k, &alpha, a.data, &lda, b.data, &ldb, &beta, c.data,
                        &ldc);
    };
    if constexpr (isComplex<T>)
        return multiply(blas_cgemm_triangle);
    else
        return multiply(blas_sgemm_triangle);
}

// B := alpha*op(A)*B or alpha*B*op(A) from copies in work memory, for a triangle A; alpha is not 0. False if memory is
// refused: nothing has been done then. Of vectors of 256 bits real elements alone have it, narrower ones none.
bool blas_strmm_panels(QRV_TRSM_PARAMETERS(float));
bool blas_ctrmm_panels(QRV_TRSM_PARAMETERS(SingleComplex));
template <class T>
bool trmm_panels(Side side, Uplo uplo, Op op, Diag diag, int m, int n, T alpha, Matrix<const T> a, Matrix<T> b) {
    const char sideLetter = letter(side), uploLetter = letter(uplo), trans = letter(op), diagLetter = letter(diag);
    const int lda = static_cast<int>(a.ld), ldb = static_cast<int>(b.ld);
    const auto multiply = [&](auto& panels) {
        return panels(&sideLetter, &uploLetter, &trans, &diagLetter, &m, &n, &alpha, a.data, &lda, b.data, &ldb);
    };
    if constexpr (isComplex<T>)
        return multiply(blas_ctrmm_panels);
    else
        return multiply(blas_strmm_panels);
}

// C := beta*C; beta = 0 stores zeros and does not read C, beta = 1 does nothing.
inline void scale(int m, int n, float beta, Matrix<float> c) {
    const int ldc = static_cast<int>(c.ld);
    blas_sgemm_scale_c(&m, &n, &beta, c.data, &ldc);
}
inline void scale(int m, int n, SingleComplex beta, Matrix<SingleComplex> c) {
    const int ldc = static_cast<int>(c.ld);
    blas_cgemm_scale_c(&m, &n, &beta, c.data, &ldc);
}

// x := op(A)*x or x := inverse(op(A))*x for a triangle A.
template <Action action>
void triangular_vector(Uplo uplo, Op op, Diag diag, int n, Matrix<const float> a, float* x, int inc) {
    constexpr auto& kernel = action == Action::solve ? blas_strsv_kernel : blas_strmv_kernel;
    const char uploLetter = letter(uplo), trans = letter(op), diagLetter = letter(diag);
    const int lda = static_cast<int>(a.ld);
    kernel(&uploLetter, &trans, &diagLetter, &n, a.data, &lda, x, &inc);
}
template <Action action>
void triangular_vector(Uplo uplo, Op op, Diag diag, int n, Matrix<const SingleComplex> a, SingleComplex* x, int inc) {
    constexpr auto& kernel = action == Action::solve ? blas_ctrsv_kernel : blas_ctrmv_kernel;
    const char uploLetter = letter(uplo), trans = letter(op), diagLetter = letter(diag);
    const int lda = static_cast<int>(a.ld);
    kernel(&uploLetter, &trans, &diagLetter, &n, a.data, &lda, x, &inc);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
