// The C-panel GEMM of the sse2 and sse3 builds, and the decisions and copies inside it.
#include "support/subjects.hpp"
#include "support/work_memory.hpp"

// A build of the panel routines for this test alone.
#define QRV_KERNEL_BUILD panel_under_test
#include "blas/kernel/sse2/vec.hpp"

#include "blas/kernel/common/gemm_panel.hpp"

namespace qrv::test {
namespace {

namespace panel = kernel::panel_under_test;

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

// ---- Work memory -------------------------------------------------------------------------------------------------

TEST(GemmPanel, TakesWorkMemoryOnlyAboveTheThresholds) {
    for (const Subject& subject : subjects())
        for (const int n : {24, 25}) {
            if ((subject.cpuType != 2 && subject.cpuType != 3) || subject.sgemm == kernel::sse2::blas_sgemm_small ||
                subject.sgemm == kernel::sse3::blas_sgemm_small)
                continue;
            const WorkMemoryProbe probe;
            GemmCase({'N', 'N', n, n, n}).result(subject.sgemm);
            EXPECT_EQ(probe.threads(), n == 25) << subject.name << ' ' << n;
        }
}

// Work memory of the exact size between guarded pages, at every 4-byte position to a boundary, for both widths.
TEST(GemmPanel, StaysInsideItsWorkMemory) {
    for (const int nb : {240, 480})
        for (std::size_t start = 0; start < 64 / sizeof(float); ++start)
            for (const int n : {nb, nb + 1}) {
                const GemmCase x({'N', start % 2 ? 'T' : 'N', 520, n, 8 + static_cast<int>(start) % 3 * 64, 1, 0.5F});
                const GemmShape& p = x.p;
                const GemmReference reference = x.reference();
                // The same position against the page in front and, up to the rest of a 64-byte line, the one behind.
                const std::size_t count = panel::panel_work_bytes(nb) / sizeof(float);
                GuardPageArray front(count + start, true), behind(count + (16 - start) % 16);
                for (float* block : {behind.data(), front.data() + start}) {
                    GuardedMatrix c = x.before;
                    panel::multiply_by_panels({p.m,
                                               p.n,
                                               p.k,
                                               p.alpha,
                                               {x.a.data(), x.a.ld(), false},
                                               {x.b.data(), x.b.ld(), is_transposed(p.transb)}},
                                              p.beta, {c.data(), c.ld()}, nb, block);
                    const double error = reference.error(c);
                    EXPECT_TRUE(error <= 1 && c.guards_intact()) << p << " nb=" << nb << ' ' << error;
                }
            }
}

} // namespace
} // namespace qrv::test
