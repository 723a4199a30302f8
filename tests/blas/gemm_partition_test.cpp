// The decisions of the threaded GEMM, as functions of sizes, team and machine.
#include <gtest/gtest.h>
#include <ostream>
#include <vector>

#include "blas/thread/common/level3/gemm_partition.hpp"

namespace qrv {

static std::ostream& operator<<(std::ostream& out, GemmRegion region) {
    constexpr const char* names[] = {"row", "column", "acopy"};
    return out << names[static_cast<int>(region)];
}

namespace test {
namespace {

// ---- Gate and gain -------------------------------------------------------------------------------------------

TEST(GemmGate, TinyCallsStaySerial) {
    struct Row {
        int m, n, k;
        bool threads;
    };
    constexpr Row rows[] = {
        {17, 5, 2, false},    {40, 2, 500, true},                          // k <= 4 needs 16 columns; tall is enough
        {1000, 15, 4, false}, {1000, 15, 5, true},   {1000, 16, 4, true},  // edges of k <= 4 and n < 16
        {16, 16, 16, false},  {16, 17, 16, true},    {16, 17, 1, true},    // m <= 16: by columns first
        {16, 16, 17, true},   {16, 5, 17, true},     {16, 4, 17, false},   //          then by depth and columns
        {16, 4, 9999, false}, {1, 1, 9999, false},   {1, 5, 17, true},     //
        {17, 4, 500, false},  {17, 5, 5, true},      {32, 4, 500, false},  // 16 < m <= 32: by columns
        {32, 5, 500, true},   {33, 4, 500, true},    {33, 1, 5, true},     // m > 32: always
        {33, 1, 4, false},    {2000, 2000, 0, true}, {2000, 15, 0, false}, // nothing to multiply, but C to scale
    };
    for (const Row& row : rows)
        EXPECT_EQ(gemm_may_thread({row.m, row.n, row.k}), row.threads) << row.m << ' ' << row.n << ' ' << row.k;
}

// The list of serial cases, written the other way round than the decision.
TEST(GemmGate, AgreesWithTheListOfSerialCases) {
    for (int m = 1; m <= 40; ++m)
        for (int n = 1; n <= 40; ++n)
            for (int k = 0; k <= 40; ++k) {
                const bool serial = (k <= 4 && n < 16) || (m <= 16 && n <= 16 && k <= 16) ||
                                    (m <= 16 && n <= 16 && k > 16 && n <= 4) || (m > 16 && m <= 32 && n <= 4);
                ASSERT_EQ(gemm_may_thread({m, n, k}), !serial) << m << ' ' << n << ' ' << k;
            }
}

TEST(GemmGain, Work) {
    EXPECT_EQ(gemm_work(realGemmGain, 100, 100, 100), 510000);
    EXPECT_EQ(gemm_work(realGemmGain, 100, 25, 100), 131250);
    EXPECT_EQ(gemm_work(realGemmGain, 1, 1, 1), 1); // 3/2, truncated
    constexpr GemmGainRule weighted{.fromTeam = 3, .productWeight = 4, .divisor = 1};
    EXPECT_EQ(gemm_work(weighted, 10, 20, 3), 3 * (4 * 200 + 30));
}

TEST(GemmGain, SmallCalls) {
    EXPECT_TRUE(gemm_gains(realGemmGain, {100, 100, 100}, 4)); // 510000 / (4000 + 131250) = 3.8
    EXPECT_FALSE(gemm_gains(realGemmGain, {20, 20, 10}, 2));   // 2200 / (2000 + 1150) = 0.7
    // By rows: m > threads * n. 90 x 10 on 8: 11 rows a thread; on 10: all 90 rows, one column.
    EXPECT_TRUE(gemm_gains(realGemmGain, {90, 10, 100}, 8));   // 50000 / (8000 + 6550) = 3.4
    EXPECT_TRUE(gemm_gains(realGemmGain, {90, 10, 100}, 10));  // 50000 / (10000 + 9050) = 2.6
    EXPECT_FALSE(gemm_gains(realGemmGain, {90, 10, 100}, 40)); // more threads than columns: 1.1
    // 26 and 27 lie on either side of 1.4 for two threads.
    EXPECT_FALSE(gemm_gains(realGemmGain, {26, 26, 26}, 2)); // 9464 / (2000 + 4901) = 1.37
    EXPECT_TRUE(gemm_gains(realGemmGain, {27, 27, 27}, 2));  // 10570 / (2000 + 5278) = 1.45
    // Exactly 1.4 is not enough: 7000 / (2000 + 3000), by rows.
    constexpr GemmGainRule whole{.fromTeam = 2, .productWeight = 1, .divisor = 1};
    EXPECT_FALSE(gemm_gains(whole, {3, 1, 1000}, 2));
    EXPECT_TRUE(gemm_gains(whole, {3, 1, 1001}, 2)); // 7007 / (2000 + 3003)
}

TEST(GemmGain, SmallTeamsMayNeedNone) {
    constexpr GemmGainRule fromThree{.fromTeam = 3, .productWeight = 4, .divisor = 1};
    EXPECT_TRUE(gemm_gains(fromThree, {17, 5, 5}, 2));
    EXPECT_FALSE(gemm_gains(fromThree, {17, 5, 5}, 3));
}

TEST(GemmGain, HugeTeamsDoNotOverflow) {
    EXPECT_FALSE(gemm_gains(realGemmGain, {100, 100, 100}, std::numeric_limits<int>::max()));
    EXPECT_EQ(gemm_plain_split({100, 100, 100}, std::numeric_limits<int>::max()), GemmSplit::columns);
    EXPECT_EQ(gemm_scale_split({std::numeric_limits<int>::max(), 5, 5}, 1 << 30), GemmSplit::columns);
}

// ---- Slices --------------------------------------------------------------------------------------------------

TEST(GemmSlices, CoverEverythingOnceInWholeUnits) {
    for (const int unit : {1, 2, 4})
        for (int parts = 1; parts <= 20; ++parts)
            for (int total = 0; total <= 300; ++total) {
                int next = 0;
                for (int part = 0; part < parts; ++part) {
                    const Slice slice = gemm_slice(total, parts, part, unit);
                    ASSERT_EQ(slice.first, next) << total << ' ' << parts << ' ' << unit;
                    ASSERT_GE(slice.count, 0);
                    ASSERT_TRUE(slice.count % unit == 0 || part == parts - 1);
                    // An address is taken at `first` even where nothing is there.
                    ASSERT_TRUE(slice.first < total || total == 0) << total << ' ' << parts << ' ' << unit;
                    next += slice.count;
                }
                ASSERT_EQ(next, total);
            }
}

TEST(GemmSlices, AreEvenUpToTheLast) {
    for (int part = 0; part < 3; ++part)
        EXPECT_EQ(gemm_slice(10, 4, part).count, 2);
    EXPECT_EQ(gemm_slice(10, 4, 3).count, 4);
    EXPECT_EQ(gemm_slice(103, 3, 1, 4).first, 32);
    EXPECT_EQ(gemm_slice(103, 3, 2, 4).count, 39);
    EXPECT_EQ(gemm_slice(std::numeric_limits<int>::max(), 3, 2).count, 715827883);
}

TEST(GemmSlices, BlocksCoverASlice) {
    for (int count = 0; count <= 40; ++count)
        for (int size = 1; size <= 12; ++size) {
            int covered = 0;
            for (int offset = 0; offset < 48; offset += size) {
                const Slice block = gemm_block({7, count}, offset, size);
                ASSERT_TRUE(block.first >= 7 && block.first + block.count <= 7 + count);
                if (block.count > 0) {
                    ASSERT_EQ(block.first, 7 + covered);
                    ASSERT_LE(block.count, size);
                }
                covered += block.count;
            }
            ASSERT_EQ(covered, count) << size;
        }
}

TEST(GemmSlices, SplitsOfC) {
    // Small: rows if m > n * team. Others: rows if m > n.
    EXPECT_EQ(gemm_plain_split({40, 10, 100}, 4), GemmSplit::columns);
    EXPECT_EQ(gemm_plain_split({41, 10, 100}, 4), GemmSplit::rows);
    EXPECT_EQ(gemm_plain_split({40, 40, 101}, 4), GemmSplit::columns);
    EXPECT_EQ(gemm_plain_split({41, 40, 101}, 4), GemmSplit::rows);
    // Scaling: rows if m > n * team at any size.
    EXPECT_EQ(gemm_scale_split({400, 100, 5}, 4), GemmSplit::columns);
    EXPECT_EQ(gemm_scale_split({401, 100, 5}, 4), GemmSplit::rows);
}

// ---- Machine classes -----------------------------------------------------------------------------------------

TEST(GemmMachine, Classes) {
    constexpr int largeL2 = 3145728;
    EXPECT_EQ(static_cast<int>(gemm_machine_class({33, largeL2, 0})), 4);
    EXPECT_EQ(static_cast<int>(gemm_machine_class({33, largeL2 + 1, 0})), 2);
    EXPECT_EQ(static_cast<int>(gemm_machine_class({33, -1, -1})), 4);
    EXPECT_EQ(static_cast<int>(gemm_machine_class({32, largeL2 + 1, 0})), 1);
    EXPECT_EQ(static_cast<int>(gemm_machine_class({64, largeL2 + 1, 0})), 3);
    EXPECT_EQ(static_cast<int>(gemm_machine_class({66, 0, 0})), 3);
    EXPECT_EQ(static_cast<int>(gemm_machine_class({0, largeL2 + 1, 0})), 0);
    for (int machine = 0; machine <= 4; ++machine)
        EXPECT_EQ(gemm_scales_first(static_cast<GemmMachine>(machine)), machine >= 2) << machine;
}

// ---- Partition -----------------------------------------------------------------------------------------------

struct PartitionCase {
    int machine;
    GemmSizes sizes;
    int team;
    GemmBlocks blocks;
    GemmRegion region;
    GemmMode mode;
    int threads;
    int mb; // of the partition
};

constexpr auto row = GemmRegion::row;
constexpr auto column = GemmRegion::column;
constexpr auto acopy = GemmRegion::acopy;
constexpr auto choose = GemmMode::choose;
constexpr auto packA = GemmMode::packA;
constexpr auto given = GemmMode::directBGivenA;
constexpr GemmBlocks sse42Blocks{1280, 5000, 256};
constexpr GemmBlocks quadsBlocks{2000, 5000, 256};

void expect_partition(const PartitionCase& p) {
    const GemmPartition got = gemm_partition(static_cast<GemmMachine>(p.machine), true, p.sizes, p.blocks, p.team);
    SCOPED_TRACE(testing::Message() << "class " << p.machine << " m=" << p.sizes.m << " n=" << p.sizes.n
                                    << " k=" << p.sizes.k << " team=" << p.team);
    EXPECT_EQ(got.region, p.region);
    EXPECT_EQ(got.mode, p.mode);
    EXPECT_EQ(got.threads, p.threads);
    EXPECT_EQ(got.blocks.mb, p.mb);
    EXPECT_EQ(got.blocks.nb, p.blocks.nb);
    EXPECT_EQ(got.blocks.kb, p.blocks.kb);
    EXPECT_EQ(got.aCopies, p.region == acopy ? p.threads : 0);
    EXPECT_EQ(got.rowThreads, p.region == column ? 1 : p.threads);
    EXPECT_EQ(got.colThreads, p.region == column ? p.threads : 1);
}

TEST(GemmPartition, PlainClasses) {
    for (const int machine : {0, 1}) {
        expect_partition({machine, {200, 200, 200}, 3, sse42Blocks, column, choose, 3, 1280});
        expect_partition({machine, {201, 200, 200}, 3, sse42Blocks, row, choose, 3, 1280});
        expect_partition({machine, {200, 201, 200}, 4, sse42Blocks, column, choose, 4, 1280});
        // Small in all dimensions: rows only if m > n * team.
        expect_partition({machine, {100, 50, 100}, 2, sse42Blocks, column, choose, 2, 1280});
        expect_partition({machine, {100, 49, 100}, 2, sse42Blocks, row, choose, 2, 1280});
        expect_partition({machine, {100, 49, 101}, 4, sse42Blocks, row, choose, 4, 1280});
    }
}

TEST(GemmPartition, WithoutAPlanEveryClassIsPlain) {
    for (int machine = 0; machine <= 4; ++machine) {
        const GemmPartition got =
            gemm_partition(static_cast<GemmMachine>(machine), false, {900, 900, 900}, {0, 0, 0}, 3);
        EXPECT_EQ(got.region, column);
        EXPECT_EQ(got.mode, choose);
        EXPECT_EQ(got.threads, 3);
        EXPECT_EQ(got.aCopies, 0);
    }
}

// A square or wide C is shared out alike in the three classes that scale first, apart from the rows of a copy.
TEST(GemmPartition, SquareAndWide) {
    for (const int machine : {2, 3, 4}) {
        const int copyMb = machine == 2 ? 1024 : machine == 4 ? 896 : 1280;
        const auto expect = [&](GemmSizes sizes, int team, GemmRegion region, int threads) {
            const bool copied = region == acopy;
            expect_partition(
                {machine, sizes, team, sse42Blocks, region, copied ? given : packA, threads, copied ? copyMb : 1280});
        };
        expect({799, 799, 799}, 4, column, 4); // all equal: from 800 on
        expect({800, 800, 800}, 4, acopy, 4);
        expect({150, 150, 99}, 4, column, 4); // else square and deep from 100 on
        expect({150, 150, 100}, 4, acopy, 4);
        expect({799, 799, 800}, 4, acopy, 4);
        expect({799, 799, 798}, 4, acopy, 4);
        expect({101, 101, 101}, 4, column, 4);  // all equal and below 800
        expect({150, 151, 5000}, 4, column, 4); // wide: never
        expect({800, 801, 800}, 4, column, 4);
        expect({800, 800, 800}, 3, acopy, 2); // an even number of threads
        expect({799, 799, 799}, 5, column, 4);
        expect({799, 799, 799}, 2, column, 2);
    }
}

TEST(GemmPartition, TallOnSse42) {
    const auto copied = [](GemmSizes sizes, int team, int threads) {
        expect_partition({3, sizes, team, sse42Blocks, acopy, given, threads, 1280});
    };
    const auto split = [](GemmSizes sizes, int team, int threads) {
        expect_partition({3, sizes, team, sse42Blocks, row, packA, threads, 1280});
    };
    // min(mc, mb) * min(k, kb) * 4 up to 131072 is copied: 128 rows of 256 steps.
    copied({512, 100, 256}, 4, 4);
    split({516, 100, 256}, 4, 4);
    copied({512, 100, 5000}, 4, 4); // k counts up to kb
    copied({515, 100, 256}, 5, 4);  // m / threads is 128, with an even number of threads
    copied({5000, 20, 25}, 2, 2);   // rows count up to mb: 1280 * 25 * 4 = 128000
    split({5000, 20, 26}, 2, 2);    // 133120
    copied({101, 3, 0}, 2, 2);
    split({100, 99, 100}, 2, 2); // small in all dimensions
    copied({100, 99, 101}, 2, 2);
    copied({101, 99, 100}, 2, 2);
}

TEST(GemmPartition, TallOnQuads) {
    for (const int machine : {2, 4}) {
        const int copyMb = machine == 2 ? 1024 : 896;
        const auto copied = [&](GemmSizes sizes, int team) {
            expect_partition({machine, sizes, team, quadsBlocks, acopy, given, team, copyMb});
        };
        const auto split = [&](GemmSizes sizes, int team) {
            expect_partition({machine, sizes, team, quadsBlocks, row, packA, team, 2000});
        };
        // min(mc, mb) * min(k, kb) * 4 up to 1572864 is copied: 1536 rows of 256 steps.
        copied({3072, 100, 256}, 2);
        split({3074, 100, 256}, 2);
        copied({3072, 100, 9000}, 2);
        copied({99999, 100, 196}, 2); // 2000 * 196 * 4 = 1568000: the plan's mb counts, not the copy's
        split({99999, 100, 197}, 2);
        // At most 100 rows and columns: not copied, whatever k is,
        split({100, 99, 256}, 2);
        split({100, 2, 9000}, 2);
        split({100, 4, 9000}, 2);
        // but for three columns that are deep or have four rows a thread.
        copied({100, 3, 200}, 2);
        split({7, 3, 7999}, 2); // three rows a thread
        copied({7, 3, 8000}, 2);
        copied({8, 3, 200}, 2);
        // One dimension above 100: the size decides.
        copied({101, 2, 200}, 2);
        copied({101, 100, 2}, 2);
    }
}

TEST(GemmPartition, SharedBytes) {
    EXPECT_EQ(gemm_shared_bytes(3, 1000, 12), 3U * (1000 + 8192));
    const std::size_t most = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(gemm_shared_bytes(3, most / 2, 12), 0U);
    EXPECT_EQ(gemm_shared_bytes(1, most - 5, 12), 0U);
    EXPECT_EQ(gemm_shared_bytes(std::numeric_limits<int>::max(), most / 4, 12), 0U);
}

} // namespace
} // namespace test
} // namespace qrv
