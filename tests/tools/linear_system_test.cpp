// Measures of a solution against values by hand.
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "qrv/linear_system.hpp"

namespace tools {
namespace {

template <class T>
Matrix<T> matrix(int rows, int columns, std::vector<T> values) {
    Matrix<T> a(rows, columns);
    a.values = std::move(values);
    return a;
}

TEST(LinearSystem, BackwardErrorIsTheWorstOfTheColumns) {
    // A = [1 1; 0 2], x = (1, 2): A x = (3, 4), |A||x| the same, |A| |x| = 4 in norms.
    const auto a = matrix<float>(2, 2, {1, 0, 1, 2}), x = matrix<float>(2, 1, {1, 2});
    const BackwardError one = backward_error(a, x, matrix<float>(2, 1, {4, 4}));
    EXPECT_DOUBLE_EQ(one.componentwise, 1.0 / 7);
    EXPECT_DOUBLE_EQ(one.normwise, 1.0 / 8);
    const BackwardError two =
        backward_error(a, matrix<float>(2, 3, {1, 2, 1, 2, 0, 0}), matrix<float>(2, 3, {3, 4, 3, -4, 0, 0}));
    EXPECT_DOUBLE_EQ(two.componentwise, 1);
    EXPECT_DOUBLE_EQ(two.normwise, 1);
    // Residuals below single precision count: 2^24 + 1 - (2^24 + 1).
    const auto row = matrix<float>(2, 2, {16777216, 0, 1, 1});
    EXPECT_EQ(backward_error(row, matrix<float>(2, 1, {1, 1}), matrix<float>(2, 1, {16777216, 1})).componentwise,
              1 / (16777216.0 * 2 + 1));
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(backward_error(a, matrix<float>(2, 1, {nan, 1}), x).normwise <= 1);
    // Complex: A = (3 + 4i), x = i, b = 1: r = 1 - 3i + 4 = 5 - 3i.
    const BackwardError complex = backward_error(
        matrix<SingleComplex>(1, 1, {{3, 4}}), matrix<SingleComplex>(1, 1, {{0, 1}}), matrix<SingleComplex>(1, 1, {1}));
    EXPECT_DOUBLE_EQ(complex.componentwise, std::sqrt(34.0) / 6);
}

TEST(LinearSystem, BoundsTheForwardError) {
    // |A| |x| = 1, b = 1 - r: the bound is |r| / |x| times the condition number, 3 here, for whatever r.
    for (const double r : {1e-6, 1e-3, 0.5})
        EXPECT_NEAR(forward_error_bound(3, {0, r / (2 - r)}), 3 * r / (1 - r), 1e-15);
    EXPECT_EQ(forward_error_bound(3, {0, 1}), std::numeric_limits<double>::infinity());
}

// Of x = (1 + 2^-10, 1), of which the first element is wrong by 2^-10.
TEST(LinearSystem, EstimatesTheError) {
    const auto diagonal = matrix<float>(2, 2, {2, 0, 0, 4});
    const auto nearly = matrix<float>(2, 1, {1 + 0x1p-10F, 1});
    EXPECT_DOUBLE_EQ(LinearSystem<float>("A", diagonal).error_estimate(diagonal, nearly, matrix<float>(2, 1, {2, 4})),
                     0x1p-10 / (1 + 0x1p-10));
}

// Every method solves the same system, and says which it was; their conditions are those of LU.
TEST(LinearSystem, MethodsAgree) {
    constexpr int n = 30;
    Matrix<float> definite(n, n), general(n, n), indefinite(n, n);
    for (int j = 0; j < n; ++j)
        for (int i = std::max(0, j - 2); i <= std::min(n - 1, j + 2); ++i) {
            definite(i, j) = indefinite(i, j) = i == j ? 5 : -1.0F / static_cast<float>(1 + std::abs(i - j));
            general(i, j) = i == j ? 1 : static_cast<float>(2 * i - j) / n;
        }
    indefinite(20, 20) = 0.01F;
    const struct {
        const char* used;
        const Matrix<float>& a;
        Method method;
    } rows[] = {{"LU", definite, Method::lu},
                {"Cholesky", definite, Method::cholesky},
                {"band Cholesky", definite, Method::band},
                {"band Cholesky", definite, Method::automatic},
                {"band LU", general, Method::band},
                {"band LU", general, Method::automatic},
                {"LU", general, Method::lu},
                {"band LU", indefinite, Method::automatic}};
    Matrix<float> x(n, 2);
    for (int i = 0; i < n; ++i)
        x(i, 0) = 1, x(i, 1) = static_cast<float>(i % 5) - 2;
    for (const auto& [used, a, method] : rows) {
        const LinearSystem<float> system("A", a, method), lu("A", a);
        EXPECT_STREQ(system.method(), used);
        EXPECT_EQ(system.indefinite_column(), &a == &indefinite ? 21 : 0);
        EXPECT_LT(backward_error(a, system.solve(product(a, x)), product(a, x)).normwise, 1e-6) << used;
        EXPECT_NEAR(system.condition() / lu.condition(), 1, 1e-3) << used;
        EXPECT_EQ(system.saving().has_value(), used[0] == 'b');
    }
    EXPECT_THROW(LinearSystem<float>("A", general, Method::cholesky), Unsolvable);
    EXPECT_THROW(LinearSystem<float>("A", indefinite, Method::cholesky), Unsolvable);

    const auto hermitian = matrix<SingleComplex>(2, 2, {2, {0, 1}, {0, -1}, 3});
    const LinearSystem<SingleComplex> system("A", hermitian, Method::automatic);
    EXPECT_STREQ(system.method(), "Cholesky");
    const auto y = matrix<SingleComplex>(2, 1, {{1, 2}, {3, -4}});
    EXPECT_LT(relative_difference(system.solve(product(hermitian, y)), y), 1e-6);
    const auto symmetric = matrix<SingleComplex>(2, 2, {2, {0, 1}, {0, 1}, 3});
    EXPECT_STREQ(LinearSystem<SingleComplex>("A", symmetric, Method::automatic).method(), "LU");
}

} // namespace
} // namespace tools
