// Complex numbers in single precision, with the arithmetic written out, and what lets one template serve real and
// complex elements.
//
// Kernel builds are compiled for different processors, so nothing inline may be shared between them: in a kernel
// source these functions live in the build's own namespace.
#pragma once

#include "blas/matrix.hpp"
#include "qrv/native/common.h"

namespace qrv {
using SingleComplex = qrv_complex;
}

namespace QRV_VIEW_NAMESPACE {

template <class T>
inline constexpr bool isComplex = false;
template <>
inline constexpr bool isComplex<SingleComplex> = true;

// Floats of an element.
template <class T>
inline constexpr int floatsIn = sizeof(T) / sizeof(float);

// A real number as an element.
template <class T>
constexpr T scalar(float x) {
    if constexpr (isComplex<T>)
        return {x, 0};
    else
        return x;
}

constexpr bool operator==(SingleComplex x, SingleComplex y) {
    return x.re == y.re && x.im == y.im;
}
constexpr bool operator!=(SingleComplex x, SingleComplex y) {
    return !(x == y);
}
constexpr SingleComplex operator-(SingleComplex x) {
    return {-x.re, -x.im};
}
constexpr SingleComplex operator+(SingleComplex x, SingleComplex y) {
    return {x.re + y.re, x.im + y.im};
}
constexpr SingleComplex operator-(SingleComplex x, SingleComplex y) {
    return {x.re - y.re, x.im - y.im};
}
// Four products and no repair of NaN, as in Fortran.
constexpr SingleComplex operator*(SingleComplex x, SingleComplex y) {
    return {x.re * y.re - x.im * y.im, x.re * y.im + x.im * y.re};
}
constexpr SingleComplex operator*(float x, SingleComplex y) {
    return {x * y.re, x * y.im};
}
constexpr SingleComplex& operator+=(SingleComplex& x, SingleComplex y) {
    return x = x + y;
}
constexpr SingleComplex& operator-=(SingleComplex& x, SingleComplex y) {
    return x = x - y;
}
constexpr SingleComplex& operator*=(SingleComplex& x, SingleComplex y) {
    return x = x * y;
}

// Products of floats are exact in double and neither overflow nor vanish. A divisor with one infinite part gives zeros,
// with two NaN, as the published method does.
constexpr SingleComplex operator/(SingleComplex x, SingleComplex y) {
    const double a = x.re, b = x.im, c = y.re, d = y.im, square = c * c + d * d;
    if (square == __builtin_inf()) {
        const float none = c * c == d * d ? __builtin_nanf("") : 0;
        return {x.re * none, x.im * none};
    }
    return {static_cast<float>((a * c + b * d) / square), static_cast<float>((b * c - a * d) / square)};
}

constexpr float conj(float x) {
    return x;
}
constexpr SingleComplex conj(SingleComplex x) {
    return {x.re, -x.im};
}
template <bool conjugated, class T>
constexpr T conj_if(T x) {
    if constexpr (conjugated)
        return conj(x);
    else
        return x;
}

// Without its imaginary part.
constexpr void make_real(float&) {}
constexpr void make_real(SingleComplex& x) {
    x.im = 0;
}

// |x|, or |re| + |im|: the cheap magnitude by which the published routines choose pivots.
constexpr float abs1(float x) {
    return __builtin_fabsf(x);
}
constexpr float abs1(SingleComplex x) {
    return __builtin_fabsf(x.re) + __builtin_fabsf(x.im);
}

} // namespace QRV_VIEW_NAMESPACE
