// SASUM, SCASUM: sums of |re| + |im|, in floats. A NaN gives NaN; otherwise an infinity gives infinity.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/level1/level1_steps.hpp"
#include "blas/kernel/common/level1/level1_strided.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Passes of 64 floats, at least 8 vectors, then 8, 4, 2, 1, between what is no whole vector.
inline float sum_of_magnitudes(std::ptrdiff_t n, const float* x) {
    Vec a = Vec::zero(), b = a, c = a, d = a;
    if (const int head = floats_to_peel(n, x)) {
        a = abs(load_part<Vec>(x, head));
        x += head;
        n -= head;
    }
    const auto next = [&]() __attribute__((always_inline)) {
        const Vec size = abs(load_peeled(x));
        x += Vec::lanes;
        return size;
    };
    // Adding in pairs first halves the chain of additions into each sum.
    const auto add_eight = [&]() __attribute__((always_inline)) {
        a = a + (next() + next());
        b = b + (next() + next());
        c = c + (next() + next());
        d = d + (next() + next());
    };
    constexpr int step = 8 * Vec::lanes, pass = step < 64 ? 64 : step;
    for (; n >= pass; n -= pass) {
        add_eight();
        if constexpr (step < pass)
            add_eight();
    }
    if (step < pass && n & step)
        add_eight();
    if (n & 4 * Vec::lanes) {
        a = a + next();
        b = b + next();
        c = c + next();
        d = d + next();
    }
    if (n & 2 * Vec::lanes) {
        a = a + next();
        b = b + next();
    }
    if (n & Vec::lanes)
        c = c + next();
    if (const int rest = n % Vec::lanes)
        d = d + abs(load_part<Vec>(x, rest));
    return sum_of_lanes((a + b) + (c + d));
}

// The same for so few floats that to ask for boundaries and passes takes longer.
constexpr int fewMagnitudes = isWide ? 4 * Vec::lanes : 128;
inline float sum_of_few_magnitudes(int n, const float* x) {
    if (n < Vec::lanes)
        return sum_of_lanes(abs(load_part<Vec>(x, n)));
    Vec even = Vec::zero(), odd = even;
    for (; n >= 2 * Vec::lanes; n -= 2 * Vec::lanes, x += 2 * Vec::lanes) {
        even = even + abs(Vec::load(x));
        odd = odd + abs(Vec::load(x + Vec::lanes));
    }
    if (n >= Vec::lanes) {
        even = even + abs(Vec::load(x));
        n -= Vec::lanes;
        x += Vec::lanes;
    }
    if (n > 0)
        odd = odd + abs(load_part<Vec>(x, n));
    return sum_of_lanes(even + odd);
}

template <class T>
[[gnu::always_inline]] inline float asum(int n, const T* x, int incx) {
    if (n > 0 && contiguous_either_way(x, incx)) [[likely]]
        return n < fewMagnitudes / floatsIn<T> ? sum_of_few_magnitudes(n * floatsIn<T>, parts(x))
                                               : sum_of_magnitudes(std::ptrdiff_t{n} * floatsIn<T>, parts(x));
    return strided::asum(n, x, incx);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
