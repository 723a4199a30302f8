// Triangular solves and products of level 3, on every build: products against sums in double, solves by their residual.
#include <gtest/gtest.h>

#include "support/level3_case.hpp"

namespace qrv::test {
namespace {

template <class T>
auto solver(const VectorBuild& build) {
    return kernel_for<T>(build.blas_strsm_kernel, build.blas_ctrsm_kernel);
}
template <class T>
auto multiplier(const VectorBuild& build) {
    return kernel_for<T>(build.blas_strmm_kernel, build.blas_ctrmm_kernel);
}

template <class T>
void expect_solution_and_product(const TriangularShape& p) {
    TriangularCheck<T> check(p);
    for (const VectorBuild& build : vector_builds()) {
        EXPECT_TRUE(check.multiplied_by(multiplier<T>(build))) << build << (isComplex<T> ? " ctrmm " : " strmm ") << p;
        EXPECT_TRUE(check.solved_by(solver<T>(build))) << build << (isComplex<T> ? " ctrsm " : " strsm ") << p;
    }
}

// Every step-th combination of options, beginning with another one from size to size. Scalars, leading
// dimensions, starts and guards go round as well.
template <class T>
void each_shape(int n, int count, unsigned step, int extra = 0) {
    static int number = 0;
    constexpr int extras[] = {0, 1, 4};
    constexpr float alphas[] = {1, -0.75F, 2};
    const unsigned round = static_cast<unsigned>(number++);
    unsigned combination = 0;
    for (const char side : {'L', 'r'})
        for (const char uplo : {'u', 'L'})
            for (const char trans : {'N', 't', 'C'})
                for (const char diag : {'N', 'u'}) {
                    const unsigned k = combination++ + round;
                    if (k % step == 0)
                        expect_solution_and_product<T>(
                            {side, uplo, trans, diag, n, count, alphas[k / 2 % 3],
                             Layout{extra + extras[k % 3], static_cast<int>(k * 5 % 16), static_cast<Guard>(k % 3)}});
                }
}

// Orders around those of groups, vectors and blocks with few right-hand sides; right-hand sides around those of
// vectors, strips and chunks; columns far apart, of which copies are made.
template <class T>
void check_all_shapes() {
    constexpr int farApart = 512;
    for (const int n : {11, 64, 70, 135})
        each_shape<T>(n, 131, 5, farApart);
    for (const int n : {0, 1, 2, 3, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33})
        each_shape<T>(n, n % 2 == 0 ? 3 : 18, 1);
    for (const int n : {63, 64, 65, 127, 128, 129, 191, 192, 193, 255, 256, 257})
        each_shape<T>(n, n % 3 + 2, 5);
    for (const int n : {511, 512, 513, 514})
        each_shape<T>(n, 2, 7);
    for (const int n : {1023, 1024, 1025, 1026})
        each_shape<T>(n, 2, 11);
    for (const int count : {0, 1, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 65})
        each_shape<T>(count % 2 == 0 ? 11 : 20, count, 5);
    for (const int count : {255, 257, 511, 513, 1023, 1025})
        each_shape<T>(count % 4 == 1 ? 70 : 135, count, 7);
}

TEST(Level3Triangular, Real) {
    check_all_shapes<float>();
}
TEST(Level3Triangular, Complex) {
    check_all_shapes<SingleComplex>();
}

template <class T>
ExpectedMatrix<T> all_zeros(int rows, int columns) {
    const auto size = static_cast<std::size_t>(rows * columns);
    return {rows, columns, std::vector<Wide<T>>(size), std::vector<double>(size)};
}

// alpha = 0 makes zeros of anything, and A is not read.
template <class T>
void expect_zeros() {
    for (const char side : {'L', 'R'})
        for (const int n : {3, 70}) {
            const TriangularShape p{side, 'U', 'N', 'N', n, 37, 0, Layout{.extra = 2}};
            for (const VectorBuild& build : vector_builds())
                for (const auto routine : {solver<T>(build), multiplier<T>(build)}) {
                    TriangularOperands<T> v(p);
                    const T nan = scalar<T>(std::numeric_limits<float>::quiet_NaN());
                    v.b.set([&](int, int) { return nan; });
                    for (int i = 0; i < n; ++i)
                        v.a.at(i, i) = nan;
                    v.call(routine);
                    const ExpectedMatrix<T> zeros = all_zeros<T>(p.rows(), p.columns());
                    EXPECT_TRUE(zeros.held_by(v.b)) << build << ' ' << p;
                }
        }
}
TEST(Level3Triangular, ZeroTimesAnything) {
    expect_zeros<float>();
    expect_zeros<SingleComplex>();
}

// A solve divides once for each element of the diagonal: right-hand sides are multiplied by its reciprocal. 7 and 3
// tell that from a quotient.
TEST(Level3Triangular, ReciprocalsOfTheDiagonal) {
    const int one = 1;
    const float alpha = 1, a = 3;
    const SingleComplex complexAlpha{1, 0}, complexA{0, 3};
    for (const VectorBuild& build : vector_builds())
        for (const char* side : {"L", "R"}) {
            float b = 7;
            build.blas_strsm_kernel(side, "L", "N", "N", &one, &one, &alpha, &a, &one, &b, &one);
            EXPECT_EQ(b, 7 * (alpha / 3)) << build << ' ' << side;
            SingleComplex c{0, 7};
            build.blas_ctrsm_kernel(side, "L", "N", "N", &one, &one, &complexAlpha, &complexA, &one, &c, &one);
            EXPECT_TRUE((c == SingleComplex{7 * (alpha / 3), 0})) << build << ' ' << side;
        }
}

} // namespace
} // namespace qrv::test
