// SROTM of the builds with vectors. H is whole, whatever the flag: products with 1 and -1 are exact.
#pragma once

#include "blas/kernel/common/level1/level1_steps.hpp"
#include "blas/kernel/common/level1/level1_strided.hpp"
#include "blas/kernel/common/level1/rotg.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

struct RotmStep {
    static constexpr bool readsX = true, readsY = true, writesX = true, writesY = true;
    static constexpr int unit = 1, pass = 16;
    Vec h11, h21, h12, h22;

    explicit RotmStep(const ModifiedRotation& h)
        : h11(Vec::splat(h.h11)), h21(Vec::splat(h.h21)), h12(Vec::splat(h.h12)), h22(Vec::splat(h.h22)) {}
    void operator()(int, Vec& x, Vec& y) const {
        const Vec rotated = multiply_add(h11, x, h12 * y);
        y = multiply_add(h22, y, h21 * x);
        x = rotated;
    }
};

inline void rotm(int n, float* x, int incx, float* y, int incy, const float* param) {
    if (n <= 0 || param[0] == identity || !contiguous(x, incx) || !contiguous(y, incy))
        return strided::rotm(n, x, incx, y, incy, param);
    RotmStep step(ModifiedRotation::of(param));
    walk(n, x, y, step);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
