// The generic build sums in extended precision and rounds once for each block of k.
#include "support/subjects.hpp"

namespace qrv::test {
namespace {

TEST(GemmGeneric, RoundsOncePerBlockOfK) {
    if (!in_this_run(0))
        return;
    const std::vector<std::vector<int>> blocks = {{64},     {58},     {63},     {48, 9}, {16, 5},
                                                  {32, 15}, {64, 64}, {64, 58}, {64, 6}, {15}};
    for (const std::vector<int>& sizes : blocks)
        for (const char transb : {'N', 'T'}) {
            int k = 0;
            for (const int size : sizes)
                k += size;
            const int m = 25, n = 3; // a tile of 16 rows, one of 8, a single row
            const float alpha = 0.7F;
            const GemmCase x({'N', transb, m, n, k, alpha, 1});
            GuardedMatrix expected = x.before;
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < m; ++i) {
                    int l = 0;
                    for (const int size : sizes) {
                        long double sum = 0;
                        for (const int end = l + size; l < end; ++l) {
                            const float scaled = alpha * x.a(i, l);
                            sum += static_cast<long double>(scaled) * (transb == 'N' ? x.b(l, j) : x.b(j, l));
                        }
                        expected(i, j) = static_cast<float>(expected(i, j) + sum);
                    }
                }
            const GuardedMatrix c = x.result(kernel::generic::blas_sgemm_kernel);
            EXPECT_EQ(c.count_bad([&](int i, int j, float z) { return z == expected(i, j); }), 0)
                << "k=" << k << " B " << transb;
        }
}

} // namespace
} // namespace qrv::test
