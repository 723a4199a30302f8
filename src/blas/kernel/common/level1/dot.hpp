// The sum of x*y, or of conj(x)*y. Vectors of a pass are summed apart, and the parts added at the end.
//
//   x, y    n elements each, at any alignment and increment; nothing beside them is read
//   result  0 if n <= 0; its bits change with where y begins, as passes begin on a boundary of y
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/level1/level1_steps.hpp"
#include "blas/kernel/common/level1/level1_strided.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int dotSums = 4; // as many additions as are under way at once

inline Vec sum_of_all(const Vec (&x)[dotSums]) {
    return (x[0] + x[1]) + (x[2] + x[3]);
}

template <class T>
struct DotStep;

template <>
struct DotStep<float> {
    static constexpr bool readsX = true, readsY = true, writesX = false, writesY = false;
    static constexpr int unit = 1, pass = 64;
    Vec sums[dotSums] = {Vec::zero(), Vec::zero(), Vec::zero(), Vec::zero()};

    void operator()(int slot, Vec& x, Vec& y) {
        Vec& sum = sums[slot % dotSums];
        sum = multiply_add(x, y, sum);
    }
    template <bool conjugated>
    float result() const {
        const LanePair sum = sum_pairs(sum_of_all(sums));
        return sum.even + sum.odd;
    }
};

// The products re*re and im*im fall into one vector, re*im and im*re into another; which of them are subtracted is
// settled at the end.
template <>
struct DotStep<SingleComplex> {
    static constexpr bool readsX = true, readsY = true, writesX = false, writesY = false;
    static constexpr int unit = 2, pass = 16;
    Vec straight[dotSums] = {Vec::zero(), Vec::zero(), Vec::zero(), Vec::zero()};
    Vec crossed[dotSums] = {Vec::zero(), Vec::zero(), Vec::zero(), Vec::zero()};

    void operator()(int slot, Vec& x, Vec& y) {
        x = loaded_once(x);
        y = loaded_once(y);
        Vec &re = straight[slot % dotSums], &im = crossed[slot % dotSums];
        re = multiply_add(x, y, re);
        im = multiply_add(x, swap_parts(y), im);
    }
    template <bool conjugated>
    SingleComplex result() const {
        const LanePair re = sum_pairs(sum_of_all(straight)), im = sum_pairs(sum_of_all(crossed));
        if (conjugated)
            return {re.even + re.odd, im.even - im.odd};
        return {re.even - re.odd, im.even + im.odd};
    }
};

template <bool conjugated, class T>
T dot(int n, const T* x, int incx, const T* y, int incy) {
    if (!contiguous(x, incx) || !contiguous(y, incy))
        return strided::dot<conjugated>(n, x, incx, y, incy);
    DotStep<T> step;
    walk(n, x, y, step);
    return step.template result<conjugated>();
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
