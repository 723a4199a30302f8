// y += alpha*x, a product and a sum an element; by the forms with FMA rounded once. An alpha of 0 is the caller's to
// leave out.
//
//   x, y   n elements each, at any alignment and increment; nothing is touched if n <= 0, nor anything beside them
//   order  passes of vectors where neither has gaps, else element by element: with an increment of 0 each y is the sum
//          that the one before has left
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/level1/level1_steps.hpp"
#include "blas/kernel/common/level1/level1_strided.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

template <class T>
struct AxpyStep;

template <>
struct AxpyStep<float> {
    static constexpr bool readsX = true, readsY = true, writesX = false, writesY = true;
    static constexpr int unit = 1, pass = 64;
    Vec alpha;

    explicit AxpyStep(float factor) : alpha(Vec::splat(factor)) {}
    void operator()(int, Vec& x, Vec& y) const { y = multiply_add(alpha, x, y); }
};

template <>
struct AxpyStep<SingleComplex> {
    static constexpr bool readsX = true, readsY = true, writesX = false, writesY = true;
    static constexpr int unit = 2, pass = 16;
    ComplexFactor<Vec> alpha;

    explicit AxpyStep(SingleComplex factor) : alpha(factor) {}
    void operator()(int, Vec& x, Vec& y) const { y = alpha.times_plus(x, y); }
};

template <class T>
[[gnu::always_inline]] inline void axpy(int n, T alpha, const T* x, int incx, T* y, int incy) {
    if (!contiguous(x, incx, y, incy)) [[unlikely]]
        return strided::axpy(n, alpha, x, incx, y, incy);
    AxpyStep<T> step(alpha);
    walk(n, x, y, step);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
