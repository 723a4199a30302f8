// Inverses and solves with triangular matrices, and the estimates and scaled solves behind their condition numbers.
#include <algorithm>
#include <gtest/gtest.h>

#include "qrv/native.h"
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

enum class TriangleKind {
    tame,         // well-conditioned
    growing,      // solutions grow as 2^n
    tinyDiagonal, // some element is too small to divide a large number by: the middle, in large orders both ends
    singular,     // the middle of the diagonal is 0
    huge,         // column sums near overflow
    oneRow,       // norms by rows are larger than by columns: 1 beside the diagonal in the longest row, else 0
};

template <class T>
Operand<T> triangular_matrix(char uplo, char diag, int n, TriangleKind kind = TriangleKind::tame) {
    Operand<T> a(Form{n, n, Form::triangular, uplo, diag}, {.extra = 1 + n % 3, .offset = n % 5});
    std::mt19937 random(static_cast<unsigned>(n));
    const auto element = [&](int i, int j) {
        const T any = any_size_one<T>(random);
        switch (kind) {
        case TriangleKind::growing:
            return i == j ? scalar<T>(1.5F) + scalar<T>(0.5F) * any : scalar<T>(-1);
        case TriangleKind::oneRow:
            return scalar<T>(i == j || i == (uplo == 'U' ? 0 : n - 1) ? 1 : 0);
        case TriangleKind::huge:
            return scalar<T>(0x1p115F) * (i == j ? scalar<T>(1) : any);
        case TriangleKind::tinyDiagonal:
            if (i == j)
                return scalar<T>(n < 50 ? (i == n / 2 ? 0x1p-104F : 1) : i == 0 || i == n - 1 ? 0x1p-40F : 1);
            break;
        case TriangleKind::singular:
            if (i == j)
                return scalar<T>(i == n / 2 ? 0 : 1);
            break;
        default:
            break;
        }
        return i == j ? scalar<T>(1.5F) + scalar<T>(0.5F) * any : scalar<T>(2 / static_cast<float>(n + 1)) * any;
    };
    return a.set(element);
}

// |A X - scale B| by elements over the roundings of a backward stable solve: |A| |X| times the length of the sums.
// Elements that underflow are off by the smallest float.
template <class T>
double scaled_residual(const WideMatrix<T>& a, const Operand<T>& x, float scale, const Operand<T>& b) {
    Expected<T> rest = product<T>(1, a, WideMatrix<T>(x), -double{scale}, b);
    for (int i = 0; i < a.rows; ++i) {
        double coefficients = 1;
        for (int j = 0; j < a.columns; ++j)
            coefficients += a.sizes[a.at(i, j)];
        for (int j = 0; j < x.columns(); ++j)
            rest.allowed[rest.values.at(i, j)] += (a.rows + 6) * 0x1p-147 * coefficients;
    }
    return rest.error(Operand<T>(x.form(), {}).fill(0));
}

template <class T>
Operand<T> right_hand_sides(int n, int nrhs = 1, float size = 1) {
    std::mt19937 random(11);
    Operand<T> b(n, nrhs, n + 2);
    return b.set([&](int, int) { return scalar<T>(size) * any_size_one<T>(random); });
}

template <class T>
float rcond_of(const Operand<T>& t, char norm) {
    const int n = t.rows();
    Operand<T> work(Form{(isComplex<T> ? 2 : 3) * n, 1}, {});
    std::vector<std::conditional_t<isComplex<T>, float, int>> second(std::size_t(n + 1));
    float rcond = -1;
    EXPECT_EQ(call_for<T>(STRCON, CTRCON, norm, t.form().uplo, t.form().diag, n, t, &rcond, work.data(), second), 0);
    return rcond;
}

TEST_OF_ELEMENTS(Triangular, Inverse) {
    combine({routine_for<T>(STRTRI, CTRTRI), routine_for<T>(STRTI2, CTRTI2)}, {1, 2, 5, 63, 64, 65, 128, 150}, "UL",
            "NU")
        .each([](auto* routine, int n, char uplo, char diag) {
            const Operand<T> t = triangular_matrix<T>(uplo, diag, n);
            Operand<T> x(t);
            EXPECT_EQ(call(routine, uplo, diag, n, x), 0);
            EXPECT_TRUE(product<T>(1, WideMatrix<T>(t), WideMatrix<T>(x), -1, identity_operand<T>(n))
                            .error(Operand<T>(n, n, n).fill(0)) <= 1);
        });
}

TEST_OF_ELEMENTS(Triangular, ZeroOnTheDiagonal) {
    const int n = 70, nrhs = 3;
    for (const char uplo : {'u', 'l'}) {
        const Operand<T> t = triangular_matrix<T>(static_cast<char>(uplo - 32), 'N', n, TriangleKind::singular);
        Operand<T> x(t);
        EXPECT_EQ(call_for<T>(STRTRI, CTRTRI, uplo, 'n', n, x), n / 2 + 1);
        EXPECT_TRUE(x.same_bits(t));

        const Operand<T> b = right_hand_sides<T>(n, nrhs);
        Operand<T> solution(b);
        const auto solve = [&](char diag) {
            return call_for<T>(STRTRS, CTRTRS, uplo, 'N', diag, n, nrhs, x, solution);
        };
        EXPECT_EQ(solve('N'), n / 2 + 1);
        EXPECT_TRUE(solution.same_bits(b));
        EXPECT_EQ(solve('U'), 0) << "a unit diagonal is not looked at";
        EXPECT_FALSE(solution.same_bits(b));
    }
}

TEST_OF_ELEMENTS(Triangular, Solutions) {
    combine({std::pair{0, 2}, {2, 0}, {1, 1}, {33, 5}, {130, 9}}, "UL", "NTC", "NU")
        .each([](const auto& shape, char uplo, char trans, char diag) {
            const int n = shape.first, nrhs = shape.second;
            const Operand<T> t = triangular_matrix<T>(uplo, diag, n), b = right_hand_sides<T>(n, nrhs);
            Operand<T> x(b);
            EXPECT_EQ(call_for<T>(STRTRS, CTRTRS, uplo, trans, diag, n, nrhs, t, x), 0);
            EXPECT_TRUE(scaled_residual(WideMatrix<T>(t, trans), x, 1, b) <= 1);
        });
}

// ---- Scaled solves ------------------------------------------------------------------------------------------------

TEST_OF_ELEMENTS(Triangular, ScaledSolutions) {
    const std::vector<float> sizes{1, 0x1p110F, 0x1p-120F};
    combine({TriangleKind::tame, TriangleKind::growing, TriangleKind::tinyDiagonal, TriangleKind::singular,
             TriangleKind::huge},
            {1, 2, 30, 90}, sizes, "UL", "NTC", "NU")
        .each([](TriangleKind kind, int n, float size, char uplo, char trans, char diag) {
            if ((kind == TriangleKind::huge && diag == 'U') ||
                (kind == TriangleKind::tinyDiagonal && size > 1 && n < 50))
                return; // no float would be small enough for the scale
            const Operand<T> t = triangular_matrix<T>(uplo, diag, n, kind), b = right_hand_sides<T>(n, 1, size);
            std::vector<float> cnorm(static_cast<std::size_t>(n), nan);
            for (const char normin : {'N', 'Y'}) {
                Operand<T> x(b);
                float scale = -1;
                EXPECT_EQ(call_for<T>(SLATRS, CLATRS, uplo, trans, diag, normin, n, t, x.data(), &scale, cnorm), 0);
                EXPECT_TRUE(scale >= 0 && (scale <= 1 || kind == TriangleKind::huge)) << scale;
                EXPECT_EQ(x.count_bad([](int, int, T e) { return is_finite(e); }), 0);
                EXPECT_TRUE(scaled_residual(WideMatrix<T>(t, trans), x, scale, b) <= 1);
                EXPECT_TRUE(scale != 0 || norm(WideMatrix<T>(x)) > 0) << "a null vector";
                EXPECT_EQ(scale == 0, kind == TriangleKind::singular && diag == 'N') << scale;
                EXPECT_TRUE(scale < 1 || kind != TriangleKind::growing || n * size < 1e33) << "overflow";
                EXPECT_TRUE(scale == 1 || kind != TriangleKind::tame || size > 1) << scale;
            }
        });
}

TEST_OF_ELEMENTS(Triangular, ScalingByReciprocals) {
    struct Row {
        float divisor, x, quotient;
    };
    for (const auto& [divisor, x, quotient] : {Row{4, 3, 0.75F},
                                               {0x1p127F, 0x1p100F, 0x1p-27F},
                                               {-0x1p127F, 0x1p-20F, -0x1p-147F},
                                               {0x1p-149F, 0x1p-140F, 0x1p9F},
                                               {0x1p-149F, 0x1p-22F, 0x1p127F},
                                               {0x1p-140F, 1, infinity},
                                               {0, 1, infinity},
                                               {infinity, 3, 0}}) {
        const T beside = scalar<T>(7);
        std::vector<T> v{scalar<T>(x), beside, scalar<T>(x)};
        call_for<T>(SRSCL, CSRSCL, 2, divisor, v, 2);
        for (const std::size_t i : {0U, 2U})
            EXPECT_EQ(std::real(widen(v[i])), quotient) << divisor;
        EXPECT_TRUE(v[1] == beside);
    }
}

// Each way in which they shrink, by systems of order 2 of which the result is known, and matrices whose sums are beyond
// overflow.
constexpr float big = 0x1p103F; // where the method begins to shrink

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
          {"a divisor below 1", 'N', 'N', 1, 0, 0.5F, 0, big, 1 / big, 0, 2},
          {"nothing", 'N', 'N', 2, 1, 4, 5, 4, 1, 2, 1}}) {
        const std::vector<T> a{scalar<T>(row.a11), T(), scalar<T>(row.a12), scalar<T>(row.a22)};
        std::vector<T> x{scalar<T>(row.b1), scalar<T>(row.b2)};
        std::vector<float> cnorm(2, nan);
        float scale = -1;
        EXPECT_EQ(call_for<T>(SLATRS, CLATRS, 'U', row.op, row.diag, 'N', 2, a, 2, x, &scale, cnorm), 0);
        EXPECT_EQ(scale, row.scale) << row.what;
        EXPECT_TRUE(x[0] == scalar<T>(row.x1) && x[1] == scalar<T>(row.x2)) << row.what;
        EXPECT_EQ(cnorm, (std::vector{0.0F, row.a12})) << row.what;
    }
    struct Column { // beside which are ones on the diagonal and a12
        const char* what;
        float a12, a13, a23, b2, b3, x1, x2, x3; // the solution without scale
    };
    for (const Column& c :
         {Column{"a sum beyond overflow", 0, 0x1p127F, 0x1p127F, 0, 0.25F, -0x1p125F, -0x1p125F, 0.25F},
          {"a product that meets an earlier one", big / 2, big / 2, 0, 1, 1.5F, -1.25F * big, 1, 1.5F}}) {
        const std::vector<T> a{
            scalar<T>(1),     T(),         T(), scalar<T>(c.a12), scalar<T>(1), T(), scalar<T>(c.a13),
            scalar<T>(c.a23), scalar<T>(1)};
        std::vector<T> x{T(), scalar<T>(c.b2), scalar<T>(c.b3)};
        std::vector<float> cnorm(3, nan);
        float scale = -1;
        EXPECT_EQ(call_for<T>(SLATRS, CLATRS, 'U', 'N', 'U', 'N', 3, a, 3, x, &scale, cnorm), 0);
        EXPECT_TRUE(scale > 0 && std::real(widen(x[0])) >= -big) << c.what;
        EXPECT_TRUE(x[0] == scale * scalar<T>(c.x1) && x[1] == scale * scalar<T>(c.x2) &&
                    x[2] == scale * scalar<T>(c.x3))
            << c.what;
    }
    const std::vector<T> a{scalar<T>(1), T(), scalar<T>(infinity), scalar<T>(1)}; // goes to the plain solve
    std::vector<T> x{T(), scalar<T>(1)};
    std::vector<float> cnorm(2, nan);
    float scale = -1;
    EXPECT_EQ(call_for<T>(SLATRS, CLATRS, 'U', 'N', 'U', 'N', 2, a, 2, x, &scale, cnorm), 0);
    EXPECT_TRUE(scale == 1 && x[1] == scalar<T>(1));
}

// ---- Estimates ----------------------------------------------------------------------------------------------------

template <class T>
float estimate_of(const Operand<T>& a) {
    const int n = a.rows();
    std::vector<T> v(static_cast<std::size_t>(n)), x(v);
    std::vector<int> isgn(v.size());
    float estimate = 0;
    int kase = 0, isave[3] = {};
    for (int requests = 0; requests < 20; ++requests) {
        if constexpr (isComplex<T>)
            CLACN2(&n, v.data(), x.data(), &estimate, &kase, isave);
        else
            SLACN2(&n, v.data(), x.data(), isgn.data(), &estimate, &kase, isave);
        if (kase == 0)
            break;
        const WideMatrix<T> image = WideMatrix<T>(a, kase == 1 ? 'N' : 'C') *
                                    WideMatrix<T>(n, 1, [&](int i, int) { return widen(x[std::size_t(i)]); });
        for (int i = 0; i < n; ++i)
            round_to(image(i, 0), x[std::size_t(i)]);
    }
    return estimate;
}

// Matrices on which each of the steps counts.
TEST_OF_ELEMENTS(Triangular, EstimateByEachStep) {
    struct Row {
        const char* what;
        float a[4][4], estimate;
    };
    for (const Row& row : {Row{"each column leads to a larger one, the last one is the norm",
                               {{2, 0, 0, -1}, {0, -3, 3, 0}, {-1, 3, 0, 0}, {2, 0, 0, -3}},
                               6},
                           {"the first column is no larger than the mean, although another one is",
                            {{-1, 0, -1, -3}, {2, 0, 0, 0}, {0, 0, 3, -2}, {0, -3, 1, -2}},
                            4},
                           {"alternating signs give more than any column that was tried",
                            {{2, -2, 2, 0}, {3, -2, 0, 0}, {-3, 3, -1, 2}, {0, 2, 1, 3}},
                            50.0F / 9}}) {
        Operand<T> a({4, 4}, {});
        a.set([&](int i, int j) { return scalar<T>(row.a[i][j]); });
        EXPECT_NEAR(estimate_of(a), row.estimate, 1e-5) << row.what;
    }
}

// ---- Condition numbers --------------------------------------------------------------------------------------------

TEST_OF_ELEMENTS(Triangular, ConditionNumbers) {
    combine("1oI", "UL", "NU").each([](char norm, char uplo, char diag) {
        combine({TriangleKind::tame, TriangleKind::oneRow}, {1, 2, 17, 60}).each([&](TriangleKind kind, int n) {
            const Operand<T> t = triangular_matrix<T>(uplo, diag, n, kind);
            const double ratio = rcond_of(t, norm) / reciprocal_condition(WideMatrix<T>(t), norm == 'I' ? 'I' : 'O');
            EXPECT_TRUE(ratio >= 0.9999 && ratio <= 3) << ratio;
        });
        const auto of = [&](int n, TriangleKind kind) {
            return rcond_of(triangular_matrix<T>(uplo, diag, n, kind), norm);
        };
        EXPECT_EQ(of(0, TriangleKind::tame), 1);
        EXPECT_EQ(of(20, TriangleKind::singular) == 0, diag == 'N');
        EXPECT_EQ(of(200, TriangleKind::growing), 0) << "singular to working precision";
    });
}

// The bound above which a matrix counts as singular shrinks with its order: the inverse's norm is 2^124 here.
TEST_OF_ELEMENTS(Triangular, SingularToWorkingPrecisionDependsOnTheOrder) {
    for (const int n : {2, 8}) {
        Operand<T> t(Form{n, n, Form::triangular, 'U'}, {});
        t.set([&](int i, int j) { return scalar<T>(i < j ? 0 : i < n - 1 ? 1 : 0x1p-124F); });
        EXPECT_EQ(rcond_of(t, '1') == 0, n == 8);
    }
}

} // namespace
} // namespace qrv::test
