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

// As many additions as are under way at once. Of complex elements vectors of 128 bits have three and three, a pass
// each: four took 1.15 times as long, whatever the pass.
template <class T>
constexpr int dotSums = isComplex<T> && !isWide ? 3 : 4;

inline Vec sum_of_all(const Vec (&x)[3]) {
    return (x[0] + x[1]) + x[2];
}

template <class T>
struct DotStep;

template <>
struct DotStep<float> {
    static constexpr bool readsX = true, readsY = true, writesX = false, writesY = false;
    static constexpr int unit = 1, pass = 64;
    static constexpr int sumCount = dotSums<float>;
    Vec sums[sumCount] = {Vec::zero(), Vec::zero(), Vec::zero(), Vec::zero()};

    void operator()(int slot, Vec& x, Vec& y) {
        Vec& sum = sums[slot % sumCount];
        sum = multiply_add(x, y, sum);
    }
    template <bool conjugated>
    float result() const {
        return sum_of_lanes(sum_of_all(sums));
    }
};

// The products re*re and im*im fall into one vector, re*im and im*re into another; which of them are subtracted is
// settled at the end.
template <>
struct DotStep<SingleComplex> {
    static constexpr bool readsX = true, readsY = true, writesX = false, writesY = false;
    static constexpr int sumCount = dotSums<SingleComplex>, unit = 2, pass = sumCount * Vec::lanes;
    Vec straight[sumCount] = {}, crossed[sumCount] = {};

    void operator()(int slot, Vec& x, Vec& y) {
        x = loaded_once(x);
        const Vec swapped = parts_swapped(y);
        Vec &re = straight[slot % sumCount], &im = crossed[slot % sumCount];
        re = multiply_add(x, y, re);
        im = multiply_add(x, swapped, im);
    }
    template <bool conjugated>
    SingleComplex result() const {
        const Vec4f parts = sum_pairs(sum_quads(sum_of_all(straight)), sum_quads(sum_of_all(crossed)));
        const Vec4f signs = conjugated ? Vec4f::alternate(0, -0.0F) : Vec4f::alternate(-0.0F, 0);
        SingleComplex sum;
        store_first<2>(&sum.re, parts + change_signs(swap_halves(parts), signs));
        return sum;
    }
};

template <bool conjugated, class T>
[[gnu::always_inline]] inline T dot(int n, const T* x, int incx, const T* y, int incy) {
    if (!contiguous(x, incx, y, incy)) [[unlikely]]
        return strided::dot<conjugated>(n, x, incx, y, incy);
    DotStep<T> step;
    walk(n, x, y, step);
    return step.template result<conjugated>();
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
