// The C-panel GEMM of the sse2 and sse3 builds, and the decisions and copies inside it.
#include <string_view>

#include "support/gemm.hpp"
#include "support/work_memory.hpp"

// A build of the panel routines for this test alone.
#define QRV_KERNEL_BUILD panel_under_test
#define QRV_KERNEL_VECTORS "blas/kernel/sse2/vec.hpp"
#include "blas/kernel/common/gemm/gemm_panel.hpp"

namespace qrv::test {
namespace {

namespace panel = kernel::panel_under_test;

// ---- Decisions ---------------------------------------------------------------------------------------------------

// What goes unpacked does so for any smaller size, short sides always, and large products never. (T, T) meets its ratio
// exactly at 19 x 19 x 19.
template <class T>
void check_unpacked(int shortSide) {
    constexpr int huge = 2000000000;
    for (const bool ta : {false, true})
        for (const bool tb : {false, true}) {
            const auto goes = [&](int m, int n, int k) { return panel::goes_unpacked<T>(ta, tb, m, n, k); };
            for (int m = 4; m < 60; ++m)
                for (int n = 4; n < 60; ++n)
                    for (int k = 4; k < 60; ++k)
                        ASSERT_TRUE(!goes(m, n, k) || (goes(m - 1, n, k) && goes(m, n - 1, k) && goes(m, n, k - 1)))
                            << ta << tb << ' ' << m << ' ' << n << ' ' << k;
            for (const int least : {shortSide, 1, 0})
                EXPECT_TRUE(goes(least, huge, huge) && goes(huge, least, huge) && goes(huge, huge, least));
            EXPECT_FALSE(goes(shortSide + 1, huge, huge) || goes(60, 60, 60));
        }
}
TEST(GemmPanelThresholds, Unpacked) {
    check_unpacked<float>(7);
    check_unpacked<SingleComplex>(3);
    EXPECT_TRUE(panel::goes_unpacked<float>(true, true, 19, 19, 19));
    EXPECT_FALSE(panel::goes_unpacked<float>(true, true, 19, 19, 20));
    EXPECT_TRUE(panel::goes_unpacked<float>(false, false, 24, 24, 24));
    EXPECT_FALSE(panel::goes_unpacked<float>(false, false, 25, 25, 25));
}

// ---- Work memory -------------------------------------------------------------------------------------------------

TEST_OF_ELEMENTS(GemmPanel, TakesWorkMemoryOnlyAboveTheThresholds) {
    constexpr int most = isComplex<T> ? 3 : 24;
    for (const Subject<T>& subject : subjects<T>())
        for (const int n : {most, most + 1}) {
            if ((subject.cpuType != 2 && subject.cpuType != 3) || std::string_view(subject.name).ends_with("small"))
                continue;
            const WorkMemoryProbe probe;
            GemmCase<T>({.m = n, .n = n, .k = n}).result(subject.gemm);
            EXPECT_EQ(probe.threads(), n > most) << subject.name << ' ' << n;
        }
}

// Work memory of the exact size between guarded pages, at every 4-byte position to a boundary, for both widths.
TEST_OF_ELEMENTS(GemmPanel, StaysInsideItsWorkMemory) {
    if (!in_this_run(2))
        return;
    for (const int nb : {panel::panel_columns<T>(0), panel::panel_columns<T>(3)})
        for (std::size_t start = 0; start < 64 / sizeof(float); start += sizeof(T) / sizeof(float))
            for (const int n : {nb, nb + 1}) {
                const char transb = start % 4 == 0 ? 'N' : start % 8 == 2 ? 'C' : 'T';
                const GemmCase<T> x(
                    {.transb = transb, .m = 520, .n = n, .k = 8 + static_cast<int>(start) % 3 * 64, .beta = 0.5F});
                // The same position against the page in front and, up to the rest of a 64-byte line, the one behind.
                const std::size_t count = panel::panel_work_bytes<T>(nb) / sizeof(float);
                GuardPageArray front(count + start, true), behind(count + (16 - start) % 16);
                for (float* block : {behind.data(), front.data() + start})
                    x.check(
                        [&](const Call<T>& v) {
                            panel::multiply_by_panels<T>({v.m,
                                                          v.n,
                                                          v.k,
                                                          v.alpha,
                                                          {v.a, v.lda, false},
                                                          {v.b, v.ldb, is_transposed(transb)},
                                                          false,
                                                          conjugates(transb)},
                                                         v.beta, {v.c, v.ldc}, nb, block);
                        },
                        "nb=" + std::to_string(nb));
            }
}

} // namespace
} // namespace qrv::test
