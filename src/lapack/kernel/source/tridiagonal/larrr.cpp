// SLARRR: whether a tridiagonal matrix defines its eigenvalues to high relative accuracy, as it does if it is
// diagonally dominant after scaling.
#include <cmath>

#include "lapack/calls/symmetric.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {

bool larrr(int n, const float* d, const float* e) {
    const float smallestRoot = std::sqrt(machine::smallNumber);
    float before = 0, root = n > 0 ? std::sqrt(std::fabs(d[0])) : 1;
    if (!(root >= smallestRoot))
        return false;
    for (int i = 0; i < n - 1; ++i) {
        const float next = std::sqrt(std::fabs(d[i + 1]));
        if (!(next >= smallestRoot))
            return false;
        const float beside = std::fabs(e[i]) / (root * next);
        if (!(before + beside < 0.999F))
            return false;
        before = beside;
        root = next;
    }
    return true;
}

} // namespace qrv::lapack
