// How many threads a level 1 operation gets, on machines of every class.
#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <utility>

#include "blas/thread/common/level1/level1_threads.hpp"
#include "support/recorded_machine.hpp"

namespace qrv::test {
namespace {

constexpr int longest = std::numeric_limits<int>::max();
constexpr int smallCache = 3 << 20; // the largest that counts as small

constexpr std::pair<const char*, const VectorRow*> routines[] = {
    {"saxpy", &saxpyRow}, {"scopy", &scopyRow}, {"sdot", &sdotRow},   {"srot", &srotRow},  {"sswap", &sswapRow},
    {"caxpy", &caxpyRow}, {"ccopy", &ccopyRow}, {"cdotc", &cdotcRow}, {"cswap", &cswapRow}};

// A row in which every number is another one.
constexpr VectorRow synthetic{
    .serialUpTo = 40,
    .newestShare = 45,
    .class5 = {.pairFrom = 60, .allFrom = 250},
    .class4 = {.serialUpTo = 49,
               .smallCache = {.pairFrom = 56, .share = {.moderateTeam = 50, .largeTeam = 100}},
               .largeCache = {.fourFrom = 70, .allFrom = 180}}};

// Machines, and from which lengths on each gives how many threads, 1 below the first: "60:2 250:5".
TEST(Level1Threads, EveryRule) {
    const struct {
        RecordedMachine machine;
        const char* steps;
    } rows[] = {
        // Classes without a rule, and nobody to share with.
        {{0, 8, true, smallCache}, ""},
        {{66, 1}, ""},
        {{66, 0}, ""},
        {{34, 8, true, smallCache}, ""},
        {{64, 1}, ""},
        {{33, 0}, ""},
        // Without dynamic adjustment the whole budget.
        {{64, 130, false, smallCache}, "41:130"},
        {{32, 2, false, smallCache}, "50:2"},
        {{33, 16, false}, "50:16"},
        // CpuMa 66 by elements, whatever the cache.
        {{66, 3, true, smallCache}, "90:2 135:3"},
        {{66, 4, false}, "90:2 135:3 180:4"},
        // CpuMa 64, whatever the cache.
        {{64, 2}, "60:2"},
        {{64, 3, true, smallCache}, "41:3"},
        {{64, 5, true, smallCache + 1}, "41:4 250:5"},
        // CpuMa 32 and 33, small second cache.
        {{33, 2, true, smallCache}, "56:2"},
        {{32, 3, true, 1}, "50:3"},
        {{33, 6, true, smallCache}, "50:4 250:5 300:6"},
        {{32, 13, true, 1 << 20}, "50:4 500:5 600:6 700:7 800:8 900:9 1000:10 1100:11 1200:12 1300:13"},
        // Large second cache, or none.
        {{33, 2, true, smallCache + 1}, "50:2"},
        {{32, 3, true, 4 << 20}, "50:2 70:3"},
        {{33, 8, true, 4 << 20}, "50:2 70:4 180:8"},
        {{32, 5}, "50:2 70:4 180:5"},
        {{33, 130, true, 0}, "50:2 70:4 180:130"},
    };
    for (const auto& [machine, steps] : rows) {
        int threads = 1, n = 0, more = 0;
        const auto expect = [&, &on = machine](int length) {
            for (const auto& [incx, incy] : {std::pair{1, -2}, {0, 1}, {1, 0}})
                EXPECT_EQ(vector_threads(synthetic, length, incx, incy, on), incx && incy ? threads : 1)
                    << "n=" << length << " incx=" << incx << " incy=" << incy << ' ' << on;
        };
        expect(-1);
        std::istringstream in(steps);
        for (char colon = 0; in >> n >> colon >> more;) {
            expect(n - 1);
            threads = more;
            expect(n);
        }
        expect(longest);
    }
    // Products of shares and threads do not fit an int here.
    EXPECT_EQ(vector_threads(synthetic, longest, 1, 1, RecordedMachine{33, 100000000, true, 1}), longest / 100);
}

// No team beyond the budget, none smaller for a longer vector, none where a row says serial.
TEST(Level1Threads, EveryRoutine) {
    for (const auto& [name, row] : routines)
        for (const int cpuMa : {32, 33, 64})
            for (const int cache : {-1, smallCache, smallCache + 1})
                for (const int budget : {2, 4, 8, 12, 13, 40}) {
                    const RecordedMachine machine{cpuMa, budget, true, cache};
                    const int serialUpTo = cpuMa == 64 ? row->serialUpTo : row->class4.serialUpTo;
                    EXPECT_GE(row->class4.serialUpTo, row->serialUpTo) << name;
                    int before = 1;
                    for (int n = 1; n < 500000; n += 1 + n / 50) {
                        const int threads = vector_threads(*row, n, 1, 1, machine);
                        ASSERT_TRUE(before <= threads && threads <= budget) << name << " n=" << n << ' ' << machine;
                        ASSERT_TRUE(n > serialUpTo || threads == 1) << name << " n=" << n << ' ' << machine;
                        before = threads;
                    }
                    ASSERT_EQ(before, budget) << name << ' ' << machine;
                }
    EXPECT_EQ(vector_threads(saxpyRow, 25000, 1, 1, RecordedMachine{64, 8}), 8);
    EXPECT_EQ(vector_threads(scopyRow, 44999, 1, 1, RecordedMachine{64, 8}), 4);
    EXPECT_EQ(vector_threads(ccopyRow, 8000, 1, 1, RecordedMachine{33, 8}), 8);
}

// What a call costs before the kernel runs: a machine is asked for no more than the length makes worth it.
TEST(Level1Threads, AsksCheapestFirst) {
    const auto asked = [](int n, int incx, const RecordedMachine& machine) {
        vector_threads(synthetic, n, incx, 1, machine);
        return machine.asked;
    };
    EXPECT_EQ(asked(40, 1, {64, 8}), "");
    EXPECT_EQ(asked(89, 1, {66, 8}), "c");
    EXPECT_EQ(asked(longest, 0, {66, 8}), "c");
    EXPECT_EQ(asked(longest, 1, {66, 8}), "cb");
    EXPECT_EQ(asked(49, 1, {33, 8}), "c");
    EXPECT_EQ(asked(longest, 0, {33, 8}), "c");
    EXPECT_EQ(asked(41, 1, {64, 1}), "cb");
    EXPECT_EQ(asked(longest, 1, {64, 8}), "cbd");
    EXPECT_EQ(asked(longest, 1, {33, 8, false}), "cbd");
    EXPECT_EQ(asked(longest, 1, {33, 8}), "cbds");
}

} // namespace
} // namespace qrv::test
