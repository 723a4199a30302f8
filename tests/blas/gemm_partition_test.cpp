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

constexpr auto row = GemmRegion::row;
constexpr auto column = GemmRegion::column;
constexpr auto acopy = GemmRegion::acopy;
constexpr GemmBlocks blocks{2000, 5000, 256};
constexpr GemmMachine machines[] = {GemmMachine::plain, GemmMachine::pairs, GemmMachine::quadsLargeL2,
                                    GemmMachine::sse42, GemmMachine::quads};

// What holds for every product: a tall C goes by rows, another one by columns or, copied, by rows; all of an even team
// works; only copies change the rows of a block, and they are as many as threads.
TEST(GemmPartition, EveryProduct) {
    for (const GemmMachine machine : machines)
        for (const int m : {1, 7, 100, 101, 800, 5000})
            for (const int n : {1, 3, 100, 101, 800, 5000})
                for (const int k : {0, 1, 100, 101, 800, 9000})
                    for (const int team : {2, 3, 4, 8, 9})
                        for (const bool planned : {false, true}) {
                            const GemmSizes sizes{m, n, k};
                            const GemmPartition got = gemm_partition(machine, planned, sizes, blocks, team);
                            SCOPED_TRACE(testing::Message() << "class " << static_cast<int>(machine) << ' ' << sizes
                                                            << " team=" << team << " planned=" << planned);
                            const bool byMachine = planned && gemm_scales_first(machine), copied = got.region == acopy;
                            ASSERT_TRUE(byMachine || !copied);
                            ASSERT_TRUE(m <= n || got.region != column || gemm_is_small(sizes));
                            ASSERT_TRUE(m > n || got.region != row);
                            ASSERT_EQ(got.threads, byMachine ? team / 2 * 2 : team);
                            ASSERT_EQ(got.rowThreads, got.region == column ? 1 : got.threads);
                            ASSERT_EQ(got.rowThreads * got.colThreads, got.threads);
                            ASSERT_EQ(got.mode, !byMachine ? GemmMode::choose
                                                : copied   ? GemmMode::directBGivenA
                                                           : GemmMode::packA);
                            ASSERT_EQ(got.aCopies, copied ? got.threads : 0);
                            ASSERT_TRUE(got.blocks.nb == blocks.nb && got.blocks.kb == blocks.kb);
                            ASSERT_TRUE(copied || got.blocks.mb == blocks.mb);
                        }
}

// Where the choice turns, a pair of products on either side of each limit.
TEST(GemmPartition, Limits) {
    using enum GemmMachine;
    struct Row {
        GemmMachine machine;
        GemmSizes sizes;
        int team;
        GemmRegion region;
    };
    for (const Row& p : {
             // Plain: rows if m > n, small ones if m > n * team.
             Row{plain, {200, 200, 200}, 3, column},
             {plain, {201, 200, 200}, 3, row},
             {pairs, {100, 50, 100}, 2, column},
             {pairs, {100, 49, 100}, 2, row},
             // Square and wide: copies if m = n, from k = 100 on, or 800 if all are equal.
             {sse42, {799, 799, 799}, 4, column},
             {quads, {800, 800, 800}, 4, acopy},
             {sse42, {150, 150, 99}, 4, column},
             {quadsLargeL2, {150, 150, 100}, 4, acopy},
             {sse42, {799, 799, 798}, 4, acopy},
             {sse42, {800, 801, 800}, 4, column},
             // Tall: min(m / threads, mb) * min(k, kb) floats up to 128 KB are copied, on the others 1.5 MB.
             {sse42, {516, 100, 256}, 4, row},
             {sse42, {512, 100, 5000}, 4, acopy}, // k counts up to kb
             {sse42, {515, 100, 256}, 5, acopy},  // an even number of threads
             {sse42, {5000, 20, 16}, 2, acopy},   // rows up to mb: 2000 * 16 * 4 = 128000
             {sse42, {5000, 20, 17}, 2, row},
             {quads, {3072, 100, 256}, 2, acopy},
             {quads, {3074, 100, 256}, 2, row},
             {quadsLargeL2, {99999, 100, 196}, 2, acopy}, // the plan's mb counts, not the copy's
             {quadsLargeL2, {99999, 100, 197}, 2, row},
             // Small in all dimensions, or on the others in two of them, is not copied,
             {sse42, {100, 99, 100}, 2, row},
             {sse42, {100, 99, 101}, 2, acopy},
             {quads, {100, 99, 256}, 2, row},
             {quads, {101, 100, 2}, 2, acopy},
             // but for three columns that are deep or have four rows a thread.
             {quads, {100, 2, 9000}, 2, row},
             {quads, {7, 3, 7999}, 2, row},
             {quads, {7, 3, 8000}, 2, acopy},
             {quads, {8, 3, 200}, 2, acopy},
         })
        EXPECT_EQ(gemm_partition(p.machine, true, p.sizes, blocks, p.team).region, p.region)
            << "class " << static_cast<int>(p.machine) << ' ' << p.sizes << " team=" << p.team;
    // Rows of a block of a copy.
    const auto rows = [](GemmMachine machine) {
        return gemm_partition(machine, true, {900, 900, 900}, blocks, 4).blocks.mb;
    };
    EXPECT_EQ(rows(quadsLargeL2), 1024);
    EXPECT_EQ(rows(quads), 896);
    EXPECT_EQ(rows(sse42), blocks.mb);
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
