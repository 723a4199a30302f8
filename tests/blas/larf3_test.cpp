// Reflectors of order 3 side by side, on every build, against the same in double, one after the other.
#include "support/builds.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

// Of the lines 3 b to 3 b + 2, every fifth one being the unit matrix.
struct Chain {
    int count;
    Operand<float> v;

    template <class Random>
    Chain(int reflectors, int ldv, Random& random) : count(reflectors), v(3, reflectors, ldv) {
        std::uniform_real_distribution<float> uniform(-1, 1);
        for (int b = 0; b < count; ++b) {
            const float second = uniform(random), third = uniform(random);
            v(0, b) = b % 5 == 4 ? 0 : 2 / (1 + second * second + third * third);
            v(1, b) = second, v(2, b) = third;
        }
    }
    // Reflector b on x, y and z.
    void apply(int b, double& x, double& y, double& z) const {
        const double sum = v(0, b) * (x + double{v(1, b)} * y + double{v(2, b)} * z);
        x -= sum, y -= sum * v(1, b), z -= sum * v(2, b);
    }
};

constexpr double allowed = 16 * unitRoundoff;

TEST(Larf3, LeftOnEveryBuild) {
    std::mt19937 random(3);
    for (const int count : {0, 1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 21, 32, 37})
        for (const int n : {0, 1, 3, 9, 13, 46, 100, 130}) {
            const Chain chain(count, 3 + count % 2, random);
            const int rows = 3 * count;
            Operand<float> before(rows, n, rows + n % 3 + 1, n % 5);
            before.set(
                [&](int i, int j) { return i > j + 2 ? nan : any_size_one<float>(random); }); // before the stairs
            Expected<float> expected{WideMatrix<float>(before), std::vector<double>(std::size_t(rows * n), allowed)};
            for (int j = 0; j < n; ++j)
                for (int b = 0; b < count && 3 * b <= j; ++b) {
                    double* const x = &expected.values.values[expected.values.at(3 * b, j)];
                    chain.apply(b, x[0], x[1], x[2]);
                }
            for (const VectorBuild& build : vector_builds()) {
                Operand<float> a = before;
                build.blas_slarf3_left_kernel(&count, &n, chain.v.data(), &chain.v.ld(), a.data(), &a.ld());
                ASSERT_LE(expected.error(a), 1) << build << ' ' << count << ' ' << n;
            }
        }
}

TEST(Larf3, RightOnEveryBuild) {
    std::mt19937 random(4);
    for (const int count : {0, 1, 2, 7})
        for (const int begin : {0, 1, 5})
            for (const int length : {0, 1, 3, 4, 9, 16, 31, 40, 67})
                for (const auto& [beginStep, endStep] : {std::pair{0, 3}, {3, 0}, {0, 0}}) {
                    const Chain chain(count, 3, random);
                    const int end = begin + length, rows = end + 3 * count, columns = 3 * count;
                    Operand<float> before(rows, columns, rows + 1, length % 4);
                    before.set([&](int, int) { return any_size_one<float>(random); });
                    Expected<float> expected{WideMatrix<float>(before),
                                             std::vector<double>(std::size_t(rows * columns))};
                    for (int b = 0; b < count; ++b)
                        for (int i = begin + b * beginStep; i < end + b * endStep; ++i) {
                            const std::size_t x = expected.values.at(i, 3 * b), y = x + rows, z = y + rows;
                            auto& values = expected.values.values;
                            chain.apply(b, values[x], values[y], values[z]);
                            for (const std::size_t k : {x, y, z})
                                expected.allowed[k] = allowed;
                        }
                    for (const VectorBuild& build : vector_builds()) {
                        Operand<float> a = before;
                        build.blas_slarf3_right_kernel(&count, &begin, &end, &beginStep, &endStep, chain.v.data(),
                                                       &chain.v.ld(), a.data(), &a.ld());
                        ASSERT_LE(expected.error(a), 1) << build << ' ' << count << ' ' << begin << ' ' << end;
                    }
                }
}

} // namespace
} // namespace qrv::test
