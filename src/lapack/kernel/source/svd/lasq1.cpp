// SLASQ1: singular values of a bidiagonal matrix alone, by dqds on the squares of its elements.
#include <algorithm>
#include <cmath>

#include "lapack/calls/norms.hpp"
#include "lapack/calls/rotations.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/calls/symmetric.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {

// The largest element becomes as large as its square, and sums of some, allow, so that few squares vanish.
bool lasq1(int n, float* d, const float* e, float* work) {
    const float norm = lanst(Norm::maximum, n, d, e);
    if (n < 3 || norm == 0) {
        if (n == 2) {
            const SingularPair pair = las2(d[0], e[0], d[1]);
            d[0] = pair.largest, d[1] = pair.smallest;
        } else {
            std::transform(d, d + n, d, [](float x) { return std::fabs(x); });
        }
        return true;
    }
    const double scale = std::sqrt(double{machine::epsilon} / machine::safeMinimum) / norm;
    const auto square = [&](float x) {
        const float scaled = static_cast<float>(x * scale);
        return scaled * scaled;
    };
    for (int i = 0; i < n; ++i) {
        work[2 * i] = square(d[i]);
        work[2 * i + 1] = i + 1 < n ? square(e[i]) : 0;
    }
    if (lasq2(n, work) != 0)
        return false;
    for (int i = 0; i < n; ++i)
        d[i] = static_cast<float>(std::sqrt(double{work[i]}) / scale);
    return true;
}

} // namespace qrv::lapack
