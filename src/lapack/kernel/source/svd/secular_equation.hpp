// The secular equation of a merge: what its roots tell of z.
#pragma once

#include <cmath>

#include "blas/calls.hpp"

namespace qrv::lapack {

// z becomes one of length 1. Result: the square of its length.
inline float take_length(int kept, float* z) {
    const float length = kernel::nrm2(kept, Vector<float>{z});
    for (int i = 0; i < kept; ++i)
        z[i] /= length;
    return length * length;
}

// The vectors of roots that were rounded are not orthogonal, but those of a matrix with another z that has the rounded
// values exactly are:
//
//   z(i)^2 = product over the roots of sigma(j)^2 - d(i)^2, by that over the other poles of d(j)^2 - d(i)^2
//
// Root j gives this factor of it, of its difference d(i) - sigma(j) and sum; the last root has no pole.
inline double factor_of_root(const float* dsigma, int kept, int i, int j, float difference, float sum) {
    const double square = double{difference} * sum;
    if (j == kept - 1)
        return square;
    const double own = dsigma[i], other = dsigma[i > j ? j : j + 1];
    return square / ((own - other) * (own + other));
}

inline float corrected(double square, float z) {
    return std::copysign(static_cast<float>(std::sqrt(std::fabs(square))), z);
}

} // namespace qrv::lapack
