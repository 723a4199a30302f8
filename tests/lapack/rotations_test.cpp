// Plane rotations.
#include <cmath>
#include <gtest/gtest.h>

#include "qrv/native.h"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

constexpr float numbers[] = {0, 1, -1, 3, -0.75F, 1e-20F, -1e-38F, 1e-45F, -3e38F, 1e30F, 0x1p-60F};

TEST(Rotations, MakeTheSecondNumberZero) {
    for (const float f : numbers)
        for (const float g : numbers) {
            float c, s, r;
            SLARTG(&f, &g, &c, &s, &r);
            const double cs = c, sn = s, size = std::hypot(double{f}, double{g});
            EXPECT_LE(std::abs(cs * cs + sn * sn - 1), 4 * unitRoundoff) << f << ' ' << g;
            EXPECT_LE(std::abs(cs * g - sn * f), 2 * unitRoundoff * size) << f << ' ' << g;
            if (size > std::numeric_limits<float>::max()) {
                EXPECT_TRUE(std::isinf(r)) << f << ' ' << g;
                continue;
            }
            EXPECT_LE(std::abs(cs * f + sn * g - r), 3 * unitRoundoff * size + 0x1p-149) << f << ' ' << g;
            if (f != 0 && g != 0) {
                EXPECT_GT(std::abs(f) > std::abs(g) ? c : r, 0) << f << ' ' << g;
            } else {
                EXPECT_EQ(r, g == 0 ? f : g);
            }
        }
}

TEST(Rotations, OfInfinityAndNaNEnd) {
    for (const float f : {1.0F, infinity, nan})
        for (const float g : {infinity, nan}) {
            float c = 0, s = 0, r = 0;
            SLARTG(&f, &g, &c, &s, &r);
            EXPECT_FALSE(std::isfinite(r)) << f << ' ' << g;
        }
}

// [f g; 0 h] against its decomposition and the values of the same matrix in double.
TEST(Rotations, DecomposeATriangle) {
    for (const float f : numbers)
        for (const float g : numbers)
            for (const float h : numbers) {
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
                EXPECT_TRUE(near(least, smallest) && near(most, largest)) << f << ' ' << g << ' ' << h;
                EXPECT_TRUE(least >= 0 && most >= 0);
                SLASV2(&f, &g, &h, &least, &most, &snr, &csr, &snl, &csl);
                EXPECT_TRUE(near(std::abs(least), smallest) && near(std::abs(most), largest))
                    << f << ' ' << g << ' ' << h;
                if (std::isinf(most))
                    continue;
                const double cl = csl, sl = snl, cr = csr, sr = snr, a = cl * f, b = cl * g + sl * h, c = -sl * f,
                             d = cl * h - sl * g;
                EXPECT_LE(std::abs(cl * cl + sl * sl - 1) + std::abs(cr * cr + sr * sr - 1), 8 * unitRoundoff);
                for (const double error :
                     {a * cr + b * sr - most, b * cr - a * sr, c * cr + d * sr, d * cr - c * sr - least})
                    EXPECT_LE(std::abs(error), 8 * unitRoundoff * largest + 0x1p-148) << f << ' ' << g << ' ' << h;
            }
}

} // namespace
} // namespace qrv::test
