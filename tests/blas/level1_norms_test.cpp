// Contract of the level 1 kernels of one vector and of the rotations they lead to, on every build, against oracles in
// double.
#include <cstring>

#include "support/builds.hpp"
#include "support/vectors.hpp"

namespace qrv::test {
namespace {

constexpr double eps = std::numeric_limits<float>::epsilon();
constexpr float tiny = std::numeric_limits<float>::denorm_min(), largest = std::numeric_limits<float>::max();

// The routines of one vector under one name for both kinds of elements.
template <class T>
struct Norms {
    const VectorBuild& build;
    int n;
    const T* x;
    int inc;

#define QRV_EITHER(real, complex)                                                                                      \
    [&] {                                                                                                              \
        if constexpr (std::is_same_v<T, float>)                                                                        \
            return build.real(&n, x, &inc);                                                                            \
        else                                                                                                           \
            return build.complex(&n, x, &inc);                                                                         \
    }()
    float asum() const {
        return QRV_EITHER(blas_sasum_kernel, blas_scasum_kernel);
    }
    float nrm2() const {
        return QRV_EITHER(blas_snrm2_kernel, blas_scnrm2_kernel);
    }
    int iamax() const {
        return QRV_EITHER(blas_isamax_kernel, blas_icamax_kernel);
    }
#undef QRV_EITHER
};

double part_sum(double x) {
    return std::abs(x);
}
double part_sum(std::complex<double> x) {
    return std::abs(x.real()) + std::abs(x.imag());
}

// The rule of the position, element by element.
template <class T>
int first_largest(GuardedVector<T>& x) {
    if (x.size() < 1 || x.inc() < 1)
        return 0;
    int best = 0;
    for (int i = 1; i < x.size(); ++i)
        if (!(abs1(x[best]) >= abs1(x[i])))
            best = i;
    return best + 1;
}

// All routines on one vector. The sum of magnitudes may be wrong by n * unit of itself, the norm by one rounding.
template <class T>
void check(GuardedVector<T>& x, double unit) {
    double sum = 0, squares = 0;
    for (int i = 0; i < x.size(); ++i) {
        const Wide<T> xi = widen(x.inc() == 0 ? x[0] : x[i]);
        sum += part_sum(xi);
        squares += std::norm(xi);
    }
    const double norm = std::sqrt(squares);
    const int position = first_largest(x);
    for (const VectorBuild& build : vector_builds()) {
        const Norms<T> routines{build, x.size(), x.data(), x.inc()};
        const bool good = std::abs(routines.asum() - sum) <= std::max(x.size(), 0) * unit * sum &&
                          std::abs(routines.nrm2() - norm) <= eps * norm && routines.iamax() == position;
        ASSERT_TRUE(good) << build << " n=" << x.size() << " inc " << x.inc() << " address "
                          << reinterpret_cast<std::uintptr_t>(x.data()) % 64 << ": " << routines.asum() << " for "
                          << sum << ", " << routines.nrm2() << " for " << norm << ", " << routines.iamax() << " for "
                          << position;
    }
}

template <class T>
class Level1Norms : public testing::Test {
protected:
    // Eighths, which sum exactly and give many ties, and numbers of which each is different.
    static void check_both(int n, int inc, int start, Guard guard = Guard::canaries) {
        std::mt19937 random(static_cast<unsigned>(n + start));
        GuardedVector<T> x(n, inc, start, guard);
        check(x.fill([&] { return eighths<T>(random); }), 0);
        check(x.fill([&] { return any_size_one<T>(random); }), eps);
    }
    // Element i is value(i), all parts of it.
    template <class Value>
    static GuardedVector<T>& set(GuardedVector<T>& x, const Value& value) {
        for (int i = 0; i < x.size(); ++i)
            x[i] = element<T>([&] { return value(i); });
        return x;
    }
};
using ElementTypes = testing::Types<float, SingleComplex>;
TYPED_TEST_SUITE(Level1Norms, ElementTypes, );

TYPED_TEST(Level1Norms, AllLengthsAndStarts) {
    for (int n = -1; n <= 300; ++n)
        for (int start = 0; start < 4; ++start)
            this->check_both(n, 1, start + 4 * (n % 3 + 1));
    for (int start = 0; start < 4; ++start)
        this->check_both(5000, 1, start);
}

TYPED_TEST(Level1Norms, Increments) {
    for (int n : {0, 1, 2, 3, 4, 5, 8, 17, 70, 301})
        for (int inc : {-3, -1, 0, 2})
            this->check_both(n, inc, n % 4);
}

TYPED_TEST(Level1Norms, TouchesNothingBeyondItsVector) {
    for (Guard guard : {Guard::pageBehind, Guard::pageInFront})
        for (int inc : {1, -1, 2})
            for (int n = 0; n < 150; ++n)
                this->check_both(n, inc, 0, guard);
}

TYPED_TEST(Level1Norms, AcceptsAnyAddress) {
    using T = TypeParam;
    constexpr int n = 70;
    GuardedVector<T> x(n);
    std::mt19937 random(1);
    x.fill([&] { return eighths<T>(random); });
    alignas(16) unsigned char memory[sizeof(T) * (n + 1)];
    std::memcpy(memory + 1, x.data(), sizeof(T) * n);
    for (const VectorBuild& build : vector_builds()) {
        const Norms<T> there{build, n, reinterpret_cast<T*>(memory + 1), 1}, here{build, n, x.data(), 1};
        EXPECT_TRUE(there.asum() == here.asum() && there.nrm2() == here.nrm2() && there.iamax() == here.iamax())
            << build;
    }
}

// Squares of these are no floats; the norm is one, or is above them all.
TYPED_TEST(Level1Norms, NormsAtTheEndsOfTheRange) {
    using T = TypeParam;
    for (int inc : {1, 2})
        for (int n : {1, 2, 3, 16, 77, 500})
            for (float size : {0.0F, tiny, 3 * tiny, 2e-28F, 2e20F, largest / 64}) {
                GuardedVector<T> x(n, inc, n % 4);
                this->set(x, [&](int i) { return i % 2 ? size : -size; });
                const double norm = std::sqrt(static_cast<double>(n) * sizeof(T) / sizeof(float)) * size;
                for (const VectorBuild& build : vector_builds())
                    EXPECT_LE(std::abs(Norms<T>{build, n, x.data(), inc}.nrm2() - norm),
                              std::max(eps * norm, 0.5 * tiny))
                        << build << " n=" << n << " inc " << inc << " size " << size;
            }
    const int n = 10'000'000 / (sizeof(T) / sizeof(float));
    const std::vector<T> many(n, element<T>([] { return 2e20F; }));
    for (const VectorBuild& build : vector_builds())
        EXPECT_LE(std::abs(Norms<T>{build, n, many.data(), 1}.nrm2() - std::sqrt(1e7) * 2e20F),
                  eps * std::sqrt(1e7) * 2e20F)
            << build;
}

TYPED_TEST(Level1Norms, NanAndInfinityComeThrough) {
    using T = TypeParam;
    for (int inc : {1, 2})
        for (int n : {1, 2, 7, 40, 300})
            for (int at : {0, n / 2, n - 1}) {
                GuardedVector<T> x(n, inc, n % 4);
                const auto with = [&](float special, float other) {
                    return Norms<T>{vector_builds()[0], n,
                                    this->set(x, [&](int i) { return i == at ? special : other; }).data(), inc};
                };
                for (const VectorBuild& build : vector_builds()) {
                    const auto of = [&](Norms<T> routines, const auto& holds) {
                        const Norms<T> those{build, n, routines.x, inc};
                        EXPECT_TRUE(holds(those.asum()) && holds(those.nrm2()))
                            << build << " n=" << n << " inc " << inc << " at " << at << ": " << those.asum() << ' '
                            << those.nrm2();
                    };
                    const auto is_nan = [](float value) { return std::isnan(value); };
                    const auto is_infinite = [](float value) { return value == infinity; };
                    of(with(nan, 1), is_nan);
                    of(with(-infinity, 0), is_infinite);
                    of(with(-infinity, infinity), is_infinite);
                    of(with(largest, largest), [&](float value) { return n == 1 ? value > 1 : value == infinity; });
                    if (n > 1)
                        of(with(nan, infinity), is_nan);
                }
            }
}

// What a NaN does to the position depends on where it stands: several of them, one by one and at random.
TYPED_TEST(Level1Norms, NanHidesWhatStandsBeforeIt) {
    using T = TypeParam;
    const auto check_position = [](GuardedVector<T>& x) {
        for (const VectorBuild& build : vector_builds())
            ASSERT_EQ((Norms<T>{build, x.size(), x.data(), x.inc()}).iamax(), first_largest(x))
                << build << " n=" << x.size() << " inc " << x.inc();
    };
    std::mt19937 random(2);
    for (int inc : {1, 2})
        for (int n : {1, 2, 3, 4, 5, 15, 16, 17, 63, 130, 515, 2100})
            for (int round = 0; round < 60; ++round) {
                GuardedVector<T> x(n, inc, round % 4);
                x.fill([&] { return eighths<T>(random); });
                for (int k = round % 6; k > 0; --k)
                    x[static_cast<int>(random() % static_cast<unsigned>(n))] = scalar<T>(k == 3 ? infinity : nan);
                if (round % 10 == 9)
                    x[round % 20 == 9 ? 0 : n - 1] = scalar<T>(-nan);
                check_position(x);
            }
    GuardedVector<T> undefined(700, 1, 1);
    check_position(undefined.fill([] { return scalar<T>(nan); }));
}

TEST(Level1Positions, OfTiesInfinitiesAndNan) {
    struct Case {
        std::vector<float> x;
        int position;
    };
    const std::vector<Case> cases = {
        {{3, -3, 3}, 1},
        {{0, -0.0F, 0}, 1},
        {{-0.0F, 0}, 1},
        {{1, -2, 2, -2, 1}, 2},
        {{1, -infinity, 5}, 2},
        {{infinity, -infinity}, 1},
        {{nan, 1, 2}, 3},
        {{9, nan, 1, 2, 2}, 4},
        {{1, 2, nan}, 3},
        {{nan}, 1},
        {{nan, nan, nan}, 3},
        {{nan, 0}, 2},
        {{infinity, nan, 0}, 3},
        {{9, nan, nan, 4, 5}, 5},
        {{7, 7, 7, 7, 7, 7, 7}, 1},
        {{tiny, 0, -tiny}, 1},
        {{nan, 8, 1, 9, nan, 3, 3, 3, 3, 3}, 6},
    };
    const int inc = 1;
    for (const VectorBuild& build : vector_builds())
        for (const Case& p : cases) {
            const int n = static_cast<int>(p.x.size());
            std::vector<SingleComplex> z;
            for (float x : p.x)
                z.push_back({0, x});
            EXPECT_EQ(build.blas_isamax_kernel(&n, p.x.data(), &inc), p.position) << build;
            EXPECT_EQ(build.blas_icamax_kernel(&n, z.data(), &inc), p.position) << build;
        }
}

// ---- Rotations ----------------------------------------------------------------------------------------------------

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
                build.blas_srotg_kernel(&results[0], &results[1], &results[2], &results[3]);
                const double expected[] = {norm == 0 ? 0 : r, z, c, s};
                for (int i = 0; i < 4; ++i)
                    EXPECT_TRUE(results[i] == static_cast<float>(expected[i]) ||
                                std::abs(results[i] - expected[i]) <=
                                    std::max<double>(eps * std::abs(expected[i]), tiny))
                        << build << " a=" << a << " b=" << b << " result " << i << ": " << results[i] << " for "
                        << expected[i];
            }
}

TEST(Level1Rotations, SrotmAppliesWhatItsFlagNames) {
    constexpr float h11 = 0.5F, h21 = -0.25F, h12 = 2, h22 = -0.75F;
    struct Case {
        float param[5];
        double h[4]; // h11, h21, h12, h22
    };
    constexpr Case cases[] = {
        {{-2, nan, nan, nan, nan}, {1, 0, 0, 1}},
        {{-1, h11, h21, h12, h22}, {h11, h21, h12, h22}},
        {{0, nan, h21, h12, nan}, {1, h21, h12, 1}},
        {{1, h11, nan, nan, h22}, {h11, -1, 1, h22}},
    };
    constexpr int increments[][2] = {{1, 1}, {2, 2}, {-2, -2}, {-1, -1}, {1, 3}, {-1, 2}};
    std::mt19937 random(5);
    for (const VectorBuild& build : vector_builds())
        for (const Case& p : cases)
            for (const auto& [incx, incy] : increments)
                for (int n = -1; n < 90; n += n < 40 ? 1 : 7) {
                    GuardedVector<float> x(n, incx, n % 5), y(n, incy, n % 3);
                    auto wideX = x.fill([&] { return eighths<float>(random); }).widened();
                    auto wideY = y.fill([&] { return eighths<float>(random); }).widened();
                    for (std::size_t i = 0; i < wideX.size(); ++i) {
                        const double rotated = p.h[0] * wideX[i] + p.h[2] * wideY[i];
                        wideY[i] = p.h[1] * wideX[i] + p.h[3] * wideY[i];
                        wideX[i] = rotated;
                    }
                    build.blas_srotm_kernel(&n, x.data(), &incx, y.data(), &incy, p.param);
                    ASSERT_TRUE(holds_exactly(x, wideX) && holds_exactly(y, wideY))
                        << build << " flag " << p.param[0] << " n=" << n << " inc " << incx << ',' << incy;
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
                        const double bound = 16 * eps, e1 = p.d1, e2 = p.d2;
                        const auto in_range = [](float x) { return x > 0x1p-24F && x < 0x1p24F; };
                        const bool good =
                            std::abs(a * x1 + b * y1 - p.x1) <= bound * (std::abs(a * x1) + std::abs(b * y1)) &&
                            std::abs(c * x1 + d * y1) <= bound * (std::abs(c * x1) + std::abs(d * y1)) &&
                            std::abs(e1 * a * a + e2 * c * c - d1) <= bound * d1 &&
                            std::abs(e1 * b * b + e2 * d * d - d2) <= bound * d2 &&
                            std::abs(e1 * a * b + e2 * c * d) <=
                                bound * (e1 * std::abs(a * b) + e2 * std::abs(c * d)) &&
                            in_range(p.d1) && in_range(p.d2) && std::abs(p.param[0]) <= 1;
                        ASSERT_TRUE(good) << build << ' ' << before << " gives " << p;
                        ++flags[static_cast<int>(p.param[0]) + 1];
                    }
    EXPECT_TRUE(flags[0] && flags[1] && flags[2]);
}

TEST(Level1Rotations, SrotmgSpecialWeights) {
    struct Case {
        Srotmg given;
        float flag;
        bool zeroes; // H, d1, d2 and x1
    };
    const Case cases[] = {
        {{-1, 1, 1, 1}, -1, true}, {{1, -4, 1, 1}, -1, true}, // a negative weight that would lead
        {{1, 0, 2, 3}, -2, false}, {{1, 2, 3, 0}, -2, false}, // nothing to zero
        {{4, -1, 1, 1}, 0, false},
    };
    for (const VectorBuild& build : vector_builds())
        for (const Case& p : cases) {
            Srotmg result = p.given;
            result.run(build);
            const bool zero = result.d1 == 0 && result.d2 == 0 && result.x1 == 0 && result.param[1] == 0 &&
                              result.param[2] == 0 && result.param[3] == 0 && result.param[4] == 0;
            const bool same = result.d1 == p.given.d1 && result.d2 == p.given.d2 && result.x1 == p.given.x1;
            EXPECT_TRUE(result.param[0] == p.flag && zero == p.zeroes && same == (p.flag == -2))
                << build << ' ' << p.given << " gives " << result;
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
