// Euclidean norms. Squares of floats cannot overflow in double, so the tuned builds sum them as they are; the generic
// build keeps the scaled recurrence of the published routine.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/level1_strided.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Calls each(float) for every part of every element, real before imaginary.
template <class T, class Each>
void for_each_part(int n, const T* x, int incx, Each each) {
    x = strided::first_element(n, x, incx);
    for (; n > 0; --n, x += incx) {
        if constexpr (isComplex<T>) {
            each(x->re);
            each(x->im);
        } else {
            each(*x);
        }
    }
}

template <class T>
float nrm2_in_double(int n, const T* x, int incx) {
    double sum = 0;
    for_each_part(n, x, incx, [&](float part) { sum += double{part} * part; });
    return static_cast<float>(__builtin_sqrt(sum));
}

// scale^2 * sum is the sum of squares so far; scale is the largest magnitude met.
template <class T>
float nrm2_scaled(int n, const T* x, int incx) {
    if (n < 1)
        return 0;
    if (!isComplex<T> && n == 1)
        return abs1(*x);
    double scale = 0, sum = 1;
    for_each_part(n, x, incx, [&](float part) {
        if (part == 0)
            return;
        const double size = __builtin_fabs(double{part});
        if (scale < size) {
            const double ratio = scale / size;
            sum = 1 + sum * ratio * ratio;
            scale = size;
        } else {
            const double ratio = size / scale;
            sum += ratio * ratio;
        }
    });
    return static_cast<float>(scale * __builtin_sqrt(sum));
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
