// The unpacked GEMM of the wide vector forms: what it promises beyond the contract, and the rule that chooses it.
#include <string_view>

#include "support/subjects.hpp"

namespace qrv::test {
namespace {

template <class T>
class GemmDirect : public testing::Test {};
TYPED_TEST_SUITE(GemmDirect, Elements);

// The same bits whatever lies beside the operands and wherever they lie.
TYPED_TEST(GemmDirect, ResultDependsOnTheOperandsAlone) {
    using T = TypeParam;
    for (const Subject<T>& subject : subjects<T>())
        for (const char ta : {'N', 'T', 'C'}) {
            if (!std::string_view(subject.name).ends_with("direct"))
                continue;
            const GemmCase<T> tight({ta, 'N', 21, 11, 70, 1.5F, 0.5F});
            const GemmCase<T> loose({ta, 'N', 21, 11, 70, 1.5F, 0.5F, 3, 2, 5, 1, 2, 3});
            const BasicGuardedMatrix<T> x = tight.result(subject.gemm), y = loose.result(subject.gemm);
            EXPECT_EQ(x.count_bad([&](int i, int j, T c) { return c == y(i, j); }), 0) << subject.name << ' ' << ta;
        }
}

// The last product that goes unpacked; with k + 1 it does not.
struct LastDirect {
    VectorForm form;
    char transa, transb;
    int m, n, k;
};
template <class T>
const std::vector<LastDirect> lastDirect;
template <>
const std::vector<LastDirect> lastDirect<float> = {
    {VectorForm::sse, 'N', 'N', 14, 14, 14},
    {VectorForm::sse, 'T', 'N', 12, 12, 12},
    {VectorForm::avx2, 'N', 'T', 128, 64, 64},
    {VectorForm::avx2, 'T', 'N', 64, 64, 64},
    {VectorForm::avx2, 'N', 'N', 1 << 9, 12, 682},
    {VectorForm::avx2, 'N', 'N', 32, 1 << 11, 1 << 11},
    {VectorForm::avx2, 'T', 'N', 1 << 10, 4, 64},
    {VectorForm::avx512, 'N', 'T', 256, 256, 256},
    {VectorForm::avx512, 'T', 'T', 128, 128, 256},
    {VectorForm::avx512, 'N', 'N', 1 << 11, 32, 1 << 10},
    {VectorForm::avx512, 'N', 'T', 32, 1 << 11, 1 << 8},
    {VectorForm::avx512, 'T', 'N', 32, 1 << 11, 1 << 11},
};
template <>
const std::vector<LastDirect> lastDirect<SingleComplex> = {
    {VectorForm::sse, 'N', 'N', 11, 11, 11},
    {VectorForm::sse, 'T', 'N', 7, 7, 7},
    {VectorForm::avx2, 'N', 'T', 128, 128, 64},
    {VectorForm::avx2, 'T', 'N', 128, 64, 128},
    {VectorForm::avx2, 'N', 'N', 1 << 9, 8, 1 << 10},
    {VectorForm::avx2, 'T', 'N', 1 << 12, 8, 1 << 12},
    {VectorForm::avx2, 'N', 'N', 16, 1 << 11, 1 << 12},
    {VectorForm::avx512, 'N', 'T', 64, 128, 128},
    {VectorForm::avx512, 'T', 'T', 128, 128, 64},
    {VectorForm::avx512, 'N', 'N', 1 << 9, 32, 1 << 9},
    {VectorForm::avx512, 'T', 'N', 1 << 11, 32, 1 << 11},
    {VectorForm::avx512, 'T', 'T', 16, 1 << 9, 1 << 9},
};

TYPED_TEST(GemmDirect, Rule) {
    using T = TypeParam;
    constexpr int most = std::numeric_limits<int>::max();
    for (const LastDirect& row : lastDirect<T>) {
        const auto goes = [&](int m, int n, int k) {
            return kernel::sse42::goes_direct<T>(row.form, row.transa == 'T', row.transb == 'T', m, n, k);
        };
        EXPECT_TRUE(goes(row.m, row.n, row.k)) << row.transa << row.transb << row.m << 'x' << row.n << 'x' << row.k;
        EXPECT_FALSE(goes(row.m, row.n, row.k + 1))
            << row.transa << row.transb << row.m << 'x' << row.n << 'x' << row.k;
        EXPECT_TRUE(goes(1, 1, 1));
        EXPECT_FALSE(goes(1024, 1024, 1024));
        EXPECT_FALSE(goes(1024, 1024, 8)) << "large and shallow";
        EXPECT_FALSE(goes(most, most, most)) << "a product that no integer holds";
    }
}

} // namespace
} // namespace qrv::test
