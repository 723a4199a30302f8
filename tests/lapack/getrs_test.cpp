// Solves, inverses and condition estimates from LU factors, by their residuals and by what is known in double.
#include <gmock/gmock.h>

#include "qrv/native.h"
#include "support/call.hpp"
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
    for (const int team : teamSizes)
        for (const int n : {1, 2, 14, 24, 25, 63, 64, 65, 200, 1000})
            for (const char* trans : {"N", "T", "C", "t"}) {
                if (n == 1000 && (team > 2 || *trans == 'C' || *trans == 't'))
                    continue;
                const ForcedTeam forced(team);
                const int nrhs = n % 7 + 1, extra = n % 3;
                const auto a = random_matrix<T>(n, n, 3, extra), b = random_matrix<T>(n, nrhs, 5);
                const auto f = factored(a);
                auto x = b;
                EXPECT_EQ(call_for<T>(SGETRS, CGETRS, *trans, n, nrhs, f.lu, f.ipiv, x), 0);
                const double residual = solve_residual(WideMatrix<T>(a, *trans), WideMatrix<T>(x), WideMatrix<T>(b));
                EXPECT_TRUE(residual <= solveBound) << residual << " n=" << n << " trans=" << trans << " team " << team;
            }
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
    for (const char which : {'1', 'O', 'i'})
        for (const int n : {1, 2, 9, 30, 64})
            for (const LuKind kind : {LuKind::random, LuKind::graded, LuKind::nearlySingular}) {
                const auto a = lu_matrix<T>(kind, n, n, 2);
                const WideMatrix<T> wide(a);
                const char sums = which == 'i' ? 'I' : 'O';
                const float rcond = rcond_of(which, factored(a).lu, static_cast<float>(norm(wide, sums)));
                const double truth = reciprocal_condition(wide, sums);
                if (truth > 1e-6) // else the factors in single precision are those of another matrix
                    EXPECT_TRUE(rcond >= truth * 0.9 && rcond <= truth * 10)
                        << rcond << " for " << truth << " norm " << which << " n=" << n << " kind "
                        << static_cast<int>(kind);
                else
                    EXPECT_TRUE(rcond >= 0 && rcond < 1e-5) << rcond << " for " << truth;
            }
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

} // namespace
} // namespace qrv::test
