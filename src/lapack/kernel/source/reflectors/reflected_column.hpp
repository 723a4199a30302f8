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

// Squares of what comes from floats are in the range of doubles, so that no modulus and no reciprocal needs a scaled
// form.
inline double modulus(double x) {
    return std::fabs(x);
}
inline double modulus(const std::complex<double>& x) {
    return std::sqrt(std::norm(x));
}
inline double reciprocal(double x) {
    return 1 / x;
}
inline std::complex<double> reciprocal(const std::complex<double>& x) {
    return std::conj(x) / std::norm(x);
}

// The reflection of [alpha; x], norm = |x|, to a multiple of a unit vector that is positive: beta = |[alpha; x]|, and
// alpha - beta. With alpha > 0 that would cancel; from beta^2 = |alpha|^2 + |x|^2 it is found as -(imag(alpha)^2 +
// |x|^2) / (real(alpha) + beta) instead. (J. Demmel, M. Hoemmen, Y. Hida, E. Riedy, Nonnegative diagonals and high
// performance on low-profile matrices from Householder QR, SIAM J. Sci. Comput. 31, 2009.)
template <class Number>
struct PositiveReflection {
    PositiveReflection(Number alpha, double norm)
        : beta(std::sqrt(std::norm(alpha) + norm * norm)), difference(alpha - beta) {
        const double re = std::real(alpha), im = std::imag(alpha);
        if (re > 0)
            difference = alpha - re - (im * im + norm * norm) / (re + beta);
    }
    double beta;
    Number difference;
};

template <class T>
class ReflectedColumn {
public:
    using Number = std::conditional_t<isComplex<T>, std::complex<double>, double>; // of the column as a whole

    // Elements of x; alpha stays where it is until `leave`.
    ReflectedColumn(int length, T& alpha, Vector<T> x)
        : n_(length), head_(alpha), x_(x), alpha_(alpha_of(alpha)), norm_(kernel::nrm2(length, x)) {}

    const Number& alpha() const { return alpha_; }
    double norm() const { return norm_; } // of x
    double length() const { return std::sqrt(std::norm(alpha_) + norm_ * norm_); }

    // Makes alpha and x so large that the length has all its digits, however small they are but for an exact zero.
    void scale_up() {
        if (length() < smallest) {
            kernel::scal(n_, 1 / smallest, x_);
            alpha_ *= double{1 / smallest};
            norm_ = kernel::nrm2(n_, x_);
            scale_ = double{smallest};
        }
    }

    // The column becomes [beta; x / divisor], with beta on the scale of `alpha` and `norm`. A divisor whose reciprocal
    // is no normal float takes two steps.
    void leave(double beta, Number divisor) {
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

    static T element(std::complex<double> x) {
        if constexpr (isComplex<T>)
            return {static_cast<float>(x.real()), static_cast<float>(x.imag())};
        else
            return static_cast<float>(x.real());
    }

private:
    // Below it a length may be that of denormal numbers, and its reciprocal need not be a float.
    static constexpr float smallest = machine::safeMinimum / machine::epsilon;
    static constexpr double farFromOne = 0x1p100;

    static double alpha_of(float x) { return x; }
    static std::complex<double> alpha_of(SingleComplex x) { return {x.re, x.im}; }

    int n_;
    T& head_;
    Vector<T> x_;
    Number alpha_;
    double norm_;
    double scale_ = 1;
};

} // namespace qrv::lapack
