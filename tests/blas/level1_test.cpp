// Contract of the level 1 kernels of two vectors and of scaling, on every build, against oracles in double.
#include <cstring>

#include "support/builds.hpp"
#include "support/vectors.hpp"

namespace qrv::test {
namespace {

constexpr double eps = std::numeric_limits<float>::epsilon();

// The factors of all routines: exact products, and nothing that a routine may treat as a special case.
constexpr float a = 0.75F, c = 0.5F, s = -0.25F;
constexpr SingleComplex ca{0.5F, -0.75F};

// How a routine is called; functions give their value, others 0.
template <class T>
struct Call {
    const VectorBuild& build;
    int n;
    T* x;
    int incx;
    T* y;
    int incy;
};

// A routine, and what it does with element x, element y and its value so far.
template <class T>
struct Routine {
    const char* name;
    T (*run)(const Call<T>&);
    void (*step)(Wide<T>& x, Wide<T>& y, Wide<T>& value);
    bool sums = false; // its value is a sum over all elements
};

template <class T>
void copy_element(Wide<T>& x, Wide<T>& y, Wide<T>&) {
    y = x;
}
template <class T>
void swap_elements(Wide<T>& x, Wide<T>& y, Wide<T>&) {
    std::swap(x, y);
}

#define QRV_VECTOR_CALL(kernel) p.build.kernel(&p.n, p.x, &p.incx, p.y, &p.incy)
const std::vector<Routine<float>> realRoutines = {
    {"saxpy",
     [](const Call<float>& p) { return p.build.blas_saxpy_kernel(&p.n, &a, p.x, &p.incx, p.y, &p.incy), 0.0F; },
     [](double& x, double& y, double&) { y += a * x; }},
    {"scopy", [](const Call<float>& p) { return QRV_VECTOR_CALL(blas_scopy_kernel), 0.0F; }, copy_element<float>},
    {"sswap", [](const Call<float>& p) { return QRV_VECTOR_CALL(blas_sswap_kernel), 0.0F; }, swap_elements<float>},
    {"sdot", [](const Call<float>& p) { return QRV_VECTOR_CALL(blas_sdot_kernel); },
     [](double& x, double& y, double& sum) { sum += x * y; }, true},
    {"srot",
     [](const Call<float>& p) { return p.build.blas_srot_kernel(&p.n, p.x, &p.incx, p.y, &p.incy, &c, &s), 0.0F; },
     [](double& x, double& y, double&) {
         const double rotated = c * x + s * y;
         y = c * y - s * x;
         x = rotated;
     }},
    {"sscal", [](const Call<float>& p) { return p.build.blas_sscal_kernel(&p.n, &a, p.x, &p.incx), 0.0F; },
     [](double& x, double&, double&) { x *= a; }},
};

using C = SingleComplex;
using WideC = Wide<C>;
const std::vector<Routine<C>> complexRoutines = {
    {"caxpy", [](const Call<C>& p) { return p.build.blas_caxpy_kernel(&p.n, &ca, p.x, &p.incx, p.y, &p.incy), C{}; },
     [](WideC& x, WideC& y, WideC&) { y += widen(ca) * x; }},
    {"ccopy", [](const Call<C>& p) { return QRV_VECTOR_CALL(blas_ccopy_kernel), C{}; }, copy_element<C>},
    {"cswap", [](const Call<C>& p) { return QRV_VECTOR_CALL(blas_cswap_kernel), C{}; }, swap_elements<C>},
    {"cdotc",
     [](const Call<C>& p) {
         C value{nan, nan};
         p.build.blas_cdotc_kernel(&value, &p.n, p.x, &p.incx, p.y, &p.incy);
         return value;
     },
     [](WideC& x, WideC& y, WideC& sum) { sum += std::conj(x) * y; }, true},
    {"cdotu",
     [](const Call<C>& p) {
         C value{nan, nan};
         p.build.blas_cdotu_kernel(&value, &p.n, p.x, &p.incx, p.y, &p.incy);
         return value;
     },
     [](WideC& x, WideC& y, WideC& sum) { sum += x * y; }, true},
    {"cscal", [](const Call<C>& p) { return p.build.blas_cscal_kernel(&p.n, &ca, p.x, &p.incx), C{}; },
     [](WideC& x, WideC&, WideC&) { x *= widen(ca); }},
    {"csscal", [](const Call<C>& p) { return p.build.blas_csscal_kernel(&p.n, &a, p.x, &p.incx), C{}; },
     [](WideC& x, WideC&, WideC&) { x *= a; }},
};
#undef QRV_VECTOR_CALL

template <class T>
const std::vector<Routine<T>>& routines() {
    if constexpr (std::is_same_v<T, float>)
        return realRoutines;
    else
        return complexRoutines;
}

struct Shape {
    int n, incx = 1, incy = 1;
    int startx = 0, starty = 0; // floats past a 64-byte boundary
    Guard guardx = Guard::canaries, guardy = Guard::canaries;
};

std::ostream& operator<<(std::ostream& out, const Shape& p) {
    return out << "n=" << p.n << " inc " << p.incx << ',' << p.incy << " start " << p.startx << ',' << p.starty
               << " guards " << static_cast<int>(p.guardx) << ',' << static_cast<int>(p.guardy);
}

// Runs every routine of every build on one shape. The elements are element(random); error(i, size) is what element i
// may be wrong by, and the value of a function if i is -1, where `size` is the sum of |x||y|.
template <class T, class Element, class Error>
void check(const Shape& p, const Element& element, const Error& error) {
    std::mt19937 random(static_cast<unsigned>(p.n));
    const auto value = [&] { return element(random); };
    for (const Routine<T>& routine : routines<T>())
        for (const VectorBuild& build : vector_builds()) {
            GuardedVector<T> x(p.n, p.incx, p.startx, p.guardx), y(p.n, p.incy, p.starty, p.guardy);
            std::vector<Wide<T>> wideX = x.fill(value).widened(), wideY = y.fill(value).widened();
            Wide<T> sum{};
            double size = 0;
            for (int i = 0; i < p.n; ++i) {
                auto& xi = wideX[p.incx == 0 ? 0 : static_cast<std::size_t>(i)];
                auto& yi = wideY[p.incy == 0 ? 0 : static_cast<std::size_t>(i)];
                size += std::abs(xi) * std::abs(yi);
                routine.step(xi, yi, sum);
            }
            const T result = routine.run({build, p.n, x.data(), p.incx, y.data(), p.incy});
            const auto allowed = [&](std::size_t i) { return error(static_cast<int>(i), size); };
            const bool good = holds(x, wideX, allowed) && holds(y, wideY, allowed) &&
                              std::abs(widen(result) - sum) <= (routine.sums ? error(-1, size) : 0);
            ASSERT_TRUE(good) << build << ' ' << routine.name << ' ' << p;
        }
}

template <class T>
class Level1 : public testing::Test {
protected:
    static void exact(const Shape& p) {
        check<T>(p, eighths<T>, [](int, double) { return 0.0; });
    }
};
using ElementTypes = testing::Types<float, SingleComplex>;
TYPED_TEST_SUITE(Level1, ElementTypes, );

// All distances of the two vectors from 16-byte boundaries, with all lengths of head, main loop and tail.
TYPED_TEST(Level1, AllLengthsAndStarts) {
    for (int n = -1; n <= 300; ++n)
        for (int pair = 0; pair < 16; ++pair)
            if (n <= 80 || pair % 8 == n % 8)
                this->exact({.n = n, .startx = pair % 4 + 4 * (n % 3 + 1), .starty = pair / 4 + 4 * (n / 3 % 4)});
    this->exact({.n = 5000, .startx = 1, .starty = 3});
}

TYPED_TEST(Level1, Increments) {
    constexpr int increments[] = {-3, -1, 0, 1, 2};
    for (int n : {0, 1, 2, 3, 5, 8, 17, 70})
        for (int incx : increments)
            for (int incy : increments)
                if (n <= 5 || incx * incy != 0) // what is computed in place n times soon rounds
                    this->exact({.n = n, .incx = incx, .incy = incy, .startx = 1, .starty = n % 4});
}

// A page at either end of one operand; where that one begins follows from its length, the other one begins anywhere.
TYPED_TEST(Level1, TouchesNothingBeyondItsOperands) {
    for (Guard guard : {Guard::pageBehind, Guard::pageInFront}) {
        for (int n = 0; n < 150; n += n == 34 ? 30 : n == 84 ? 44 : 1)
            for (int start = 0; start < 4; ++start) {
                this->exact({.n = n, .starty = start, .guardx = guard});
                this->exact({.n = n, .startx = start, .guardy = guard});
            }
        for (int n : {1, 5, 18})
            for (int incx : {2, -1})
                for (int incy : {-3, -1, 1})
                    this->exact({.n = n, .incx = incx, .incy = incy, .guardx = guard, .guardy = guard});
    }
}

// Elements of size one, so that of anything but a sum each has an error of a few units.
TYPED_TEST(Level1, RoundsAsItsSumsAllow) {
    for (int n : {1, 30, 300, 5000})
        check<TypeParam>({.n = n, .startx = 2, .starty = 1}, any_size_one<TypeParam>,
                         [=](int i, double size) { return i < 0 ? n * eps * size : 2 * eps; });
}

// A vector of elements at addresses that are no multiples of 4, of both operands or of one.
TYPED_TEST(Level1, AcceptsAnyAddress) {
    using T = TypeParam;
    constexpr int n = 150;
    for (const Routine<T>& routine : routines<T>())
        for (const VectorBuild& build : vector_builds())
            for (int shift : {1, 4, 5}) {
                std::mt19937 random(3);
                const int shifts[] = {shift % 4, shift / 4};
                alignas(16) unsigned char memory[2][sizeof(T) * (n + 1)];
                GuardedVector<T> x(n), y(n), readX(n), readY(n);
                x.fill([&] { return eighths<T>(random); });
                y.fill([&] { return eighths<T>(random); });
                std::memcpy(memory[0] + shifts[0], x.data(), n * sizeof(T));
                std::memcpy(memory[1] + shifts[1], y.data(), n * sizeof(T));
                const T expected = routine.run({build, n, x.data(), 1, y.data(), 1});
                const T result = routine.run({build, n, reinterpret_cast<T*>(memory[0] + shifts[0]), 1,
                                              reinterpret_cast<T*>(memory[1] + shifts[1]), 1});
                std::memcpy(readX.data(), memory[0] + shifts[0], n * sizeof(T));
                std::memcpy(readY.data(), memory[1] + shifts[1], n * sizeof(T));
                EXPECT_TRUE(holds_exactly(readX, x.widened()) && holds_exactly(readY, y.widened()) &&
                            widen(result) == widen(expected))
                    << build << ' ' << routine.name << " bytes " << shifts[0] << ',' << shifts[1];
            }
}

// What AXPY and SCAL do by their factor, over all lengths of a vector loop and increments 1 and 2.
TYPED_TEST(Level1, ZeroAndNanFactors) {
    using T = TypeParam;
    const T none = scalar<T>(0), undefined = scalar<T>(nan);
    const auto is_nan = [](Wide<T> x) { return std::isnan(std::abs(x)); };
    for (const VectorBuild& build : vector_builds()) {
        const auto axpy = [&](const T& alpha, GuardedVector<T>& x, GuardedVector<T>& y) {
            const int n = x.size(), incx = x.inc(), incy = y.inc();
            if constexpr (std::is_same_v<T, float>)
                build.blas_saxpy_kernel(&n, &alpha, x.data(), &incx, y.data(), &incy);
            else
                build.blas_caxpy_kernel(&n, &alpha, x.data(), &incx, y.data(), &incy);
        };
        const auto scal = [&](const T& alpha, GuardedVector<T>& x) {
            const int n = x.size(), inc = x.inc();
            if constexpr (std::is_same_v<T, float>)
                build.blas_sscal_kernel(&n, &alpha, x.data(), &inc);
            else
                build.blas_cscal_kernel(&n, &alpha, x.data(), &inc);
        };
        for (int inc : {1, 2})
            for (int n = 1; n < 70; ++n) {
                GuardedVector<T> x(n, inc), y(n, inc);
                x.fill([] { return element<T>([] { return nan; }); });
                y.fill([] { return element<T>([] { return 1.0F; }); });
                const auto before = y.widened();
                axpy(none, x, y);
                EXPECT_TRUE(holds_exactly(y, before)) << build << " n=" << n << " alpha 0";
                scal(none, x);
                const auto scaled = x.widened();
                x.fill([] { return scalar<T>(1); });
                axpy(undefined, x, y);
                const auto added = y.widened();
                EXPECT_TRUE(std::all_of(scaled.begin(), scaled.end(), is_nan)) << build << " n=" << n << " 0 * NaN";
                EXPECT_TRUE(std::all_of(added.begin(), added.end(), is_nan)) << build << " n=" << n << " alpha NaN";
            }
    }
}

} // namespace
} // namespace qrv::test
