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

} // namespace
} // namespace qrv::test
