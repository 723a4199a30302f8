// The SGEMM of the ssse3 build that takes k in pairs: its layouts float by float and its micro-kernel. A processor that
// has SSE4.1 never chooses this row by itself, so it is loaded by number.
#include <gtest/gtest.h>

#include "blas/kernel/gemm_plan_pieces.hpp"
#include "support/builds.hpp"
#include "support/guard_page.hpp"
#include "support/packing.hpp"

namespace qrv::test {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr char options[] = {'N', 'T'};

int even(int k) {
    return (k + 1) / 2 * 2;
}

class GemmPairs : public testing::Test {
protected:
    void SetUp() override {
        if (cpu_type_of(cpuid(1)) < 4)
            GTEST_SKIP() << "this processor has no SSSE3";
        kernel::ssse3::load_row(0, &plan);
    }

    void pack_a(char option, int m, int k, float alpha, const GuardedMatrix& a, PackBuffer& buffer, int stride) const {
        const int lda = a.ld();
        (is_transposed(option) ? plan.copyAT : plan.copyAN)(&m, &k, a.data(), &lda, buffer.data(), &stride, &alpha);
    }
    void pack_b(char option, int k, int n, const GuardedMatrix& b, PackBuffer& buffer, int stride) const {
        const int ldb = b.ld();
        (is_transposed(option) ? plan.copyBT : plan.copyBN)(&k, &n, b.data(), &ldb, buffer.data(), &stride);
    }

    GemmPlan<float> plan{};
};

TEST_F(GemmPairs, PackedAStandsInPairsOfSteps) {
    for (const char option : options)
        for (const int m : {1, 2, 3, 4, 5, 6, 7, 8, 15, 16, 17, 23, 37})
            for (const int k : {1, 2, 3, 4, 5, 8, 9, 33})
                for (const float alpha : {1.0F, -0.75F, infinity}) {
                    const GuardedMatrix a = operand(option, m, k);
                    const int stride = 4 * even(k) + 8;
                    PackBuffer buffer(static_cast<std::size_t>((m + 3) / 4 * stride + 8));
                    pack_a(option, m, k, alpha, a, buffer, stride);
                    for (int p = 0; p < static_cast<int>(buffer.size()); ++p) {
                        const int inPanel = p % stride;
                        const int i = p / stride * 4 + inPanel % 8 / 2, l = inPanel / 8 * 2 + inPanel % 2;
                        const float expected = i >= m || l >= even(k) ? nan
                                               : l < k                ? alpha * element(a, option, i, l)
                                                                      : 0;
                        ASSERT_TRUE(holds(buffer[static_cast<std::size_t>(p)], expected))
                            << option << " m=" << m << " k=" << k << " alpha=" << alpha << " at float " << p;
                    }
                }
}

TEST_F(GemmPairs, PackedBStandsInPairsOfSteps) {
    for (const char option : options)
        for (const int n : {1, 2, 3, 4, 7, 15, 16, 17, 37})
            for (const int k : {1, 2, 3, 4, 5, 8, 9, 33}) {
                const GuardedMatrix b = operand(option, k, n);
                const int stride = 2 * even(k) + 4;
                PackBuffer buffer(static_cast<std::size_t>((n + 1) / 2 * stride + 8));
                pack_b(option, k, n, b, buffer, stride);
                for (int p = 0; p < static_cast<int>(buffer.size()); ++p) {
                    const int inPanel = p % stride;
                    const int j = p / stride * 2 + inPanel % 4 / 2, l = inPanel / 4 * 2 + inPanel % 2;
                    const bool written = p / stride * 2 < n && l < even(k);
                    const float expected = !written ? nan : j < n && l < k ? element(b, option, l, j) : 0;
                    ASSERT_TRUE(holds(buffer[static_cast<std::size_t>(p)], expected))
                        << option << " n=" << n << " k=" << k << " at float " << p;
                }
            }
}

// One product through copy and micro routines, with B as a micro form takes it: 'P' packed, else in place.
struct MicroCase {
    char transa, transb;
    MicroForm form;
    int m, n, k;
    int ldcExtra, offset;
};

class GemmPairsMicro : public GemmPairs {
protected:
    // The sliver as the call left it.
    PackBuffer check(const MicroCase& p) const {
        const int kp = even(p.k), aStride = 4 * kp + 8, bStride = 2 * kp + 4;
        const GuardedMatrix a = operand(p.transa, p.m, p.k), b = operand(p.transb, p.k, p.n);
        PackBuffer aPacked(static_cast<std::size_t>((p.m + 3) / 4 * aStride));
        PackBuffer bPacked(static_cast<std::size_t>((p.n + 1) / 2 * bStride));
        PackBuffer sliver(static_cast<std::size_t>(16 * kp + 128));
        const float alpha = 0.5F, unused = nan;
        pack_a(p.transa, p.m, p.k, alpha, a, aPacked, aStride);
        std::mt19937 random(3);
        GuardedMatrix c(p.m, p.n, p.m + p.ldcExtra, p.offset);
        c.fill_random(random);
        const GuardedMatrix before = c;
        const int ldb = b.ld(), ldc = c.ld();
        if (p.form == MicroForm::packedB) {
            pack_b(p.transb, p.k, p.n, b, bPacked, bStride);
            plan.micro(&p.transa, &p.transb, &p.m, &p.n, &kp, &unused, aPacked.data(), &aStride, bPacked.data(),
                       &bStride, &unused, c.data(), &ldc, sliver.data(), p.form);
        } else {
            plan.micro(&p.transa, &p.transb, &p.m, &p.n, &p.k, &unused, aPacked.data(), &aStride, b.data(), &ldb,
                       &unused, c.data(), &ldc, sliver.data(), p.form);
        }
        const double error = gemm_error(p.transa, p.transb, p.k, alpha, a, b, 1, before, c);
        EXPECT_TRUE(error <= 1 && c.guards_intact())
            << p.transa << p.transb << " form=" << static_cast<int>(p.form) << " m=" << p.m << " n=" << p.n
            << " k=" << p.k << " ldc+" << p.ldcExtra << " offset=" << p.offset << " error=" << error;
        return sliver;
    }
};

constexpr MicroForm forms[] = {MicroForm::packedB, MicroForm::directB};

TEST_F(GemmPairsMicro, SliverHoldsEachPairTwice) {
    for (const MicroForm form : forms)
        for (const char option : options)
            for (const int n : {1, 2, 4, 8})
                for (const int k : {1, 2, 3, 8, 9, 31}) {
                    const int kp = even(k);
                    const GuardedMatrix b = operand(option, k, n);
                    const PackBuffer sliver = check({'N', option, form, 4, n, k, 0, 0});
                    for (int p = 0; p < static_cast<int>(sliver.size()); ++p) {
                        const int part = p / (4 * kp), inPart = p % (4 * kp);
                        const int j = 2 * part + inPart % 8 / 4, l = inPart / 8 * 2 + inPart % 2;
                        const float expected = 2 * part >= n ? nan : j < n && l < k ? element(b, option, l, j) : 0;
                        ASSERT_TRUE(holds(sliver[static_cast<std::size_t>(p)], expected))
                            << option << " form=" << static_cast<int>(form) << " n=" << n << " k=" << k << " at float "
                            << p;
                    }
                }
}

TEST_F(GemmPairsMicro, AllSmallShapes) {
    for (const MicroForm form : forms)
        for (const char transb : options)
            for (int m = 1; m <= 9; ++m)
                for (int n = 1; n <= 17; ++n)
                    for (const int k : {1, 2, 3, 4, 7, 31, 32, 33, 34, 63, 64, 65})
                        check({m % 2 ? 'N' : 'T', transb, form, m, n, k, (m + n) % 4, (n + k) % 4});
}

TEST_F(GemmPairsMicro, DeepBlocks) {
    for (const MicroForm form : forms)
        for (const char transa : options)
            for (const char transb : options)
                for (const int k : {254, 255, 256, 257, 258, 287, 288, 511, 512, 513, 546})
                    check({transa, transb, form, 14, 15, k, 1, 3});
}

TEST_F(GemmPairsMicro, NothingIsTouchedOutsideTheOperands) {
    for (const bool atFront : {false, true})
        for (const bool transposed : {false, true})
            for (const int m : {1, 2, 3, 4, 7, 16, 21})
                for (const int n : {1, 2, 3, 5, 8, 15, 18})
                    for (const int k : {1, 2, 3, 8, 33}) {
                        FencedOperand a(transposed, m, k, atFront), b(transposed, k, n, atFront);
                        FencedOperand c(false, m, n, atFront), before(false, m, n, false);
                        const int kp = even(k), aStride = 4 * kp, bStride = 2 * kp;
                        const float alpha = 2;
                        PackBuffer aPacked(static_cast<std::size_t>((m + 3) / 4 * aStride));
                        PackBuffer bPacked(static_cast<std::size_t>((n + 1) / 2 * bStride));
                        PackBuffer sliver(static_cast<std::size_t>(16 * kp));
                        (transposed ? plan.copyAT : plan.copyAN)(&m, &k, a.data(), a.ld(), aPacked.data(), &aStride,
                                                                 &alpha);
                        (transposed ? plan.copyBT : plan.copyBN)(&k, &n, b.data(), b.ld(), bPacked.data(), &bStride);
                        plan.micro("N", transposed ? "T" : "N", &m, &n, &k, &alpha, aPacked.data(), &aStride, b.data(),
                                   b.ld(), &alpha, c.data(), c.ld(), sliver.data(), MicroForm::directB);
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < m; ++i) {
                                float sum = before(i, j);
                                for (int l = 0; l < k; ++l)
                                    sum += 2 * a(i, l) * b(l, j);
                                ASSERT_EQ(c(i, j), sum) << transposed << " m=" << m << " n=" << n << " k=" << k;
                            }
                    }
}

TEST_F(GemmPairsMicro, OnlyNMeansNoTranspose) {
    for (const char option : {'n', 't', 'C', 'c'})
        check({'N', option, MicroForm::directB, 7, 9, 11, 0, 0});
}

} // namespace
} // namespace qrv::test
