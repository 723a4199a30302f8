// LAPACK by value, for the families built on others. Instantiated for both element types.
#pragma once

#include <cmath>

#include "blas/complex.hpp"
#include "blas/options.hpp"

namespace qrv::lapack {

enum class Norm : char { maximum = 'M', one = 'O', infinity = 'I', frobenius = 'F' };

constexpr Norm norm_of(char option) {
    return is_option(option, 'M')                    ? Norm::maximum
           : is_option(option, 'I')                  ? Norm::infinity
           : is_option(option, 'O') || option == '1' ? Norm::one
                                                     : Norm::frobenius;
}

// The option that makes the adjoint of a matrix of T: the transpose is that of a real one.
template <class T>
inline constexpr Op adjoint = isComplex<T> ? Op::adjoint : Op::transpose;

// |x|, of which abs1 is the cheap form. The squares of floats neither overflow nor vanish in double.
inline float modulus(float x) {
    return std::fabs(x);
}
inline float modulus(SingleComplex x) {
    return static_cast<float>(std::sqrt(double{x.re} * x.re + double{x.im} * x.im));
}

// scale^2 * sumsq, a sum of squares that does not overflow.
struct ScaledSquares {
    float scale, sumsq;
};

// The same with the squares of the parts of n elements added.
template <class T>
ScaledSquares lassq(int n, const T* x, int incx, ScaledSquares sum);

// Norms of an m x n matrix; of a triangle or trapezoid of one. work: m floats for the infinity norm, else not touched.
template <class T>
float lange(Norm norm, int m, int n, Matrix<const T> a, float* work);
template <class T>
float lantr(Norm norm, Uplo uplo, Diag diag, int m, int n, Matrix<const T> a, float* work);

// Interchanges row k with row ipiv[k - 1] in all n columns, for k from k1 to k2 (counted from 1, as in ipiv) or, with
// a negative increment, from k2 down to k1, which undoes it. Pivots after the first lie |incx| places apart.
template <class T>
void laswp(int n, Matrix<T> a, int k1, int k2, const int* ipiv, int incx = 1);

// x := x / divisor, without overflow on the way; x is not scaled by more than it must be.
template <class T>
void rscl(int n, float divisor, T* x, int incx);

// One step of the estimate of the 1-norm of a matrix A by its products with vectors, for which it asks: *kase = 0
// begins and ends the estimate; with 1 the caller has to replace x by A x, with 2 by the adjoint of A times x, and to
// call again. *est is the estimate then, and v = A w with norm(v) / norm(w) = *est. isgn: n ints for real elements;
// isave: 3 ints.
template <class T>
void lacn2(int n, T* v, T* x, int* isgn, float* est, int* kase, int* isave);

// Solves op(A) y = scale x for a triangular A and overwrites x with y; scale is the result, chosen so that y does not
// overflow. It is at most 1 unless a column of A has a sum near overflow, and 0 if A is singular, where y is a null
// vector, or if no float is so small. cnorm: the sums of abs1 over each column without its diagonal element, computed
// here unless they are given.
template <class T>
float latrs(Uplo uplo, Op op, Diag diag, bool cnormGiven, int n, Matrix<const T> a, T* x, float* cnorm);

// Position, from 1, of the first element on the diagonal that is exactly 0; 0 if there is none.
template <class T>
int zero_on_diagonal(int n, Matrix<const T> a) {
    for (int i = 0; i < n; ++i)
        if (a(i, i) == scalar<T>(0))
            return i + 1;
    return 0;
}

// A := inv(A) for a triangular A without zeros on its diagonal, column by column.
template <class T>
void trti2(Uplo uplo, Diag diag, int n, Matrix<T> a);

// The same in blocks. Result: 0, or the position of a zero on the diagonal, with nothing done.
template <class T>
int trtri(Uplo uplo, Diag diag, int n, Matrix<T> a);

} // namespace qrv::lapack
