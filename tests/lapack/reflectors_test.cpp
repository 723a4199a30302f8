// Householder reflectors: what they are told by their identities in double, and blocks of them against one after the
// other.
#include <gtest/gtest.h>

#include "lapack/calls/qr.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/elements.hpp"
#include "lapack/lapack.hpp"
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/stored_q.hpp"

namespace qrv::test {
namespace {

using lapack::Direct, lapack::StoreV, lapack::BlockWork;

// ---- One reflector --------------------------------------------------------------------------------------------------

// x of every size beside alpha, down to where it is lost; zeros, denormal numbers, and up to overflow.
constexpr float heads[] = {0, 1, -1, 1e-20F, 0x1p-100F, -0x1p-130F, 0x1p-149F, 0x1p126F, -0x1.8p127F, 0x1.fp127F};
constexpr float imaginaryParts[] = {0, 1, 0x1p-20F, 0x1p-131F, 0x1p125F};
constexpr float sizes[] = {0,        0x1p-149F, 0x1p-128F, 0x1p-118F, 1e-20F,  0x1p-30F,
                           0x1p-20F, 0x1p-8F,   1,         0x1p102F,  0x1p122F};

constexpr std::pair<int, int> lengths[] = {{1, 1}, {2, 1}, {3, 3}, {18, 1}, {18, 3}, {101, 1}}; // with increments

template <class T, class Reflect>
void expect_reflected(const Reflect& make, bool nonNegative) {
    combine(heads, imaginaryParts, sizes, lengths).each([&](float head, float imag, float size, const auto& length) {
        const auto [n, inc] = length;
        std::minstd_rand random(static_cast<unsigned>(n));
        GuardedVector<T> x(n - 1, inc);
        x.fill([&] { return size * any_size_one<T>(random); });
        T alpha = scalar<T>(head);
        set_imaginary(alpha, imag);
        const auto whole = [&](Wide<T> first) { // [first; x]
            std::vector<Wide<T>> v = x.widened();
            v.insert(v.begin(), first);
            return WideMatrix<T>(int(v.size()), 1, v);
        };
        WideMatrix<T> before = whole(widen(alpha));
        const double norm2 = norm(before);
        if (norm2 > std::numeric_limits<float>::max())
            return;

        const Wide<T> tau = widen(make(n, alpha, x.data(), inc));
        const WideMatrix<T> v = whole(1);
        reflect<T>(true, before, v.values, conjugate(tau)); // H^H [alpha; x] = [beta; 0]
        before.values[0] -= widen(alpha);
        const double eps = 8 * unitRoundoff, unit = norm2 * eps + 0x1p-149, square = std::pow(norm(v), 2);
        for (const Wide<T>& rest : before.values)
            EXPECT_TRUE(std::abs(rest) <= unit) << std::abs(rest) / unit;
        EXPECT_TRUE(std::abs(std::abs(widen(alpha)) - norm2) <= unit);
        EXPECT_EQ(std::imag(Wide<SingleComplex>(widen(alpha))), 0);
        EXPECT_TRUE(std::abs(2 * std::real(tau) - std::norm(tau) * square) * square <= 3 * eps) << "H is not unitary";
        const double re = std::real(tau), sign = std::real(widen(alpha));
        EXPECT_TRUE(nonNegative ? sign >= 0 : tau == 0.0 || (re >= 1 && re <= 2 && !(sign * head > 0))) << sign;
    });
}

TEST_OF_ELEMENTS(Reflectors, OfOneColumn) {
    const auto larfg = [](int n, T& alpha, T* x, int inc) { return lapack::larfg(n, alpha, Vector<T>{x, inc}); };
    const auto larfp = [](int n, T& alpha, T* x, int inc) { return lapack::larfp(n, alpha, Vector<T>{x, inc}); };
    expect_reflected<T>(larfg, false);
    expect_reflected<T>(larfp, true);
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
    // What is not finite ends, and shows.
    combine({nan, infinity, -infinity}, {false, true}).each([&](float bad, bool inHead) {
        T x[] = {scalar<T>(2), scalar<T>(inHead ? 3 : bad), scalar<T>(1)}, y[] = {x[0], x[1], x[2]};
        T alpha = scalar<T>(inHead ? bad : 1), beta = alpha;
        EXPECT_FALSE(is_finite(larfp(4, alpha, x, 1)) && is_finite(alpha));
        EXPECT_FALSE(is_finite(larfg(4, beta, y, 1)) && is_finite(beta));
    });
}

TEST_OF_ELEMENTS(Reflectors, OneApplied) {
    combine({true, false}, {0, 1, 4, 8, 33}, {0, 1, 5, 9, 18}, {1, -1, 2, -3}, {0, 1, 3})
        .each([](bool left, int m, int n, int inc, int zeros) {
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
                        EXPECT_TRUE(difference(x, expected) < 50 * unitRoundoff);
                    }
                lapack::larf<T>(left ? Side::left : Side::right, m, n, {v.data(), inc}, tau, {c.data(), c.ld()},
                                work.data());
                EXPECT_TRUE(difference(c, expected) < 50 * unitRoundoff);
            }
        });
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

TEST_OF_ELEMENTS(Reflectors, BlockResiduals) {
    combine({Direct::forward, Direct::backward}, {StoreV::columns, StoreV::rows}, blockSizes)
        .each([](Direct direct, StoreV store, const BlockSize& size) {
            const RandomReflectors<T> block(direct, store, size.n, size.k, direct == Direct::forward ? size.zeros : 0);
            const Operand<T> t = factor_of(block.q);
            combine({true, false}, {Op::none, lapack::adjoint<T>}, {BlockWork::published, BlockWork::upright},
                    {0, 1, 7, 37})
                .each([&](bool left, Op op, BlockWork form, int across) {
                    const int m = left ? size.n : across, n = left ? across : size.n;
                    Operand<T> c(m, n, m + 1, 1);
                    std::minstd_rand random(static_cast<unsigned>(across));
                    c.fill_random(random);
                    const int place = std::max(size.k, size.n - size.zeros) - 1;
                    for (int i = 0; i < size.n; ++i) // a last column or row of zeros, or nearly so
                        if (across == 7 || (across == 37 && i != place))
                            (left ? c(i, across - 1) : c(across - 1, i)) = T();
                    const bool upright = left && form == BlockWork::upright;
                    const int workRows = upright ? size.k : across;
                    Operand<T> work(workRows, upright ? across : size.k, workRows + 2);
                    WideMatrix<T> expected(c);
                    block.q.apply(left, op != Op::none, expected);
                    lapack::larfb<T>(left ? Side::left : Side::right, op,
                                     {direct, store, size.k, block.v.view(), t.view()}, m, n, c.view(), work.view(),
                                     form);
                    EXPECT_TRUE(difference(c, expected) < 40 * unitRoundoff) << "n " << size.n << " k " << size.k;
                });
        });
}

// ---- Parts ----------------------------------------------------------------------------------------------------------

TEST_OF_ELEMENTS(Reflectors, LastRowAndColumn) {
    struct Place {
        int i, j;
        float value;
    };
    combine({std::pair{4, 6}, {1, 1}, {5, 1}, {1, 7}, {0, 3}, {3, 0}},
            {Place{0, 0, 1}, {2, 1, nan}, {3, 5, -1}, {1, 5, 1}, {3, 2, 1}, {2, 3, 0}, {2, 2, -0.0F}})
        .each([](const auto& shape, const Place& p) {
            const auto [rows, columns] = shape;
            Operand<T> a(rows, columns, rows + 2);
            a.fill(0);
            const bool inside = p.i < rows && p.j < columns, counts = inside && !(p.value == 0);
            if (inside)
                set_imaginary(a(p.i, p.j) = scalar<T>(isComplex<T> ? 0 : p.value), p.value);
            EXPECT_EQ(lapack::ilaslr(rows, columns, Matrix<T>(a.view())), counts ? p.i + 1 : 0);
            EXPECT_EQ(lapack::ilaslc(rows, columns, Matrix<T>(a.view())), counts ? p.j + 1 : 0);
        });
}

TEST(ReflectorParts, LengthsAndQuotients) {
    const float huge = 0x1p127F, tiny = 0x1p-140F;
    EXPECT_EQ(SLAPY2(&huge, &tiny), huge);
    const float three = 3 * tiny, four = 4 * tiny, twelve = -12 * tiny;
    EXPECT_EQ(lapack::lapy2(three, -four), 5 * tiny);
    EXPECT_EQ(lapack::lapy3(three, four, twelve), 13 * tiny);
    EXPECT_TRUE(std::isnan(lapack::lapy2(nan, 1)) && std::isnan(lapack::lapy3(1, 2, nan)));
    combine({huge, tiny, 1.0F}, {huge, tiny, 1.0F}, {0, 1, 2, 3}).each([](float x, float y, int which) {
        const auto [c, d] = std::array<std::pair<float, float>, 4>{{{y, y / 2}, {-y / 2, y}, {y, 0}, {0, -y}}}[which];
        const std::complex<double> exact = std::complex<double>(x, -x / 4) / std::complex<double>(c, d);
        const SingleComplex q = lapack::ladiv({x, -x / 4}, {c, d});
        const bool fits = std::abs(exact) < 0x1p127 && std::abs(exact) > 0x1p-120;
        EXPECT_TRUE(!fits || std::abs(widen(q) - exact) <= 2 * unitRoundoff * std::abs(exact));
    });
    // The terms of the real part nearly cancel: 1 is left, over the square of the divisor.
    EXPECT_FLOAT_EQ(lapack::ladiv({-5576465, 7557631}, {16006694, 11810681}).re, 2.5271259e-15F);
    EXPECT_TRUE((lapack::ladiv({1, 2}, {infinity, 1}) == SingleComplex{0, 0}));
}

} // namespace
} // namespace qrv::test
