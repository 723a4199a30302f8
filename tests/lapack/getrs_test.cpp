// Solves, inverses and condition estimates from LU factors, by their residuals and by what is known in double; and what
// estimates from the factors of others have in common with these.
#include <gtest/gtest.h>

#include "qrv/native.h"
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/lu.hpp"
#include "support/teams.hpp"

namespace qrv::test {
namespace {

// 1 / (|A| |inv(A)|) as the routine tells it.
template <class T>
float rcond_of(char norm, const Operand<T>& lu, float anorm) {
    const int n = lu.rows();
    Operand<T> work(Form{(isComplex<T> ? 2 : 4) * n, 1}, {});
    std::vector<std::conditional_t<isComplex<T>, float, int>> second(std::size_t(2 * n + 1));
    float rcond = -1;
    EXPECT_EQ(call_for<T>(SGECON, CGECON, norm, n, lu, anorm, &rcond, work.data(), second), 0);
    return rcond;
}

template <class T>
LuFactors<T> factored(const Operand<T>& a) {
    return factor(native_routes<T>()[0], a);
}

constexpr double solveBound = 2; // as |L||U| is some times |A|

TEST_OF_ELEMENTS(Getrs, Residual) {
    combine(teamSizes, "NTCt", std::vector{1, 2, 14, 24, 25, 63, 64, 65, 200, 1000})
        .each([](int team, char trans, int n) {
            if (n == 1000 && (team > 2 || trans == 'C' || trans == 't'))
                return;
            const ForcedTeam forced(team);
            const int nrhs = n % 7 + 1, extra = n % 3;
            const auto a = random_matrix<T>(n, n, 3, extra), b = random_matrix<T>(n, nrhs, 5);
            const auto f = factored(a);
            auto x = b;
            EXPECT_EQ(call_for<T>(SGETRS, CGETRS, trans, n, nrhs, f.lu, f.ipiv, x), 0);
            EXPECT_LE(solve_residual(WideMatrix<T>(a, trans), WideMatrix<T>(x), WideMatrix<T>(b)), solveBound);
        });
}

// |A X - I|, with work sizes from the least to the whole, on both sides of those at which blocking begins.
TEST_OF_ELEMENTS(Getrs, Inverse) {
    for (const int n : {1, 2, 24, 63, 64, 65, 130, 200}) {
        const auto a = random_matrix<T>(n, n, 7);
        const auto f = factored(a);
        for (const int lwork : {n, n + 1, 2 * n - 1, 2 * n, 5 * n, 64 * n}) {
            auto x = f.lu;
            Operand<T> work(lwork, 1, lwork);
            EXPECT_EQ(call_for<T>(SGETRI, CGETRI, n, x, f.ipiv, work.data(), lwork), 0);
            // Column by column X solves A X = I about as well as inv(A) is known at all.
            const double residual = solve_residual(WideMatrix<T>(a), WideMatrix<T>(x), identity<T>(n));
            EXPECT_TRUE(residual <= solveBound) << residual << " n=" << n << " lwork=" << lwork;
            EXPECT_EQ(widen(work(0, 0)), Wide<T>(n > 64 ? 64 * n : n)) << "the length that was wanted, not " << lwork;
        }
    }
}

TEST_OF_ELEMENTS(Getrs, InverseOfASingularMatrix) {
    const int n = 70, lwork = 64 * n;
    auto a = random_matrix<T>(n, n, 7, 0);
    a(40, 40) = T(); // of a U
    const auto before = a;
    std::vector<int> ipiv(static_cast<std::size_t>(n), 1);
    std::vector<T> work(static_cast<std::size_t>(lwork));
    EXPECT_EQ(call_for<T>(SGETRI, CGETRI, n, a, ipiv, work, lwork), 41);
    EXPECT_TRUE(a.same_bits(before));
}

TEST_OF_ELEMENTS(Getrs, ConditionEstimate) {
    combine({LuKind::random, LuKind::graded, LuKind::nearlySingular}, {1, 2, 9, 30, 64}, "1Oi")
        .each([](LuKind kind, int n, char which) {
            const auto a = lu_matrix<T>(kind, n, n, 2);
            const WideMatrix<T> wide(a);
            const char sums = which == 'i' ? 'I' : 'O';
            const float rcond = rcond_of(which, factored(a).lu, static_cast<float>(norm(wide, sums)));
            const double truth = reciprocal_condition(wide, sums);
            if (truth > 1e-6) // else the factors in single precision are those of another matrix
                EXPECT_TRUE(rcond >= truth * 0.9 && rcond <= truth * 10) << rcond << " for " << truth;
            else
                EXPECT_TRUE(rcond >= 0 && rcond < 1e-5) << rcond << " for " << truth;
        });
}

TEST_OF_ELEMENTS(Getrs, ConditionOfSpecialMatrices) {
    const int n = 20;
    auto f = factored(random_matrix<T>(n, n, 1));
    EXPECT_EQ(rcond_of('1', f.lu, 0), 0);
    EXPECT_FALSE(rcond_of('1', f.lu, nan) > 0);
    f.lu(7, 7) = T();
    EXPECT_EQ(rcond_of('1', f.lu, 1), 0) << "a singular factor";
    f.lu(7, 7) = all_parts<T>(nan);
    EXPECT_FALSE(rcond_of('1', f.lu, 1) > 0) << "ends";
    f.lu(7, 7) = all_parts<T>(infinity);
    EXPECT_FALSE(rcond_of('1', f.lu, 1) < 0) << "ends";
    for (const float size : {1e-30F, 1e37F}) {
        Operand<T> diagonal(n, n, n);
        diagonal.set([&](int i, int j) { return scalar<T>(i == j ? size : 0); });
        EXPECT_NEAR(rcond_of('1', diagonal, size), 1, 1e-3);
    }
    EXPECT_EQ(rcond_of('1', Operand<T>(0, 0, 1), 1), 1) << "of nothing";
}

// ---- Estimates of matrices on which each of their steps counts ----------------------------------------------------

// A factor whose first solve is harmless, while those that follow pass the largest float with both signs: only the sums
// of its own columns tell that they must be scaled, so as not to be NaN.
TEST_OF_ELEMENTS(Condition, SumsOfEachFactorOfItsOwn) {
    constexpr int n = 5;
    const float b = 0x1p100F;
    for (const char norm : {'1', 'I'}) { // the lower factor, the upper factor
        std::vector<T> lu(n * n);
        const auto put = [&](int i, int j, float x) {
            lu[std::size_t(norm == 'I' ? i + n * j : j + n * i)] = scalar<T>(x);
        };
        for (int i = 0; i < n; ++i)
            put(i, i, 1);
        put(0, 1, 1);
        put(1, 2, b), put(1, 3, 2 * b);
        put(2, 4, -b), put(3, 4, b);
        std::vector<T> work(4 * n);
        std::vector<std::conditional_t<isComplex<T>, float, int>> second(2 * n);
        float rcond = -1;
        call_for<T>(SGECON, CGECON, norm, n, lu, n, 1.0F, &rcond, work, second);
        EXPECT_EQ(rcond, 0) << norm;
    }
}

// A solve with the first factor alone passes what can be computed with, and the inverse does not: both scales count.
// The elements are powers of two, the largest one of the inverse is 2^124.
TEST_OF_ELEMENTS(Condition, ScalesOfBothFactors) {
    constexpr int n = 2, kd = 1;
    const float anorm = 1;
    for (const char uplo : {'U', 'L'}) {
        const float first = 0x1p-50F, beside = 0x1p58F, second = 0x1p46F;
        const std::vector<T> full{scalar<T>(first), scalar<T>(beside), scalar<T>(beside), scalar<T>(second)};
        std::vector<T> work(3 * n);
        std::vector<std::conditional_t<isComplex<T>, float, int>> more(n);
        float rcond = -1;
        call_for<T>(SPOCON, CPOCON, uplo, n, full, n, anorm, &rcond, work, more);
        if constexpr (!isComplex<T>) {
            const std::vector<float> upper{nan, first, beside, second}, lower{first, beside, second, nan};
            float banded = -1;
            call(SPBCON, uplo, n, kd, uplo == 'U' ? upper : lower, n, anorm, &banded, work, more);
            EXPECT_EQ(banded, rcond) << uplo;
        }
        EXPECT_EQ(rcond, 0x1p-124F) << uplo;
    }
}

TEST(BandCondition, ScaleOfTheSolve) {
    const float small = 0x1p-120F; // a solve with this is scaled
    std::vector<float> a{small}, work(3);
    std::vector<int> ipiv{1}, iwork(1);
    float rcond = -1;
    call(SGBCON, '1', 1, 0, 0, a, 1, ipiv, 1.0F, &rcond, work, iwork);
    EXPECT_EQ(rcond, small);
}

// Every multiplier and interchange of a band's L, to the last: U is the unit matrix.
TEST(BandCondition, EveryMultiplierCounts) {
    constexpr int n = 3, ldab = 3;
    combine({0, 1}, {0, 1}, "1I").each([&](int column, int interchanged, char norm) {
        std::vector<float> ab{nan, 1, 0, 0, 1, 0, 0, 1, nan}, work(3 * n);
        ab[std::size_t(ldab * column + 2)] = 4;
        std::vector<int> ipiv{1, 2, 3}, iwork(n);
        ipiv[std::size_t(column)] += interchanged;
        float rcond = -1;
        call(SGBCON, norm, n, 1, 0, ab, ldab, ipiv, 1.0F, &rcond, work, iwork);
        EXPECT_EQ(rcond, 0.2F);
    });
}

} // namespace
} // namespace qrv::test
