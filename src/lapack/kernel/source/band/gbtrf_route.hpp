// Which route SGBTRF takes.
#pragma once

#include <algorithm>

#include "lapack/kernel/source/band/gbtrf.hpp"

namespace qrv::lapack {

struct GbtrfRoute {
    int threads = 1;
    int nb = 1; // 1: unblocked
};

constexpr GbtrfRoute gbtrf_route(int kl, int threads, int tunedBlock) {
    const int nb = std::min(tunedBlock, gbtrfWidest);
    return {std::max(threads, 1), nb < 2 || kl < nb ? 1 : nb};
}

} // namespace qrv::lapack
