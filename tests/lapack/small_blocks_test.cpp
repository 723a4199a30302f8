// Blocks of order 1 and 2 of the nonsymmetric eigenproblem: standard forms, shifted systems, Sylvester equations.
#include <array>
#include <cmath>
#include <gtest/gtest.h>

#include "qrv/native.h"
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

using std::abs;
using Rows = std::array<float, 4>; // of a block of order 2

// ---- Standard forms -------------------------------------------------------------------------------------------------

void expect_standard_form(float a0, float b0, float c0, float d0) {
    float a = a0, b = b0, c = c0, d = d0, r1, i1, r2, i2, cs, sn;
    SLANV2(&a, &b, &c, &d, &r1, &i1, &r2, &i2, &cs, &sn);
    const double p = cs, q = sn, size = abs(double{a0}) + abs(double{b0}) + abs(double{c0}) + abs(double{d0});
    EXPECT_LE(abs(p * p + q * q - 1), 4 * unitRoundoff);
    const double aa = a0 * p + b0 * q, bb = b0 * p - a0 * q, cc = c0 * p + d0 * q, dd = d0 * p - c0 * q;
    const double expected[] = {aa * p + cc * q, bb * p + dd * q, cc * p - aa * q, dd * p - bb * q};
    const float found[] = {a, b, c, d};
    for (int i = 0; i < 4; ++i)
        EXPECT_LE(abs(expected[i] - found[i]), 6 * unitRoundoff * size + 0x1p-148) << i;
    EXPECT_TRUE(r1 == a && r2 == d && i1 == -i2);
    const double root = std::sqrt(abs(double{b})) * std::sqrt(abs(double{c}));
    if (c == 0)
        EXPECT_EQ(i1, 0);
    else
        EXPECT_TRUE(a == d && (b < 0) == (c > 0) && abs(i1 - root) <= 2 * unitRoundoff * root + 0x1p-149) << b;
}

TEST(StandardForm, Residual) {
    const float ulp = 0x1p-23F;
    const float numbers[] = {0,     1,      -1,     2,       -0.3F,  1 + ulp, 1 - ulp / 2,
                             1e-4F, -1e-8F, 1e-20F, -1e-38F, 1e-45F, 1e18F,   -1e37F};
    combine(numbers, numbers, numbers, numbers).each(expect_standard_form);
    for (const auto& [a, b, c, d] : {Rows{-5, 1, -9, 1}, {-4, -1, 4, 0}, {-4, 1, -4, 0}})
        expect_standard_form(a, b, c, d); // one value twice: a lower triangle as soon as the diagonal is equal
    combine({0, 1, 2, 3}, {nan, infinity}).each([](int i, float odd) {
        float x[] = {1, 2, -3, 1.5F}, values[4], cs, sn;
        x[i] = odd;
        SLANV2(x, x + 1, x + 2, x + 3, values, values + 1, values + 2, values + 3, &cs, &sn);
        EXPECT_FALSE(std::all_of(x, x + 4, [](float y) { return std::isfinite(y); }));
    });
}

// ---- Systems that are scaled ----------------------------------------------------------------------------------------

Operand<float> block(const Rows& rows, int m, int n, int extra) {
    Operand<float> x(m, n, m + extra);
    return x.set([&](int i, int j) { return rows[std::size_t(2 * i + j)]; });
}

// What an operator of this size makes of X is scale B, up to so many roundings and what `moved` changes in it.
template <class T>
void expect_image(const WideMatrix<T>& image, const WideMatrix<T>& x, float scale, const WideMatrix<T>& b, double size,
                  double moved, int roundings) {
    EXPECT_TRUE(scale > 0 && scale <= 1) << scale;
    const WideMatrix<T> scaled(b.rows, b.columns, [&](int i, int j) { return double{scale} * b(i, j); });
    const double largest = norm(x, 'M'), unit = roundings * unitRoundoff;
    EXPECT_TRUE(std::isfinite(largest));
    EXPECT_LE(norm(image - scaled, 'M'),
              unit * (size * largest + norm(scaled, 'M')) + moved * largest + size * 0x1p-147);
}

void expect_shifted(const Rows& rows, int trans, int na, int nw, float smin, float wr, float wi, float rhs) {
    const Operand<float> a = block(rows, na, na, 1), b = block({rhs, 0.5F * rhs, -2 * rhs, rhs}, na, nw, 2);
    Operand<float> x(na, nw, na);
    const float ca = 1.5F, d[] = {1, 0.5F};
    float scale = nan, xnorm = nan;
    const int info = call(SLALN2, trans, na, nw, smin, ca, a, d[0], d[1], b, wr, wi, x, &scale, &xnorm);
    using Number = std::complex<double>;
    const auto column_of = [&](const Operand<float>& y) {
        return WideMatrix<SingleComplex>(na, 1, [&](int i, int) { return Number(y(i, 0), nw == 2 ? y(i, 1) : 0); });
    };
    const WideMatrix<SingleComplex> found = column_of(x), m(na, na, [&](int i, int j) {
        const Number w(wr, nw == 2 ? wi : 0);
        return double{ca} * (trans ? a(j, i) : a(i, j)) - (i == j ? double{d[i]} * w : 0);
    });
    double largest = 0;
    for (const Number& y : found.values)
        largest = std::max(largest, abs(y.real()) + abs(y.imag()));
    EXPECT_LE(abs(xnorm - largest), 8 * unitRoundoff * largest);
    EXPECT_LE(norm(m, 'M') * largest, 0x1p126); // nor does a product with the matrix overflow
    expect_image(m * found, found, scale, column_of(b), norm(m, 'M'), info == 1 ? 2 * (smin + 0x1p-124) : 0, 16);
}

TEST(ShiftedSystem, Residual) {
    const Rows matrices[] = {{2, 1, -1, 3},      {1e-3F, 5, 7, 0},     {1, 1, 1, 1},
                             {0, 0, 0, 0},       {1e30F, 1, 1, 1e30F}, {1e-30F, 1e-35F, 0, 2e-30F},
                             {3, -2, 4, 1e-20F}, {0, 1e20F, 1e-20F, 0}};
    const float shifts[] = {0, 1, 2.5F, 1e-30F}, sizes[] = {1, 1e-30F, 1e30F};
    combine({0, 1}, {1, 2}, {1, 2}, std::array{0.0F, 1e-6F}, shifts, sizes, matrices)
        .each([](int trans, int na, int nw, float smin, float w, float rhs, const Rows& rows) {
            expect_shifted(rows, trans, na, nw, smin, w, w == 1 ? 1e-10F : 0.75F * w, rhs);
        });
    expect_shifted({1e-37F, 0, 0, 1e-37F}, 0, 2, 1, 0, 0, 0, 1e5F);
}

TEST(SmallSylvester, Residual) {
    const int orders[] = {1, 2};
    const Rows blocks[] = {{2, 1, -1, 2},      {1, 3, 0, 1},
                           {1e-20F, 1, -1, 5}, {1e30F, 0, 1e10F, -1e30F},
                           {0, 0, 0, 0},       {1e-30F, 1e-31F, -1e-30F, 1e-30F}};
    combine({0, 1}, {0, 1}, {-1, 1}, orders, orders, std::array{1.0F, 1e30F}, blocks, blocks)
        .each([](int transL, int transR, int sign, int n1, int n2, float rhs, const Rows& left, const Rows& right) {
            const Operand<float> tl = block(left, n1, n1, 1), tr = block(right, n2, n2, 2),
                                 b = block({rhs, -2 * rhs, 2 * rhs, -rhs}, n1, n2, 0);
            Operand<float> x(n1, n2, n1 + 3);
            float scale = nan, xnorm = nan;
            const int info = call(SLASY2, transL, transR, sign, n1, n2, tl, tr, b, &scale, x, &xnorm);
            const WideMatrix<float> found(x),
                fromLeft = WideMatrix<float>(tl, transL ? 'T' : 'N') * found,
                fromRight = found * WideMatrix<float>(tr, transR ? 'T' : 'N'),
                image(n1, n2, [&](int i, int j) { return fromLeft(i, j) + sign * fromRight(i, j); });
            double size = 0;
            for (const Rows* rows : {&left, &right})
                for (const float e : *rows)
                    size = std::max(size, abs(double{e}));
            EXPECT_LE(abs(xnorm - norm(found, 'I')), 4 * unitRoundoff * norm(found, 'I'));
            const double moved = info == 1 ? 4 * std::max(0x1p-23 * size, 0x1p-103) : 0;
            expect_image(image, found, scale, WideMatrix<float>(b), size, moved, 64);
        });
}

} // namespace
} // namespace qrv::test
