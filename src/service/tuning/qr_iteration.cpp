// Parameters of the multishift QR iteration, and IPARMQ, which gives them in the native calling form.
#include <algorithm>
#include <cmath>

#include "qrv/native.h"
#include "service/tuning.hpp"

namespace qrv::tuning {
namespace {

// Simultaneous shifts for nh active rows, an even number.
int shifts(int nh) {
    int count = 2;
    if (nh >= 6000)
        count = 256;
    else if (nh >= 3000)
        count = 128;
    else if (nh >= 590)
        count = 64;
    else if (nh >= 150)
        count = std::max(
            10, static_cast<int>(static_cast<float>(nh) / (std::log(static_cast<float>(nh)) / std::log(2.0F))));
    else if (nh >= 60)
        count = 10;
    else if (nh >= 30)
        count = 4;
    return std::max(2, count - count % 2);
}

} // namespace

int qr_iteration(int ispec, int ilo, int ihi) {
    const int nh = ihi - ilo + 1;
    const int ns = shifts(nh);
    switch (ispec) {
    case 12: // least order for the multishift iteration
        return 75;
    case 13: // deflation window
        return nh <= 500 ? ns : 3 * ns / 2;
    case 14: // deflation window over active block in percent: below, a sweep is skipped
        return 14;
    case 15: // simultaneous shifts
        return ns;
    case 16: // reflectors are accumulated, with 2 their block structure is used
        return ns >= 14 ? 2 : 0;
    }
    return -1;
}

} // namespace qrv::tuning

int IPARMQ(const int* ispec, const char*, const char*, const int*, const int* ilo, const int* ihi, const int*, int,
           int) {
    return qrv::tuning::qr_iteration(*ispec, *ilo, *ihi);
}
