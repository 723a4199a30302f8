// Which route SPOTRF and CPOTRF take.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "lapack/kernel/source/cholesky/potrf.hpp"
#include "lapack/workspace.hpp"
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

// The same for wide vectors and the newest class, for which the tuned tiles are too small: the products of a tile have
// to fill packed kernels. Larger teams need more of them. With SSE two threads took 0.69 of the time of the tuned ones
// at n = 160, 200 and 300, 0.66 at 700, 0.79 at 1000, 0.84 at 2000 and 0.53 at 2048, complex ones 1.12, 0.93 and 0.97
// at 160, 500 and 1024.
constexpr PotrfGrain wide_grain(int n, int threads) {
    const int most = threads > 2 ? 32 : 64;
    const int tile = n < 576 ? most : n <= 1500 ? 2 * most : 128;
    return {.tile = tile, .steps = 512 / tile, .firstBlock = std::min(4 * tile, n <= 1500 ? 256 : 512)};
}

// Orders below take the leaf there, whose kernels are as fast as any blocks: on two threads n = 128 took 1.4 to 1.8 and
// n = 256 1.2 to 1.4 of its time, n = 512 the same.
constexpr int wideCrossover = 512;

// Columns of a lower triangle that are a multiple of a page apart share so few sets of the caches that its products
// wait for them: from an order on it is factored in a copy, in tiles. At n = 1024 and 2048 a copy of one piece took 0.8
// to 0.9 of the time in place with the SSE form, 0.8 to 0.98 with AVX2, 0.87 to 1 with AVX-512, and tiles 0.94 to 0.98
// of that with the latter two; an upper triangle took longer.
constexpr int aliasedDistance = 4096;          // bytes
constexpr int leastAside = 640;                // bytes of a column
constexpr std::int64_t mostAside = 40'000'000; // bytes of a copy; larger triangles are cut first

// Columns of a tile. Of small triangles three tiles lie in the cache beside each other; of large ones, whose copy does
// not stay in any cache, tiles of 192 took up to 1.2 of the time.
constexpr int tile_aside(int n, int elementSize) {
    const int least = 768 / elementSize, most = 2048 / elementSize;
    return std::clamp(n / 128 * 16, least, most);
}

constexpr bool goes_aside(Uplo uplo, int n, std::ptrdiff_t ld, int elementSize) {
    const std::int64_t length = std::int64_t{n} * elementSize;
    if (uplo == Uplo::upper || length / 2 * (n + tile_aside(n, elementSize)) > mostAside)
        return false;
    return ld * elementSize % aliasedDistance == 0 && length >= leastAside;
}

// The same of what a team factors, in a copy of one piece: on two threads n = 1024 and 2048 took 0.84 to 0.93 of the
// time in place with the wide forms and 0.95 to 1 with SSE, but n = 4096, with a copy above the limit, 1.05 to 1.2.
constexpr bool team_goes_aside(Uplo uplo, int n, std::ptrdiff_t ld, int elementSize) {
    return goes_aside(uplo, n, ld, elementSize) &&
           std::int64_t{n} * dimension_aside(n, elementSize) * elementSize <= mostAside;
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
