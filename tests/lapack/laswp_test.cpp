// Row interchanges: against interchanges of whole rows one by one, in every direction and pivot spacing.
#include <gtest/gtest.h>

#include "lapack/lapack.hpp"
#include "support/call.hpp"
#include "support/combine.hpp"

namespace qrv::test {
namespace {

TEST_OF_ELEMENTS(Laswp, InterchangesRowsInTheirOrder) {
    constexpr int m = 23, noRow = -1; // a pivot that is read by mistake leads astray
    combine({0, 1, 15, 16, 17, 33}, {1, 4}, {0, 1, 19}, {1, -1, 3, -2, 0}).each([&](int n, int k1, int last, int incx) {
        const int k2 = last < 2 ? k1 - 1 + last : last;
        Operand<T> a(m, n, m + n % 3, n % 4);
        std::mt19937 random(static_cast<unsigned>(n + k2));
        a.fill_random(random);
        Operand<T> expected = a;
        std::vector<int> ipiv(100, noRow);
        const auto pivot = [&](int k) -> int& {
            return ipiv[static_cast<std::size_t>(k1 + (k - k1) * std::abs(incx) - 1)];
        };
        for (int k = k1; incx != 0 && k <= k2; ++k)
            pivot(k) = k % 4 == 0 ? k : 1 + static_cast<int>(random() % m); // some stay in place
        for (int step = 0; incx != 0 && step <= k2 - k1; ++step) {
            const int k = incx > 0 ? k1 + step : k2 - step;
            for (int j = 0; j < n; ++j)
                std::swap(expected(k - 1, j), expected(pivot(k) - 1, j));
        }
        call_for<T>(SLASWP, CLASWP, n, a, k1, k2, ipiv, incx);
        EXPECT_TRUE(a.same_bits(expected));
    });
}

} // namespace
} // namespace qrv::test
