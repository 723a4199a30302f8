// SLAPY2: sqrt(x^2 + y^2). The squares of floats neither overflow nor vanish in double.
#include <cmath>

#include "lapack/calls/reflectors.hpp"

namespace qrv::lapack {

float lapy2(float x, float y) {
    return static_cast<float>(std::sqrt(double{x} * x + double{y} * y));
}

} // namespace qrv::lapack
