// Packed operands of every plan, float by float, and its micro-kernel on them: nothing written or read elsewhere.
#include "support/packing.hpp"
#include "support/subjects.hpp"

namespace qrv::test {
namespace {

using Plan = GemmPlan<float>;

int fill_up(int x, int unit) {
    return (x + unit - 1) / unit * unit;
}

// A packed operand: panels of `unit` lanes, rows of op(A) or columns of op(B), with a gap behind each.
struct Packed {
    int stride;
    PackBuffer buffer;
    Packed(int lanes, int k, int unit, const Plan& plan)
        : stride(unit * fill_up(k, plan.kUnit) + 8), buffer((lanes + unit - 1) / unit * stride) {}
};
struct PackedA : Packed {
    template <class Matrix>
    PackedA(const Plan& plan, char option, int m, int k, float alpha, const Matrix& a)
        : Packed(m, k, plan.mUnit, plan) {
        const int lda = a.ld();
        (is_transposed(option) ? plan.copyAT : plan.copyAN)(&m, &k, a.data(), &lda, buffer.data(), &stride, &alpha);
    }
};
struct PackedB : Packed {
    template <class Matrix>
    PackedB(const Plan& plan, char option, int k, int n, const Matrix& b) : Packed(n, k, plan.nUnit, plan) {
        const int ldb = b.ld();
        (is_transposed(option) ? plan.copyBT : plan.copyBN)(&k, &n, b.data(), &ldb, buffer.data(), &stride);
    }
};

// Which lane and step stand at a place of a panel of `width` lanes: all lanes of a step, or of two steps pairwise.
struct Element {
    int lane, step;
};
Element element_at(const PlanBuild& build, int place, int width) {
    if (build.pairs)
        return {place % (2 * width) / 2, place / (2 * width) * 2 + place % 2};
    return {place % width, place / width};
}

// Steps are filled up with zeros. Lanes past the last are not stored in A; in B they are zeros, up to the width of the
// last panel.
TEST(GemmLayout, PackedOperands) {
    for (const PlanBuild& build : plan_builds())
        for (const char option : transposeOptions)
            for (const int lanes : {1, 2, 3, 4, 5, 6, 7, 8, 11, 15, 16, 17, 18, 19, 20, 31, 32, 33, 38, 65})
                for (const int k : {1, 2, 3, 4, 5, 7, 8, 9, 10, 16, 17, 33})
                    for (const bool atFront : {false, true}) {
                        const Plan plan = build.loaded();
                        const int kp = fill_up(k, plan.kUnit);
                        const float alpha = lanes % 3 == 0 ? 1 : lanes % 3 == 1 ? -0.75F : infinity;
                        std::mt19937 random(7);
                        const PageMatrix a(operand(option, lanes, k, k % 3, 0).fill_random(random), atFront);
                        const PageMatrix b(operand(option, k, lanes, k % 3, 0).fill_random(random), atFront);
                        const PackedA aPacked(plan, option, lanes, k, alpha, a);
                        const PackedB bPacked(plan, option, k, lanes, b);
                        const bool t = is_transposed(option);
                        const auto check = [&](const Packed& packed, int unit, const auto& expected) {
                            for (int p = 0; p < packed.buffer.size(); ++p) {
                                const float actual = packed.buffer[p],
                                            e = expected(p / packed.stride * unit, p % packed.stride);
                                ASSERT_TRUE(std::isnan(e) ? std::isnan(actual) : actual == e)
                                    << build << ' ' << option << " lanes=" << lanes << " k=" << k << " alpha=" << alpha
                                    << " unit=" << unit << " at float " << p << ": " << actual << " for " << e;
                            }
                        };
                        check(aPacked, plan.mUnit, [&](int first, int place) {
                            const auto [lane, l] = element_at(build, place, plan.mUnit);
                            const int i = first + lane;
                            return i >= lanes || l >= kp ? nan : l < k ? alpha * (t ? a(l, i) : a(i, l)) : 0;
                        });
                        check(bPacked, plan.nUnit, [&](int first, int place) {
                            const int width = lanes - first > 2 ? plan.nUnit : 2;
                            const auto [lane, l] = element_at(build, place, width);
                            const int j = first + lane;
                            return l >= kp ? nan : j < lanes && l < k ? (t ? b(j, l) : b(l, j)) : 0;
                        });
                    }
}

// Infinity times a zero alpha goes in as it is.
TEST(GemmLayout, AlphaIsMultipliedInWhateverItIs) {
    for (const PlanBuild& build : plan_builds()) {
        GuardedMatrix a(6, 5, 8);
        const PackedA packed(build.loaded(), 'N', 6, 5, 0, a.fill(infinity));
        for (const int p : {0, 3, packed.stride, packed.stride + 1})
            EXPECT_TRUE(std::isnan(packed.buffer[p])) << build << ' ' << p;
    }
}

// A product through copy and micro-kernel, in memory full of NaN that ends at a page.
GuardedMatrix micro_product(const Plan& plan, MicroForm form, const GemmCase& x) {
    const GemmShape& p = x.p;
    const int kp = fill_up(p.k, plan.kUnit);
    const PackedA a(plan, p.transa, p.m, p.k, p.alpha, x.a);
    PackBuffer sliver(kp * plan.nUnit * plan.smallFactor);
    GuardedMatrix c = x.before;
    const int ldb = x.b.ld(), ldc = c.ld();
    const float beta = plan.microScalesC ? p.beta : nan;
    const auto multiply = [&](int k, const float* b, int stride) {
        plan.micro(&p.transa, &p.transb, &p.m, &p.n, &k, &nan, a.buffer.data(), &a.stride, b, &stride, &beta, c.data(),
                   &ldc, sliver.data(), form);
    };
    if (form == MicroForm::packedB) {
        const PackedB b(plan, p.transb, p.k, p.n, x.b);
        multiply(kp, b.buffer.data(), b.stride);
    } else {
        multiply(p.k, x.b.data(), ldb);
    }
    return c;
}

TEST(GemmLayout, MicroKernelReadsOnlyWhatWasPacked) {
    for (const PlanBuild& build : plan_builds()) {
        const Plan plan = build.loaded();
        const auto check = [&](char tb, int m, int n, int k) {
            const GemmCase x({m % 2 ? 'N' : 'T', tb, m, n, k, 0.5F, 1, 0, k % 4, n % 3, 0, n % 4, m % 4});
            const GemmReference reference = x.reference();
            for (const MicroForm form : {MicroForm::packedB, MicroForm::directB}) {
                const GuardedMatrix c = micro_product(plan, form, x);
                const double error = reference.error(c);
                ASSERT_TRUE(error <= 1 && c.guards_intact())
                    << build << ' ' << x.p << " form=" << static_cast<int>(form) << " error=" << error;
            }
        };
        for (const char tb : transposeOptions) {
            for (int m = 1; m <= 37; ++m)
                for (int n = 1; n <= 21; ++n) {
                    check(tb, m, n, 1 + (m + n) % 9);
                    check(tb, m, n, 28 + (m + 3 * n) % 9);
                }
            for (const int k : {254, 255, 256, 257, 258, 287, 288, 511, 512, 513, 546})
                check(tb, 14, 15, k);
        }
    }
}

// Rows and columns at an edge of the 4 x 4 tile are summed like the others, so a result does not depend on where an
// element lies.
TEST(GemmLayout, EdgesSumLikeTiles) {
    for (const PlanBuild& build : plan_builds())
        for (const char option : transposeOptions) {
            if (build.pairs)
                continue;
            const auto product = [&](int m, int n) {
                GemmCase x({'N', option, 24, 24, 150});
                x.p.m = m;
                x.p.n = n;
                x.before.fill(0);
                return micro_product(build.loaded(), MicroForm::directB, x);
            };
            const GuardedMatrix whole = product(24, 24);
            for (const auto& [m, n] : {std::pair{23, 23}, {22, 22}, {21, 21}, {13, 9}, {7, 3}, {3, 2}, {1, 1}}) {
                const GuardedMatrix part = product(m, n);
                int different = 0;
                for (int j = 0; j < n; ++j)
                    for (int i = 0; i < m; ++i)
                        different += part(i, j) != whole(i, j);
                EXPECT_EQ(different, 0) << build << ' ' << option << " m=" << m << " n=" << n;
            }
        }
}

} // namespace
} // namespace qrv::test
