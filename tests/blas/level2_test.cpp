// Contract of the level 2 kernels with general, symmetric and Hermitian matrices, on every build.
#include <gtest/gtest.h>

#include "support/level2_case.hpp"

namespace qrv::test {
namespace {

// ---- y := alpha*op(A)*x + beta*y ----------------------------------------------------------------------------------

template <class T>
void expect_gemv(char trans, const Level2Case& p) {
    std::mt19937 random(7);
    const bool transposed = is_transposed(trans), conjugated = trans == 'C' || trans == 'c';
    const T alpha = scalar_of<T>(p.alpha), beta = scalar_of<T>(p.beta);
    Level2Matrix<T> a(p.m, p.n, std::max(1, p.m) + p.extra, p.offset, p.guard);
    GuardedVector<T> x(transposed ? p.m : p.n, p.incx, p.offset / 2, p.guard);
    if (p.alpha != 0) { // else they are not read
        a.fill(random, [](int, int) { return true; });
        x.fill([&] { return any_size_one<T>(random); });
    }
    const auto start = [&](GuardedVector<T>& y) {
        std::mt19937 again(8);
        y.fill([&] { return p.beta == 0 && p.m > 0 && p.n > 0 ? scalar<T>(nan) : any_size_one<T>(again); });
    };
    const auto result = [&] { return GuardedVector<T>(transposed ? p.n : p.m, p.incy, p.offset / 3, p.guard); };
    GuardedVector<T> before = result();
    start(before);
    const auto entry = [&](int i, int j) {
        const Wide<T> value = widen(transposed ? a(j, i) : a(i, j));
        return conjugated ? conjugate(value) : value;
    };
    const bool nothing = p.m == 0 || p.n == 0;
    const auto expected = product<T>(nothing ? scalar<T>(0) : alpha, entry, x, nothing ? scalar<T>(1) : beta, before);
    for (const VectorBuild& build : vector_builds()) {
        GuardedVector<T> y = result();
        start(y);
        kernel_for<T>(build.blas_sgemv_kernel, build.blas_cgemv_kernel)(
            &trans, &p.m, &p.n, &alpha, a.data(), &a.ld(), x.data(), &p.incx, &beta, y.data(), &p.incy);
        EXPECT_TRUE(expected.held_by(y)) << build << ' ' << trans << ' ' << p;
    }
}

TEST(Gemv, real_products) {
    for (const Level2Case& p : level2_cases(false))
        for (const char trans : {'N', 't', 'C'})
            expect_gemv<float>(trans, p);
}
TEST(Gemv, complex_products) {
    for (const Level2Case& p : level2_cases(false))
        for (const char trans : {'n', 'T', 'c'})
            expect_gemv<SingleComplex>(trans, p);
}

} // namespace
} // namespace qrv::test
