// The decisions of the threaded GEMM, as functions of sizes, team and machine.
#include <gtest/gtest.h>
#include <ostream>

#include "blas/thread/common/level3/gemm_partition.hpp"

namespace qrv {

static std::ostream& operator<<(std::ostream& out, GemmRegion region) {
    constexpr const char* names[] = {"row", "column", "acopy"};
    return out << names[static_cast<int>(region)];
}
static std::ostream& operator<<(std::ostream& out, GemmSizes s) {
    return out << "m=" << s.m << " n=" << s.n << " k=" << s.k;
}

namespace test {
namespace {

constexpr int most = std::numeric_limits<int>::max();

// ---- Gate and gain -------------------------------------------------------------------------------------------

// The list of serial cases, written the other way round than the decision.
TEST(GemmGate, TinyCallsStaySerial) {
    for (int m = 1; m <= 40; ++m)
        for (int n = 1; n <= 40; ++n)
            for (int k = 0; k <= 40; ++k) {
                const bool serial = (k <= 4 && n < 16) || (m <= 16 && n <= 16 && k <= 16) ||
                                    (m <= 16 && n <= 16 && k > 16 && n <= 4) || (m > 16 && m <= 32 && n <= 4);
                ASSERT_EQ(gemm_may_thread({m, n, k}), !serial) << GemmSizes{m, n, k};
            }
    EXPECT_FALSE(gemm_may_thread({16, 4, 9999}));
    EXPECT_FALSE(gemm_may_thread({2000, 15, 0}));
    EXPECT_TRUE(gemm_may_thread({2000, 2000, 0})) << "nothing to multiply, but C to scale";
}

TEST(GemmGain, Work) {
    EXPECT_EQ(gemm_work(realGemmGain, 100, 100, 100), 510000);
    EXPECT_EQ(gemm_work(realGemmGain, 100, 25, 100), 131250);
    EXPECT_EQ(gemm_work(realGemmGain, 1, 1, 1), 1); // 3/2, truncated
    EXPECT_EQ(gemm_work(complexGemmGain, 10, 20, 3), 3 * (4 * 200 + 30));
}

TEST(GemmGain, SmallCalls) {
    constexpr GemmGainRule whole{.fromTeam = 2, .productWeight = 1, .divisor = 1};
    struct Row {
        GemmGainRule rule;
        GemmSizes sizes;
        int threads;
        bool gains;
        VectorForm form = VectorForm::sse;
    };
    for (const Row& row : {
             Row{realGemmGain, {100, 100, 100}, 4, true}, // 510000 / (4000 + 131250) = 3.8
             {realGemmGain, {20, 20, 10}, 2, false},      // 2200 / (2000 + 1150) = 0.7
             {realGemmGain, {26, 26, 26}, 2, false},      // 9464 / (2000 + 4901) = 1.37
             {realGemmGain, {27, 27, 27}, 2, true},       // 10570 / (2000 + 5278) = 1.45
             // By rows if m > threads * n. 90 x 10 on 8: 11 rows a thread; on 10: all 90 rows, one column.
             {realGemmGain, {90, 10, 100}, 8, true},   // 50000 / (8000 + 6550) = 3.4
             {realGemmGain, {90, 10, 100}, 10, true},  // 50000 / (10000 + 9050) = 2.6
             {realGemmGain, {90, 10, 100}, 40, false}, // more threads than columns: 1.1
             {realGemmGain, {100, 100, 100}, most, false},
             {whole, {3, 1, 1000}, 2, false},        // 7000 / (2000 + 3000): exactly 1.4 is not enough
             {whole, {3, 1, 1001}, 2, true},         // 7007 / (2000 + 3003)
             {complexGemmGain, {17, 5, 5}, 2, true}, // no gain asked of so small a team
             {complexGemmGain, {17, 5, 5}, 3, false},
             {realGemmGain, {42, 42, 42}, 2, false, VectorForm::avx2}, // a thread costs 4000
             {realGemmGain, {43, 43, 43}, 2, true, VectorForm::avx2},
             {realGemmGain, {56, 56, 56}, 2, false, VectorForm::avx512}, // and 10000
             {realGemmGain, {57, 57, 57}, 2, true, VectorForm::avx512},
         })
        EXPECT_EQ(gemm_gains(row.rule, row.sizes, row.threads, gemm_thread_cost(row.form)), row.gains)
            << row.sizes << " on " << row.threads;
}

// ---- Slices --------------------------------------------------------------------------------------------------

TEST(GemmSlices, CoverEverythingOnceInWholeUnits) {
    for (const int unit : {1, 2, 4})
        for (int parts = 1; parts <= 20; ++parts)
            for (int total = 0; total <= 300; ++total) {
                int next = 0;
                for (int part = 0; part < parts; ++part) {
                    const Slice slice = equal_slice(total, parts, part, unit);
                    ASSERT_EQ(slice.first, next) << total << ' ' << parts << ' ' << unit;
                    ASSERT_TRUE(part == parts - 1 || slice.count == total / parts / unit * unit);
                    // An address is taken at `first` even where nothing is there.
                    ASSERT_TRUE(slice.first < total || total == 0) << total << ' ' << parts << ' ' << unit;
                    next += slice.count;
                }
                ASSERT_EQ(next, total);
            }
    EXPECT_EQ(equal_slice(most, 3, 2).count, 715827883);
}

TEST(GemmSlices, BlocksCoverASlice) {
    for (int count = 0; count <= 40; ++count)
        for (int size = 1; size <= 12; ++size) {
            int covered = 0;
            for (int offset = 0; offset < 48; offset += size) {
                const Slice block = gemm_block({7, count}, offset, size);
                ASSERT_EQ(block.first, 7 + covered);
                ASSERT_EQ(block.count, std::clamp(count - offset, 0, size));
                covered += block.count;
            }
        }
}

TEST(GemmSlices, SplitsOfC) {
    using enum GemmSplit;
    // Small: rows if m > n * team. Others: rows if m > n.
    EXPECT_EQ(gemm_plain_split({40, 10, 100}, 4), columns);
    EXPECT_EQ(gemm_plain_split({41, 10, 100}, 4), rows);
    EXPECT_EQ(gemm_plain_split({40, 40, 101}, 4), columns);
    EXPECT_EQ(gemm_plain_split({41, 40, 101}, 4), rows);
    EXPECT_EQ(gemm_plain_split({100, 100, 100}, most), columns);
    // Scaling: rows if m > n * team at any size.
    EXPECT_EQ(gemm_scale_split({400, 100, 5}, 4), columns);
    EXPECT_EQ(gemm_scale_split({401, 100, 5}, 4), rows);
    EXPECT_EQ(gemm_scale_split({most, 5, 5}, 1 << 30), columns);
}

// ---- Machine classes -----------------------------------------------------------------------------------------

TEST(GemmMachine, Classes) {
    constexpr int limit = 3145728; // of the second level
    struct Row {
        int cpuMa, secondCache, machine;
    };
    for (const Row& row : {Row{33, limit, 4},
                           {33, limit + 1, 2},
                           {33, -1, 4},
                           {32, limit + 1, 1},
                           {64, limit + 1, 3},
                           {66, 0, 3},
                           {0, limit + 1, 0}}) {
        const GemmMachine machine = gemm_machine_class({row.cpuMa, row.secondCache, 0});
        EXPECT_EQ(static_cast<int>(machine), row.machine) << row.cpuMa << ' ' << row.secondCache;
        EXPECT_EQ(gemm_scales_first(machine), row.machine >= 2);
    }
}

// ---- Partition -----------------------------------------------------------------------------------------------

constexpr auto row = GemmRegion::row;
constexpr auto column = GemmRegion::column;
constexpr auto acopy = GemmRegion::acopy;
constexpr GemmBlocks sse42Blocks{1280, 5000, 256};
constexpr GemmBlocks quadsBlocks{2000, 5000, 256};

// `threads`: those that get work.
struct PartitionCase {
    GemmSizes sizes;
    int team;
    GemmRegion region;
    int threads;
};

void check(int machine, const GemmBlocks& blocks, std::initializer_list<PartitionCase> cases) {
    constexpr int copyRows[] = {0, 0, 1024, 0, 896}; // of a block, by machine; 0: the plan's
    for (const PartitionCase& p : cases) {
        const GemmPartition got = gemm_partition(static_cast<GemmMachine>(machine), true, p.sizes, blocks, p.team);
        SCOPED_TRACE(testing::Message() << "class " << machine << ' ' << p.sizes << " team=" << p.team);
        EXPECT_EQ(got.region, p.region);
        EXPECT_EQ(got.mode, machine < 2         ? GemmMode::choose
                            : p.region == acopy ? GemmMode::directBGivenA
                                                : GemmMode::packA);
        EXPECT_EQ(got.threads, p.threads);
        EXPECT_EQ(got.blocks.mb, p.region == acopy && copyRows[machine] ? copyRows[machine] : blocks.mb);
        EXPECT_EQ(got.blocks.nb, blocks.nb);
        EXPECT_EQ(got.blocks.kb, blocks.kb);
        EXPECT_EQ(got.aCopies, p.region == acopy ? p.threads : 0);
        EXPECT_EQ(got.rowThreads, p.region == column ? 1 : p.threads);
        EXPECT_EQ(got.colThreads, p.region == column ? p.threads : 1);
    }
}

TEST(GemmPartition, PlainClasses) {
    for (const int machine : {0, 1})
        check(machine, sse42Blocks,
              {{{200, 200, 200}, 3, column, 3},
               {{201, 200, 200}, 3, row, 3},
               {{200, 201, 200}, 4, column, 4},
               // Small in all dimensions: rows only if m > n * team.
               {{100, 50, 100}, 2, column, 2},
               {{100, 49, 100}, 2, row, 2},
               {{100, 49, 101}, 4, row, 4}});
    for (int machine = 0; machine <= 4; ++machine) {
        const auto got = gemm_partition(static_cast<GemmMachine>(machine), false, {900, 900, 900}, {0, 0, 0}, 3);
        EXPECT_TRUE(got.region == column && got.mode == GemmMode::choose && got.threads == 3 && got.aCopies == 0)
            << "without a plan, class " << machine;
    }
}

// A square or wide C is shared out alike in the three classes that scale first, apart from the rows of a copy.
TEST(GemmPartition, SquareAndWide) {
    for (const int machine : {2, 3, 4})
        check(machine, sse42Blocks,
              {{{799, 799, 799}, 4, column, 4}, // all equal: from 800 on
               {{800, 800, 800}, 4, acopy, 4},
               {{101, 101, 101}, 4, column, 4},
               {{150, 150, 99}, 4, column, 4}, // else square and deep from 100 on
               {{150, 150, 100}, 4, acopy, 4},
               {{799, 799, 800}, 4, acopy, 4},
               {{799, 799, 798}, 4, acopy, 4},
               {{150, 151, 5000}, 4, column, 4}, // wide: never
               {{800, 801, 800}, 4, column, 4},
               {{800, 800, 800}, 3, acopy, 2}, // an even number of threads
               {{799, 799, 799}, 5, column, 4},
               {{799, 799, 799}, 2, column, 2}});
}

// min(mc, mb) * min(k, kb) * 4 up to 131072 is copied: 128 rows of 256 steps.
TEST(GemmPartition, TallOnSse42) {
    check(3, sse42Blocks,
          {{{512, 100, 256}, 4, acopy, 4},
           {{516, 100, 256}, 4, row, 4},
           {{512, 100, 5000}, 4, acopy, 4}, // k counts up to kb
           {{515, 100, 256}, 5, acopy, 4},  // m / threads is 128, with an even number of threads
           {{5000, 20, 25}, 2, acopy, 2},   // rows count up to mb: 1280 * 25 * 4 = 128000
           {{5000, 20, 26}, 2, row, 2},     // 133120
           {{101, 3, 0}, 2, acopy, 2},
           {{100, 99, 100}, 2, row, 2}, // small in all dimensions
           {{100, 99, 101}, 2, acopy, 2},
           {{101, 99, 100}, 2, acopy, 2}});
}

// min(mc, mb) * min(k, kb) * 4 up to 1572864 is copied: 1536 rows of 256 steps.
TEST(GemmPartition, TallOnQuads) {
    for (const int machine : {2, 4})
        check(machine, quadsBlocks,
              {{{3072, 100, 256}, 2, acopy, 2},
               {{3074, 100, 256}, 2, row, 2},
               {{3072, 100, 9000}, 2, acopy, 2},
               {{99999, 100, 196}, 2, acopy, 2}, // 2000 * 196 * 4 = 1568000: the plan's mb counts, not the copy's
               {{99999, 100, 197}, 2, row, 2},
               // At most 100 rows and columns: not copied, whatever k is,
               {{100, 99, 256}, 2, row, 2},
               {{100, 2, 9000}, 2, row, 2},
               {{100, 4, 9000}, 2, row, 2},
               // but for three columns that are deep or have four rows a thread.
               {{100, 3, 200}, 2, acopy, 2},
               {{7, 3, 7999}, 2, row, 2}, // three rows a thread
               {{7, 3, 8000}, 2, acopy, 2},
               {{8, 3, 200}, 2, acopy, 2},
               // One dimension above 100: the size decides.
               {{101, 2, 200}, 2, acopy, 2},
               {{101, 100, 2}, 2, acopy, 2}});
}

TEST(GemmPartition, SharedBytes) {
    EXPECT_EQ(gemm_shared_bytes(3, 1000, 12), 3U * (1000 + 8192));
    constexpr std::size_t all = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(gemm_shared_bytes(3, all / 2, 12), 0U);
    EXPECT_EQ(gemm_shared_bytes(1, all - 5, 12), 0U);
    EXPECT_EQ(gemm_shared_bytes(most, all / 4, 12), 0U);
}

} // namespace
} // namespace test
} // namespace qrv
