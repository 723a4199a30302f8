// Plane rotations; and several sequences of them applied together, on every route, against the kernel of one sequence,
// which has a test of its own.
#include "blas/calls.hpp"
#include "lapack/calls/rotations.hpp"
#include "lapack/kernel/source/rotations/lasr3.hpp"
#include "lapack/lapack.hpp"
#include <cmath>
#include <gtest/gtest.h>

#include "qrv/native.h"
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

constexpr float numbers[] = {0, 1, -1, 3, -0.75F, 1e-20F, -1e-38F, 1e-45F, -3e38F, 1e30F, 0x1p-60F};

TEST(Rotations, MakeTheSecondNumberZero) {
    combine(numbers, numbers).each([](float f, float g) {
        float c, s, r;
        SLARTG(&f, &g, &c, &s, &r);
        const double cs = c, sn = s, size = std::hypot(double{f}, double{g});
        EXPECT_LE(std::abs(cs * cs + sn * sn - 1), 4 * unitRoundoff);
        EXPECT_LE(std::abs(cs * g - sn * f), 2 * unitRoundoff * size);
        if (size > std::numeric_limits<float>::max()) {
            EXPECT_TRUE(std::isinf(r));
            return;
        }
        EXPECT_LE(std::abs(cs * f + sn * g - r), 3 * unitRoundoff * size + 0x1p-149);
        if (f != 0 && g != 0)
            EXPECT_GT(std::abs(f) > std::abs(g) ? c : r, 0);
        else
            EXPECT_EQ(r, g == 0 ? f : g);
    });
    combine({1.0F, infinity, nan}, {infinity, nan}).each([](float f, float g) {
        for (const auto& [x, y] : {std::pair(f, g), {g, f}}) {
            float c, s, r;
            SLARTG(&x, &y, &c, &s, &r);
            EXPECT_FALSE(std::isfinite(r));
        }
    });
}

// [f g; 0 h] against its decomposition and the values of the same matrix in double.
TEST(Rotations, DecomposeATriangle) {
    combine(numbers, numbers, numbers).each([](float f, float g, float h) {
        const double fa = std::abs(double{f}), ha = std::abs(double{h}), ga = g;
        const double sum = std::hypot(fa + ha, ga), difference = std::hypot(fa - ha, ga),
                     largest = (sum + difference) / 2, smallest = largest == 0 ? 0 : fa * ha / largest;
        const auto near = [](double found, double expected) {
            return expected > std::numeric_limits<float>::max()
                       ? std::isinf(found)
                       : std::abs(found - expected) <= 4 * unitRoundoff * expected + 0x1p-149;
        };
        float least, most, snr, csr, snl, csl;
        SLAS2(&f, &g, &h, &least, &most);
        EXPECT_TRUE(near(least, smallest) && near(most, largest));
        EXPECT_TRUE(least >= 0 && most >= 0);
        SLASV2(&f, &g, &h, &least, &most, &snr, &csr, &snl, &csl);
        EXPECT_TRUE(near(std::abs(least), smallest) && near(std::abs(most), largest));
        if (std::isinf(most))
            return;
        const double cl = csl, sl = snl, cr = csr, sr = snr, a = cl * f, b = cl * g + sl * h, c = -sl * f,
                     d = cl * h - sl * g;
        EXPECT_LE(std::abs(cl * cl + sl * sl - 1) + std::abs(cr * cr + sr * sr - 1), 8 * unitRoundoff);
        for (const double error : {a * cr + b * sr - most, b * cr - a * sr, c * cr + d * sr, d * cr - c * sr - least})
            EXPECT_LE(std::abs(error), 8 * unitRoundoff * largest + 0x1p-148);
    });
}

// ---- Sequences ------------------------------------------------------------------------------------------------------

using lapack::SweepRoute;

// Every third sequence has rotations on a part of the planes only.
struct Sequences {
    Side side;
    Direct direct;
    int lines, across, count;
    Operand<float> cs, before, expected;

    Sequences(Side s, Direct d, int lineCount, int length, int sequences)
        : side(s), direct(d), lines(lineCount), across(length), count(sequences),
          cs(std::max(lines - 1, 0), 2 * count, std::max(1, lines + 1)),
          before(left() ? lines : across, left() ? across : lines, (left() ? lines : across) + 3), expected(before) {
        std::mt19937 random(static_cast<unsigned>(7 * lines + across + 3 * count));
        cs.fill(0);
        for (int q = 0; q < count; ++q)
            for (int i = 0; i + 1 < lines; ++i) {
                const bool turns = q % 3 != 1 || (i > lines / 4 && i < lines - lines / 3);
                const double angle = turns ? double(random() % 628) / 100 : 0;
                cs(i, 2 * q) = static_cast<float>(std::cos(angle)),
                          cs(i, 2 * q + 1) = static_cast<float>(std::sin(angle));
            }
        before.set([&](int, int) { return any_size_one<float>(random); });
        expected.set(before);
        for (int q = 0; q < count; ++q)
            kernel::lasr(side, Pivot::variable, direct, before.rows(), before.columns(), &cs(0, 2 * q),
                         &cs(0, 2 * q + 1), expected.view());
    }
    bool left() const { return side == Side::left; }

    // Whether run(a, work) does it.
    template <class Run>
    bool done_by(const Run& run) {
        Operand<float> a = before;
        GuardedVector<float> work(static_cast<int>(lapack::lasr3_work(count, across)));
        run(a, work);
        const double allowed = 40 * unitRoundoff * std::sqrt(double(count) + lines);
        return a.count_bad([&](int i, int j, float x) { return std::abs(x - expected(i, j)) <= allowed; }) == 0;
    }
};

constexpr Side sides[] = {Side::left, Side::right};
constexpr Direct directions[] = {Direct::forward, Direct::backward};
constexpr SweepRoute routes[] = {SweepRoute::oneByOne, SweepRoute::skewed, SweepRoute::blocked,
                                 SweepRoute::blockedTeam};

// Around one, two and more blocks, and where a block has no room for an element of all its lines.
void expect_right(const std::vector<int>& counts, const std::vector<int>& lengths, const std::vector<int>& teams) {
    combine(counts, lengths, sides, directions).each([&](int count, int across, Side side, Direct direct) {
        for (const int lines :
             {2, count, count + 1, 2 * count, 2 * count + 1, 3 * count, 3 * count + 1, 5 * count + 2}) {
            Sequences q(side, direct, std::max(lines, 2), across, count);
            combine(routes, teams).each([&](SweepRoute route, int team) {
                EXPECT_TRUE(q.done_by([&](auto& a, auto& work) {
                    lapack::apply_sweeps({side, direct, a.rows(), a.columns(), count, q.cs.view(), a.view()}, route,
                                         team, work.data());
                })) << q.lines;
            });
        }
    });
}

TEST(Lasr3, SolutionsOnEveryRoute) {
    expect_right({1, 2, 5, 36}, {1, 3, 33}, {1, 3});
}

TEST(Lasr3, Races) {
    expect_right({3}, {9}, {2, 3});
}

// By address, where options are upper-case letters: others do nothing.
TEST(Lasr3, OptionsInTheNativeForm) {
    combine({20, 215}, sides, directions).each([](int across, Side s, Direct d) {
        Sequences q(s, d, 30, across, 4);
        const char side = letter(s), direct = letter(d);
        const auto call = [&](const char* pivot, const char* direction) {
            return q.done_by([&](auto& a, auto& work) {
                int info = 5;
                test::call(qrv_lapack_slasr3, side, pivot, direction, a.rows(), a.columns(), q.count, q.cs, a, work,
                           work.size(), &info);
                EXPECT_EQ(info, 5);
            });
        };
        EXPECT_TRUE(call("Variable", &direct));
        EXPECT_FALSE(call("v", &direct));
        EXPECT_FALSE(call("T", &direct));
        EXPECT_FALSE(call("V", direct == 'F' ? "f" : "b"));
    });
}

} // namespace
} // namespace qrv::test
