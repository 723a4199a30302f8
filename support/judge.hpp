// How good a result is, judged in double precision by the data it was computed from.
#pragma once

#include <complex>
#include <vector>

#include "matrix.hpp"

namespace support {

// Elements in double precision.
inline double wide(float value) {
    return value;
}
inline std::complex<double> wide(SingleComplex value) {
    return {value.Re(), value.Im()};
}
inline float narrow(double value) {
    return static_cast<float>(value);
}
inline SingleComplex narrow(std::complex<double> value) {
    return {static_cast<float>(value.real()), static_cast<float>(value.imag())};
}

template <class T>
using Wide = decltype(wide(T{}));

// Column k of b - A*x.
template <class T>
std::vector<Wide<T>> residual(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b, int k);

// How far the data would have to be changed for x to be the exact solution, relative to them: the smallest e with
// |b - A x| <= e (|A| |x| + |b|), elementwise and in the infinity norm. Residuals are accumulated in double precision.
// Of several right-hand sides the worst counts.
//
// Source: N. Higham, Accuracy and Stability of Numerical Algorithms, 2nd edition, SIAM (2002), theorems 7.1 and 7.3.
struct BackwardError {
    double componentwise = 0, normwise = 0;
};
template <class T>
BackwardError backward_error(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b);

// Largest error of x in the infinity norm, relative to x, that a condition number allows: |A^-1 r| / |x|.
double forward_error_bound(double condition, const BackwardError& error);

// A*x in double precision, rounded once.
template <class T>
Matrix<T> product(const Matrix<T>& a, const Matrix<T>& x);

// Largest absolute value of an element; NaN if there is one. And of x - y, relative to that of y.
template <class T>
double largest_element(const Matrix<T>& a);
template <class T>
double relative_difference(const Matrix<T>& x, const Matrix<T>& y);

// 0/0 counts as 0: nothing is wrong there.
inline double ratio(double error, double scale) {
    return error == 0 ? 0 : error / scale;
}

} // namespace support
