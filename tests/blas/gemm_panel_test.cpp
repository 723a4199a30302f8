// The C-panel GEMM of the sse2 and sse3 builds, and the decisions and copies inside it.
#include <cmath>
#include <gtest/gtest.h>

#include "service/work_pool.hpp"
#include "support/builds.hpp"
#include "support/gemm_case.hpp"

// A build of the panel routines for this test alone.
#define QRV_KERNEL_BUILD panel_under_test
#include "blas/kernel/sse2/vec.hpp"

#include "blas/kernel/common/gemm_panel.hpp"

namespace qrv::test {
namespace {

namespace panel = kernel::panel_under_test;

constexpr float alphas[] = {1, -0.5F, 2};
constexpr float betas[] = {0, 1, 0.5F};

std::vector<GemmBuild> panel_builds() {
    std::vector<GemmBuild> builds = gemm_builds();
    std::erase_if(builds, [](const GemmBuild& build) { return build.cpuType != 2 && build.cpuType != 3; });
    return builds;
}

// ---- Decisions ---------------------------------------------------------------------------------------------------

// For n x n x n the ratio is 1.5 / (1 + n): the largest order that goes unpacked, and the next one. (T, T) meets its
// ratio exactly at 19.
TEST(GemmPanelThresholds, Cubes) {
    struct {
        bool transa, transb;
        int largest;
    } const rows[] = {{false, false, 24}, {true, false, 20}, {false, true, 32}, {true, true, 19}};
    for (const auto& row : rows)
        for (int n = 1; n <= 60; ++n)
            EXPECT_EQ(panel::goes_unpacked(row.transa, row.transb, n, n, n), n <= row.largest)
                << row.transa << row.transb << ' ' << n;
}

TEST(GemmPanelThresholds, SizeLimits) {
    for (const bool ta : {false, true})
        for (const bool tb : {false, true}) {
            const int limit = ta && tb ? 80 : 150;
            EXPECT_TRUE(panel::goes_unpacked(ta, tb, 8, 8, limit - 17));
            EXPECT_FALSE(panel::goes_unpacked(ta, tb, 8, 8, limit - 16));
            EXPECT_TRUE(panel::goes_unpacked(ta, tb, limit - 17, 8, 8));
            EXPECT_FALSE(panel::goes_unpacked(ta, tb, 8, limit - 16, 8));
            for (const int least : {7, 1, 0}) {
                EXPECT_TRUE(panel::goes_unpacked(ta, tb, least, 2000000000, 2000000000));
                EXPECT_TRUE(panel::goes_unpacked(ta, tb, 2000000000, least, 2000000000));
                EXPECT_TRUE(panel::goes_unpacked(ta, tb, 2000000000, 2000000000, least));
            }
            EXPECT_FALSE(panel::goes_unpacked(ta, tb, 2000000000, 2000000000, 2000000000));
        }
}

// Both sides of the ratio at every shape below the limits, in whole numbers.
TEST(GemmPanelThresholds, Ratios) {
    const std::int64_t thousandths[2][2] = {{60, 45}, {70, 75}};
    for (const bool ta : {false, true})
        for (const bool tb : {false, true})
            for (std::int64_t m = 8; m < 135; ++m)
                for (std::int64_t n = 8; n < 135; ++n)
                    for (std::int64_t k = 8; k < 135; ++k) {
                        const bool small =
                            m + n + k < (ta && tb ? 80 : 150) &&
                            1000 * ((m + k) * n + m * k) >= thousandths[ta][tb] * (2 * m * n + 2 * m * n * k);
                        if (small !=
                            panel::goes_unpacked(ta, tb, static_cast<int>(m), static_cast<int>(n), static_cast<int>(k)))
                            ADD_FAILURE() << ta << tb << ' ' << m << ' ' << n << ' ' << k;
                    }
}

TEST(GemmPanelThresholds, PanelWidth) {
    for (int l2Class = -1; l2Class <= 6; ++l2Class)
        EXPECT_EQ(panel::panel_columns(l2Class), l2Class == 3 ? 480 : 240);
    EXPECT_EQ(panel::panel_work_bytes(240), 2304U * 240 + 16512);
    EXPECT_EQ(panel::panel_work_bytes(480), 2304U * 480 + 16512);
}

// ---- The allocator, counted or refusing --------------------------------------------------------------------------

int allocations;

// Sends the work memory's allocations through `allocate` for its lifetime, from an empty pool.
class AllocatorOverride {
public:
    explicit AllocatorOverride(void* (*allocate)(std::size_t)) {
        qrv_serv_free_buffers();
        allocations = 0;
        allocatorSlots.malloc = allocate;
    }
    ~AllocatorOverride() {
        allocatorSlots = before_;
        qrv_serv_free_buffers();
    }

private:
    AllocatorSlots before_ = allocatorSlots;
};

constexpr std::size_t smallestBlock = 2304 * 240 + 16512; // the pool's own records are smaller

void* counting(std::size_t bytes) {
    allocations += bytes >= smallestBlock;
    return std::malloc(bytes);
}
void* refusing(std::size_t bytes) {
    allocations += bytes >= smallestBlock;
    return bytes >= smallestBlock ? nullptr : std::malloc(bytes);
}

TEST(GemmPanel, TakesWorkMemoryOnlyAboveTheThresholds) {
    for (const GemmBuild& build : panel_builds())
        for (const int n : {24, 25}) {
            const AllocatorOverride count(counting);
            EXPECT_TRUE(computes(build.sgemm, {'N', 'N', n, n, n}));
            EXPECT_EQ(allocations, n == 25) << build.name << ' ' << n;
        }
}

TEST(GemmPanel, DoesWithoutRefusedWorkMemory) {
    for (const GemmBuild& build : panel_builds())
        for (const char ta : transposeOptions)
            for (const char tb : transposeOptions) {
                const AllocatorOverride refuse(refusing);
                EXPECT_TRUE(computes(build.sgemm, {ta, tb, 70, 71, 72, 2, 0, 1, 2, 3}));
                EXPECT_EQ(allocations, 1) << build.name;
            }
}

// ---- Results -----------------------------------------------------------------------------------------------------

TEST(GemmPanel, RowEdges) {
    int round = 0;
    for (const GemmBuild& build : panel_builds())
        for (const char ta : transposeOptions)
            for (const char tb : transposeOptions)
                for (const int m :
                     {7, 8, 9, 15, 16, 17, 23, 24, 25, 31, 32, 33, 63, 64, 65, 72, 80, 511, 512, 513, 520})
                    for (const int k : {64, 83}) {
                        ++round;
                        EXPECT_TRUE(computes(build.sgemm, {ta, tb, m, 81, k, alphas[round % 3], betas[round / 3 % 3],
                                                           round % 4, round % 3, round % 5, round % 2, round % 3}));
                    }
}

TEST(GemmPanel, DepthEdges) {
    int round = 0;
    for (const GemmBuild& build : panel_builds())
        for (const char ta : transposeOptions)
            for (const char tb : transposeOptions)
                for (const int k : {7, 8, 15, 16, 17, 31, 32, 47, 48, 49, 63, 64, 65, 79, 80, 96, 112, 127, 128, 129})
                    for (const int m : {16, 29, 90}) {
                        ++round;
                        EXPECT_TRUE(computes(build.sgemm, {ta, tb, m, 150, k, alphas[round % 3], betas[round / 3 % 3],
                                                           round % 3, round % 4, round % 5, round % 3, round % 2}));
                    }
}

TEST(GemmPanel, ColumnEdges) {
    int round = 0;
    for (const GemmBuild& build : panel_builds())
        for (const char ta : transposeOptions)
            for (const char tb : transposeOptions)
                for (const int n : {8, 9, 10, 11, 239, 240, 241, 479, 480, 481}) {
                    ++round;
                    EXPECT_TRUE(computes(build.sgemm, {ta, tb, 41, n, 150, 1, betas[round % 3], 1, 1, 1, 0, 0, round}));
                }
}

TEST(GemmPanel, StaysInsideItsOperands) {
    for (const GemmBuild& build : panel_builds())
        for (const char ta : transposeOptions)
            for (const char tb : transposeOptions)
                for (const int m : {16, 24, 35})
                    for (const int n : {80, 81, 82, 83})
                        for (const int k : {64, 80, 101})
                            EXPECT_TRUE(stays_inside(build.sgemm, {ta, tb, m, n, k, 2, 0.5F, m % 3, n % 2, k % 2}));
}

// A NaN in A reaches its row of the result, one in B its column, one in C (beta not 0) its element, and no other.
TEST(GemmPanel, NanReachesItsRowAndColumn) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (const GemmBuild& build : panel_builds())
        for (const char ta : transposeOptions)
            for (const char tb : transposeOptions)
                for (const int step : {0, 63, 64, 80, 98}) {
                    const GemmShape p{ta, tb, 45, 50, 99, 1, 0.5F};
                    GemmOperands x(p);
                    const int row = (7 * step + 44) % p.m, column = step % p.n;
                    (is_transposed(ta) ? x.a(step, row) : x.a(row, step)) = nan;
                    (is_transposed(tb) ? x.b(column, step) : x.b(step, column)) = nan;
                    x.c((row + 1) % p.m, (column + 1) % p.n) = nan;
                    run(build.sgemm, p, x.a, x.b, x.c);
                    int wrong = 0;
                    for (int j = 0; j < p.n; ++j)
                        for (int i = 0; i < p.m; ++i) {
                            const bool own = i == (row + 1) % p.m && j == (column + 1) % p.n;
                            wrong += std::isnan(x.c(i, j)) != (i == row || j == column || own);
                        }
                    EXPECT_EQ(wrong, 0) << build.name << ' ' << p << " step " << step;
                }
}

TEST(GemmPanel, ZeroAlphaIgnoresOperands) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (const GemmBuild& build : panel_builds())
        for (const float beta : betas) {
            const GemmShape p{'N', 'T', 60, 50, 70, 0, beta};
            GemmOperands x(p);
            const GuardedMatrix before = x.c;
            x.a.fill(nan);
            x.b.fill(nan);
            if (beta == 0)
                x.c.fill(nan);
            run(build.sgemm, p, x.a, x.b, x.c);
            int wrong = 0;
            for (int j = 0; j < p.n; ++j)
                for (int i = 0; i < p.m; ++i)
                    wrong += !(x.c(i, j) == (beta == 0 ? 0 : beta * before(i, j)));
            EXPECT_EQ(wrong, 0) << build.name << ' ' << beta;
        }
}

// Work memory of the exact size between guarded pages, at every 4-byte position to a boundary, for both widths.
TEST(GemmPanel, StaysInsideItsWorkMemory) {
    for (const int nb : {240, 480})
        for (std::size_t start = 0; start < 64 / sizeof(float); ++start)
            for (const int n : {nb, nb + 1}) {
                const GemmShape p{'N', start % 2 ? 'T' : 'N', 520, n, 8 + static_cast<int>(start) % 3 * 64, 1, 0.5F};
                GemmOperands x(p);
                const GuardedMatrix before = x.c;
                // The same position against the page in front and, up to the rest of a 64-byte line, the one behind.
                const std::size_t count = panel::panel_work_bytes(nb) / sizeof(float);
                GuardPageArray front(count + start, true), behind(count + (16 - start) % 16);
                for (float* block : {behind.data(), front.data() + start}) {
                    x.c = before;
                    panel::multiply_by_panels({p.m,
                                               p.n,
                                               p.k,
                                               p.alpha,
                                               {x.a.data(), x.a.ld(), false},
                                               {x.b.data(), x.b.ld(), is_transposed(p.transb)}},
                                              p.beta, {x.c.data(), x.c.ld()}, nb, block);
                    if (start < 3) {
                        const double error =
                            gemm_error(p.transa, p.transb, p.k, p.alpha, x.a, x.b, p.beta, before, x.c);
                        EXPECT_TRUE(error <= 1 && x.c.guards_intact()) << p << " nb=" << nb << ' ' << error;
                    }
                }
            }
}

} // namespace
} // namespace qrv::test
