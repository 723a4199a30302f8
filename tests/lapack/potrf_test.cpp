// Cholesky factorizations and what is done with the factor: residuals in double of all routes, info, non-finite
// elements, the other triangle.
#include <functional>
#include <gtest/gtest.h>
#include <random>

#include "lapack/calls/cholesky.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/elements.hpp"
#include "lapack/kernel/source/cholesky/potrf.hpp"
#include "lapack/lapack.hpp"
#include "support/cholesky.hpp"
#include "support/progress.hpp"

namespace qrv::test {
namespace {

template <class T>
using Route = std::function<int(Uplo, int n, Matrix<T>)>;

template <class T>
struct NamedRoute {
    std::string name;
    Route<T> factor;
};

template <class T>
std::vector<NamedRoute<T>> routes() {
    std::vector<NamedRoute<T>> all{
        {"potrf", [](Uplo uplo, int n, Matrix<T> a) { return lapack::potrf(uplo, n, a); }},
        {"potf2", [](Uplo uplo, int n, Matrix<T> a) { return lapack::potf2(uplo, n, a); }},
        {"serial", [](Uplo uplo, int n, Matrix<T> a) { return lapack::potrf_serial(uplo, n, a, {}).info; }}};
    for (const lapack::PotrfGrain grain : {lapack::PotrfGrain{8, 4, 64}, {16, 100, 8}, {5, 1, 1000}})
        all.push_back({"tiles of " + std::to_string(grain.tile), [=](Uplo uplo, int n, Matrix<T> a) {
                           return (grain.tile < n ? lapack::potrf_tiles(2, grain, uplo, n, a)
                                                  : lapack::potrf_serial(uplo, n, a, {}))
                               .info;
                       }});
    return all;
}

template <class T>
struct Potrf : testing::Test {};
TYPED_TEST_SUITE(Potrf, Elements);
TYPED_TEST(Potrf, ResidualsOfEveryRoute) {
    using T = TypeParam;
    for (const auto& route : routes<T>())
        for (const Uplo uplo : {Uplo::upper, Uplo::lower})
            for (const int n : {1, 2, 7, 33, 128, 150}) {
                const Operand<T> a = definite<T>(uplo, n);
                Operand<T> factor(a);
                ASSERT_EQ(route.factor(uplo, n, factor.view()), 0) << route.name << ' ' << n;
                ASSERT_TRUE(cholesky_residual(a, factor) < choleskyBound) << route.name << ' ' << letter(uplo) << n;
                for (int i = 0; i < n; ++i)
                    ASSERT_TRUE(std::imag(std::complex<double>(widen(factor(i, i)))) == 0) << route.name;
            }
}

// Around the blocks of the leaf and the vectors within; what it leaves where it fails.
TYPED_TEST(Potrf, ResidualsOfLeavesOfEverySize) {
    using T = TypeParam;
    for (const Uplo uplo : {Uplo::upper, Uplo::lower})
        for (int n = 1; n <= 70; ++n) {
            const Operand<T> a = definite<T>(uplo, n);
            Operand<T> factor(a);
            ASSERT_EQ(lapack::potf2(uplo, n, factor.view()), 0);
            ASSERT_TRUE(cholesky_residual(a, factor) < 1) << letter(uplo) << n;

            Operand<T> bad(a);
            const int k = (5 * n) % 7 * (n - 1) / 6;
            bad(k, k) = scalar<T>(-1);
            ASSERT_EQ(lapack::potf2(uplo, n, bad.view()), k + 1) << letter(uplo) << n;
            EXPECT_TRUE(lapack::real_part(bad(k, k)) <= -1) << letter(uplo) << n;
            for (int j = 0; j < k; ++j)
                for (int i = 0; i <= j; ++i) {
                    const T found = uplo == Uplo::upper ? bad(i, j) : bad(j, i);
                    const T whole = uplo == Uplo::upper ? factor(i, j) : factor(j, i);
                    ASSERT_TRUE(std::abs(widen(found) - widen(whole)) < 1e-5) << letter(uplo) << n << ' ' << i << j;
                }
        }
}

// The first column whose pivot is not positive decides, whatever comes later; NaN is not positive.
TYPED_TEST(Potrf, TellsTheFirstColumnThatIsNotDefinite) {
    using T = TypeParam;
    constexpr int n = 131;
    for (const auto& route : routes<T>())
        for (const Uplo uplo : {Uplo::upper, Uplo::lower})
            for (const int bad : {0, 7, 64, 99, n - 1})
                for (const float pivot : {-1.0F, 0.0F, nan, -infinity}) {
                    Operand<T> a = definite<T>(uplo, n);
                    a(bad, bad) = a(n - 1, n - 1) = scalar<T>(pivot);
                    ASSERT_EQ(route.factor(uplo, n, a.view()), bad + 1) << route.name << ' ' << letter(uplo) << pivot;
                }
}

TYPED_TEST(Potrf, SolutionsInversesAndEstimates) {
    using T = TypeParam;
    for (const Uplo uplo : {Uplo::upper, Uplo::lower})
        for (const int n : {1, 2, 30, 65, 140}) {
            const Operand<T> a = definite<T>(uplo, n);
            Operand<T> inverse(a);
            ASSERT_EQ(lapack::potrf(uplo, n, inverse.view()), 0);
            const Operand<T> factor(inverse);

            constexpr int nrhs = 3;
            Operand<T> b(n, nrhs, n + 2);
            std::mt19937 random(3);
            b.fill_random(random);
            Operand<T> x(b);
            lapack::potrs(uplo, n, nrhs, factor.view(), x.view());
            ASSERT_EQ(lapack::potri(uplo, n, inverse.view()), 0);

            const WideMatrix<T> wide(a);
            EXPECT_TRUE(solve_residual(wide, WideMatrix<T>(x), WideMatrix<T>(b)) < 1) << letter(uplo) << n;
            EXPECT_TRUE(solve_residual(wide, WideMatrix<T>(inverse), identity<T>(n)) < 1) << letter(uplo) << n;

            std::vector<T> work(static_cast<std::size_t>(3 * n));
            std::vector<typename lapack::EstimateWork<T>::Second> second(static_cast<std::size_t>(n));
            const float rcond = lapack::pocon<T>(uplo, n, factor.view(), static_cast<float>(norm(wide, 'O')),
                                                 lapack::EstimateWork<T>(work.data(), second.data()));
            const double told = reciprocal_condition(wide);
            EXPECT_TRUE(rcond >= told * 0.999 && rcond <= 3.01 * told) << letter(uplo) << n << ": " << rcond / told;
        }
}

// In a copy, in one tile and in several: columns a page apart. The other triangle and what lies below are nobody's.
TYPED_TEST(Potrf, ResidualsOfAliasedColumns) {
    using T = TypeParam;
    constexpr int ld = 4096 / sizeof(T);
    for (const int n : {170, 401}) {
        const Operand<T> a = definite<T>(Uplo::lower, n);
        Operand<T> whole(a);
        for (const int bad : {-1, n / 2}) {
            Operand<T> factor(Form{n, n, isComplex<T> ? Form::hermitian : Form::symmetric, 'L'}, {.extra = ld - n});
            factor.set([&](int i, int j) { return i < j ? T() : i == j && i == bad ? scalar<T>(-1) : a(i, j); });
            ASSERT_EQ(lapack::potrf(Uplo::lower, n, factor.view()), bad + 1) << n;
            if (bad < 0) {
                EXPECT_TRUE(cholesky_residual(a, factor) < choleskyBound) << n;
                whole.set([&](int i, int j) { return i < j ? T() : factor(i, j); });
            }
            for (int j = 0; j < bad; ++j)
                for (int i = j; i < bad; ++i)
                    ASSERT_TRUE(std::abs(widen(factor(i, j)) - widen(whole(i, j))) < 1e-5) << n << ' ' << i << ' ' << j;
        }
    }
}

// A stop leaves the rest of the matrix alone and info 0.
TEST(PotrfProgress, AStopEndsTheFactorization) {
    constexpr int n = 600;
    for (const int threads : {1, 4}) {
        const ProgressHook hook(1);
        const Operand<float> a = definite<float>(Uplo::lower, n);
        Operand<float> factor(a);
        const lapack::FactorResult result =
            threads == 1 ? lapack::potrf_serial(Uplo::lower, n, factor.view(), {})
                         : lapack::potrf_tiles(threads, {8, 4, 8}, Uplo::lower, n, factor.view());
        EXPECT_TRUE(result.stopped && result.info == 0);
        EXPECT_TRUE(same_bits(factor(n - 1, n - 1), a(n - 1, n - 1)));
    }
    const ProgressHook hook(2); // the first leaf of a team was told before there was one
    Operand<float> factor = definite<float>(Uplo::lower, n);
    EXPECT_TRUE(lapack::potrf_tiles(4, {8, 4, 8}, Uplo::lower, n, factor.view()).stopped);
    ASSERT_EQ(progress.calls, 2);
    EXPECT_LT(progress.steps[0], progress.steps[1]);
}

} // namespace
} // namespace qrv::test
