// The serial GEMM kernels of every build against the double-precision oracle.
#include <gtest/gtest.h>

#include "support/builds.hpp"
#include "support/matrices.hpp"

namespace qrv::test {
namespace {

struct GemmCase {
    char transa, transb;
    int m, n, k;
    float alpha, beta;
    int ldExtra; // added to every leading dimension
    int offset;  // start of A, B and C in floats past a 64-byte boundary
};

void check(const GemmBuild& build, const GemmCase& p) {
    std::mt19937 random(1);
    const bool ta = is_transposed(p.transa), tb = is_transposed(p.transb);
    GuardedMatrix a(ta ? p.k : p.m, ta ? p.m : p.k, std::max(1, ta ? p.k : p.m) + p.ldExtra, p.offset);
    GuardedMatrix b(tb ? p.n : p.k, tb ? p.k : p.n, std::max(1, tb ? p.n : p.k) + p.ldExtra, p.offset);
    GuardedMatrix c(p.m, p.n, std::max(1, p.m) + p.ldExtra, p.offset);
    a.fill_random(random);
    b.fill_random(random);
    if (p.beta == 0)
        c.fill(std::numeric_limits<float>::quiet_NaN());
    else
        c.fill_random(random);
    const GuardedMatrix before = c;
    const int lda = a.ld(), ldb = b.ld(), ldc = c.ld();
    build.sgemm(&p.transa, &p.transb, &p.m, &p.n, &p.k, &p.alpha, a.data(), &lda, b.data(), &ldb, &p.beta, c.data(),
                &ldc);
    const double error = gemm_error(p.transa, p.transb, p.k, p.alpha, a, b, p.beta, before, c);
    EXPECT_TRUE(error <= 1 && c.guards_intact())
        << build.name << ' ' << p.transa << p.transb << " m=" << p.m << " n=" << p.n << " k=" << p.k
        << " alpha=" << p.alpha << " beta=" << p.beta << " ld+" << p.ldExtra << " offset=" << p.offset
        << " error=" << error << " guards=" << c.guards_intact();
}

constexpr char transposes[] = {'N', 'T'};

TEST(GemmKernel, SmallShapes) {
    for (const GemmBuild& build : gemm_builds())
        for (const char ta : transposes)
            for (const char tb : transposes)
                for (int m = 1; m <= 9; ++m)
                    for (int n = 1; n <= 9; ++n)
                        for (int k : {0, 1, 2, 3, 4, 5, 7, 8, 9, 13})
                            check(build, {ta, tb, m, n, k, 0.5F, (m + n + k) % 3 * 0.5F, m % 3, n % 4});
}

TEST(GemmKernel, BlockEdges) {
    const int edges[] = {15, 16, 17, 63, 64, 65, 127, 128, 129, 150, 151, 152, 255, 256, 257, 300, 511, 512, 513};
    for (const GemmBuild& build : gemm_builds())
        for (const char ta : transposes)
            for (const char tb : transposes)
                for (const int edge : edges) {
                    check(build, {ta, tb, edge, 21, 27, 1, 1, 1, 0});
                    check(build, {ta, tb, 21, edge, 27, -1, 0, 0, 1});
                    check(build, {ta, tb, 21, 19, edge, 2, 0.5F, 3, 2});
                }
}

} // namespace
} // namespace qrv::test
