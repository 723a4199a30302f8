// Cholesky factorizations and what is done with the factor: residuals in double of all routes, info, non-finite
// elements, the other triangle.
#include <functional>
#include <gtest/gtest.h>
#include <random>

#include "lapack/calls/cholesky.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/kernel/source/cholesky/potrf.hpp"
#include "lapack/lapack.hpp"
#include "service/reporter.hpp"
#include "support/operand.hpp"

namespace qrv::test {
namespace {

constexpr double epsilon = 0x1p-24;

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
    for (const int threads : {1, 2, 3, 4, 8})
        for (const lapack::PotrfGrain grain : {lapack::PotrfGrain{8, 4, 64}, {16, 100, 8}, {5, 1, 1000}})
            all.push_back({"team " + std::to_string(threads) + ", tiles of " + std::to_string(grain.tile),
                           [=](Uplo uplo, int n, Matrix<T> a) {
                               return (grain.tile < n ? lapack::potrf_tiles(threads, grain, uplo, n, a)
                                                      : lapack::potrf_serial(uplo, n, a, {}))
                                   .info;
                           }});
    return all;
}

template <class T>
Form symmetric(Uplo uplo, int n) {
    return {n, n, isComplex<T> ? Form::hermitian : Form::symmetric, letter(uplo)};
}

// Positive definite: the diagonal outweighs its row.
template <class T>
Operand<T> definite(Uplo uplo, int n, unsigned seed = 1) {
    Operand<T> a(symmetric<T>(uplo, n), {.extra = 3, .offset = 1});
    std::mt19937 random(seed + static_cast<unsigned>(n));
    a.fill_random(random);
    for (int i = 0; i < n; ++i) {
        T diagonal = scalar<T>(static_cast<float>(n) + 1 + static_cast<float>(random() % 16) / 8);
        if constexpr (isComplex<T>)
            diagonal.im = nan; // must not count
        a(i, i) = diagonal;
    }
    return a;
}
template <class T>
Matrix<T> view(Operand<T>& a) {
    return {a.data(), a.ld()};
}
template <class T>
Matrix<const T> view(const Operand<T>& a) {
    return {a.data(), a.ld()};
}

// |A - U^H U| or |A - L L^H| over n |A| eps, in the Frobenius norm.
template <class T>
double residual(const Operand<T>& a, const Operand<T>& factor) {
    const int n = a.rows();
    const bool upper = is_upper(a.form().uplo);
    double error = 0, size = 0;
    for (int j = 0; j < n; ++j)
        for (int i = 0; i <= j; ++i) {
            Wide<T> sum = a.entry(i, j);
            size += std::norm(sum);
            for (int k = 0; k <= i; ++k)
                sum -= upper ? conjugate(widen(factor(k, i))) * widen(factor(k, j))
                             : widen(factor(i, k)) * conjugate(widen(factor(j, k)));
            error += std::norm(sum);
        }
    return std::sqrt(error / size) / (n * epsilon);
}

template <class T>
struct Potrf : testing::Test {};
using Elements = testing::Types<float, SingleComplex>;
TYPED_TEST_SUITE(Potrf, Elements);
template <class T>
struct PotrfRaces : testing::Test {};
TYPED_TEST_SUITE(PotrfRaces, Elements);

TYPED_TEST(Potrf, ResidualsOfEveryRoute) {
    using T = TypeParam;
    for (const auto& route : routes<T>())
        for (const Uplo uplo : {Uplo::upper, Uplo::lower})
            for (const int n : {1, 2, 7, 33, 128, 150}) {
                const Operand<T> a = definite<T>(uplo, n);
                Operand<T> factor(a);
                ASSERT_EQ(route.factor(uplo, n, view(factor)), 0) << route.name << ' ' << n;
                ASSERT_TRUE(residual(a, factor) < 1) << route.name << ' ' << letter(uplo) << n;
                ASSERT_TRUE(factor.guards_intact()) << route.name << ' ' << letter(uplo) << n;
                for (int i = 0; i < n; ++i)
                    ASSERT_TRUE(std::imag(std::complex<double>(widen(factor(i, i)))) == 0) << route.name;
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
                    ASSERT_EQ(route.factor(uplo, n, view(a)), bad + 1) << route.name << ' ' << letter(uplo) << pivot;
                }
}

TYPED_TEST(Potrf, EndsWithNanAndInfinity) {
    using T = TypeParam;
    constexpr int n = 131, i = 20, j = 90;
    for (const auto& route : routes<T>())
        for (const Uplo uplo : {Uplo::upper, Uplo::lower})
            for (const float x : {nan, infinity}) {
                Operand<T> a = definite<T>(uplo, n);
                (uplo == Uplo::upper ? a(i, j) : a(j, i)) = scalar<T>(x);
                EXPECT_EQ(route.factor(uplo, n, view(a)), j + 1) << route.name << ' ' << letter(uplo) << x;
            }
}

TYPED_TEST(Potrf, SolutionsInversesAndEstimates) {
    using T = TypeParam;
    for (const Uplo uplo : {Uplo::upper, Uplo::lower})
        for (const int n : {1, 2, 30, 65, 140}) {
            const Operand<T> a = definite<T>(uplo, n);
            Operand<T> inverse(a);
            ASSERT_EQ(lapack::potrf(uplo, n, view(inverse)), 0);
            const Operand<T> factor(inverse);

            constexpr int nrhs = 3;
            Operand<T> b(n, nrhs, n + 2);
            std::mt19937 random(3);
            b.fill_random(random);
            Operand<T> x(b);
            lapack::potrs(uplo, n, nrhs, view(factor), view(x));
            ASSERT_EQ(lapack::potri(uplo, n, view(inverse)), 0);
            ASSERT_TRUE(x.guards_intact() && inverse.guards_intact());

            double solveError = 0, inverseError = 0, norm = 0, inverseNorm = 0;
            for (int j = 0; j < n; ++j) {
                double sum = 0, inverseSum = 0;
                for (int i = 0; i < n; ++i) {
                    sum += std::abs(a.entry(i, j)), inverseSum += std::abs(inverse.entry(i, j));
                    Wide<T> product = i == j ? -1 : 0;
                    for (int k = 0; k < n; ++k)
                        product += a.entry(i, k) * inverse.entry(k, j);
                    inverseError = std::max(inverseError, std::abs(product));
                }
                norm = std::max(norm, sum), inverseNorm = std::max(inverseNorm, inverseSum);
            }
            for (int j = 0; j < nrhs; ++j)
                for (int i = 0; i < n; ++i) {
                    Wide<T> rest = -widen(b(i, j));
                    for (int k = 0; k < n; ++k)
                        rest += a.entry(i, k) * widen(x(k, j));
                    solveError = std::max(solveError, std::abs(rest));
                }
            EXPECT_TRUE(solveError < 30 * epsilon) << letter(uplo) << n;
            EXPECT_TRUE(inverseError < 30 * epsilon) << letter(uplo) << n;

            std::vector<T> work(static_cast<std::size_t>(3 * n));
            std::vector<typename lapack::EstimateWork<T>::Second> second(static_cast<std::size_t>(n));
            const float rcond = lapack::pocon<T>(uplo, n, view(factor), static_cast<float>(norm),
                                                 lapack::EstimateWork<T>(work.data(), second.data()));
            const double told = 1 / norm / inverseNorm;
            EXPECT_TRUE(rcond >= told * 0.999 && rcond <= 3.01 * told) << letter(uplo) << n << ": " << rcond / told;
        }
}

TYPED_TEST(PotrfRaces, Teams) {
    using T = TypeParam;
    for (const int n : {40, 100}) {
        const Operand<T> a = definite<T>(Uplo::lower, n);
        Operand<T> factor(a);
        ASSERT_EQ(lapack::potrf_tiles(4, {8, 4, 8}, Uplo::lower, n, view(factor)).info, 0);
        EXPECT_TRUE(residual(a, factor) < 1);
    }
}

// A stop leaves the rest of the matrix alone and info 0.
int stop_at_once(const int*, const int*, const char*, int) {
    return 1;
}
TEST(PotrfProgress, AStopEndsTheFactorization) {
    constexpr int n = 150;
    qrv_serv_set_progress(stop_at_once);
    for (const int threads : {1, 4}) {
        const Operand<float> a = definite<float>(Uplo::lower, n);
        Operand<float> factor(a);
        const lapack::FactorResult result = threads == 1
                                                ? lapack::potrf_serial(Uplo::lower, n, view(factor), {})
                                                : lapack::potrf_tiles(threads, {8, 4, 8}, Uplo::lower, n, view(factor));
        EXPECT_TRUE(result.stopped && result.info == 0);
        EXPECT_TRUE(same_bits(factor(n - 1, n - 1), a(n - 1, n - 1)));
    }
    qrv_serv_set_progress(nullptr);
}

} // namespace
} // namespace qrv::test
