// SASUM, SCASUM: sums of |re| + |im|, in floats. A NaN gives NaN; otherwise an infinity gives infinity.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/level1/level1_steps.hpp"
#include "blas/kernel/common/level1/level1_strided.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Passes of 128 floats, then 8 vectors, 4, 2, 1, between what is no whole vector. Of 128 bits each of eight vectors has
// a sum of its own, to which it is added as soon as it is loaded: all loads of 64 floats first and added in pairs took
// 1.1 times as long, passes of 32 floats 1.5 times. Wider ones, and where registers are few, are added in pairs to half
// as many sums.
constexpr int magnitudeSums = isWide || sizeof(void*) == 4 ? 4 : 8;
inline Vec sum_of_all(const Vec (&x)[8]) {
    return ((x[0] + x[4]) + (x[1] + x[5])) + ((x[2] + x[6]) + (x[3] + x[7]));
}
inline float sum_of_magnitudes(std::ptrdiff_t n, const float* x) {
    Vec sums[magnitudeSums] = {};
    if (const int head = floats_to_peel(n, x)) {
        sums[0] = abs(load_part<Vec>(x, head));
        x += head;
        n -= head;
    }
    const auto next = [&]() __attribute__((always_inline)) {
        const Vec size = in_order(abs(load_peeled(x)));
        x += Vec::lanes;
        return size;
    };
    const auto add = [&](auto count) __attribute__((always_inline)) {
        constexpr bool pairs = count() > magnitudeSums;
        repeat<pairs ? count() / 2 : count()>([&](auto i) __attribute__((always_inline)) {
            const Vec size = next();
            sums[i()] = in_order((pairs ? size + next() : size) + sums[i()]);
        });
    };
    constexpr int step = 8 * Vec::lanes, pass = 128;
    for (; n >= pass; n -= pass)
        repeat<pass / step>([&](auto) __attribute__((always_inline)) { add(Lanes<8>()); });
    for (; step < pass && n >= step; n -= step)
        add(Lanes<8>());
    if (n & 4 * Vec::lanes)
        add(Lanes<4>());
    if (n & 2 * Vec::lanes)
        add(Lanes<2>());
    if (n & Vec::lanes)
        add(Lanes<1>());
    if (const int rest = n % Vec::lanes)
        sums[3] = sums[3] + abs(load_part<Vec>(x, rest));
    return sum_of_lanes(sum_of_all(sums));
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
