// Householder reflectors: what they are told by their identities in double, and blocks of them against one after the
// other.
#include <gtest/gtest.h>

#include "lapack/calls/qr.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/elements.hpp"
#include "lapack/lapack.hpp"
#include "support/call.hpp"
#include "support/stored_q.hpp"

namespace qrv::test {
namespace {

using lapack::Direct, lapack::StoreV, lapack::BlockWork;

template <class T>
struct Reflectors : testing::Test {};
TYPED_TEST_SUITE(Reflectors, Elements);

// ---- One reflector --------------------------------------------------------------------------------------------------

template <class T>
Wide<T> apply_row(const std::vector<Wide<T>>& v, const std::vector<Wide<T>>& x) { // v^H x
    Wide<T> sum = 0;
    for (std::size_t i = 0; i < v.size(); ++i)
        sum += conjugate(v[i]) * x[i];
    return sum;
}
template <class T>
double length_of(const std::vector<Wide<T>>& x) {
    double sum = 0;
    for (const Wide<T>& e : x)
        sum += std::norm(e);
    return std::sqrt(sum);
}

// x of every size beside alpha, down to where it is lost; zeros, denormal numbers, and up to overflow.
constexpr float heads[] = {0, 1, -1, 1e-20F, 0x1p-100F, -0x1p-130F, 0x1p-149F, 0x1p126F, -0x1.8p127F, 0x1.fp127F};
constexpr float imaginaryParts[] = {0, 1, 0x1p-20F, 0x1p-131F, 0x1p125F};
constexpr float sizes[] = {0,        0x1p-149F, 0x1p-128F, 0x1p-118F, 1e-20F,  0x1p-30F,
                           0x1p-20F, 0x1p-8F,   1,         0x1p102F,  0x1p122F};

template <class T, class Reflect>
void expect_reflected(const Reflect& reflect, bool nonNegative) {
    for (const float head : heads)
        for (const float imag : imaginaryParts)
            for (const float size : sizes)
                for (const auto& [n, inc] : {std::pair{1, 1}, {2, 1}, {3, 3}, {18, 1}, {18, 3}, {101, 1}}) {
                    std::minstd_rand random(static_cast<unsigned>(n));
                    GuardedVector<T> x(n - 1, inc);
                    x.fill([&, size = size] { return size * any_size_one<T>(random); });
                    T alpha = scalar<T>(head);
                    set_imaginary(alpha, imag);
                    std::vector<Wide<T>> before = x.widened();
                    before.insert(before.begin(), widen(alpha));
                    const double length = length_of<T>(before);
                    if (length > std::numeric_limits<float>::max())
                        continue;

                    const Wide<T> tau = widen(reflect(n, alpha, x.data(), inc));
                    std::vector<Wide<T>> v = x.widened();
                    v.insert(v.begin(), Wide<T>(1));
                    const auto where = testing::Message() << head << '+' << imag << "i, " << size << " n=" << n;
                    // H^H [alpha; x] = [beta; 0]
                    const Wide<T> factor = conjugate(tau) * apply_row<T>(v, before);
                    const double eps = 8 * unitRoundoff, unit = length * eps + 0x1p-149;
                    double error = std::abs(before[0] - factor - widen(alpha));
                    for (std::size_t i = 1; i < v.size(); ++i)
                        error = std::max(error, std::abs(before[i] - factor * v[i]));
                    EXPECT_TRUE(error <= unit) << where << ": " << error / unit;
                    EXPECT_TRUE(std::abs(std::abs(widen(alpha)) - length) <= unit) << where;
                    EXPECT_EQ(std::imag(Wide<SingleComplex>(widen(alpha))), 0) << where;
                    // H is unitary
                    const double square = std::pow(length_of<T>(v), 2);
                    EXPECT_TRUE(std::abs(2 * std::real(tau) - std::norm(tau) * square) * square <= 3 * eps) << where;
                    const double re = std::real(tau), sign = std::real(widen(alpha));
                    if (nonNegative) {
                        EXPECT_TRUE(sign >= 0) << where;
                    } else if (tau != 0.0) {
                        EXPECT_TRUE(re >= 1 && re <= 2 && !(sign * head > 0)) << where;
                    }
                }
}

TYPED_TEST(Reflectors, OfOneColumn) {
    using T = TypeParam;
    expect_reflected<T>(
        [](int n, T& alpha, T* x, int inc) {
            return lapack::larfg(n, alpha, Vector<T>{x, inc});
        },
        false);
    expect_reflected<T>(
        [](int n, T& alpha, T* x, int inc) {
            return lapack::larfp(n, alpha, Vector<T>{x, inc});
        },
        true);
    expect_reflected<T>( // a small matrix, which goes aside
        [](int n, T& alpha, T* x, int inc) {
            std::vector<T> column{alpha};
            for (int i = 0; i + 1 < n; ++i)
                column.push_back(x[i * inc]);
            T tau, work;
            lapack::geqr2(n, 1, Matrix<T>{column.data(), n}, &tau, &work);
            alpha = column[0];
            for (int i = 0; i + 1 < n; ++i)
                x[i * inc] = column[i + 1];
            return tau;
        },
        true);
}

// What is not finite ends, and shows.
TYPED_TEST(Reflectors, OfColumnsThatAreNotFinite) {
    using T = TypeParam;
    for (const float bad : {nan, infinity, -infinity})
        for (const bool inHead : {false, true}) {
            T alpha = scalar<T>(inHead ? bad : 1), x[3] = {scalar<T>(2), scalar<T>(inHead ? 3 : bad), scalar<T>(1)};
            const T tau = lapack::larfp(4, alpha, Vector<T>{x});
            EXPECT_FALSE(is_finite(tau) && is_finite(alpha)) << bad << inHead;
            alpha = scalar<T>(inHead ? bad : 1);
            const T other = lapack::larfg(4, alpha, Vector<T>{x});
            EXPECT_FALSE(is_finite(other) && is_finite(alpha)) << bad << inHead;
        }
}

TYPED_TEST(Reflectors, OneApplied) {
    using T = TypeParam;
    for (const bool left : {true, false})
        for (const int m : {0, 1, 4, 8, 33})
            for (const int n : {0, 1, 5, 9, 18})
                for (const int inc : {1, -1, 2, -3})
                    for (const int zeros : {0, 1, 3}) {
                        std::minstd_rand random(static_cast<unsigned>(m * n + zeros));
                        const int length = left ? m : n, across = left ? n : m;
                        GuardedVector<T> v(length, inc), work(across);
                        v.fill([&] { return any_size_one<T>(random); });
                        for (int i = std::max(0, length - zeros); i < length; ++i)
                            v[i] = T();
                        Operand<T> c(m, n, m + 2);
                        c.fill_random(random);
                        for (int i = 0; i < length; ++i) // a last column or row of zeros
                            if (zeros == 1 && across > 0)
                                (left ? c(i, across - 1) : c(across - 1, i)) = T();
                        for (const float size : {0.0F, 0.7F}) {
                            const T tau = scalar_of<T>(size);
                            WideMatrix<T> expected(c);
                            reflect(left, expected, v.widened(), widen(tau));
                            if constexpr (!isComplex<T>) // with a loop for each short length
                                if (Operand<T> x(c); inc == 1) {
                                    call(SLARFX, left ? 'L' : 'R', m, n, v, tau, x, work);
                                    EXPECT_TRUE(difference(x, expected) < 50 * unitRoundoff) << left << m << ' ' << n;
                                }
                            lapack::larf<T>(left ? Side::left : Side::right, m, n, {v.data(), inc}, tau,
                                            {c.data(), c.ld()}, work.data());
                            EXPECT_TRUE(difference(c, expected) < 50 * unitRoundoff)
                                << left << ' ' << m << ' ' << n << ' ' << inc << ' ' << zeros;
                        }
                    }
}

// ---- Blocks ---------------------------------------------------------------------------------------------------------

template <class T>
Operand<T> factor_of(const StoredQ<T>& q) {
    Operand<T> t(Form{q.k, q.k, Form::triangular, q.forward() ? 'U' : 'L'}, {.extra = 2});
    lapack::larft<T>(q.direct, q.store, q.n, q.k, {q.v.data(), q.v.ld()}, q.tau, {t.data(), t.ld()});
    return t;
}

struct BlockSize {
    int n, k, zeros;
};
constexpr BlockSize blockSizes[] = {{1, 1, 0},    {3, 3, 0},   {9, 2, 2},   {20, 5, 0},
                                    {40, 16, 24}, {70, 33, 7}, {33, 32, 0}, {9, 4, 7}};

TYPED_TEST(Reflectors, BlockResiduals) {
    using T = TypeParam;
    for (const BlockSize size : blockSizes)
        for (const Direct direct : {Direct::forward, Direct::backward})
            for (const StoreV store : {StoreV::columns, StoreV::rows}) {
                const RandomReflectors<T> block(direct, store, size.n, size.k,
                                                direct == Direct::forward ? size.zeros : 0);
                const Operand<T> t = factor_of(block.q);
                for (const bool left : {true, false})
                    for (const Op op : {Op::none, lapack::adjoint<T>})
                        for (const BlockWork form : {BlockWork::published, BlockWork::upright})
                            for (const int across : {0, 1, 7, 37}) {
                                const int m = left ? size.n : across, n = left ? across : size.n;
                                Operand<T> c(m, n, m + 1, 1);
                                std::minstd_rand random(static_cast<unsigned>(across));
                                c.fill_random(random);
                                const int place = std::max(size.k, size.n - size.zeros) - 1;
                                for (int i = 0; i < size.n; ++i) // a last column or row of zeros, or nearly so
                                    if (across == 7 || (across == 37 && i != place))
                                        (left ? c(i, across - 1) : c(across - 1, i)) = T();
                                const bool upright = left && form == BlockWork::upright;
                                Operand<T> work(upright ? size.k : across, upright ? across : size.k,
                                                (upright ? size.k : across) + 2);
                                WideMatrix<T> expected(c);
                                block.q.apply(left, op != Op::none, expected);
                                lapack::larfb<T>(
                                    left ? Side::left : Side::right, op,
                                    {direct, store, size.k, {block.v.data(), block.v.ld()}, {t.data(), t.ld()}}, m, n,
                                    {c.data(), c.ld()}, {work.data(), work.ld()}, form);
                                EXPECT_TRUE(difference(c, expected) < 40 * unitRoundoff)
                                    << "n=" << size.n << " k=" << size.k << ' ' << char(direct) << char(store) << ' '
                                    << left << letter(op) << across << ' ' << difference(c, expected) / unitRoundoff;
                            }
            }
}

// ---- Parts ----------------------------------------------------------------------------------------------------------

TYPED_TEST(Reflectors, LastRowAndColumn) {
    using T = TypeParam;
    struct Place {
        int i, j;
        float value;
    };
    for (const auto& [rows, columns] : {std::pair{4, 6}, {1, 1}, {5, 1}, {1, 7}, {0, 3}, {3, 0}})
        for (const Place p :
             {Place{0, 0, 1}, {2, 1, nan}, {3, 5, -1}, {1, 5, 1}, {3, 2, 1}, {2, 3, 0}, {2, 2, -0.0F}}) {
            Operand<T> a(rows, columns, rows + 2);
            a.fill(0);
            const bool inside = p.i < rows && p.j < columns, counts = inside && !(p.value == 0);
            if (inside)
                set_imaginary(a(p.i, p.j) = scalar<T>(isComplex<T> ? 0 : p.value), p.value);
            const Matrix<T> view{a.data(), a.ld()};
            EXPECT_EQ(lapack::ilaslr(rows, columns, view), counts ? p.i + 1 : 0)
                << rows << 'x' << columns << p.i << p.j;
            EXPECT_EQ(lapack::ilaslc(rows, columns, view), counts ? p.j + 1 : 0)
                << rows << 'x' << columns << p.i << p.j;
        }
}

TEST(ReflectorParts, LengthsAndQuotients) {
    const float huge = 0x1p127F, tiny = 0x1p-140F;
    EXPECT_EQ(SLAPY2(&huge, &tiny), huge);
    const float three = 3 * tiny, four = 4 * tiny, twelve = -12 * tiny;
    EXPECT_EQ(lapack::lapy2(three, -four), 5 * tiny);
    EXPECT_EQ(lapack::lapy3(three, four, twelve), 13 * tiny);
    EXPECT_TRUE(std::isnan(lapack::lapy2(nan, 1)) && std::isnan(lapack::lapy3(1, 2, nan)));
    for (const float x : {huge, tiny, 1.0F})
        for (const float y : {huge, tiny, 1.0F})
            for (const auto& [c, d] : {std::pair{y, y / 2}, {-y / 2, y}, {y, 0.0F}, {0.0F, -y}}) {
                const std::complex<double> exact = std::complex<double>(x, -x / 4) / std::complex<double>(c, d);
                const SingleComplex q = lapack::ladiv({x, -x / 4}, {c, d});
                const bool fits = std::abs(exact) < 0x1p127 && std::abs(exact) > 0x1p-120;
                EXPECT_TRUE(!fits || std::abs(widen(q) - exact) <= 2 * unitRoundoff * std::abs(exact))
                    << x << ' ' << c << ' ' << d;
            }
    // The terms of the real part nearly cancel: 1 is left, over the square of the divisor.
    EXPECT_FLOAT_EQ(lapack::ladiv({-5576465, 7557631}, {16006694, 11810681}).re, 2.5271259e-15F);
    EXPECT_TRUE((lapack::ladiv({1, 2}, {infinity, 1}) == SingleComplex{0, 0}));
}

} // namespace
} // namespace qrv::test
