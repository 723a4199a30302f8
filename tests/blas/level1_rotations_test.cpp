// Contract of the kernels that make rotations, on every build, against their equations in double.
#include "support/builds.hpp"
#include "support/flags.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

constexpr double eps = std::numeric_limits<float>::epsilon();
constexpr float tiny = std::numeric_limits<float>::denorm_min(), largest = std::numeric_limits<float>::max();

TEST(Level1Rotations, SrotgSolvesItsEquations) {
    constexpr float sizes[] = {0, 1, -1, 3, -4, 1e-20F, -2e20F, tiny, largest / 2};
    for (const VectorBuild& build : vector_builds())
        for (float a : sizes)
            for (float b : sizes) {
                const double norm = std::hypot(double{a}, double{b}),
                             r = std::copysign(norm, std::abs(a) > std::abs(b) ? a : b);
                const double c = norm == 0 ? 1 : a / r, s = norm == 0 ? 0 : b / r;
                const float roundedC = static_cast<float>(c);
                const double z = norm == 0 || std::abs(a) > std::abs(b) ? s : roundedC != 0 ? 1 / c : 1;
                float results[] = {a, b, nan, nan};
                const int flags =
                    flags_raised([&] { build.blas_srotg_kernel(&results[0], &results[1], &results[2], &results[3]); });
                EXPECT_TRUE(flags == 0 || !std::isfinite(results[0] + results[1])) << build << " a=" << a << " b=" << b;
                const double expected[] = {norm == 0 ? 0 : r, z, c, s};
                for (int i = 0; i < 4; ++i)
                    EXPECT_TRUE(results[i] == static_cast<float>(expected[i]) ||
                                std::abs(results[i] - expected[i]) <=
                                    std::max<double>(eps * std::abs(expected[i]), tiny))
                        << build << " a=" << a << " b=" << b << " result " << i << ": " << results[i] << " for "
                        << expected[i];
            }
}

// A call of SROTMG, and H as its flag tells it.
struct Srotmg {
    float d1, d2, x1, y1;
    float param[5] = {7, nan, nan, nan, nan};

    void run(const VectorBuild& build) { build.blas_srotmg_kernel(&d1, &d2, &x1, &y1, param); }
    double h11() const { return param[0] == 0 || param[0] == -2 ? 1 : param[1]; }
    double h21() const { return param[0] == 1 ? -1 : param[0] == -2 ? 0 : param[2]; }
    double h12() const { return param[0] == 1 ? 1 : param[0] == -2 ? 0 : param[3]; }
    double h22() const { return param[0] == 0 || param[0] == -2 ? 1 : param[4]; }
};

std::ostream& operator<<(std::ostream& out, const Srotmg& p) {
    return out << "d " << p.d1 << ',' << p.d2 << " x " << p.x1 << " y " << p.y1 << " flag " << p.param[0];
}

// H takes (x1, y1) to (new x1, 0) and keeps d1 x^2 + d2 y^2: H^T D' H = D.
TEST(Level1Rotations, SrotmgZeroesAndKeepsTheWeightedLength) {
    constexpr float weights[] = {1, 0.5F, 3e-4F, 2e-9F, 5e12F, 1e-30F, 1e30F}, values[] = {1, -2.5F, 3e-3F, 700};
    int flags[3] = {};
    for (const VectorBuild& build : vector_builds())
        for (float d1 : weights)
            for (float d2 : weights)
                for (float x1 : values)
                    for (float y1 : values) {
                        if (std::abs(std::log10(d1 / d2)) > 24) // their quotients would lose digits
                            continue;
                        const Srotmg before{d1, d2, x1, y1};
                        Srotmg p = before;
                        p.run(build);
                        const double a = p.h11(), b = p.h12(), c = p.h21(), d = p.h22();
                        const double e1 = p.d1, e2 = p.d2;
                        const auto near = [](double x, double y, double to) {
                            return std::abs(x + y - to) <= 16 * eps * (to == 0 ? std::abs(x) + std::abs(y) : to);
                        };
                        const auto in_range = [](float x) { return x > 0x1p-24F && x < 0x1p24F; };
                        const bool good =
                            std::abs(a * x1 + b * y1 - p.x1) <= 16 * eps * (std::abs(a * x1) + std::abs(b * y1)) &&
                            near(c * x1, d * y1, 0) && near(e1 * a * a, e2 * c * c, d1) &&
                            near(e1 * b * b, e2 * d * d, d2) && near(e1 * a * b, e2 * c * d, 0) && in_range(p.d1) &&
                            in_range(p.d2) && std::abs(p.param[0]) <= 1;
                        ASSERT_TRUE(good) << build << ' ' << before << " gives " << p;
                        ++flags[static_cast<int>(p.param[0]) + 1];
                    }
    EXPECT_TRUE(flags[0] && flags[1] && flags[2]);
}

TEST(Level1Rotations, SrotmgSpecialWeights) {
    const std::pair<Srotmg, float> cases[] = {
        {{-1, 1, 1, 1}, -1}, {{1, -4, 1, 1}, -1}, // a negative weight that would lead: H, d1, d2 and x1 become 0
        {{1, 0, 2, 3}, -2},  {{1, 2, 3, 0}, -2},  // nothing to zero
        {{4, -1, 1, 1}, 0},
    };
    for (const VectorBuild& build : vector_builds())
        for (const auto& [given, flag] : cases) {
            Srotmg p = given;
            p.run(build);
            const bool zero =
                std::abs(p.d1) + std::abs(p.d2) + std::abs(p.x1) == 0 && std::count(p.param + 1, p.param + 5, 0.F) == 4;
            const bool same = p.d1 == given.d1 && p.d2 == given.d2 && p.x1 == given.x1;
            EXPECT_TRUE(p.param[0] == flag && zero == (flag == -1) && same == (flag == -2))
                << build << ' ' << given << " gives " << p;
        }
}

TEST(Level1Rotations, EndOnAnyNumbers) {
    constexpr float values[] = {0, -0.0F, 1, -1, tiny, -tiny, 1e-30F, largest, infinity, -infinity, nan};
    for (const VectorBuild& build : vector_builds())
        for (float a : values)
            for (float b : values) {
                float r = a, z = b, c, s;
                build.blas_srotg_kernel(&r, &z, &c, &s);
                EXPECT_EQ(std::isnan(r), std::isnan(a) || std::isnan(b) || std::isinf(a) || std::isinf(b))
                    << a << ' ' << b;
                EXPECT_TRUE(z == 1 || !(std::isnan(a) || std::isnan(b))) << build << ' ' << a << ' ' << b;
                for (float x : values)
                    for (float y : values) {
                        Srotmg p{a, b, x, y};
                        p.run(build);
                        EXPECT_TRUE(p.param[0] >= -2 && p.param[0] <= 1) << build << ' ' << p;
                    }
            }
}

} // namespace
} // namespace qrv::test
