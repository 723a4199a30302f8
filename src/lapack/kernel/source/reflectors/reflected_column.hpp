// The column [alpha; x] that SLARFG and SLARFP turn into a multiple of the first unit vector, as both measure it and
// leave it.
//
// Numbers of the column as a whole are doubles, where its length and what is added to it cannot overflow. What has to
// be guarded is x itself: elements below the normal range have lost digits, and so has the norm of such.
#pragma once

#include <cmath>
#include <complex>
#include <type_traits>

#include "blas/calls.hpp"
#include "lapack/elements.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {

// ---- Its numbers ----------------------------------------------------------------------------------------------------

template <class T>
using Wide = std::conditional_t<isComplex<T>, std::complex<double>, double>;

inline double widened(float x) {
    return x;
}
inline std::complex<double> widened(SingleComplex x) {
    return {x.re, x.im};
}
inline float element(double x) {
    return static_cast<float>(x);
}
inline SingleComplex element(std::complex<double> x) {
    return {static_cast<float>(x.real()), static_cast<float>(x.imag())};
}
using qrv::conj; // of elements
inline double conj(double x) {
    return x;
}
// Squares of what comes from floats neither overflow nor vanish, so nothing has to be scaled here.
inline double modulus(double x) {
    return std::fabs(x);
}
inline double modulus(std::complex<double> x) {
    return std::sqrt(std::norm(x));
}
inline double reciprocal(double x) {
    return 1 / x;
}
inline std::complex<double> reciprocal(std::complex<double> x) {
    return std::conj(x) / std::norm(x);
}

// ---- What is made of it ---------------------------------------------------------------------------------------------

// The reflection of [alpha; x], square = |x|^2, to a multiple of a unit vector that is positive: beta = |[alpha; x]|,
// and alpha - beta. With alpha > 0 that would cancel; from beta^2 = |alpha|^2 + |x|^2 it is found as -(imag(alpha)^2 +
// |x|^2) / (real(alpha) + beta) instead. (J. Demmel, M. Hoemmen, Y. Hida, E. Riedy, Nonnegative diagonals and high
// performance on low-profile matrices from Householder QR, SIAM J. Sci. Comput. 31, 2009.)
template <class W>
struct PositiveReflection {
    PositiveReflection(W alpha, double square) : beta(std::sqrt(std::norm(alpha) + square)), difference(alpha - beta) {
        const double re = std::real(alpha), im = std::imag(alpha);
        if (re > 0)
            difference = alpha - re - (im * im + square) / (re + beta);
    }
    double beta;
    W difference;

    W tau() const { return -difference / beta; }
};

// Whether x is lost beside alpha, and counts as zero: or else v would be as large as alpha is beside x, without bound.
template <class W>
bool is_lost(double square, W alpha) {
    constexpr double precision = machine::precision;
    return square <= precision * precision * std::norm(alpha);
}
// Then the reflector turns alpha alone, to its modulus.
template <class W>
W turn_of(W alpha, double size) {
    return size == 0 ? W(0) : 1.0 - alpha / size;
}

// x is divided by a number of this size in one step: its reciprocal is a normal float, and no float's product with it
// is lost.
constexpr double farFromOne = 0x1p100;
inline bool is_far_from_one(double size) {
    return !(size >= 1 / farFromOne && size <= farFromOne);
}
// Below it a length may be that of denormal numbers, and its reciprocal need not be a float.
constexpr float smallestLength = machine::safeMinimum / machine::epsilon;

template <class T>
class ReflectedColumn {
public:
    // Elements of x; alpha stays where it is until `leave`.
    ReflectedColumn(int length, T& alpha, Vector<T> x)
        : n_(length), head_(alpha), x_(x), alpha_(widened(alpha)), norm_(kernel::nrm2(length, x)) {}

    const Wide<T>& alpha() const { return alpha_; }
    double square() const { return norm_ * norm_; } // of the norm of x
    double length() const { return std::sqrt(std::norm(alpha_) + square()); }

    // Makes alpha and x so large that the length has all its digits, however small they are but for an exact zero.
    void scale_up() {
        if (length() < smallestLength) {
            kernel::scal(n_, 1 / smallestLength, x_);
            alpha_ *= double{1 / smallestLength};
            norm_ = kernel::nrm2(n_, x_);
            scale_ = double{smallestLength};
        }
    }

    // The column becomes [beta; x / divisor], with beta on the scale of `alpha` and `square`. A divisor whose
    // reciprocal is no normal float takes two steps.
    void leave(double beta, Wide<T> divisor) {
        const double size = modulus(divisor), step = size < 1 / farFromOne ? farFromOne
                                                     : size > farFromOne   ? 1 / farFromOne
                                                                           : 1;
        if (step != 1)
            kernel::scal(n_, static_cast<float>(step), x_);
        kernel::scal(n_, element(reciprocal(divisor * step)), x_);
        head_ = scalar<T>(static_cast<float>(scale_ * beta));
    }
    // The column becomes [beta; 0].
    void leave_zeros(double beta) {
        for (int i = 0; i < n_; ++i)
            x_[i] = scalar<T>(0);
        head_ = scalar<T>(static_cast<float>(beta));
    }

private:
    int n_;
    T& head_;
    Vector<T> x_;
    Wide<T> alpha_;
    double norm_;
    double scale_ = 1;
};

} // namespace qrv::lapack
