// How many threads a level 1 operation gets: one function of the length, the increments and the machine, over a row of
// constants for each routine.
//
// The steps ask the machine only for what they need, cheapest first: a short vector asks for nothing, one on a
// processor without a rule for its class only for the class.
#pragma once

#include <algorithm>
#include <cstdint>

namespace qrv {

// Lengths in elements.
struct VectorRow {
    int serialUpTo;       // on any processor
    int class4SerialUpTo; // CpuMa 32 and 33

    // CpuMa 64: shorter vectors get at most four threads, and none for a team of two below a length of their own.
    int class5AllFrom;
    int class5PairFrom;

    // CpuMa 32 and 33, second cache of at most 3 MiB: a length that repays a team of two, and how many elements a
    // thread must get for a team of moderate size and for one of more than twelve.
    int class4PairFrom;
    int share;
    int largeTeamShare;

    // CpuMa 32 and 33, second cache larger or unknown: two threads up to one length, all from another.
    int largeCacheFourFrom;
    int largeCacheAllFrom;
};

// Elements that repay a thread, by element type.
inline constexpr int realShare = 5000, realLargeTeamShare = 10000;
inline constexpr int complexShare = 2500, complexLargeTeamShare = 6500;

// clang-format off
//                                  any CpuMa | 32, 33 |  CpuMa 64: all, pair | small cache: pair, shares                  | large cache: four, all
inline constexpr VectorRow saxpyRow{4000,       4900,     25000, 6000,          5000, realShare,    realLargeTeamShare,      6000, 18000};
inline constexpr VectorRow scopyRow{5000,       6000,     45000, 0,             6000, realShare,    realLargeTeamShare,      8000, 20000};
inline constexpr VectorRow sdotRow {5000,       5000,     30000, 0,             6000, realShare,    realLargeTeamShare,      8000, 20000};
inline constexpr VectorRow srotRow {4000,       5000,     20000, 0,             0,    realShare,    realLargeTeamShare,      8000, 30000};
inline constexpr VectorRow sswapRow{5000,       5000,     20000, 0,             0,    realShare,    realLargeTeamShare,      8000, 20000};
inline constexpr VectorRow caxpyRow{2000,       3000,     20000, 3000,          3000, complexShare, complexLargeTeamShare,   6000, 15000};
inline constexpr VectorRow ccopyRow{2500,       3000,     20000, 0,             3000, complexShare, complexLargeTeamShare,   5000, 8000};
inline constexpr VectorRow cdotcRow{2000,       3000,     20000, 2500,          4000, complexShare, complexLargeTeamShare,   6000, 15000};
inline constexpr VectorRow cswapRow{2000,       3000,     15000, 0,             3000, complexShare, complexLargeTeamShare,   5000, 10000};
// clang-format on

// ---- The steps, for `threads` of at least 2 -----------------------------------------------------------------------

inline constexpr int fewThreads = 4; // as many as a vector of moderate length feeds

constexpr int class5_threads(const VectorRow& row, int n, int threads) {
    if (threads == 2 && n < row.class5PairFrom)
        return 1;
    return n >= row.class5AllFrom ? threads : std::min(threads, fewThreads);
}

constexpr int small_cache_threads(const VectorRow& row, int n, int threads) {
    constexpr int largeTeamAbove = 12;
    if (threads <= fewThreads)
        return threads == 2 && n < row.class4PairFrom ? 1 : threads;
    if (threads > largeTeamAbove && n < std::int64_t{threads} * row.largeTeamShare)
        return std::max(n / row.largeTeamShare, fewThreads);
    return n >= std::int64_t{threads} * row.share ? threads : std::max(n / row.share, fewThreads);
}

constexpr int large_cache_threads(const VectorRow& row, int n, int threads) {
    if (n < row.largeCacheFourFrom)
        return 2;
    return n >= row.largeCacheAllFrom ? threads : std::min(threads, fewThreads);
}

// Threads for a vector operation, 1 for a serial one. `machine` answers cpu_ma(), budget(), dynamic() and
// second_cache_bytes(), which is not positive if there is none.
template <class Machine>
constexpr int vector_threads(const VectorRow& row, int n, int incx, int incy, const Machine& machine) {
    constexpr int smallCache = 3 << 20; // bytes
    if (n <= row.serialUpTo)
        return 1;
    // Classes that have no rule, the newest above all, run serially at any length.
    const int cpuMa = machine.cpu_ma();
    const bool class4 = cpuMa == 32 || cpuMa == 33, class5 = cpuMa == 64;
    if ((!class4 && !class5) || (class4 && n <= row.class4SerialUpTo))
        return 1;
    if (incx == 0 || incy == 0) // all of the vector is one element: slices would not be disjoint
        return 1;
    const int threads = machine.budget();
    if (threads <= 1)
        return 1;
    if (machine.dynamic() != 1)
        return threads;
    if (class5)
        return class5_threads(row, n, threads);
    const int cache = machine.second_cache_bytes();
    return cache > 0 && cache <= smallCache ? small_cache_threads(row, n, threads)
                                            : large_cache_threads(row, n, threads);
}

// The same on this machine, once a vector is longer than the row's serialUpTo.
int vector_threads_here(const VectorRow& row, int n, int incx, int incy);

} // namespace qrv
