// The scaled solve: each way in which it shrinks, by systems of order 2 of which the result is known, and matrices
// whose sums are beyond overflow.
#include <algorithm>
#include <gtest/gtest.h>

#include "qrv/native.h"
#include "support/call.hpp"
#include "support/triangular.hpp"

namespace qrv::test {
namespace {

constexpr float big = 0x1p103F; // where the method begins to shrink

// op(A) y = scale x, with cnorm kept from one solve to the next.
template <class T>
struct Solve {
    char op, diag;
    std::vector<T> a, x; // upper triangle, order x.size()
    std::vector<float> cnorm = std::vector<float>(x.size(), nan);
    float scale = -1;

    void run(char normin = 'N') {
        const int n = static_cast<int>(x.size());
        EXPECT_EQ(call_for<T>(SLATRS, CLATRS, 'U', op, diag, normin, n, a, n, x, &scale, cnorm), 0);
    }
};

TEST_OF_ELEMENTS(Latrs, ShrinksAsFarAsNeeded) {
    struct Row {
        const char* what;
        char op, diag;
        float a11, a12, a22, b1, b2, scale, x1, x2;
    };
    for (const Row& row :
         {Row{"a large right-hand side", 'N', 'U', 1, 0, 1, 0x1p110F, 0, 0x1p-7F, big, 0},
          {"the same by rows", 'T', 'U', 1, 0, 1, 0x1p110F, 0, 0x1p-7F, big, 0},
          {"a product that meets a large element", 'N', 'U', 1, big / 2, 1, -0.75F * big, 1, 0.5F, -0.625F * big, 0.5F},
          {"a large product", 'N', 'U', 1, big / 2, 1, 0, 4, 0.125F, -0.25F * big, 0.5F},
          {"a tiny divisor before a column", 'N', 'N', 1, 0x1p10F, 0x1p-120F, 0, 1, 0x1p-27F, -big, 0x1p93F},
          {"a row", 'T', 'U', 1, big / 2, 1, 4, 0, 0.125F, 0.5F, -0.25F * big},
          {"a row with a large divisor", 'T', 'N', 1, big / 2, 4, 4, 0, 0.5F, 2, -0.25F * big},
          {"a sum near overflow beside ones", 'N', 'U', 1, 2 * big, 1, 0, 1, 0.5F, -big, 0.5F},
          {"nothing", 'N', 'N', 2, 1, 4, 5, 4, 1, 2, 1}}) {
        Solve<T> solve{row.op,
                       row.diag,
                       {scalar<T>(row.a11), T(), scalar<T>(row.a12), scalar<T>(row.a22)},
                       {scalar<T>(row.b1), scalar<T>(row.b2)}};
        solve.run();
        EXPECT_EQ(solve.scale, row.scale) << row.what;
        EXPECT_TRUE(solve.x[0] == scalar<T>(row.x1) && solve.x[1] == scalar<T>(row.x2)) << row.what;
        EXPECT_EQ(solve.cnorm, (std::vector{0.0F, row.a12})) << row.what;
    }
}

// The sum of a complex element's parts can be twice the larger one, so the bounds are half as large.
TEST(LatrsOfComplex, HalfTheRoomForComplexElements) {
    Solve<SingleComplex> solve{'N', 'U', {{1, 0}}, {{0.75F * big, 0.75F * big}}};
    solve.run();
    EXPECT_EQ(solve.scale, 0.5F * big / (0.75F * big));
}

// Sums of one or of three elements near overflow, above a diagonal so small that y grows by 2^17 a step, to 2^128.
TEST_OF_ELEMENTS(Latrs, SumsNearAndBeyondOverflow) {
    const int n = 15;
    for (const char op : {'N', 'T'})
        for (const int bandwidth : {1, 3}) {
            Solve<T> solve{op, 'N', std::vector<T>(n * n), std::vector<T>(n)};
            std::vector<double> sums(n);
            for (int j = 0; j < n; ++j)
                for (int i = std::max(0, j - bandwidth); i <= j; ++i) {
                    solve.a[static_cast<std::size_t>(i + n * j)] = scalar<T>(i == j ? 0x1p110F : 0x1p127F);
                    sums[static_cast<std::size_t>(j)] += i == j ? 0 : 0x1p127;
                }
            for (const char normin : {'N', 'Y'}) {
                solve.x.assign(n, scalar<T>(1));
                solve.run(normin);
                EXPECT_TRUE(solve.scale > 0 && std::isfinite(solve.scale)) << op << bandwidth << ' ' << solve.scale;
                Operand<T> x(n, 1, n), b(n, 1, n);
                x.set([&](int i, int) { return solve.x[std::size_t(i)]; });
                b.set([](int, int) { return scalar<T>(1); });
                const WideMatrix<T> a(
                    n, n, [&](int i, int j) { return widen(solve.a[std::size_t(op == 'N' ? i + n * j : j + n * i)]); });
                EXPECT_TRUE(scaled_residual(a, x, solve.scale, b) <= 1) << op << bandwidth;
                for (int i = 0; i < n; ++i) {
                    const auto j = static_cast<std::size_t>(i);
                    EXPECT_TRUE(sums[j] > 3.4e38 ? std::isinf(solve.cnorm[j])
                                                 : std::abs(solve.cnorm[j] - sums[j]) <= 1e-6 * sums[j])
                        << solve.cnorm[j] << " for " << sums[j];
                }
            }
        }
}

} // namespace
} // namespace qrv::test
