// Givens rotations: SROTG, SROTMG, SROTM.
// Source: C. Lawson, R. Hanson, D. Kincaid, F. Krogh, Basic linear algebra subprograms for Fortran usage, ACM TOMS 5
// (1979).
#pragma once

#include "blas/kernel/common/level1/level1_strided.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// (c, s) such that c*a + s*b = r and c*b - s*a = 0. r replaces a; z, from which (c, s) can be had again, replaces b.
// A NaN or an infinity makes r, c and s NaN, where they depend on it; with a NaN z is 1.
inline void rotg(float& a, float& b, float& c, float& s) {
    const double a0 = a, b0 = b;
    const double size = __builtin_fabs(a0) + __builtin_fabs(b0);
    if (size == 0) {
        c = 1;
        s = a = b = 0;
        return;
    }
    const bool aIsLarger = __builtin_fabs(a0) > __builtin_fabs(b0);
    const bool bIsLarger = __builtin_fabs(b0) >= __builtin_fabs(a0); // neither is with a NaN
    const double as = a0 / size, bs = b0 / size;
    const double r = __builtin_copysign(size * __builtin_sqrt(as * as + bs * bs), aIsLarger ? a0 : b0);
    const double cosine = a0 / r, sine = b0 / r;
    c = static_cast<float>(cosine);
    s = static_cast<float>(sine);
    a = static_cast<float>(r);
    b = static_cast<float>(aIsLarger ? sine : bIsLarger && c != 0 ? 1 / cosine : 1);
}

// ---- Modified rotations -------------------------------------------------------------------------------------------

// Which elements of H, which is [ h11 h12; h21 h22 ], a parameter array holds: its first number.
constexpr float identity = -2, allOfH = -1, offDiagonalOfH = 0, diagonalOfH = 1;

// (x, y) becomes H (x, y).
struct ModifiedRotation {
    float h11, h21, h12, h22;

    // What the flag leaves out is 1, but for h21, which is -1. Any negative flag but -2 is read as -1, any positive one
    // and NaN as 1.
    static ModifiedRotation of(const float* param) {
        if (param[0] < 0)
            return {param[1], param[2], param[3], param[4]};
        if (param[0] == 0)
            return {1, param[2], param[3], 1};
        return {param[1], -1, 1, param[4]};
    }
    void apply(float& x, float& y) const {
        const float rotated = x * h11 + y * h12;
        y = x * h21 + y * h22;
        x = rotated;
    }
};

namespace strided {

// One index for both vectors where it serves both.
inline void rotm(int n, float* x, int incx, float* y, int incy, const float* param) {
    if (n <= 0 || param[0] == identity)
        return;
    const auto h = ModifiedRotation::of(param);
    if (incx != incy || incx <= 0)
        return walk(n, x, incx, y, incy, [&](float& xi, float& yi) { h.apply(xi, yi); });
    const std::ptrdiff_t step = incx, end = n * step;
    std::ptrdiff_t i = 0;
    if (step == 1) {
        for (; i + 4 <= end; i += 4) {
            h.apply(x[i], y[i]);
            h.apply(x[i + 1], y[i + 1]);
            h.apply(x[i + 2], y[i + 2]);
            h.apply(x[i + 3], y[i + 3]);
        }
    }
    for (; i < end; i += step)
        h.apply(x[i], y[i]);
}

} // namespace strided

// A modified rotation in the making.
struct RotmSetup {
    float flag;
    ModifiedRotation h;

    // All of H becomes explicit, with the ones that the flag stood for.
    void make_explicit() {
        if (flag == offDiagonalOfH) {
            h.h11 = h.h22 = 1;
        } else if (flag == diagonalOfH) {
            h.h21 = -1;
            h.h12 = 1;
        }
        flag = allOfH;
    }
    void store(float* param) const {
        param[0] = flag;
        if (flag != offDiagonalOfH) {
            param[1] = h.h11;
            param[4] = h.h22;
        }
        if (flag != diagonalOfH) {
            param[2] = h.h21;
            param[3] = h.h12;
        }
    }
};

// Brings a scale factor d into the range from 2^-24 to 2^24, and corrects what it belongs to: each(f) multiplies that
// by f. Zero, infinity and NaN have no place in the range and stay, as each of them would under any number of steps.
// The sign does not count: d2 may be negative.
template <class Each>
void rescale(float& d, Each each) {
    constexpr float gamma = 4096, gammaSquared = 16777216, gammaSquaredInverse = 5.9604645e-8F;
    const auto size = [&d] { return __builtin_fabsf(d); };
    if (d == 0 || size() == __builtin_inff())
        return;
    while (size() <= gammaSquaredInverse) {
        d *= gammaSquared;
        each(1 / gamma);
    }
    while (size() >= gammaSquared) {
        d /= gammaSquared;
        each(gamma);
    }
}

// H and the scale factors such that the second component of H (sqrt(d1) x1, sqrt(d2) y1) is 0. H, d1, d2 and x1 become
// 0 where d1 is negative, or d2 is and its component would be the larger.
inline void rotmg(float& d1, float& d2, float& x1, float y1, float* param) {
    RotmSetup made{allOfH, {0, 0, 0, 0}};
    float &h11 = made.h.h11, &h21 = made.h.h21, &h12 = made.h.h12, &h22 = made.h.h22;
    const auto give_up = [&] {
        RotmSetup{allOfH, {0, 0, 0, 0}}.store(param);
        d1 = d2 = x1 = 0;
    };
    if (d1 < 0)
        return give_up();
    const float p2 = d2 * y1;
    if (p2 == 0) {
        param[0] = identity;
        return;
    }
    const float p1 = d1 * x1, q2 = p2 * y1, q1 = p1 * x1;
    if (__builtin_fabsf(q1) > __builtin_fabsf(q2)) {
        made.flag = offDiagonalOfH;
        h21 = -y1 / x1;
        h12 = p2 / p1;
        const float u = 1 - h12 * h21;
        if (u <= 0)
            return give_up();
        d1 /= u;
        d2 /= u;
        x1 *= u;
    } else {
        if (q2 < 0)
            return give_up();
        made.flag = diagonalOfH;
        h11 = p1 / p2;
        h22 = x1 / y1;
        const float u = 1 + h11 * h22, kept = d2 / u;
        d2 = d1 / u;
        d1 = kept;
        x1 = y1 * u;
    }
    rescale(d1, [&](float factor) {
        made.make_explicit();
        x1 *= factor;
        h11 *= factor;
        h12 *= factor;
    });
    rescale(d2, [&](float factor) {
        made.make_explicit();
        h21 *= factor;
        h22 *= factor;
    });
    made.store(param);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
