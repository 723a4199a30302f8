// The secular equation of singular values (SLASD4, SLASD3): what is divided once for each pair of a pole and a root. In
// double, whose lanes are handled in two halves of those of a vector of floats.
#pragma once

#include <cstring>

#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

template <class Body, class... Lanes>
QRV_INLINE void each_half(const Body& body, Lanes&... x) {
    body(x.low...);
    if constexpr (Vec::lanes > 1)
        body(x.high...);
}

// Sums of z(j)^2 / (p(j) - mu) and of its derivative, p(j) = (d(j) - origin) (d(j) + origin). In the lanes behind the
// last element z is 0, and p - mu is minus the square of the point where the equation is asked.
inline void secular_sums(int n, const float* d, const float* z, double origin, double mu, double& sum, double& slope) {
    auto sums = Doubles<Vec>::zero(), slopes = sums;
    const auto add = [&](Vec dPart, Vec zPart) __attribute__((always_inline)) {
        auto poles = Doubles<Vec>::widen(dPart), z2 = Doubles<Vec>::widen(zPart);
        each_half(
            [&](auto& total, auto& totalSlope, auto& pole, auto& x) __attribute__((always_inline)) {
                const auto quotient = x / ((pole - origin) * (pole + origin) - mu);
                total += x * quotient;
                totalSlope += quotient * quotient;
            },
            sums, slopes, poles, z2);
    };
    int j = 0;
    for (; j + Vec::lanes <= n; j += Vec::lanes)
        add(Vec::load(d + j), Vec::load(z + j));
    if (j < n)
        add(load_part<Vec>(d + j, n - j), load_part<Vec>(z + j, n - j));
    sum = sums.sum();
    slope = slopes.sum();
}

// product(i) *= difference(i)*sum(i) / ((d(i) - other) (d(i) + other))
inline void secular_factors(int n, const float* d, float other, const float* difference, const float* sum,
                            double* product) {
    const double pole = other;
    int i = 0;
    for (; i + Vec::lanes <= n; i += Vec::lanes) {
        auto own = Doubles<Vec>::widen(Vec::load(d + i)), less = Doubles<Vec>::widen(Vec::load(difference + i)),
             more = Doubles<Vec>::widen(Vec::load(sum + i));
        double* to = product + i;
        each_half(
            [&](auto& x, auto& minus, auto& plus) __attribute__((always_inline)) {
                auto factor = minus * plus / ((x - pole) * (x + pole)), before = factor;
                std::memcpy(&before, to, sizeof before);
                factor *= before;
                std::memcpy(to, &factor, sizeof factor);
                to += sizeof factor / sizeof *to;
            },
            own, less, more);
    }
    for (; i < n; ++i)
        product[i] *= double{difference[i]} * sum[i] / ((d[i] - pole) * (d[i] + pole));
}

// right(i) := z(i) / (left(i)*right(i)), left(i) := d(i)*right(i)
inline void secular_vectors(int n, const float* d, const float* z, float* left, float* right) {
    int i = 0;
    for (; i + Vec::lanes <= n; i += Vec::lanes) {
        const Vec x{Vec::load(z + i).v / Vec::load(left + i).v / Vec::load(right + i).v};
        x.store(right + i);
        (Vec::load(d + i) * x).store(left + i);
    }
    for (; i < n; ++i) {
        right[i] = z[i] / left[i] / right[i];
        left[i] = d[i] * right[i];
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
