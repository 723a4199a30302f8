// Packed operands and micro-kernels of the 4 x 4 plans: layouts float by float, nothing written or read elsewhere.
#include <gtest/gtest.h>

#include "support/guard_page.hpp"
#include "support/packing.hpp"
#include "support/plans.hpp"

namespace qrv::test {
namespace {

constexpr char options[] = {'N', 'T'};

int by_fours(int x) {
    return (x + 3) / 4 * 4;
}

// The plans with panels of four columns and steps of four floats.
std::vector<PlanBuild> tile_builds() {
    std::vector<PlanBuild> builds;
    for (const PlanBuild& build : plan_builds()) {
        GemmPlan<float> plan{};
        build.load(&plan);
        if (plan.nUnit == 4)
            builds.push_back(build);
    }
    return builds;
}

class GemmPack : public testing::TestWithParam<PlanBuild> {
protected:
    void SetUp() override { GetParam().load(&plan); }

    auto* copy_a(char option) const { return is_transposed(option) ? plan.copyAT : plan.copyAN; }
    auto* copy_b(char option) const { return is_transposed(option) ? plan.copyBT : plan.copyBN; }

    GemmPlan<float> plan{};
};

TEST_P(GemmPack, PanelsOfA) {
    for (const char option : options)
        for (const int m : {1, 2, 3, 4, 5, 7, 8, 12, 15, 16, 17, 18, 19, 20, 31, 32, 33, 38, 65})
            for (const int k : {1, 2, 3, 4, 5, 7, 8, 9, 16, 17, 33})
                for (const float alpha : {1.0F, -0.75F}) {
                    const GuardedMatrix a = operand(option, m, k);
                    const int lda = a.ld(), stride = 4 * by_fours(k) + 8;
                    PackBuffer buffer(static_cast<std::size_t>((m + 3) / 4 * stride));
                    copy_a(option)(&m, &k, a.data(), &lda, buffer.data(), &stride, &alpha);
                    for (int p = 0; p < static_cast<int>(buffer.size()); ++p) {
                        const int i = p / stride * 4 + p % stride % 4, l = p % stride / 4;
                        const float expected = i >= m || l >= by_fours(k) ? nan
                                               : l < k                    ? alpha * element(a, option, i, l)
                                                                          : 0;
                        ASSERT_TRUE(holds(buffer[static_cast<std::size_t>(p)], expected))
                            << option << " m=" << m << " k=" << k << " alpha=" << alpha << " at float " << p;
                    }
                }
}

TEST_P(GemmPack, PanelsOfB) {
    for (const char option : options)
        for (const int n : {1, 2, 3, 4, 5, 6, 7, 8, 11, 16, 17, 18, 19, 33})
            for (const int k : {1, 2, 3, 4, 5, 7, 8, 9, 16, 17, 33}) {
                const GuardedMatrix b = operand(option, k, n);
                const int ldb = b.ld(), stride = 4 * by_fours(k) + 8;
                PackBuffer buffer(static_cast<std::size_t>((n + 3) / 4 * stride));
                copy_b(option)(&k, &n, b.data(), &ldb, buffer.data(), &stride);
                for (int p = 0; p < static_cast<int>(buffer.size()); ++p) {
                    const int first = p / stride * 4;
                    const int width = n - first >= 3 ? 4 : 2; // of this panel
                    const int j = first + p % stride % width, l = p % stride / width;
                    const float expected = l >= by_fours(k) ? nan : j < n && l < k ? element(b, option, l, j) : 0;
                    ASSERT_TRUE(holds(buffer[static_cast<std::size_t>(p)], expected))
                        << option << " n=" << n << " k=" << k << " at float " << p;
                }
            }
}

// Infinity times a zero alpha and NaN go in as they are.
TEST_P(GemmPack, AlphaIsMultipliedInWhateverItIs) {
    const int m = 6, k = 5, lda = 8, stride = 32;
    GuardedMatrix a(m, k, lda);
    a.fill(std::numeric_limits<float>::infinity());
    const float alpha = 0;
    PackBuffer buffer(2 * stride);
    plan.copyAN(&m, &k, a.data(), &lda, buffer.data(), &stride, &alpha);
    for (const std::size_t p : {0, 3, 19, 32, 33})
        EXPECT_TRUE(std::isnan(buffer[p])) << p;
}

TEST_P(GemmPack, NothingIsReadOutsideTheOperands) {
    for (const bool atFront : {false, true})
        for (const char option : options)
            for (int lanes = 1; lanes <= 21; ++lanes)
                for (const int k : {1, 2, 3, 4, 5, 7, 10}) {
                    FencedOperand a(is_transposed(option), lanes, k, atFront),
                        b(is_transposed(option), k, lanes, atFront);
                    const int stride = 4 * by_fours(k);
                    const float alpha = 2;
                    PackBuffer aPacked(static_cast<std::size_t>(24 * by_fours(k)));
                    PackBuffer bPacked(static_cast<std::size_t>(24 * by_fours(k)));
                    copy_a(option)(&lanes, &k, a.data(), a.ld(), aPacked.data(), &stride, &alpha);
                    copy_b(option)(&k, &lanes, b.data(), b.ld(), bPacked.data(), &stride);
                    // The micro-kernel reads B in place, and C up to its last element.
                    const int m = 11;
                    FencedOperand rows(false, m, k, false);
                    PackBuffer rowsPacked(static_cast<std::size_t>(12 * by_fours(k)));
                    plan.copyAN(&m, &k, rows.data(), rows.ld(), rowsPacked.data(), &stride, &alpha);
                    PackBuffer sliver(static_cast<std::size_t>(4 * plan.smallFactor * by_fours(k) + 128));
                    GuardPageArray c(static_cast<std::size_t>(m * lanes), atFront);
                    plan.micro(&option, &option, &m, &lanes, &k, &alpha, rowsPacked.data(), &stride, b.data(), b.ld(),
                               &alpha, c.data(), &m, sliver.data(), MicroForm::directB);
                    for (int j = 0; j < lanes; ++j)
                        for (int i = 0; i < m; ++i) {
                            float sum = 0;
                            for (int l = 0; l < k; ++l)
                                sum += 2 * rows(i, l) * b(l, j);
                            ASSERT_EQ(c.data()[i + j * m], sum) << option << " n=" << lanes << " k=" << k;
                        }
                }
}

// The micro-kernel reads of its packed operands what the packing wrote: here all else is NaN. Small whole numbers
// make every order of summation exact, so C must be equal.
TEST_P(GemmPack, MicroKernelReadsOnlyWhatWasPacked) {
    for (const MicroForm form : {MicroForm::packedB, MicroForm::directB})
        for (const char option : options)
            for (int m = 1; m <= 35; ++m)
                for (int n = 1; n <= 13; ++n)
                    for (const int k : {1, 4, 7, 12, 30}) {
                        const int kp = by_fours(k), stride = 4 * kp + 8;
                        GuardedMatrix a = operand('N', m, k), b = operand(option, k, n);
                        for (GuardedMatrix* x : {&a, &b})
                            for (int j = 0; j < x->columns(); ++j)
                                for (int i = 0; i < x->rows(); ++i)
                                    (*x)(i, j) = static_cast<float>((i * 5 + j * 3) % 8 - 4);
                        PackBuffer aPacked(static_cast<std::size_t>((m + 3) / 4 * stride + 8));
                        PackBuffer bPacked(static_cast<std::size_t>((n + 3) / 4 * stride + 8));
                        PackBuffer sliver(static_cast<std::size_t>(4 * plan.smallFactor * kp + 128));
                        const int lda = a.ld(), ldb = b.ld();
                        const float alpha = 1, unused = nan, beta = plan.microScalesC ? 1 : nan;
                        plan.copyAN(&m, &k, a.data(), &lda, aPacked.data(), &stride, &alpha);
                        copy_b(option)(&k, &n, b.data(), &ldb, bPacked.data(), &stride);
                        GuardedMatrix c(m, n, m + n % 3, m % 4);
                        c.fill(1);
                        const int ldc = c.ld();
                        if (form == MicroForm::packedB)
                            plan.micro("N", &option, &m, &n, &kp, &unused, aPacked.data(), &stride, bPacked.data(),
                                       &stride, &beta, c.data(), &ldc, sliver.data(), form);
                        else
                            plan.micro("N", &option, &m, &n, &k, &unused, aPacked.data(), &stride, b.data(), &ldb,
                                       &beta, c.data(), &ldc, sliver.data(), form);
                        int wrong = 0;
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < m; ++i) {
                                float sum = 1;
                                for (int l = 0; l < k; ++l)
                                    sum += a(i, l) * element(b, option, l, j);
                                wrong += !(c(i, j) == sum);
                            }
                        ASSERT_TRUE(wrong == 0 && c.guards_intact())
                            << option << " form=" << static_cast<int>(form) << " m=" << m << " n=" << n << " k=" << k;
                    }
}

// Rows and columns at an edge are summed like the others, so a result does not depend on where an element lies.
TEST_P(GemmPack, EdgesSumLikeTiles) {
    const int k = 150, stride = 4 * by_fours(k);
    for (const char option : options) {
        const GuardedMatrix a = operand('N', 24, k), b = operand(option, k, 24);
        const int lda = a.ld(), ldb = b.ld();
        const float one = 1;
        PackBuffer aPacked(static_cast<std::size_t>(6 * stride));
        PackBuffer sliver(static_cast<std::size_t>(4 * plan.smallFactor * by_fours(k) + 128));
        const auto product = [&](int m, int n) {
            plan.copyAN(&m, &k, a.data(), &lda, aPacked.data(), &stride, &one);
            GuardedMatrix c(m, n, m);
            c.fill(0);
            plan.micro("N", &option, &m, &n, &k, &one, aPacked.data(), &stride, b.data(), &ldb, &one, c.data(), &m,
                       sliver.data(), MicroForm::directB);
            return c;
        };
        const GuardedMatrix whole = product(24, 24);
        for (const auto& [m, n] : {std::pair{23, 23}, {22, 22}, {21, 21}, {13, 9}, {7, 3}, {3, 2}, {1, 1}}) {
            const GuardedMatrix part = product(m, n);
            int different = 0;
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < m; ++i)
                    different += part(i, j) != whole(i, j);
            EXPECT_EQ(different, 0) << option << " m=" << m << " n=" << n;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Builds, GemmPack, testing::ValuesIn(tile_builds()), [](const auto& build) {
    std::string name = build.param.name;
    for (char& c : name)
        c = c == ' ' ? '_' : c;
    return name;
});

} // namespace
} // namespace qrv::test
