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

// By the ratio of the divisor's parts, smaller over larger (Smith, 1962), in double: no step of it overflows or
// vanishes. So one infinite part of the divisor gives zeros, as published; two give NaN.
constexpr SingleComplex operator/(SingleComplex x, SingleComplex y) {
    const double xr = x.re, xi = x.im, yr = y.re, yi = y.im;
    if (__builtin_fabs(yr) >= __builtin_fabs(yi)) {
        const double ratio = yi / yr, divisor = yr + yi * ratio;
        return {static_cast<float>((xr + xi * ratio) / divisor), static_cast<float>((xi - xr * ratio) / divisor)};
    }
    const double ratio = yr / yi, divisor = yr * ratio + yi;
    return {static_cast<float>((xr * ratio + xi) / divisor), static_cast<float>((xi * ratio - xr) / divisor)};
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
