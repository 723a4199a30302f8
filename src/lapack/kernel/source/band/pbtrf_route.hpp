// How SPBTRF cuts its work.
#pragma once

#include <algorithm>

namespace qrv::lapack {

constexpr int pbtrfWidest = 32; // columns of a block
constexpr int pbtrfNarrow = 16; // diagonals for which the call of a kernel costs more than its work

// Columns of a block for kd diagonals, 1: unblocked. With wide vectors the tuned value leaves more to the latter than
// is good: with blocks of 16, 17 to 64 diagonals took 0.3 to 0.9 of its time.
constexpr int pbtrf_block(int kd, int tunedBlock, bool wide) {
    const int nb = std::min(tunedBlock, pbtrfWidest);
    if (nb > 1 && nb <= kd)
        return nb;
    return wide && kd > pbtrfNarrow ? 16 : 1;
}

} // namespace qrv::lapack
