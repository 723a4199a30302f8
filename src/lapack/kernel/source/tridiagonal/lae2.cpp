// SLAE2, SLAEV2: eigenvalues and one eigenvector of a symmetric 2 x 2 matrix, each to some roundings.
#include <cmath>

#include "lapack/calls/symmetric.hpp"

namespace qrv::lapack {
namespace {

// sqrt(x^2 + y^2) for x, y >= 0, without forming the larger square.
float length(float x, float y) {
    const float large = x > y ? x : y, small = x > y ? y : x;
    if (x == y)
        return large * static_cast<float>(std::sqrt(2.0));
    const float ratio = small / large;
    return large * std::sqrt(1 + ratio * ratio);
}

} // namespace

Eigenvalues2 lae2(float a, float b, float c) {
    const float sum = a + c, root = length(std::fabs(a - c), std::fabs(b + b));
    const float large = std::fabs(a) > std::fabs(c) ? a : c, small = std::fabs(a) > std::fabs(c) ? c : a;
    if (sum == 0)
        return {root / 2, -root / 2};
    // The second one from the determinant, in the order that cannot overflow.
    const float first = sum < 0 ? (sum - root) / 2 : (sum + root) / 2;
    return {first, large / first * small - b / first * b};
}

Eigenvector2 laev2(float a, float b, float c) {
    const float twice = b + b, difference = a - c;
    const float root = length(std::fabs(difference), std::fabs(twice));
    const bool right = difference >= 0;
    const float x = right ? difference + root : difference - root;
    float cosine = 1, sine = 0;
    if (std::fabs(x) > std::fabs(twice)) {
        const float cotangent = -twice / x;
        sine = 1 / std::sqrt(1 + cotangent * cotangent);
        cosine = cotangent * sine;
    } else if (twice != 0) {
        const float tangent = -x / twice;
        cosine = 1 / std::sqrt(1 + tangent * tangent);
        sine = tangent * cosine;
    }
    // That is the vector of the smaller or of the larger eigenvalue, by the signs.
    if (right == !(a + c < 0))
        return {lae2(a, b, c), -sine, cosine};
    return {lae2(a, b, c), cosine, sine};
}

} // namespace qrv::lapack
