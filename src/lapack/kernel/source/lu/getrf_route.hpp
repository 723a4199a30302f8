// Which route SGETRF and CGETRF take.
#pragma once

#include <algorithm>

namespace qrv::lapack {

struct GetrfRoute {
    enum class Kind { serial, ib, dynamic, unblocked };
    Kind kind = Kind::serial;
    int threads = 1;
    int blockSize = 0;
};

// The static route alone: on one thread there is nothing to share.
constexpr GetrfRoute getrf_ib_route(int threads) {
    using Kind = GetrfRoute::Kind;
    return {threads > 1 ? Kind::ib : Kind::serial, threads};
}

// `machine` tells the thread budget and, for m x n, the tuned crossover and block size, asked in the order that keeps
// a small call short: a crossover for -1 threads is that of the serial route.
template <class Machine>
GetrfRoute getrf_route(int m, int n, const Machine& machine) {
    using Kind = GetrfRoute::Kind;
    if (machine.crossover(-1) >= n)
        return {};
    const int threads = machine.threads();
    if (threads <= 1)
        return {};
    if (machine.crossover(threads) >= n)
        return {Kind::ib, threads};
    const int nb = machine.block_size(threads);
    if (nb > 1 && nb < std::min(m, n))
        return {Kind::dynamic, threads, nb};
    return {Kind::unblocked};
}

} // namespace qrv::lapack
