// What every serial GEMM must hold to, whatever its design: the product on each side of every block edge, any
// alignment and leading dimension, what may be read and written, and where NaN and infinity go.
//
// Runs the kernels of all builds, and the blocked core with each plan row and vector form that this machine would not
// choose by itself.
#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

#include "support/builds.hpp"
#include "support/guard_page.hpp"
#include "support/matrices.hpp"
#include "support/plans.hpp"

namespace qrv::test {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr char options[] = {'N', 'T'};

struct Subject {
    std::string name;
    std::function<void(QRV_GEMM_PARAMETERS(float))> sgemm;
};

const std::vector<Subject>& subjects() {
    static const std::vector<Subject> all = [] {
        std::vector<Subject> list;
        for (const GemmBuild& build : gemm_builds())
            list.push_back({build.name, build.sgemm});
        for (const PlanBuild& build : plan_builds())
            list.push_back({build.name, [build](QRV_GEMM_PARAMETERS(float)) {
                                GemmPlan<float> plan{};
                                build.load(&plan);
                                EXPECT_EQ(build.blocked(QRV_GEMM_ARGUMENTS, GemmMode::choose, &plan), 0);
                            }});
        return list;
    }();
    return all;
}

// Residues of the leading dimensions, and starts in floats past a 64-byte boundary.
struct Layout {
    int lda = 0, ldb = 0, ldc = 0;
    int a = 0, b = 0, c = 0;
};

struct Case {
    char transa, transb;
    int m, n, k;
    float alpha = 1, beta = 1;
    Layout layout = {};
};

// The operands of one case; each subject gets the same C.
class Problem {
public:
    explicit Problem(const Case& p)
        : p_(p), a_(matrix(p.transa, p.m, p.k, p.layout.lda, p.layout.a)),
          b_(matrix(p.transb, p.k, p.n, p.layout.ldb, p.layout.b)),
          before_(p.m, p.n, ld(p.m, p.layout.ldc), p.layout.c), c_(before_) {
        std::mt19937 random(11);
        a_.fill_random(random);
        b_.fill_random(random);
        before_.fill_random(random);
    }

    GuardedMatrix& a() { return a_; }
    GuardedMatrix& b() { return b_; }
    GuardedMatrix& before() { return before_; }
    const GuardedMatrix& c() const { return c_; }
    float& a(int i, int l) { return is_transposed(p_.transa) ? a_(l, i) : a_(i, l); }
    float& b(int l, int j) { return is_transposed(p_.transb) ? b_(j, l) : b_(l, j); }

    void run(const Subject& subject) {
        c_.assign(before_);
        const int lda = a_.ld(), ldb = b_.ld(), ldc = c_.ld();
        subject.sgemm(&p_.transa, &p_.transb, &p_.m, &p_.n, &p_.k, &p_.alpha, a_.data(), &lda, b_.data(), &ldb,
                      &p_.beta, c_.data(), &ldc);
        EXPECT_TRUE(c_.guards_intact()) << describe(subject);
    }

    // The product against the oracle, for every subject.
    void check() {
        const GemmReference reference(p_.transa, p_.transb, p_.k, p_.alpha, a_, b_, p_.beta, before_);
        for (const Subject& subject : subjects()) {
            run(subject);
            const double error = reference.error(c_);
            EXPECT_TRUE(error <= 1) << describe(subject) << " error=" << error;
        }
    }

    // Elements of C for which `good` does not hold.
    template <class Good>
    int count_bad(Good good) const {
        int bad = 0;
        for (int j = 0; j < p_.n; ++j)
            for (int i = 0; i < p_.m; ++i)
                bad += !good(i, j, c_(i, j));
        return bad;
    }

    std::string describe(const Subject& subject) const {
        std::ostringstream text;
        const Layout& l = p_.layout;
        text << subject.name << ' ' << p_.transa << p_.transb << " m=" << p_.m << " n=" << p_.n << " k=" << p_.k
             << " alpha=" << p_.alpha << " beta=" << p_.beta << " ld+ " << l.lda << ' ' << l.ldb << ' ' << l.ldc
             << " offsets " << l.a << ' ' << l.b << ' ' << l.c;
        return text.str();
    }

private:
    static int ld(int rows, int extra) { return std::max(1, rows) + extra; }
    static GuardedMatrix matrix(char option, int rows, int columns, int extra, int offset) {
        if (is_transposed(option))
            std::swap(rows, columns);
        return GuardedMatrix(rows, columns, ld(rows, extra), offset);
    }

    Case p_;
    GuardedMatrix a_, b_, before_, c_;
};

void check(const Case& p) {
    Problem(p).check();
}

// ---- Shapes --------------------------------------------------------------------------------------------------------

TEST(GemmContract, SmallShapes) {
    for (const char ta : options)
        for (const char tb : options)
            for (int m = 0; m <= 9; ++m)
                for (int n = 0; n <= 9; ++n)
                    for (int k = 0; k <= 9; ++k)
                        check({ta, tb, m, n, k, 1.5F, (m + n + k) % 3 * 0.5F, {m % 3, k % 4, n % 4, 1, 2, k % 4}});
}

// Tiles, passes and blocks of k, one direction at a time; the others are no multiples of anything.
TEST(GemmContract, BlockEdges) {
    const int edges[] = {10,  12,  15,  16,  17,  31,  32,  33,  47,  48,  49,  63,  64,  65,  79,  80,  81,
                         127, 128, 129, 149, 150, 151, 152, 153, 255, 256, 257, 300, 510, 511, 512, 513, 514};
    for (const char ta : options)
        for (const char tb : options)
            for (const int edge : edges) {
                check({ta, tb, edge, 21, 27, 1, 1, {1, 2, 3, 0, 0, 0}});
                check({ta, tb, 26, edge, 19, -1, 0, {0, 0, 0, 1, 2, 3}});
                check({ta, tb, 22, 19, edge, 2, 0.5F, {3, 1, 2, 0, 3, 1}});
            }
}

TEST(GemmContract, AllDirectionsAtOnce) {
    for (const char ta : options)
        for (const char tb : options)
            for (const int edge : {31, 32, 33, 63, 64, 65, 129, 151})
                for (const int depth : {edge, 257})
                    check({ta, tb, edge, edge + 1, depth, 0.75F, 0.25F});
}

// Blocks of rows, of 240 and 480 columns, and of 5000.
TEST(GemmContract, LargeBlocks) {
    for (const char ta : options)
        for (const char tb : options)
            for (const int around : {-1, 0, 1}) {
                for (const int mb : {768, 896, 1024, 1280, 2000})
                    check({ta, tb, mb + around, 9, 17, 1, 1, {1, 0, 1, 0, 0, 1}});
                for (const int nb : {240, 480, 5000})
                    check({ta, tb, 11, nb + around, 10, 1, 1, {0, 1, 2, 3, 0, 0}});
            }
}

// Every position of A, B and C modulo 16 bytes with every residue of a leading dimension. The larger shape is past
// the sizes that some builds do without packing.
TEST(GemmContract, AnyAlignment) {
    for (const char ta : options)
        for (const char tb : options)
            for (int offsets = 0; offsets < 64; ++offsets)
                for (int residue = 0; residue < 4; ++residue) {
                    const Layout layout{(residue + offsets) % 4,
                                        (residue + offsets / 4) % 4,
                                        residue,
                                        offsets % 4,
                                        offsets / 4 % 4,
                                        offsets / 16};
                    check({ta, tb, 21, 11, 14, 1, 1, layout});
                    if (offsets % 5 == residue)
                        check({ta, tb, 44, 36, 83, 1, 0.5F, layout});
                }
}

TEST(GemmContract, OnlyNMeansNoTranspose) {
    for (const char option : {'n', 't', 'c', 'C'})
        for (const int size : {7, 70}) {
            check({option, 'N', size, size + 1, size + 2});
            check({'N', option, size, size + 1, size + 2});
        }
}

// ---- What is read and written --------------------------------------------------------------------------------------

struct Shape {
    int m, n, k;
};
// Unpacked, edges only, blocked, and several blocks deep.
constexpr Shape shapes[] = {{1, 1, 1},    {3, 2, 5},    {5, 9, 3},     {8, 8, 8},
                            {22, 17, 13}, {41, 50, 70}, {70, 66, 130}, {20, 12, 300}};

TEST(GemmContract, AlphaZeroReadsNeitherAnorB) {
    for (const Shape& s : shapes)
        for (const float beta : {0.0F, 1.0F, -0.5F}) {
            Problem problem({'N', 'T', s.m, s.n, s.k, 0, beta, {1, 1, 1, 0, 0, 1}});
            problem.a().fill(nan);
            problem.b().fill(nan);
            for (const Subject& subject : subjects()) {
                problem.run(subject);
                EXPECT_EQ(problem.count_bad([&](int i, int j, float c) { return c == beta * problem.before()(i, j); }),
                          0)
                    << problem.describe(subject);
            }
        }
}

TEST(GemmContract, BetaZeroNeverReadsC) {
    for (const char ta : options)
        for (const char tb : options)
            for (const Shape& s : shapes)
                for (const float before : {nan, infinity}) {
                    Problem problem({ta, tb, s.m, s.n, s.k, 1.5F, 0, {0, 1, 2, 1, 0, 3}});
                    problem.before().fill(before);
                    problem.check();
                    for (const Case& zero : {Case{ta, tb, s.m, s.n, s.k, 0, 0}, Case{ta, tb, s.m, s.n, 0, 1, 0}}) {
                        Problem zeroed(zero);
                        zeroed.before().fill(before);
                        zeroed.check();
                    }
                }
}

TEST(GemmContract, DepthZeroScalesC) {
    for (const Shape& s : shapes)
        for (const float beta : {0.0F, 1.0F, -0.5F}) {
            Problem problem({'T', 'N', s.m, s.n, 0, 2, beta, {0, 0, 1, 0, 0, 1}});
            for (const Subject& subject : subjects()) {
                problem.run(subject);
                EXPECT_EQ(problem.count_bad([&](int i, int j, float c) { return c == beta * problem.before()(i, j); }),
                          0)
                    << problem.describe(subject);
            }
        }
}

// Operands next to pages that must not be touched. Whole numbers make every order of summation exact.
TEST(GemmContract, NothingIsTouchedOutsideTheOperands) {
    for (const Subject& subject : subjects())
        for (const bool atFront : {false, true})
            for (const char ta : options)
                for (const char tb : options)
                    for (const int m : {1, 2, 3, 4, 5, 7, 8, 18, 35, 83})
                        for (const int n : {1, 2, 3, 5, 8, 15, 41})
                            for (const int k : {1, 2, 3, 5, 8, 18, 67}) {
                                FencedOperand a(is_transposed(ta), m, k, atFront), b(is_transposed(tb), k, n, atFront);
                                FencedOperand c(false, m, n, atFront), before(false, m, n, atFront);
                                const float alpha = 2, beta = 1;
                                subject.sgemm(&ta, &tb, &m, &n, &k, &alpha, a.data(), a.ld(), b.data(), b.ld(), &beta,
                                              c.data(), c.ld());
                                int wrong = 0;
                                for (int j = 0; j < n; ++j)
                                    for (int i = 0; i < m; ++i) {
                                        float sum = before(i, j);
                                        for (int l = 0; l < k; ++l)
                                            sum += 2 * a(i, l) * b(l, j);
                                        wrong += !(c(i, j) == sum);
                                    }
                                ASSERT_EQ(wrong, 0) << subject.name << ' ' << ta << tb << " m=" << m << " n=" << n
                                                    << " k=" << k << " atFront=" << atFront;
                            }
}

// ---- NaN and infinity ----------------------------------------------------------------------------------------------

// One element of A that is not finite reaches its row of C and no other element, one of B its column. Shapes have an
// odd depth, and edges in each direction.
class GemmSpecials : public testing::TestWithParam<Shape> {
protected:
    template <class Place>
    static void each_place(const Shape& s, Place place) {
        for (const char ta : options)
            for (const char tb : options) {
                const int step = s.m > 50 ? 7 : 1;
                for (int hit = 0; hit < s.m + s.n; hit += step)
                    place(ta, tb, hit, (hit * 5 + 3) % s.k);
                for (int l = 0; l < s.k; l += step)
                    place(ta, tb, l * 3 % (s.m + s.n), l);
            }
    }
};

TEST_P(GemmSpecials, ReachExactlyWhatDependsOnThem) {
    const Shape s = GetParam();
    each_place(s, [&](char ta, char tb, int hit, int l) {
        const bool inA = hit < s.m;
        for (const float value : {nan, infinity, -infinity}) {
            Problem problem({ta, tb, s.m, s.n, s.k, -2, 1, {1, 0, 3, 0, 1, 2}});
            const auto factor = [&](int i, int j) { return inA ? problem.b(l, j) : problem.a(i, l); };
            const auto good = [&](int i, int j, float c) {
                if ((inA ? i : j + s.m) != hit)
                    return std::isfinite(c);
                return std::isnan(value) ? std::isnan(c) : c == -value * std::copysign(1.0F, factor(i, j));
            };
            (inA ? problem.a(hit, l) : problem.b(l, hit - s.m)) = value;
            for (const Subject& subject : subjects()) {
                problem.run(subject);
                EXPECT_EQ(problem.count_bad(good), 0)
                    << problem.describe(subject) << ' ' << value << " hit=" << hit << " l=" << l;
            }
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Shapes, GemmSpecials, testing::Values(Shape{7, 5, 3}, Shape{23, 19, 13}, Shape{83, 59, 71}));

// A zero in one operand does not hide a NaN in the other: no product is left out.
TEST(GemmContract, ZeroTimesNanIsNan) {
    for (const Shape& s : shapes)
        for (const bool inA : {false, true}) {
            Problem problem({'N', 'N', s.m, s.n, s.k});
            (inA ? problem.a() : problem.b()).fill(0);
            (inA ? problem.b() : problem.a()).fill(nan);
            for (const Subject& subject : subjects()) {
                problem.run(subject);
                EXPECT_EQ(problem.count_bad([](int, int, float c) { return std::isnan(c); }), 0)
                    << problem.describe(subject);
            }
        }
}

// What C holds stays in its element, scaled.
TEST(GemmContract, NanInCStaysInItsElement) {
    for (const Shape& s : shapes)
        for (const float beta : {1.0F, 2.0F}) {
            Problem problem({'N', 'T', s.m, s.n, s.k, 1, beta});
            problem.before()(s.m - 1, s.n / 2) = nan;
            problem.before()(0, 0) = infinity;
            for (const Subject& subject : subjects()) {
                problem.run(subject);
                EXPECT_EQ(problem.count_bad([&](int i, int j, float c) {
                    if (i == s.m - 1 && j == s.n / 2)
                        return s.m * s.n == 1 ? c == infinity : std::isnan(c);
                    return i == 0 && j == 0 ? c == infinity : std::isfinite(c);
                }),
                          0)
                    << problem.describe(subject);
            }
        }
}

} // namespace
} // namespace qrv::test
