// What is 0 in an operand: products that are not formed, on every build.
#include <gtest/gtest.h>
#include <vector>

#include "support/builds.hpp"
#include "support/level2_case.hpp"
#include "support/operand.hpp"

namespace qrv::test {
namespace {

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
                stored[j * n + row] = static_cast<float>(std::real(widen(a[j * n + i])));
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

// A column is skipped if y(j) is 0, not if alpha*y(j) is.
TEST(Updates, SkipZeroElementsOnly) {
    const int unit = 1;
    const float little = 1e-30F, infinite = infinity;
    for (const VectorBuild& build : vector_builds()) {
        float a = 1; // an AXPY with the factor alpha*y, which vanishes
        build.blas_sger_kernel(&unit, &unit, &little, &infinite, &unit, &little, &unit, &a, &unit);
        EXPECT_EQ(a, 1) << build;
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
