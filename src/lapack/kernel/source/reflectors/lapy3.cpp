// SLAPY3: sqrt(x^2 + y^2 + z^2). The squares of floats neither overflow nor vanish in double.
#include <cmath>

#include "lapack/calls/reflectors.hpp"

namespace qrv::lapack {

float lapy3(float x, float y, float z) {
    return static_cast<float>(std::sqrt(double{x} * x + double{y} * y + double{z} * z));
}

} // namespace qrv::lapack
