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
#include "support/combine.hpp"
#include "support/progress.hpp"

namespace qrv::test {
namespace {

template <class T>
struct Route {
    std::string name;
    std::function<int(Uplo, int n, Matrix<T>)> factor;
};

template <class T>
std::vector<Route<T>> routes() {
    std::vector<Route<T>> all{
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

constexpr Uplo triangles[] = {Uplo::upper, Uplo::lower};

TEST_OF_ELEMENTS(Potrf, ResidualsOfEveryRoute) {
    combine({1, 2, 7, 33, 128, 150}, routes<T>(), triangles).each([](int n, const Route<T>& route, Uplo uplo) {
        const Operand<T> a = definite<T>(uplo, n);
        Operand<T> factor(a);
        ASSERT_EQ(route.factor(uplo, n, factor.view()), 0);
        EXPECT_LT(cholesky_residual(a, factor), choleskyBound);
        for (int i = 0; i < n; ++i)
            EXPECT_EQ(std::imag(std::complex<double>(widen(factor(i, i)))), 0);
    });
}

// The factors of the matrices before row and column k, which one of them fails at.
template <class T>
void expect_same_before(int k, const Operand<T>& whole, const Operand<T>& bad) {
    EXPECT_EQ(bad.count_bad([&](int i, int j, const T& x) {
        return std::max(i, j) >= k || std::abs(widen(x) - widen(whole(i, j))) < 1e-5;
    }),
              0);
}

// Around the blocks of the leaf and the vectors within; what it leaves where it fails.
TEST_OF_ELEMENTS(Potrf, ResidualsOfLeavesOfEverySize) {
    combine(up_to(1, 70), triangles).each([](int n, Uplo uplo) {
        const Operand<T> a = definite<T>(uplo, n);
        Operand<T> factor(a), bad(a);
        ASSERT_EQ(lapack::potf2(uplo, n, factor.view()), 0);
        EXPECT_LT(cholesky_residual(a, factor), 1);

        const int k = (5 * n) % 7 * (n - 1) / 6;
        bad(k, k) = scalar<T>(-1);
        ASSERT_EQ(lapack::potf2(uplo, n, bad.view()), k + 1);
        EXPECT_LE(lapack::real_part(bad(k, k)), -1);
        expect_same_before(k, factor, bad);
    });
}

// The first column whose pivot is not positive decides, whatever comes later; NaN is not positive.
TEST_OF_ELEMENTS(Potrf, TellsTheFirstColumnThatIsNotDefinite) {
    constexpr int n = 131;
    combine({0, 7, 64, 99, n - 1}, {-1.0F, 0.0F, nan, -infinity}, routes<T>(), triangles)
        .each([](int bad, float pivot, const Route<T>& route, Uplo uplo) {
            Operand<T> a = definite<T>(uplo, n);
            a(bad, bad) = a(n - 1, n - 1) = scalar<T>(pivot);
            EXPECT_EQ(route.factor(uplo, n, a.view()), bad + 1);
        });
}

TEST_OF_ELEMENTS(Potrf, SolutionsInversesAndEstimates) {
    combine({1, 2, 30, 65, 140}, triangles).each([](int n, Uplo uplo) {
        const int nrhs = 3;
        const Operand<T> a = definite<T>(uplo, n), b = random_matrix<T>(n, nrhs, 3);
        Operand<T> inverse(a), x(b);
        ASSERT_EQ(lapack::potrf(uplo, n, inverse.view()), 0);
        const Operand<T> factor(inverse);
        lapack::potrs(uplo, n, nrhs, factor.view(), x.view());
        ASSERT_EQ(lapack::potri(uplo, n, inverse.view()), 0);
        const WideMatrix<T> wide(a);
        EXPECT_LT(solve_residual(wide, WideMatrix<T>(x), WideMatrix<T>(b)), 1);
        EXPECT_LT(solve_residual(wide, WideMatrix<T>(inverse), identity<T>(n)), 1);

        std::vector<T> work(static_cast<std::size_t>(3 * n));
        std::vector<typename lapack::EstimateWork<T>::Second> second(static_cast<std::size_t>(n));
        const float rcond = lapack::pocon<T>(uplo, n, factor.view(), static_cast<float>(norm(wide, 'O')),
                                             lapack::EstimateWork<T>(work.data(), second.data()));
        const double told = reciprocal_condition(wide);
        EXPECT_TRUE(rcond >= told * 0.999 && rcond <= 3.01 * told) << rcond / told;
    });
}

// In a copy, in one tile and in several, and on a team: columns a page apart. The other triangle and what lies below
// are nobody's.
TEST_OF_ELEMENTS(Potrf, ResidualsOfAliasedColumns) {
    constexpr int ld = 4096 / sizeof(T);
    combine({170, 401}, {1, 2}).each([](int n, int threads) {
        const Operand<T> a = definite<T>(Uplo::lower, n);
        Operand<T> whole(a);
        for (const int bad : {-1, n / 2}) {
            Operand<T> factor(Form{n, n, isComplex<T> ? Form::hermitian : Form::symmetric, 'L'}, {.extra = ld - n});
            factor.set([&](int i, int j) { return i < j ? T() : i == j && i == bad ? scalar<T>(-1) : a(i, j); });
            const int info = threads == 1
                                 ? lapack::potrf(Uplo::lower, n, factor.view())
                                 : lapack::potrf_tiles(threads, {24, 1, 24}, Uplo::lower, n, factor.view()).info;
            ASSERT_EQ(info, bad + 1);
            if (bad < 0) {
                EXPECT_LT(cholesky_residual(a, factor), choleskyBound);
                whole.set(factor);
            }
            expect_same_before(bad, whole, factor);
        }
    });
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
