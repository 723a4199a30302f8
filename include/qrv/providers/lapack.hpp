// The host's abstract LAPACK classes, real and complex.
//
// Example. A system with two unknowns:
//
//     using namespace Corvex::Mathematics::LinearAlgebra;
//     const Providers::ParallelX86SingleLinearAlgebraProvider provider;
//     std::vector<float> a{2, 1, 0, 4}, b{2, 9};
//     std::vector<int> pivots(2);
//     int info = 0;
//     provider.Lapack()->Sgetrf(2, 2, a, 0, 2, pivots, info);
//     provider.Lapack()->Sgetrs(TransposeOperation::None, 2, 1, a, 0, 2, pivots, b, 0, 2, info);
//     return info == 0 && b == std::vector<float>{1, 2};
#pragma once

#include "types.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

class QRV_API SingleLapack {
public:
    virtual ~SingleLapack() = default;

    // Factorizations, solves and decompositions. Options, matrices and sizes mean what they mean in the BLAS classes.
    //
    // info   0; a negative value for a bad argument, which is reported too: minus its position in the native routine of
    //        the same name (its arguments are named there, see qrv/native.h), with nothing else done; a positive one
    //        as told with each method
    // norm   Frobenius, One, Infinity, MaximumAbsolute
    //
    // A method that needs work memory allocates it. A dimension of 0 there raises IndexOutOfRangeError, as an empty
    // array does, a negative one InvalidArraySizeError.
    //
    // Source: E. Anderson et al., LAPACK Users' Guide, 3rd edition, SIAM (1999).

    // LU factorization with partial pivoting, A = P*L*U, of the general m x n matrix A, which is overwritten by U and,
    // below its diagonal, by the unit lower triangular L without its diagonal.
    //
    // ipiv  min(m, n) elements: row i, from 1, was interchanged with row ipiv[i - 1], in this order for i = 1, 2, ...
    // info  i > 0: diagonal element i of U, from 1, is exactly 0, the first such one; U is singular, the factors are
    //       complete
    virtual void Sgetrf(int m, int n, ProviderArray<float> a, int aOffset, int lda, ProviderArray<int> ipiv,
                        int& info) = 0;

    // Solves op(A)*X = B for a general A of order n from its factors by Sgetrf; the n x nrhs matrix B is overwritten by
    // X. trans Conjugate is a bad argument. A zero on the diagonal of U is not looked for.
    virtual void Sgetrs(TransposeOperation trans, int n, int nrhs, ProviderArray<const float> a, int aOffset, int lda,
                        ProviderArray<const int> ipiv, ProviderArray<float> b, int bOffset, int ldb, int& info) = 0;

    // A := inv(A) for a general A of order n, from its factors by Sgetrf. Needs work memory, for n columns.
    //
    // info  i > 0: diagonal element i of U, from 1, is exactly 0; A is singular and unchanged
    virtual void Sgetri(int n, ProviderArray<float> a, int aOffset, int lda, ProviderArray<const int> ipiv,
                        int& info) = 0;

    // Reciprocal condition number of a general A of order n from its norm aNorm (see Slange) and its factors by Sgetrf.
    // Needs work memory, for n columns. norm is One or Infinity; others are bad arguments.
    //
    // rcond  1 / (norm(A)*norm(inv(A))); 0 if A is singular to working precision
    virtual void Sgecon(MatrixNorm norm, int n, ProviderArray<const float> a, int aOffset, int lda, float aNorm,
                        float& rcond, int& info) = 0;

    // Norm of the general m x n matrix A; 0 if m or n is 0. Needs work memory, for m rows, with Infinity only.
    virtual float Slange(MatrixNorm norm, int m, int n, ProviderArray<const float> a, int aOffset, int lda) = 0;

    // QR factorization A = Q*R of the general m x n matrix A, which is overwritten by R (upper trapezoidal if m < n)
    // and, below its diagonal, by vectors from which Q is made. Needs work memory.
    //
    // tau  min(m, n) elements, from tauOffset: Q = H(1)*H(2)*... with H(i) = I - tau(i)*v*v', where v has zeros above
    //      element i, 1 there, and below it what column i of A holds
    virtual void Sgeqrf(int m, int n, ProviderArray<float> a, int aOffset, int lda, ProviderArray<float> tau,
                        int tauOffset, int& info) = 0;

    // QR factorization with column pivoting, A*P = Q*R, with A and tau as in Sgeqrf and the diagonal of R decreasing in
    // absolute value from the first free column on. Needs work memory. With m or n 0 it returns at once: no array is
    // looked at, and info stays as it is.
    //
    // jpvt  n elements.
    //       Before: nonzero where a column of A is to be one of the first of A*P, 0 where it is free.
    //       After: jpvt[j - 1] = k says that column j of A*P, from 1, was column k of A
    virtual void Sgeqp3(int m, int n, ProviderArray<float> a, int aOffset, int lda, ProviderArray<int> jpvt,
                        ProviderArray<float> tau, int tauOffset, int& info) = 0;

    // C := op(Q)*C (Left) or C*op(Q) (Right), for the m x n matrix C and Q from Sgeqrf. Needs work memory.
    //
    // k        columns of A that make Q; at most the order of Q, which is m for Left, n for Right
    // a, lda   the factorization, only read; lda >= max(1, order of Q)
    // tau      k elements, from tauOffset
    // c, Ldc   C, overwritten; Ldc >= max(1, m)
    virtual void Sormqr(MatrixOperationSide side, TransposeOperation trans, int m, int n, int k,
                        ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> tau,
                        int tauOffset, ProviderArray<float> c, int cOffset, int Ldc, int& info) = 0;

    // Solves op(A)*X = B for a triangular A of order n; the n x nrhs matrix B is overwritten by X. Unlike elsewhere,
    // trans Conjugate is a bad argument.
    //
    // info  i > 0: diagonal element i of A, from 1, is exactly 0; A is singular and B unchanged
    virtual void Strtrs(MatrixTriangleMode triangleMode, TransposeOperation trans, MatrixDiagonalMode diag, int n,
                        int nrhs, ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> b,
                        int bOffset, int ldb, int& info) = 0;

    // A := inv(A) for a triangular A of order n.
    //
    // info  i > 0: diagonal element i of A, from 1, is exactly 0; A is singular and unchanged
    virtual void Strtri(MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n, ProviderArray<float> a,
                        int aOffset, int lda, int& info) = 0;

    // Reciprocal condition number of a triangular A of order n, from its norm and an estimate of its inverse's. Needs
    // work memory, for n columns. norm is One or Infinity; others are bad arguments.
    //
    // rcond  1 / (norm(A)*norm(inv(A))); 0 if A is singular to working precision
    virtual void Strcon(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n,
                        ProviderArray<const float> a, int aOffset, int lda, float& rcond, int& info) = 0;

    // Norm of a triangular matrix, or of a trapezoidal one with m <= n for Upper, m >= n for Lower. Work memory as for
    // Slange.
    virtual float Slantr(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int m, int n,
                         ProviderArray<const float> a, int aOffset, int lda) = 0;

    // Cholesky factorization of a symmetric positive definite A of order n: A = U'*U (Upper) or L*L' (Lower), with the
    // factor in place of the triangle.
    //
    // info  i > 0: the leading minor of order i is not positive definite, and the factorization stopped there
    virtual void Spotrf(MatrixTriangleMode triangleMode, int n, ProviderArray<float> a, int aOffset, int lda,
                        int& info) = 0;

    // A := inv(A), the triangle named, for a symmetric positive definite A of order n, from its factor by Spotrf.
    //
    // info  i > 0: diagonal element i of the factor, from 1, is exactly 0, and there is no inverse
    virtual void Spotri(MatrixTriangleMode triangleMode, int n, ProviderArray<float> a, int aOffset, int lda,
                        int& info) = 0;

    // Solves A*X = B for a symmetric positive definite A of order n from its factor by Spotrf; the n x nrhs matrix B is
    // overwritten by X.
    virtual void Spotrs(MatrixTriangleMode triangleMode, int n, int nrhs, ProviderArray<const float> a, int aOffset,
                        int lda, ProviderArray<float> b, int bOffset, int ldb, int& info) = 0;

    // Reciprocal condition number in the 1-norm of a symmetric positive definite A of order n, from its norm aNorm and
    // its factor by Spotrf. Needs work memory, for n columns.
    //
    // rcond  1 / (norm(A)*norm(inv(A))); 0 if A is singular to working precision
    virtual void Spocon(MatrixTriangleMode triangleMode, int n, ProviderArray<const float> a, int aOffset, int lda,
                        float aNorm, float& rcond, int& info) = 0;

    // LU factorization with partial pivoting of the m x n band matrix A with kl diagonals below the main one and ku
    // above it. Element (i, j), from 0, is element aOffset + kl + ku + i - j + j*lda of a; lda >= 2*kl + ku + 1: the
    // first kl rows need not be set and take the diagonals by which U is wider. A is overwritten by U, with kl + ku
    // diagonals above the main one, and below it by the multipliers.
    //
    // ipiv, info  as for Sgetrf
    virtual void Sgbtrf(int m, int n, int kl, int ku, ProviderArray<float> a, int aOffset, int lda,
                        ProviderArray<int> ipiv, int& info) = 0;

    // Solves op(A)*X = B for a band matrix A of order n from its factors by Sgbtrf, with the kl and ku given there; the
    // n x nrhs matrix B is overwritten by X. trans Conjugate is a bad argument.
    virtual void Sgbtrs(TransposeOperation trans, int n, int kl, int ku, int nrhs, ProviderArray<const float> a,
                        int aOffset, int lda, ProviderArray<const int> ipiv, ProviderArray<float> b, int bOffset,
                        int ldb, int& info) = 0;

    // Reciprocal condition number of a band matrix A of order n from its norm aNorm and its factors by Sgbtrf, with the
    // kl and ku given there. Needs work memory, for n columns. norm is One or Infinity; others are bad arguments.
    //
    // rcond  1 / (norm(A)*norm(inv(A))); 0 if A is singular to working precision
    virtual void Sgbcon(MatrixNorm norm, int n, int kl, int ku, ProviderArray<const float> a, int aOffset, int lda,
                        ProviderArray<const int> ipiv, float aNorm, float& rcond, int& info) = 0;

    // Solves op(A)*X = B for a triangular band matrix A of order n with kd diagonals beside the main one, stored as for
    // Ssbmv, lda >= kd + 1; the n x nrhs matrix B is overwritten by X. trans Conjugate is a bad argument.
    //
    // info  i > 0: diagonal element i of A, from 1, is exactly 0; A is singular and B unchanged
    virtual void Stbtrs(MatrixTriangleMode triangleMode, TransposeOperation trans, MatrixDiagonalMode diag, int n,
                        int kd, int nrhs, ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> b,
                        int bOffset, int ldb, int& info) = 0;

    // Cholesky factorization of a symmetric positive definite band matrix A of order n with k diagonals on either side
    // of the main one, stored as for Ssbmv, lda >= k + 1; the factor, a band of the same width, takes its place.
    //
    // info  as for Spotrf
    virtual void Spbtrf(MatrixTriangleMode triangleMode, int n, int k, ProviderArray<float> a, int aOffset, int lda,
                        int& info) = 0;

    // Solves A*X = B for such a matrix from its factor by Spbtrf; the n x nrhs matrix B is overwritten by X.
    virtual void Spbtrs(MatrixTriangleMode triangleMode, int n, int k, int nrhs, ProviderArray<const float> a,
                        int aOffset, int lda, ProviderArray<float> b, int bOffset, int ldb, int& info) = 0;

    // Reciprocal condition number in the 1-norm of such a matrix from its norm aNorm and its factor by Spbtrf. Needs
    // work memory, for n columns.
    //
    // rcond  1 / (norm(A)*norm(inv(A))); 0 if A is singular to working precision
    virtual void Spbcon(MatrixTriangleMode triangleMode, int n, int k, ProviderArray<const float> a, int aOffset,
                        int lda, float aNorm, float& rcond, int& info) = 0;

    // Singular value decomposition A = U*diag(s)*VT of the general m x n matrix A, whose contents are lost, by divide
    // and conquer. Needs work memory, for min(m, n) columns. k stands for min(m, n).
    //
    // jobz     'A': all of U, m x m, and of VT, n x n; 'S': the first k columns of U and k rows of VT;
    //          'O': those that fit in place of A,
    //          the first n columns of U if m >= n, else the first m rows of VT, and all of the other;
    //          'N': neither
    // s        k elements: the singular values, in descending order
    // u, ldu   U; ldu >= max(1, m). One element is enough where U is not wanted: 'N', and 'O' with m >= n.
    // vt, ldvt VT; ldvt >= its rows. One element is enough where VT is not wanted: 'N', and 'O' with m < n.
    // info     1: the iteration did not converge
    virtual void Sgesdd(char16_t jobz, int m, int n, ProviderArray<float> a, int aOffset, int lda,
                        ProviderArray<float> s, ProviderArray<float> u, int ldu, ProviderArray<float> vt, int ldvt,
                        int& info) = 0;

    // Eigenvalues and, if wanted, eigenvectors of a symmetric A of order n, whose triangle is lost: always the whole
    // spectrum. Needs work memory, for n columns.
    //
    // jobz     'N': eigenvalues; 'V': eigenvectors too
    // range    'A', 'V' or 'I', others are bad arguments; vl, vu, il, iu and abstol are not looked at
    // m        set to the number of eigenvalues found, n
    // w        n elements, from wOffset: the eigenvalues, in ascending order
    // z, ldz   with 'V' the n x n matrix whose columns are the eigenvectors, orthonormal, in the order of w;
    //          ldz >= max(1, n), with 'N' at least 1
    // isuppz   not looked at, may be null
    // info     > 0: an internal error; there are no results
    virtual void Ssyevr(char16_t jobz, char16_t range, MatrixTriangleMode triangleMode, int n, ProviderArray<float> a,
                        int aOffset, int lda, float vl, float vu, int il, int iu, float abstol, int& m,
                        ProviderArray<float> w, int wOffset, ProviderArray<float> z, int zOffset, int ldz,
                        ProviderArray<int> isuppz, int& info) = 0;

    // Eigenvalues and, if wanted, eigenvectors of a general A of order n, whose contents are lost. Needs work memory.
    //
    // jobvl, jobvr  'V': the left, the right eigenvectors are wanted; 'N': they are not
    // wr, wi        n elements each: real and imaginary parts of the eigenvalues.
    //               Of a conjugate pair, which stands side by side,
    //               the one with positive imaginary part comes first.
    // vl, vr        n x n, ldvl and ldvr >= n, or one element where they are not wanted and leading dimensions of 1:
    //               column j is the eigenvector of a real eigenvalue j, u'*A = lambda*u' on the left, A*v = lambda*v on
    //               the right; of a pair j, j + 1 the vectors are column j plus and minus i times column j + 1. Each
    //               has Euclidean norm 1 and a largest component that is real.
    // info          i > 0: the iteration found no more than the eigenvalues from i + 1, from 1, on;
    //               there are no vectors
    virtual void Sgeev(char16_t jobvl, char16_t jobvr, int n, ProviderArray<float> a, int aOffset, int lda,
                       ProviderArray<float> wr, ProviderArray<float> wi, ProviderArray<float> vl, int ldvl,
                       ProviderArray<float> vr, int ldvr, int& info) = 0;

    // B := A, both m x n: the triangle named, or with any value beyond Lower the whole matrix.
    virtual void Slacpy(MatrixTriangleMode triangleMode, int m, int n, ProviderArray<const float> a, int aOffset,
                        int lda, ProviderArray<float> b, int bOffset, int ldb) = 0;
};

class QRV_API SingleComplexLapack {
public:
    virtual ~SingleComplexLapack() = default;

    // As in SingleLapack. The transpose is Transpose, the conjugate transpose ConjugateTranspose.

    virtual void Cgetrf(int m, int n, ProviderArray<SingleComplex> a, int aOffset, int lda, ProviderArray<int> ipiv,
                        int& info) = 0;

    virtual void Cgetrs(TransposeOperation trans, int n, int nrhs, ProviderArray<const SingleComplex> a, int aOffset,
                        int lda, ProviderArray<const int> ipiv, ProviderArray<SingleComplex> b, int bOffset, int ldb,
                        int& info) = 0;

    virtual void Cgetri(int n, ProviderArray<SingleComplex> a, int aOffset, int lda, ProviderArray<const int> ipiv,
                        int& info) = 0;

    virtual void Cgecon(MatrixNorm norm, int n, ProviderArray<const SingleComplex> a, int aOffset, int lda, float aNorm,
                        float& rcond, int& info) = 0;

    // H(i) = I - tau(i)*v*v^H.
    virtual void Cgeqrf(int m, int n, ProviderArray<SingleComplex> a, int aOffset, int lda,
                        ProviderArray<SingleComplex> tau, int tauOffset, int& info) = 0;

    virtual void Ctrtrs(MatrixTriangleMode uplo, TransposeOperation trans, MatrixDiagonalMode diag, int n, int nrhs,
                        ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<SingleComplex> b,
                        int bOffset, int ldb, int& info) = 0;

    virtual void Ctrtri(MatrixTriangleMode uplo, MatrixDiagonalMode diag, int n, ProviderArray<SingleComplex> a,
                        int aOffset, int lda, int& info) = 0;

    virtual void Ctrcon(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n,
                        ProviderArray<const SingleComplex> a, int aOffset, int lda, float& rcond, int& info) = 0;

    // A is Hermitian: A = U^H*U (Upper) or L*L^H (Lower); imaginary parts on its diagonal are not read.
    virtual void Cpotrf(MatrixTriangleMode triangleMode, int n, ProviderArray<SingleComplex> a, int aOffset, int lda,
                        int& info) = 0;

    virtual void Cpotri(MatrixTriangleMode triangleMode, int n, ProviderArray<SingleComplex> a, int aOffset, int lda,
                        int& info) = 0;

    virtual void Cpotrs(MatrixTriangleMode triangleMode, int n, int nrhs, ProviderArray<const SingleComplex> a,
                        int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb, int& info) = 0;

    virtual void Cpocon(MatrixTriangleMode triangleMode, int n, ProviderArray<const SingleComplex> a, int aOffset,
                        int lda, float aNorm, float& rcond, int& info) = 0;

    // Sormqr for Q from Cgeqrf: op(Q) is Q for None, its conjugate transpose for ConjugateTranspose; others are bad
    // arguments.
    virtual void Cunmqr(MatrixOperationSide side, TransposeOperation trans, int m, int n, int k,
                        ProviderArray<const SingleComplex> a, int aOffset, int lda,
                        ProviderArray<const SingleComplex> tau, int tauOffset, ProviderArray<SingleComplex> c,
                        int cOffset, int ldc, int& info) = 0;

    // Sgesdd with a unitary U and VT; the singular values are real. With m or n 0 it returns at once: no array is
    // looked at, and info stays as it is.
    virtual void Cgesdd(char16_t jobz, int m, int n, ProviderArray<SingleComplex> a, int aOffset, int lda,
                        ProviderArray<float> s, ProviderArray<SingleComplex> u, int ldu,
                        ProviderArray<SingleComplex> vt, int ldvt, int& info) = 0;

    virtual void Clacpy(MatrixTriangleMode triangleMode, int m, int n, ProviderArray<const SingleComplex> a,
                        int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb) = 0;
};

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
