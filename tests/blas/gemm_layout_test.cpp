// Packed operands of every plan, float by float, and its micro-kernel on them: nothing written or read elsewhere.
#include "support/packing.hpp"
#include "support/subjects.hpp"

namespace qrv::test {
namespace {

template <class T>
class GemmLayout : public testing::Test {};
TYPED_TEST_SUITE(GemmLayout, Elements);

int fill_up(int x, int unit) {
    return (x + unit - 1) / unit * unit;
}

// A packed operand: panels of `unit` lanes, rows of op(A) or columns of op(B), with a gap behind each.
template <class T>
struct Packed {
    int stride;
    PackBuffer<T> buffer;
    Packed(int lanes, int k, int unit, const GemmPlan<T>& plan)
        : stride(unit * fill_up(k, plan.kUnit) + 8), buffer((lanes + unit - 1) / unit * stride) {}
};
template <class T>
struct PackedA : Packed<T> {
    template <class Matrix>
    PackedA(const GemmPlan<T>& plan, char option, int m, int k, T alpha, const Matrix& a)
        : Packed<T>(m, k, plan.mUnit, plan) {
        const int lda = a.ld();
        auto* copy = !is_transposed(option) ? plan.copyAN : conjugates(option) ? plan.copyAC : plan.copyAT;
        copy(&m, &k, a.data(), &lda, this->buffer.data(), &this->stride, &alpha);
    }
};
template <class T>
struct PackedB : Packed<T> {
    template <class Matrix>
    PackedB(const GemmPlan<T>& plan, char option, int k, int n, const Matrix& b) : Packed<T>(n, k, plan.nUnit, plan) {
        const int ldb = b.ld();
        auto* copy = !is_transposed(option) ? plan.copyBN : conjugates(option) ? plan.copyBC : plan.copyBT;
        copy(&k, &n, b.data(), &ldb, this->buffer.data(), &this->stride);
    }
};

// Which lane and step stand at a place, in floats, of a panel of `width` lanes: all lanes of a step, or of two steps
// pairwise. A complex step of A has the real parts before the imaginary ones, one of B each element as it is.
struct Element {
    int lane, step, part;
};
template <class T>
Element element_at(const PlanBuild<T>& build, int place, int width, bool apart) {
    if (isComplex<T>)
        return apart ? Element{place % width, place / (2 * width), place / width % 2}
                     : Element{place / 2 % width, place / (2 * width), place % 2};
    if (build.pairs())
        return {place % (2 * width) / 2, place / (2 * width) * 2 + place % 2, 0};
    return {place % width, place / width, 0};
}
float part_of(float x, int) {
    return x;
}
float part_of(SingleComplex x, int part) {
    return part == 0 ? x.re : x.im;
}

// Steps are filled up with zeros. Lanes past the last are not stored in A; in B they are zeros, up to the width of the
// last panel.
TYPED_TEST(GemmLayout, PackedOperands) {
    using T = TypeParam;
    for (const PlanBuild<T>& build : plan_builds<T>())
        for (const char option : {'N', 'T', 'C'})
            for (const int lanes : {1, 2, 3, 4, 5, 6, 7, 8, 11, 15, 16, 17, 18, 19, 20, 31, 32, 33, 38, 65})
                for (const int k : {1, 2, 3, 4, 5, 7, 8, 9, 10, 16, 17, 33})
                    for (const bool atFront : {false, true}) {
                        const GemmPlan<T> plan = build.loaded();
                        const int kp = fill_up(k, plan.kUnit);
                        const T alpha = scalar_of<T>(lanes % 3 == 0 ? 1 : lanes % 3 == 1 ? -0.75F : infinity);
                        std::mt19937 random(7);
                        const auto a = operand<T>(option, lanes, k, k % 3, 0).fill_random(random);
                        const auto b = operand<T>(option, k, lanes, k % 3, 0).fill_random(random);
                        const PackedA<T> aPacked(plan, option, lanes, k, alpha, PageMatrix<T>(a, atFront));
                        const PackedB<T> bPacked(plan, option, k, lanes, PageMatrix<T>(b, atFront));
                        const auto check = [&](const Packed<T>& packed, int unit, const auto& expected) {
                            const int stride = packed.stride * static_cast<int>(sizeof(T) / sizeof(float));
                            for (int p = 0; p < packed.buffer.floats(); ++p) {
                                const float actual = packed.buffer[p], e = expected(p / stride * unit, p % stride);
                                ASSERT_TRUE(std::isnan(e) ? std::isnan(actual) : actual == e)
                                    << build << ' ' << option << " lanes=" << lanes << " k=" << k << " unit=" << unit
                                    << " at float " << p << ": " << actual << " for " << e;
                            }
                        };
                        check(aPacked, plan.mUnit, [&](int first, int place) {
                            const auto [lane, l, part] = element_at(build, place, plan.mUnit, true);
                            const int i = first + lane;
                            return i >= lanes || l >= kp ? nan
                                   : l < k               ? part_of(alpha * element_of(option, a, i, l), part)
                                                         : 0;
                        });
                        check(bPacked, plan.nUnit, [&](int first, int place) {
                            const int width = lanes - first > 2 ? plan.nUnit : 2;
                            const auto [lane, l, part] = element_at(build, place, width, false);
                            const int j = first + lane;
                            return l >= kp ? nan : j < lanes && l < k ? part_of(element_of(option, b, l, j), part) : 0;
                        });
                    }
}

// Infinity times a zero alpha goes in as it is.
TYPED_TEST(GemmLayout, AlphaIsMultipliedInWhateverItIs) {
    using T = TypeParam;
    for (const PlanBuild<T>& build : plan_builds<T>()) {
        BasicGuardedMatrix<T> a(6, 5, 8);
        const PackedA<T> packed(build.loaded(), 'N', 6, 5, T(), a.fill(infinity));
        const int secondPanel = packed.stride * static_cast<int>(sizeof(T) / sizeof(float));
        for (const int p : {0, 3, secondPanel, secondPanel + 1})
            EXPECT_TRUE(std::isnan(packed.buffer[p])) << build << ' ' << p;
    }
}

// A product through copy and micro-kernel, in memory full of NaN that ends at a page.
template <class T>
BasicGuardedMatrix<T> micro_product(const GemmPlan<T>& plan, MicroForm form, const GemmCase<T>& x) {
    const GemmShape& p = x.p;
    const int kp = fill_up(p.k, plan.kUnit);
    const PackedA<T> a(plan, p.transa, p.m, p.k, x.alpha, x.a);
    PackBuffer<T> sliver(kp * plan.nUnit * plan.smallFactor);
    BasicGuardedMatrix<T> c = x.before;
    const int ldb = x.b.ld(), ldc = c.ld();
    const T noAlpha = all_parts<T>(nan), beta = plan.microScalesC ? x.beta : noAlpha;
    const auto multiply = [&](int k, const T* b, int stride) {
        plan.micro(&p.transa, &p.transb, &p.m, &p.n, &k, &noAlpha, a.buffer.data(), &a.stride, b, &stride, &beta,
                   c.data(), &ldc, sliver.data(), form);
    };
    if (form == MicroForm::packedB) {
        const PackedB<T> b(plan, p.transb, p.k, p.n, x.b);
        multiply(kp, b.buffer.data(), b.stride);
    } else {
        multiply(p.k, x.b.data(), ldb);
    }
    return c;
}

TYPED_TEST(GemmLayout, MicroKernelReadsOnlyWhatWasPacked) {
    using T = TypeParam;
    for (const PlanBuild<T>& build : plan_builds<T>()) {
        const GemmPlan<T> plan = build.loaded();
        const auto check = [&](char tb, int m, int n, int k) {
            const GemmCase<T> x({m % 2 ? 'N' : 'T', tb, m, n, k, 0.5F, 1, 0, k % 4, n % 3, 0, n % 4, m % 4});
            const GemmReference<T> reference = x.reference();
            for (const MicroForm form : {MicroForm::packedB, MicroForm::directB}) {
                const BasicGuardedMatrix<T> c = micro_product(plan, form, x);
                const double error = reference.error(c);
                ASSERT_TRUE(error <= 1 && c.guards_intact())
                    << build << ' ' << x.p << " form=" << static_cast<int>(form) << " error=" << error;
            }
        };
        for (const char tb : {'N', 'T', 'C'}) {
            if (tb == 'C' && !isComplex<T>)
                continue;
            for (int m = 1; m <= 37; ++m)
                for (int n = 1; n <= 21; ++n) {
                    if (isComplex<T> && m % 3 != n % 3)
                        continue;
                    check(tb, m, n, 1 + (m + n) % 9);
                    check(tb, m, n, 28 + (m + 3 * n) % 9);
                }
            for (const int k : {127, 128, 129, 254, 255, 256, 257, 258, 287, 288, 511, 512, 513, 546})
                check(tb, 14, 15, k);
        }
    }
}

// Rows and columns at an edge of the 4 x 4 tile are summed like the others, so a result does not depend on where an
// element lies.
TYPED_TEST(GemmLayout, EdgesSumLikeTiles) {
    using T = TypeParam;
    for (const PlanBuild<T>& build : plan_builds<T>())
        for (const char option : transposeOptions) {
            if (build.pairs())
                continue;
            const auto product = [&](int m, int n) {
                GemmCase<T> x({'N', option, 24, 24, 150});
                x.p.m = m;
                x.p.n = n;
                x.before.fill(0);
                return micro_product(build.loaded(), MicroForm::directB, x);
            };
            const BasicGuardedMatrix<T> whole = product(24, 24);
            for (const auto& [m, n] : {std::pair{23, 23}, {22, 22}, {21, 21}, {13, 9}, {7, 3}, {3, 2}, {1, 1}}) {
                const BasicGuardedMatrix<T> part = product(m, n);
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
