// SLASD5: a root of the secular equation of two singular values, which is quadratic.
#include <cmath>

#include "lapack/calls/svd.hpp"

namespace qrv::lapack {

// With t = sigma^2 - d(o)^2, D = d(2)^2 - d(1)^2 and w(j) = rho z(j)^2 the equation is
//
//   t^2 - (w(1) + w(2) + D) t + w(1) D = 0 for the origin o = 1,   t^2 - (w(1) + w(2) - D) t - w(2) D = 0 for o = 2
//
// The first root counts from the nearer pole, the second one from d(2).
void lasd5(int i, const float* d, const float* z, float* delta, float rho, float* sigma, float* sum) {
    const double d1 = d[0], d2 = d[1], width = (d2 - d1) * (d2 + d1), w1 = double{rho} * z[0] * z[0],
                 w2 = double{rho} * z[1] * z[1];
    const double p = w1 + w2 + width, q = w1 + w2 - width;
    double origin = d1, t = width == 0 ? 0 : 2 * w1 * width / (p + std::sqrt(std::fabs(p * p - 4 * w1 * width)));
    if (i == 1 || t > width / 2) {
        const double c = w2 * width, root = std::sqrt(q * q + 4 * c);
        origin = d2;
        if (i == 1)
            t = q > 0 ? (q + root) / 2 : c == 0 ? 0 : 2 * c / (root - q);
        else
            t = q > 0 ? -2 * c / (q + root) : (q - root) / 2;
    }
    const double eta = t == 0 ? 0 : t / (origin + std::sqrt(std::fabs(origin * origin + t)));
    for (int j = 0; j < 2; ++j) {
        delta[j] = static_cast<float>((d[j] - origin) - eta);
        sum[j] = static_cast<float>((d[j] + origin) + eta);
    }
    *sigma = static_cast<float>(origin + eta);
}

} // namespace qrv::lapack
