// The unpacked GEMM of the wide vector forms, in each form that the machine has, and the rule that chooses it.
#include <gtest/gtest.h>

#include "blas/kernel/gemm_plan_pieces.hpp"
#include "service/processor.hpp"
#include "support/gemm_case.hpp"

namespace qrv::test {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float alphas[] = {1, -0.5F, 2};
constexpr float betas[] = {0, 1, 0.5F};

class GemmDirect : public testing::TestWithParam<VectorForm> {
protected:
    void SetUp() override {
        if (cpu_type_of(cpuid(1)) < 5 || GetParam() > vector_form())
            GTEST_SKIP() << "this machine has no such form";
        restrict_vector_form(GetParam());
    }
    void TearDown() override { restrict_vector_form(VectorForm::avx512); }
    static Sgemm* direct() { return kernel::sse42::direct_sgemm(GetParam()); }
};
INSTANTIATE_TEST_SUITE_P(, GemmDirect, testing::Values(VectorForm::avx2, VectorForm::avx512), [](const auto& form) {
    return std::string(form.param == VectorForm::avx512 ? "avx512" : "avx2");
});

// Every size of a tile, its remainders, and the sizes around several tiles and blocks of steps.
TEST_P(GemmDirect, Shapes) {
    int round = 0;
    const auto check = [&](char ta, char tb, int m, int n, int k) {
        ++round;
        EXPECT_TRUE(computes(direct(), {ta, tb, m, n, k, alphas[round % 3], betas[round / 3 % 3], round % 5, round % 4,
                                        round % 3, round % 16, round % 7, round % 5}));
    };
    constexpr int lengths[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 13, 14, 15, 16, 17, 31, 32, 33, 47, 48, 49, 63, 64, 65};
    constexpr int depths[] = {1, 2, 3, 4, 5, 8, 9, 17};
    for (const char ta : transposeOptions)
        for (const char tb : transposeOptions) {
            for (const int m : lengths)
                for (const int n : lengths)
                    check(ta, tb, m, n, depths[(m + n) % std::size(depths)]);
            for (const int k : {31, 32, 33, 47, 48, 49, 63, 64, 65, 66, 95, 96, 97, 191, 192, 193, 255, 256, 257, 520})
                for (const int m : {1, 7, 16, 17, 33, 49, 100})
                    check(ta, tb, m, m % 2 ? 9 : 13, k);
        }
}

// Few rows or columns and many steps.
TEST_P(GemmDirect, NarrowShapes) {
    int round = 0;
    for (const char ta : transposeOptions)
        for (const char tb : transposeOptions)
            for (int few = 1; few <= 9; ++few)
                for (const int other : {1, 2, 5, 63, 64, 67})
                    for (const int k : {15, 16, 17, 31, 32, 33, 63, 64, 65, 79, 81, 384, 385, 780}) {
                        ++round;
                        GemmShape p{ta,
                                    tb,
                                    few,
                                    other,
                                    k,
                                    alphas[round % 3],
                                    betas[round / 3 % 3],
                                    round % 3,
                                    round % 4,
                                    round % 5,
                                    round % 7,
                                    round % 16,
                                    round % 5};
                        EXPECT_TRUE(computes(direct(), p));
                        std::swap(p.m, p.n);
                        EXPECT_TRUE(computes(direct(), p));
                    }
}

// Every position of the operands in a vector, every residue of the leading dimensions to it.
TEST_P(GemmDirect, Alignments) {
    for (const char ta : transposeOptions)
        for (const char tb : transposeOptions)
            for (int start = 0; start < 16; ++start)
                for (int extra = 0; extra < 16; ++extra)
                    EXPECT_TRUE(computes(direct(), {ta, tb, 21, 10, 11, 1, betas[start % 3], extra,
                                                    (extra + start) % 16, (extra * 3 + start) % 16, start,
                                                    (start + 5) % 16, (start * 7 + extra) % 16}));
}

TEST_P(GemmDirect, StaysInsideItsOperands) {
    for (const char ta : transposeOptions)
        for (const char tb : transposeOptions)
            for (const int m : {1, 2, 3, 4, 5, 7, 8, 9, 12, 15, 16, 17, 31, 33, 49})
                for (const int n : {1, 2, 3, 5, 8, 11})
                    for (const int k : {1, 2, 3, 4, 5, 15, 66})
                        EXPECT_TRUE(stays_inside(direct(), {ta, tb, m, n, k, 2, 0.5F, k % 3, n % 3, m % 3}));
    for (const char ta : transposeOptions)
        for (const char tb : transposeOptions)
            for (const int few : {1, 2, 3, 4, 7, 8})
                for (const int k : {32, 33, 47, 64, 79, 391}) {
                    EXPECT_TRUE(stays_inside(direct(), {ta, tb, few, 65, k, 2, 0.5F, k % 3, few % 3, k % 2}));
                    EXPECT_TRUE(stays_inside(direct(), {ta, tb, 65, few, k, 2, 0, k % 3, few % 3, k % 2}));
                }
}

// A NaN or an infinity reaches its row or its column, whole, and nothing else. The rows and columns around it are the
// last ones of incomplete tiles, whose idle lanes hold copies of them.
TEST_P(GemmDirect, NonFiniteElementsStayInTheirRowAndColumn) {
    for (const float special : {nan, infinity, -infinity})
        for (const char ta : transposeOptions)
            for (const char tb : transposeOptions)
                for (const int m : {3, 7, 13, 17, 30, 47})
                    for (const int n : {3, 6, 11, 15}) {
                        const GemmShape p{ta, tb, m, n, 9, 1, 1, 1, 1, 1, 0, 0, 0};
                        GemmOperands x(p);
                        x.a.fill(1), x.b.fill(1), x.c.fill(1);
                        const int row = m - 1 - n % 2, column = n - 1 - m % 2;
                        (is_transposed(ta) ? x.a(8, row) : x.a(row, 8)) = special;
                        (is_transposed(tb) ? x.b(column, 7) : x.b(7, column)) = special;
                        run(direct(), p, x.a, x.b, x.c);
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < m; ++i) {
                                const float expected = i == row || j == column ? special : 10;
                                ASSERT_TRUE(std::isnan(expected) ? std::isnan(x.c(i, j)) : x.c(i, j) == expected)
                                    << p << " at " << i << ',' << j << ": " << x.c(i, j);
                            }
                    }
}

TEST_P(GemmDirect, NonFiniteElementsInNarrowShapes) {
    for (const float special : {nan, infinity})
        for (const char ta : transposeOptions)
            for (const char tb : transposeOptions)
                for (const bool tall : {false, true})
                    for (const int few : {1, 3, 6}) {
                        const int m = tall ? 67 : few, n = tall ? few : 67, k = 70;
                        const GemmShape p{ta, tb, m, n, k, 1, 1, 1, 1, 1, 0, 0, 0};
                        GemmOperands x(p);
                        x.a.fill(1), x.b.fill(1), x.c.fill(1);
                        (is_transposed(ta) ? x.a(k - 1, m - 1) : x.a(m - 1, k - 1)) = special;
                        run(direct(), p, x.a, x.b, x.c);
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < m; ++i) {
                                const float expected = i == m - 1 ? special : k + 1;
                                ASSERT_TRUE(std::isnan(expected) ? std::isnan(x.c(i, j)) : x.c(i, j) == expected)
                                    << p << " at " << i << ',' << j << ": " << x.c(i, j);
                            }
                    }
}

// A NaN in C passes through any beta but 0, in its own element only.
TEST_P(GemmDirect, NonFiniteElementsOfC) {
    for (const float beta : {0.0F, 1.0F, 0.5F}) {
        const GemmShape p{'N', 'N', 19, 10, 3, 1, beta, 0, 0, 2, 0, 0, 0};
        GemmOperands x(p);
        x.a.fill(1), x.b.fill(1), x.c.fill(0);
        x.c(18, 9) = nan;
        run(direct(), p, x.a, x.b, x.c);
        for (int j = 0; j < p.n; ++j)
            for (int i = 0; i < p.m; ++i)
                EXPECT_TRUE(beta != 0 && i == 18 && j == 9 ? std::isnan(x.c(i, j)) : x.c(i, j) == 3) << i << ',' << j;
    }
}

// What the serial entry does before it chooses: neither A nor B is read, and C is scaled.
TEST_P(GemmDirect, NothingToAdd) {
    for (const char ta : transposeOptions)
        for (const float beta : betas) {
            EXPECT_TRUE(computes(kernel::sse42::blas_sgemm_kernel, {ta, 'N', 17, 5, 0, 1, beta, 1, 1, 1}));
            const GemmShape p{ta, 'T', 17, 5, 3, 0, beta, 0, 0, 0, 0, 0, 0};
            GemmOperands x(p);
            x.a.fill(nan), x.b.fill(nan), x.c.fill(2);
            run(kernel::sse42::blas_sgemm_kernel, p, x.a, x.b, x.c);
            for (int j = 0; j < p.n; ++j)
                for (int i = 0; i < p.m; ++i)
                    EXPECT_EQ(x.c(i, j), beta * 2);
        }
}

// The same bits in every call, whatever lies beside the operands.
TEST_P(GemmDirect, ResultDependsOnTheOperandsAlone) {
    for (const char ta : transposeOptions) {
        const GemmShape tight{ta, 'N', 21, 11, 70, 1.5F, 0.5F},
            loose{ta, 'N', 21, 11, 70, 1.5F, 0.5F, 3, 2, 5, 1, 2, 3};
        GemmOperands x(tight), y(loose);
        run(direct(), tight, x.a, x.b, x.c);
        run(direct(), loose, y.a, y.b, y.c);
        for (int j = 0; j < tight.n; ++j)
            for (int i = 0; i < tight.m; ++i)
                ASSERT_EQ(x.c(i, j), y.c(i, j)) << ta << ' ' << i << ',' << j;
    }
}

TEST(GemmDirectRule, Edges) {
    constexpr int most = std::numeric_limits<int>::max();
    const struct {
        VectorForm form;
        char transa, transb;
        int m, n, k; // the last product that goes unpacked; with k + 1 it does not
    } rows[] = {
        {VectorForm::sse, 'N', 'N', 14, 14, 14},
        {VectorForm::sse, 'T', 'N', 12, 12, 12},
        {VectorForm::avx2, 'N', 'T', 128, 64, 64},
        {VectorForm::avx2, 'T', 'N', 64, 64, 64},
        {VectorForm::avx2, 'N', 'N', 1 << 9, 12, 682},
        {VectorForm::avx2, 'N', 'N', 32, 1 << 11, 1 << 11},
        {VectorForm::avx512, 'N', 'T', 256, 256, 256},
        {VectorForm::avx512, 'T', 'T', 128, 128, 256},
        {VectorForm::avx512, 'N', 'N', 1 << 11, 32, 1 << 10},
        {VectorForm::avx512, 'N', 'T', 32, 1 << 11, 1 << 8},
        {VectorForm::avx512, 'T', 'N', 32, 1 << 11, 1 << 11},
    };
    for (const auto& row : rows) {
        const auto goes = [&](int m, int n, int k) {
            return kernel::sse42::goes_direct(row.form, row.transa == 'T', row.transb == 'T', m, n, k);
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
