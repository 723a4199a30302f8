// Norms and what estimates them, by value, for the rows of their routines and for other families. Instantiated for both
// element types.
#pragma once

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

// scale^2 * sumsq, a sum of squares that does not overflow.
struct ScaledSquares {
    float scale, sumsq;
    void store(float* toScale, float* toSumsq) const {
        *toScale = scale;
        *toSumsq = sumsq;
    }
};

// The same with the squares of the parts of n elements added.
template <class T>
ScaledSquares lassq(int n, const T* x, int incx, ScaledSquares sum);

// Norms of an m x n matrix; of a triangle or trapezoid of one. work: m floats for the infinity norm, else not touched.
template <class T>
float lange(Norm norm, int m, int n, Matrix<const T> a, float* work);
template <class T>
float lantr(Norm norm, Uplo uplo, Diag diag, int m, int n, Matrix<const T> a, float* work);

// B := A, the named part of an m x n matrix only.
enum class Part : char { upper = 'U', lower = 'L', whole = 'A' };

constexpr Part part_of(char uplo) {
    return is_option(uplo, 'U') ? Part::upper : is_option(uplo, 'L') ? Part::lower : Part::whole;
}
template <class T>
void lacpy(Part part, int m, int n, Matrix<const T> a, Matrix<T> b);

// x := x / divisor, without overflow on the way; x is not scaled by more than it must be.
template <class T>
void rscl(int n, float divisor, T* x, int incx);

// One step of the estimate of the 1-norm of a matrix A by its products with vectors, for which it asks: *kase = 0
// begins and ends the estimate; with 1 the caller has to replace x by A x, with 2 by the adjoint of A times x, and to
// call again. *est is the estimate then, and v = A w with norm(v) / norm(w) = *est. isgn: n ints for real elements;
// isave: 3 ints.
template <class T>
void lacn2(int n, T* v, T* x, int* isgn, float* est, int* kase, int* isave);

} // namespace qrv::lapack
