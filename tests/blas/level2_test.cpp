// Contract of the kernels of level 2, on every build.
#include <cstring>
#include <vector>

#include "support/routines.hpp"
#include "support/shapes.hpp"

namespace qrv::test {
namespace {

template <class T>
void check_builds(const Routine<T>& routine, const Shape& p) {
    const Problem<T> problem(routine.operation, p);
    for (const VectorBuild& build : vector_builds())
        problem.check([&](const Call<T>& v) { routine.kernel(build, v); },
                      std::string(build.name) + ' ' + routine.name);
}

// ---- Products, solves and updates ----------------------------------------------------------------------------------

// Around the sizes of vectors, passes and blocks.
constexpr int small[] = {0, 1, 2, 3, 5, 8, 11, 15, 16, 17, 31, 32, 33};
constexpr std::pair<int, int> large[] = {{64, 127},  {127, 64},  {128, 128}, {129, 300},
                                         {300, 129}, {256, 256}, {1024, 33}, {33, 1025}};
constexpr std::pair<int, int> largest[] = {{2051, 10}, {10, 2051}, {8195, 257}, {4099, 3}, {3, 4099}};
constexpr int largestSquares[] = {513, 2051};

std::vector<int> band_widths(int n) {
    if (n > 64)
        return {1, 8, 40};
    return {0, 1, 2, 3, 4, 5, 9, 17, 33, std::max(0, n - 1), n + 2};
}

// body(m, n, k, ku) for the small or the large sizes that suit a routine with so many options.
template <class Body>
void each_size(const Operation& o, bool largeOnes, unsigned options, Turns& turns, const Body& body) {
    const bool general = o.kind == Form::general;
    const auto add = [&](int m, int n) {
        if (!o.banded)
            return body(m, n, 0, 0);
        const std::vector<int> widths = band_widths(std::min(m, n));
        for (const int k : widths)
            if (!general || turns.one_in(4))
                body(m, n, k, general ? turns.pick(widths) : 0);
    };
    if (largeOnes) {
        for (const auto& [m, n] : large)
            add(m, general ? n : m);
        for (int round = 0; general && round < 3; ++round)
            for (const auto& [m, n] : largest)
                add(m, n);
        for (const int n : largestSquares)
            if (!general)
                add(n, n);
    } else if (general) {
        for (const int m : small)
            for (const int n : small)
                add(m, n);
    } else {
        for (unsigned round = 0; round < (o.banded ? 12 : 36) / options; ++round)
            for (const int n : small)
                add(n, n);
    }
}

void check_every_routine(bool largeOnes) {
    Turns turns;
    each_routine(true, [&]<class T>(const Routine<T>& routine) {
        const auto options = every_option<T>(routine.operation);
        const auto count = static_cast<unsigned>(options.size());
        each_size(routine.operation, largeOnes, count, turns, [&](int m, int n, int k, int ku) {
            for (Shape p : options) {
                const bool isLarge = m > 300 || n > 300;
                if (isLarge && !turns.one_in(m == n ? (count + 1) / 2 : 2))
                    continue;
                p.m = m, p.n = n, p.k = k, p.ku = ku;
                check_builds(routine, turns.vary(p, isLarge));
            }
        });
    });
}
TEST(Level2, EveryRoutineOnEveryBuild) {
    check_every_routine(false);
}
TEST(Level2, LargeOnesOfEveryRoutine) {
    check_every_routine(true);
}

// Callers compare results of the same matrix in other places: passes that begin on a vector of memory sum alike.
template <class T, class Kernel>
void check_places(const VectorBuild& build, Kernel kernel) {
    constexpr int m = 301, n = 9, ld = 304, one = 1, mostSkew = 16;
    const T alpha = scalar<T>(1.5F), beta = scalar<T>(0.5F);
    std::vector<T> a(ld * n + mostSkew), x(m, scalar<T>(0.75F)), first;
    for (const char trans : {'N', 'T', 'C'})
        for (int skew = 0; skew < mostSkew; ++skew) {
            for (int i = 0; i < ld * n; ++i)
                a[i + skew] = scalar<T>(1.0F / static_cast<float>(3 + i % 101));
            std::vector<T> y(m, scalar<T>(1));
            kernel(&trans, &m, &n, &alpha, a.data() + skew, &ld, x.data(), &one, &beta, y.data(), &one);
            if (skew == 0)
                first = y;
            EXPECT_EQ(std::memcmp(first.data(), y.data(), m * sizeof(T)), 0) << build.name << ' ' << trans << skew;
        }
}
TEST(Level2, ProductsDoNotDependOnThePlaceOfTheMatrix) {
    for (const VectorBuild& build : vector_builds()) {
        check_places<float>(build, build.blas_sgemv_kernel);
        check_places<SingleComplex>(build, build.blas_cgemv_kernel);
    }
}

// ---- Bands of a team ------------------------------------------------------------------------------------------------

// The leading triangle and the band behind it are the whole update.
TEST(Level2, UpdatesByBands) {
    using enum Form::Kind;
    Turns turns;
    for (const int n : {1, 2, 5, 8, 16, 17, 33, 100, 300, 513})
        for (const char uplo : {'U', 'L'})
            for (const int first : {0, 1, n / 3, n - n / 3})
                for (const What what : {What::update, What::update2}) {
                    Shape p = turns.vary({.uplo = uplo, .n = n});
                    const Problem<float> problem({what, symmetric, true}, p);
                    const int width = n - first;
                    for (const VectorBuild& build : vector_builds())
                        problem.check(
                            [&](const Call<float>& v) {
                                float* const start =
                                    v.c + (is_upper(v.uplo) ? std::ptrdiff_t{v.ldc} * first : std::ptrdiff_t{first});
                                // The leading part of a vector that runs backwards is at its far end.
                                const float* const x = v.a + (v.lda < 0 ? -v.lda * width : 0);
                                const float* const y = v.b + (v.ldb < 0 ? -v.ldb * width : 0);
                                if (what == What::update) {
                                    build.blas_ssyr_kernel(&v.uplo, &first, &v.alpha, x, &v.lda, v.c, &v.ldc);
                                    build.blas_ssyr_band_kernel(&v.uplo, &width, &n, &v.alpha, v.a, &v.lda, start,
                                                                &v.ldc);
                                } else {
                                    build.blas_ssyr2_kernel(&v.uplo, &first, &v.alpha, x, &v.lda, y, &v.ldb, v.c,
                                                            &v.ldc);
                                    build.blas_ssyr2_band_kernel(&v.uplo, &width, &n, &v.alpha, v.a, &v.lda, v.b,
                                                                 &v.ldb, start, &v.ldc);
                                }
                            },
                            build.name);
                }
}

// Columns of a symmetric matrix with their mirror images, all others NaN: what is not of the strip is not read.
TEST(Level2, StripsOfSymmetricMatrices) {
    Turns turns;
    std::mt19937 random(1);
    const int unit = 1;
    for (const int n : {1, 2, 5, 16, 17, 33, 100, 301, 600})
        for (const char uplo : {'U', 'L'})
            for (const int columns : {0, 1, n / 3, n})
                for (const float beta : {0.F, 1.F, 0.5F}) {
                    const int first = is_upper(uplo) ? n - columns : 0;
                    const auto inside = [&](int j) { return first <= j && j < first + columns; };
                    const Layout layout{turns.pick({0, 1, 3, 4}), turns.pick({0, 1, 2})};
                    Operand<float> a(Form{n, n, Form::symmetric, uplo}, layout);
                    a.set([&](int, int j) { return inside(j) ? eighths<float>(random) : nan; });
                    GuardedVector<float> x(n, 1, turns.pick({0, 1, 3})), y(n, 1, turns.pick({0, 1, 3}));
                    x.fill([&] { return eighths<float>(random); });
                    y.fill([&] { return beta == 0 ? nan : eighths<float>(random); });
                    const WideMatrix<float> strip(n, n, [&](int i, int j) {
                        const double element = a.entry(i, j);
                        return inside(is_upper(uplo) ? std::max(i, j) : std::min(i, j)) ? element : 0.0;
                    });
                    const float alpha = -0.75F;
                    const auto expected = product<float>(alpha, strip, WideMatrix<float>(x), beta, y);
                    const WideMatrix<float> left(n, 2, [&](int i, int j) { return j ? y[i] : x[i]; }),
                        right(2, n, [&](int i, int j) { return i ? x[j] : y[j]; });
                    const auto updated = product<float>(alpha, left, right, 1, a);
                    for (const VectorBuild& build : vector_builds()) {
                        GuardedVector<float> result(y);
                        build.blas_ssymv_strip(&uplo, &n, &columns, &alpha, a.data(), &a.ld(), x.data(), &unit, &beta,
                                               result.data(), &unit);
                        EXPECT_TRUE(expected.held_by(result)) << build << ' ' << uplo << n << ' ' << columns;
                        if (beta == 0)
                            continue;
                        Operand<float> b(a);
                        build.blas_ssyr2_strip(&uplo, &n, &columns, &alpha, x.data(), &unit, y.data(), &unit, b.data(),
                                               &b.ld());
                        EXPECT_TRUE(updated.held_by(b)) << build << ' ' << uplo << n << ' ' << columns;
                    }
                }
}

// Some elements of a triangular product, from a copy of x, at either end of the triangle and inside.
template <class T>
void check_product_by_bands() {
    const Operation operation{What::inPlace, Form::triangular, true};
    Turns turns;
    for (const int n : {1, 2, 5, 8, 16, 17, 33, 100, 300})
        for (Shape p : every_option<T>(operation)) {
            p.n = n;
            const Problem<T> problem(operation, turns.vary(p));
            GuardedVector<T> x(n, 1, 3, turns.pick({Guard::pageBehind, Guard::pageInFront, Guard::canaries}));
            x.set(problem.before);
            for (const VectorBuild& build : vector_builds()) {
                auto* const band = routine_for<T>(build.blas_strmv_band_kernel, build.blas_ctrmv_band_kernel);
                Operand<T> y = problem.before;
                const bool transposed = is_transposed(problem.p.trans), fromDiagonal = is_upper(p.uplo) != transposed;
                for (const auto& [first, end] : {std::pair{0, n / 4}, {n / 4, n - n / 3}, {n - n / 3, n}}) {
                    const int count = end - first, from = fromDiagonal ? first : 0;
                    const int length = fromDiagonal ? n - first : end;
                    if (count == 0)
                        continue;
                    const T& corner = transposed ? problem.a(from, first) : problem.a(first, from);
                    band(&problem.p.uplo, &problem.p.trans, &problem.p.diag, &count, &length, &corner, &problem.a.ld(),
                         x.data() + from, &y(problem.p.incx < 0 ? end - 1 : first, 0), &y.ld());
                }
                EXPECT_TRUE(problem.right(y)) << build << ' ' << problem.p;
            }
        }
}
TEST(Level2, TriangularProductsByBands) {
    check_product_by_bands<float>();
    check_product_by_bands<SingleComplex>();
}

// ---- Numbers that are told apart ------------------------------------------------------------------------------------

// A column is left alone where the element that it is multiplied with is exactly 0, and only there: the other vector
// is NaN all over. In a rank-two update both elements must be 0. alpha 0 leaves all columns alone, a NaN alpha none.
TEST(Level2, UpdatesSkipZeroElementsOnly) {
    const int unit = 1;
    const float little = 1e-30F, infinite = infinity;
    for (const VectorBuild& build : vector_builds()) {
        float a = 1; // an AXPY with the factor alpha*y, which vanishes
        build.blas_sger_kernel(&unit, &unit, &little, &infinite, &unit, &little, &unit, &a, &unit);
        EXPECT_EQ(a, 1) << build;
    }
    each_routine(true, []<class T>(const Routine<T>& routine) {
        const bool general = routine.operation.kind == Form::general;
        if (!routine.operation.updates())
            return;
        constexpr int period = 3; // of the zeros
        for (const int n : {1, 7, 40})
            for (const float alpha : {0.F, 1.F, nan})
                for (const char uplo : {'U', 'L'}) {
                    Problem<T> problem(routine.operation, {.uplo = uplo, .m = n, .n = n, .alpha = alpha});
                    const auto zeros = [](int i, int) { return scalar<T>(i % period ? nan : 0); };
                    problem.b.set(zeros);
                    general ? problem.a.fill(nan) : problem.a.set(zeros);
                    problem.before.set([](int, int) { return scalar<T>(1); });
                    for (const VectorBuild& build : vector_builds()) {
                        const auto c = problem.result([&](const Call<T>& v) { routine.kernel(build, v); });
                        const auto good = [&](int, int j, const T& x) {
                            return alpha == 0 || j % period == 0 ? x == scalar<T>(1) : has_nan(x);
                        };
                        EXPECT_EQ(c.count_bad(good), 0) << build << ' ' << routine.name << ' ' << problem.p;
                    }
                }
    });
}

// With op(A) = A what is 0 in x adds nothing and is not divided: the columns of whole blocks of zeros are not read, and
// a zero on the diagonal beside one makes no NaN.
TEST(Level2, TrianglesSkipZeros) {
    each_routine(true, []<class T>(const Routine<T>& routine) {
        if (!routine.operation.triangular())
            return;
        for (const int n : {2, 9, 70})
            for (const char uplo : {'U', 'L'})
                for (const int place : {0, n - 1})
                    for (const int inc : {1, -2}) {
                        Problem<T> problem(routine.operation, {.uplo = uplo, .n = n, .k = n - 1, .incx = inc});
                        const int block = n > 32 ? 32 : 4;
                        problem.a.set([&](int i, int j) {
                            return scalar<T>(std::abs(j - place) >= block ? nan : i == j && j == place ? 2 : 0);
                        });
                        problem.before.set([&](int i, int) { return scalar<T>(i == place ? 1 : 0); });
                        const T value = scalar<T>(routine.operation.what == What::solve ? 0.5F : 2);
                        const auto expect_skipped = [&](const auto& run, const char* where) {
                            const auto x = problem.result(run);
                            EXPECT_EQ(x.count_bad([&](int i, int, T xi) { return xi == (i == place ? value : T{}); }),
                                      0)
                                << where << ' ' << routine.name << ' ' << problem.p << " at " << place;
                        };
                        for (const VectorBuild& build : vector_builds())
                            expect_skipped([&](const Call<T>& v) { routine.kernel(build, v); }, build.name);
                        if (const int team = 3; routine.on_team)
                            expect_skipped([&](const Call<T>& v) { routine.on_team(&team, v); }, "team");
                    }
    });
}

// A column without rows has the dot product 0, and alpha times that is added.
TEST(Level2, EmptyColumnsOfABand) {
    const int m = 1, n = 3, unit = 1, none = 0;
    const float alpha = infinity, beta = 1, a[3] = {1, nan, nan}, x = 2;
    for (const VectorBuild& build : vector_builds()) {
        float y[3] = {1, 1, 1};
        build.blas_sgbmv_kernel("T", &m, &n, &none, &none, &alpha, a, &unit, &x, &unit, &beta, y, &unit);
        EXPECT_TRUE(y[0] == infinity && std::isnan(y[1]) && std::isnan(y[2])) << build;
    }
}

// A solve divides by the diagonal and nothing else: powers of two come out exactly, and quotients whose squares would
// overflow or vanish come out right. An infinite part of a divisor gives 0, two give NaN.
TEST(Level2, DiagonalOfAnySize) {
    const int n = 1, unit = 1;
    for (const VectorBuild& build : vector_builds()) {
        float a = 0x1p-149F, x = 0x1p-140F;
        build.blas_strsv_kernel("U", "N", "N", &n, &a, &n, &x, &unit);
        EXPECT_EQ(x, 512) << build;
        const auto quotient = [&](SingleComplex z, SingleComplex pivot) {
            build.blas_ctrsv_kernel("L", "T", "N", &n, &pivot, &n, &z, &unit);
            return z;
        };
        for (const auto& [size, exact] :
             {std::pair{0x1p-120F, SingleComplex{3, -2}}, {0x1p120F, {3, -2}}, {0x1.8p127F, {1, 0}}})
            for (const SingleComplex pivot : {SingleComplex{size, 0.5F * size}, {-0.5F * size, size}, {size, size}}) {
                const SingleComplex z = quotient(pivot * exact, pivot);
                EXPECT_TRUE(std::abs(z.re - exact.re) < 1e-6F && std::abs(z.im - exact.im) < 1e-6F)
                    << build << ' ' << pivot.re << ' ' << z.re;
            }
        for (const SingleComplex pivot : {SingleComplex{infinity, 1}, {1, -infinity}})
            EXPECT_TRUE((quotient({1, 2}, pivot) == SingleComplex{0, 0})) << build;
        EXPECT_TRUE(has_nan(quotient({1, 2}, {infinity, infinity}))) << build;
    }
}

} // namespace
} // namespace qrv::test
