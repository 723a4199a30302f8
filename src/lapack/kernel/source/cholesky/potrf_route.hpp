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

// The grain on processors with wide vectors, for which the tuned tiles are too small: the products of a tile have to
// fill packed kernels. Two threads of an AVX-512 machine then take 0.44, 0.65, 0.75 and 1.0 of the serial route's time
// at n = 256, 512, 1024 and 2048 (whose own products may thread too); with the tuned tiles 0.8, 0.9, 1.8 and 5.
constexpr PotrfGrain wide_grain(int n) {
    const int tile = n <= 700 ? 32 : n <= 1500 ? 64 : 128;
    return {.tile = tile, .steps = 512 / tile, .firstBlock = 4 * tile};
}

// Columns of a block of the serial route there: the leaf takes 128, and the products of larger ones fill packed
// kernels.
constexpr int wide_block(int n) {
    return n <= 128 ? 128 : n <= 700 ? 64 : n <= 1500 ? 256 : 512;
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
