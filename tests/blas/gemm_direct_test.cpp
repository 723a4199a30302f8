// The unpacked GEMM of the wide vector forms: what it promises beyond the contract, and the rule that chooses it.
#include <string_view>

#include "support/gemm.hpp"

namespace qrv::test {
namespace {

template <class T>
class GemmDirect : public testing::Test {};
TYPED_TEST_SUITE(GemmDirect, Elements);

// The same bits whatever lies beside the operands and wherever they lie.
TYPED_TEST(GemmDirect, ResultDependsOnTheOperandsAlone) {
    using T = TypeParam;
    for (const Subject<T>& subject : subjects<T>())
        for (const char option : {'N', 'T', 'C'}) {
            if (!std::string_view(subject.name).ends_with("direct"))
                continue;
            Shape p{.trans = option, .m = 21, .n = 11, .k = 70, .alpha = 1.5F, .beta = 0.5F};
            const Operand<T> tight = GemmCase<T>(p).result(subject.gemm);
            p.a = {3, 1}, p.b = {2, 2}, p.c = {5, 3};
            EXPECT_TRUE(tight.same_bits(GemmCase<T>(p).result(subject.gemm))) << subject.name << ' ' << option;
        }
}

// What goes unpacked does so for any smaller size, and never once it is large, or more than an integer holds.
TYPED_TEST(GemmDirect, Rule) {
    using T = TypeParam;
    constexpr int sizes[] = {1, 4, 8, 12, 14, 16, 32, 33, 64, 128, 256, 512, 1024, 2048, 4096};
    constexpr int shallow = 32; // products below this depth go by their area too
    for (const VectorForm form : {VectorForm::sse, VectorForm::avx2, VectorForm::avx512})
        for (const bool ta : {false, true})
            for (const bool tb : {false, true}) {
                const auto goes = [&](int m, int n, int k) {
                    return kernel::sse42::goes_direct<T>(form, ta, tb, m, n, k);
                };
                for (const int m : sizes)
                    for (const int n : sizes)
                        for (const int k : sizes)
                            EXPECT_TRUE(!goes(m, n, k) || (goes((m + 1) / 2, n, k) && goes(m, (n + 1) / 2, k) &&
                                                           (k / 2 < shallow || goes(m, n, k / 2))))
                                << static_cast<int>(form) << ta << tb << ' ' << m << ' ' << n << ' ' << k;
                constexpr int most = std::numeric_limits<int>::max();
                EXPECT_TRUE(goes(1, 1, 1) && goes(7, 7, 7));
                EXPECT_FALSE(goes(1024, 1024, 1024) || goes(1025, 1024, 8) || goes(most, most, most));
                // What has no tile in the packed path, however large: it would fall back on narrow vectors.
                const bool wide = form != VectorForm::sse;
                EXPECT_EQ(goes(3, 20000, 2300) && goes(20000, isComplex<T> ? 7 : 3, 2300) &&
                              goes(20000, 20000, isComplex<T> ? 1 : 3),
                          wide);
                EXPECT_FALSE(goes(4, 20000, 2300000) || goes(20000, 33, 2300) || goes(20000, 20000, 4));
            }
    const auto last = [](VectorForm form, bool ta, int m, int n, int k) {
        return kernel::sse42::goes_direct<T>(form, ta, false, m, n, k) &&
               !kernel::sse42::goes_direct<T>(form, ta, false, m, n, k + 1);
    };
    constexpr int sse = isComplex<T> ? 11 : 14, avx512 = isComplex<T> ? 128 : 512;
    EXPECT_TRUE(last(VectorForm::sse, false, sse, sse, sse));
    EXPECT_TRUE(last(VectorForm::avx2, true, isComplex<T> ? 128 : 64, 64, isComplex<T> ? 128 : 64));
    EXPECT_TRUE(last(VectorForm::avx512, false, isComplex<T> ? 64 : avx512, avx512, isComplex<T> ? avx512 : 256));
}

} // namespace
} // namespace qrv::test
