// The C-panel GEMM of the sse2 and sse3 builds, and the decisions and copies inside it.
#include <string_view>

#include "support/subjects.hpp"
#include "support/work_memory.hpp"

// A build of the panel routines for this test alone.
#define QRV_KERNEL_BUILD panel_under_test
#define QRV_KERNEL_VECTORS "blas/kernel/sse2/vec.hpp"
#include "blas/kernel/common/gemm/gemm_panel.hpp"

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

TEST(GemmPanelThresholds, ComplexRatio) {
    for (int m = 4; m < 50; ++m)
        for (int n = 4; n < 50; ++n)
            for (int k = 4; k < 50; ++k) {
                const bool small = m + n + k < 50 && 100 * ((m + k) * n + m * k) >= 8 * (14 * m * n + 8 * m * n * k);
                if (small != panel::goes_unpacked<SingleComplex>(false, true, m, n, k))
                    ADD_FAILURE() << m << ' ' << n << ' ' << k;
            }
}

TEST(GemmPanelThresholds, ShortSides) {
    constexpr int huge = 2000000000;
    for (const bool ta : {false, true})
        for (const bool tb : {false, true}) {
            const auto check = [&](auto goes_unpacked, int most) {
                for (const int least : {most, 1, 0})
                    EXPECT_TRUE(goes_unpacked(ta, tb, least, huge, huge) && goes_unpacked(ta, tb, huge, least, huge) &&
                                goes_unpacked(ta, tb, huge, huge, least));
                EXPECT_FALSE(goes_unpacked(ta, tb, most + 1, huge, huge));
            };
            check(panel::goes_unpacked<float>, 7);
            check(panel::goes_unpacked<SingleComplex>, 3);
        }
}

TEST(GemmPanelThresholds, PanelWidth) {
    for (int l2Class = -1; l2Class <= 6; ++l2Class) {
        EXPECT_EQ(panel::panel_columns<float>(l2Class), l2Class == 3 ? 480 : 240);
        EXPECT_EQ(panel::panel_columns<SingleComplex>(l2Class), l2Class == 3 ? 384 : 192);
    }
    EXPECT_EQ(panel::panel_work_bytes<float>(240), 2304U * 240 + 16512);
    EXPECT_EQ(panel::panel_work_bytes<float>(480), 2304U * 480 + 16512);
    EXPECT_EQ(panel::panel_work_bytes<SingleComplex>(384), 4608U * 384 + 16512);
}

// ---- Work memory -------------------------------------------------------------------------------------------------

template <class T>
class GemmPanel : public testing::Test {};
TYPED_TEST_SUITE(GemmPanel, Elements);

TYPED_TEST(GemmPanel, TakesWorkMemoryOnlyAboveTheThresholds) {
    using T = TypeParam;
    constexpr int most = isComplex<T> ? 3 : 24;
    for (const Subject<T>& subject : subjects<T>())
        for (const int n : {most, most + 1}) {
            if ((subject.cpuType != 2 && subject.cpuType != 3) || std::string_view(subject.name).ends_with("small"))
                continue;
            const WorkMemoryProbe probe;
            GemmCase<T>({'N', 'N', n, n, n}).result(subject.gemm);
            EXPECT_EQ(probe.threads(), n > most) << subject.name << ' ' << n;
        }
}

// Work memory of the exact size between guarded pages, at every 4-byte position to a boundary, for both widths.
TYPED_TEST(GemmPanel, StaysInsideItsWorkMemory) {
    using T = TypeParam;
    if (!in_this_run(2))
        return;
    for (const int nb : {panel::panel_columns<T>(0), panel::panel_columns<T>(3)})
        for (std::size_t start = 0; start < 64 / sizeof(float); start += sizeof(T) / sizeof(float))
            for (const int n : {nb, nb + 1}) {
                const char transb = start % 4 == 0 ? 'N' : start % 8 == 2 ? 'C' : 'T';
                const GemmCase<T> x({'N', transb, 520, n, 8 + static_cast<int>(start) % 3 * 64, 1, 0.5F});
                const GemmShape& p = x.p;
                const GemmReference<T> reference = x.reference();
                // The same position against the page in front and, up to the rest of a 64-byte line, the one behind.
                const std::size_t count = panel::panel_work_bytes<T>(nb) / sizeof(float);
                GuardPageArray front(count + start, true), behind(count + (16 - start) % 16);
                for (float* block : {behind.data(), front.data() + start}) {
                    BasicGuardedMatrix<T> c = x.before;
                    panel::multiply_by_panels<T>({p.m,
                                                  p.n,
                                                  p.k,
                                                  x.alpha,
                                                  {x.a.data(), x.a.ld(), false},
                                                  {x.b.data(), x.b.ld(), is_transposed(transb)},
                                                  false,
                                                  conjugates(transb)},
                                                 x.beta, {c.data(), c.ld()}, nb, block);
                    const double error = reference.error(c);
                    EXPECT_TRUE(error <= 1 && c.guards_intact()) << p << " nb=" << nb << ' ' << error;
                }
            }
}

} // namespace
} // namespace qrv::test
