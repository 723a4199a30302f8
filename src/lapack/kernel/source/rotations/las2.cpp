// SLAS2: the singular values of a triangle of order 2.
#include <cmath>

#include "lapack/calls/rotations.hpp"

namespace qrv::lapack {

// Sum and difference of the singular values are the lengths of (f + h, g) and (f - h, g), their product is |f h|. The
// squares of floats neither overflow nor vanish in double.
SingularPair las2(float f, float g, float h) {
    const double fa = std::fabs(f), ga = g, ha = std::fabs(h);
    const double largest =
        (std::sqrt((fa + ha) * (fa + ha) + ga * ga) + std::sqrt((fa - ha) * (fa - ha) + ga * ga)) / 2;
    return {largest == 0 ? 0 : static_cast<float>(fa * ha / largest), static_cast<float>(largest)};
}

} // namespace qrv::lapack
