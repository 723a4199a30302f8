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
    TriangularOperands<T> before(p);
    const WideMatrix<T> a = before.op_a(), b(before.b);
    const Wide<T> alpha = widen(before.alpha);
    const auto expected = p.left() ? product<T>(alpha, a, b, 0, b) : product<T>(alpha, b, a, 0, b);
    for (const VectorBuild& build : vector_builds()) {
        TriangularOperands<T> multiplied(p), solved(p);
        multiplied.call(multiplier<T>(build));
        EXPECT_TRUE(expected.held_by(multiplied.b)) << build << " product " << p << (isComplex<T> ? ", complex" : "");
        solved.call(solver<T>(build));
        const WideMatrix<T> x(solved.b);
        EXPECT_TRUE((p.left() ? vanishes<T>(1, a, x, -alpha, b) : vanishes<T>(1, x, a, -alpha, b)) &&
                    solved.b.guards_intact())
            << build << " solve " << p << (isComplex<T> ? ", complex" : "");
    }
}

// All combinations of options, or every fifth of them, beginning with another one from size to size. Scalars, leading
// dimensions, starts and guards go round as well.
template <class T>
void each_shape(int n, int count, bool all) {
    static int number = 0;
    constexpr int fewer = 5, extras[] = {0, 1, 4};
    constexpr float alphas[] = {1, -0.75F, 2};
    const unsigned round = static_cast<unsigned>(number++);
    unsigned combination = 0;
    for (const char side : {'L', 'r'})
        for (const char uplo : {'u', 'L'})
            for (const char trans : {'N', 't', 'C'})
                for (const char diag : {'N', 'u'}) {
                    const unsigned k = combination++ + round;
                    if (all || k % fewer == 0)
                        expect_solution_and_product<T>(
                            {side, uplo, trans, diag, n, count, alphas[k / 2 % 3],
                             Layout{extras[k % 3], static_cast<int>(k * 5 % 16), static_cast<Guard>(k % 3)}});
                }
}

// Orders around those of groups, vectors and blocks with few right-hand sides; right-hand sides around those of
// vectors, strips and chunks.
template <class T>
void check_all_shapes() {
    for (const int n : {0, 1, 2, 3, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33})
        each_shape<T>(n, n % 2 == 0 ? 3 : 18, true);
    for (const int n : {63, 64, 65, 127, 128, 129, 191, 192, 193, 255, 256, 257})
        each_shape<T>(n, n % 3 + 2, false);
    for (const int n : {511, 512, 513, 514, 1023, 1024, 1025, 1026})
        each_shape<T>(n, 3, false);
    for (const int count : {0, 1, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 65})
        each_shape<T>(count % 2 == 0 ? 11 : 20, count, false);
    for (const int count : {255, 257, 511, 513, 1023, 1025})
        each_shape<T>(count % 4 == 1 ? 70 : 135, count, false);
}

TEST(Level3Triangular, Real) {
    check_all_shapes<float>();
}
TEST(Level3Triangular, Complex) {
    check_all_shapes<SingleComplex>();
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
                    const WideMatrix<T> b(v.b);
                    EXPECT_TRUE(vanishes<T>(0, b, b, 1, b) && v.b.guards_intact()) << build << ' ' << p;
                }
        }
}
TEST(Level3Triangular, ZeroTimesAnything) {
    expect_zeros<float>();
    expect_zeros<SingleComplex>();
}

// A solve divides once for each element of the diagonal: right-hand sides are multiplied by its reciprocal.
TEST(Level3Triangular, ReciprocalsOfTheDiagonal) {
    const int n = 2, count = 1;
    const float a[] = {3, 0, 0, 0x1p-127F}, one = 1; // the reciprocal of the second is not a power of ten away from inf
    for (const VectorBuild& build : vector_builds()) {
        float b[] = {7, 0x1p-127F};
        build.blas_strsm_kernel("L", "L", "N", "N", &n, &count, &one, a, &n, b, &n);
        EXPECT_EQ(b[0], 7 * (one / 3)) << build;
        EXPECT_EQ(b[1], 1) << build;
    }
}

} // namespace
} // namespace qrv::test
