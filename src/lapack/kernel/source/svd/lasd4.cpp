// SLASD4: a root of the secular equation of the singular values.
//
// In mu = sigma^2 - d(o)^2, o being the pole that is nearer to the root, the equation is
//
//   f(mu) = 1/rho + sum of z(j)^2 / (delta(j) - mu) = 0,   delta(j) = (d(j) - d(o)) (d(j) + d(o))
//
// (secular_root.hpp). In double nothing is lost to the differences of floats.
#include "blas/calls.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/secular_root.hpp"

namespace qrv::lapack {
namespace {

struct Secular {
    int n;
    const float *d, *z;
    double constant; // 1/rho
    int lower;       // the last pole on the lower side of the two beside the root
    double origin;   // d of the pole that mu counts from

    double pole(int j) const { return (d[j] - origin) * (d[j] + origin); }

    SecularValue at(double mu) const {
        SecularValue v{constant, constant, 0, 0};
        add(0, lower + 1, mu, v, v.slopeBelow);
        add(lower + 1, n, mu, v, v.slopeAbove);
        return v;
    }

private:
    // Terms on one side of the root have one sign.
    void add(int first, int end, double mu, SecularValue& v, double& slope) const {
        double sum;
        kernel::secular_sums(end - first, d + first, z + first, origin, mu, &sum, &slope);
        v.f += sum;
        v.size += std::fabs(sum);
    }
};

} // namespace

int lasd4(int n, int i, const float* d, const float* z, float* delta, float rho, float* sigma, float* sum) {
    if (n == 1) {
        *sigma = static_cast<float>(std::sqrt(double{d[0]} * d[0] + double{rho} * z[0] * z[0]));
        delta[0] = sum[0] = 1;
        return 0;
    }
    if (n == 2) {
        lasd5(i, d, z, delta, rho, sigma, sum);
        return 0;
    }
    const bool last = i == n - 1;
    Secular q{n, d, z, 1 / double{rho}, last ? i - 1 : i, d[i]};
    double low = 0, high, mu;
    if (last) {
        double squares = 0;
        for (int j = 0; j < n; ++j)
            squares += double{z[j]} * z[j];
        high = rho * squares;
    } else {
        high = q.pole(i + 1);
    }
    mu = high / 2;
    SecularValue v = q.at(mu);
    if (!last && v.f < 0) { // the upper pole is nearer
        q.origin = d[i + 1];
        low = mu - high;
        mu = low; // the same point
        high = 0;
    } else if (!last) {
        high = mu;
    }
    if (!find_secular_root([&](double x) { return q.at(x); }, q.pole(q.lower), q.pole(q.lower + 1), last, low, high, mu,
                           v))
        return 1;
    const double eta = mu / (q.origin + std::sqrt(std::max(0.0, q.origin * q.origin + mu)));
#pragma omp simd
    for (int j = 0; j < n; ++j) {
        delta[j] = static_cast<float>((d[j] - q.origin) - eta);
        sum[j] = static_cast<float>((d[j] + q.origin) + eta);
    }
    *sigma = static_cast<float>(q.origin + eta);
    return 0;
}

} // namespace qrv::lapack
