// The unpacked GEMM and the scaling of C, in every vector build that the machine can run.
#include <gtest/gtest.h>

#include "service/processor.hpp"
#include "support/gemm_case.hpp"

#define QRV_DECLARE_UNDER_TEST(build)                                                                                  \
    namespace qrv::kernel::build {                                                                                     \
    void sgemm_small_under_test(QRV_GEMM_PARAMETERS(float));                                                           \
    void sgemm_scale_c_under_test(const int* m, const int* n, const float* beta, float* c, const int* ldc);            \
    }
QRV_DECLARE_UNDER_TEST(sse2)
QRV_DECLARE_UNDER_TEST(sse3)
QRV_DECLARE_UNDER_TEST(ssse3)
QRV_DECLARE_UNDER_TEST(sse42)
#undef QRV_DECLARE_UNDER_TEST

namespace qrv::test {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();

struct SmallBuild {
    int cpuType;
    const char* name;
    Sgemm* small;
    decltype(&kernel::generic::blas_sgemm_scale_c) scaleC;
};

class GemmSmall : public testing::TestWithParam<SmallBuild> {
protected:
    void SetUp() override {
        if (GetParam().cpuType > cpu_type_of(cpuid(1)))
            GTEST_SKIP() << "this processor cannot run " << GetParam().name;
    }
    Sgemm* small() const { return GetParam().small; }
};

constexpr float alphas[] = {1, -0.5F, 2};
constexpr float betas[] = {0, 1, 0.5F};

TEST_P(GemmSmall, Shapes) {
    int round = 0;
    for (const char ta : transposeOptions)
        for (const char tb : transposeOptions)
            for (const int m : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 31, 33})
                for (const int n : {1, 2, 3, 4, 7})
                    for (const int k : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 16, 19, 63, 64, 65, 67, 130}) {
                        ++round;
                        EXPECT_TRUE(computes(small(), {ta, tb, m, n, k, alphas[round % 3], betas[round / 3 % 3],
                                                       round % 5, round % 4, round % 3}));
                    }
}

// Every position of each operand to a 16-byte boundary, every residue of each leading dimension, on both sides of
// the sizes at which long columns are entered at a boundary.
TEST_P(GemmSmall, Alignments) {
    for (const char ta : transposeOptions)
        for (const char tb : transposeOptions)
            for (const int size : {10, 11, 12})
                for (int start = 0; start < 4 * 4 * 4; ++start)
                    for (int extra = 0; extra < 4; ++extra)
                        EXPECT_TRUE(computes(small(), {ta, tb, size, 3, size + start % 2, 1, betas[start % 3], extra,
                                                       (extra + start) % 4, (extra + start / 4) % 4, start % 4,
                                                       start / 4 % 4, start / 16}));
}

TEST_P(GemmSmall, StaysInsideItsOperands) {
    for (const char ta : transposeOptions)
        for (const char tb : transposeOptions)
            for (const int m : {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 18})
                for (const int n : {1, 2, 3, 5})
                    for (const int k : {1, 2, 3, 4, 5, 10, 11, 12, 14, 65})
                        EXPECT_TRUE(stays_inside(small(), {ta, tb, m, n, k, 2, 0.5F, k % 3, n % 3, m % 3}));
}

TEST_P(GemmSmall, NothingToAdd) {
    for (const char ta : transposeOptions)
        for (const float beta : betas) {
            EXPECT_TRUE(computes(small(), {ta, 'N', 7, 5, 0, 1, beta, 1, 1, 1}));
            for (const int empty : {0, -1}) {
                float untouched = 3;
                const int one = 1;
                for (const bool rows : {true, false})
                    small()(&ta, "N", rows ? &empty : &one, rows ? &one : &empty, &one, &beta, nullptr, &one, nullptr,
                            &one, &beta, &untouched, &one);
                EXPECT_EQ(untouched, 3);
            }
        }
}

// With alpha = 0 neither A nor B counts, whatever they hold.
TEST_P(GemmSmall, ZeroAlphaIgnoresOperands) {
    for (const char ta : transposeOptions)
        for (const float beta : betas) {
            const GemmShape p{ta, 'T', 6, 5, 12, 0, beta};
            GemmOperands x(p);
            const GuardedMatrix before = x.c;
            x.a.fill(nan);
            x.b.fill(nan);
            if (beta == 0)
                x.c.fill(nan);
            run(small(), p, x.a, x.b, x.c);
            for (int j = 0; j < p.n; ++j)
                for (int i = 0; i < p.m; ++i)
                    EXPECT_EQ(x.c(i, j), beta == 0 ? 0 : beta * before(i, j));
        }
}

// A NaN in A reaches its row of the result, one in B its column, one in C (beta not 0) its element, and no other.
TEST_P(GemmSmall, NanReachesItsRowAndColumn) {
    for (const char ta : transposeOptions)
        for (const char tb : transposeOptions)
            for (int step = 0; step < 13; ++step) {
                const GemmShape p{ta, tb, 11, 7, 13, 1, 0.5F};
                GemmOperands x(p);
                const int row = step % p.m, column = step % p.n;
                (is_transposed(ta) ? x.a(step, row) : x.a(row, step)) = nan;
                (is_transposed(tb) ? x.b(column, step) : x.b(step, column)) = nan;
                x.c((row + 1) % p.m, (column + 1) % p.n) = nan;
                run(small(), p, x.a, x.b, x.c);
                for (int j = 0; j < p.n; ++j)
                    for (int i = 0; i < p.m; ++i) {
                        const bool own = i == (row + 1) % p.m && j == (column + 1) % p.n;
                        EXPECT_EQ(std::isnan(x.c(i, j)), i == row || j == column || own)
                            << p << " step " << step << " at " << i << ',' << j;
                    }
            }
}

TEST_P(GemmSmall, ScaleC) {
    std::mt19937 random(1);
    for (int m = 0; m <= 35; ++m)
        for (const int n : {0, 1, 3, 4, 5, 9})
            for (int start = 0; start < 4; ++start)
                for (int extra = 0; extra < 4; ++extra)
                    for (const float beta : {0.0F, 1.0F, -2.5F}) {
                        GuardedMatrix c(m, n, m + extra + (m == 0), start);
                        if (beta == 0)
                            c.fill(nan);
                        else
                            c.fill_random(random);
                        const GuardedMatrix before = c;
                        const int ldc = c.ld();
                        GetParam().scaleC(&m, &n, &beta, c.data(), &ldc);
                        int wrong = 0;
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < m; ++i)
                                wrong += !(c(i, j) == (beta == 0 ? 0 : beta * before(i, j)));
                        EXPECT_TRUE(wrong == 0 && c.guards_intact())
                            << m << " x " << n << " ldc=" << ldc << " start " << start << " beta=" << beta;
                    }
}

TEST_P(GemmSmall, ScaleCStaysInsideC) {
    for (const bool atFront : {false, true})
        for (int m = 1; m <= 24; ++m)
            for (const int n : {1, 4, 6}) {
                PageMatrix c(m, n, m + m % 3, atFront);
                const int ldc = c.ld();
                for (const float beta : {0.0F, 2.0F})
                    GetParam().scaleC(&m, &n, &beta, c.data(), &ldc);
                EXPECT_EQ(c(m - 1, n - 1), 0);
            }
}

std::string build_name(const testing::TestParamInfo<SmallBuild>& info) {
    return info.param.name;
}
using namespace kernel;
const auto vectorBuilds =
    testing::Values(SmallBuild{2, "sse2", sse2::sgemm_small_under_test, sse2::sgemm_scale_c_under_test},
                    SmallBuild{3, "sse3", sse3::sgemm_small_under_test, sse3::sgemm_scale_c_under_test},
                    SmallBuild{4, "ssse3", ssse3::sgemm_small_under_test, ssse3::sgemm_scale_c_under_test},
                    SmallBuild{5, "sse42", sse42::sgemm_small_under_test, sse42::sgemm_scale_c_under_test});
INSTANTIATE_TEST_SUITE_P(Builds, GemmSmall, vectorBuilds, build_name);

} // namespace
} // namespace qrv::test
