// The host's abstract BLAS classes, real and complex.
//
// Example. y = 2 x + y:
//
//     using namespace Corvex::Mathematics::LinearAlgebra;
//     const Providers::ParallelX86SingleLinearAlgebraProvider provider;
//     std::vector<float> x{1, 2}, y{10, 20};
//     provider.BlasLevel1()->Saxpy(2, 2.0F, x, 0, 1, y, 0, 1);
//     return y == std::vector<float>{12, 24};
#pragma once

#include "types.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

class QRV_API SingleBlasLevel1 {
public:
    virtual ~SingleBlasLevel1() = default;

    // Operations on vectors of n elements. With n <= 0 nothing is read or written, and a function gives 0. No argument
    // is reported as bad. Increments may be negative or 0 (but see Isamax); with 0 the same element is used n times. A
    // vector that is written must not overlap the other one.
    //
    // Source: C. Lawson, R. Hanson, D. Kincaid, F. Krogh, ACM TOMS 5 (1979).

    // x := alpha*x. Also with alpha = 0 x is multiplied, so a NaN in it stays.
    virtual void Sscal(int n, float alpha, ProviderArray<float> x, int xOffset, int incx) = 0;

    // y := alpha*x + y. With alpha = 0 nothing is read or written.
    virtual void Saxpy(int n, float alpha, ProviderArray<const float> x, int xOffset, int incx, ProviderArray<float> y,
                       int yOffset, int incy) = 0;

    // Sum of x(i)*y(i).
    virtual float Sdot(int n, ProviderArray<const float> x, int xOffset, int incx, ProviderArray<const float> y,
                       int yOffset, int incy) = 0;

    // x and y exchanged.
    virtual void Sswap(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset,
                       int incy) = 0;

    // y := x.
    virtual void Scopy(int n, ProviderArray<const float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset,
                       int incy) = 0;

    // Euclidean norm of x, without overflow or underflow on the way.
    virtual float Snrm2(int n, ProviderArray<const float> x, int xOffset, int incx) = 0;

    // Sum of |x(i)|.
    virtual float Sasum(int n, ProviderArray<const float> x, int xOffset, int incx) = 0;

    // Position, counted from 1, of the first element of largest |x(i)|; 0 if n < 1 or incx < 1. A NaN takes the place
    // of the largest so far, and the element behind it takes its.
    virtual int Isamax(int n, ProviderArray<const float> x, int xOffset, int incx) = 0;

    // The rotation that turns (a, b) into (r, 0).
    //
    // a, b  the pair; overwritten by r and by z, from which the rotation can be restored: z = s if |a| > |b|, else 1/c
    //       if c is not 0, else 1
    // c, s  the rotation; c = 1 and s = r = z = 0 if both are 0
    virtual void Srotg(float& a, float& b, float& c, float& s) = 0;

    // Plane rotation of every pair: (x, y) := (c*x + s*y, c*y - s*x).
    virtual void Srot(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset,
                      int incy, float c, float s) = 0;

    // The modified rotation H that makes the second component of H (sqrt(d1)*x1, sqrt(d2)*y1) 0.
    //
    // d1, d2, x1  squared scale factors and first component; updated
    // y1          second component
    // param       5 elements, overwritten: flag, h11, h21, h12, h22, as Srotm takes them
    virtual void Srotmg(float& d1, float& d2, float& x1, float y1, ProviderArray<float> param) = 0;

    // Modified rotation of every pair: (x, y) := H (x, y).
    //
    // param  5 elements: flag, h11, h21, h12, h22. flag -1: H as given; 0: h11 = h22 = 1; 1: h12 = 1, h21 = -1;
    //        -2: H is the identity, nothing is done
    virtual void Srotm(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset,
                       int incy, ProviderArray<const float> param) = 0;
};

class QRV_API SingleBlasLevel2 {
public:
    virtual ~SingleBlasLevel2() = default;

    // Operations with a matrix and vectors. The arguments mean the same everywhere:
    //
    // transA           None, Conjugate: op(A) = A; Transpose, ConjugateTranspose: op(A) = the transpose of A
    // triangleMode     which triangle of A, of order n, is stored; the other one is neither read nor written
    // diag             Unit: the diagonal of A is taken as 1 and not read
    // m, n             A is m x n (of order n where there is no m); at least 0, and with 0 nothing is read or written
    // alpha, beta      scalars; with beta = 0 y need not be set, with alpha = 0 A and x are not read
    // a, aOffset, lda  A; lda >= max(1, m), or max(1, n) where A is of order n
    // x, xOffset, incx a vector, incx not 0; y likewise. What is written must not overlap what is read.
    //
    // Bad arguments are reported as positions of the native routine of the same name, which each method names.
    //
    // Source: J. Dongarra, J. Du Croz, S. Hammarling, R. Hanson, ACM TOMS 14 (1988).

    // y := alpha*op(A)*x + beta*y. x has n elements and y m, with a transposed A x has m and y n.
    // Positions: 2 (m), 3 (n), 6 (lda), 8 (incx), 11 (incy).
    virtual void Sgemv(TransposeOperation transA, int m, int n, float alpha, ProviderArray<const float> a, int aOffset,
                       int lda, ProviderArray<const float> x, int xOffset, int incx, float beta, ProviderArray<float> y,
                       int yOffset, int incy) = 0;

    // x := op(A)*x, A triangular. Positions: 4 (n), 6 (lda), 8 (incx).
    virtual void Strmv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
                       ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> x, int xOffset,
                       int incx) = 0;

    // x := inv(op(A))*x, A triangular: the solution of op(A)*z = x takes the place of x. A singular matrix is not
    // noticed; division by a zero on the diagonal gives infinities or NaN. Positions: 4 (n), 6 (lda), 8 (incx).
    virtual void Strsv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
                       ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> x, int xOffset,
                       int incx) = 0;

    // y := alpha*A*x + beta*y, A symmetric. Positions: 2 (n), 5 (lda), 7 (incx), 10 (incy).
    virtual void Ssymv(MatrixTriangleMode triangleMode, int n, float alpha, ProviderArray<const float> a, int aOffset,
                       int lda, ProviderArray<const float> x, int xOffset, int incx, float beta, ProviderArray<float> y,
                       int yOffset, int incy) = 0;

    // A := alpha*x*y' + A. x has m elements, y n. Positions: 1 (m), 2 (n), 5 (incx), 7 (incy), 9 (lda).
    virtual void Sger(int m, int n, float alpha, ProviderArray<const float> x, int xOffset, int incx,
                      ProviderArray<const float> y, int yOffset, int incy, ProviderArray<float> a, int aOffset,
                      int lda) = 0;

    // A := alpha*x*x' + A, A symmetric. Positions: 2 (n), 5 (incx), 7 (lda).
    virtual void Ssyr(MatrixTriangleMode triangleMode, int n, float alpha, ProviderArray<const float> x, int xOffset,
                      int incx, ProviderArray<float> a, int aOffset, int lda) = 0;

    // A := alpha*x*y' + alpha*y*x' + A, A symmetric. Positions: 2 (n), 5 (incx), 7 (incy), 9 (lda).
    virtual void Ssyr2(MatrixTriangleMode triangleMode, int n, float alpha, ProviderArray<const float> x, int xOffset,
                       int incx, ProviderArray<const float> y, int yOffset, int incy, ProviderArray<float> a,
                       int aOffset, int lda) = 0;

    // Sgemv for a matrix with kl diagonals below the main one and ku above it, both at least 0. Element (i, j) of A is
    // element aOffset + ku + i - j + j*lda of a; lda >= kl + ku + 1.
    // Positions: 2 (m), 3 (n), 4 (kl), 5 (ku), 8 (lda), 10 (incx), 13 (incy).
    virtual void Sgbmv(TransposeOperation transA, int m, int n, int kl, int ku, float alpha,
                       ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> x, int xOffset,
                       int incx, float beta, ProviderArray<float> y, int yOffset, int incy) = 0;

    // Strmv for a triangular matrix with k >= 0 diagonals beside the main one, stored as for Ssbmv.
    // Positions: 4 (n), 5 (k), 7 (lda), 9 (incx).
    virtual void Stbmv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
                       int k, ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> x, int xOffset,
                       int incx) = 0;

    // Strsv for such a matrix. Positions: 4 (n), 5 (k), 7 (lda), 9 (incx).
    virtual void Stbsv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
                       int k, ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> x, int xOffset,
                       int incx) = 0;

    // Ssymv for a matrix with k >= 0 diagonals on either side of the main one. Element (i, j) of A is element
    // aOffset + k + i - j + j*lda of a in the upper triangle, aOffset + i - j + j*lda in the lower one; lda >= k + 1.
    // Positions: 2 (n), 3 (k), 6 (lda), 8 (incx), 11 (incy).
    virtual void Ssbmv(MatrixTriangleMode triangleMode, int n, int k, float alpha, ProviderArray<const float> a,
                       int aOffset, int lda, ProviderArray<const float> x, int xOffset, int incx, float beta,
                       ProviderArray<float> y, int yOffset, int incy) = 0;
};

class QRV_API SingleBlasLevel3 {
public:
    virtual ~SingleBlasLevel3() = default;

    // General matrix product C := alpha*op(A)*op(B) + beta*C.
    //
    // transA, transB  None, Conjugate: op(X) = X; Transpose, ConjugateTranspose: op(X) = the transpose of X
    // m, n, k         op(A) is m x k, op(B) is k x n, C is m x n; each at least 0
    // alpha, beta     scalars; with beta = 0 C is not read, with alpha = 0 A and B are not read
    // a, aOffset, lda A begins at element aOffset of a; m x k, lda >= max(1, m), or transposed k x m,
    //                 lda >= max(1, k)
    // b, bOffset, ldb B likewise; k x n, ldb >= max(1, k), or transposed n x k, ldb >= max(1, n)
    // c, cOffset, ldc C likewise, overwritten; ldc >= max(1, m); must not overlap A or B
    //
    // Bad arguments are reported as SGEMM's positions 3 (m), 4 (n), 5 (k), 8 (lda), 10 (ldb), 13 (ldc).
    // Source: J. Dongarra, J. Du Croz, S. Hammarling, I. Duff, ACM TOMS 16 (1990).
    virtual void Sgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k, float alpha,
                       ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> b, int bOffset,
                       int ldb, float beta, ProviderArray<float> c, int cOffset, int ldc) = 0;

    // The others have these arguments in common:
    //
    // side             whether A, the matrix with structure, stands on the left or on the right of the product
    // triangleMode     which triangle of a matrix with structure is stored; the other one is neither read nor written
    // transA, trans    op(A) as in Sgemm
    // diag             Unit: the diagonal of A is taken as 1 and not read
    //
    // Sizes, scalars, arrays and leading dimensions are as there. Bad arguments are reported as positions of the native
    // routine of the same name.

    // C := alpha*A*B + beta*C (Left, A of order m) or C := alpha*B*A + beta*C (Right, A of order n), A symmetric;
    // B and C are m x n. Positions: 3 (m), 4 (n), 7 (lda), 9 (ldb), 12 (ldc).
    virtual void Ssymm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n, float alpha,
                       ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> b, int bOffset,
                       int ldb, float beta, ProviderArray<float> c, int cOffset, int ldc) = 0;

    // B := alpha*op(A)*B (Left, A of order m) or B := alpha*B*op(A) (Right, A of order n), A triangular; B is m x n.
    // Positions: 5 (m), 6 (n), 9 (lda), 11 (ldb).
    virtual void Strmm(MatrixOperationSide side, MatrixTriangleMode triangleMode, TransposeOperation transA,
                       MatrixDiagonalMode diag, int m, int n, float alpha, ProviderArray<const float> a, int aOffset,
                       int lda, ProviderArray<float> b, int bOffset, int ldb) = 0;

    // B := the solution X of op(A)*X = alpha*B (Left) or X*op(A) = alpha*B (Right), with the arguments of the product.
    // A singular matrix is not noticed; a zero on the diagonal gives infinities or NaN.
    virtual void Strsm(MatrixOperationSide side, MatrixTriangleMode triangleMode, TransposeOperation transA,
                       MatrixDiagonalMode diag, int m, int n, float alpha, ProviderArray<const float> a, int aOffset,
                       int lda, ProviderArray<float> b, int bOffset, int ldb) = 0;

    // C := alpha*op(A)*op(A)' + beta*C, C symmetric of order n, op(A) n x k: A is n x k or, transposed, k x n.
    // Positions: 3 (n), 4 (k), 7 (lda), 10 (ldc).
    virtual void Ssyrk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, float alpha,
                       ProviderArray<const float> a, int aOffset, int lda, float beta, ProviderArray<float> c,
                       int cOffset, int ldc) = 0;

    // C := alpha*op(A)*op(B)' + alpha*op(B)*op(A)' + beta*C; B is like A. Positions: 3 (n), 4 (k), 7 (lda), 9 (ldb),
    // 12 (ldc).
    virtual void Ssyr2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, float alpha,
                        ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> b, int bOffset,
                        int ldb, float beta, ProviderArray<float> c, int cOffset, int ldc) = 0;
};

class QRV_API SingleComplexBlasLevel1 {
public:
    virtual ~SingleComplexBlasLevel1() = default;

    // As SingleBlasLevel1, for complex elements.

    // x := alpha*x. Also with alpha = 0 x is multiplied, so a NaN in it stays.
    virtual void Cscal(int n, SingleComplex alpha, ProviderArray<SingleComplex> x, int xOffset, int incx) = 0;

    // y := alpha*x + y. With alpha = 0 nothing is read or written.
    virtual void Caxpy(int n, SingleComplex alpha, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                       ProviderArray<SingleComplex> y, int yOffset, int incy) = 0;

    // Sum of conj(x(i))*y(i).
    virtual SingleComplex Cdotc(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                                ProviderArray<const SingleComplex> y, int yOffset, int incy) = 0;

    // Sum of x(i)*y(i).
    virtual SingleComplex Cdotu(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                                ProviderArray<const SingleComplex> y, int yOffset, int incy) = 0;

    // x and y exchanged.
    virtual void Cswap(int n, ProviderArray<SingleComplex> x, int xOffset, int incx, ProviderArray<SingleComplex> y,
                       int yOffset, int incy) = 0;

    // y := x.
    virtual void Ccopy(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                       ProviderArray<SingleComplex> y, int yOffset, int incy) = 0;

    // Euclidean norm of x, without overflow or underflow on the way.
    virtual float Scnrm2(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) = 0;

    // Sum of |re| + |im| over x.
    virtual float Scasum(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) = 0;

    // Position, counted from 1, of the first element of largest |re| + |im|; 0 if n < 1 or incx < 1. A NaN takes the
    // place of the largest so far, and the element behind it takes its.
    virtual int Icamax(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) = 0;
};

class QRV_API SingleComplexBlasLevel2 {
public:
    virtual ~SingleComplexBlasLevel2() = default;

    // Operations with a matrix and vectors. The arguments mean the same everywhere:
    //
    // transA           None: op(A) = A; Transpose, ConjugateTranspose: its transpose or conjugate transpose; Conjugate
    //                  alone is a bad option
    // triangleMode     which triangle of A, of order n, is stored; the other one is neither read nor written
    // diag             Unit: the diagonal of A is taken as 1 and not read
    // m, n             A is m x n (of order n where there is no m); at least 0, and with 0 nothing is read or written
    // alpha, beta      scalars; with beta = 0 y need not be set, with alpha = 0 A and x are not read
    // a, aOffset, lda  A; lda >= max(1, m), or max(1, n) where A is of order n
    // x, xOffset, incx a vector, incx not 0; y likewise. What is written must not overlap what is read.
    //
    // Bad arguments are reported as positions of the native routine of the same name, which each method names;
    // the options are among them.
    //
    // Source: J. Dongarra, J. Du Croz, S. Hammarling, R. Hanson, ACM TOMS 14 (1988).

    // y := alpha*op(A)*x + beta*y. x has n elements and y m, with a transposed A x has m and y n.
    // Positions: 1 (transA), 2 (m), 3 (n), 6 (lda), 8 (incx), 11 (incy).
    virtual void Cgemv(TransposeOperation transA, int m, int n, SingleComplex alpha,
                       ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<const SingleComplex> x,
                       int xOffset, int incx, SingleComplex beta, ProviderArray<SingleComplex> y, int yOffset,
                       int incy) = 0;

    // y := alpha*A*x + beta*y, A Hermitian; imaginary parts on its diagonal are not read.
    // Positions: 2 (n), 5 (lda), 7 (incx), 10 (incy).
    virtual void Chemv(MatrixTriangleMode triangleMode, int n, SingleComplex alpha,
                       ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<const SingleComplex> x,
                       int xOffset, int incx, SingleComplex beta, ProviderArray<SingleComplex> y, int yOffset,
                       int incy) = 0;

    // x := op(A)*x, A triangular. Positions: 2 (transA), 4 (n), 6 (lda), 8 (incx).
    virtual void Ctrmv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
                       ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<SingleComplex> x,
                       int xOffset, int incx) = 0;

    // x := inv(op(A))*x, A triangular: the solution of op(A)*z = x takes the place of x. A singular matrix is not
    // noticed; division by a zero on the diagonal gives infinities or NaN.
    // Positions: 2 (transA), 4 (n), 6 (lda), 8 (incx).
    virtual void Ctrsv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
                       ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<SingleComplex> x,
                       int xOffset, int incx) = 0;

    // A := alpha*x*y' + A, y' the transpose of y. x has m elements, y n.
    // Positions: 1 (m), 2 (n), 5 (incx), 7 (incy), 9 (lda).
    virtual void Cgeru(int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                       ProviderArray<const SingleComplex> y, int yOffset, int incy, ProviderArray<SingleComplex> a,
                       int aOffset, int lda) = 0;

    // The same with the conjugate transpose of y.
    virtual void Cgerc(int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                       ProviderArray<const SingleComplex> y, int yOffset, int incy, ProviderArray<SingleComplex> a,
                       int aOffset, int lda) = 0;

    // A := alpha*x*x^H + A, A Hermitian, alpha real; the diagonal comes out real. Positions: 2 (n), 5 (incx), 7 (lda).
    virtual void Cher(MatrixTriangleMode triangleMode, int n, float alpha, ProviderArray<const SingleComplex> x,
                      int xOffset, int incx, ProviderArray<SingleComplex> a, int aOffset, int lda) = 0;

    // A := alpha*x*y^H + conj(alpha)*y*x^H + A, A Hermitian; the diagonal comes out real.
    // Positions: 2 (n), 5 (incx), 7 (incy), 9 (lda).
    virtual void Cher2(MatrixTriangleMode triangleMode, int n, SingleComplex alpha,
                       ProviderArray<const SingleComplex> x, int xOffset, int incx,
                       ProviderArray<const SingleComplex> y, int yOffset, int incy, ProviderArray<SingleComplex> a,
                       int aOffset, int lda) = 0;
};

class QRV_API SingleComplexBlasLevel3 {
public:
    virtual ~SingleComplexBlasLevel3() = default;

    // General matrix product C := alpha*op(A)*op(B) + beta*C, with the arguments of SingleBlasLevel3::Sgemm.
    //
    // transA, transB  None: op(X) = X; Transpose, ConjugateTranspose: its transpose or conjugate transpose; Conjugate
    //                 alone is a bad option
    //
    // Bad arguments are reported as CGEMM's positions 1 (transA), 2 (transB), 3 (m), 4 (n), 5 (k), 8 (lda), 10 (ldb),
    // 13 (ldc). Source: J. Dongarra, J. Du Croz, S. Hammarling, I. Duff, ACM TOMS 16 (1990).
    virtual void Cgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k, SingleComplex alpha,
                       ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<const SingleComplex> b,
                       int bOffset, int ldb, SingleComplex beta, ProviderArray<SingleComplex> c, int cOffset,
                       int ldc) = 0;

    // The others have these arguments in common:
    //
    // side             whether A, the matrix with structure, stands on the left or on the right of the product
    // triangleMode     which triangle of a matrix with structure is stored; the other one is neither read nor written
    // transA, trans    op(A) as in Cgemm
    // diag             Unit: the diagonal of A is taken as 1 and not read
    //
    // Sizes, scalars, arrays and leading dimensions are as there. Bad arguments are reported as positions of the native
    // routine of the same name.

    // C := alpha*A*B + beta*C (Left, A of order m) or C := alpha*B*A + beta*C (Right, A of order n), A Hermitian:
    // imaginary parts on its diagonal are not read; B and C are m x n. Positions: 3 (m), 4 (n), 7 (lda), 9 (ldb), 12
    // (ldc).
    virtual void Chemm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n, SingleComplex alpha,
                       ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<const SingleComplex> b,
                       int bOffset, int ldb, SingleComplex beta, ProviderArray<SingleComplex> c, int cOffset,
                       int ldc) = 0;

    // C := alpha*op(A)*op(A)^H + beta*C, C Hermitian of order n, its diagonal comes out real; op(A) is n x k: A is n x
    // k with None, k x n with ConjugateTranspose, and Transpose is a bad option. Positions: 2 (trans), 3 (n), 4 (k), 7
    // (lda), 10 (ldc).
    virtual void Cherk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, float alpha,
                       ProviderArray<const SingleComplex> a, int aOffset, int lda, float beta,
                       ProviderArray<SingleComplex> c, int cOffset, int ldc) = 0;

    // C := alpha*op(A)*op(B)^H + conj(alpha)*op(B)*op(A)^H + beta*C; B is like A, all else as in Cherk.
    // Positions: 2 (trans), 3 (n), 4 (k), 7 (lda), 9 (ldb), 12 (ldc).
    virtual void Cher2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, SingleComplex alpha,
                        ProviderArray<const SingleComplex> a, int aOffset, int lda,
                        ProviderArray<const SingleComplex> b, int bOffset, int ldb, float beta,
                        ProviderArray<SingleComplex> c, int cOffset, int ldc) = 0;

    // B := alpha*op(A)*B (Left, A of order m) or B := alpha*B*op(A) (Right, A of order n), A triangular; B is m x n.
    // Positions: 3 (transA), 5 (m), 6 (n), 9 (lda), 11 (ldb).
    virtual void Ctrmm(MatrixOperationSide side, MatrixTriangleMode triangleMode, TransposeOperation transA,
                       MatrixDiagonalMode diag, int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> a,
                       int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb) = 0;

    // B := the solution X of op(A)*X = alpha*B (Left) or X*op(A) = alpha*B (Right), with the arguments of the product.
    // A singular matrix is not noticed; a zero on the diagonal gives infinities or NaN.
    virtual void Ctrsm(MatrixOperationSide side, MatrixTriangleMode triangleMode, TransposeOperation transA,
                       MatrixDiagonalMode diag, int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> a,
                       int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb) = 0;
};

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
