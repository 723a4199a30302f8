// Contract of the level 1 kernels but rotations, on every build, against oracles in double.
#include "support/call.hpp"
#include "support/vector_routines.hpp"

namespace qrv::test {
namespace {

constexpr double eps = std::numeric_limits<float>::epsilon();
constexpr float tiny = std::numeric_limits<float>::denorm_min(), largest = std::numeric_limits<float>::max();

// ---- Of one vector -------------------------------------------------------------------------------------------------

struct Norms {
    double asum, nrm2;
    int iamax;
};
template <class T>
Norms norms(const VectorBuild& build, int n, const T* x, int inc) {
    return {routine_for<T>(build.blas_sasum_kernel, build.blas_scasum_kernel)(&n, x, &inc),
            routine_for<T>(build.blas_snrm2_kernel, build.blas_scnrm2_kernel)(&n, x, &inc),
            routine_for<T>(build.blas_isamax_kernel, build.blas_icamax_kernel)(&n, x, &inc)};
}

// The rule of the position, element by element.
template <class T>
int first_largest(const GuardedVector<T>& x) {
    if (x.size() < 1 || x.inc() < 1)
        return 0;
    int best = 0;
    for (int i = 1; i < x.size(); ++i)
        if (!(abs1(x[best]) >= abs1(x[i])))
            best = i;
    return best + 1;
}

// The sum of magnitudes may be wrong by n * unit of itself, the norm by one rounding. What is not finite comes through.
template <class T>
void check_norms(const GuardedVector<T>& x, double unit) {
    double sum = 0, squares = 0;
    for (int i = 0; i < x.size(); ++i) {
        const auto xi = widen(x[i]);
        sum += std::abs(std::real(xi)) + std::abs(std::imag(xi));
        squares += std::real(xi) * std::real(xi) + std::imag(xi) * std::imag(xi);
    }
    const double norm = std::sqrt(squares);
    const auto near = [](double found, double expected, double allowed) {
        if (expected > largest || std::isnan(expected))
            return std::isnan(expected) ? std::isnan(found) : found == infinity;
        return std::abs(found - expected) <= allowed;
    };
    for (const VectorBuild& build : vector_builds()) {
        Norms found;
        const int flags = flags_raised([&] { found = norms(build, x.size(), x.data(), x.inc()); });
        const bool good = (flags == 0 || !(sum <= largest)) &&
                          near(found.asum, sum, std::max(x.size(), 0) * unit * sum) &&
                          near(found.nrm2, norm, std::max(eps * norm, 0.5 * tiny)) && found.iamax == first_largest(x);
        ASSERT_TRUE(good) << build << " n=" << x.size() << " inc " << x.inc() << ": " << found.asum << " for " << sum
                          << ", " << found.nrm2 << " for " << norm << ", " << found.iamax;
    }
}

// All routines: eighths, which sum exactly and give many ties, and for norms numbers of which each is different.
template <class T>
void check(const VectorShape& p) {
    for (const VectorRoutine<T>& routine : vector_routines<T>())
        for (const VectorBuild& build : vector_builds())
            ASSERT_TRUE(comes_out_exactly(routine, p, [&](auto v) { return routine.kernel(build, v); }))
                << build << ' ' << routine.name << ' ' << p;
    GuardedVector<T> x(p.n, p.incx, p.startx, p.guardx);
    std::minstd_rand random(static_cast<unsigned>(p.startx) + 2);
    check_norms(x.fill([&] { return eighths<T>(random); }), 0);
    check_norms(x.fill([&] { return any_size_one<T>(random); }), eps);
}

// All distances of the two vectors from 16-byte boundaries, with all lengths of head, main loop and tail.
TEST_OF_ELEMENTS(Level1, AllLengthsAndStarts) {
    for (int n = -1; n <= 300; ++n)
        for (int pair = 0; pair < 16; ++pair)
            if (n <= 80 || pair % 8 == n % 8)
                check<T>({.n = n, .startx = pair % 4 + 4 * (n % 3 + 1), .starty = pair / 4 + 4 * (n / 3 % 4)});
    check<T>({.n = 5000, .startx = 1, .starty = 3});
    GuardedVector<T> many(70000);
    std::minstd_rand random;
    check_norms(many.fill([&] { return any_size_one<T>(random); }), eps);
}

TEST_OF_ELEMENTS(Level1, Increments) {
    constexpr int increments[] = {-3, -1, 0, 1, 2, 3};
    for (int n : {0, 1, 2, 3, 5, 8, 17, 70, 301})
        for (int incx : increments)
            for (int incy : increments)
                if (n <= 5 || incx * incy != 0) // what is computed in place n times soon rounds
                    check<T>({.n = n, .incx = incx, .incy = incy, .startx = 1, .starty = n % 4});
}

// A page at either end of one operand, or a heap block of its exact size; where that one begins follows from its
// length, the other one begins anywhere.
TEST_OF_ELEMENTS(Level1, TouchesNothingBeyondItsOperands) {
    for (Guard guard : {Guard::pageBehind, Guard::pageInFront, Guard::heap}) {
        for (int n = 0; n < 150; n += n == 34 ? 30 : n == 84 ? 44 : 1)
            for (int start = 0; start < 4; ++start) {
                check<T>({.n = n, .starty = start, .guardx = guard});
                check<T>({.n = n, .startx = start, .guardy = guard});
            }
        for (int n : {1, 5, 18})
            for (int incx : {2, -1})
                for (int incy : {-3, -1, 1})
                    check<T>({.n = n, .incx = incx, .incy = incy, .guardx = guard, .guardy = guard});
    }
}

// Elements of size one, so that of anything but a sum each has an error of a few units.
TEST_OF_ELEMENTS(Level1, RoundsAsItsSumsAllow) {
    for (int n : {1, 30, 300, 5000})
        for (const VectorRoutine<T>& routine : vector_routines<T>())
            for (const VectorBuild& build : vector_builds())
                EXPECT_TRUE(comes_out(
                    routine, {.n = n, .startx = 2, .starty = 1}, [](auto& random) { return any_size_one<T>(random); },
                    [=](int i, double size) { return i < 0 ? n * eps * size : 2 * eps; },
                    [&](auto v) { return routine.kernel(build, v); }))
                    << build << ' ' << routine.name << " n=" << n;
}

// A vector of elements at addresses that are no multiples of 4, of both operands or of one.
TEST_OF_ELEMENTS(Level1, AcceptsAnyAddress) {
    constexpr int n = 150;
    for (const VectorBuild& build : vector_builds())
        for (int shift : {1, 4, 5}) {
            alignas(16) unsigned char memory[2][sizeof(T) * (n + 1)];
            unsigned char *const x = memory[0] + shift % 4, *const y = memory[1] + shift / 4;
            for (const VectorRoutine<T>& routine : vector_routines<T>()) {
                const auto run = [&](const VectorCall<T>& v) {
                    std::memcpy(x, v.x, n * sizeof(T));
                    std::memcpy(y, v.y, n * sizeof(T));
                    const T result = routine.kernel(build, {n, reinterpret_cast<T*>(x), 1, reinterpret_cast<T*>(y), 1});
                    std::memcpy(v.x, x, n * sizeof(T));
                    std::memcpy(v.y, y, n * sizeof(T));
                    return result;
                };
                EXPECT_TRUE(comes_out_exactly(routine, {.n = n}, run)) << build << ' ' << routine.name << ' ' << shift;
            }
            GuardedVector<T> v(n);
            std::minstd_rand random;
            std::memcpy(x, v.fill([&] { return eighths<T>(random); }).data(), n * sizeof(T));
            const Norms there = norms(build, n, reinterpret_cast<T*>(x), 1), here = norms(build, n, v.data(), 1);
            EXPECT_TRUE(there.asum == here.asum && there.nrm2 == here.nrm2 && there.iamax == here.iamax) << build;
        }
}

// What AXPY and SCAL do by their factor, over all lengths of a vector loop and increments 1 and 2.
TEST_OF_ELEMENTS(Level1, ZeroAndNanFactors) {
    const T one = scalar<T>(1), none = scalar<T>(0), undefined = scalar<T>(nan);
    for (const VectorBuild& build : vector_builds())
        for (int inc : {1, 2})
            for (int n = 1; n < 70; ++n) {
                auto* const axpy = routine_for<T>(build.blas_saxpy_kernel, build.blas_caxpy_kernel);
                auto* const scal = routine_for<T>(build.blas_sscal_kernel, build.blas_cscal_kernel);
                const auto is_nan = [](int, int, const T& x) { return has_nan(x); };
                GuardedVector<T> x(n, inc), y(n, inc);
                x.Operand<T>::fill(nan), y.Operand<T>::fill(1);
                call(axpy, n, none, x, inc, y, inc);
                EXPECT_EQ(y.count_bad([](int, int, const T& yi) { return yi == all_parts<T>(1); }), 0)
                    << build << " n=" << n << " alpha 0";
                call(scal, n, none, x, inc);
                EXPECT_EQ(x.count_bad(is_nan), 0) << build << " n=" << n << " 0 * NaN";
                x.fill([&] { return one; });
                call(axpy, n, undefined, x, inc, y, inc);
                EXPECT_EQ(y.count_bad(is_nan), 0) << build << " n=" << n << " alpha NaN";
            }
}

// At the ends of the range squares are no floats, and a sum or norm of floats may be none. Several infinite elements
// and NaN, at random and at either end: what a NaN does to the position depends on where it stands.
TEST_OF_ELEMENTS(Level1, NormsOfAnyNumbers) {
    constexpr float ends[] = {0, 3 * tiny, 2e-28F, 2e20F, largest / 64, largest, infinity};
    std::minstd_rand random(2);
    for (int inc : {1, 2})
        for (int n : {1, 2, 3, 4, 5, 15, 16, 17, 63, 130, 515, 2100})
            for (int round = 0; round < 60; ++round) {
                GuardedVector<T> x(n, inc, round % 4);
                const float size = ends[round % 7];
                x.fill([&] {
                    return element<T>(
                        [&] { return (random() % 2 ? size : -size) * static_cast<float>(1 + random() % 8) / 8; });
                });
                for (int k = round % 6; k > 0; --k)
                    x[static_cast<int>((random() >> 8) % static_cast<unsigned>(n))] =
                        scalar<T>(k == 3 ? infinity : nan);
                if (round % 10 == 9)
                    x[round % 20 == 9 ? 0 : n - 1] = scalar<T>(round < 30 ? -nan : -infinity);
                check_norms(x, eps);
            }
    GuardedVector<T> undefined(700, 1, 1);
    check_norms(undefined.fill([] { return scalar<T>(nan); }), eps);
}

} // namespace
} // namespace qrv::test
