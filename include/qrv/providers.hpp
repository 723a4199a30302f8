// Provider classes: the object through which a host library does its dense linear algebra.
//
//     using namespace Corvex::Mathematics::LinearAlgebra;
//     Providers::ParallelX86SingleLinearAlgebraProvider provider;
//     provider.BlasLevel3()->Sgemm(TransposeOperation::None, TransposeOperation::None, m, n, k,
//                                  1.0f, a, 0, m, b, 0, k, 0.0f, c, 0, m);
//
// Offsets, increments and leading dimensions count elements. No length is checked against a dimension or an offset.
// Methods keep nothing between calls and may be called from any number of threads at once.
//
//   x, xOffset, incx  a vector of n elements (or as many as told): it begins at element xOffset of the array and takes
//                     every incx-th element, 1 + (n - 1)*|incx| of them in all. With a negative increment its elements
//                     are counted from the far end: the first one lies at xOffset + (n - 1)*|incx|.
//   a, aOffset, lda   a column-major matrix: its element (i, j), from 0, is element aOffset + i + j*lda of the array.
//
// Every array argument must hold at least one element, also where the routine would not touch it: a null array
// raises NullReferenceError, an empty one IndexOutOfRangeError, before any work is done. A bad dimension or
// option is reported on standard output (see qrv/native.h) and leaves the outputs unchanged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "export.h"

namespace Corvex::Mathematics {

// Two floats, real part first. An array of them is the interleaved layout of the native routines.
class SingleComplex {
public:
    static const SingleComplex Zero;

    constexpr SingleComplex() = default;
    constexpr SingleComplex(float re) : re_(re) {} // implicit on purpose: imaginary part 0
    constexpr SingleComplex(float re, float im) : re_(re), im_(im) {}

    constexpr float Re() const { return re_; }
    constexpr float Im() const { return im_; }
    explicit constexpr operator float() const { return re_; }

    friend constexpr bool operator==(SingleComplex, SingleComplex) = default;

private:
    float re_ = 0;
    float im_ = 0;
};
inline constexpr SingleComplex SingleComplex::Zero{};
static_assert(sizeof(SingleComplex) == 8 && std::is_standard_layout_v<SingleComplex>);

} // namespace Corvex::Mathematics

namespace Corvex::Mathematics::LinearAlgebra {

enum class TransposeOperation : std::int32_t { None = 0, Transpose = 1, ConjugateTranspose = 2, Conjugate = 3 };
enum class MatrixTriangleMode : std::int32_t { Upper = 0, Lower = 1 };
enum class MatrixDiagonalMode : std::int32_t { NonUnit = 0, Unit = 1 };
enum class MatrixOperationSide : std::int32_t { Left = 0, Right = 1 };
enum class MatrixNorm : std::int32_t { Frobenius = 0, One = 1, Infinity = 2, MaximumAbsolute = 3 };
enum class MatrixStructure : std::int32_t { General = 0 }; // carried by sparse signatures, never interpreted

} // namespace Corvex::Mathematics::LinearAlgebra

namespace Corvex::Mathematics::LinearAlgebra::Providers {

// An array argument was null.
class QRV_API NullReferenceError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

// An array argument had no element 0.
class QRV_API IndexOutOfRangeError : public std::out_of_range {
public:
    using std::out_of_range::out_of_range;
};

// A method's own work array would have had a negative size: a negative dimension gives one.
class QRV_API InvalidArraySizeError : public std::length_error {
public:
    using std::length_error::length_error;
};

// View of a host array: the address of element 0 and the number of elements, or null. Made from a pointer and
// a count, a span, or anything a span is made from (vector, std::array, built-in array). It owns nothing.
template <class T>
class ProviderArray {
public:
    constexpr ProviderArray() = default;
    constexpr ProviderArray(std::nullptr_t) {}
    constexpr ProviderArray(T* data, std::size_t count) : data_(data), count_(count), null_(data == nullptr) {}

    template <class Range>
    requires std::is_constructible_v<std::span<T>, Range&> &&
        (!std::is_same_v<std::remove_cv_t<Range>, ProviderArray>)constexpr ProviderArray(Range& range)
        : ProviderArray(std::span<T>(range)) {}
    constexpr ProviderArray(std::span<T> elements) : data_(elements.data()), count_(elements.size()), null_(false) {}

    // A view of writable elements serves where they are only read.
    template <class U>
    requires std::is_same_v<T, const U>
    constexpr ProviderArray(const ProviderArray<U>& other)
        : data_(other.data_), count_(other.count_), null_(other.null_) {}

    // Address of element 0. Fails on a null and on an empty array.
    constexpr T* Address() const {
        if (null_)
            throw NullReferenceError("array argument is null");
        if (count_ == 0)
            throw IndexOutOfRangeError("array argument has no elements");
        return data_;
    }

private:
    template <class>
    friend class ProviderArray;

    T* data_ = nullptr;
    std::size_t count_ = 0;
    bool null_ = true; // an empty array is not null, even if its address is
};

// ---- The host's abstract classes --------------------------------------------------------------------------

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
    // info   i > 0: the diagonal element i of U is exactly 0, the first such one; U is singular, the factors are
    // complete
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

class QRV_API SingleSparseBlas {
public:
    virtual ~SingleSparseBlas() = default;

    // Products and solves with a sparse matrix in compressed columns: a holds its values, indx their rows, pntrb and
    // pntre where each column begins and ends.
    //
    // transA                   whether the matrix, its transpose or its conjugate transpose is meant
    // structure, triangleMode, diagonalMode   what of the matrix is stored
    // a, indx, pntrb, pntre    the matrix, m x k, for solves m x m
    // x, y                     vectors
    // b, c                     column-major matrices of n columns

    // y := alpha*op(A)*x + beta*y.
    virtual void Scscmv(TransposeOperation transA, int m, int k, float alpha, MatrixStructure structure,
                        MatrixTriangleMode triangleMode, MatrixDiagonalMode diagonalMode, ProviderArray<const float> a,
                        ProviderArray<const int> indx, ProviderArray<const int> pntrb, ProviderArray<const int> pntre,
                        ProviderArray<const float> x, int xOffset, int incx, float beta, ProviderArray<float> y,
                        int yOffset, int incy) = 0;

    // y := alpha*inv(op(A))*x.
    virtual void Scscsv(TransposeOperation transA, int m, float alpha, MatrixStructure structure,
                        MatrixTriangleMode triangleMode, MatrixDiagonalMode diagonalMode, ProviderArray<const float> a,
                        ProviderArray<const int> indx, ProviderArray<const int> pntrb, ProviderArray<const int> pntre,
                        ProviderArray<const float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset,
                        int incy) = 0;

    // C := alpha*op(A)*B + beta*C.
    virtual void Scscmm(TransposeOperation transA, int m, int n, int k, float alpha, MatrixStructure structure,
                        MatrixTriangleMode triangleMode, MatrixDiagonalMode diagonalMode, ProviderArray<const float> a,
                        ProviderArray<const int> indx, ProviderArray<const int> pntrb, ProviderArray<const int> pntre,
                        ProviderArray<const float> b, int bOffset, int ldb, float beta, ProviderArray<float> c,
                        int cOffset, int ldc) = 0;
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
    // transA, transB  None: op(X) = X; Transpose, ConjugateTranspose: op(X) = the transpose or conjugate transpose of
    // X;
    //                 Conjugate alone is a bad option
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

class QRV_API SingleComplexSparseBlas {
public:
    virtual ~SingleComplexSparseBlas() = default;
};

class QRV_API SingleLinearAlgebraProvider {
public:
    virtual ~SingleLinearAlgebraProvider() = default;

    virtual SingleBlasLevel1* BlasLevel1() const = 0;
    virtual SingleBlasLevel2* BlasLevel2() const = 0;
    virtual SingleBlasLevel3* BlasLevel3() const = 0;
    virtual SingleLapack* Lapack() const = 0;
    virtual SingleSparseBlas* SparseBlas() const = 0;
    virtual SingleComplexBlasLevel1* ComplexBlasLevel1() const = 0;
    virtual SingleComplexBlasLevel2* ComplexBlasLevel2() const = 0;
    virtual SingleComplexBlasLevel3* ComplexBlasLevel3() const = 0;
    virtual SingleComplexLapack* ComplexLapack() const = 0;
    virtual SingleComplexSparseBlas* ComplexSparseBlas() const = 0;
};

// ---- This library's providers -----------------------------------------------------------------------------

class QRV_API ParallelX86SingleBlasLevel1 : public SingleBlasLevel1 {
public:
    ParallelX86SingleBlasLevel1();

    void Sscal(int n, float alpha, ProviderArray<float> x, int xOffset, int incx) final;
    void Saxpy(int n, float alpha, ProviderArray<const float> x, int xOffset, int incx, ProviderArray<float> y,
               int yOffset, int incy) final;
    float Sdot(int n, ProviderArray<const float> x, int xOffset, int incx, ProviderArray<const float> y, int yOffset,
               int incy) final;
    void Sswap(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset,
               int incy) final;
    void Scopy(int n, ProviderArray<const float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset,
               int incy) final;
    float Snrm2(int n, ProviderArray<const float> x, int xOffset, int incx) final;
    float Sasum(int n, ProviderArray<const float> x, int xOffset, int incx) final;
    int Isamax(int n, ProviderArray<const float> x, int xOffset, int incx) final;
    void Srotg(float& a, float& b, float& c, float& s) final;
    void Srot(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset, int incy,
              float c, float s) final;
    void Srotmg(float& d1, float& d2, float& x1, float y1, ProviderArray<float> param) final;
    void Srotm(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset, int incy,
               ProviderArray<const float> param) final;
};

class QRV_API ParallelX86SingleBlasLevel2 : public SingleBlasLevel2 {
public:
    ParallelX86SingleBlasLevel2();

    void Sgemv(TransposeOperation transA, int m, int n, float alpha, ProviderArray<const float> a, int aOffset, int lda,
               ProviderArray<const float> x, int xOffset, int incx, float beta, ProviderArray<float> y, int yOffset,
               int incy) final;
    void Strmv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
               ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> x, int xOffset, int incx) final;
    void Strsv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
               ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> x, int xOffset, int incx) final;
    void Ssymv(MatrixTriangleMode triangleMode, int n, float alpha, ProviderArray<const float> a, int aOffset, int lda,
               ProviderArray<const float> x, int xOffset, int incx, float beta, ProviderArray<float> y, int yOffset,
               int incy) final;
    void Sger(int m, int n, float alpha, ProviderArray<const float> x, int xOffset, int incx,
              ProviderArray<const float> y, int yOffset, int incy, ProviderArray<float> a, int aOffset, int lda) final;
    void Ssyr(MatrixTriangleMode triangleMode, int n, float alpha, ProviderArray<const float> x, int xOffset, int incx,
              ProviderArray<float> a, int aOffset, int lda) final;
    void Ssyr2(MatrixTriangleMode triangleMode, int n, float alpha, ProviderArray<const float> x, int xOffset, int incx,
               ProviderArray<const float> y, int yOffset, int incy, ProviderArray<float> a, int aOffset, int lda) final;
    void Sgbmv(TransposeOperation transA, int m, int n, int kl, int ku, float alpha, ProviderArray<const float> a,
               int aOffset, int lda, ProviderArray<const float> x, int xOffset, int incx, float beta,
               ProviderArray<float> y, int yOffset, int incy) final;
    void Stbmv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n, int k,
               ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> x, int xOffset, int incx) final;
    void Stbsv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n, int k,
               ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> x, int xOffset, int incx) final;
    void Ssbmv(MatrixTriangleMode triangleMode, int n, int k, float alpha, ProviderArray<const float> a, int aOffset,
               int lda, ProviderArray<const float> x, int xOffset, int incx, float beta, ProviderArray<float> y,
               int yOffset, int incy) final;
};

class QRV_API ParallelX86SingleBlasLevel3 : public SingleBlasLevel3 {
public:
    ParallelX86SingleBlasLevel3();

    void Sgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k, float alpha,
               ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> b, int bOffset, int ldb,
               float beta, ProviderArray<float> c, int cOffset, int ldc) final;
    void Ssymm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n, float alpha,
               ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> b, int bOffset, int ldb,
               float beta, ProviderArray<float> c, int cOffset, int ldc) final;
    void Strmm(MatrixOperationSide side, MatrixTriangleMode triangleMode, TransposeOperation transA,
               MatrixDiagonalMode diag, int m, int n, float alpha, ProviderArray<const float> a, int aOffset, int lda,
               ProviderArray<float> b, int bOffset, int ldb) final;
    void Strsm(MatrixOperationSide side, MatrixTriangleMode triangleMode, TransposeOperation transA,
               MatrixDiagonalMode diag, int m, int n, float alpha, ProviderArray<const float> a, int aOffset, int lda,
               ProviderArray<float> b, int bOffset, int ldb) final;
    void Ssyrk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, float alpha,
               ProviderArray<const float> a, int aOffset, int lda, float beta, ProviderArray<float> c, int cOffset,
               int ldc) final;
    void Ssyr2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, float alpha,
                ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> b, int bOffset, int ldb,
                float beta, ProviderArray<float> c, int cOffset, int ldc) final;
};

class QRV_API ParallelX86SingleLapack : public SingleLapack {
public:
    ParallelX86SingleLapack();

    void Sgetrf(int m, int n, ProviderArray<float> a, int aOffset, int lda, ProviderArray<int> ipiv, int& info) final;
    void Sgetrs(TransposeOperation trans, int n, int nrhs, ProviderArray<const float> a, int aOffset, int lda,
                ProviderArray<const int> ipiv, ProviderArray<float> b, int bOffset, int ldb, int& info) final;
    void Sgetri(int n, ProviderArray<float> a, int aOffset, int lda, ProviderArray<const int> ipiv, int& info) final;
    void Sgecon(MatrixNorm norm, int n, ProviderArray<const float> a, int aOffset, int lda, float aNorm, float& rcond,
                int& info) final;
    float Slange(MatrixNorm norm, int m, int n, ProviderArray<const float> a, int aOffset, int lda) final;
    void Strtrs(MatrixTriangleMode triangleMode, TransposeOperation trans, MatrixDiagonalMode diag, int n, int nrhs,
                ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> b, int bOffset, int ldb,
                int& info) final;
    void Strtri(MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n, ProviderArray<float> a, int aOffset,
                int lda, int& info) final;
    void Strcon(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n,
                ProviderArray<const float> a, int aOffset, int lda, float& rcond, int& info) final;
    float Slantr(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int m, int n,
                 ProviderArray<const float> a, int aOffset, int lda) final;
    void Slacpy(MatrixTriangleMode triangleMode, int m, int n, ProviderArray<const float> a, int aOffset, int lda,
                ProviderArray<float> b, int bOffset, int ldb) final;
};

// Operations that do nothing: they look at no argument, also null arrays, and return. The provider never hands out an
// object of this class.
class QRV_API ParallelX86SingleSparseBlas : public SingleSparseBlas {
public:
    ParallelX86SingleSparseBlas();

    void Scscmv(TransposeOperation transA, int m, int k, float alpha, MatrixStructure structure,
                MatrixTriangleMode triangleMode, MatrixDiagonalMode diagonalMode, ProviderArray<const float> a,
                ProviderArray<const int> indx, ProviderArray<const int> pntrb, ProviderArray<const int> pntre,
                ProviderArray<const float> x, int xOffset, int incx, float beta, ProviderArray<float> y, int yOffset,
                int incy) final;
    void Scscsv(TransposeOperation transA, int m, float alpha, MatrixStructure structure,
                MatrixTriangleMode triangleMode, MatrixDiagonalMode diagonalMode, ProviderArray<const float> a,
                ProviderArray<const int> indx, ProviderArray<const int> pntrb, ProviderArray<const int> pntre,
                ProviderArray<const float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset,
                int incy) final;
    void Scscmm(TransposeOperation transA, int m, int n, int k, float alpha, MatrixStructure structure,
                MatrixTriangleMode triangleMode, MatrixDiagonalMode diagonalMode, ProviderArray<const float> a,
                ProviderArray<const int> indx, ProviderArray<const int> pntrb, ProviderArray<const int> pntre,
                ProviderArray<const float> b, int bOffset, int ldb, float beta, ProviderArray<float> c, int cOffset,
                int ldc) final;
};

class QRV_API NativeComplexBlasLevel1 : public SingleComplexBlasLevel1 {
public:
    NativeComplexBlasLevel1();

    void Cscal(int n, SingleComplex alpha, ProviderArray<SingleComplex> x, int xOffset, int incx) final;
    void Caxpy(int n, SingleComplex alpha, ProviderArray<const SingleComplex> x, int xOffset, int incx,
               ProviderArray<SingleComplex> y, int yOffset, int incy) final;
    SingleComplex Cdotc(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                        ProviderArray<const SingleComplex> y, int yOffset, int incy) final;
    SingleComplex Cdotu(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                        ProviderArray<const SingleComplex> y, int yOffset, int incy) final;
    void Cswap(int n, ProviderArray<SingleComplex> x, int xOffset, int incx, ProviderArray<SingleComplex> y,
               int yOffset, int incy) final;
    void Ccopy(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx, ProviderArray<SingleComplex> y,
               int yOffset, int incy) final;
    float Scnrm2(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) final;
    float Scasum(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) final;
    int Icamax(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) final;
};

class QRV_API NativeComplexBlasLevel2 : public SingleComplexBlasLevel2 {
public:
    NativeComplexBlasLevel2();

    void Cgemv(TransposeOperation transA, int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> a,
               int aOffset, int lda, ProviderArray<const SingleComplex> x, int xOffset, int incx, SingleComplex beta,
               ProviderArray<SingleComplex> y, int yOffset, int incy) final;
    void Chemv(MatrixTriangleMode triangleMode, int n, SingleComplex alpha, ProviderArray<const SingleComplex> a,
               int aOffset, int lda, ProviderArray<const SingleComplex> x, int xOffset, int incx, SingleComplex beta,
               ProviderArray<SingleComplex> y, int yOffset, int incy) final;
    void Ctrmv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
               ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<SingleComplex> x, int xOffset,
               int incx) final;
    void Ctrsv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
               ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<SingleComplex> x, int xOffset,
               int incx) final;
    void Cgeru(int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> x, int xOffset, int incx,
               ProviderArray<const SingleComplex> y, int yOffset, int incy, ProviderArray<SingleComplex> a, int aOffset,
               int lda) final;
    void Cgerc(int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> x, int xOffset, int incx,
               ProviderArray<const SingleComplex> y, int yOffset, int incy, ProviderArray<SingleComplex> a, int aOffset,
               int lda) final;
    void Cher(MatrixTriangleMode triangleMode, int n, float alpha, ProviderArray<const SingleComplex> x, int xOffset,
              int incx, ProviderArray<SingleComplex> a, int aOffset, int lda) final;
    void Cher2(MatrixTriangleMode triangleMode, int n, SingleComplex alpha, ProviderArray<const SingleComplex> x,
               int xOffset, int incx, ProviderArray<const SingleComplex> y, int yOffset, int incy,
               ProviderArray<SingleComplex> a, int aOffset, int lda) final;
};

class QRV_API NativeComplexBlasLevel3 : public SingleComplexBlasLevel3 {
public:
    NativeComplexBlasLevel3();

    void Cgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k, SingleComplex alpha,
               ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<const SingleComplex> b,
               int bOffset, int ldb, SingleComplex beta, ProviderArray<SingleComplex> c, int cOffset, int ldc) final;
    void Chemm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n, SingleComplex alpha,
               ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<const SingleComplex> b,
               int bOffset, int ldb, SingleComplex beta, ProviderArray<SingleComplex> c, int cOffset, int ldc) final;
    void Cherk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, float alpha,
               ProviderArray<const SingleComplex> a, int aOffset, int lda, float beta, ProviderArray<SingleComplex> c,
               int cOffset, int ldc) final;
    void Cher2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, SingleComplex alpha,
                ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<const SingleComplex> b,
                int bOffset, int ldb, float beta, ProviderArray<SingleComplex> c, int cOffset, int ldc) final;
    void Ctrmm(MatrixOperationSide side, MatrixTriangleMode triangleMode, TransposeOperation transA,
               MatrixDiagonalMode diag, int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> a,
               int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb) final;
    void Ctrsm(MatrixOperationSide side, MatrixTriangleMode triangleMode, TransposeOperation transA,
               MatrixDiagonalMode diag, int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> a,
               int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb) final;

    // Operations of this class alone.

    // As Chemm, A symmetric.
    virtual void Csymm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n, SingleComplex alpha,
                       ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<const SingleComplex> b,
                       int bOffset, int ldb, SingleComplex beta, ProviderArray<SingleComplex> c, int cOffset, int ldc);

    // C := alpha*op(A)*op(A)' + beta*C, C symmetric; None and Transpose are the options. Positions as Cherk.
    virtual void Csyrk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, SingleComplex alpha,
                       ProviderArray<const SingleComplex> a, int aOffset, int lda, SingleComplex beta,
                       ProviderArray<SingleComplex> c, int cOffset, int ldc);

    // C := alpha*op(A)*op(B)' + alpha*op(B)*op(A)' + beta*C, C symmetric. Positions as Cher2k.
    virtual void Csyr2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, SingleComplex alpha,
                        ProviderArray<const SingleComplex> a, int aOffset, int lda,
                        ProviderArray<const SingleComplex> b, int bOffset, int ldb, SingleComplex beta,
                        ProviderArray<SingleComplex> c, int cOffset, int ldc);
};

class QRV_API NativeComplexLapack : public SingleComplexLapack {
public:
    NativeComplexLapack();

    void Cgetrf(int m, int n, ProviderArray<SingleComplex> a, int aOffset, int lda, ProviderArray<int> ipiv,
                int& info) final;
    void Cgetrs(TransposeOperation trans, int n, int nrhs, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                ProviderArray<const int> ipiv, ProviderArray<SingleComplex> b, int bOffset, int ldb, int& info) final;
    void Cgetri(int n, ProviderArray<SingleComplex> a, int aOffset, int lda, ProviderArray<const int> ipiv,
                int& info) final;
    void Cgecon(MatrixNorm norm, int n, ProviderArray<const SingleComplex> a, int aOffset, int lda, float aNorm,
                float& rcond, int& info) final;
    void Ctrtrs(MatrixTriangleMode uplo, TransposeOperation trans, MatrixDiagonalMode diag, int n, int nrhs,
                ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset,
                int ldb, int& info) final;
    void Ctrtri(MatrixTriangleMode uplo, MatrixDiagonalMode diag, int n, ProviderArray<SingleComplex> a, int aOffset,
                int lda, int& info) final;
    void Ctrcon(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n,
                ProviderArray<const SingleComplex> a, int aOffset, int lda, float& rcond, int& info) final;
    void Clacpy(MatrixTriangleMode triangleMode, int m, int n, ProviderArray<const SingleComplex> a, int aOffset,
                int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb) final;
};

// The provider object of a host. The getters give the same objects for the provider's whole life;
// SparseBlas and ComplexSparseBlas give null.
class QRV_API ParallelX86SingleLinearAlgebraProvider : public SingleLinearAlgebraProvider {
public:
    ParallelX86SingleLinearAlgebraProvider();
    ~ParallelX86SingleLinearAlgebraProvider() override;

    SingleBlasLevel1* BlasLevel1() const override;
    SingleBlasLevel2* BlasLevel2() const override;
    SingleBlasLevel3* BlasLevel3() const override;
    SingleLapack* Lapack() const override;
    SingleSparseBlas* SparseBlas() const override;
    SingleComplexBlasLevel1* ComplexBlasLevel1() const override;
    SingleComplexBlasLevel2* ComplexBlasLevel2() const override;
    SingleComplexBlasLevel3* ComplexBlasLevel3() const override;
    SingleComplexLapack* ComplexLapack() const override;
    SingleComplexSparseBlas* ComplexSparseBlas() const override;

private:
    std::unique_ptr<SingleBlasLevel1> blasLevel1;
    std::unique_ptr<SingleBlasLevel2> blasLevel2;
    std::unique_ptr<SingleBlasLevel3> blasLevel3;
    std::unique_ptr<SingleLapack> lapack;
    std::unique_ptr<SingleSparseBlas> sparseBlas; // null
    std::unique_ptr<SingleComplexBlasLevel1> complexBlasLevel1;
    std::unique_ptr<SingleComplexBlasLevel2> complexBlasLevel2;
    std::unique_ptr<SingleComplexBlasLevel3> complexBlasLevel3;
    std::unique_ptr<SingleComplexLapack> complexLapack;
    std::unique_ptr<SingleComplexSparseBlas> complexSparseBlas; // null
};

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
