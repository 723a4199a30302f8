// Band matrices: factorizations, solves and condition estimates by every route, in double; what lies beside the band
// is canaries.
#include <gtest/gtest.h>
#include <random>

#include "blas/calls.hpp"
#include "lapack/calls/band.hpp"
#include "lapack/kernel/source/band/band_view.hpp"
#include "lapack/kernel/source/band/gbtrf.hpp"
#include "lapack/kernel/source/band/triangular_band.hpp"
#include "support/combine.hpp"
#include "support/oracle.hpp"
#include "support/progress.hpp"

namespace qrv::test {
namespace {

using lapack::BandShape;
using Band = Operand<float>;
using Wide = WideMatrix<float>;

// m x n with room for the fill-in of U, which is not set.
Band general_band(const BandShape& s, unsigned seed) {
    Band stored(Form{s.m, s.n, Form::general, 'A', 'N', true, s.kl, s.kv()}, {.extra = s.kl % 3, .offset = 3});
    Band elements(Form{s.m, s.n, Form::general, 'A', 'N', true, s.kl, s.ku}, {});
    std::mt19937 random(seed);
    elements.fill_random(random);
    stored.set([&](int i, int j) { return elements.form().stored(i, j) ? elements(i, j) : nan; });
    return stored;
}
Wide meant(const BandShape& s, const Band& a) {
    return {s.m, s.n, [&](int i, int j) { return i <= j + s.kl && j <= i + s.ku ? widen(a(i, j)) : 0; }};
}
Band triangle(Uplo uplo, Diag diag, int n, int kd, unsigned seed) {
    const bool upper = uplo == Uplo::upper;
    Band a(Form{n, n, Form::triangular, letter(uplo), letter(diag), true, upper ? 0 : kd, upper ? kd : 0},
           {.extra = kd % 3}); // none with kd = 0: its diagonals are rows of one element
    std::mt19937 random(seed);
    a.fill_random(random);
    return a;
}
// Symmetric, its diagonal outweighing its rows.
Band definite_band(Uplo uplo, int n, int kd) {
    const bool upper = uplo == Uplo::upper;
    Band a(Form{n, n, Form::symmetric, letter(uplo), 'N', true, upper ? 0 : kd, upper ? kd : 0}, {.extra = kd % 3});
    std::mt19937 random(static_cast<unsigned>(n + kd));
    a.fill_random(random);
    for (int i = 0; i < n; ++i)
        a(i, i) = static_cast<float>(2 * kd + 1);
    return a;
}
// The array starts a form's diagonals above the main one; data() is where routines are told that it is.
Matrix<float> dense_view(Band& a) {
    return lapack::band_view(a.data(), a.ld(), a.form().above);
}

// A - P L U relative to A: from the last step to the first, the multipliers of a column and then its interchange make
// of U what it came from.
double residual(const BandShape& s, const Wide& a, const Band& f, const std::vector<int>& ipiv) {
    std::vector<double> product =
        Wide(s.m, s.n, [&](int i, int j) { return i <= j && j <= i + s.kv() ? widen(f(i, j)) : 0; }).values;
    for (int k = std::min(s.m, s.n) - 1; k >= 0; --k) {
        const int pivotRow = ipiv[std::size_t(k)] - 1, last = std::min(s.m - 1, k + s.kl);
        if (pivotRow < k || pivotRow > last)
            return infinity;
        for (int j = 0; j < s.n; ++j) {
            const std::size_t column = a.at(0, j);
            for (int i = k + 1; i <= last; ++i)
                product[column + std::size_t(i)] += widen(f(i, k)) * product[column + std::size_t(k)];
            std::swap(product[column + std::size_t(k)], product[column + std::size_t(pivotRow)]);
        }
    }
    return norm(a - Wide(s.m, s.n, product), 'M') / norm(a, 'O');
}

int first_zero_pivot(const Band& f) {
    for (int i = 0; i < std::min(f.rows(), f.columns()); ++i)
        if (f(i, i) == 0)
            return i + 1;
    return 0;
}

// Columns of zeros, one or two of which some have, give info, the first, and the factorization goes on.
TEST(Band, ResidualsOfLuByEveryRoute) {
    unsigned seed = 0;
    combine({1, 2, 5, 60, 97}, {0, 1, 2}, {0, 1, 3, 8, 20, 40}, std::vector{0, 2, 7, 33})
        .each([&](int n, int shape, int kl, int ku) {
            const BandShape s{shape == 0 ? n : shape == 1 ? n / 2 + 1 : n + 7, n, kl, ku};
            Band a = general_band(s, ++seed);
            const int zero = seed % 3 == 0 && std::min(s.m, s.n) > 2 ? std::min(s.m, s.n) / 2 : s.n;
            for (int j = zero; j < std::min(zero + 1 + int(seed % 2), s.n); ++j)
                for (int i = std::max(0, j - s.ku); i < std::min(s.m, j + s.kl + 1); ++i)
                    a(i, j) = 0;
            const Wide dense = meant(s, a);
            std::vector<int> ipiv(static_cast<std::size_t>(std::min(s.m, s.n)));
            combine({1, 2, 5, 16, 32}, {1, 3}).each([&](int nb, int threads) {
                if (nb > std::max(s.kl, 1) || (nb == 1 && threads > 1))
                    return;
                Band f(a);
                const int info = nb == 1 ? lapack::gbtrf_unblocked(s, dense_view(f), ipiv.data())
                                         : lapack::gbtrf_blocked(threads, nb, "SGBTRF", s, dense_view(f), ipiv.data());
                // Triangles (ku = 0) may be singular to working precision.
                ASSERT_TRUE(info == first_zero_pivot(f) && (info > 0 || zero == s.n));
                ASSERT_LT(residual(s, dense, f, ipiv), 2e-6);
            });
        });
}

TEST(Band, LuTellsItsPanelsAndStops) {
    const BandShape s{80, 80, 20, 10};
    const Band a = general_band(s, 5);
    std::vector<int> ipiv(80);
    for (const int threads : {1, 3}) {
        Band f(a);
        const ProgressHook hook(2);
        EXPECT_EQ(lapack::gbtrf_blocked(threads, 16, "SGBTRF", s, dense_view(f), ipiv.data()), 0);
        EXPECT_EQ(progress.steps, (std::vector{16, 32}));
        EXPECT_TRUE(same_bits(f(79, 79), a(79, 79)));
    }
}

double residual_of(Op op, const Wide& a, const Band& b, const Band& x) {
    return solve_residual(op == Op::none ? a : a.adjoint(), Wide(x), Wide(b));
}

TEST(Band, SolutionsFromLu) {
    for (const BandShape s : {BandShape{1, 1, 0, 0}, {50, 50, 3, 2}, {97, 97, 20, 9}, {40, 40, 0, 5}, {60, 60, 8, 0}}) {
        const Band a = general_band(s, 9);
        Band f(a);
        std::vector<int> ipiv(static_cast<std::size_t>(s.n));
        lapack::gbtf2(s, f.data(), f.ld(), ipiv.data());
        combine({Op::none, Op::transpose, Op::adjoint}, {1, 5, 40}).each([&](Op op, int nrhs) {
            const Band b = random_matrix<float>(s.n, nrhs, 7);
            Band x(b);
            lapack::gbtrs(op, s, nrhs, f.data(), f.ld(), ipiv.data(), x.view());
            EXPECT_LT(residual_of(op, meant(s, a), b, x), 4) << s.n;
        });
    }
}

constexpr Uplo triangles[] = {Uplo::upper, Uplo::lower};

TEST(Band, SolutionsWithTriangles) {
    combine({1, 2, 7, 50, 131}, {0, 1, 2, 5, 17, 40}, {1, 2, 3, 5, 16, 17}, triangles,
            std::array{Op::none, Op::transpose}, std::array{Diag::nonUnit, Diag::unit})
        .each([](int n, int kd, int nb, Uplo uplo, Op op, Diag diag) {
            if (nb > std::max(kd, 1))
                return;
            Band a = triangle(uplo, diag, n, kd, 3);
            const Band b = random_matrix<float>(n, 9, 7);
            const lapack::TriangularBand t{uplo, op, diag, n, kd, dense_view(a)};
            Band x(b);
            std::vector<float> work(static_cast<std::size_t>(nb * nb), nan);
            if (nb == 1)
                lapack::solve_band_unblocked(t, 9, x.view());
            else
                lapack::solve_band_blocked(t, nb, 9, x.view(), work.data());
            EXPECT_LT(residual_of(op, Wide(a), b, x), 4);
        });
}

TEST(Band, TriangularSolveTellsTheFirstZero) {
    Band a = triangle(Uplo::lower, Diag::nonUnit, 9, 2, 1);
    a(8, 8) = 0;
    const Band b = random_matrix<float>(9, 2, 7);
    Band x(b);
    for (const int first : {7, 1}) {
        a(first - 1, first - 1) = 0;
        EXPECT_EQ(lapack::tbtrs(Uplo::lower, Op::none, Diag::nonUnit, 9, 2, 2, a.data(), a.ld(), x.view()), first);
        EXPECT_TRUE(x.same_bits(b));
    }
    EXPECT_EQ(lapack::tbtrs(Uplo::lower, Op::none, Diag::unit, 9, 2, 2, a.data(), a.ld(), x.view()), 0);
}

TEST(Band, ResidualsOfCholesky) {
    combine({1, 3, 10, 64, 150}, {0, 1, 5, 17, 40, 70, 100}, {&lapack::pbtrf, &lapack::pbtf2}, triangles)
        .each([](int n, int kd, auto* factor, Uplo uplo) {
            const Band a = definite_band(uplo, n, kd), b = random_matrix<float>(n, 5, 7);
            Band f(a), x(b);
            ASSERT_EQ(factor(uplo, n, kd, f.data(), f.ld()), 0);
            const double error = norm(Wide(a) - cholesky_product(f), 'M');
            EXPECT_LT(error, 4 * unitRoundoff * (2 * kd + 1) * std::sqrt(kd + 1));
            lapack::pbtrs(uplo, n, kd, 5, f.data(), f.ld(), x.view());
            EXPECT_LT(residual_of(Op::none, Wide(a), b, x), 4);
            for (const float pivot : {-1.0F, nan}) {
                Band bad(a);
                bad(n / 2, n / 2) = pivot;
                EXPECT_EQ(factor(uplo, n, kd, bad.data(), bad.ld()), n / 2 + 1);
            }
        });
}

// A pivot whose reciprocal would overflow divides its column.
TEST(Band, SmallestPivots) {
    for (auto* const factor : {&lapack::gbtrf, &lapack::gbtf2}) {
        float column[] = {nan, nan, 0x1p-141F, 0x1p-142F, 0x1p-143F}; // two rows for fill
        int ipiv = 0;
        EXPECT_EQ(factor({3, 1, 2, 0}, column, 5, &ipiv), 0);
        EXPECT_EQ(column[3], 0.5F);
        EXPECT_EQ(column[4], 0.25F);
    }
}

TEST(Band, EstimatesConditions) {
    constexpr int n = 60, kd = 6;
    std::vector<float> work(3 * n);
    std::vector<int> signs(n), ipiv(n);
    const lapack::EstimateWork<float> arrays(work.data(), signs.data());
    const auto expect_near = [](const Wide& a, const std::string& what, const auto& estimate) {
        const double ratio = estimate(static_cast<float>(norm(a, 'O'))) / reciprocal_condition(a);
        EXPECT_TRUE(ratio >= 0.99 && ratio <= 3.01) << what << ": " << ratio;
    };
    for (const int kl : {0, 3, 9}) {
        const BandShape s{n, n, kl, 4};
        const Band a = general_band(s, 17);
        Band f(a);
        lapack::gbtf2(s, f.data(), f.ld(), ipiv.data());
        expect_near(meant(s, a), "kl " + std::to_string(kl), [&](float anorm) {
            return lapack::gbcon(lapack::Norm::one, s, f.data(), f.ld(), ipiv.data(), anorm, arrays);
        });
    }
    for (const Uplo uplo : triangles) {
        const Band a = definite_band(uplo, n, kd);
        Band f(a);
        lapack::pbtrf(uplo, n, kd, f.data(), f.ld());
        expect_near(Wide(a), std::string(1, letter(uplo)),
                    [&](float anorm) { return lapack::pbcon(uplo, n, kd, f.data(), f.ld(), anorm, arrays); });
    }
}

// Growth that overflows a plain solve comes out scaled: scale b = A x.
TEST(Band, ScaledSolveDoesNotOverflow) {
    constexpr int n = 80, kd = 3;
    combine({Op::none, Op::transpose}, triangles).each([](Op op, Uplo uplo) {
        Band a = triangle(uplo, Diag::nonUnit, n, kd, 2);
        a.set([](int i, int j) { return i == j ? 0.125F : std::abs(i - j) == 1 ? -0.5F : 0.0F; }); // grows to 4^n
        Band x(n, 1, n), scaled(n, 1, n);
        x.fill(1);
        std::vector<float> cnorm(n);
        const float scale =
            lapack::latbs(uplo, op, Diag::nonUnit, false, n, kd, a.data(), a.ld(), x.data(), cnorm.data());
        ASSERT_TRUE(scale > 0 && scale < 1);
        EXPECT_LT(residual_of(op, Wide(a), scaled.fill(scale), x), 1);
    });
}

TEST(BandRaces, Teams) {
    const BandShape s{120, 120, 20, 9};
    const Band a = general_band(s, 4);
    Band f(a);
    std::vector<int> ipiv(120);
    ASSERT_EQ(lapack::gbtrf_blocked(4, 8, "SGBTRF", s, dense_view(f), ipiv.data()), 0);
    EXPECT_TRUE(residual(s, meant(s, a), f, ipiv) < 2e-6);
    const Band b = random_matrix<float>(120, 40, 7);
    Band x(b);
    lapack::gbtrs(Op::none, s, 40, f.data(), f.ld(), ipiv.data(), x.view());
    EXPECT_TRUE(residual_of(Op::none, meant(s, a), b, x) < 4);
}

} // namespace
} // namespace qrv::test
