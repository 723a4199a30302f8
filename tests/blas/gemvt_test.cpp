// Both products of a step of the bidiagonal reduction, on every build, against double.
#include "support/builds.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

TEST_OF_ELEMENTS(Gemvt, OnEveryBuild) {
    std::mt19937 random(5);
    const auto any = [&] { return any_size_one<T>(random); };
    for (const int m : {0, 1, 7, 40, 150})
        for (const int n : {1, 2, 15, 33, 130})
            for (const int extra : {0, 1, 2, 4, 8}) {
                const int incx = 1 + extra % 3, incy = 1 + n % 2;
                Operand<T> a(m, n, std::max(m, 1) + (16 - m % 16) + extra, extra);
                a.set([&](int, int) { return any(); });
                GuardedVector<T> v(m), x(n, incx), y(n, incy), z(m);
                v.fill(any), x.fill(any), y.fill(any), z.fill(any);
                const T tau = any();
                std::vector<Wide<T>> wideX = x.widened(), wideY = y.widened(), wideZ = z.widened();
                for (int j = 0; j < n; ++j) {
                    auto &xj = wideX[std::size_t(j)], &yj = wideY[std::size_t(j)];
                    for (int i = 0; i < m; ++i)
                        yj += times(conjugate(widen(a(i, j))), widen(v[i]));
                    yj = times(widen(tau), yj);
                    xj -= yj;
                    for (int i = 0; i < m; ++i)
                        wideZ[std::size_t(i)] += times(widen(a(i, j)), xj);
                }
                for (const VectorBuild& build : vector_builds()) {
                    GuardedVector<T> newX = x, newY = y, newZ = z;
                    auto* const kernel = routine_for<T>(build.blas_sgemvt_kernel, build.blas_cgemvt_kernel);
                    kernel(&m, &n, &tau, a.data(), &a.ld(), v.data(), newX.data(), &incx, newY.data(), &incy,
                           newZ.data());
                    const auto allowed = [&](std::size_t) { return 4 * unitRoundoff * (m + 8) * (n + 8); };
                    ASSERT_TRUE(holds(newX, wideX, allowed) && holds(newY, wideY, allowed) &&
                                holds(newZ, wideZ, allowed))
                        << build << ' ' << m << 'x' << n << " lda " << a.ld();
                }
            }
}

} // namespace
} // namespace qrv::test
