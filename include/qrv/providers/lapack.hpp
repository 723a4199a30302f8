// The host's abstract LAPACK classes, real and complex.
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
    // ipiv   min(m, n) elements: row i, from 1, was interchanged with row ipiv[i - 1], in this order for i = 1, 2, ...
    // info   i > 0: diagonal element i of U, from 1, is exactly 0, the first such one; U is singular, the factors are
    //        complete
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
    virtual void Ctrtrs(MatrixTriangleMode uplo, TransposeOperation trans, MatrixDiagonalMode diag, int n, int nrhs,
                        ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<SingleComplex> b,
                        int bOffset, int ldb, int& info) = 0;
    virtual void Ctrtri(MatrixTriangleMode uplo, MatrixDiagonalMode diag, int n, ProviderArray<SingleComplex> a,
                        int aOffset, int lda, int& info) = 0;
    virtual void Ctrcon(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n,
                        ProviderArray<const SingleComplex> a, int aOffset, int lda, float& rcond, int& info) = 0;
    virtual void Clacpy(MatrixTriangleMode triangleMode, int m, int n, ProviderArray<const SingleComplex> a,
                        int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb) = 0;
};

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
