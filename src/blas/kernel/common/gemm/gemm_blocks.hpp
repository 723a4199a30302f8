// Block sizes of the plan-driven GEMM: pure functions of the problem and of the caches.
//
// In a kernel source they live in the build's own namespace, in a test in qrv.
#pragma once

#include <cstddef>
#include <cstdint>

#include "blas/matrix.hpp"

namespace QRV_VIEW_NAMESPACE {

// x filled up to a multiple of unit, a power of two.
constexpr int round_up(int x, int unit) {
    return (x + unit - 1) & ~(unit - 1);
}

// How a plan row chooses its blocks: kb steps of k, mb rows of packed A, nb columns of B.
struct BlockRule {
    int kbFull;     // steps; from here on k is cut into blocks of this depth, between here and twice this in two
    int kbLeast;    // steps
    int cacheLevel; // the level that holds the block of A, counted from 1; 0: mbLarge always
    int cacheLimit; // bytes; up to this size of that level mbSmall is taken
    int mbSmall;    // rows
    int mbLarge;    // rows, also when the caches are not known
    int nbMost;     // columns
    bool nbFilled;  // whether nb is filled up to the panel width
};

// The third level of these processors holds the block of A, up to 1.25 MB, which each sliver of B reads again.
constexpr BlockRule sgemmBlocksSse42{
    .kbFull = 256,
    .kbLeast = 128,
    .cacheLevel = 3,
    .cacheLimit = 4194304,
    .mbSmall = 768,
    .mbLarge = 1280,
    .nbMost = 5000,
    .nbFilled = true,
};
// The second level is the last one of these, and shared by two cores.
constexpr BlockRule sgemmBlocksSsse3{
    .kbFull = 256,
    .kbLeast = 128,
    .cacheLevel = 2,
    .cacheLimit = 3145728,
    .mbSmall = 896,
    .mbLarge = 2000,
    .nbMost = 5000,
    .nbFilled = true,
};
// The same without SSE4.1, k in pairs.
constexpr BlockRule sgemmBlocksPairs{
    .kbFull = 256,
    .kbLeast = 128,
    .cacheLevel = 0,
    .cacheLimit = 0,
    .mbSmall = 1024,
    .mbLarge = 1024,
    .nbMost = 5000,
    .nbFilled = false,
};

// CGEMM: elements of twice the size, blocks of half the depth.
constexpr BlockRule cgemmBlocksSse42{
    .kbFull = 128,
    .kbLeast = 64,
    .cacheLevel = 3,
    .cacheLimit = 4194304,
    .mbSmall = 320,
    .mbLarge = 1536,
    .nbMost = 5000,
    .nbFilled = false,
};
constexpr BlockRule cgemmBlocksSsse3{
    .kbFull = 128,
    .kbLeast = 64,
    .cacheLevel = 2,
    .cacheLimit = 3145728,
    .mbSmall = 448,
    .mbLarge = 1536,
    .nbMost = 5000,
    .nbFilled = false,
};
// Without SSE4.1: a sliver of 10 KB instead of 16.
constexpr BlockRule cgemmBlocksPlain{
    .kbFull = 80,
    .kbLeast = 64,
    .cacheLevel = 0,
    .cacheLimit = 0,
    .mbSmall = 1424,
    .mbLarge = 1424,
    .nbMost = 5000,
    .nbFilled = false,
};

// The caches in the order of the levels, of which the first four are listed; a level that is not there has 0.
struct CacheTable {
    int count;
    int bytes[4];
};

constexpr int k_block(const BlockRule& rule, int k, int kUnit) {
    if (k < rule.kbFull)
        return larger(round_up(k, kUnit), rule.kbLeast);
    if (k > rule.kbFull && k < 2 * rule.kbFull)
        return round_up(k / 2, kUnit);
    return rule.kbFull;
}

// The depth of blocks that share out k evenly, as few as can be.
//
//   k      kbFull   blocks
//   257    256      132 + 125
//   513    256      172 + 172 + 169
//   1024   256      4 x 256
constexpr int even_k_block(const BlockRule& rule, int k, int kUnit) {
    const int blocks = k / rule.kbFull + (k % rule.kbFull != 0);
    return round_up(k / blocks + (k % blocks != 0), kUnit);
}

// So many blocks of at most `most` make up n evenly; each is a multiple of `unit` but the last one.
constexpr int even_block(int n, int most, int unit) {
    const std::int64_t blocks = (std::int64_t{n} + most - 1) / most;
    return static_cast<int>((n + blocks * unit - 1) / (blocks * unit) * unit);
}

constexpr int row_block(const BlockRule& rule, const CacheTable& caches) {
    if (rule.cacheLevel == 0 || caches.count == 0)
        return rule.mbLarge;
    return caches.bytes[rule.cacheLevel - 1] <= rule.cacheLimit ? rule.mbSmall : rule.mbLarge;
}

constexpr int column_block(const BlockRule& rule, int n, int nUnit) {
    const int nb = smaller(larger(n, nUnit), rule.nbMost);
    return rule.nbFilled ? round_up(nb, nUnit) : nb;
}

// Steps of a product that wait in the registers of 512 bits while C goes by (see gemm_shallow.hpp), at most.
constexpr int shallowSteps = 8;

// How many of `left` to take at once, at most `most`: all, or such that the last two shares are even.
constexpr int even_share(int left, int most) {
    return left >= 2 * most ? most : left > most ? (left + 1) / 2 : left;
}

} // namespace QRV_VIEW_NAMESPACE
