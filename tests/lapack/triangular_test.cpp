// Inverses and solves with triangular matrices, and the estimates and scaled solves behind their condition numbers.
#include <algorithm>
#include <gtest/gtest.h>

#include "qrv/native.h"
#include "support/triangular_matrix.hpp"

namespace qrv::test {
namespace {

template <class T>
struct Triangular : testing::Test {};
using TriangularElements = testing::Types<float, SingleComplex>;
TYPED_TEST_SUITE(Triangular, TriangularElements);

template <class T>
std::vector<T> random_vector(int n, float size = 1) {
    std::mt19937 random(11);
    std::vector<T> x(static_cast<std::size_t>(n));
    for (T& element : x)
        element = scalar<T>(size) * any_size_one<T>(random);
    return x;
}

template <class T>
bool same(const T* x, const T* y, int n) {
    return std::equal(x, x + n, y, [](T a, T b) { return a == b; });
}
template <class T>
bool same(const std::vector<T>& x, const std::vector<T>& y) {
    return same(x.data(), y.data(), static_cast<int>(x.size()));
}

// ---- Inverses -----------------------------------------------------------------------------------------------------

// Largest |A X - I| over the bound of a triangular inverse: u |A| |X| times the length of the sums.
template <class T>
double inverse_error(const TriangularMatrix<T>& t, const TriangularMatrix<T>& x) {
    double worst = 0;
    const int n = t.n();
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            Wide<T> sum = i == j ? -1 : 0;
            double size = i == j ? 1 : 0;
            for (int k = std::min(i, j); k <= std::max(i, j); ++k) {
                const Wide<T> term = t.entry('N', i, k) * x.entry('N', k, j);
                sum += term;
                size += std::abs(term);
            }
            if (size > 0)
                worst = std::max(worst, std::abs(sum) / (unitRoundoff * (isComplex<T> ? 4 : 1) * (n + 4) * size));
        }
    return worst;
}

TYPED_TEST(Triangular, Inverse) {
    using T = TypeParam;
    for (const auto routine : {kernel_for<T>(STRTRI, CTRTRI), kernel_for<T>(STRTI2, CTRTI2)})
        for (const int n : {1, 2, 5, 63, 64, 65, 128, 150})
            each_triangle_shape([&](char uplo, char diag) {
                const TriangularMatrix<T> t(uplo, diag, n);
                TriangularMatrix<T> x = t;
                const int ld = x.a.ld();
                int info = -1;
                routine(&uplo, &diag, &n, x.a.data(), &ld, &info);
                EXPECT_EQ(info, 0);
                const double error = inverse_error(t, x);
                EXPECT_TRUE(error <= 1) << error << ' ' << t;
                EXPECT_TRUE(t.rest_untouched(x.a)) << t;
            });
}

TYPED_TEST(Triangular, ZeroOnTheDiagonal) {
    using T = TypeParam;
    const int n = 70, nrhs = 3;
    for (const char uplo : {'u', 'l'}) {
        const TriangularMatrix<T> t(static_cast<char>(uplo - 32), 'N', n, TriangleKind::singular);
        TriangularMatrix<T> x = t;
        const int ld = x.a.ld();
        int info = 0;
        kernel_for<T>(STRTRI, CTRTRI)(&uplo, "n", &n, x.a.data(), &ld, &info);
        EXPECT_EQ(info, n / 2 + 1);
        EXPECT_EQ(x.a.count_bad([&](int i, int j, T e) { return has_nan(e) || e == t.a(i, j); }), 0);

        const std::vector<T> b = random_vector<T>(n * nrhs);
        std::vector<T> solution = b;
        kernel_for<T>(STRTRS, CTRTRS)(&uplo, "N", "N", &n, &nrhs, x.a.data(), &ld, solution.data(), &n, &info);
        EXPECT_EQ(info, n / 2 + 1);
        EXPECT_TRUE(same(solution, b));
        kernel_for<T>(STRTRS, CTRTRS)(&uplo, "N", "U", &n, &nrhs, x.a.data(), &ld, solution.data(), &n, &info);
        EXPECT_EQ(info, 0) << "a unit diagonal is not looked at";
        EXPECT_FALSE(same(solution, b));
    }
}

TYPED_TEST(Triangular, Solutions) {
    using T = TypeParam;
    for (const auto& [n, nrhs] : {std::pair{0, 2}, {2, 0}, {1, 1}, {33, 5}, {130, 9}})
        for (const char trans : {'N', 'T', 'C'})
            each_triangle_shape([&, order = n, columns = nrhs](char uplo, char diag) {
                const TriangularMatrix<T> t(uplo, diag, order);
                const int lda = t.a.ld(), ldb = order + 2;
                const std::vector<T> all = random_vector<T>(ldb * columns);
                std::vector<T> x = all;
                int info = -1;
                kernel_for<T>(STRTRS, CTRTRS)(&uplo, &trans, &diag, &order, &columns, t.a.data(), &lda, x.data(), &ldb,
                                              &info);
                EXPECT_EQ(info, 0);
                for (int j = 0; j < columns; ++j) {
                    const T *const rhs = all.data() + ldb * j, *const solution = x.data() + ldb * j;
                    EXPECT_TRUE(solves(t, trans, solution, 1, std::vector<T>(rhs, rhs + order)))
                        << trans << ' ' << t << " column " << j;
                    EXPECT_TRUE(same(rhs + order, solution + order, ldb - order)) << "written below";
                }
            });
}

// ---- Scaled solves ------------------------------------------------------------------------------------------------

template <class T>
double norm1(const std::vector<T>& x) {
    double sum = 0;
    for (const T element : x)
        sum += std::abs(widen(element));
    return sum;
}

template <class T>
bool all_finite(const std::vector<T>& x) {
    return std::all_of(x.begin(), x.end(), [](T element) { return is_finite(element); });
}

TYPED_TEST(Triangular, ScaledSolutions) {
    using T = TypeParam;
    for (const TriangleKind kind : {TriangleKind::tame, TriangleKind::growing, TriangleKind::tinyDiagonal,
                                    TriangleKind::singular, TriangleKind::huge})
        for (const int n : {1, 2, 30, 90})
            for (const float size : {1.0F, 0x1p110F, 0x1p-120F})
                for (const char trans : {'N', 'T', 'C'})
                    each_triangle_shape([&](char uplo, char diag) {
                        if ((kind == TriangleKind::huge && diag == 'U') ||
                            (kind == TriangleKind::tinyDiagonal && size > 1 && n < 50))
                            return; // no float would be small enough for the scale
                        const TriangularMatrix<T> t(uplo, diag, n, kind);
                        const std::vector<T> b = random_vector<T>(n, size);
                        std::vector<float> cnorm(static_cast<std::size_t>(n), nan);
                        const int lda = t.a.ld();
                        for (const char normin : {'N', 'Y'}) {
                            std::vector<T> x = b;
                            float scale = -1;
                            int info = -1;
                            kernel_for<T>(SLATRS, CLATRS)(&uplo, &trans, &diag, &normin, &n, t.a.data(), &lda, x.data(),
                                                          &scale, cnorm.data(), &info);
                            SCOPED_TRACE(testing::Message() << t << ' ' << trans << normin << " times " << size);
                            EXPECT_EQ(info, 0);
                            EXPECT_TRUE(scale >= 0 && (scale <= 1 || kind == TriangleKind::huge)) << scale;
                            EXPECT_TRUE(all_finite(x));
                            EXPECT_TRUE(solves(t, trans, x.data(), scale, b));
                            EXPECT_TRUE(scale != 0 || norm1(x) > 0) << "a null vector";
                            EXPECT_EQ(scale == 0, kind == TriangleKind::singular && diag == 'N') << scale;
                            EXPECT_TRUE(scale < 1 || kind != TriangleKind::growing || n * size < 1e33) << "overflow";
                            EXPECT_TRUE(scale == 1 || kind != TriangleKind::tame || size > 1) << scale;
                        }
                    });
}

TYPED_TEST(Triangular, ScaledSolvesEndOnNanAndInfinity) {
    using T = TypeParam;
    const int n = 9;
    for (const float bad : {nan, infinity, -infinity})
        for (const char trans : {'N', 'T', 'C'})
            for (int place = 0; place <= n; ++place) {
                TriangularMatrix<T> t('U', 'N', n);
                std::vector<T> x = random_vector<T>(n);
                (place < n ? t.a(place / 2, place) : x[4]) = all_parts<T>(bad);
                std::vector<float> cnorm(n);
                const int lda = t.a.ld();
                float scale = -1, rcond = -1;
                int info = -1;
                kernel_for<T>(SLATRS, CLATRS)("U", &trans, "N", "N", &n, t.a.data(), &lda, x.data(), &scale,
                                              cnorm.data(), &info);
                EXPECT_EQ(info, 0);
                std::vector<T> work(3 * n);
                std::vector<int> iwork(n);
                if constexpr (isComplex<T>)
                    CTRCON("1", "U", "N", &n, t.a.data(), &lda, &rcond, work.data(), cnorm.data(), &info);
                else
                    STRCON("1", "U", "N", &n, t.a.data(), &lda, &rcond, work.data(), iwork.data(), &info);
                EXPECT_EQ(info, 0);
                EXPECT_FALSE(rcond < 0) << "set";
            }
}

TYPED_TEST(Triangular, ScalingByReciprocals) {
    using T = TypeParam;
    struct Row {
        float divisor, x, quotient;
    };
    for (const Row& row : {Row{4, 3, 0.75F},
                           {0x1p127F, 0x1p100F, 0x1p-27F},
                           {-0x1p127F, 0x1p-20F, -0x1p-147F},
                           {0x1p-149F, 0x1p-140F, 0x1p9F},
                           {0x1p-149F, 0x1p-22F, 0x1p127F},
                           {0x1p-140F, 1, infinity},
                           {0, 1, infinity},
                           {infinity, 3, 0}}) {
        std::vector<T> x{scalar<T>(row.x), scalar<T>(7), scalar<T>(row.x)};
        const int n = 2, inc = 2;
        kernel_for<T>(SRSCL, CSRSCL)(&n, &row.divisor, x.data(), &inc);
        if constexpr (isComplex<T>)
            EXPECT_EQ(x[0].re, row.quotient) << row.divisor;
        else
            EXPECT_EQ(x[0], row.quotient) << row.divisor;
        EXPECT_TRUE(std::isinf(row.quotient) || x[0] == x[2]);
        EXPECT_TRUE(x[1] == scalar<T>(7));
    }
    T x = scalar<T>(1);
    const int one = 1;
    kernel_for<T>(SRSCL, CSRSCL)(&one, &nan, &x, &one);
    EXPECT_TRUE(has_nan(x));
}

// ---- Estimates ----------------------------------------------------------------------------------------------------

// The estimate of a matrix, its vector v, and what was asked for.
template <class T>
struct Estimated {
    float estimate = 0;
    std::vector<T> v;
    std::vector<std::vector<T>> factors, products; // w and A w of each product with A itself
    int requests = 0;

    explicit Estimated(const BasicGuardedMatrix<T>& a) : v(static_cast<std::size_t>(a.rows())) {
        const int n = a.rows();
        std::vector<T> x(v.size());
        std::vector<int> isgn(v.size());
        int kase = 0, isave[3] = {};
        do {
            if constexpr (isComplex<T>)
                CLACN2(&n, v.data(), x.data(), &estimate, &kase, isave);
            else
                SLACN2(&n, v.data(), x.data(), isgn.data(), &estimate, &kase, isave);
            if (kase == 0)
                break;
            const std::vector<T> before = x;
            for (int i = 0; i < n; ++i) {
                Wide<T> sum = 0;
                for (int j = 0; j < n; ++j)
                    sum += (kase == 1 ? widen(a(i, j)) : conjugate(widen(a(j, i)))) *
                           widen(before[static_cast<std::size_t>(j)]);
                if constexpr (isComplex<T>)
                    x[static_cast<std::size_t>(i)] = {static_cast<float>(sum.real()), static_cast<float>(sum.imag())};
                else
                    x[static_cast<std::size_t>(i)] = static_cast<float>(sum);
            }
            if (kase == 1) {
                factors.push_back(before);
                products.push_back(x);
            }
        } while (++requests < 20);
    }
};

TYPED_TEST(Triangular, EstimateOfTheOneNorm) {
    using T = TypeParam;
    double worst = 1;
    for (const int n : {1, 2, 3, 10, 40})
        for (unsigned seed = 0; seed < 12; ++seed) {
            std::mt19937 random(seed);
            BasicGuardedMatrix<T> a(n, n, n);
            a.fill_random(random);
            double norm = 0;
            for (int j = 0; j < n; ++j)
                norm = std::max(norm, norm1(std::vector<T>(&a(0, j), &a(0, j) + n)));
            const Estimated<T> e(a);
            EXPECT_LE(e.requests, 11);
            EXPECT_LE(e.estimate, norm * 1.00001);
            worst = std::min(worst, e.estimate / norm);
            bool explained = false; // by the vector that the routine names
            for (std::size_t k = 0; k < e.products.size(); ++k)
                explained = explained || (same(e.products[k], e.v) && std::abs(norm1(e.v) / norm1(e.factors[k]) -
                                                                               double{e.estimate}) <= 1e-5 * norm);
            EXPECT_TRUE(explained) << n << ' ' << seed;
            EXPECT_TRUE(n > 1 || e.estimate >= norm * 0.999999);
        }
    EXPECT_GE(worst, 0.3) << "of a lower bound that is nearly always within a factor of 3";
}

TYPED_TEST(Triangular, EstimatesEndOnNan) {
    BasicGuardedMatrix<TypeParam> a(6, 6, 6);
    for (const float bad : {nan, infinity}) {
        a.fill(bad);
        EXPECT_LE(Estimated<TypeParam>(a).requests, 11);
    }
}

// ---- Condition numbers --------------------------------------------------------------------------------------------

// norm(A) norm(inv(A)) in double, by solving for the columns of the inverse.
template <class T>
double condition(const TriangularMatrix<T>& t, char norm) {
    const int n = t.n();
    std::vector<double> sums(static_cast<std::size_t>(2 * n));
    const auto add = [&](int which, int i, int j, double x) {
        sums[static_cast<std::size_t>(which * n + (norm == 'I' ? i : j))] += x;
    };
    for (int j = 0; j < n; ++j) {
        std::vector<Wide<T>> x(static_cast<std::size_t>(n));
        const auto at = [&](int i) -> Wide<T>& { return x[static_cast<std::size_t>(i)]; };
        at(j) = 1;
        for (int step = 0; step < n; ++step) {
            const int i = t.uplo == 'U' ? n - 1 - step : step;
            at(i) /= t.entry('N', i, i);
            for (int k = 0; k < n; ++k)
                if (k != i && (t.uplo == 'U' ? k < i : k > i))
                    at(k) -= t.entry('N', k, i) * at(i);
        }
        for (int i = 0; i < n; ++i) {
            add(0, i, j, std::abs(t.entry('N', i, j)));
            add(1, i, j, std::abs(at(i)));
        }
    }
    return *std::max_element(sums.begin(), sums.begin() + n) * *std::max_element(sums.begin() + n, sums.end());
}

template <class T>
float rcond_of(const TriangularMatrix<T>& t, char norm) {
    const int n = t.n(), lda = t.a.ld();
    std::vector<T> work(static_cast<std::size_t>(3 * n + 1));
    std::vector<float> rwork(static_cast<std::size_t>(n + 1));
    std::vector<int> iwork(static_cast<std::size_t>(n + 1));
    float rcond = -1;
    int info = -1;
    if constexpr (isComplex<T>)
        CTRCON(&norm, &t.uplo, &t.diag, &n, t.a.data(), &lda, &rcond, work.data(), rwork.data(), &info);
    else
        STRCON(&norm, &t.uplo, &t.diag, &n, t.a.data(), &lda, &rcond, work.data(), iwork.data(), &info);
    EXPECT_EQ(info, 0);
    return rcond;
}

TYPED_TEST(Triangular, ConditionNumbers) {
    using T = TypeParam;
    for (const char norm : {'1', 'o', 'I'})
        each_triangle_shape([&](char uplo, char diag) {
            for (const TriangleKind kind : {TriangleKind::tame, TriangleKind::oneRow})
                for (const int n : {1, 2, 17, 60}) {
                    const TriangularMatrix<T> t(uplo, diag, n, kind);
                    const double ratio = rcond_of(t, norm) * condition(t, norm);
                    EXPECT_TRUE(ratio >= 0.9999 && ratio <= 3) << ratio << ' ' << norm << ' ' << t;
                }
            EXPECT_EQ(rcond_of(TriangularMatrix<T>(uplo, diag, 0), norm), 1);
            const float singular = rcond_of(TriangularMatrix<T>(uplo, diag, 20, TriangleKind::singular), norm);
            EXPECT_EQ(singular == 0, diag == 'N') << singular;
            const TriangularMatrix<T> growing(uplo, diag, 200, TriangleKind::growing);
            EXPECT_EQ(rcond_of(growing, norm), 0) << "singular to working precision";
        });
}

} // namespace
} // namespace qrv::test
