// Balancing: a similarity that is exact, what it isolates and scales, and its way back to eigenvectors.
#include <gtest/gtest.h>
#include <numeric>
#include <random>

#include "qrv/native.h"
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

struct Balanced {
    Operand<float> a;
    int ilo = -1, ihi = -1;
    std::vector<float> scale;
};

Balanced balance(const Operand<float>& a, char job) {
    Balanced b{a, -1, -1, std::vector<float>(std::size_t(a.rows()))};
    EXPECT_EQ(call(SGEBAL, job, a.rows(), b.a, &b.ilo, &b.ihi, b.scale), 0);
    return b;
}

// P D, or P inv(D) for left vectors.
Operand<float> transformation(const Balanced& b, char job, char side) {
    const int n = b.a.rows();
    Operand<float> t = identity_operand(n);
    EXPECT_EQ(call(SGEBAK, job, side, n, b.ilo, b.ihi, b.scale, n, t), 0);
    return t;
}

// A T = T B and T' left = I to the last bit: T is a permutation with powers of two.
void expect_exact_similarity(const Operand<float>& a, const Balanced& b, char job) {
    const int n = a.rows();
    const Operand<float> t = transformation(b, job, 'R'), left = transformation(b, job, 'L');
    const WideMatrix<float> wide(t);
    ASSERT_EQ(norm(WideMatrix<float>(a) * wide - wide * WideMatrix<float>(b.a)), 0) << job;
    ASSERT_EQ(norm(wide.adjoint() * WideMatrix<float>(left) - identity<float>(n)), 0) << job;
    for (int j = 0; j < n; ++j)
        for (int i = j + 1; i < n; ++i)
            if (j + 1 < b.ilo || i + 1 > b.ihi) {
                ASSERT_EQ(b.a(i, j), 0) << job << ' ' << i << ' ' << j;
            }
}

// A core of `size` rows without zeros between triangles, all rows and columns shuffled, scales far apart.
Operand<float> hidden_core(int before, int size, int behind, float spread) {
    const int n = before + size + behind;
    std::mt19937 random(static_cast<unsigned>(n + size));
    std::vector<int> place(static_cast<std::size_t>(n));
    std::iota(place.begin(), place.end(), 0);
    std::shuffle(place.begin(), place.end(), random);
    Operand<float> a(n, n, n + 3);
    a.fill(0);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const bool core = i >= before && i < before + size && j >= before && j < before + size;
            if (core || i <= j)
                a(place[std::size_t(i)], place[std::size_t(j)]) =
                    (1.5F + any_size_one<float>(random)) * std::pow(spread, static_cast<float>(i % 5 - j % 5));
        }
    return a;
}

TEST(Balancing, ResidualIsZero) {
    struct Core {
        int before, size, behind;
    };
    combine({Core{0, 0, 0}, {0, 0, 1}, {0, 6, 0}, {3, 4, 2}, {0, 5, 3}, {4, 7, 0}, {5, 0, 4}}, {1.0F, 8.0F, 1000.0F},
            "NPSB")
        .each([](const Core& core, float spread, char job) {
            const Operand<float> a = hidden_core(core.before, core.size, core.behind, spread);
            const Balanced b = balance(a, job);
            expect_exact_similarity(a, b, job);
            const int n = a.rows();
            if (job == 'N' || job == 'S' || core.size == n)
                EXPECT_TRUE(b.ilo == 1 && b.ihi == n);
            else if (core.size == 0)
                EXPECT_TRUE(b.ilo == 1 && b.ihi == 1);
            else
                EXPECT_EQ(b.ihi - b.ilo + 1, core.size);
        });
}

TEST(Balancing, NormsComeNear) {
    const Operand<float> a = hidden_core(2, 20, 3, 1000);
    const Balanced b = balance(a, 'B');
    for (int i = b.ilo - 1; i < b.ihi; ++i) {
        double row = 0, column = 0;
        for (int k = b.ilo - 1; k < b.ihi; ++k) {
            row = std::hypot(row, double{b.a(i, k)});
            column = std::hypot(column, double{b.a(k, i)});
        }
        for (const double f : {2.0, 0.5})
            EXPECT_GE(column * f + row / f, 0.94 * (column + row)) << i << " by " << f;
    }
}

TEST(Balancing, EndsOnNaNInfinityAndExtremes) {
    combine({nan, infinity, 3e38F, 1e-45F}, {0, 7, 12, 35}).each([](float x, int place) {
        Operand<float> a = hidden_core(0, 6, 0, 1000);
        a(place % 6, place / 6) = x;
        const Balanced b = balance(a, 'B');
        EXPECT_EQ(b.ihi - b.ilo, 5);
        for (const float s : b.scale)
            EXPECT_TRUE(s > 0 && std::isfinite(1 / s) && (s == 1 || !std::isnan(x) || place != 0)) << s; // ends at once
    });
}

// Each row and column wants to be scaled by far more than floats allow; an element before the range would overflow.
TEST(Balancing, StaysWithinTheRangeOfFloats) {
    struct Range {
        float ratio, before, size;
    };
    for (const auto& [ratio, before, size] : {Range{0x1p50F, 3e38F, 1},
                                              {0x1p-50F, 3e38F, 1},
                                              {0x1p100F, 3e38F, 1},
                                              {0x1p-100F, 3e38F, 1},
                                              {0x1p50F, 0, 1},
                                              {0x1p-50F, 0, 1},
                                              {0x1p5F, 0, 0x1p-110F},
                                              {0x1p-5F, 0, 0x1p-110F}}) {
        const int n = 8;
        Operand<float> a(n, n, n);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) {
                const float x = i == j ? 1 : i == j + 1 && j > 0 ? ratio : j == i + 1 && i > 0 ? 1 / ratio : 0;
                a(i, j) = i == 0 && j > 0 ? before : size * x;
            }
        const Balanced b = balance(a, 'B');
        for (const float s : b.scale)
            EXPECT_TRUE(s >= 0x1p-104F && s <= 0x1p104F && (s == 1 || size == 1)) << ratio << ' ' << s;
        EXPECT_EQ(b.a.count_bad([](int, int, float x) { return std::isfinite(x); }), 0) << ratio;
    }
}

} // namespace
} // namespace qrv::test
