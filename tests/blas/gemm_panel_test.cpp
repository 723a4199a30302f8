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

// Both sides of the ratio and of the size limit at every shape around them, in whole numbers. (T, T) meets its ratio
// exactly at 19 x 19 x 19.
TEST(GemmPanelThresholds, Ratios) {
    const std::int64_t thousandths[2][2] = {{60, 45}, {70, 75}};
    for (const bool ta : {false, true})
        for (const bool tb : {false, true})
            for (int m = 8; m < 135; ++m)
                for (int n = 8; n < 135; ++n)
                    for (int k = 8; k < 135; ++k) {
                        const std::int64_t mn = m * n;
                        const bool small = m + n + k < (ta && tb ? 80 : 150) &&
                                           1000 * ((m + k) * n + m * k) >= thousandths[ta][tb] * 2 * (mn + mn * k);
                        if (small != panel::goes_unpacked<float>(ta, tb, m, n, k))
                            ADD_FAILURE() << ta << tb << ' ' << m << ' ' << n << ' ' << k;
                    }
}

TEST(GemmPanelThresholds, ShortSides) {
    constexpr int huge = 2000000000;
    for (const bool ta : {false, true})
        for (const bool tb : {false, true}) {
            for (const int least : {7, 1, 0})
                EXPECT_TRUE(panel::goes_unpacked<float>(ta, tb, least, huge, huge) &&
                            panel::goes_unpacked<float>(ta, tb, huge, least, huge) &&
                            panel::goes_unpacked<float>(ta, tb, huge, huge, least));
            EXPECT_FALSE(panel::goes_unpacked<float>(ta, tb, huge, huge, huge));
        }
}

TEST(GemmPanelThresholds, PanelWidth) {
    for (int l2Class = -1; l2Class <= 6; ++l2Class)
        EXPECT_EQ(panel::panel_columns<float>(l2Class), l2Class == 3 ? 480 : 240);
    EXPECT_EQ(panel::panel_work_bytes<float>(240), 2304U * 240 + 16512);
    EXPECT_EQ(panel::panel_work_bytes<float>(480), 2304U * 480 + 16512);
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
    if (!in_this_run(2))
        return;
    for (const int nb : {240, 480})
        for (std::size_t start = 0; start < 64 / sizeof(float); ++start)
            for (const int n : {nb, nb + 1}) {
                const GemmCase x({'N', start % 2 ? 'T' : 'N', 520, n, 8 + static_cast<int>(start) % 3 * 64, 1, 0.5F});
                const GemmShape& p = x.p;
                const GemmReference reference = x.reference();
                // The same position against the page in front and, up to the rest of a 64-byte line, the one behind.
                const std::size_t count = panel::panel_work_bytes<float>(nb) / sizeof(float);
                GuardPageArray front(count + start, true), behind(count + (16 - start) % 16);
                for (float* block : {behind.data(), front.data() + start}) {
                    GuardedMatrix c = x.before;
                    panel::multiply_by_panels<float>({p.m,
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
