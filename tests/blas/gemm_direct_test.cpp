// The unpacked GEMM of the wide vector forms: what it promises beyond the contract, and the route of a product.
#include <algorithm>
#include <string_view>

#include "support/gemm.hpp"

namespace qrv::test {
namespace {

// The same bits whatever lies beside the operands and wherever they lie.
TEST_OF_ELEMENTS(GemmDirect, ResultDependsOnTheOperandsAlone) {
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

using kernel::sse42::GemmRoute;

template <class T>
GemmRoute route(VectorForm form, const char* ops, int m, int n, int k, bool conflicting = false) {
    const auto is = [&](int i, char option) { return ops[i] == option; };
    return kernel::sse42::gemm_route<T>(form, {!is(0, 'N'), !is(1, 'N'), is(0, 'C'), is(1, 'C'), conflicting, m, n, k});
}

// What goes unpacked does so for any smaller size, and never once it is large, or more than an integer holds.
TEST_OF_ELEMENTS(GemmDirect, RouteGrowsWithTheSizes) {
    constexpr int sizes[] = {2, 4, 8, 12, 14, 16, 32, 33, 64, 128, 256, 512, 1024, 2048, 4096};
    constexpr int shallow = 32; // products below this depth go by their area too
    constexpr int most = std::numeric_limits<int>::max();
    for (const VectorForm form : {VectorForm::sse, VectorForm::avx2, VectorForm::avx512})
        for (const char* ops : {"NN", "NT", "TN", "TT"})
            for (const bool conflicting : {false, true}) {
                const auto goes = [&](int m, int n, int k) {
                    return route<T>(form, ops, m, n, k, conflicting && ops[0] == 'N') == GemmRoute::direct;
                };
                for (const int m : sizes)
                    for (const int n : sizes)
                        for (const int k : sizes)
                            EXPECT_TRUE(!goes(m, n, k) || m == 2 || n == 2 ||
                                        (goes((m + 1) / 2, n, k) && goes(m, (n + 1) / 2, k) &&
                                         (k / 2 < shallow || goes(m, n, k / 2))))
                                << static_cast<int>(form) << ops << ' ' << m << ' ' << n << ' ' << k;
                EXPECT_TRUE(goes(2, 2, 1) && goes(7, 7, 7));
                EXPECT_FALSE(goes(1024, 1024, 1024) || goes(1025, 1024, 8) || goes(most, most, most));
                // What has no tile in the packed path, however large: it would fall back on narrow vectors.
                const bool wide = form != VectorForm::sse;
                EXPECT_EQ(goes(3, 20000, 2300) && goes(20000, isComplex<T> ? 7 : 3, 2300) &&
                              goes(20000, 20000, isComplex<T> ? 1 : 3),
                          wide);
                EXPECT_FALSE(goes(4, 20000, 2300000) || goes(20000, 33, 2300) || goes(20000, 20000, 4));
            }
}

// Both sides of the edges: `last` is the deepest product of m x n that goes unpacked.
TEST_OF_ELEMENTS(GemmDirect, RoutesAtTheEdges) {
    constexpr auto sse = VectorForm::sse, avx2 = VectorForm::avx2, avx512 = VectorForm::avx512;
    struct Edge {
        VectorForm form;
        const char* ops;
        bool conflicting;
        int m, n, last;
        GemmRoute beyond;
    };
    constexpr auto packed = GemmRoute::packed, panels = GemmRoute::panels;
    const Edge real[] = {
        {sse, "NN", false, 14, 14, 14, packed},      {sse, "TN", false, 12, 12, 12, packed},
        {avx2, "NN", false, 128, 128, 64, packed},   {avx2, "NT", false, 64, 1024, 256, packed},
        {avx512, "NN", true, 128, 128, 256, panels}, {avx512, "TN", false, 32, 1024, 4096, panels},
    };
    const Edge complex[] = {
        {sse, "NN", false, 11, 11, 11, packed},       {sse, "TN", false, 7, 7, 7, packed},
        {avx2, "NN", false, 4096, 16, 64, packed},    {avx512, "NN", true, 128, 128, 128, panels},
        {avx512, "CN", false, 128, 128, 256, panels}, {avx512, "NC", false, 32, 512, 1024, panels},
    };
    const auto check = [](const Edge& e) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(e.form) << e.ops << ' ' << e.m << ' ' << e.n);
        EXPECT_EQ(route<T>(e.form, e.ops, e.m, e.n, e.last, e.conflicting), GemmRoute::direct);
        EXPECT_EQ(route<T>(e.form, e.ops, e.m, e.n, e.last + 1, e.conflicting), e.beyond);
    };
    if constexpr (isComplex<T>)
        std::for_each(std::begin(complex), std::end(complex), check);
    else
        std::for_each(std::begin(real), std::end(real), check);
    // One row or column is a vector, unless a matrix would have to be conjugated and not transposed.
    for (const VectorForm form : {sse, avx2, avx512}) {
        EXPECT_EQ(route<T>(form, "CT", 1000, 1, 1000), GemmRoute::vector);
        EXPECT_EQ(route<T>(form, "TN", 1, 1000, 1000), GemmRoute::vector);
        EXPECT_EQ(route<T>(form, "NC", 1000, 1, 8) == GemmRoute::vector, !isComplex<T>);
        EXPECT_EQ(route<T>(form, "CN", 1, 1000, 8) == GemmRoute::vector, !isComplex<T>);
    }
}

} // namespace
} // namespace qrv::test
