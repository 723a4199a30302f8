// Contract of the kernels with triangular matrices, on every build: products against sums in double, solves by their
// residual.
#include <gtest/gtest.h>

#include "support/triangle_case.hpp"

namespace qrv::test {
namespace {

template <class T>
void expect_triangular(const Level2Case& p, char uplo, char trans, char diag) {
    TriangleCase<T> t(uplo, trans, diag, p, p.n, false);
    expect_product<T>(t, p, [&](const VectorBuild& build, T* x) {
        kernel_for<T>(build.blas_strmv_kernel, build.blas_ctrmv_kernel)(&uplo, &trans, &diag, &p.n, t.a.data(),
                                                                        &t.a.ld(), x, &p.incx);
    });
    expect_solution<T>(t, p, [&](const VectorBuild& build, T* x) {
        kernel_for<T>(build.blas_strsv_kernel, build.blas_ctrsv_kernel)(&uplo, &trans, &diag, &p.n, t.a.data(),
                                                                        &t.a.ld(), x, &p.incx);
    });
}

TEST(Triangular, Real) {
    each_triangle([](auto&... problem) { expect_triangular<float>(problem...); });
}
TEST(Triangular, Complex) {
    each_triangle([](auto&... problem) { expect_triangular<SingleComplex>(problem...); });
}

// What a thread computes: some elements of the product, from a copy of x, at either end of the triangle and inside.
template <class T>
void expect_bands(const Level2Case& p, char uplo, char trans, char diag) {
    TriangleCase<T> t(uplo, trans, diag, p, p.n, false);
    const bool transposed = is_transposed(trans), diagonalFirst = t.upper() != transposed;
    GuardedVector<T> x(p.n, 1, p.offset / 2, p.guard);
    std::mt19937 random(8);
    x.fill([&] { return any_size_one<T>(random); });
    for (const auto& [first, count] : {std::pair{0, p.n / 3}, {p.n / 3, p.n - p.n / 3}, {p.n / 4, p.n / 2}, {0, p.n}}) {
        GuardedVector<T> expectedShape(count, 1);
        expectedShape.fill([] { return scalar<T>(0); });
        const auto entry = [&, from = first](int i, int j) { return t.entry(from + i, j); };
        const auto expected = product<T>(scalar<T>(1), entry, x, scalar<T>(0), expectedShape);
        const int from = diagonalFirst ? first : 0, length = diagonalFirst ? p.n - first : first + count;
        for (const VectorBuild& build : vector_builds()) {
            GuardedVector<T> y(count, p.incy, p.offset / 3, p.guard);
            const int row = transposed ? from : first, column = transposed ? first : from;
            kernel_for<T>(build.blas_strmv_band_kernel, build.blas_ctrmv_band_kernel)(
                &uplo, &trans, &diag, &count, &length, count > 0 ? &t.a(row, column) : nullptr, &t.a.ld(),
                x.data() + from, y.data(), &p.incy);
            EXPECT_TRUE(expected.held_by(y)) << build << ' ' << t << ' ' << p << " from " << first << " + " << count;
        }
    }
}

TEST(Triangular, Bands) {
    each_triangle([](const Level2Case& p, auto... options) {
        if (p.n > 300)
            return;
        expect_bands<float>(p, options...);
        expect_bands<SingleComplex>(p, options...);
    });
}

// With op(A) = A what is 0 in x adds nothing and is not divided: the columns of whole blocks of zeros are not read, and
// a zero on the diagonal beside one makes no NaN.
template <class T>
void expect_zeros_skipped(int n, char uplo, int place, int inc) {
    const int block = n > 32 ? 32 : 4, band = n - 1, ld = n;
    const T two = scalar<T>(2);
    std::vector<T> a(static_cast<std::size_t>(n) * n);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
            a[j * n + i] = std::abs(j - place) >= block ? scalar<T>(nan) : i == j && j == place ? two : T{};
    std::vector<float> stored(n * n, nan); // the same in band storage
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
            if (const int row = uplo == 'U' ? band + i - j : i - j; row >= 0 && row < n)
                stored[j * n + row] = real_part(a[j * n + i]);
    const auto expect = [&](const VectorBuild& build, const char* name, T value, const auto& call) {
        GuardedVector<T> x(n, inc);
        x.fill([] { return T{}; });
        x[place] = scalar<T>(1);
        call(x.data());
        for (int i = 0; i < n; ++i)
            EXPECT_TRUE(x[i] == (i == place ? value : T{})) << build << ' ' << name << ' ' << uplo << " n=" << n
                                                            << " inc=" << inc << " x[" << i << "] of " << place;
    };
    for (const VectorBuild& build : vector_builds()) {
        expect(build, "trmv", two, [&](T* x) {
            kernel_for<T>(build.blas_strmv_kernel, build.blas_ctrmv_kernel)(&uplo, "N", "N", &n, a.data(), &ld, x,
                                                                            &inc);
        });
        expect(build, "trsv", scalar<T>(0.5F), [&](T* x) {
            kernel_for<T>(build.blas_strsv_kernel, build.blas_ctrsv_kernel)(&uplo, "N", "N", &n, a.data(), &ld, x,
                                                                            &inc);
        });
        if constexpr (!isComplex<T>) {
            expect(build, "tbmv", two,
                   [&](T* x) { build.blas_stbmv_kernel(&uplo, "N", "N", &n, &band, stored.data(), &ld, x, &inc); });
            expect(build, "tbsv", 0.5F,
                   [&](T* x) { build.blas_stbsv_kernel(&uplo, "N", "N", &n, &band, stored.data(), &ld, x, &inc); });
        }
    }
}

TEST(Triangular, SkipZeros) {
    for (const int n : {2, 9, 70})
        for (const char uplo : {'U', 'L'})
            for (const int place : {0, n - 1})
                for (const int inc : {1, -2}) {
                    expect_zeros_skipped<float>(n, uplo, place, inc);
                    expect_zeros_skipped<SingleComplex>(n, uplo, place, inc);
                }
}

// A solve divides by the diagonal and nothing else: powers of two come out exactly, and quotients whose squares would
// overflow or vanish come out right.
TEST(Triangular, DiagonalOfAnySize) {
    const int n = 1, unit = 1;
    for (const VectorBuild& build : vector_builds()) {
        float a = 0x1p-149F, x = 0x1p-140F;
        build.blas_strsv_kernel("U", "N", "N", &n, &a, &n, &x, &unit);
        EXPECT_EQ(x, 512) << build;
        for (const float size : {0x1p-120F, 0x1p120F})
            for (const SingleComplex pivot : {SingleComplex{size, 0.5F * size}, {-0.5F * size, size}}) {
                SingleComplex z = pivot * SingleComplex{3, -2};
                build.blas_ctrsv_kernel("L", "T", "N", &n, &pivot, &n, &z, &unit);
                EXPECT_TRUE(std::abs(z.re - 3) < 1e-6F && std::abs(z.im + 2) < 1e-6F) << build << ' ' << z.re;
            }
    }
}

} // namespace
} // namespace qrv::test
