// The kernels of the secular equation, on every build, against the same one by one.
#include "support/builds.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

TEST(Secular, SumsFactorsAndVectorsOnEveryBuild) {
    constexpr double bound = 1e-13;
    std::mt19937 random(6);
    for (const VectorBuild& build : vector_builds())
        for (int n = 0; n < 70; n += n < 36 ? 1 : 11) {
            const int offset = n % 5;
            const auto positive = [&] { return 0.5F + std::abs(any_size_one<float>(random)); };
            GuardedVector<float> d(n, 1, offset), z(n, 1, offset), left(n, 1, offset), right(n, 1, offset + 1);
            for (GuardedVector<float>* x : {&d, &z, &left, &right})
                x->fill(positive);
            const double origin = 0.25, mu = -0.3;
            double sum = nan, slope = nan, expectedSum = 0, expectedSlope = 0;
            std::vector<double> product(static_cast<std::size_t>(n + 1), 3.0), expectedProduct(product);
            const float other = 2.5F;
            for (int i = 0; i < n; ++i) {
                const double own = d[i], quotient = z[i] / ((own - origin) * (own + origin) - mu);
                expectedSum += z[i] * quotient;
                expectedSlope += quotient * quotient;
                expectedProduct[std::size_t(i)] *= double{left[i]} * right[i] / ((own - other) * (own + other));
            }
            build.blas_ssecular_sums_kernel(&n, d.data(), z.data(), &origin, &mu, &sum, &slope);
            EXPECT_NEAR(sum, expectedSum, bound * expectedSum) << build << ' ' << n;
            EXPECT_NEAR(slope, expectedSlope, bound * expectedSlope) << build << ' ' << n;
            build.blas_ssecular_factors_kernel(&n, d.data(), &other, left.data(), right.data(), product.data());
            for (std::size_t i = 0; i < product.size(); ++i)
                EXPECT_NEAR(product[i], expectedProduct[i], bound * std::abs(expectedProduct[i])) << build << ' ' << n;
            const GuardedVector<float> difference = left, sums = right;
            build.blas_ssecular_vectors_kernel(&n, d.data(), z.data(), left.data(), right.data());
            for (int i = 0; i < n; ++i) {
                const double expected = double{z[i]} / difference[i] / sums[i];
                EXPECT_NEAR(right[i] / expected, 1, 4 * unitRoundoff) << build << ' ' << n;
                EXPECT_NEAR(left[i] / (expected * d[i]), 1, 6 * unitRoundoff) << build << ' ' << n;
            }
        }
}

} // namespace
} // namespace qrv::test
