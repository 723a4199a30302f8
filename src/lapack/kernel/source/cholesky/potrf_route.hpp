// Which route SPOTRF and CPOTRF take.
#pragma once

#include <algorithm>

#include "lapack/kernel/source/cholesky/potrf.hpp"

namespace qrv::lapack {

struct PotrfRoute {
    enum class Kind { unblocked, serial, tiles };
    Kind kind = Kind::unblocked;
    int threads = 1;
    PotrfGrain grain{};
};

// `machine` tells the thread budget and, for order n, the tuned crossover and grain, asked in the order that keeps a
// small call short.
template <class Machine>
PotrfRoute potrf_route(int n, const Machine& machine) {
    using Kind = PotrfRoute::Kind;
    if (machine.crossover() > n)
        return {};
    const int threads = std::max(machine.threads(), 1);
    if (threads == 1)
        return {Kind::serial};
    const PotrfGrain grain = machine.grain(threads);
    if (grain.tile > 1 && grain.tile < n)
        return {Kind::tiles, threads, grain};
    return {Kind::serial};
}

} // namespace qrv::lapack
