// Contract of the level 2 kernels with general, symmetric and Hermitian matrices, on every build.
#include <gtest/gtest.h>

#include "support/level2_case.hpp"

namespace qrv::test {
namespace {

// ---- y := alpha*A*x + beta*y --------------------------------------------------------------------------------------

// Runs one kernel of every build, call(build, x, y), on x of n and y of m elements, and compares with A(i, j) =
// entry(i, j). With beta = 0 y begins as NaN, with alpha = 0 x is NaN.
template <class T, class Entry, class Call>
void expect_product(const Level2Case& p, int m, int n, const Entry& entry, const Call& call) {
    const bool nothing = p.m == 0 || p.n == 0; // not even a scaling
    const T alpha = scalar_of<T>(nothing ? 0 : p.alpha), beta = scalar_of<T>(nothing ? 1 : p.beta);
    GuardedVector<T> x(n, p.incx, p.offset / 2, p.guard);
    if (p.alpha != 0)
        fill_random(x, 7);
    const auto vector = [&] { return GuardedVector<T>(m, p.incy, p.offset / 3, p.guard); };
    const auto start = [&](GuardedVector<T>& y) {
        fill_random(y, 8);
        if (beta == scalar<T>(0))
            y.fill([] { return scalar<T>(nan); });
    };
    GuardedVector<T> before = vector();
    start(before);
    const ExpectedVector<T> expected = product<T>(alpha, entry, x, beta, before);
    for (const VectorBuild& build : vector_builds()) {
        GuardedVector<T> y = vector();
        start(y);
        call(build, x, y);
        EXPECT_TRUE(expected.held_by(y)) << build << ' ' << p;
    }
}

template <class T>
void expect_gemv(char trans, const Level2Case& p) {
    SCOPED_TRACE(trans);
    const bool transposed = is_transposed(trans), conjugated = trans == 'C' || trans == 'c';
    const T alpha = scalar_of<T>(p.alpha), beta = scalar_of<T>(p.beta);
    Level2Matrix<T> a(p.m, p.n, p);
    if (p.alpha != 0)
        a.fill(9);
    const auto entry = [&](int i, int j) {
        const Wide<T> value = widen(transposed ? a(j, i) : a(i, j));
        return conjugated ? conjugate(value) : value;
    };
    expect_product<T>(p, transposed ? p.n : p.m, transposed ? p.m : p.n, entry,
                      [&](const VectorBuild& build, GuardedVector<T>& x, GuardedVector<T>& y) {
                          kernel_for<T>(build.blas_sgemv_kernel,
                                        build.blas_cgemv_kernel)(&trans, &p.m, &p.n, &alpha, a.data(), &a.ld(),
                                                                 x.data(), &p.incx, &beta, y.data(), &p.incy);
                      });
}
TEST(Gemv, RealProducts) {
    for (const Level2Case& p : level2_cases(false))
        for (const char trans : {'N', 't', 'C'})
            expect_gemv<float>(trans, p);
}
TEST(Gemv, ComplexProducts) {
    for (const Level2Case& p : level2_cases(false))
        for (const char trans : {'n', 'T', 'c'})
            expect_gemv<SingleComplex>(trans, p);
}

// The other triangle is NaN, and so are the imaginary parts on the diagonal.
template <class T>
void expect_symv(char uplo, const Level2Case& p) {
    SCOPED_TRACE(uplo);
    const T alpha = scalar_of<T>(p.alpha), beta = scalar_of<T>(p.beta);
    Level2Matrix<T> a(p.n, p.n, p, {uplo});
    if (p.alpha != 0)
        a.fill(9);
    if constexpr (isComplex<T>)
        for (int i = 0; i < p.n; ++i)
            a(i, i).im = nan;
    const auto entry = [&](int i, int j) -> Wide<T> {
        if (i == j)
            return real_part(a(i, i));
        return a.stored(i, j) ? widen(a(i, j)) : conjugate(widen(a(j, i)));
    };
    expect_product<T>(p, p.n, p.n, entry, [&](const VectorBuild& build, GuardedVector<T>& x, GuardedVector<T>& y) {
        kernel_for<T>(build.blas_ssymv_kernel, build.blas_chemv_kernel)(&uplo, &p.n, &alpha, a.data(), &a.ld(),
                                                                        x.data(), &p.incx, &beta, y.data(), &p.incy);
    });
}
TEST(Symv, Products) {
    for (const Level2Case& p : level2_cases(true))
        for (const char uplo : {'U', 'l'}) {
            expect_symv<float>(uplo, p);
            if (p.n < 2000)
                expect_symv<SingleComplex>(uplo, p);
        }
}

// ---- A := A + the sum of vector times row -------------------------------------------------------------------------

// What is added to an element, and the sum of the sizes of its terms.
template <class T>
struct Added {
    Wide<T> value;
    double size;
};
template <class X, class... Rest>
auto sum_of(X x, Rest... rest) {
    using T = std::conditional_t<std::is_same_v<X, double>, float, SingleComplex>;
    return Added<T>{(x + ... + rest), (std::abs(x) + ... + std::abs(rest))};
}

// Runs one kernel of every build, call(build, a), and compares with A + added(i, j). The imaginary parts on a Hermitian
// diagonal begin as NaN.
template <class T, class AddedAt, class Call>
void expect_update(const Level2Case& p, Stored stored, const AddedAt& added, const Call& call) {
    const bool hermitian = isComplex<T> && stored.uplo != 'A';
    Level2Matrix<T> before(p.m, p.n, p, stored);
    before.fill(9);
    if constexpr (isComplex<T>)
        for (int i = 0; hermitian && i < p.n; ++i)
            before(i, i).im = p.alpha == 0 ? 0 : nan;
    std::vector<Added<T>> expected; // of the stored elements: the value and the error allowed
    for (int j = 0; j < p.n; ++j)
        for (int i = 0; i < p.m; ++i)
            if (stored(i, j)) {
                const bool real = hermitian && i == j;
                const Added<T> more = added(i, j);
                const Wide<T> old = real ? real_part(before(i, j)) : widen(before(i, j)), sum = old + more.value;
                expected.push_back({real ? std::real(sum) : sum, 8 * unitRoundoff * (std::abs(old) + more.size)});
            }
    for (const VectorBuild& build : vector_builds()) {
        Level2Matrix<T> a(p.m, p.n, p, stored);
        a.set([&](int i, int j) { return before(i, j); });
        call(build, a);
        bool good = a.guards_intact();
        auto next = expected.begin();
        for (int j = 0; j < p.n; ++j)
            for (int i = 0; i < p.m; ++i)
                if (stored(i, j)) {
                    const Wide<T> is = widen(a(i, j));
                    good = good && std::abs(is - next->value) <= next->size &&
                           !(hermitian && i == j && std::imag(is) != 0);
                    ++next;
                }
        EXPECT_TRUE(good) << build << ' ' << p;
    }
}

template <class T>
void expect_ger(bool conjugated, const Level2Case& p) {
    const T alpha = scalar_of<T>(p.alpha);
    GuardedVector<T> x(p.m, p.incx, p.offset / 2, p.guard), y(p.n, p.incy, p.offset / 3, p.guard);
    fill_random(x, 7), fill_random(y, 8);
    const auto added = [&](int i, int j) {
        return sum_of(widen(alpha) * widen(x[i]) * (conjugated ? conjugate(widen(y[j])) : widen(y[j])));
    };
    expect_update<T>(p, {}, added, [&](const VectorBuild& build, Level2Matrix<T>& a) {
        kernel_for<T>(build.blas_sger_kernel, conjugated ? build.blas_cgerc_kernel : build.blas_cgeru_kernel)(
            &p.m, &p.n, &alpha, x.data(), &p.incx, y.data(), &p.incy, a.data(), &a.ld());
    });
}
TEST(Ger, Updates) {
    for (const Level2Case& p : level2_cases(false)) {
        expect_ger<float>(false, p);
        expect_ger<SingleComplex>(false, p);
        expect_ger<SingleComplex>(true, p);
    }
}

// Rank one and rank two.
template <class T>
void expect_syr(char uplo, const Level2Case& p) {
    SCOPED_TRACE(uplo);
    const T alpha = scalar_of<T>(p.alpha);
    GuardedVector<T> x(p.n, p.incx, p.offset / 2, p.guard), y(p.n, p.incy, p.offset / 3, p.guard);
    fill_random(x, 7), fill_random(y, 8);
    const auto one = [&](int i, int j) { return sum_of(double{p.alpha} * widen(x[i]) * conjugate(widen(x[j]))); };
    const auto two = [&](int i, int j) {
        return sum_of(widen(alpha) * widen(x[i]) * conjugate(widen(y[j])),
                      conjugate(widen(alpha)) * widen(y[i]) * conjugate(widen(x[j])));
    };
    expect_update<T>(p, {uplo}, one, [&](const VectorBuild& build, Level2Matrix<T>& a) {
        kernel_for<T>(build.blas_ssyr_kernel, build.blas_cher_kernel)(&uplo, &p.n, &p.alpha, x.data(), &p.incx,
                                                                      a.data(), &a.ld());
    });
    expect_update<T>(p, {uplo}, two, [&](const VectorBuild& build, Level2Matrix<T>& a) {
        kernel_for<T>(build.blas_ssyr2_kernel, build.blas_cher2_kernel)(&uplo, &p.n, &alpha, x.data(), &p.incx,
                                                                        y.data(), &p.incy, a.data(), &a.ld());
    });
}
TEST(Syr, Updates) {
    for (const Level2Case& p : level2_cases(true))
        for (const char uplo : {'u', 'L'}) {
            if (p.n < 1000 || p.n > 2000) // both are beyond one block, a complex one being half as long
                expect_syr<float>(uplo, p);
            if (p.n < 2000)
                expect_syr<SingleComplex>(uplo, p);
        }
}

// The last band of a matrix whose leading part is not the kernel's.
void expect_syr_band(char uplo, int width, const Level2Case& p) {
    SCOPED_TRACE(uplo);
    const int first = p.n - width;
    GuardedVector<float> x(p.n, p.incx, p.offset / 2, p.guard), y(p.n, p.incy, p.offset / 3, p.guard);
    fill_random(x, 7), fill_random(y, 8);
    const auto start = [&](Level2Matrix<float>& a) {
        return a.data() + (uplo == 'U' ? std::ptrdiff_t{a.ld()} * first : first);
    };
    const auto one = [&](int i, int j) { return sum_of(double{p.alpha} * x[i] * x[j]); };
    const auto two = [&](int i, int j) { return sum_of(double{p.alpha} * x[i] * y[j], double{p.alpha} * y[i] * x[j]); };
    expect_update<float>(p, {uplo, first}, one, [&](const VectorBuild& build, Level2Matrix<float>& a) {
        build.blas_ssyr_band_kernel(&uplo, &width, &p.n, &p.alpha, x.data(), &p.incx, start(a), &a.ld());
    });
    expect_update<float>(p, {uplo, first}, two, [&](const VectorBuild& build, Level2Matrix<float>& a) {
        build.blas_ssyr2_band_kernel(&uplo, &width, &p.n, &p.alpha, x.data(), &p.incx, y.data(), &p.incy, start(a),
                                     &a.ld());
    });
}
TEST(Syr, Bands) {
    for (const Level2Case& p : level2_cases(true))
        for (const char uplo : {'U', 'L'})
            for (const int width : {p.n / 3, p.n - 1})
                if (width >= 0 && p.n < 1000)
                    expect_syr_band(uplo, width, p);
}

// A column is left alone where the element that it is multiplied with is exactly 0, and only there: the other vector
// is NaN all over. In a rank-two update both elements must be 0. alpha 0 leaves all columns alone, a NaN alpha none.
template <class T>
void expect_skipping(int n, const T& alpha) {
    const bool stops = alpha == scalar<T>(0);
    constexpr int period = 3; // of the zeros
    const int inc = 1;
    const float realAlpha = real_part(alpha);
    GuardedVector<T> x(n), y(n), nans(n);
    for (int i = 0; i < n; ++i)
        y[i] = x[i] = i % period ? scalar<T>(nan) : scalar<T>(0);
    nans.fill([] { return scalar<T>(nan); });
    const auto expect = [&](Stored stored, const auto& call) {
        for (const VectorBuild& build : vector_builds()) {
            Level2Matrix<T> a(n, n, {n, n, 1, 1}, stored);
            a.set([](int, int) { return scalar<T>(1); });
            call(build, a);
            int bad = !a.guards_intact();
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < n; ++i)
                    bad += a.stored(i, j) &&
                           (stops || j % period == 0 ? a(i, j) != scalar<T>(1) : !std::isnan(real_part(a(i, j))));
            EXPECT_EQ(bad, 0) << build << " n=" << n << " alpha " << realAlpha << ' ' << stored.uplo;
        }
    };
    expect({}, [&](const VectorBuild& build, Level2Matrix<T>& a) {
        for (const auto& kernel : {build.blas_cgeru_kernel, build.blas_cgerc_kernel})
            kernel_for<T>(build.blas_sger_kernel, kernel)(&n, &n, &alpha, nans.data(), &inc, y.data(), &inc, a.data(),
                                                          &a.ld());
    });
    for (const char uplo : {'U', 'L'}) {
        expect({uplo}, [&](const VectorBuild& build, Level2Matrix<T>& a) {
            kernel_for<T>(build.blas_ssyr_kernel, build.blas_cher_kernel)(&uplo, &n, &realAlpha, x.data(), &inc,
                                                                          a.data(), &a.ld());
        });
        expect({uplo}, [&](const VectorBuild& build, Level2Matrix<T>& a) {
            kernel_for<T>(build.blas_ssyr2_kernel, build.blas_cher2_kernel)(&uplo, &n, &alpha, x.data(), &inc, y.data(),
                                                                            &inc, a.data(), &a.ld());
        });
    }
}
TEST(Updates, SkipZeroElementsOnly) {
    const int unit = 1;
    const float little = 1e-30F, infinite = infinity;
    for (const VectorBuild& build : vector_builds()) {
        float a = 1; // an AXPY with the factor alpha*y, which vanishes
        build.blas_sger_kernel(&unit, &unit, &little, &infinite, &unit, &little, &unit, &a, &unit);
        EXPECT_EQ(a, 1) << build;
    }
    for (const int n : {1, 7, 40})
        for (const float alpha : {0.F, 1.F, nan}) {
            expect_skipping<float>(n, alpha);
            expect_skipping<SingleComplex>(n, {alpha, 0});
        }
}

} // namespace
} // namespace qrv::test
