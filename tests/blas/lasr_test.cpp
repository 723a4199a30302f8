// Sequences of rotations, on every build, against the same in double, one rotation and one line after the other.
#include <gtest/gtest.h>

#include "support/builds.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

struct Sequence {
    char side, pivot, direct;
    std::vector<float> c, s;

    template <class Random>
    Sequence(char sideOption, char pivotOption, char directOption, int lines, Random& random)
        : side(sideOption), pivot(pivotOption), direct(directOption), c(std::size_t(std::max(lines - 1, 0))),
          s(c.size()) {
        for (std::size_t k = 0; k < c.size(); ++k) { // every eighth one alone is nearly none, or half a turn
            const auto kind = random() % 8;
            if (kind < 2) {
                c[k] = kind == 0 ? 1.0F : -1.0F, s[k] = kind == 0 ? 1e-3F : 0.0F;
                continue;
            }
            const double angle = random() % 4 == 0 ? 0 : 6.28 * double(random() % 1000) / 1000;
            c[k] = static_cast<float>(std::cos(angle)), s[k] = static_cast<float>(std::sin(angle));
        }
    }
    // On rows or columns of lines(i, k), element i of line k.
    template <class Lines>
    void apply(int length, const Lines& lines) const {
        const int count = static_cast<int>(c.size());
        for (int step = 0; step < count; ++step) {
            const int k = direct == 'F' ? step : count - 1 - step, upper = pivot == 'T' ? 0 : k,
                      lower = pivot == 'B' ? count : k + 1;
            const double cosine = c[std::size_t(k)], sine = s[std::size_t(k)];
            for (int i = 0; i < length; ++i)
                if (cosine != 1 || sine != 0) {
                    double &x = lines(i, upper), &y = lines(i, lower);
                    const double turned = cosine * x + sine * y;
                    y = cosine * y - sine * x;
                    x = turned;
                }
        }
    }
};

std::ostream& operator<<(std::ostream& out, const Sequence& q) {
    return out << q.side << q.pivot << q.direct;
}

void check_sequence(const Sequence& q, int m, int n, const Operand<float>& before) {
    std::vector<double> expected(std::size_t(m) * std::size_t(n));
    const auto at = [&](int i, int j) -> double& { return expected[std::size_t(i) + std::size_t(m) * std::size_t(j)]; };
    before.each_stored([&](int i, int j) { at(i, j) = before(i, j); });
    if (q.side == 'L')
        q.apply(n, [&](int j, int k) -> double& { return at(k, j); });
    else
        q.apply(m, [&](int i, int k) -> double& { return at(i, k); });
    const double allowed = 4 * unitRoundoff * std::sqrt(double(std::max(m, n)) + 4) * 3;
    for (const VectorBuild& build : vector_builds()) {
        Operand<float> a = before;
        build.blas_slasr_kernel(&q.side, &q.pivot, &q.direct, &m, &n, q.c.data(), q.s.data(), a.data(), &a.ld());
        const int bad = a.count_bad([&](int i, int j, float x) {
            return std::isnan(at(i, j)) ? std::isnan(x) : std::abs(x - at(i, j)) <= allowed;
        });
        ASSERT_TRUE(bad == 0) << build << ' ' << q << ' ' << m << 'x' << n << ": " << bad;
    }
}

template <class Body>
void each_sequence(const Body& body) {
    for (const char side : {'L', 'R'})
        for (const char pivot : {'V', 'T', 'B'})
            for (const char direct : {'F', 'B'})
                body(side, pivot, direct);
}

TEST(Lasr, AllTwelveOnEveryBuild) {
    std::mt19937 random(3);
    constexpr int sizes[] = {0, 1, 2, 3, 4, 5, 8, 15, 17, 18, 33, 65, 130};
    each_sequence([&](char side, char pivot, char direct) {
        for (const int m : sizes)
            for (const int n : sizes) {
                const Sequence q(side, pivot, direct, side == 'L' ? m : n, random);
                const int extra = static_cast<int>(random() % 3), offset = static_cast<int>(random() % 5);
                Operand<float> a(m, n, std::max(m, 1) + extra, offset);
                check_sequence(q, m, n, a.set([&](int, int) { return any_size_one<float>(random); }));
            }
    });
}

// A rotation by nothing leaves the lines apart: a NaN in one of them does not reach the other.
TEST(Lasr, IdentityTouchesNothing) {
    std::mt19937 random(4);
    each_sequence([&](char side, char pivot, char direct) {
        for (const int size : {5, 20, 37}) {
            Sequence q(side, pivot, direct, size, random);
            std::fill(q.c.begin(), q.c.end(), 1.0F);
            std::fill(q.s.begin(), q.s.end(), 0.0F);
            Operand<float> a(size, size, size + 1);
            a.set([&](int i, int j) { return i % 7 == 3 || j % 11 == 0 ? nan : -0.0F; });
            Operand<float> b = a;
            for (const VectorBuild& build : vector_builds()) {
                build.blas_slasr_kernel(&side, &pivot, &direct, &size, &size, q.c.data(), q.s.data(), b.data(),
                                        &b.ld());
                ASSERT_TRUE(b.same_bits(a)) << build << ' ' << q << ' ' << size;
            }
        }
    });
}

} // namespace
} // namespace qrv::test
