// BLAS level 1 element by element: any increments, real and complex elements. What the vector code leaves over, and all
// of the generic build.
//
// A negative increment walks from the far end: element 1 of the vector then lies at index (1 - n)*inc.
#pragma once

#include <cstddef>

#include "blas/complex.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD::strided {

// Of no elements x may be null, to which nothing may be added.
template <class T>
T* first_element(int n, T* x, int incx) {
    return incx < 0 && n > 1 ? x + std::ptrdiff_t{1 - n} * incx : x;
}

// What `each` does with every pair of elements.
template <class X, class Y, class Each>
void walk(int n, X* x, int incx, Y* y, int incy, Each each) {
    x = first_element(n, x, incx);
    y = first_element(n, y, incy);
    for (; n > 0; --n, x += incx, y += incy)
        each(*x, *y);
}

template <class T>
void axpy(int n, T alpha, const T* x, int incx, T* y, int incy) {
    walk(n, x, incx, y, incy, [=](const T& xi, T& yi) { yi += alpha * xi; });
}

template <class T>
void copy(int n, const T* x, int incx, T* y, int incy) {
    walk(n, x, incx, y, incy, [](const T& xi, T& yi) { yi = xi; });
}

template <class T>
void swap(int n, T* x, int incx, T* y, int incy) {
    walk(n, x, incx, y, incy, [](T& xi, T& yi) {
        const T kept = xi;
        xi = yi;
        yi = kept;
    });
}

template <bool conjugated, class T>
T dot(int n, const T* x, int incx, const T* y, int incy) {
    T sum{};
    walk(n, x, incx, y, incy, [&](const T& xi, const T& yi) { sum += conj_if<conjugated>(xi) * yi; });
    return sum;
}

inline void rot(int n, float* x, int incx, float* y, int incy, float c, float s) {
    walk(n, x, incx, y, incy, [=](float& xi, float& yi) {
        const float rotated = c * xi + s * yi;
        yi = c * yi - s * xi;
        xi = rotated;
    });
}

// A negative increment names the same elements as its absolute value in the routines of one vector below.
template <class Scale, class T>
void scal(int n, Scale alpha, T* x, int incx) {
    for (const std::ptrdiff_t step = incx < 0 ? -std::ptrdiff_t{incx} : incx; n > 0; --n, x += step)
        *x = alpha * *x;
}

// Calls each(float) for every part of every element, real before imaginary.
template <class T, class Each>
void walk_parts(int n, const T* x, int incx, Each each) {
    for (x = first_element(n, x, incx); n > 0; --n, x += incx) {
        if constexpr (isComplex<T>) {
            each(x->re);
            each(x->im);
        } else {
            each(*x);
        }
    }
}

template <class T>
float asum(int n, const T* x, int incx) {
    float sum = 0;
    for (const std::ptrdiff_t step = incx < 0 ? -std::ptrdiff_t{incx} : incx; n > 0; --n, x += step)
        sum += abs1(*x);
    return sum;
}

// Position, from 1, of the first element of largest magnitude. An element takes over unless the best so far is at least
// as large, so a NaN does, and so does whatever follows it. Negative if there is a NaN.
template <class T>
int iamax_of_slice(int n, const T* x, int incx) {
    if (n < 1 || incx < 1)
        return 0;
    int best = 1;
    float largest = abs1(*x);
    bool allNumbers = largest == largest;
    for (int i = 1; i < n; ++i) {
        x += incx;
        const float size = abs1(*x);
        allNumbers = allNumbers && size == size;
        if (!(largest >= size)) {
            largest = size;
            best = i + 1;
        }
    }
    return allNumbers ? best : -best;
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD::strided
