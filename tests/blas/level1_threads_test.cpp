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

} // namespace
} // namespace qrv::test
