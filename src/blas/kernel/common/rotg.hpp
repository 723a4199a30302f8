// Givens rotations: SROTG, SROTMG, SROTM. Scalar work in all builds.
// Source: C. Lawson, R. Hanson, D. Kincaid, F. Krogh, Basic linear algebra subprograms for Fortran usage, ACM TOMS 5
// (1979).
#pragma once

#include "blas/kernel/common/level1_strided.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// (c, s) such that c*a + s*b = r and c*b - s*a = 0. r replaces a; z, from which (c, s) can be had again, replaces b.
inline void rotg(float& a, float& b, float& c, float& s) {
    const double a0 = a, b0 = b;
    const double size = __builtin_fabs(a0) + __builtin_fabs(b0);
    if (size == 0) {
        c = 1;
        s = a = b = 0;
        return;
    }
    const bool aIsLarger = __builtin_fabs(a0) > __builtin_fabs(b0);
    const double as = a0 / size, bs = b0 / size;
    const double r = __builtin_copysign(size * __builtin_sqrt(as * as + bs * bs), aIsLarger ? a0 : b0);
    const double cosine = a0 / r, sine = b0 / r;
    c = static_cast<float>(cosine);
    s = static_cast<float>(sine);
    a = static_cast<float>(r);
    b = static_cast<float>(aIsLarger ? sine : cosine != 0 ? 1 / cosine : 1);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
