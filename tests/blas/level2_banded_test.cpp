// Contract of the kernels with banded matrices, on every build. Corners of band storage are NaN, and so is the storage
// between its columns.
#include <gtest/gtest.h>

#include "support/triangle_case.hpp"

namespace qrv::test {
namespace {

// Diagonals beside the main one: none, around the width of a group of columns, of a vector, as many as there are and
// more.
std::vector<int> band_widths(const Level2Case& p) {
    if (p.n > 64)
        return {1, 8, 40, p.n - 1};
    return {0, 1, 2, 3, 4, 5, 9, 17, 33, std::max(0, p.n - 1), p.n + 2};
}

// ---- Triangular ----------------------------------------------------------------------------------------------------

TEST(Banded, Triangular) {
    each_triangle([](const Level2Case& p, char uplo, char trans, char diag) {
        for (const int k : band_widths(p)) {
            TriangleCase<float> t(uplo, trans, diag, p, k, true);
            expect_product<float>(t, p, [&](const VectorBuild& build, float* x) {
                build.blas_stbmv_kernel(&uplo, &trans, &diag, &p.n, &k, t.a.data(), &t.a.ld(), x, &p.incx);
            });
            expect_solution<float>(t, p, [&](const VectorBuild& build, float* x) {
                build.blas_stbsv_kernel(&uplo, &trans, &diag, &p.n, &k, t.a.data(), &t.a.ld(), x, &p.incx);
            });
        }
    });
}

// ---- y := alpha*op(A)*x + beta*y -----------------------------------------------------------------------------------

// Whether a routine(build, x, y) gives that product, with nx elements of x and op(A) as entry(i, j).
template <class Entry, class Routine>
void expect_banded(const std::string& what, const Level2Case& p, int nx, int ny, const Entry& entry,
                   const Routine& routine) {
    std::mt19937 random(7);
    GuardedVector<float> x(nx, p.incx, p.offset / 2, p.guard);
    x.fill([&] { return p.alpha == 0 ? nan : any_size_one<float>(random); });
    const auto result = [&] { return GuardedVector<float>(ny, p.incy, p.offset / 3, p.guard); };
    const bool nothing = p.m == 0 || p.n == 0;
    const auto start = [&](GuardedVector<float>& y) {
        std::mt19937 again(8);
        y.fill([&] { return p.beta == 0 && !nothing ? nan : any_size_one<float>(again); });
    };
    GuardedVector<float> before = result();
    start(before);
    const auto expected = product<float>(nothing ? 0 : p.alpha, entry, x, nothing ? 1 : p.beta, before);
    for (const VectorBuild& build : vector_builds()) {
        GuardedVector<float> y = result();
        start(y);
        routine(build, x.data(), y.data());
        EXPECT_TRUE(expected.held_by(y)) << build << ' ' << what << ' ' << p;
    }
}

TEST(Banded, Symmetric) {
    for (const Level2Case& p : level2_cases(true))
        for (const int k : band_widths(p))
            for (const char uplo : {'U', 'l'}) {
                TriangleCase<float> t(uplo, 'N', 'N', p, k, true);
                const auto entry = [&](int i, int j) { return t.is_stored(i, j) ? t.entry(i, j) : t.entry(j, i); };
                expect_banded(std::string("symmetric ") + uplo + " k=" + std::to_string(k), p, p.n, p.n, entry,
                              [&](const VectorBuild& build, const float* x, float* y) {
                                  build.blas_ssbmv_kernel(&uplo, &p.n, &k, &p.alpha, t.a.data(), &t.a.ld(), x, &p.incx,
                                                          &p.beta, y, &p.incy);
                              });
            }
}

TEST(Banded, General) {
    std::mt19937 random(5);
    for (const Level2Case& p : level2_cases(false))
        for (const auto& [kl, ku] : {std::pair{0, 0},
                                     {1, 0},
                                     {0, 2},
                                     {2, 1},
                                     {1, 3},
                                     {5, 2},
                                     {3, 9},
                                     {17, 16},
                                     {40, 0},
                                     {std::max(0, p.m - 1), std::max(0, p.n - 1)},
                                     {p.m + 1, p.n + 2}}) {
            if (kl + ku > 80 && p.m + p.n > 1000)
                continue; // dense
            Level2Matrix<float> a(kl + ku + 1, p.n, p);
            const auto stored = [&, kl = kl, ku = ku](int i, int j) { return j - i <= ku && i - j <= kl; };
            for (int j = 0; j < p.n; ++j)
                for (int i = std::max(0, j - ku); i <= std::min(p.m - 1, j + kl); ++i)
                    a(ku + i - j, j) = any_size_one<float>(random);
            for (const char trans : {'N', 't', 'C'}) {
                const bool transposed = is_transposed(trans);
                const auto entry = [&, ku = ku](int i, int j) {
                    if (transposed)
                        std::swap(i, j);
                    return stored(i, j) ? double{a(ku + i - j, j)} : 0;
                };
                expect_banded(std::string("general ") + trans + " kl=" + std::to_string(kl) +
                                  " ku=" + std::to_string(ku),
                              p, transposed ? p.m : p.n, transposed ? p.n : p.m, entry,
                              [&, kl = kl, ku = ku](const VectorBuild& build, const float* x, float* y) {
                                  build.blas_sgbmv_kernel(&trans, &p.m, &p.n, &kl, &ku, &p.alpha, a.data(), &a.ld(), x,
                                                          &p.incx, &p.beta, y, &p.incy);
                              });
            }
        }
}

// A column without rows has the dot product 0, and alpha times that is added.
TEST(Banded, EmptyColumns) {
    const int m = 1, n = 3, unit = 1, none = 0;
    const float alpha = infinity, beta = 1, a[3] = {1, nan, nan}, x = 2;
    for (const VectorBuild& build : vector_builds()) {
        float y[3] = {1, 1, 1};
        build.blas_sgbmv_kernel("T", &m, &n, &none, &none, &alpha, a, &unit, &x, &unit, &beta, y, &unit);
        EXPECT_TRUE(y[0] == infinity && std::isnan(y[1]) && std::isnan(y[2])) << build;
    }
}

} // namespace
} // namespace qrv::test
