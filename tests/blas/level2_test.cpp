// Contract of the kernels of level 2, on every build.
#include <string_view>

#include "support/routines.hpp"
#include "support/shapes.hpp"

namespace qrv::test {
namespace {

// ---- Products, solves and updates ----------------------------------------------------------------------------------

// Around the sizes of vectors, passes and blocks.
constexpr int small[] = {0, 1, 2, 3, 5, 8, 11, 15, 16, 17, 31, 32, 33};
constexpr std::pair<int, int> large[] = {{64, 127},   {127, 64},  {128, 128}, {129, 300}, {300, 129},
                                         {256, 256},  {1024, 33}, {33, 1025}, {2051, 10}, {10, 2051},
                                         {8195, 257}, {4099, 3},  {3, 4099},  {513, 513}};

// Every option with every small size, and some of each with the large ones; squares, but of general matrices. Bands are
// of any width, up to all of the matrix and more.
template <class T>
void check_builds(const Routine<T>& routine, const Shape& p) {
    const Problem<T> problem(routine.operation, p);
    for (const VectorBuild& build : vector_builds())
        problem.check([&](const Call<T>& v) { routine.kernel(build, v); },
                      std::string(build.name) + ' ' + routine.name);
}

template <class T>
void check_sizes(const Routine<T>& routine, bool largeOnes, Turns& turns) {
    const Operation& o = routine.operation;
    const auto options = every_option<T>(o);
    const bool general = o.kind == Form::general;
    const auto check = [&](Shape p, int m, int n, bool isLarge) {
        const int least = std::min(m, n);
        const auto width = [&] {
            return least > 64 ? turns.pick({1, 8, 40})
                              : turns.pick({0, 1, 2, 3, 4, 5, 9, 17, 33, std::max(0, least - 1), least + 2});
        };
        p.m = m, p.n = n, p.k = o.banded ? width() : 0, p.ku = o.banded ? width() : 0;
        check_builds(routine, turns.vary(p, isLarge));
    };
    for (std::size_t draw = 0; !largeOnes && draw < (o.banded ? 1700 : 500); ++draw)
        check(options[draw / std::size(small) % options.size()], turns.pick(small), small[draw % std::size(small)],
              false);
    for (const auto& [m, n] : large)
        for (const Shape& p : options)
            if (largeOnes && (general || m <= 2051) && (m < 300 || turns.one_in(unsigned(options.size() + 1) / 2)))
                check(p, m, general ? n : m, m > 300 || n > 300);
}
TEST(Level2, EveryRoutineOnEveryBuild) {
    Turns turns;
    each_routine(true, [&](const auto& routine) { check_sizes(routine, false, turns); });
}
TEST(Level2, LargeOnesOfEveryRoutine) {
    Turns turns;
    each_routine(true, [&](const auto& routine) { check_sizes(routine, true, turns); });
}

// Above 20 MB lines of the next pass are asked for.
TEST(Level2, MatricesFromMemory) {
    Turns turns;
    each_routine(true, [&]<class T>(const Routine<T>& routine) {
        if (routine.operation.banded)
            return;
        const int n = isComplex<T> ? 1627 : 2301;
        for (Shape p : every_option<T>(routine.operation)) {
            p.m = p.n = n;
            if (turns.one_in(3))
                check_builds(routine, turns.vary(p, true));
        }
    });
}

// Callers compare results of the same matrix in other places: passes that begin on a vector of memory sum alike.
TEST(Level2, ProductsDoNotDependOnThePlaceOfTheMatrix) {
    each_routine(true, []<class T>(const Routine<T>& routine) {
        if (!std::string_view(routine.name).ends_with("gemv"))
            return;
        for (const char trans : {'N', 'T', 'C'})
            for (const VectorBuild& build : vector_builds()) {
                Shape p{.trans = trans, .m = 301, .n = 9, .alpha = 1.5F, .beta = 0.5F, .a = {3, 0}};
                const auto run = [&](const Call<T>& v) { routine.kernel(build, v); };
                const Operand<T> first = Problem<T>(routine.operation, p).result(run);
                constexpr int step = sizeof(T) / sizeof(float);
                for (p.a.offset = step; p.a.offset < 16 * step; p.a.offset += step)
                    EXPECT_TRUE(first.same_bits(Problem<T>(routine.operation, p).result(run))) << build << ' ' << p;
            }
    });
}

// Few rows, one column right behind the other.
TEST(Level2, ColumnsWithoutGaps) {
    each_routine(true, []<class T>(const Routine<T>& routine) {
        if (!std::string_view(routine.name).ends_with("gemv"))
            return;
        for (const int m : {2, 3, 4, 8})
            for (const int n : {8, 15, 32, 37, 63, 130})
                check_builds(
                    routine,
                    {.trans = 'T', .m = m, .n = n, .alpha = 1.5F, .beta = 0.5F, .a = {0, 0, Guard::pageBehind}});
    });
}

// ---- Parts for a team -----------------------------------------------------------------------------------------------

// The order of the triangle that is left to another part.
template <class T>
int rest_of(const Call<T>& v) {
    const int orders[] = {0, 1, v.n / 3, v.n - v.n / 3};
    return std::min(v.n, orders[static_cast<unsigned>(v.lda + v.ldc) % 4]);
}

// A band, or a strip of columns, and the rest.
template <What what>
void update_in_parts(const VectorBuild& build, const Call<float>& v) {
    const bool upper = is_upper(v.uplo), strip = what == What::update2 && v.lda == 1 && v.ldb == 1 && v.n % 2 == 1;
    const int rest = rest_of(v), width = v.n - rest, skipped = strip && !upper ? width : 0;
    // The first part of a vector that runs backwards is at its far end.
    const float* const x = v.a + skipped + (v.lda < 0 ? -v.lda * width : 0);
    const float* const y = v.b + skipped + (v.ldb < 0 ? -v.ldb * width : 0);
    float* const left = v.c + (std::ptrdiff_t{v.ldc} + 1) * skipped;
    float* const band = v.c + std::ptrdiff_t{upper ? v.ldc : 1} * rest;
    if (what == What::update) {
        build.blas_ssyr_kernel(&v.uplo, &rest, &v.alpha, x, &v.lda, left, &v.ldc);
        return build.blas_ssyr_band_kernel(&v.uplo, &width, &v.n, &v.alpha, v.a, &v.lda, band, &v.ldc);
    }
    build.blas_ssyr2_kernel(&v.uplo, &rest, &v.alpha, x, &v.lda, y, &v.ldb, left, &v.ldc);
    if (strip)
        build.blas_ssyr2_strip(upper ? "U" : "L", &v.n, &width, &v.alpha, v.a, &v.lda, v.b, &v.ldb, v.c, &v.ldc);
    else
        build.blas_ssyr2_band_kernel(&v.uplo, &width, &v.n, &v.alpha, v.a, &v.lda, v.b, &v.ldb, band, &v.ldc);
}

// Columns of a symmetric matrix with their mirror images, and the rest.
void product_in_strips(const VectorBuild& build, const Call<float>& v) {
    const bool upper = is_upper(v.uplo);
    const int rest = rest_of(v), columns = v.n - rest, first = upper ? 0 : columns;
    if (v.ldb != 1 || v.ldc != 1 || v.alpha == 0) // for which there are none
        return build.blas_ssymv_kernel(QRV_SYMV_OF(v));
    build.blas_ssymv_strip(upper ? "U" : "L", &v.n, &columns, &v.alpha, v.a, &v.lda, v.b, &v.ldb, &v.beta, v.c, &v.ldc);
    const float one = 1, *const corner = v.a + (std::ptrdiff_t{v.lda} + 1) * first;
    build.blas_ssymv_kernel(&v.uplo, &rest, &v.alpha, corner, &v.lda, v.b + first, &v.ldb, &one, v.c + first, &v.ldc);
}

// Some elements of a triangular product, from a copy of x, at either end of the triangle and inside.
template <class T>
void triangular_product_in_bands(const VectorBuild& build, const Call<T>& v) {
    auto* const band = routine_for<T>(build.blas_strmv_band_kernel, build.blas_ctrmv_band_kernel);
    const int n = v.n, inc = v.ldc, farEnd = inc < 0 ? (1 - n) * inc : 0;
    const bool transposed = is_transposed(v.trans), fromDiagonal = is_upper(v.uplo) != transposed;
    GuardedVector<T> x(n, 1, 0, v.lda % 2 ? Guard::pageBehind : Guard::pageInFront);
    x.set([&](int i, int) { return v.c[std::ptrdiff_t{i} * inc + farEnd]; });
    for (const auto& [first, end] : {std::pair{0, n / 4}, {n / 4, n - n / 3}, {n - n / 3, n}}) {
        const int count = end - first, from = fromDiagonal ? first : 0, length = fromDiagonal ? n - first : end;
        const std::ptrdiff_t row = transposed ? from : first, column = transposed ? first : from;
        if (count > 0)
            band(&v.uplo, &v.trans, &v.diag, &count, &length, v.a + row + v.lda * column, &v.lda, x.data() + from,
                 v.c + std::ptrdiff_t{inc < 0 ? end - 1 : first} * inc + farEnd, &v.ldc);
    }
}

TEST(Level2, InParts) {
    using enum What;
    Turns turns;
    const auto check = [&]<class T>(const Routine<T>& routine) {
        check_sizes(routine, false, turns);
        check_sizes(routine, true, turns);
    };
    check(Routine<float>{"ssyr", {update, Form::symmetric, true}, update_in_parts<update>});
    check(Routine<float>{"ssyr2", {update2, Form::symmetric, true}, update_in_parts<update2>});
    check(Routine<float>{"ssymv", {product, Form::symmetric, true}, product_in_strips});
    for_both_elements([&]<class T>() {
        check(Routine<T>{"trmv", {inPlace, Form::triangular, true}, triangular_product_in_bands<T>});
    });
}

// ---- Numbers that are told apart ------------------------------------------------------------------------------------

// A column is left alone where the element that it is multiplied with is exactly 0, and only there: the other vector
// is NaN all over. In a rank-two update both elements must be 0. alpha 0 leaves all columns alone, a NaN alpha none.
TEST(Level2, UpdatesSkipZeroElementsOnly) {
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
                        T one = scalar<T>(1);
                        if constexpr (isComplex<T>)
                            one = {0, 1}; // no zero, though its real part is
                        problem.before.set([&](int i, int) { return i == place ? one : T{}; });
                        const T value = scalar<T>(routine.operation.what == What::solve ? 0.5F : 2) * one;
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

// An infinite unknown reaches the rows of its column of op(A), and no other.
TEST(Level2, InfinityStaysInItsColumn) {
    each_routine(true, []<class T>(const Routine<T>& routine) {
        if (!routine.operation.triangular())
            return;
        for (const int n : {4, 11, 70})
            for (const char uplo : {'U', 'L'})
                for (const char trans : {'N', 'T'})
                    for (const int place : {0, 1, 2, n / 2, n - 1}) {
                        Problem<T> problem(routine.operation, {.uplo = uplo, .trans = trans, .n = n, .k = n - 1});
                        problem.a.set([](int, int) { return scalar<T>(1); });
                        problem.before.set([&](int i, int) { return scalar<T>(i == place ? infinity : 0); });
                        const bool above = (uplo == 'U') == (trans == 'N');
                        for (const VectorBuild& build : vector_builds()) {
                            const auto x = problem.result([&](const Call<T>& v) { routine.kernel(build, v); });
                            EXPECT_EQ(x.count_bad([&](int i, int, T xi) {
                                return (above ? i <= place : i >= place) ? !is_finite(xi) : xi == T{};
                            }),
                                      0)
                                << build.name << ' ' << routine.name << ' ' << problem.p << " at " << place;
                        }
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
            const int four = 4;
            SingleComplex a4[16] = {}, x4[4] = {z, z, z, z};
            for (int i = 0; i < 16; i += 5)
                a4[i] = pivot;
            build.blas_ctrsv_kernel("L", "N", "N", &four, a4, &four, x4, &unit);
            build.blas_ctrsv_kernel("L", "T", "N", &n, &pivot, &n, &z, &unit);
            for (const SingleComplex& together : x4)
                EXPECT_TRUE(has_nan(z) ? has_nan(together)
                                       : std::abs(together.re - z.re) + std::abs(together.im - z.im) < 1e-6F)
                    << build << ' ' << pivot.re;
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
