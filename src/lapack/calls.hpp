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

} // namespace qrv::lapack
