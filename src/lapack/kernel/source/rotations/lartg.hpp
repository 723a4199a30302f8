// The rotation of SLARTG, inline for the sweeps, each of whose steps waits for the one before.
#pragma once

#include <cmath>

#include "lapack/calls/rotations.hpp"

namespace qrv::lapack {

// The squares of floats neither overflow nor vanish in double, so nothing has to be scaled.
inline Rotation rotation_onto_first(float f, float g) {
    if (g == 0)
        return {1, 0, f};
    if (f == 0)
        return {0, 1, g};
    const double length = std::sqrt(double{f} * f + double{g} * g);
    const double r = f < 0 && std::fabs(f) > std::fabs(g) ? -length : length;
    return {static_cast<float>(f / r), static_cast<float>(g / r), static_cast<float>(r)};
}

} // namespace qrv::lapack
