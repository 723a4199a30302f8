// The plane rotation: x becomes c*x + s*y, and y becomes c*y - s*x.
#pragma once

#include "blas/kernel/common/level1/level1_steps.hpp"
#include "blas/kernel/common/level1/level1_strided.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

struct RotStep {
    static constexpr bool readsX = true, readsY = true, writesX = true, writesY = true;
    static constexpr int unit = 1, pass = 64;
    Vec c, s, minusS;

    RotStep(float cosine, float sine) : c(Vec::splat(cosine)), s(Vec::splat(sine)), minusS(Vec::splat(-sine)) {}
    void operator()(int, Vec& x, Vec& y) const {
        x = loaded_once(x); // each goes into two products
        y = loaded_once(y);
        const Vec rotated = multiply_add(c, x, s * y);
        y = multiply_add(c, y, minusS * x);
        x = rotated;
    }
};

[[gnu::always_inline]] inline void rot(int n, float* x, int incx, float* y, int incy, float c, float s) {
    if (!contiguous(x, incx, y, incy)) [[unlikely]]
        return strided::rot(n, x, incx, y, incy, c, s);
    RotStep step(c, s);
    walk(n, x, y, step);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
