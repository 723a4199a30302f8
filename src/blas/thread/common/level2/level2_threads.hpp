// Decisions and partitions of the threaded level 2 routines: how many threads a call gets, and which part of the matrix
// a thread takes.
//
// A decision returns the number of threads, 1 for a serial call. It asks the machine only for what it needs, cheapest
// first: `machine` answers cpu_ma(), budget() and dynamic(). All arithmetic on products of sizes is in 64 bits.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "blas/options.hpp"
#include "blas/thread/common/slice.hpp"
#include "blas/thread/common/trapezoid.hpp"
#include "blas/thread/common/work_threads.hpp"

namespace qrv {

// The budget where the processor's class has rules; the newest class among others has none and runs serially.
template <class Machine>
constexpr int level2_budget(const Machine& machine) {
    const int cpuMa = machine.cpu_ma();
    return cpuMa == 32 || cpuMa == 33 || cpuMa == 64 ? machine.budget() : 1;
}

// Whether the order alone decides for one thread.
template <class Rule>
constexpr bool is_short(const Rule& rule, int n) {
    return n < rule.serialBelow;
}

// Threads for a triangle of this order by work: each must get so many elements.
template <class Machine>
constexpr int triangle_threads(int n, double leastElements, const Machine& machine) {
    return threads_for_shares(0.5 * n * n / leastElements, machine);
}

// ---- General matrix ------------------------------------------------------------------------------------------------

// Which shares of a matrix repay a thread: `share` rows or columns of the given length.
struct ShareRule {
    int wide;         // from here on a share is wide
    int wideWork;     // elements that a wide share needs,
    int narrowWork;   // and a narrow one,
    int narrowLength; // which must be this long too
    int neverShare;   // a share that is serial at any length; 0: none, as it repays nothing anyway
};

struct GemvRule {
    int serialBelow;              // if both dimensions are smaller
    ShareRule rowShare, colShare; // of option N, of the others
    struct ByWork {               // elements that each thread must get where threads go by work
        double rows, columns;
    } byWork;
};
// Where threads go by work an element of y is summed as by one thread: these are rows that go another way than few do,
// and columns of whole passes.
inline constexpr int leastGemvRows = 256;
inline constexpr int gemvColumnUnit = 8;

inline constexpr GemvRule sgemvRule{
    .serialBelow = 128,
    .rowShare = {.wide = 32, .wideWork = 3072, .narrowWork = 1536, .narrowLength = 256, .neverShare = 8},
    .colShare = {.wide = 32, .wideWork = 4096, .narrowWork = 2048, .narrowLength = 0, .neverShare = 0},
    .byWork = {.rows = 250000, .columns = 80000}};
inline constexpr GemvRule cgemvRule{
    .serialBelow = 256,
    .rowShare = {.wide = 64, .wideWork = 2048, .narrowWork = 1024, .narrowLength = 0, .neverShare = 0},
    .colShare = {.wide = 64, .wideWork = 2048, .narrowWork = 1024, .narrowLength = 0, .neverShare = 0},
    .byWork = {.rows = 125000, .columns = 40000}};

// Whether the sizes alone decide for one thread.
constexpr bool is_short(const GemvRule& rule, int m, int n) {
    return m < rule.serialBelow && n < rule.serialBelow;
}

constexpr bool share_repays(const ShareRule& rule, int share, int length) {
    if (share == rule.neverShare)
        return false;
    const std::int64_t work = std::int64_t{share} * length;
    return share >= rule.wide ? work >= rule.wideWork : length >= rule.narrowLength && work >= rule.narrowWork;
}

// m and n are at least 1. On the classes with a rule, SGEMV and CGEMV with a budget of 4:
//
//   m x n       N: share           S, C    T: share           S, C
//   100 x 100   below 128          1, 1    below 128          1, 1
//   128 x 100   32 rows of 100     4, 1    25 columns of 128  4, 1
//   128 x 48    32 rows of 48      1, 1    12 columns of 128  1, 1
//   40 x 300    8 rows of 300      1, 4    75 columns of 40   1, 4
//   20 x 9000   no rows            1, 1    2250 columns of 20 4, 4
//
// By work SGEMV of 1000 x 1000 gives 3 threads for N, 4 for T, 500 x 500 1 and 3.
template <class Machine>
constexpr int gemv_threads(const GemvRule& rule, Op op, int m, int n, const Machine& machine) {
    constexpr int rowUnit = 8; // rows of a vector slice
    if (is_short(rule, m, n))
        return 1;
    if (goes_by_work(machine)) {
        const bool rows = op == Op::none;
        const double repaid = static_cast<double>(m) * n / (rows ? rule.byWork.rows : rule.byWork.columns);
        const double shares = std::min<double>(repaid, rows ? m / leastGemvRows : n / gemvColumnUnit);
        return threads_for_shares(shares, machine);
    }
    const int threads = level2_budget(machine);
    if (threads <= 1)
        return 1;
    const bool repays = op == Op::none ? share_repays(rule.rowShare, m / threads / rowUnit * rowUnit, n)
                                       : share_repays(rule.colShare, n / threads, m);
    return repays ? threads : 1;
}

// Option N cuts rows, as vectors are cut; the others cut columns.
constexpr Slice gemv_slice(Op op, int m, int n, int team, int thread, int columnUnit) {
    return op == Op::none ? vector_slice(m, team, thread) : equal_slice(n, team, thread, columnUnit);
}

// The update of a general matrix, serial but where threads go by work.
struct GerRule {
    double byWork; // as above
};
inline constexpr GerRule sgerRule{.byWork = 60000};
inline constexpr GerRule cgerRule{.byWork = 30000};

constexpr bool is_short(const GerRule& rule, int m, int n) {
    return static_cast<double>(m) * n < 2 * rule.byWork;
}
template <class Machine>
constexpr int ger_threads(const GerRule& rule, int m, int n, const Machine& machine) {
    if (is_short(rule, m, n) || !goes_by_work(machine))
        return 1;
    return threads_for_shares(static_cast<double>(m) * n / rule.byWork, machine);
}

// Columns in whole passes, or rows, which share lines of memory, where there are few columns.
constexpr bool ger_by_columns(int n, int team) {
    return n / gemvColumnUnit >= team;
}

// ---- Symmetric matrix ----------------------------------------------------------------------------------------------

inline constexpr int largeTeam = 9; // threads; needs larger matrices

struct SymvRule {
    int serialBelow;
    int smallTeamUpTo; // a larger matrix, of which each thread reads twice its share, is left to one thread,
    int largeTeamFrom; // unless the team is large, which in turn needs this size
    double byWork;     // elements that each thread must get where threads go by work
};

inline constexpr SymvRule ssymvRule{.serialBelow = 256, .smallTeamUpTo = 4000, .largeTeamFrom = 301, .byWork = 60000};
inline constexpr SymvRule chemvRule{
    .serialBelow = 256, .smallTeamUpTo = 0, .largeTeamFrom = std::numeric_limits<int>::max(), .byWork = 30000};

template <class Machine>
constexpr int symv_threads(const SymvRule& rule, int n, const Machine& machine) {
    if (is_short(rule, n))
        return 1;
    if (goes_by_work(machine))
        return triangle_threads(n, rule.byWork, machine);
    const int threads = level2_budget(machine);
    if (threads <= 1)
        return 1;
    const bool repays = threads >= largeTeam ? n >= rule.largeTeamFrom : n <= rule.smallTeamUpTo;
    return repays ? threads : 1;
}

// Blocks of rows of a team of two or more: an even number, so that an odd thread is idle.
constexpr int symv_blocks(int team) {
    return team & ~1;
}

// Block k with what is stored beside it; `before` and `after` count the rows outside of it.
struct SymvBlock {
    Slice rows;
    int before, after;
};
constexpr SymvBlock symv_block(int n, int blocks, int k) {
    const Slice rows = vector_slice(n, blocks, k);
    return {rows, rows.first, n - rows.first - rows.count};
}

// ---- Triangles -----------------------------------------------------------------------------------------------------

struct TrmvRule {
    int serialBelow;
    int largeTeamFrom; // size for a large team
    int allFrom;       // smaller ones get at most four threads
    double byWork;     // as above
};

inline constexpr TrmvRule strmvRule{.serialBelow = 220, .largeTeamFrom = 301, .allFrom = 300, .byWork = 200000};
inline constexpr TrmvRule ctrmvRule{.serialBelow = 128, .largeTeamFrom = 161, .allFrom = 256, .byWork = 100000};

template <class Machine>
constexpr int trmv_threads(const TrmvRule& rule, int n, const Machine& machine) {
    constexpr int mostBelow = 4;
    if (is_short(rule, n))
        return 1;
    if (goes_by_work(machine))
        return triangle_threads(n, rule.byWork, machine);
    const int threads = level2_budget(machine);
    if (threads <= 1 || (threads >= largeTeam && n < rule.largeTeamFrom))
        return 1;
    return n < rule.allFrom && threads > mostBelow && machine.dynamic() == 1 ? mostBelow : threads;
}

struct SyrRule {
    int serialBelow;
    int bandsFrom; // smaller ones are serial where threads do not go by work
    double byWork; // as above
};

inline constexpr SyrRule ssyrRule{.serialBelow = 256, .bandsFrom = 1500, .byWork = 50000};
inline constexpr SyrRule ssyr2Rule{.serialBelow = 256, .bandsFrom = 1500, .byWork = 50000};
inline constexpr SyrRule cherRule{.serialBelow = 256, .bandsFrom = std::numeric_limits<int>::max(), .byWork = 30000};
inline constexpr SyrRule cher2Rule{.serialBelow = 256, .bandsFrom = std::numeric_limits<int>::max(), .byWork = 25000};

template <class Machine>
constexpr int syr_threads(const SyrRule& rule, int n, const Machine& machine) {
    if (is_short(rule, n))
        return 1;
    if (goes_by_work(machine))
        return triangle_threads(n, rule.byWork, machine);
    const int threads = n < rule.bandsFrom ? 1 : level2_budget(machine);
    return threads > 1 ? threads : 1;
}

// Where the first half of a team ends in a large triangle: after a third of the bands, or after two thirds.
enum class TriangleCut { third, twoThirds };

// Rows or columns of a triangle for a thread of a team of two or more. The team is halved, and each half has bands of
// one width, a multiple of 8; the larger half is the second one and its last thread takes what remains.
//
//   n     team  cut        bands
//   100   2     any        0+48     48+52
//   100   5     any        0+24     24+24     48+16     64+16    80+20
//   3000  2     third      0+1000   1000+2000
//   3000  4     twoThirds  0+1000   1000+1000 2000+496  2496+504
constexpr Slice triangle_slice(int n, int team, int thread, TriangleCut cut) {
    constexpr int unit = 8, halvedUpTo = 1024;
    const int firstHalf = team / 2, secondHalf = team - firstHalf;
    const int thirds = cut == TriangleCut::third ? 1 : 2;
    const int share = n <= halvedUpTo ? n / 2 : static_cast<int>(std::int64_t{n} * thirds / 3);
    const int width = share / firstHalf / unit * unit;
    if (thread < firstHalf)
        return {thread * width, width};
    const int start = firstHalf * width, rest = n - start;
    const int secondWidth = rest / secondHalf / unit * unit;
    const int first = start + (thread - firstHalf) * secondWidth;
    return {first, thread == team - 1 ? n - first : secondWidth};
}

// A band of the threaded triangular product: a slice of the result's rows of op(A) with the diagonal block at one end.
struct TriangleBand {
    Slice slice;
    int first, length; // what it multiplies: x[first, first + length)
};

// The rows of an upper triangular op(A) begin at the diagonal, those of a lower one end there.
// By work they are of about equal areas.
inline TriangleBand trmv_band(int n, int team, int thread, Uplo uplo, Op op, bool byWork) {
    const bool fromDiagonal = (uplo == Uplo::upper) == (op == Op::none);
    const Slice slice =
        byWork ? trapezoid(fromDiagonal ? Uplo::lower : Uplo::upper, n, team, thread).columns
               : triangle_slice(n, team, thread, fromDiagonal ? TriangleCut::third : TriangleCut::twoThirds);
    return fromDiagonal ? TriangleBand{slice, slice.first, n - slice.first}
                        : TriangleBand{slice, 0, slice.first + slice.count};
}

// A band of the threaded update: rows of a lower triangle, columns of an upper one, up to the diagonal.
constexpr Slice syr_band(int n, int team, int thread, Uplo uplo) {
    return triangle_slice(n, team, thread, uplo == Uplo::upper ? TriangleCut::twoThirds : TriangleCut::third);
}

} // namespace qrv
