// The decisions of the threaded GEMM, as functions of sizes, team and machine.
#include <gtest/gtest.h>
#include <limits>

#include "blas/thread/common/level3/gemm_partition.hpp"

namespace qrv::test {
namespace {

constexpr int most = std::numeric_limits<int>::max();

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
                            SCOPED_TRACE(testing::Message()
                                         << "class " << static_cast<int>(machine) << ' ' << m << 'x' << n << 'x' << k
                                         << " team=" << team << " planned=" << planned);
                            const bool byMachine = planned && gemm_scales_first(machine),
                                       copied = got.region == GemmRegion::acopy;
                            ASSERT_TRUE(byMachine || !copied);
                            ASSERT_TRUE(m <= n || got.region != GemmRegion::column || gemm_is_small(sizes));
                            ASSERT_TRUE(m > n || got.region != GemmRegion::row);
                            ASSERT_EQ(got.threads, byMachine ? team / 2 * 2 : team);
                            ASSERT_EQ(got.rowThreads, got.region == GemmRegion::column ? 1 : got.threads);
                            ASSERT_EQ(got.rowThreads * got.colThreads, got.threads);
                            ASSERT_EQ(got.mode, !byMachine ? GemmMode::choose
                                                : copied   ? GemmMode::directBGivenA
                                                           : GemmMode::packA);
                            ASSERT_EQ(got.aCopies, copied ? got.threads : 0);
                            ASSERT_TRUE(got.blocks.nb == blocks.nb && got.blocks.kb == blocks.kb);
                            ASSERT_TRUE(copied || got.blocks.mb == blocks.mb);
                        }
}

TEST(GemmPartition, SharedBytes) {
    EXPECT_EQ(gemm_shared_bytes(3, 1000, 12), 3U * (1000 + 8192));
    constexpr std::size_t all = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(gemm_shared_bytes(3, all / 2, 12), 0U);
    EXPECT_EQ(gemm_shared_bytes(1, all - 5, 12), 0U);
    EXPECT_EQ(gemm_shared_bytes(most, all / 4, 12), 0U);
}

} // namespace
} // namespace qrv::test
