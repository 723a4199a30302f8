// How many threads a level 2 operation gets, on machines of every class, and what each thread of a team works on.
#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <vector>

#include "blas/thread/common/level2/level2_threads.hpp"

namespace qrv::test {
namespace {

// A machine that notes what it was asked: c(lass), b(udget), d(ynamic).
struct RecordedLevel2Machine {
    int cpuMa, threads;
    bool dynamicThreads = true;
    mutable std::string asked = "";

    int cpu_ma() const { return asked += 'c', cpuMa; }
    int budget() const { return asked += 'b', threads; }
    int dynamic() const { return asked += 'd', dynamicThreads; }
};
using Machine = RecordedLevel2Machine;

// ---- Decisions -----------------------------------------------------------------------------------------------------

// A decision of fixed sizes: that many threads on each class with a rule, none on the others or alone.
template <class Decide>
void expect_threads(const Decide& decide, int budget, bool dynamicThreads, int threads, const std::string& what) {
    for (const int cpuMa : {0, 32, 33, 64, 66}) {
        const bool hasRule = cpuMa == 32 || cpuMa == 33 || cpuMa == 64;
        EXPECT_EQ(decide(Machine{cpuMa, budget, dynamicThreads}), hasRule ? threads : 1)
            << what << " on " << budget << " threads, CpuMa " << cpuMa;
        EXPECT_EQ(decide(Machine{cpuMa, 1, dynamicThreads}), 1) << what;
    }
}

TEST(Level2Threads, General) {
    struct Row {
        const GemvRule& rule;
        char trans;
        int m, n, budget;
        bool threaded;
    };
    constexpr int huge = 2000000000;
    for (const Row& p : {
             Row{sgemvRule, 'N', 127, 127, 2, false},
             {sgemvRule, 'N', 128, 47, 2, false}, // shares of 64 rows: 3072 elements
             {sgemvRule, 'N', 128, 48, 2, true},
             {sgemvRule, 'n', 1, 128, 2, false},   // no rows
             {sgemvRule, 'N', 100, 255, 4, false}, // of 24 rows: 256 columns
             {sgemvRule, 'N', 100, 256, 4, true},
             {sgemvRule, 'N', 100, 100000, 4, true},
             {sgemvRule, 'N', 40, 100000, 4, false}, // of 8 rows: never
             {sgemvRule, 'N', 63, huge, 4, false},
             {sgemvRule, 'N', 64, huge, 4, true},
             {sgemvRule, 'N', 4096, 4096, 600, false}, // of no rows
             {sgemvRule, 'T', 127, 128, 4, false},     // of 32 columns: 4096 elements
             {sgemvRule, 'T', 128, 128, 4, true},
             {sgemvRule, 't', 81, 128, 5, false}, // of 25 columns: 2048
             {sgemvRule, 'c', 82, 128, 5, true},
             {sgemvRule, 'C', huge, 3, 4, false},
             {cgemvRule, 'N', 255, 255, 2, false},
             {cgemvRule, 'N', 256, 31, 4, false}, // of 64 rows: 2048 elements
             {cgemvRule, 'N', 256, 32, 4, true},
             {cgemvRule, 'N', 256, 21, 5, false}, // of 48 rows: 1024
             {cgemvRule, 'N', 256, 22, 5, true},
             {cgemvRule, 'N', 40, 256, 4, true},  // of 8 rows too
             {cgemvRule, 'C', 31, 256, 4, false}, // of 64 columns: 2048
             {cgemvRule, 'T', 32, 256, 4, true},
             {cgemvRule, 'T', 20, 256, 5, false}, // of 51 columns: 1024
             {cgemvRule, 'C', 21, 256, 5, true},
         })
        for (const bool dynamicThreads : {false, true})
            expect_threads([&](const Machine& machine) { return gemv_threads(p.rule, p.trans, p.m, p.n, machine); },
                           p.budget, dynamicThreads, p.threaded ? p.budget : 1,
                           std::string(1, p.trans) + ' ' + std::to_string(p.m) + " x " + std::to_string(p.n));
}

// From which sizes on how many threads are given, 1 below the first.
struct Steps {
    const char* name;
    int (*decide)(int n, const Machine& machine);
    int budget;
    bool dynamicThreads;
    std::vector<std::pair<int, int>> from;
};

TEST(Level2Threads, SymmetricAndTriangular) {
    const auto symv = [](int n, const Machine& machine) { return symv_threads(n, machine); };
    const auto strmv = [](int n, const Machine& machine) { return trmv_threads(strmvRule, n, machine); };
    const auto ctrmv = [](int n, const Machine& machine) { return trmv_threads(ctrmvRule, n, machine); };
    const auto syr = [](int n, const Machine& machine) { return syr_threads(n, machine); };
    for (const Steps& p : {
             Steps{"symv", symv, 2, true, {{256, 2}, {4001, 1}}},
             {"symv", symv, 8, false, {{256, 8}, {4001, 1}}},
             {"symv", symv, 9, true, {{301, 9}}},
             {"strmv", strmv, 4, true, {{220, 4}}},
             {"strmv", strmv, 5, true, {{220, 4}, {300, 5}}},
             {"strmv", strmv, 8, false, {{220, 8}}},
             {"strmv", strmv, 9, true, {{301, 9}}},
             {"strmv", strmv, 9, false, {{301, 9}}},
             {"ctrmv", ctrmv, 4, true, {{128, 4}}},
             {"ctrmv", ctrmv, 5, true, {{128, 4}, {256, 5}}},
             {"ctrmv", ctrmv, 8, false, {{128, 8}}},
             {"ctrmv", ctrmv, 9, true, {{161, 4}, {256, 9}}},
             {"ctrmv", ctrmv, 9, false, {{161, 9}}},
             {"syr", syr, 2, true, {{1500, 2}}},
             {"syr", syr, 16, false, {{1500, 16}}},
         }) {
        int below = 1;
        for (const auto& [n, threads] : p.from) {
            for (const auto& [size, expected] : {std::pair{n - 1, below}, {n, threads}})
                expect_threads([&, size = size](const Machine& machine) { return p.decide(size, machine); }, p.budget,
                               p.dynamicThreads, expected, std::string(p.name) + " n=" + std::to_string(size));
            below = threads;
        }
        EXPECT_EQ(p.decide(2000000000, Machine{64, p.budget, p.dynamicThreads}), below) << p.name;
    }
}

TEST(Level2Threads, SmallCallsAskForNothing) {
    const Machine old{64, 16}, newest{66, 16};
    gemv_threads(sgemvRule, 'N', 127, 127, old);
    gemv_threads(cgemvRule, 'T', 255, 255, old);
    symv_threads(255, old);
    trmv_threads(strmvRule, 219, old);
    trmv_threads(ctrmvRule, 127, old);
    syr_threads(1499, old);
    EXPECT_EQ(old.asked, "");
    gemv_threads(sgemvRule, 'N', 5000, 5000, newest);
    EXPECT_EQ(newest.asked, "c");
}

// ---- Partitions ----------------------------------------------------------------------------------------------------

// Whether slices cover [0, n) once, and how many of the inner ones are no multiple of `unit`.
template <class SliceOf>
void expect_cover(int n, int team, int unit, const SliceOf& slice_of) {
    int next = 0;
    for (int thread = 0; thread < team; ++thread) {
        const Slice slice = slice_of(thread);
        ASSERT_EQ(slice.first, next) << n << " on " << team;
        ASSERT_TRUE(slice.count >= 0 && (thread == team - 1 || slice.count % unit == 0)) << n << " on " << team;
        next += slice.count;
    }
    ASSERT_EQ(next, n) << n << " on " << team;
}

TEST(Level2Slices, CoverEverythingOnce) {
    std::vector<int> sizes{1023, 1024, 1025, 1500, 3001, 20000};
    for (int n = 1; n < 300; ++n)
        sizes.push_back(n);
    for (const int n : sizes)
        for (int team = 2; team < 20; ++team) {
            for (const TriangleCut cut : {TriangleCut::third, TriangleCut::twoThirds})
                expect_cover(n, team, 8, [&](int thread) { return triangle_slice(n, team, thread, cut); });
            expect_cover(n, team, 1, [&](int thread) { return gemv_slice('T', 7, n, team, thread); });
            expect_cover(n, team, 8, [&](int thread) { return gemv_slice('n', n, 7, team, thread); });
            expect_cover(n, team & ~1, 8, [&](int k) {
                const SymvBlock block = symv_block(n, symv_blocks(team), k);
                EXPECT_EQ(block.before, block.rows.first);
                EXPECT_EQ(block.before + block.rows.count + block.after, n);
                return block.rows;
            });
        }
}

TEST(Level2Slices, TrianglesAreCutWhereBothHalvesHaveAsMuch) {
    struct Row {
        int n, team;
        TriangleCut cut;
        std::vector<int> widths;
    };
    for (const Row& p : {
             Row{100, 2, TriangleCut::third, {48, 52}},
             {100, 5, TriangleCut::twoThirds, {24, 24, 16, 16, 20}}, // an odd thread is in the second half
             {1024, 2, TriangleCut::third, {512, 512}},
             {1025, 2, TriangleCut::third, {336, 689}},
             {1025, 2, TriangleCut::twoThirds, {680, 345}},
             {1500, 2, TriangleCut::twoThirds, {1000, 500}},
             {3000, 4, TriangleCut::third, {496, 496, 1000, 1008}},
             {20, 4, TriangleCut::third, {0, 0, 8, 12}},
             {12, 8, TriangleCut::third, {0, 0, 0, 0, 0, 0, 0, 12}},
         }) {
        std::vector<int> widths;
        for (int thread = 0; thread < p.team; ++thread)
            widths.push_back(triangle_slice(p.n, p.team, thread, p.cut).count);
        EXPECT_EQ(widths, p.widths) << p.n << " on " << p.team;
    }
    EXPECT_EQ(triangle_slice(2000000000, 2, 0, TriangleCut::twoThirds).count, 1333333328);
}

TEST(Level2Slices, BandsOfATriangle) {
    const auto band = [](bool upper, char trans, int thread) {
        const TriangleBand b = trmv_band(3000, 2, thread, upper, trans);
        return std::tuple(b.slice.first, b.slice.count, b.first, b.length);
    };
    // op(A) upper: rows begin at the diagonal, the first ones are the longest.
    for (const auto& [upper, trans] : {std::pair{true, 'N'}, {false, 't'}, {false, 'C'}}) {
        EXPECT_EQ(band(upper, trans, 0), std::tuple(0, 1000, 0, 3000)) << trans;
        EXPECT_EQ(band(upper, trans, 1), std::tuple(1000, 2000, 1000, 2000)) << trans;
    }
    for (const auto& [upper, trans] : {std::pair{false, 'n'}, {true, 'T'}}) {
        EXPECT_EQ(band(upper, trans, 0), std::tuple(0, 2000, 0, 2000)) << trans;
        EXPECT_EQ(band(upper, trans, 1), std::tuple(2000, 1000, 0, 3000)) << trans;
    }
    EXPECT_EQ(syr_band(3000, 2, 0, true).count, 2000);
    EXPECT_EQ(syr_band(3000, 2, 0, false).count, 1000);
}

} // namespace
} // namespace qrv::test
