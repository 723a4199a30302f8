// SLASQ4: the shift of a dqds transform, from what the last transforms left: below the smallest eigenvalue, and near
// it.
//
// The least d of a transform bounds it from above; the table of cases is about how far below. Where the last d are the
// least ones, sums over the ratios e / q estimate how much of the eigenvector lies elsewhere.
#include "lapack/calls/dqds.hpp"

namespace qrv::lapack {
namespace {

constexpr float largeSum = 0.563F, safety = 1.01F, sumMargin = 1.05F, third = 0.333F;

// gamma, if the sum of squares of the other components is so much of that of the last one.
float rayleigh_bound(float gamma, float sum) {
    return gamma * (1 - std::sqrt(sum)) / (1 + sum);
}

// Below `value` by the residual of a vector whose other components are `beside`, with a gap to the other eigenvalues
// where there is one.
float residual_bound(float value, float beside, float gap) {
    if (gap > 0 && gap > beside * value)
        return value * (1 - safety * value * (beside / gap) * beside);
    return value * (1 - safety * beside);
}

} // namespace

// Adds product * (1 + r(k) + r(k) r(k-1) + ...), r = e / q, as far as it matters. False if a ratio is above 1.
bool Dqds::add_ratios(float& sum, float product, int k, float enough) const {
    sum += product;
    for (; k >= first && product != 0; --k) {
        const float before = product;
        if (e(k) > q(k))
            return false;
        product *= e(k) / q(k);
        sum += product;
        if (100 * std::max(product, before) < sum || enough < sum)
            break;
    }
    return true;
}

// No value was split off. Where a sum does not converge, the plain part of dmin does.
float Dqds::shift_of_last() {
    const int n = last;
    if (dmin == dn && dmin1 == dn1) {
        const float b1 = std::sqrt(q(n)) * std::sqrt(e(n - 1)), b2 = std::sqrt(q(n - 1)) * std::sqrt(e(n - 2));
        const float a2 = q(n - 1) + e(n - 1), gap2 = dmin2 - a2 - dmin2 / 4;
        const float gap1 = gap2 > 0 && gap2 > b2 ? a2 - dn - b2 / gap2 * b2 : a2 - dn - (b1 + b2);
        if (gap1 > 0 && gap1 > b1) {
            choice = -2;
            return std::max(dn - b1 / gap1 * b1, dmin / 2);
        }
        choice = -3;
        float s = dn > b1 ? dn - b1 : 0;
        if (a2 > b1 + b2)
            s = std::min(s, a2 - (b1 + b2));
        return std::max(s, third * dmin);
    }
    float sum = 0;
    if (dmin == dn || dmin == dn1) {
        choice = -4;
        bool known;
        float gamma = dn;
        if (dmin == dn) {
            known = e(n - 1) <= q(n - 1) && add_ratios(sum, e(n - 1) / q(n - 1), n - 2, largeSum);
        } else {
            gamma = dn1;
            known = other_e(n - 1) <= other_q(n) && e(n - 2) <= q(n - 2);
            if (known) {
                sum = other_e(n - 1) / other_q(n);
                known = add_ratios(sum, e(n - 2) / q(n - 2), n - 3, largeSum);
            }
        }
        sum *= sumMargin;
        return known && sum < largeSum ? rayleigh_bound(gamma, sum) : dmin / 4;
    }
    if (dmin == dn2) {
        choice = -5;
        bool known = other_e(n - 2) <= other_q(n - 1) && other_e(n - 1) <= other_q(n);
        if (known) {
            sum = other_e(n - 2) / other_q(n - 1) * (1 + other_e(n - 1) / other_q(n));
            if (n - first > 2) {
                known = e(n - 3) <= q(n - 3) && add_ratios(sum, e(n - 3) / q(n - 3), n - 4, largeSum);
                sum *= sumMargin;
            }
        }
        return known && sum < largeSum ? rayleigh_bound(dn2, sum) : dmin / 4;
    }
    // Nothing is known: a part of dmin that grows as long as it succeeds.
    damping = choice == -6 ? damping + third * (1 - damping) : choice == -18 ? third / 4 : 0.25F;
    choice = -6;
    return damping * dmin;
}

float Dqds::shift_after_one() {
    const int n = last;
    if (!(dmin1 == dn1 && dmin2 == dn2)) {
        choice = -9;
        return dmin1 == dn1 ? dmin1 / 2 : dmin1 / 4;
    }
    choice = -7;
    const float s = third * dmin1;
    float sum = 0;
    if (e(n - 1) > q(n - 1) || !add_ratios(sum, e(n - 1) / q(n - 1), n - 2, HUGE_VALF))
        return s;
    const float beside = std::sqrt(sumMargin * sum), value = dmin1 / (1 + beside * beside);
    return std::max(s, residual_bound(value, beside, dmin2 / 2 - value));
}

float Dqds::shift_after_two() {
    const int n = last;
    if (!(dmin2 == dn2 && 2 * e(n - 1) < q(n - 1))) {
        choice = -11;
        return dmin2 / 4;
    }
    choice = -10;
    const float s = third * dmin2;
    float sum = 0;
    if (e(n - 1) > q(n - 1) || !add_ratios(sum, e(n - 1) / q(n - 1), n - 2, HUGE_VALF))
        return s;
    const float beside = std::sqrt(sumMargin * sum), value = dmin2 / (1 + beside * beside);
    const float gap = q(n - 1) + e(n - 2) - std::sqrt(q(n - 2)) * std::sqrt(e(n - 2)) - value;
    return std::max(s, residual_bound(value, beside, gap));
}

void Dqds::choose_shift(int deflated) {
    if (dmin <= 0) {
        tau = -dmin;
        choice = -1;
    } else if (deflated == 0) {
        tau = shift_of_last();
    } else if (deflated == 1) {
        tau = shift_after_one();
    } else if (deflated == 2) {
        tau = shift_after_two();
    } else {
        tau = 0;
        choice = -12;
    }
}

} // namespace qrv::lapack
