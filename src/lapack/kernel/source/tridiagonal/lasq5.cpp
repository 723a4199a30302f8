// SLASQ5, SLASQ6: dqds transforms, and dqd transforms without shift.
#include "lapack/calls/dqds.hpp"

namespace qrv::lapack {

// A negative d means that tau was too large: nothing behind it is of use, and dmin1 stays negative unless only the last
// d failed.
void Dqds::transform() {
    float d = q(first) - tau, emin = q(first + 1), smallest = d;
    dmin1 = -q(first);
    // d of the next row. False if this one is negative. Each step waits for the one before, so on the way nothing is
    // stored and read again, and no branch depends on which d is the least; a NaN stays in d.
    const auto step = [&, shiftNow = tau](int k) {
        const float beside = e(k), sum = d + beside, next = q(k + 1);
        other_q(k) = sum;
        if (d < 0) {
            dmin = smallest;
            return false;
        }
        d = next * (d / sum) - shiftNow;
        other_e(k) = next * (beside / sum);
        smallest = smallest < d ? smallest : d;
        return true;
    };
    for (int k = first; k <= last - 3; ++k) {
        if (!step(k))
            return;
        emin = std::min(emin, other_e(k));
    }
    dn2 = d;
    dmin2 = smallest;
    if (!step(last - 2))
        return;
    dn1 = d;
    dmin1 = smallest;
    if (!step(last - 1))
        return;
    dn = d;
    dmin = smallest;
    other_q(last) = dn;
    other_e(last) = emin;
}

void Dqds::transform_unshifted() {
    constexpr float small = machine::safeMinimum;
    float d = q(first), emin = q(first + 1);
    dmin = d;
    const auto step = [&](int k) {
        const float sum = d + e(k), next = q(k + 1);
        other_q(k) = sum;
        if (sum == 0) {
            other_e(k) = 0;
            d = next;
            dmin = d;
            emin = 0;
        } else if (small * next < sum && small * sum < next) {
            const float ratio = next / sum;
            other_e(k) = e(k) * ratio;
            d *= ratio;
        } else {
            other_e(k) = next * (e(k) / sum);
            d = next * (d / sum);
        }
        dmin = least(dmin, d);
        emin = std::min(emin, other_e(k));
    };
    for (int k = first; k <= last - 3; ++k)
        step(k);
    dn2 = d;
    dmin2 = dmin;
    step(last - 2);
    dn1 = d;
    dmin1 = dmin;
    step(last - 1);
    dn = d;
    other_q(last) = dn;
    other_e(last) = emin;
}

} // namespace qrv::lapack
