// alpha*x for a vector of complex elements as they lie in memory: two products of whole vectors.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

template <class Vector>
struct ComplexFactor {
    Vector straight, crossed;

    explicit ComplexFactor(SingleComplex alpha)
        : straight(Vector::splat(alpha.re)), crossed(Vector::alternate(-alpha.im, alpha.im)) {}
    QRV_INLINE Vector times(Vector x) const {
        x = loaded_once(x);
        return straight * x + crossed * swap_parts(x); // each product rounded, as in packed operands
    }
    QRV_INLINE Vector times_plus(Vector x, Vector y) const {
        x = loaded_once(x);
        return multiply_add(crossed, swap_parts(x), multiply_add(straight, x, y));
    }
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
