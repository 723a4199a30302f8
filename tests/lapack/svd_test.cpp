// Singular values of bidiagonal matrices by QR iteration and by divide and conquer.
#include <gtest/gtest.h>

#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/kept_sweeps.hpp"
#include "qrv/native.h"
#include "support/call.hpp"
#include "support/known_values.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

struct BidiagonalMatrix {
    std::string name;
    char uplo;
    std::vector<float> d, e;

    int n() const { return static_cast<int>(d.size()); }
    WideMatrix<float> wide(int rows, int columns) const {
        return {rows, columns, [&](int i, int j) {
                    if (i == j)
                        return i < n() ? double{d[std::size_t(i)]} : 0;
                    const int row = uplo == 'U' ? i : j, column = uplo == 'U' ? j : i;
                    return column == row + 1 && std::size_t(row) < e.size() ? double{e[std::size_t(row)]} : 0;
                }};
    }
    double norm() const { return test::norm(wide(n() + 1, n() + 1), 'M'); }
};

// With `beyond` more elements beside the diagonal than a square has.
std::vector<BidiagonalMatrix> matrices(int n, char uplo, int beyond = 0) {
    std::vector<BidiagonalMatrix> list;
    const auto add = [&](const char* name, const auto& diagonal, const auto& beside) {
        BidiagonalMatrix b{name, uplo, {}, {}};
        for (int i = 0; i < n; ++i)
            b.d.push_back(static_cast<float>(diagonal(i)));
        for (int i = 0; i + 1 < n + beyond; ++i)
            b.e.push_back(static_cast<float>(beside(i)));
        list.push_back(b);
    };
    std::mt19937 random(static_cast<unsigned>(n));
    const auto any = [&](int) { return any_size_one<float>(random); };
    const auto one = [](int) { return 1.0; };
    const auto zero = [](int) { return 0.0; };
    add("random", any, any);
    add("zero", zero, zero);
    add("ones", one, one);
    add("equal, nearly diagonal", one, [&](int i) { return 1e-7 * any(i); });
    add("equal, hardly coupled", one, [](int) { return 60 * unitRoundoff; });
    add(
        "graded", [n](int i) { return std::pow(10.0, -8.0 * i / n); },
        [n](int i) { return std::pow(10.0, -8.0 * i / n); });
    add(
        "graded upward", [n](int i) { return std::pow(2.0, (i - n) / 2.0); }, any);
    add("in parts", any, [&](int i) { return i % 7 == 3 ? 0.0F : any(i); });
    add(
        "zero inside", [&](int i) { return i == n / 2 ? 0 : any(i); }, any);
    add(
        "repeated", [](int i) { return 1.0 + i / 3; }, [](int) { return 1e-5; });
    add(
        "close", [](int i) { return 1 + i * 1.2e-7; }, [](int) { return 1e-3; });
    add(
        "of all sizes", [&](int i) { return std::exp(30 * any(i)); }, [&](int i) { return std::exp(30 * any(i)); });
    add(
        "rank one", [](int i) { return i == 0; }, [](int i) { return i == 0; });
    add(
        "tiny", [&](int i) { return 1e-30F * any(i); }, [&](int i) { return 1e-30F * any(i); });
    add(
        "huge", [&](int i) { return 1e30F * any(i); }, [&](int i) { return 1e30F * any(i); });
    return list;
}

double error_of(const BidiagonalMatrix& b, const std::vector<float>& s, const Operand<float>& u,
                const Operand<float>& vt) {
    return svd_error(b.wide(u.rows(), vt.columns()), WideMatrix<float>(u), s, WideMatrix<float>(vt));
}

double largest_difference(const std::vector<float>& x, const std::vector<float>& y) {
    double largest = 0;
    for (std::size_t i = 0; i < x.size(); ++i)
        largest = std::max(largest, std::abs(double{x[i]} - y[i]));
    return largest;
}

// Descending: of the symmetric matrix of twice the order with zeros on its diagonal, whose counts of eigenvalues are
// relatively accurate.
std::vector<double> values_in_double(const BidiagonalMatrix& b) {
    Tridiagonal t{b.name, std::vector<float>(2 * b.d.size()), {}};
    for (std::size_t i = 0; i < b.d.size(); ++i) {
        t.e.push_back(b.d[i]);
        if (i + 1 < b.d.size())
            t.e.push_back(b.e[i]);
    }
    const std::vector<double> all = t.eigenvalues();
    return {all.rbegin(), all.rbegin() + b.n()};
}
// Of the values that are at least so large beside the largest one.
double largest_relative_error(const std::vector<float>& s, const std::vector<double>& expected, double least) {
    double largest = 0;
    for (std::size_t i = 0; i < s.size(); ++i)
        if (expected[i] > std::max(1e-34, least * expected[0]))
            largest = std::max(largest, std::abs(s[i] / expected[i] - 1));
    return largest;
}

// Around the size that is not divided any more, and two and four of it.
constexpr int sizes[] = {1, 2, 3, 10, 24, 25, 26, 27, 50, 51, 52, 53, 104, 130};

TEST(BidiagonalSvd, ResidualOfEveryMatrix) {
    for (const int n : sizes)
        for (const char uplo : {'U', 'l'})
            for (const BidiagonalMatrix& b : matrices(n, uplo == 'l' ? 'L' : uplo)) {
                SCOPED_TRACE(b.name + ' ' + uplo + ' ' + std::to_string(n));
                std::vector<float> s = b.d, e = b.e, values = b.d, divided = b.d;
                Operand<float> u = identity_operand(n), vt = u, c = u;
                GuardedVector<float> work(4 * n);
                EXPECT_EQ(call(SBDSQR, uplo, n, n, n, n, s, e, vt, u, c, work), 0);
                EXPECT_LT(error_of(b, s, u, vt), 8);
                EXPECT_TRUE(is_descending(s));
                EXPECT_LT(norm(WideMatrix<float>(c) - WideMatrix<float>(u).adjoint(), 'M'), 1e-5);

                e = b.e;
                EXPECT_EQ(call(SBDSQR, uplo, n, 0, 0, 0, values, e, nullptr, 1, nullptr, 1, nullptr, 1, work), 0);
                EXPECT_LE(largest_difference(values, s), 10 * n * unitRoundoff * b.norm()) << "values";
                if (n ==
                    24) { // small ones are accurate too, alone as far as their squares are floats beside the largest
                    const std::vector<double> exact = values_in_double(b);
                    EXPECT_LE(largest_relative_error(s, exact, 0), 10 * n * unitRoundoff);
                    EXPECT_LE(largest_relative_error(values, exact, 1e-15), 10 * n * unitRoundoff) << "values";
                }

                e = b.e;
                Operand<float> du(n, n, n + 1), dvt(n, n, n + 2);
                GuardedVector<float> ownWork(3 * n * n + 4 * n);
                GuardedInts iwork(8 * n);
                EXPECT_EQ(lapack::bdsdc(uplo_of(uplo), n, divided.data(), e.data(), du.view(), dvt.view(),
                                        ownWork.data(), iwork.data()),
                          0);
                EXPECT_LT(error_of(b, divided, du, dvt), 15) << "divided";
                EXPECT_TRUE(is_descending(divided)) << "divided";
                const int units = b.name == "equal, hardly coupled" ? 30 : 20 * n; // half of what couples them
                EXPECT_LE(largest_difference(divided, s), units * unitRoundoff * b.norm()) << "divided";
            }
}

// From this order on 6 n^2 rotations, which the iteration may take, are more than 2^31.
TEST(BidiagonalSvd, TakesAsManyRotationsAsLongMatricesNeed) {
    const int n = 18919;
    std::vector<float> d(n, 1.0F), e(n - 1), vt(n), work(4 * n);
    d[0] = 3, d[1] = 2, e[0] = e[1] = 1;
    EXPECT_EQ(call(SBDSQR, 'U', n, 1, 0, 0, d, e, vt, n, nullptr, 1, nullptr, 1, work), 0);
}

// A column or a row more than the square.
TEST(BidiagonalSvd, ResidualOfLongerMatrices) {
    for (const int n : {1, 2, 7, 26, 40})
        for (const char uplo : {'U', 'L'})
            for (const BidiagonalMatrix& b : matrices(n, uplo, 1)) {
                SCOPED_TRACE(b.name + ' ' + uplo + std::to_string(n));
                const int m = n + 1, rows = uplo == 'U' ? n : m, columns = uplo == 'U' ? m : n;
                std::vector<float> s = b.d, e = b.e;
                Operand<float> u = identity_operand(rows), vt = identity_operand(columns), c = u;
                GuardedVector<float> work(3 * m * m + 2 * m);
                EXPECT_EQ(call(SLASDQ, uplo, 1, n, columns, rows, rows, s, e, vt, u, c, work), 0);
                EXPECT_LT(error_of(b, s, u, vt), 8);
                EXPECT_LT(norm(WideMatrix<float>(c) - WideMatrix<float>(u).adjoint(), 'M'), 1e-5);
                EXPECT_TRUE(is_descending({s.rbegin(), s.rend()}));
                if (uplo == 'L' || b.norm() > 2 || b.norm() < 0.1)
                    continue; // divide and conquer wants upper ones of size one
                s = b.d, e = b.e;
                Operand<float> du = identity_operand(n), dvt = identity_operand(m);
                GuardedInts iwork(8 * n);
                EXPECT_EQ(call(SLASD0, n, 1, s, e, du, dvt, 5, iwork, work), 0);
                EXPECT_LT(error_of(b, s, du, dvt), 40);
            }
}

// Sweeps are applied in blocks from 211 rows on, together with what the matrices are multiplied into.
TEST(BidiagonalSvd, ResidualOfKeptSweeps) {
    const int n = 230;
    for (const BidiagonalMatrix& b : matrices(n, 'U')) {
        if (b.name != "random" && b.name != "graded" && b.name != "graded upward" && b.name != "in parts")
            continue;
        std::vector<float> s = b.d, e = b.e, work(static_cast<std::size_t>(4 * n));
        Operand<float> u = identity_operand(n), vt = u;
        EXPECT_EQ(call(SBDSQR, 'U', n, n, n, 0, s, e, vt, u, nullptr, 1, work), 0);
        EXPECT_LT(error_of(b, s, u, vt), 8) << b.name;
        if (b.name == "graded") { // C by itself
            std::vector<float> values = b.d, beside = b.e;
            Operand<float> c = identity_operand(n);
            EXPECT_EQ(call(SBDSQR, 'U', n, 0, 0, n, values, beside, nullptr, 1, nullptr, 1, c, work), 0);
            EXPECT_LT(norm(WideMatrix<float>(c) - WideMatrix<float>(u).adjoint(), 'M'), 1e-4);
        }
    }
}

// Sweeps of either direction and on any rows, kept back or not, are what they are one by one.
TEST(BidiagonalSvd, KeptSweepsStayInOrder) {
    struct Sweep {
        Direct direct;
        int first, last;
    };
    constexpr Sweep sweeps[] = {{Direct::forward, 0, 11}, {Direct::forward, 2, 10}, {Direct::backward, 1, 9},
                                {Direct::backward, 0, 8}, {Direct::forward, 0, 3},  {Direct::forward, 5, 6}};
    const int n = 12, across = 220, few = 3; // so many that sweeps are kept, and so few that loops turn them
    std::mt19937 random(8);
    Operand<float> u(across, n, across + 1), vt(n, across, n + 1), narrow(n, few, n + 2);
    for (Operand<float>* const x : {&u, &vt, &narrow})
        x->set([&](int, int) { return any_size_one<float>(random); });
    Operand<float> expectedU = u, expectedVt = vt, expectedNarrow = narrow;
    std::vector<float> work(4 * n), c(n), s(n);
    lapack::KeptSweeps kept(n, {across, across, few, vt.view(), u.view(), narrow.view()}, work.data());
    for (const auto& [direct, first, last] : sweeps) {
        kept.begin(direct, first, last);
        for (int i = first; i < last; ++i) {
            c[std::size_t(i)] = std::cos(0.3F * float(i + last)), s[std::size_t(i)] = std::sin(0.3F * float(i + last));
            kept.put(i, c[std::size_t(i)], s[std::size_t(i)], c[std::size_t(i)], -s[std::size_t(i)]);
        }
        kept.end();
        const int lines = last - first + 1;
        kernel::lasr(Side::left, Pivot::variable, direct, lines, across, &c[std::size_t(first)], &s[std::size_t(first)],
                     {&expectedVt(first, 0), expectedVt.ld()});
        for (int i = first; i < last; ++i)
            s[std::size_t(i)] = -s[std::size_t(i)];
        kernel::lasr(Side::right, Pivot::variable, direct, across, lines, &c[std::size_t(first)],
                     &s[std::size_t(first)], {&expectedU(0, first), expectedU.ld()});
        kernel::lasr(Side::left, Pivot::variable, direct, lines, few, &c[std::size_t(first)], &s[std::size_t(first)],
                     {&expectedNarrow(first, 0), expectedNarrow.ld()});
    }
    kept.apply();
    EXPECT_LE(difference(vt, expectedVt), 1e-5);
    EXPECT_LE(difference(u, expectedU), 1e-5);
    EXPECT_LE(difference(narrow, expectedNarrow), 1e-5);
}

// Roots lie between the poles, and differences and sums are accurate where they are small.
TEST(BidiagonalSvd, RootsOfTheSecularEquation) {
    std::mt19937 random(5);
    for (const int n : {1, 2, 3, 5, 20, 60})
        for (const double gap : {1.0, 1e-3, 2e-6})
            for (const float tiny : {1.0F, 1e-3F, 1e-6F}) {
                std::vector<float> d(static_cast<std::size_t>(n)), z(d), delta(d), sum(d);
                double length = 0;
                for (int i = 0; i < n; ++i) {
                    d[std::size_t(i)] = static_cast<float>(i == 0 ? 0 : 1 + gap * i);
                    z[std::size_t(i)] = (i % 3 == 1 ? tiny : 1) * (0.5F + std::abs(any_size_one<float>(random)));
                    length += double{z[std::size_t(i)]} * z[std::size_t(i)];
                }
                for (float& x : z)
                    x = static_cast<float>(x / std::sqrt(length));
                const float rho = 0.7F;
                for (int i = 1; i <= n; ++i) {
                    float sigma = nan;
                    EXPECT_EQ(call(SLASD4, n, i, d, z, delta, rho, &sigma, sum), 0);
                    double value = 1 / double{rho}, size = value;
                    for (int j = 0; j < n && n > 1; ++j) {
                        const double z2 = double{z[std::size_t(j)]} * z[std::size_t(j)];
                        value += z2 / (double{delta[std::size_t(j)]} * sum[std::size_t(j)]);
                        size += std::abs(z2 / (double{delta[std::size_t(j)]} * sum[std::size_t(j)]));
                        EXPECT_GT(sum[std::size_t(j)], 0);
                        EXPECT_EQ(delta[std::size_t(j)] > 0, j >= i) << n << ' ' << i << ' ' << j;
                    }
                    EXPECT_TRUE(n == 1 || std::abs(value) <= 8 * unitRoundoff * size)
                        << n << ' ' << i << ' ' << gap << ' ' << tiny;
                }
            }
}

// The published steps of a merge are those of the merge, whose scaling does nothing here.
TEST(BidiagonalSvd, MergesAreTheirSteps) {
    const int nl = 5, nr = 4, n = nl + nr + 1;
    const float alpha = 1, beta = 0.5F;
    for (const int sqre : {0, 1}) {
        const int m = n + sqre;
        std::mt19937 random(9);
        Operand<float> u = identity_operand(n), vt = identity_operand(m), u2(n, n, n + 1), vt2(m, m, m + 2),
                       q(n, n, n + 3);
        const auto count = [](int size) { return static_cast<std::size_t>(size); };
        std::vector<float> d(count(n)), e(d), z(count(m)), dsigma(d), work(count(3 * m * m + 2 * m));
        std::vector<int> idxq(count(n)), ints(count(4 * n));
        for (int i = 0; i < n; ++i) {
            d[std::size_t(i)] = std::abs(any_size_one<float>(random)) / 2;
            e[std::size_t(i)] = 0.3F;
            idxq[std::size_t(i)] = i < nl ? i + 1 : i - nl;
        }
        lapack::lasdq(Uplo::upper, true, nl, d.data(), e.data(), {nl + 1, nl, 0, vt.view(), u.view()}, work.data());
        lapack::lasdq(Uplo::upper, sqre == 1, nr, &d[nl + 1], &e[nl + 1],
                      {nr + sqre, nr, 0, vt.view().block(nl + 1, nl + 1), u.view().block(nl + 1, nl + 1)}, work.data());
        Operand<float> wholeU(u), wholeVt(vt);
        std::vector<float> whole(d);
        std::vector<int> order(idxq);
        int k = -1;
        whole[nl] = 1e30F; // has no value yet
        EXPECT_EQ(call(SLASD1, nl, nr, sqre, whole, &alpha, &beta, wholeU, wholeVt, order, ints, work), 0);
        int *const idxp = ints.data(), *const idx = idxp + n, *const idxc = idx + n, *const types = idxc + n;
        EXPECT_EQ(
            call(SLASD2, nl, nr, sqre, &k, d, z, alpha, beta, u, vt, dsigma, u2, vt2, idxp, idx, idxc, idxq, types), 0);
        EXPECT_EQ(types[0] + types[1] + types[2] + types[3], n - 1);
        EXPECT_EQ(call(SLASD3, nl, nr, sqre, k, d, q, dsigma, u, u2, vt, vt2, idxc, types, z), 0);
        EXPECT_LE(largest_difference(d, whole), 1e-6);
        EXPECT_LE(std::max(difference(u, wholeU), difference(vt, wholeVt)), 1e-5);

        // Parts that are diagonal, and a row between them with one element at most: z has one too.
        for (const float size : {0.0F, 1.0F}) {
            double expected = size, found = 0;
            for (int i = 0; i < n; ++i) {
                d[std::size_t(i)] = size * float(i + 1);
                idxq[std::size_t(i)] = i < nl ? i + 1 : i - nl;
                expected += i == nl ? 0 : double{d[std::size_t(i)]} * d[std::size_t(i)];
            }
            Operand<float> left = identity_operand(n), right = identity_operand(m);
            const float none = 0;
            EXPECT_EQ(call(SLASD1, nl, nr, sqre, d, &none, &size, left, right, idxq, ints, work), 0);
            for (const float value : d)
                found += double{value} * value;
            EXPECT_NEAR(found, expected, 1e-5 * expected) << size;
            EXPECT_LT(orthogonality_error(WideMatrix<float>(left)), 8) << size;
        }
    }
}

// ---- Factors of vectors, multiplied out -----------------------------------------------------------------------------

using Columns = std::vector<std::vector<double>>;

void turn(std::vector<double>& x, std::vector<double>& y, double c, double s) {
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double other = x[i];
        x[i] = c * other + s * y[i];
        y[i] = c * y[i] - s * other;
    }
}

// Columns first to first + n of U, and one more of V if `longer`: those of the parts become those of the whole.
void multiply_by_merge(const lapack::CompactMerge& f, int first, int nl, int n, bool longer, Columns& u, Columns& v) {
    const auto at = [&](int i) { return std::size_t(first + i); };
    std::fill(u[at(nl)].begin(), u[at(nl)].end(), 0.0);
    u[at(nl)][at(nl)] = 1;
    for (int r = 0; r < *f.givptr; ++r)
        for (Columns* x : {&u, &v})
            turn((*x)[at(f.givcol(r, 1) - 1)], (*x)[at(f.givcol(r, 0) - 1)], f.givnum(r, 1), f.givnum(r, 0));
    if (longer)
        turn(v[at(n)], v[at(nl)], *f.c, *f.s);
    const Columns oldU = u, oldV = v;
    for (int j = 0; j < n; ++j)
        u[at(j)] = oldU[at(f.perm[j] - 1)], v[at(j)] = oldV[at(f.perm[j] - 1)];
    const Columns keptU = u, keptV = v;
    for (int j = 0; j < *f.k; ++j) {
        std::vector<double> left, right;
        double leftSquares = 0, rightSquares = 0;
        for (int i = 0; i < *f.k; ++i) {
            const double pole = f.poles(i, 1), beyond = pole - f.poles(i <= j ? j : j + 1, 1),
                         difference = beyond - (i <= j ? f.difl[j] : f.difr(j, 0));
            right.push_back(*f.k == 1 ? 1 : f.z[i] / difference / (pole + f.poles(j, 0)));
            left.push_back(*f.k == 1 ? (f.z[0] < 0 ? -1 : 1) : i == 0 ? -1 : pole * right.back());
            leftSquares += left.back() * left.back(), rightSquares += right.back() * right.back();
        }
        EXPECT_NEAR(f.difr(j, 1) / std::sqrt(rightSquares), 1, 1e-5);
        for (std::size_t row = 0; row < v[0].size(); ++row) {
            double sumU = 0, sumV = 0;
            for (int i = 0; i < *f.k; ++i) {
                sumV += keptV[at(i)][row] * right[std::size_t(i)];
                if (row < u[0].size())
                    sumU += keptU[at(i)][row] * left[std::size_t(i)];
            }
            v[at(j)][row] = sumV / std::sqrt(rightSquares);
            if (row < u[0].size())
                u[at(j)][row] = sumU / std::sqrt(leftSquares);
        }
    }
}

// The vectors of n rows from `first` on.
void multiply_out(const lapack::CompactForm& f, int leaf, int first, int n, bool longer, Columns& u, Columns& v) {
    const auto of_leaf = [&](int row, int size, bool leafLonger) {
        for (int j = 0; j < size + leafLonger; ++j)
            for (int i = 0; i < size + leafLonger; ++i) {
                v[std::size_t(first + row + j)][std::size_t(first + row + i)] = f.vt(row + j, i);
                if (i < size && j < size)
                    u[std::size_t(first + row + j)][std::size_t(first + row + i)] = f.u(row + i, j);
            }
    };
    if (n <= leaf)
        return of_leaf(0, n, longer);
    std::vector<int> center(static_cast<std::size_t>(n)), left(center), right(center);
    const lapack::DivisionTree tree = lapack::lasdt(n, center.data(), left.data(), right.data(), leaf);
    for (int level = tree.levels - 1; level >= 0; --level)
        for (int p = (1 << level) - 1, end = 2 * p + 1, number = end; p < end; ++p, --number) {
            const auto at = std::size_t(p);
            const int row = center[at] - 1, nl = left[at], nr = right[at];
            const bool ownLonger = p < end - 1 || longer;
            if (level == tree.levels - 1) {
                of_leaf(row - nl, nl, true);
                of_leaf(row + 1, nr, ownLonger);
            }
            multiply_by_merge(f.merge(true, row - nl, level, number - 1), first + row - nl, nl, nl + nr + 1, ownLonger,
                              u, v);
        }
}

Columns zeros(int n) {
    return Columns(std::size_t(n), std::vector<double>(std::size_t(n)));
}

TEST(BidiagonalSvd, ResidualOfFactors) {
    const int leaf = 5;
    for (const int sqre : {0, 1})
        for (const int n : {2, 6, 13, 40})
            for (const BidiagonalMatrix& b : matrices(n, 'U', sqre)) {
                if (b.norm() > 2 || b.norm() < 0.1)
                    continue; // divide and conquer wants those of size one
                const int m = n + sqre, ld = n + 3, levels = 4;
                const auto floats = [&](int columns) { return Operand<float>(m, columns, ld); };
                Operand<float> u = floats(leaf), vt = floats(leaf + 1), difl = floats(levels), z = floats(levels),
                               difr = floats(2 * levels), poles = floats(2 * levels), givnum = floats(2 * levels);
                std::vector<int> k(static_cast<std::size_t>(n)), givptr(k), givcol(k.size() * 2 * levels),
                    perm(k.size() * levels), ints(7 * k.size());
                std::vector<float> c(k.size()), s(c), d = b.d, e = b.e, values = b.d, e2 = b.e;
                GuardedVector<float> work(6 * m + (leaf + 1) * (leaf + 1));
                const auto run = [&](int icompq, std::vector<float>& to, std::vector<float>& beside) {
                    EXPECT_EQ(call(SLASDA, icompq, leaf, n, sqre, to, beside, u, vt.data(), k, difl.data(), difr.data(),
                                   z.data(), poles.data(), givptr, givcol, n, perm, givnum.data(), c, s, work, ints),
                              0)
                        << b.name << ' ' << n << ' ' << sqre;
                };
                run(0, values, e2);
                run(1, d, e);
                std::sort(values.begin(), values.end());
                Columns left = zeros(n), right = zeros(m);
                const lapack::CompactForm factors{
                    u.view(),      vt.view(),    k.data(),      difl.view(),        difr.view(),
                    z.view(),      poles.view(), givptr.data(), {givcol.data(), n}, {perm.data(), n},
                    givnum.view(), c.data(),     s.data()};
                multiply_out(factors, leaf, 0, n, sqre == 1, left, right);
                const WideMatrix<float> wholeU(n, n,
                                               [&](int i, int j) { return left[std::size_t(j)][std::size_t(i)]; }),
                    wholeVt(n, m, [&](int i, int j) { return right[std::size_t(i)][std::size_t(j)]; });
                EXPECT_LT(svd_error(b.wide(n, m), wholeU, d, wholeVt), 40) << b.name << ' ' << n << ' ' << sqre;
                std::sort(d.begin(), d.end());
                EXPECT_LE(largest_difference(d, values), 10 * n * unitRoundoff) << b.name << ' ' << n << ' ' << sqre;
            }
}

// SBDSDC's, in arrays of exactly the published lengths.
TEST(BidiagonalSvd, ResidualOfCompactForm) {
    const int s = 25;
    for (const int n : {1, 2, 25, 26, 40, 52, 110})
        for (const char uplo : {'U', 'L'})
            for (const BidiagonalMatrix& b : matrices(n, uplo)) {
                const int logarithm = static_cast<int>(std::log2(n / (s + 1.0)));
                std::vector<float> d = b.d, e = b.e;
                GuardedVector<float> q(n * (11 + 2 * s + 8 * logarithm)), work(6 * n);
                std::vector<int> iq(static_cast<std::size_t>(std::max(0, n * (3 + 3 * logarithm)))),
                    iwork(8 * d.size());
                EXPECT_EQ(call(SBDSDC, uplo, 'P', n, d, e, nullptr, 1, nullptr, 1, q, iq, work, iwork), 0)
                    << b.name << n;
                EXPECT_TRUE(is_descending(d)) << b.name << n;
                Columns u = zeros(n), v = zeros(n);
                std::vector<std::size_t> order;
                const Matrix<float> columns{q.data(), n};
                const auto from = [&](int first, int column) { return columns.block(first, column); };
                if (n <= s)
                    multiply_out({from(0, 0), from(0, n), {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}}, s, 0, n, false,
                                 u, v);
                for (int first = 0; n > s && first < n;) {
                    const float* const part = columns.column(2 * s + 1) + first;
                    const int size = int(part[0]), l = logarithm + 1,
                              nodes = size > s ? (1 << lapack::division_levels(size, s)) - 1 : 0;
                    std::vector<int> k(part + 1 + 2 * nodes, part + 1 + 3 * nodes),
                        givptr(part + 1 + 3 * nodes, part + 1 + 4 * nodes);
                    std::vector<float> c(part + 1, part + 1 + nodes), sines(part + 1 + nodes, part + 1 + 2 * nodes);
                    const int next = 2 * s + 3;
                    int *const columnsOfPairs = &iq[std::size_t(l * n + first)], *const places =
                                                                                     &iq[std::size_t(first)];
                    const lapack::CompactForm factors{from(first, 0),
                                                      from(first, s),
                                                      k.data(),
                                                      from(first, next),
                                                      from(first, next + l),
                                                      from(first, next + 3 * l),
                                                      from(first, next + 4 * l),
                                                      givptr.data(),
                                                      {columnsOfPairs, n},
                                                      {places, n},
                                                      from(first, next + 6 * l),
                                                      c.data(),
                                                      sines.data()};
                    multiply_out(factors, s, first, size, false, u, v);
                    first += std::max(1, size);
                }
                for (int i = 0; i < n; ++i)
                    order.push_back(n > s ? std::size_t(columns(i, 2 * s + 2)) - 1 : std::size_t(i));
                const Columns &left = uplo == 'U' ? u : v, &right = uplo == 'U' ? v : u;
                const WideMatrix<float> wholeU(
                    n, n, [&](int i, int j) { return left[order[std::size_t(j)]][std::size_t(i)]; }),
                    wholeVt(n, n, [&](int i, int j) { return right[order[std::size_t(i)]][std::size_t(j)]; });
                EXPECT_LT(svd_error(b.wide(n, n), wholeU, d, wholeVt), 20) << b.name << ' ' << uplo << n;
            }
}

TEST(BidiagonalSvd, RootOfThreePoles) {
    const float z[] = {0.3F, 0.2F, 0.5F};
    for (const int last : {0, 1})
        for (const float rho : {-2.0F, -0.1F, 0.0F, 0.3F, 5.0F})
            for (const float gap : {1e-4F, 0.1F, 0.9F}) { // of 0 from the pole below it
                const float d[] = {(last ? -2 : -1) * (last ? 1 : gap), last ? -gap : 1 - gap, last ? 1 - gap : 2.0F};
                float atZero = rho, tau = nan;
                for (int j = 0; j < 3; ++j)
                    atZero += z[j] / d[j];
                EXPECT_EQ(call(SLAED6, 2, last, rho, d, z, atZero, &tau), 0);
                EXPECT_TRUE(tau > d[last] && tau < d[last + 1]);
                double value = rho, slope = 0;
                for (int j = 0; j < 3; ++j) {
                    value += z[j] / (d[j] - double{tau});
                    slope += z[j] / ((d[j] - double{tau}) * (d[j] - double{tau}));
                }
                // finit is rounded as a sum of large terms, tau as a float
                EXPECT_LE(std::abs(value), slope * 4e-7 + 1e-6 * (1 + z[last] / gap))
                    << last << ' ' << rho << ' ' << gap;
            }
}

TEST(BidiagonalSvd, TreesHalveTheirRows) {
    for (int n = 4; n < 300; n += n < 60 ? 1 : 13)
        for (const int leaf : {3, 25}) {
            std::vector<int> center(static_cast<std::size_t>(n)), left(center), right(center);
            int levels = 0, nodes = 0;
            if (n > leaf)
                call(SLASDT, n, &levels, &nodes, center, left, right, leaf);
            for (std::size_t p = 0; p < std::size_t(nodes); ++p) {
                EXPECT_TRUE(left[p] > 0 && left[p] - right[p] >= 0 && left[p] - right[p] <= 1) << n << ' ' << leaf;
                EXPECT_TRUE(int(p) < nodes / 2 || left[p] <= leaf) << n << ' ' << leaf;
            }
        }
}

TEST(BidiagonalSvd, MergesRunsInEitherDirection) {
    const auto merged = [](int n1, int n2, const std::vector<float>& a, int step1, int step2) {
        std::vector<int> index(a.size());
        call(SLAMRG, n1, n2, a, step1, step2, index);
        return index;
    };
    EXPECT_EQ(merged(5, 3, {1, 3, 3, 7, 9, 3, 2, 0}, 1, -1), (std::vector{8, 1, 7, 2, 3, 6, 4, 5}));
    EXPECT_EQ(merged(2, 3, {5, 4, 1, 2, 6}, -1, 1), (std::vector{3, 4, 2, 1, 5}));
}

} // namespace
} // namespace qrv::test
