// SASUM, SCASUM: sums of |re| + |im|, in floats. A NaN gives NaN; otherwise an infinity gives infinity.
#pragma once

#include "blas/kernel/common/level1_steps.hpp"
#include "blas/kernel/common/level1_strided.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Passes of 64 floats, at least 8 vectors, between what lies outside the boundaries of vectors.
inline float sum_of_magnitudes(std::ptrdiff_t n, const float* x) {
    constexpr int sums = 4, step = 2 * sums * Vec::lanes, pass = step < 64 ? 64 : step;
    Vec sum[sums] = {Vec::zero(), Vec::zero(), Vec::zero(), Vec::zero()};
    if (const int head = floats_to_boundary(n, x)) {
        sum[1] = abs(load_part<Vec>(x, head));
        x += head;
        n -= head;
    }
    for (; n >= pass; n -= pass, x += pass) {
        // Adding in pairs first halves the chain of additions into each sum.
#pragma GCC unroll 8
        for (int i = 0; i < pass / Vec::lanes; i += 2) {
            const float* const pair = x + i * Vec::lanes;
            Vec& into = sum[i / 2 % sums];
            into = into + (abs(Vec::load_aligned(pair)) + abs(Vec::load_aligned(pair + Vec::lanes)));
        }
    }
    for (; n >= Vec::lanes; n -= Vec::lanes, x += Vec::lanes)
        sum[0] = sum[0] + abs(Vec::load_aligned(x));
    if (n > 0)
        sum[2] = sum[2] + abs(load_part<Vec>(x, static_cast<int>(n)));
    return sum_of_lanes((sum[0] + sum[1]) + (sum[2] + sum[3]));
}

template <class T>
float asum(int n, const T* x, int incx) {
    if (n > 0 && contiguous_either_way(x, incx))
        return sum_of_magnitudes(std::ptrdiff_t{n} * partsOf<T>, parts(x));
    return strided::asum(n, x, incx);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
