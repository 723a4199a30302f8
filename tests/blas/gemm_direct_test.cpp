// The unpacked GEMM of the wide vector forms: what it promises beyond the contract, and the rule that chooses it.
#include "support/subjects.hpp"

namespace qrv::test {
namespace {

// The same bits whatever lies beside the operands and wherever they lie.
TEST(GemmDirect, ResultDependsOnTheOperandsAlone) {
    for (const Subject& subject : subjects())
        for (const char ta : transposeOptions) {
            if (subject.sgemm != sse42_direct<VectorForm::avx2> && subject.sgemm != sse42_direct<VectorForm::avx512>)
                continue;
            const GemmCase tight({ta, 'N', 21, 11, 70, 1.5F, 0.5F});
            const GemmCase loose({ta, 'N', 21, 11, 70, 1.5F, 0.5F, 3, 2, 5, 1, 2, 3});
            const GuardedMatrix x = tight.result(subject.sgemm), y = loose.result(subject.sgemm);
            EXPECT_EQ(x.count_bad([&](int i, int j, float c) { return c == y(i, j); }), 0) << subject.name << ' ' << ta;
        }
}

TEST(GemmDirectRule, SmallProductsGoUnpacked) {
    using kernel::sse42::goes_direct;
    for (const VectorForm form : {VectorForm::avx2, VectorForm::avx512})
        for (const bool transposed : {false, true}) {
            for (const int n : {4, 8, 16, 100, 512})
                EXPECT_TRUE(goes_direct(form, transposed, n, n, n)) << n;
            EXPECT_TRUE(goes_direct(form, transposed, 32, 32, 2048));
            EXPECT_TRUE(goes_direct(form, transposed, 2048, 32, 32));
            EXPECT_FALSE(goes_direct(form, transposed, 1024, 1024, 1024));
            // Products that 32, respectively 64 bits do not hold.
            EXPECT_FALSE(goes_direct(form, transposed, 65536, 65536, 1));
            constexpr int most = std::numeric_limits<int>::max();
            EXPECT_FALSE(goes_direct(form, transposed, most, most, most));
            EXPECT_FALSE(goes_direct(form, transposed, 4, 4, most));
        }
}

TEST(GemmDirectRule, Edges) {
    using kernel::sse42::goes_direct;
    for (const VectorForm form : {VectorForm::avx2, VectorForm::avx512}) {
        EXPECT_TRUE(goes_direct(form, false, 1, 1, 1));
        EXPECT_TRUE(goes_direct(form, false, 1 << 10, 1 << 10, 1 << 7));
        EXPECT_FALSE(goes_direct(form, false, 1 << 10, 1 << 10, (1 << 7) + 1));
        // Shallow, large and transposed.
        EXPECT_TRUE(goes_direct(form, true, 1 << 10, 1 << 9, 31));
        EXPECT_FALSE(goes_direct(form, true, 1 << 10, (1 << 9) + 1, 31));
        EXPECT_TRUE(goes_direct(form, true, 1 << 10, (1 << 9) + 1, 32));
    }
    EXPECT_FALSE(goes_direct(VectorForm::sse, false, 1, 1, 1));
    EXPECT_FALSE(goes_direct(VectorForm::sse, true, 4, 4, 4));
}

} // namespace
} // namespace qrv::test
