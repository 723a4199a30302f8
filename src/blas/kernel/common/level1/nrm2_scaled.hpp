// SNRM2, SCNRM2 of the generic build: the scaled recurrence of the published routine.
//
// A NaN gives NaN; otherwise an infinity gives infinity, as does a norm above the largest float.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/level1/level1_strided.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// scale^2 * sum is the sum of squares so far; scale is the largest magnitude met.
template <class T>
float nrm2(int n, const T* x, int incx) {
    if (n < 1)
        return 0;
    if (!isComplex<T> && n == 1)
        return abs1(*x);
    double scale = 0, sum = 1;
    strided::walk_parts(n, x, incx, [&](float part) {
        if (part == 0)
            return;
        const double size = __builtin_fabs(double{part});
        if (scale < size) {
            const double ratio = scale / size;
            sum = 1 + sum * ratio * ratio;
            scale = size;
        } else {
            const double ratio = size == scale ? 1 : size / scale; // of two infinities too
            sum += ratio * ratio;
        }
    });
    return static_cast<float>(scale * __builtin_sqrt(sum));
}

// Of floats, whose squares neither overflow nor vanish in double.
template <class T>
double squares(int n, const T* x, int incx) {
    double sum = 0;
    strided::walk_parts(n, x, incx, [&](float part) { sum += double{part} * part; });
    return sum;
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
