// How many threads a level 1 operation gets, on machines of every class, and what each thread of a team works on.
#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "blas/thread/common/level1/level1_threads.hpp"
#include "blas/thread/common/slice.hpp"

namespace qrv::test {
namespace {

constexpr int longest = std::numeric_limits<int>::max();
constexpr int smallCache = 3 << 20; // the largest that counts as small

// A machine that notes what it was asked: c(lass), b(udget), d(ynamic), s(econd cache).
struct RecordedMachine {
    int cpuMa, cache, threads;
    bool dynamicThreads = true;
    mutable std::string asked = "";

    int cpu_ma() const { return asked += 'c', cpuMa; }
    int budget() const { return asked += 'b', threads; }
    int dynamic() const { return asked += 'd', dynamicThreads; }
    int second_cache_bytes() const { return asked += 's', cache; }
};

constexpr std::pair<const char*, const VectorRow*> routines[] = {
    {"saxpy", &saxpyRow}, {"scopy", &scopyRow}, {"sdot", &sdotRow},   {"srot", &srotRow},  {"sswap", &sswapRow},
    {"caxpy", &caxpyRow}, {"ccopy", &ccopyRow}, {"cdotc", &cdotcRow}, {"cswap", &cswapRow}};

// From which lengths on a routine gets how many threads; below the first it is serial.
using Lengths = std::vector<std::pair<int, int>>;
using LengthsOfAll = std::array<Lengths, 9>; // in the order of the routines above

struct Profile {
    RecordedMachine machine;
    LengthsOfAll lengths;
};

LengthsOfAll all_from(const std::array<int, 9>& first, int threads) {
    LengthsOfAll lengths;
    for (std::size_t r = 0; r < 9; ++r)
        lengths[r] = {{first[r], threads}};
    return lengths;
}

// Four threads from `first` on, and `threads` from the routine's length in `all`.
LengthsOfAll four_then(const std::array<int, 9>& first, int threads, const std::array<int, 9>& all) {
    LengthsOfAll lengths = all_from(first, 4);
    for (std::size_t r = 0; r < 9; ++r)
        lengths[r].emplace_back(all[r], threads);
    return lengths;
}

// Four threads from `first` on, then one more at every multiple of a share up to the whole team.
LengthsOfAll four_then_by_share(const std::array<int, 9>& first, int threads, int realShare, int complexShare) {
    LengthsOfAll lengths = all_from(first, 4);
    for (std::size_t r = 0; r < 9; ++r)
        for (int t = 5; t <= threads; ++t)
            lengths[r].emplace_back(t * (r < 5 ? realShare : complexShare), t);
    return lengths;
}

// Two threads from `first` on, `middle` and `all` from the lengths of machines with a large cache.
LengthsOfAll two_then(const std::array<int, 9>& first, int middle, int all) {
    constexpr std::array<int, 9> fromMiddle = {6000, 8000, 8000, 8000, 8000, 6000, 5000, 6000, 5000};
    constexpr std::array<int, 9> fromAll = {18000, 20000, 20000, 30000, 20000, 15000, 8000, 15000, 10000};
    LengthsOfAll lengths = all_from(first, 2);
    for (std::size_t r = 0; r < 9; ++r) {
        lengths[r].emplace_back(fromMiddle[r], middle);
        lengths[r].emplace_back(fromAll[r], all);
    }
    return lengths;
}

std::vector<Profile> profiles() {
    constexpr std::array<int, 9> class5 = {4001, 5001, 5001, 4001, 5001, 2001, 2501, 2001, 2001};
    constexpr std::array<int, 9> class5Pair = {6000, 5001, 5001, 4001, 5001, 3000, 2501, 2500, 2001};
    constexpr std::array<int, 9> class5All = {25000, 45000, 30000, 20000, 20000, 20000, 20000, 20000, 15000};
    constexpr std::array<int, 9> class4 = {4901, 6001, 5001, 5001, 5001, 3001, 3001, 3001, 3001};
    constexpr std::array<int, 9> class4Pair = {5000, 6001, 6000, 5001, 5001, 3001, 3001, 4000, 3001};
    const LengthsOfAll serial;
    return {
        // Classes without a rule, and nobody to share with.
        {{0, smallCache, 8}, serial},
        {{66, smallCache, 8}, serial},
        {{66, smallCache, 8, false}, serial},
        {{34, smallCache, 8}, serial},
        {{64, smallCache, 1}, serial},
        {{33, smallCache, 0}, serial},
        // Without dynamic adjustment the whole budget.
        {{64, smallCache, 130, false}, all_from(class5, 130)},
        {{32, smallCache, 2, false}, all_from(class4, 2)},
        {{33, -1, 16, false}, all_from(class4, 16)},
        // CpuMa 64, whatever the cache.
        {{64, -1, 2}, all_from(class5Pair, 2)},
        {{64, smallCache, 3}, all_from(class5, 3)},
        {{64, smallCache, 4}, all_from(class5, 4)},
        {{64, smallCache + 1, 5}, four_then(class5, 5, class5All)},
        {{64, smallCache, 8}, four_then(class5, 8, class5All)},
        // CpuMa 32 and 33, small second cache.
        {{33, smallCache, 2}, all_from(class4Pair, 2)},
        {{32, 1, 2}, all_from(class4Pair, 2)},
        {{33, smallCache, 3}, all_from(class4, 3)},
        {{32, 1 << 20, 4}, all_from(class4, 4)},
        {{33, 1 << 20, 5}, four_then_by_share(class4, 5, 5000, 2500)},
        {{33, 1 << 20, 12}, four_then_by_share(class4, 12, 5000, 2500)},
        {{32, 1 << 20, 13}, four_then_by_share(class4, 13, 10000, 6500)},
        {{33, 1 << 20, 16}, four_then_by_share(class4, 16, 10000, 6500)},
        // Large second cache, or none.
        {{33, smallCache + 1, 2}, all_from(class4, 2)},
        {{32, 4 << 20, 3}, two_then(class4, 3, 3)},
        {{33, 4 << 20, 4}, two_then(class4, 4, 4)},
        {{33, 4 << 20, 8}, two_then(class4, 4, 8)},
        {{32, -1, 5}, two_then(class4, 4, 5)},
        {{33, 0, 130}, two_then(class4, 4, 130)},
    };
}

TEST(Level1Threads, EveryEdgeOfEveryRoutine) {
    for (const Profile& profile : profiles())
        for (std::size_t r = 0; r < std::size(routines); ++r) {
            const char* const name = routines[r].first;
            const VectorRow& row = *routines[r].second;
            const auto expect = [&](int n, int threads) {
                for (const auto& [incx, incy] : {std::pair{1, -2}, {0, 1}, {1, 0}})
                    EXPECT_EQ(vector_threads(row, n, incx, incy, profile.machine), incx && incy ? threads : 1)
                        << name << " n=" << n << " incx=" << incx << " incy=" << incy
                        << " CpuMa=" << profile.machine.cpuMa << " cache=" << profile.machine.cache
                        << " budget=" << profile.machine.threads << " dynamic=" << profile.machine.dynamicThreads;
            };
            int threads = 1;
            expect(-1, threads);
            expect(0, threads);
            for (const auto& [n, more] : profile.lengths[r]) {
                expect(n - 1, threads);
                expect(n, more);
                threads = more;
            }
            expect(longest, threads);
        }
    // Products of shares and threads do not fit an int here.
    EXPECT_EQ(vector_threads(saxpyRow, longest, 1, 1, RecordedMachine{33, 1, 1000000}), longest / 10000);
}

// What a call costs before the kernel runs: a machine is asked for no more than the length makes worth it.
TEST(Level1Threads, AsksCheapestFirst) {
    const auto asked = [](int n, int incx, const RecordedMachine& machine) {
        vector_threads(saxpyRow, n, incx, 1, machine);
        return machine.asked;
    };
    EXPECT_EQ(asked(4000, 1, {64, smallCache, 8}), "");
    EXPECT_EQ(asked(longest, 1, {66, smallCache, 8}), "c");
    EXPECT_EQ(asked(4900, 1, {33, smallCache, 8}), "c");
    EXPECT_EQ(asked(longest, 0, {33, smallCache, 8}), "c");
    EXPECT_EQ(asked(4001, 1, {64, smallCache, 1}), "cb");
    EXPECT_EQ(asked(longest, 1, {64, smallCache, 8}), "cbd");
    EXPECT_EQ(asked(longest, 1, {33, smallCache, 8, false}), "cbd");
    EXPECT_EQ(asked(longest, 1, {33, smallCache, 8}), "cbds");
}

// ---- Slices ----------------------------------------------------------------------------------------------------

TEST(Level1Threads, SlicesCoverTheVectorOnce) {
    for (int n = 0; n <= 300; ++n)
        for (int team = 1; team <= 20; ++team) {
            int next = 0;
            for (int thread = 0; thread < team + 3; ++thread) {
                const Slice slice = vector_slice(n, team, thread);
                if (thread >= team) {
                    EXPECT_EQ(slice.count, 0) << "beyond the team";
                    continue;
                }
                EXPECT_EQ(slice.first, next) << n << " on " << team;
                EXPECT_GE(slice.count, 0);
                if (thread < team - 1) {
                    EXPECT_EQ(slice.count, n / team / 8 * 8) << n << " on " << team;
                }
                next += slice.count;
            }
            EXPECT_EQ(next, n) << "on " << team;
        }
    EXPECT_EQ(vector_slice(-5, 3, 2).count, 0);
    EXPECT_EQ(vector_slice(longest, 1000000, 999999).first + vector_slice(longest, 1000000, 999999).count, longest);
}

// A slice handed to a routine names the elements that it names in the whole vector.
TEST(Level1Threads, SlicesOfAnyIncrement) {
    const auto index = [](int n, int inc, int element) { // from the address given
        return std::ptrdiff_t{inc >= 0 ? element : element - (n - 1)} * inc;
    };
    for (const int n : {1, 7, 16, 100, 299})
        for (const int team : {1, 2, 3, 7, 20})
            for (const int inc : {1, 2, 7, -1, -2, -7})
                for (int thread = 0; thread < team; ++thread) {
                    const Slice slice = vector_slice(n, team, thread);
                    for (int i = 0; i < slice.count; ++i)
                        EXPECT_EQ(slice_offset(slice, n, inc) + index(slice.count, inc, i),
                                  index(n, inc, slice.first + i))
                            << n << " on " << team << " inc=" << inc;
                }
    if constexpr (sizeof(std::ptrdiff_t) > sizeof(int)) {
        EXPECT_EQ(slice_offset({1 << 30, 8}, longest, 4), std::int64_t{1} << 32);
    }
}

} // namespace
} // namespace qrv::test
