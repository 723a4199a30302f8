// SLASD4: a root of the secular equation of the singular values.
//
// In mu = sigma^2 - d(o)^2, o being the pole that is nearer to the root, the equation is
//
//   f(mu) = 1/rho + sum of z(j)^2 / (delta(j) - mu) = 0,   delta(j) = (d(j) - d(o)) (d(j) + d(o))
//
// and f grows between the poles. A step solves c + s1 / (delta(1) - mu) + s2 / (delta(2) - mu) = 0 for the two poles
// beside the root, such that the value of f and the slopes of the terms on either side fit. What leaves the bracket, or
// does not make f half as large, is replaced by a bisection. In double nothing is lost to the differences of floats.
#include <algorithm>
#include <cmath>

#include "lapack/calls/svd.hpp"

namespace qrv::lapack {
namespace {

constexpr int mostSteps = 400;
constexpr double accuracy = 0x1p-32; // of mu and of f, relative

struct Secular {
    int n;
    const float *d, *z;
    double constant; // 1/rho
    int lower;       // the last pole on the lower side of the two beside the root
    double origin;   // d of the pole that mu counts from

    double pole(int j) const { return (d[j] - origin) * (d[j] + origin); }

    struct Value {
        double f, size, slopeBelow, slopeAbove; // size: of the terms
    };
    Value at(double mu) const {
        Value v{constant, constant, 0, 0};
        add(0, lower + 1, mu, v, v.slopeBelow);
        add(lower + 1, n, mu, v, v.slopeAbove);
        return v;
    }

private:
    void add(int first, int end, double mu, Value& v, double& slope) const {
        double sum = 0, size = 0;
        for (int j = first; j < end; ++j) {
            const double quotient = z[j] / (pole(j) - mu), term = z[j] * quotient;
            sum += term;
            size += std::fabs(term);
            slope += quotient * quotient;
        }
        v.f += sum;
        v.size += size;
    }
};

// The step from mu by the equation with the two poles alone; for the last root mu is above both of them.
double two_pole_step(const Secular& q, const Secular::Value& v, double mu, bool last) {
    const double below = q.pole(q.lower) - mu, above = q.pole(q.lower + 1) - mu;
    const double c = v.f - below * v.slopeBelow - above * v.slopeAbove,
                 a = (below + above) * v.f - below * above * (v.slopeBelow + v.slopeAbove), b = below * above * v.f;
    const double root = std::sqrt(std::max(0.0, a * a - 4 * b * c));
    if (last)
        return a >= 0 ? (a + root) / (2 * c) : 2 * b / (a - root);
    return a <= 0 ? (a - root) / (2 * c) : 2 * b / (a + root);
}

// The root in [low, high], from `mu` on, where f is `v`.
bool find_root(const Secular& q, bool last, double low, double high, double& mu, Secular::Value v) {
    double before = HUGE_VAL;
    for (int step = 0; step < mostSteps; ++step) {
        if (!(std::fabs(v.f) <= HUGE_VAL))
            return false;
        if (std::fabs(v.f) <= accuracy * v.size)
            return true;
        (v.f < 0 ? low : high) = mu;
        double next = mu + two_pole_step(q, v, mu, last);
        if (!(next > low && next < high) || (step > 2 && std::fabs(v.f) > before / 2))
            next = low + (high - low) / 2;
        if (std::fabs(next - mu) <= accuracy * std::fabs(next)) {
            mu = next;
            return true;
        }
        mu = next;
        before = std::fabs(v.f);
        v = q.at(mu);
    }
    return false;
}

} // namespace

int lasd4(int n, int i, const float* d, const float* z, float* delta, float rho, float* sigma, float* sum) {
    if (n == 1) {
        *sigma = static_cast<float>(std::sqrt(double{d[0]} * d[0] + double{rho} * z[0] * z[0]));
        delta[0] = sum[0] = 1;
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
    Secular::Value v = q.at(mu);
    if (!last && v.f < 0) { // the upper pole is nearer
        q.origin = d[i + 1];
        low = mu - high;
        mu = low;
        high = 0;
        v = q.at(mu);
    } else if (!last) {
        high = mu;
    }
    if (!find_root(q, last, low, high, mu, v))
        return 1;
    const double eta = mu / (q.origin + std::sqrt(std::max(0.0, q.origin * q.origin + mu)));
    for (int j = 0; j < n; ++j) {
        delta[j] = static_cast<float>((d[j] - q.origin) - eta);
        sum[j] = static_cast<float>((d[j] + q.origin) + eta);
    }
    *sigma = static_cast<float>(q.origin + eta);
    return 0;
}

} // namespace qrv::lapack
