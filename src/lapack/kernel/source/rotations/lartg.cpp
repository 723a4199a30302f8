// SLARTG: a plane rotation that makes the second of two numbers zero.
#include "lapack/kernel/source/rotations/lartg.hpp"

namespace qrv::lapack {

Rotation lartg(float f, float g) {
    return rotation_onto_first(f, g);
}

} // namespace qrv::lapack
