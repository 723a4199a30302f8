// x = alpha*x. A negative increment names the same elements as its absolute value.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/level1/level1_steps.hpp"
#include "blas/kernel/common/level1/level1_strided.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// The vector is the walk's y.
template <class Scale>
struct ScalStep;

// A real factor, of real elements or of the parts of complex ones.
template <>
struct ScalStep<float> {
    static constexpr bool readsX = false, readsY = true, writesX = false, writesY = true;
    static constexpr int unit = 1, pass = 32;
    Vec alpha;

    explicit ScalStep(float factor) : alpha(Vec::splat(factor)) {}
    void operator()(int, Vec&, Vec& x) const { x = alpha * x; }
};

template <>
struct ScalStep<SingleComplex> {
    static constexpr bool readsX = false, readsY = true, writesX = false, writesY = true;
    static constexpr int unit = 2, pass = 16;
    ComplexFactor<Vec> alpha;

    explicit ScalStep(SingleComplex factor) : alpha(factor) {}
    void operator()(int, Vec&, Vec& x) const { x = alpha.times(x); }
};

template <class Scale, class T>
[[gnu::always_inline]] inline void scal(int n, Scale alpha, T* x, int incx) {
    if (!contiguous_either_way(x, incx)) [[unlikely]]
        return strided::scal(n, alpha, x, incx);
    ScalStep<Scale> step(alpha);
    walk(n, x, x, step);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
