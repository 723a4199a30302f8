// SLARTG: a plane rotation that makes the second of two numbers zero.
#include "lapack/calls/rotations.hpp"

#include <cmath>

namespace qrv::lapack {

// The squares of floats neither overflow nor vanish in double, so nothing has to be scaled.
Rotation lartg(float f, float g) {
    if (g == 0)
        return {1, 0, f};
    if (f == 0)
        return {0, 1, g};
    const double length = std::sqrt(double{f} * f + double{g} * g);
    const double r = f < 0 && std::fabs(f) > std::fabs(g) ? -length : length;
    return {static_cast<float>(f / r), static_cast<float>(g / r), static_cast<float>(r)};
}

} // namespace qrv::lapack
