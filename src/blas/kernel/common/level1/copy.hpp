// y = x, and x and y swapped. Complex elements are copied part by part.
#pragma once

#include "blas/kernel/common/level1/level1_steps.hpp"
#include "blas/kernel/common/level1/level1_strided.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

struct CopyStep {
    static constexpr bool readsX = true, readsY = false, writesX = false, writesY = true;
    static constexpr int unit = 1, pass = 64;
    void operator()(int, Vec& x, Vec& y) const { y = x; }
};

struct SwapStep {
    static constexpr bool readsX = true, readsY = true, writesX = true, writesY = true;
    static constexpr int unit = 1, pass = 32;
    void operator()(int, Vec& x, Vec& y) const {
        const Vec kept = x;
        x = y;
        y = kept;
    }
};

template <class T>
[[gnu::always_inline]] inline void copy(int n, const T* x, int incx, T* y, int incy) {
    if (!contiguous(x, incx, y, incy)) [[unlikely]]
        return strided::copy(n, x, incx, y, incy);
    CopyStep step;
    walk(n, x, y, step);
}

// Increments of -1 pair the same elements as increments of 1.
template <class T>
[[gnu::always_inline]] inline void swap(int n, T* x, int incx, T* y, int incy) {
    if (incx != incy || (off_one_either_way(incx) | off_floats(x) | off_floats(y)) != 0) [[unlikely]]
        return strided::swap(n, x, incx, y, incy);
    SwapStep step;
    walk(n, x, y, step);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
