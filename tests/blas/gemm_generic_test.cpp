// The generic build sums in extended precision and rounds once for each block of k.
#include <gtest/gtest.h>

#include "support/builds.hpp"
#include "support/matrices.hpp"

namespace qrv::test {
namespace {

TEST(GemmGeneric, RoundsOncePerBlockOfK) {
    const std::vector<std::vector<int>> blocks = {{64},     {58},     {63},     {48, 9}, {16, 5},
                                                  {32, 15}, {64, 64}, {64, 58}, {64, 6}, {15}};
    for (const std::vector<int>& sizes : blocks)
        for (const char transb : {'N', 'T'}) {
            int k = 0;
            for (const int size : sizes)
                k += size;
            const int m = 25, n = 3; // a tile of 16 rows, one of 8, a single row
            const float alpha = 0.7F, beta = 1;
            std::mt19937 random(2);
            GuardedMatrix a(m, k, m), b(transb == 'N' ? k : n, transb == 'N' ? n : k, std::max(k, n)), c(m, n, m);
            a.fill_random(random);
            b.fill_random(random);
            c.fill_random(random);
            GuardedMatrix expected = c;
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < m; ++i) {
                    int l = 0;
                    for (const int size : sizes) {
                        long double sum = 0;
                        for (const int end = l + size; l < end; ++l) {
                            const float scaled = alpha * a(i, l);
                            sum += static_cast<long double>(scaled) * (transb == 'N' ? b(l, j) : b(j, l));
                        }
                        expected(i, j) = static_cast<float>(expected(i, j) + sum);
                    }
                }
            const int lda = a.ld(), ldb = b.ld(), ldc = c.ld();
            kernel::generic::blas_sgemm_kernel("N", &transb, &m, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &beta,
                                               c.data(), &ldc);
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < m; ++i)
                    ASSERT_EQ(c(i, j), expected(i, j)) << "k=" << k << " B " << transb << " at " << i << ',' << j;
        }
}

} // namespace
} // namespace qrv::test
