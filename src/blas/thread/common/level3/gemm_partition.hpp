// Decisions of the threaded GEMM: whether a call is worth a team, and which thread computes what.
//
// Pure functions of the sizes, the team and the machine; who asks for them holds the threads. All arithmetic on
// products of sizes is in 64 bits.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "blas/kernel/gemm_plan.hpp"
#include "blas/thread/common/slice.hpp"
#include "blas/thread/common/work_threads.hpp"
#include "service/vector_form.hpp"

namespace qrv {

// op(A) is m x k, op(B) is k x n, C is m x n.
struct GemmSizes {
    int m, n, k;
};

// ---- Is it worth asking for threads? -----------------------------------------------------------------------

// Comparisons only: GEMM is called very often with tiny sizes, from blocked factorizations above all.
//
//   m      n      k      may thread
//   any    < 16   <= 4   no: a rank-k update of a few columns
//   <= 16  > 16   any    yes
//   <= 16  <= 16  <= 16  no: one or a few tiles
//   <= 16  <= 16  > 16   if n > 4
//   <= 32  any    any    if n > 4
//   > 32   any    any    yes
constexpr bool gemm_may_thread(GemmSizes s) {
    constexpr int shallow = 4;    // steps of k that hardly repay reading C
    constexpr int fewColumns = 4; // one column tile
    constexpr int tile = 16;      // rows, columns or steps of a few register tiles
    constexpr int manyRows = 2 * tile;
    if (s.k <= shallow && s.n < tile)
        return false;
    if (s.m <= tile)
        return s.n > tile || (s.k > tile && s.n > fewColumns);
    return s.m > manyRows || s.n > fewColumns;
}

// Up to this size in all three dimensions a call is small: it must promise a gain, and each thread of its team
// makes one serial call.
constexpr int gemmSmallSize = 100;

constexpr bool gemm_is_small(GemmSizes s) {
    return s.m <= gemmSmallSize && s.n <= gemmSmallSize && s.k <= gemmSmallSize;
}

enum class GemmSplit { rows, columns };

// Rows if C is so tall that a thread's share of them is still taller than C is wide (small calls), or if C is
// tall at all (others).
constexpr GemmSplit gemm_plain_split(GemmSizes s, int team) {
    const std::int64_t width = gemm_is_small(s) ? std::int64_t{s.n} * team : s.n;
    return s.m > width ? GemmSplit::rows : GemmSplit::columns;
}

// How the gain of a team is estimated for an element type: the work on an x by y block of C is
// k * (productWeight*x*y + x + y) / divisor.
struct GemmGainRule {
    int fromTeam; // smaller teams need no gain
    int productWeight;
    int divisor;
};

constexpr GemmGainRule realGemmGain{.fromTeam = 2, .productWeight = 1, .divisor = 2};
constexpr GemmGainRule complexGemmGain{.fromTeam = 3, .productWeight = 4, .divisor = 1};

constexpr std::int64_t gemm_work(const GemmGainRule& rule, int x, int y, int k) {
    return k * (std::int64_t{rule.productWeight} * x * y + x + y) / rule.divisor;
}

// What starting a thread costs, in units of gemm_work. The kernels of wider vectors do such a unit faster, and the
// cost in them is so much higher: two threads break even near n = 50 with AVX-512, near 37 with AVX2.
constexpr int gemm_thread_cost(VectorForm form) {
    switch (form) {
    case VectorForm::avx512:
        return 10000;
    case VectorForm::avx2:
        return 4000;
    case VectorForm::sse:
        break;
    }
    return 1000;
}

// Whether a small call repays a team of `threads`.
constexpr bool gemm_gains(const GemmGainRule& rule, GemmSizes s, int threads, int threadCost) {
    constexpr double wanted = 1.4; // serial over threaded cost
    if (threads < rule.fromTeam)
        return true;
    const bool byRows = gemm_plain_split(s, threads) == GemmSplit::rows;
    const std::int64_t share =
        byRows ? gemm_work(rule, s.m / threads, s.n, s.k) : gemm_work(rule, s.m, s.n / threads, s.k);
    const std::int64_t threaded = std::int64_t{threadCost} * threads + share;
    return static_cast<double>(gemm_work(rule, s.m, s.n, s.k)) / static_cast<double>(threaded) > wanted;
}

// ---- By work -----------------------------------------------------------------------------------------------

// A row or a column of C is level 2's, whose threads that class has not.
template <class Machine>
constexpr int gemm_threads_by_work(GemmSizes s, double work, const Machine& machine) {
    return s.m == 1 || s.n == 1 ? 1 : threads_by_work(work, machine);
}

// How C is shared out where threads go by work: over rows and columns of threads, in whole tiles.
struct GemmGrid {
    int rows, columns;
};

// The grid of the whole team in which the thread with the largest part has least to do: products, and the rows and
// columns that it must bring together, of which those of a transposed A cost more.
//
//   m     n     team   grid, A as it lies, transposed
//   1000  1000  2      1 x 2     2 x 1
//   2000  32    2      2 x 1     2 x 1
//   2048  2048  16     4 x 4     4 x 4
//   100   4     8      8 x 1     8 x 1
constexpr GemmGrid gemm_grid(GemmSizes s, bool transposedA, int team) {
    constexpr double column = 16; // of an element, in products
    const double row = transposedA ? 24 : 16;
    GemmGrid best{1, team};
    double least = std::numeric_limits<double>::max();
    for (int rows = 1; rows <= team; ++rows)
        if (team % rows == 0) {
            const double m = row_slice(s.m, rows, 0).count, n = column_slice(s.n, team / rows, 0).count;
            const double cost = m * n + row * m + column * n;
            if (cost < least) {
                least = cost;
                best = {rows, team / rows};
            }
        }
    return best;
}

// In how many pieces the rows of a thread go to whoever is free: such as take 2 ms, and of so many rows that they cost
// hardly more than one call. `work` is a thread's.
//
//   form      m = n = k   team   pieces, operands as they lie, transposed
//   avx512    1000        2      1   1
//   avx512    1400        2      4   1
//   sse       1000        2      2   1
constexpr int gemm_pieces(GemmSizes s, bool transposedA, bool transposedB, double work, int team, VectorForm form) {
    constexpr int most = 4;
    constexpr double shares = 1000; // of the least work for a thread
    const double wanted = std::min<double>(most, work / (shares * least_share(form)));
    if (wanted < 2)
        return 1;
    const int leastRows = transposedA || transposedB ? 512 : 336;
    return std::clamp(s.m / gemm_grid(s, transposedA, team).rows / leastRows, 1, static_cast<int>(wanted));
}

// Those of a piece, where there are several in whole tiles of all forms: 48 rows with AVX-512.
constexpr Slice gemm_piece_rows(int m, int shares, int share, int pieces, int piece) {
    return pieces == 1 ? row_slice(m, shares, share) : tile_slice(m, shares * pieces, share * pieces + piece, 48);
}

// ---- Slices ------------------------------------------------------------------------------------------------

// The part of a slice that lies in the block of `size` from `offset` on; empty if the slice ends before.
constexpr Slice gemm_block(Slice slice, int offset, int size) {
    return {slice.first + std::min(offset, slice.count), std::max(0, std::min(size, slice.count - offset))};
}

// How C is shared out to be scaled ahead of a large product: rows only if it is very tall.
constexpr GemmSplit gemm_scale_split(GemmSizes s, int team) {
    return s.m > std::int64_t{s.n} * team ? GemmSplit::rows : GemmSplit::columns;
}

// ---- Machine classes ---------------------------------------------------------------------------------------

// What the decisions know of the machine.
struct GemmFacts {
    int cpuMa;
    int secondCacheBytes; // -1 if there is no such level
};

enum class GemmMachine : int {
    plain = 0,        // sse3, sse2, generic: no plan
    pairs = 1,        // ssse3 without SSE4.1
    quadsLargeL2 = 2, // ssse3 with SSE4.1, second cache level above 3 MB
    sse42 = 3,
    quads = 4, // ssse3 with SSE4.1
};

constexpr GemmMachine gemm_machine_class(const GemmFacts& facts) {
    constexpr int largeL2 = 3 << 20; // bytes
    switch (facts.cpuMa) {
    case 64:
    case 66:
        return GemmMachine::sse42;
    case 33:
        return facts.secondCacheBytes > largeL2 ? GemmMachine::quadsLargeL2 : GemmMachine::quads;
    case 32:
        return GemmMachine::pairs;
    default:
        return GemmMachine::plain;
    }
}

// Classes whose work regions only add: beta is applied to C by a region of its own.
constexpr bool gemm_scales_first(GemmMachine machine) {
    return machine == GemmMachine::quadsLargeL2 || machine == GemmMachine::sse42 || machine == GemmMachine::quads;
}

// ---- Partition ---------------------------------------------------------------------------------------------

enum class GemmRegion {
    row,    // slices of rows, one call each
    column, // slices of columns, one call each
    acopy,  // slices of rows, A packed into shared memory by this region
};

struct GemmBlocks {
    int mb, nb, kb;
};

struct GemmPartition {
    GemmRegion region;
    GemmMode mode;
    int threads; // that get work
    int rowThreads, colThreads;
    GemmBlocks blocks;
    int aCopies; // shared packed copies of A
};

// From when on the classes that scale first pack A into shared memory, and in which blocks.
struct GemmCopyRule {
    std::int64_t blockBytes; // largest packed block of A for a tall C: half a second cache level of the class
    int mb;                  // rows of a block; 0: the plan's
    bool ignoresDepth;       // a tall C of few rows and columns is small whatever k is
};

constexpr GemmCopyRule gemm_copy_rule(GemmMachine machine) {
    switch (machine) {
    case GemmMachine::quadsLargeL2:
        return {.blockBytes = 3 << 19, .mb = 1024, .ignoresDepth = true};
    case GemmMachine::quads:
        return {.blockBytes = 3 << 19, .mb = 896, .ignoresDepth = true};
    default:
        return {.blockBytes = 1 << 17, .mb = 0, .ignoresDepth = false};
    }
}

// Whether a tall C (m > n) is computed from shared copies of A.
constexpr bool gemm_copies_tall(const GemmCopyRule& rule, GemmSizes s, GemmBlocks blocks, int threads) {
    constexpr int narrow = 3;     // columns for which a deep product of few rows is copied all the same,
    constexpr int deep = 8000;    // from this k
    constexpr int rowsEnough = 4; // or from this many rows a thread on
    const int mc = s.m / threads;
    if (rule.ignoresDepth) {
        const bool fewOfBoth = s.m <= gemmSmallSize && s.n <= gemmSmallSize;
        if (fewOfBoth && (s.n != narrow || (s.k < deep && mc < rowsEnough)))
            return false;
    } else if (gemm_is_small(s)) {
        return false;
    }
    const std::int64_t depth = std::min(s.k, blocks.kb);
    return std::min(mc, blocks.mb) * depth * std::int64_t{sizeof(float)} <= rule.blockBytes;
}

// Whether a square or wide C (m <= n) is computed from shared copies of A: deep products with a square C only.
constexpr bool gemm_copies_wide(GemmSizes s) {
    constexpr int cubeFrom = 800; // from here on, if all three sizes are equal
    constexpr int deepFrom = 100; // from this k on, otherwise
    const int limit = s.m == s.n && s.n == s.k ? cubeFrom : deepFrom;
    return s.m >= s.n && s.k >= limit;
}

// One call a thread, on its rows or columns of C.
constexpr GemmPartition gemm_slices(GemmSplit split, GemmMode mode, GemmBlocks blocks, int threads) {
    const bool byRows = split == GemmSplit::rows;
    return {.region = byRows ? GemmRegion::row : GemmRegion::column,
            .mode = mode,
            .threads = threads,
            .rowThreads = byRows ? threads : 1,
            .colThreads = byRows ? 1 : threads,
            .blocks = blocks,
            .aCopies = 0};
}
constexpr GemmPartition gemm_plain_partition(GemmSizes s, GemmBlocks blocks, int team) {
    return gemm_slices(gemm_plain_split(s, team), GemmMode::choose, blocks, team);
}

// Partition for a team of two or more; `planned` tells whether the build has a plan, whose blocks are given.
//
// The classes that scale first use an even number of threads. A tall C goes by rows, with shared copies of A
// where a thread's block is small enough; a square or wide one by columns, or by rows with copies if it is deep. With
// blocks of 2000 x 5000 x 256:
//
//   class    m     n    k     team   region   threads
//   plain    201   200  200   3      row      3
//   plain    200   200  200   3      column   3
//   sse42    515   100  256   5      acopy    4        a block of 128 x 256 floats is 128 KB
//   sse42    516   100  256   4      row      4        one of 129 x 256 is more
//   sse42    150   150  99    4      column   4
//   sse42    150   150  100   4      acopy    4        square and deep
//   sse42    799   799  799   4      column   4        but as deep as wide only from 800 on
//   quads    7     3    7999  2      row      2        few of both, whatever k is,
//   quads    7     3    8000  2      acopy    2        but for three columns that are this deep
constexpr GemmPartition gemm_partition(GemmMachine machine, bool planned, GemmSizes s, GemmBlocks blocks, int team) {
    if (!planned || !gemm_scales_first(machine))
        return gemm_plain_partition(s, blocks, team);
    const GemmCopyRule rule = gemm_copy_rule(machine);
    const int threads = team & ~1;
    const bool tall = s.m > s.n;
    if (tall ? gemm_copies_tall(rule, s, blocks, threads) : gemm_copies_wide(s))
        return {.region = GemmRegion::acopy,
                .mode = GemmMode::directBGivenA,
                .threads = threads,
                .rowThreads = threads,
                .colThreads = 1,
                .blocks = {rule.mb != 0 ? rule.mb : blocks.mb, blocks.nb, blocks.kb},
                .aCopies = threads};
    return gemm_slices(tall ? GemmSplit::rows : GemmSplit::columns, GemmMode::packA, blocks, threads);
}

// Size in bytes of the block that holds all shared copies, each `bytes` long with room to align the first; 0 if
// that is more than can be addressed.
constexpr std::size_t gemm_shared_bytes(int copies, std::size_t bytes, int alignShift) {
    const std::size_t each = bytes + (std::size_t{2} << alignShift);
    const std::size_t most = std::numeric_limits<std::size_t>::max() / static_cast<std::size_t>(copies);
    return each < bytes || each > most ? 0 : each * static_cast<std::size_t>(copies);
}

} // namespace qrv
