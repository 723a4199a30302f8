// What LAPACK needs to serve real and complex elements by one template, beside blas/complex.hpp.
#pragma once

#include <cmath>

#include "blas/complex.hpp"
#include "blas/options.hpp"

namespace qrv::lapack {

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

constexpr float real_part(float x) {
    return x;
}
constexpr float real_part(SingleComplex x) {
    return x.re;
}

// x := conj(x)
template <class T>
void conjugate([[maybe_unused]] int n, [[maybe_unused]] Vector<T> x) {
    if constexpr (isComplex<T>)
        for (int i = 0; i < n; ++i)
            x[i].im = -x[i].im;
}

} // namespace qrv::lapack
