// Which route SGBTRF takes.
#pragma once

#include <algorithm>

#include "lapack/kernel/source/band/gbtrf.hpp"

namespace qrv::lapack {

struct GbtrfRoute {
    int threads = 1;
    int nb = 1; // 1: unblocked
};

// Bands that the tuned blocks leave to the unblocked route are blocked with wide vectors from so many diagonals on each
// side on, by so many columns: 48 diagonals took 0.73, 64 took 0.64 of its time, 32 the same.
struct NarrowBlocks {
    int diagonals, columns;
};
constexpr NarrowBlocks wideNarrowBlocks{32, 16};

// Diagonals on each side from which a team is worth its steps: two threads took 0.6 of the time of one with 200, 0.68
// with 100, 0.8 with 64 and 0.9 with 32 diagonals.
constexpr int leastTeamDiagonals = 80;

constexpr GbtrfRoute gbtrf_route(int kl, int ku, int threads, int tunedBlock, bool wide) {
    const int nb = std::min(tunedBlock, gbtrfWidest);
    if (nb > 1 && nb <= kl)
        return {std::min(kl, ku) < leastTeamDiagonals ? 1 : std::max(threads, 1), nb};
    return {1, wide && std::min(kl, ku) >= wideNarrowBlocks.diagonals ? wideNarrowBlocks.columns : 1};
}

} // namespace qrv::lapack
