// Sequences of rotations, on every build, against the same in double, one rotation and one line after the other.
#include "support/builds.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

struct Sequence {
    char side, pivot, direct;
    std::vector<float> c, s;

    // Of random rotations, of which every eighth one alone is nearly none, or half a turn.
    template <class Random>
    void fill(int lines, Random& random) {
        c.assign(std::size_t(std::max(lines - 1, 0)), 1), s = c;
        for (std::size_t k = 0; k < c.size(); ++k) {
            const auto kind = random() % 8;
            const double angle = random() % 4 == 0 ? 0 : 6.28 * double(random() % 1000) / 1000;
            c[k] = kind == 0 ? 1.0F : kind == 1 ? -1.0F : static_cast<float>(std::cos(angle));
            s[k] = kind == 0 ? 1e-3F : kind == 1 ? 0.0F : static_cast<float>(std::sin(angle));
        }
    }
    // One after the other, on rows from the left and on columns from the right.
    void apply(WideMatrix<float>& a) const {
        const int count = static_cast<int>(c.size());
        for (int step = 0; step < count; ++step) {
            const int k = direct == 'F' ? step : count - 1 - step, upper = pivot == 'T' ? 0 : k,
                      lower = pivot == 'B' ? count : k + 1;
            const double cosine = c[std::size_t(k)], sine = s[std::size_t(k)];
            for (int i = 0; i < (side == 'L' ? a.columns : a.rows) && (cosine != 1 || sine != 0); ++i) {
                double &x = a.values[side == 'L' ? a.at(upper, i) : a.at(i, upper)],
                       &y = a.values[side == 'L' ? a.at(lower, i) : a.at(i, lower)];
                y = cosine * y - sine * std::exchange(x, cosine * x + sine * y);
            }
        }
    }
    void run(const VectorBuild& build, Operand<float>& a) const {
        build.blas_slasr_kernel(&side, &pivot, &direct, &a.form().rows, &a.form().columns, c.data(), s.data(), a.data(),
                                &a.ld());
    }
};

template <class Body>
void each_sequence(const Body& body) {
    for (const char side : {'L', 'R'})
        for (const char pivot : {'V', 'T', 'B'})
            for (const char direct : {'F', 'B'})
                body(Sequence{side, pivot, direct, {}, {}});
}

TEST(Lasr, AllTwelveOnEveryBuild) {
    std::mt19937 random(3);
    constexpr int sizes[] = {0, 1, 2, 3, 4, 5, 8, 15, 17, 18, 33, 65, 130};
    each_sequence([&](Sequence q) {
        for (const int m : sizes)
            for (const int n : sizes) {
                q.fill(q.side == 'L' ? m : n, random);
                const int extra = static_cast<int>(random() % 3), offset = static_cast<int>(random() % 5);
                Operand<float> before(m, n, std::max(m, 1) + extra, offset);
                const double allowed = 12 * unitRoundoff * std::sqrt(double(std::max(m, n)) + 4);
                before.set([&](int, int) { return any_size_one<float>(random); });
                Expected<float> expected{WideMatrix<float>(before), std::vector<double>(std::size_t(m * n), allowed)};
                q.apply(expected.values);
                for (const VectorBuild& build : vector_builds()) {
                    Operand<float> a = before;
                    q.run(build, a);
                    ASSERT_LE(expected.error(a), 1)
                        << build << ' ' << q.side << q.pivot << q.direct << ' ' << m << 'x' << n;
                }
            }
    });
}

// A rotation by nothing leaves the lines apart: a NaN in one of them does not reach the other.
TEST(Lasr, IdentityTouchesNothing) {
    each_sequence([](Sequence q) {
        for (const int size : {5, 20, 37}) {
            q.c.assign(std::size_t(size - 1), 1), q.s.assign(std::size_t(size - 1), 0);
            Operand<float> a(size, size, size + 1);
            a.set([&](int i, int j) { return i % 7 == 3 || j % 11 == 0 ? nan : -0.0F; });
            for (const VectorBuild& build : vector_builds()) {
                Operand<float> b = a;
                q.run(build, b);
                ASSERT_TRUE(b.same_bits(a)) << build << ' ' << q.side << q.pivot << q.direct << ' ' << size;
            }
        }
    });
}

} // namespace
} // namespace qrv::test
