// The drivers that solve systems in one call: factors and solution are those of their parts, which have tests of their
// own; here what they add. Least squares in double, by the normal equations of well-conditioned matrices.
#include <gtest/gtest.h>

#include "lapack/calls/qr.hpp"
#include "lapack/elements.hpp"
#include "qrv/native.h"
#include "support/call.hpp"
#include "support/cholesky.hpp"
#include "support/combine.hpp"

namespace qrv::test {
namespace {

// driver(a, b, info) on matrices of order n; one that has no solution leaves B alone.
template <class T, class Driver>
void expect_solved(const Operand<T>& a, int info, const Driver& driver) {
    const int n = a.rows(), nrhs = 4;
    const Operand<T> b = random_matrix<T>(n, nrhs, 5);
    Operand<T> factors(a), x(b);
    int told = -9;
    driver(n, nrhs, factors, x, told);
    EXPECT_EQ(told, info) << n;
    if (info != 0)
        EXPECT_TRUE(x.same_bits(b));
    else
        EXPECT_TRUE(solve_residual(WideMatrix<T>(a), WideMatrix<T>(x), WideMatrix<T>(b)) < 2) << n;
}

TEST_OF_ELEMENTS(Drivers, GeneralSolutions) {
    const auto gesv = [](int n, int nrhs, Operand<T>& a, Operand<T>& x, int& info) {
        std::vector<int> ipiv(std::size_t(n + 1), -7);
        info = call_for<T>(SGESV, CGESV, n, nrhs, a, ipiv, x);
        EXPECT_EQ(ipiv.back(), -7);
    };
    for (const int n : {1, 9, 90}) {
        Operand<T> a = random_matrix<T>(n, n, 3);
        expect_solved(a, 0, gesv);
        for (int i = 0; i < n; ++i)
            a(i, n / 2) = T();
        expect_solved(a, n / 2 + 1, gesv);
    }
}

TEST_OF_ELEMENTS(Drivers, PositiveDefiniteSolutions) {
    for (const Uplo uplo : {Uplo::upper, Uplo::lower}) {
        const auto posv = [uplo](int n, int nrhs, Operand<T>& a, Operand<T>& x, int& info) {
            info = call_for<T>(SPOSV, CPOSV, letter(uplo), n, nrhs, a, x);
        };
        for (const int n : {1, 9, 90}) {
            Operand<T> a = definite<T>(uplo, n);
            expect_solved(a, 0, posv);
            a(n / 2, n / 2) = scalar<T>(-1);
            expect_solved(a, n / 2 + 1, posv);
        }
    }
}

TEST(BandDrivers, Solutions) {
    constexpr int n = 60, kl = 3, ku = 5;
    // Room for the fill-in above is part of the array, and NaN.
    Operand<float> general(Form{n, n, Form::general, 'A', 'N', true, kl, kl + ku}, {.extra = 1});
    std::mt19937 random(2);
    const auto any = [&](int i, int j) { return i == j ? 3 : j > i + ku ? nan : any_size_one<float>(random); };
    for (const int zero : {-1, 30}) {
        general.set([&](int i, int j) { return j == zero && j <= i + ku ? 0 : any(i, j); });
        Operand<float> meant(n, n, n);
        meant.set([&](int i, int j) { return i <= j + kl && j <= i + ku ? general(i, j) : 0; });
        expect_solved(meant, zero + 1, [&](int order, int nrhs, Operand<float>&, Operand<float>& x, int& info) {
            Operand<float> a(general);
            std::vector<int> ipiv(n);
            info = call(SGBSV, order, kl, ku, nrhs, a, ipiv, x);
        });
    }
    for (const char uplo : {'U', 'L'}) {
        constexpr int kd = 4;
        Operand<float> a(Form{n, n, Form::symmetric, uplo, 'N', true, uplo == 'U' ? 0 : kd, uplo == 'U' ? kd : 0},
                         {.extra = 1});
        const auto pbsv = [&](int order, int nrhs, Operand<float>& ab, Operand<float>& x, int& info) {
            info = call(SPBSV, uplo, order, kd, nrhs, ab, x);
        };
        a.set([&](int i, int j) { return i == j ? 2 * kd + 1 : any_size_one<float>(random); });
        expect_solved(a, 0, pbsv);
        a(20, 20) = -1;
        expect_solved(a, 21, pbsv);
    }
}

// ---- Least squares and least norm ---------------------------------------------------------------------------------

template <class T>
WideMatrix<T> least_squares(const WideMatrix<T>& a, const WideMatrix<T>& b) {
    const WideMatrix<T> adjoint = a.adjoint();
    return a.rows >= a.columns ? inverse(adjoint * a) * (adjoint * b) : adjoint * (inverse(a * adjoint) * b);
}

template <class T>
int gels(char trans, Operand<T>& a, Operand<T>& b, int nrhs, GuardedVector<T>& work) {
    return call_for<T>(SGELS, CGELS, trans, a.rows(), a.columns(), nrhs, a, b, work, work.size());
}

TEST_OF_ELEMENTS(Drivers, LeastSquaresSolutions) {
    struct Sizes {
        float a, b;
    };
    combine({std::pair{1, 1}, {5, 1}, {1, 4}, {9, 9}, {60, 23}, {23, 60}, {150, 90}, {90, 150}},
            {Op::none, lapack::adjoint<T>}, {false, true},
            std::vector<Sizes>{{1, 1}, {0x1p-124F, 0x1p-120F}, {0x1p120F, 0x1p124F}, {0x1p-20F, 0x1p-131F}})
        .each([](const auto& shape, Op op, bool enough, const Sizes& size) {
            const int m = shape.first, n = shape.second, nrhs = 3, k = std::min(m, n), rows = op == Op::none ? m : n;
            Operand<T> a = random_matrix<T>(m, n, 7), b = random_matrix<T>(std::max(m, n), nrhs, 8);
            for (int i = 0; i < k; ++i)
                a(i, i) = scalar<T>(2) + a(i, i) + (m == n ? scalar<T>(4) : T()); // well-conditioned
            a.set([&](int i, int j) { return size.a * a(i, j); });
            b.set([&](int i, int j) { return i < rows ? size.b * b(i, j) : all_parts<T>(nan); });
            Operand<T> factors(a), x(b);
            const auto best = lapack::gels_work<T>(m, n, nrhs);
            GuardedVector<T> work(enough ? int(best) : k + std::max(k, nrhs));
            ASSERT_EQ(gels(letter(op), factors, x, nrhs, work), 0);
            EXPECT_EQ(lapack::real_part(work[0]), static_cast<float>(best));

            const WideMatrix<T> wide(a, letter(op)), given(rows, nrhs, [&](int i, int j) { return widen(b(i, j)); }),
                right = least_squares(wide, given),
                found(wide.columns, nrhs, [&](int i, int j) { return widen(x(i, j)); });
            EXPECT_LT(norm(found - right) / norm(right), 100 * unitRoundoff);
            if (wide.rows > wide.columns) {
                const WideMatrix<T> below(rows - k, nrhs, [&](int i, int j) { return widen(x(k + i, j)); });
                EXPECT_NEAR(norm(below) / norm(given - wide * right), 1, 1e-5);
            }
        });
}

TEST_OF_ELEMENTS(Drivers, LeastSquaresWithoutFullRank) {
    for (const auto& [m, n] : {std::pair{20, 12}, {12, 20}}) {
        Operand<T> a = random_matrix<T>(m, n, 7), b = random_matrix<T>(20, 2, 8);
        GuardedVector<T> work(200);
        for (int i = 0; i < 20; ++i) // a line of zeros stays one
            (m > n ? a(i, 6) : a(6, i)) = T();
        EXPECT_EQ(gels('N', a, b, 2, work), 7);
        EXPECT_EQ(gels('N', a.fill(0), b, 2, work), 0);
        EXPECT_EQ(b.count_bad([](int, int, const T& x) { return x == T(); }), 0) << "of a matrix of zeros";
        EXPECT_EQ(lapack::real_part(work[0]), static_cast<float>(lapack::gels_work<T>(m, n, 2)));
        Operand<T> nothing(0, n, 1), c = random_matrix<T>(n, 2, 8);
        EXPECT_EQ(gels('N', nothing, c, 2, work), 0);
        EXPECT_EQ(c.count_bad([](int, int, const T& x) { return x == T(); }), 0) << "of no equations";
    }
}

} // namespace
} // namespace qrv::test
