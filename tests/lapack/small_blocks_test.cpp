// Blocks of order 1 and 2 of the nonsymmetric eigenproblem: standard forms, shifted systems, Sylvester equations.
#include <array>
#include <cmath>
#include <gtest/gtest.h>

#include "qrv/native.h"
#include "support/call.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

using std::abs;

// ---- Standard forms -------------------------------------------------------------------------------------------------

void expect_standard_form(float a0, float b0, float c0, float d0) {
    SCOPED_TRACE(testing::Message() << a0 << ' ' << b0 << ' ' << c0 << ' ' << d0);
    float a = a0, b = b0, c = c0, d = d0, r1, i1, r2, i2, cs, sn;
    SLANV2(&a, &b, &c, &d, &r1, &i1, &r2, &i2, &cs, &sn);
    const double p = cs, q = sn, size = abs(double{a0}) + abs(double{b0}) + abs(double{c0}) + abs(double{d0});
    EXPECT_LE(abs(p * p + q * q - 1), 4 * unitRoundoff);
    const double aa = a0 * p + b0 * q, bb = b0 * p - a0 * q, cc = c0 * p + d0 * q, dd = d0 * p - c0 * q;
    const double expected[] = {aa * p + cc * q, bb * p + dd * q, cc * p - aa * q, dd * p - bb * q};
    const float found[] = {a, b, c, d};
    for (int i = 0; i < 4; ++i)
        EXPECT_LE(abs(expected[i] - found[i]), 6 * unitRoundoff * size + 0x1p-148) << i;
    EXPECT_EQ(r1, a);
    EXPECT_EQ(r2, d);
    EXPECT_EQ(i1, -i2);
    if (c == 0) {
        EXPECT_EQ(i1, 0);
        return;
    }
    EXPECT_EQ(a, d);
    EXPECT_TRUE((b < 0 && c > 0) || (b > 0 && c < 0)) << b << ' ' << c;
    const double root = std::sqrt(abs(double{b})) * std::sqrt(abs(double{c}));
    EXPECT_LE(abs(i1 - root), 2 * unitRoundoff * root + 0x1p-149);
}

TEST(StandardForm, Residual) {
    const float ulp = 0x1p-23F;
    const float numbers[] = {0,     1,      -1,     2,       -0.3F,  1 + ulp, 1 - ulp / 2,
                             1e-4F, -1e-8F, 1e-20F, -1e-38F, 1e-45F, 1e18F,   -1e37F};
    for (const float a : numbers)
        for (const float b : numbers)
            for (const float c : numbers)
                for (const float d : numbers)
                    expect_standard_form(a, b, c, d);
    for (const auto& [a, b, c, d] : {std::array{-5.0F, 1.0F, -9.0F, 1.0F}, {-4, -1, 4, 0}, {-4, 1, -4, 0}})
        expect_standard_form(a, b, c, d); // one value twice: a lower triangle as soon as the diagonal is equal
    for (int i = 0; i < 4; ++i)
        for (const float odd : {nan, infinity}) {
            float x[] = {1, 2, -3, 1.5F}, values[4], cs, sn;
            x[i] = odd;
            SLANV2(x, x + 1, x + 2, x + 3, values, values + 1, values + 2, values + 3, &cs, &sn);
            EXPECT_FALSE(std::all_of(x, x + 4, [](float y) { return std::isfinite(y); })) << i << ' ' << odd;
        }
}

// ---- Shifted systems ----------------------------------------------------------------------------------------------

struct Shifted {
    int trans, na, nw;
    float smin, ca, d1, d2, wr, wi;
    const float* a; // by rows
    float rhs;      // the size of b
};

void expect_solution(const Shifted& s) {
    SCOPED_TRACE(testing::Message() << s.trans << s.na << s.nw << " smin " << s.smin << " w " << s.wr << ' ' << s.wi
                                    << " a " << s.a[0] << ' ' << s.a[1] << ' ' << s.a[2] << ' ' << s.a[3] << " b "
                                    << s.rhs);
    Operand<float> a(s.na, s.na, s.na + 1), b(s.na, s.nw, s.na + 2), x(s.na, s.nw, s.na);
    const float shares[] = {1, 0.5F, -2, 1};
    a.set([&](int i, int j) { return s.a[2 * i + j]; });
    b.set([&](int i, int j) { return s.rhs * shares[2 * i + j]; });
    float scale = nan, xnorm = nan;
    const int info = call(SLALN2, s.trans, s.na, s.nw, s.smin, s.ca, a, s.d1, s.d2, b, s.wr, s.wi, x, &scale, &xnorm);
    ASSERT_TRUE(scale > 0 && scale <= 1) << scale;
    using Number = std::complex<double>;
    const auto number = [&](const Operand<float>& y, int i) { return Number(y(i, 0), s.nw == 2 ? y(i, 1) : 0); };
    double size = 0, largest = 0, bsize = 0;
    Number m[2][2];
    for (int i = 0; i < s.na; ++i) {
        for (int j = 0; j < s.na; ++j) {
            m[i][j] = s.ca * double{s.a[s.trans ? 2 * j + i : 2 * i + j]};
            if (i == j)
                m[i][j] -= double{i == 0 ? s.d1 : s.d2} * Number(s.wr, s.nw == 2 ? s.wi : 0);
            size = std::max(size, abs(m[i][j]));
        }
        EXPECT_TRUE(std::isfinite(abs(number(x, i))));
        largest = std::max(largest, abs(number(x, i).real()) + abs(number(x, i).imag()));
        bsize = std::max(bsize, abs(number(b, i)));
    }
    EXPECT_LE(abs(xnorm - largest), 8 * unitRoundoff * largest);
    EXPECT_LE(size * largest, 0x1p126);                     // nor does a product with the matrix overflow
    const double moved = info == 1 ? s.smin + 0x1p-124 : 0; // by what a pivot may have been changed
    for (int i = 0; i < s.na; ++i) {
        Number sum = -double{scale} * number(b, i);
        for (int j = 0; j < s.na; ++j)
            sum += m[i][j] * number(x, j);
        EXPECT_LE(abs(sum),
                  16 * unitRoundoff * (size * largest + scale * bsize) + 2 * moved * largest + size * 0x1p-147)
            << "row " << i << " info " << info;
    }
}

TEST(ShiftedSystem, Residual) {
    const float entries[][4] = {{2, 1, -1, 3},      {1e-3F, 5, 7, 0},     {1, 1, 1, 1},
                                {0, 0, 0, 0},       {1e30F, 1, 1, 1e30F}, {1e-30F, 1e-35F, 0, 2e-30F},
                                {3, -2, 4, 1e-20F}, {0, 1e20F, 1e-20F, 0}};
    for (const auto& e : entries)
        for (const int trans : {0, 1})
            for (const int na : {1, 2})
                for (const int nw : {1, 2})
                    for (const float smin : {0.0F, 1e-6F})
                        for (const float w : {0.0F, 1.0F, 2.5F, 1e-30F})
                            for (const float rhs : {1.0F, 1e-30F, 1e30F})
                                expect_solution(
                                    {trans, na, nw, smin, 1.5F, 1, 0.5F, w, w == 1 ? 1e-10F : 0.75F * w, e, rhs});
    const float tiny[] = {1e-37F, 0, 0, 1e-37F};
    expect_solution({0, 2, 1, 0, 1, 1, 1, 0, 0, tiny, 1e5F});
}

// ---- Sylvester equations ------------------------------------------------------------------------------------------

void expect_sylvester(int transL, int transR, int sign, int n1, int n2, const float* left, const float* right,
                      float rhs) {
    SCOPED_TRACE(testing::Message() << transL << transR << sign << n1 << n2 << " left " << left[0] << " right "
                                    << right[0] << " b " << rhs);
    Operand<float> tl(n1, n1, n1 + 1), tr(n2, n2, n2 + 2), b(n1, n2, n1), x(n1, n2, n1 + 3);
    tl.set([&](int i, int j) { return left[2 * i + j]; });
    tr.set([&](int i, int j) { return right[2 * i + j]; });
    b.set([&](int i, int j) { return rhs * static_cast<float>(1 + i - 3 * j); });
    float scale = nan, xnorm = nan;
    const int info = call(SLASY2, transL, transR, sign, n1, n2, tl, tr, b, &scale, x, &xnorm);
    ASSERT_TRUE(scale > 0 && scale <= 1) << scale;
    double size = 0, largest = 0, rows = 0, bsize = 0;
    for (int i = 0; i < 4; ++i)
        size = std::max({size, abs(double{left[i]}), abs(double{right[i]})});
    x.each_stored([&](int i, int j) {
        EXPECT_TRUE(std::isfinite(x(i, j)));
        largest = std::max(largest, abs(double{x(i, j)}));
        bsize = std::max(bsize, abs(double{b(i, j)}));
    });
    for (int i = 0; i < n1; ++i)
        rows = std::max(rows, abs(double{x(i, 0)}) + (n2 == 2 ? abs(double{x(i, 1)}) : 0));
    EXPECT_LE(abs(xnorm - rows), 4 * unitRoundoff * rows);
    const double moved = info == 1 ? std::max(0x1p-23 * size, 0x1p-103) : 0;
    x.each_stored([&](int i, int j) {
        double sum = -double{scale} * b(i, j);
        for (int k = 0; k < n1; ++k)
            sum += double{transL ? tl(k, i) : tl(i, k)} * x(k, j);
        for (int k = 0; k < n2; ++k)
            sum += double{x(i, k)} * sign * (transR ? tr(j, k) : tr(k, j));
        EXPECT_LE(abs(sum), 64 * unitRoundoff * (size * largest + scale * bsize) + 4 * moved * largest) << i << j;
    });
}

TEST(SmallSylvester, Residual) {
    const float blocks[][4] = {{2, 1, -1, 2},      {1, 3, 0, 1},
                               {1e-20F, 1, -1, 5}, {1e30F, 0, 1e10F, -1e30F},
                               {0, 0, 0, 0},       {1e-30F, 1e-31F, -1e-30F, 1e-30F}};
    for (const auto& left : blocks)
        for (const auto& right : blocks)
            for (const int options : {0, 1, 2, 3, 4, 5, 6, 7})
                for (const int n1 : {1, 2})
                    for (const int n2 : {1, 2})
                        for (const float rhs : {1.0F, 1e30F})
                            expect_sylvester(options & 1, options >> 1 & 1, options & 4 ? 1 : -1, n1, n2, left, right,
                                             rhs);
}

} // namespace
} // namespace qrv::test
