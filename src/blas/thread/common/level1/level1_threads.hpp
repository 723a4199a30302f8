// How many threads a level 1 operation gets: one function of the length, the increments and the machine, over a row of
// constants for each routine.
//
// The steps ask the machine only for what they need, cheapest first: a short vector asks for nothing, one on a
// processor without a rule for its class only for the class.
#pragma once

#include <algorithm>
#include <cstdint>

#include "blas/thread/common/work_threads.hpp"

namespace qrv {

// Elements that a thread must get for a team to be worth its size: of moderate size, and of more than twelve.
struct VectorShare {
    int moderateTeam, largeTeam;
};
inline constexpr VectorShare realShare{.moderateTeam = 5000, .largeTeam = 10000};
inline constexpr VectorShare complexShare{.moderateTeam = 2500, .largeTeam = 6500};

// Lengths in elements, as measured for each routine; 0 where a length says nothing beyond the ones before it.
struct VectorRow {
    int serialUpTo;  // on any processor
    int newestShare; // elements that each thread must get where threads go by work

    struct Class5 {   // CpuMa 64
        int pairFrom; // a length that repays a team of two
        int allFrom;  // shorter vectors get at most four threads; 0: all are serial, on the classes below too
    } class5 = {};

    struct Class4 { // CpuMa 32 and 33
        int serialUpTo;
        struct SmallCache { // second level of at most 3 MiB
            int pairFrom;
            VectorShare share;
        } smallCache;
        struct LargeCache { // a larger second level, or none: two threads at first,
            int fourFrom;   // then four,
            int allFrom;    // then all
        } largeCache;
    } class4 = {};
};
// Of a routine that is serial but where threads go by work.
constexpr VectorRow newest_only(int share) {
    return {.serialUpTo = 2 * share - 1, .newestShare = share};
}

// Whether the length alone decides for one thread.
constexpr bool is_short(const VectorRow& row, int n) {
    return n <= row.serialUpTo;
}

// What holds for all of them: the second level that counts as small (two cores share one of 3 MiB on the smaller
// processors of the class), as many threads as a vector of moderate length feeds, and the team that counts as large.
inline constexpr int smallCacheBytes = 3 << 20;
inline constexpr int fewThreads = 4;
inline constexpr int moderateTeamUpTo = 12;

inline constexpr VectorRow saxpyRow{
    .serialUpTo = 4000,
    .newestShare = 50000,
    .class5 = {.pairFrom = 6000, .allFrom = 25000},
    .class4 = {.serialUpTo = 4900, .smallCache = {5000, realShare}, .largeCache = {6000, 18000}}};
inline constexpr VectorRow scopyRow{
    .serialUpTo = 5000,
    .newestShare = 50000,
    .class5 = {.pairFrom = 0, .allFrom = 45000},
    .class4 = {.serialUpTo = 6000, .smallCache = {6000, realShare}, .largeCache = {8000, 20000}}};
inline constexpr VectorRow sdotRow{
    .serialUpTo = 5000,
    .newestShare = 50000,
    .class5 = {.pairFrom = 0, .allFrom = 30000},
    .class4 = {.serialUpTo = 5000, .smallCache = {6000, realShare}, .largeCache = {8000, 20000}}};
inline constexpr VectorRow srotRow{
    .serialUpTo = 4000,
    .newestShare = 75000,
    .class5 = {.pairFrom = 0, .allFrom = 20000},
    .class4 = {.serialUpTo = 5000, .smallCache = {0, realShare}, .largeCache = {8000, 30000}}};
inline constexpr VectorRow sswapRow{
    .serialUpTo = 5000,
    .newestShare = 75000,
    .class5 = {.pairFrom = 0, .allFrom = 20000},
    .class4 = {.serialUpTo = 5000, .smallCache = {0, realShare}, .largeCache = {8000, 20000}}};
inline constexpr VectorRow caxpyRow{
    .serialUpTo = 2000,
    .newestShare = 32000,
    .class5 = {.pairFrom = 3000, .allFrom = 20000},
    .class4 = {.serialUpTo = 3000, .smallCache = {3000, complexShare}, .largeCache = {6000, 15000}}};
inline constexpr VectorRow ccopyRow{
    .serialUpTo = 2500,
    .newestShare = 32000,
    .class5 = {.pairFrom = 0, .allFrom = 20000},
    .class4 = {.serialUpTo = 3000, .smallCache = {3000, complexShare}, .largeCache = {5000, 8000}}};
inline constexpr VectorRow cdotcRow{
    .serialUpTo = 2000,
    .newestShare = 32000,
    .class5 = {.pairFrom = 2500, .allFrom = 20000},
    .class4 = {.serialUpTo = 3000, .smallCache = {4000, complexShare}, .largeCache = {6000, 15000}}};
inline constexpr VectorRow cswapRow{
    .serialUpTo = 2000,
    .newestShare = 37500,
    .class5 = {.pairFrom = 0, .allFrom = 15000},
    .class4 = {.serialUpTo = 3000, .smallCache = {3000, complexShare}, .largeCache = {5000, 10000}}};

inline constexpr VectorRow cdotuRow = newest_only(32000);
inline constexpr VectorRow srotmRow = newest_only(64000);
inline constexpr VectorRow sscalRow = newest_only(100000), cscalRow = newest_only(50000),
                           csscalRow = newest_only(55000);
inline constexpr VectorRow sasumRow = newest_only(100000), scasumRow = newest_only(55000);
inline constexpr VectorRow snrm2Row = newest_only(50000), scnrm2Row = newest_only(25000);
inline constexpr VectorRow isamaxRow = newest_only(110000), icamaxRow = newest_only(50000);

// ---- The steps, for `threads` of at least 2 -----------------------------------------------------------------------

constexpr int class5_threads(const VectorRow& row, int n, int threads) {
    if (threads == 2 && n < row.class5.pairFrom)
        return 1;
    return n >= row.class5.allFrom ? threads : std::min(threads, fewThreads);
}

constexpr int small_cache_threads(const VectorRow::Class4::SmallCache& rule, int n, int threads) {
    if (threads <= fewThreads)
        return threads == 2 && n < rule.pairFrom ? 1 : threads;
    const auto fed = [&](int share) { return std::clamp(n / share, fewThreads, threads); };
    if (threads > moderateTeamUpTo && n < std::int64_t{threads} * rule.share.largeTeam)
        return fed(rule.share.largeTeam);
    return fed(rule.share.moderateTeam);
}

constexpr int large_cache_threads(const VectorRow::Class4::LargeCache& rule, int n, int threads) {
    if (n < rule.fourFrom)
        return 2;
    return n >= rule.allFrom ? threads : std::min(threads, fewThreads);
}

// Threads for a vector operation, 1 for a serial one. `machine` answers cpu_ma(), budget(), dynamic() and
// second_cache_bytes(), which is not positive if there is none.
//
// SAXPY with a budget of 8 and dynamic adjustment on:
//
//   n        CpuMa 64   CpuMa 33, 2 MiB   CpuMa 33, 6 MiB   CpuMa 66
//   4000     1          1                 1                 1
//   4901     4          4                 2                 1
//   6000     4          4                 4                 1
//   25000    8          5                 8                 1
//   40000    8          8                 8                 1
//   100000   8          8                 8                 2
template <class Machine>
constexpr int vector_threads(const VectorRow& row, int n, int incx, int incy, const Machine& machine) {
    if (is_short(row, n))
        return 1;
    const int cpuMa = machine.cpu_ma();
    if (cpuMa == newestClass) {
        const double shares = static_cast<double>(n) / row.newestShare;
        return incx == 0 || incy == 0 ? 1 : threads_for_shares(shares, machine);
    }
    // Classes that have no rule, and on all but the newest routines without one, run serially at any length.
    const bool class4 = cpuMa == 32 || cpuMa == 33, class5 = cpuMa == 64;
    if (row.class5.allFrom == 0 || (!class4 && !class5) || (class4 && n <= row.class4.serialUpTo))
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
    return cache > 0 && cache <= smallCacheBytes ? small_cache_threads(row.class4.smallCache, n, threads)
                                                 : large_cache_threads(row.class4.largeCache, n, threads);
}

} // namespace qrv
