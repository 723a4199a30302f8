// Which route SPOTRF and CPOTRF take.
#pragma once

#include <algorithm>
#include <string_view>

#include "lapack/kernel/source/cholesky/potrf.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {

struct PotrfRoute {
    enum class Kind { unblocked, serial, tiles };
    Kind kind = Kind::unblocked;
    int threads = 1;
    PotrfGrain grain{};
};

// The grain by the tuning table.
inline PotrfGrain tuned_grain(std::string_view name, int n, int threads) {
    const auto of = [&](int which) { return tuning::block_size(name, n, threads, which); };
    return {of(-1), of(-2), of(-3)};
}

// The same for wide vectors, for which the tuned tiles are too small: the products of a tile have to fill packed
// kernels.
constexpr PotrfGrain wide_grain(int n) {
    const int tile = n <= 700 ? 32 : n <= 1500 ? 64 : 128;
    return {.tile = tile, .steps = 512 / tile, .firstBlock = 4 * tile};
}

// Orders below take the leaf there, whose kernels are as fast as any blocks: on two threads n = 128 took 1.4 to 1.8 and
// n = 256 1.2 to 1.4 of its time, n = 512 the same.
constexpr int wideCrossover = 512;

// Columns of a block of the serial route there.
constexpr int wide_block(int n) {
    return n < wideCrossover ? n : n <= 1500 ? 256 : 512;
}

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
