// Singular values of bidiagonal matrices by QR iteration and by divide and conquer.
#include <functional>
#include <gtest/gtest.h>

#include "lapack/calls/svd.hpp"
#include "qrv/native.h"
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/known_values.hpp"
#include "support/oracle.hpp"
#include "support/teams.hpp"

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
    std::mt19937 random(static_cast<unsigned>(n));
    const auto any = [&](int) { return any_size_one<float>(random); };
    const auto one = [](int) { return 1.0; };
    const auto zero = [](int) { return 0.0; };
    const auto only = [](int place, double rest) { return [=](int i) { return i == place ? 1 : rest; }; };
    const auto falling = [n](int i) { return std::pow(10.0, -8.0 * i / n); };
    const auto times = [&](double size) { return [&any, size](int i) { return size * any(i); }; };
    const auto ofAllSizes = [&](int i) { return std::exp(30 * any(i)); };
    const struct {
        const char* name;
        std::function<double(int)> d, e;
    } kinds[] = {{"random", any, any},
                 {"zero", zero, zero},
                 {"ones", one, one},
                 {"strong middle", only(n / 2, 0.1), only(n / 2, 0.1)},
                 {"equal, nearly diagonal", one, times(1e-7)},
                 {"equal, hardly coupled", one, [](int) { return 60 * unitRoundoff; }},
                 {"graded", falling, falling},
                 {"graded upward", [n](int i) { return std::pow(2.0, (i - n) / 2.0); }, any},
                 {"in parts", any, [&](int i) { return i % 7 == 3 ? 0.0F : any(i); }},
                 {"zero inside", [&](int i) { return i == n / 2 ? 0 : any(i); }, any},
                 {"repeated", [](int i) { return 1.0 + i / 3; }, [](int) { return 1e-5; }},
                 {"close", [](int i) { return 1 + i * 1.2e-7; }, [](int) { return 1e-3; }},
                 {"of all sizes", ofAllSizes, ofAllSizes},
                 {"rank one", only(0, 0), only(0, 0)},
                 {"tiny", times(1e-30), times(1e-30)},
                 {"huge", times(1e30), times(1e30)}};
    std::vector<BidiagonalMatrix> list;
    for (const auto& kind : kinds) {
        BidiagonalMatrix& b = list.emplace_back(BidiagonalMatrix{kind.name, uplo, {}, {}});
        for (int i = 0; i < n; ++i)
            b.d.push_back(static_cast<float>(kind.d(i)));
        for (int i = 0; i + 1 < n + beyond; ++i)
            b.e.push_back(static_cast<float>(kind.e(i)));
    }
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

// Sweeps are applied in blocks from 211 rows on, together with what the matrices are multiplied into; two threads take
// a matrix each, more share each.
TEST(BidiagonalSvd, ResidualOfKeptSweeps) {
    const int n = 230;
    for (const BidiagonalMatrix& b : matrices(n, 'U'))
        for (const int team : {1, 2, 3}) {
            if (b.name != "random" && (team > 1 || (b.name != "in parts" && !b.name.starts_with("graded"))))
                continue;
            const ForcedTeam forced(team);
            std::vector<float> s = b.d, e = b.e, work(static_cast<std::size_t>(4 * n));
            Operand<float> u = identity_operand(n), vt = u;
            EXPECT_EQ(call(SBDSQR, 'U', n, n, n, 0, s, e, vt, u, nullptr, 1, work), 0);
            EXPECT_LT(error_of(b, s, u, vt), 8) << b.name << ' ' << team;
            if (b.name == "graded") { // C by itself
                std::vector<float> values = b.d, beside = b.e;
                Operand<float> c = identity_operand(n);
                EXPECT_EQ(call(SBDSQR, 'U', n, 0, 0, n, values, beside, nullptr, 1, nullptr, 1, c, work), 0);
                EXPECT_LT(norm(WideMatrix<float>(c) - WideMatrix<float>(u).adjoint(), 'M'), 1e-4);
            }
        }
}

// The published steps of a merge are those of the merge, whose scaling does nothing here: whatever vectors the parts
// have.
TEST(BidiagonalSvd, MergesAreTheirSteps) {
    const int nl = 5, nr = 4, n = nl + nr + 1;
    const float alpha = 1, beta = 0.5F;
    for (const int sqre : {0, 1}) {
        const int m = n + sqre;
        Operand<float> u = random_matrix<float>(n, n, 1), vt = random_matrix<float>(m, m, 2), wholeU = u, wholeVt = vt,
                       u2(n, n, n + 1), vt2(m, m, m + 2), q(n, n, n + 3);
        std::vector<float> d{0.1F, 0.2F, 0.4F, 0.5F, 0.7F, nan, 0.15F, 0.3F, 0.6F, 0.9F}, z(m), dsigma(n),
            work(3 * m * m + 2 * m), whole = d;
        std::vector<int> idxq{1, 2, 3, 4, 5, 0, 1, 2, 3, 4}, order = idxq, ints(4 * n);
        d[nl] = 0; // of the whole it has no value yet
        int k = -1;
        EXPECT_EQ(call(SLASD1, nl, nr, sqre, whole, &alpha, &beta, wholeU, wholeVt, order, ints, work), 0);
        int *const idxp = ints.data(), *const idx = idxp + n, *const idxc = idx + n, *const types = idxc + n;
        EXPECT_EQ(
            call(SLASD2, nl, nr, sqre, &k, d, z, alpha, beta, u, vt, dsigma, u2, vt2, idxp, idx, idxc, idxq, types), 0);
        EXPECT_EQ(types[0] + types[1] + types[2] + types[3], n - 1);
        EXPECT_EQ(call(SLASD3, nl, nr, sqre, k, d, q, dsigma, u, u2, vt, vt2, idxc, types, z), 0);
        EXPECT_LE(largest_difference(d, whole), 1e-6);
        EXPECT_LE(std::max(difference(u, wholeU), difference(vt, wholeVt)), 1e-5);
    }
}

// ---- Factors of vectors, multiplied out -----------------------------------------------------------------------------

using Wide = WideMatrix<float>;

// Columns i and j of X.
void turn(Wide& x, int i, int j, double c, double s) {
    x = x * Wide(x.columns, x.columns, [=](int row, int column) {
            if (row == column)
                return row == i || row == j ? c : 1;
            return row == j && column == i ? s : row == i && column == j ? -s : 0;
        });
}

// Columns first to first + n of U, and one more of V if `longer`: those of the parts become those of the whole.
void multiply_by_merge(const lapack::CompactMerge& f, int first, int nl, int n, bool longer, Wide& u, Wide& v) {
    for (int r = 0; r < *f.givptr; ++r)
        for (Wide* x : {&u, &v})
            turn(*x, first + f.givcol(r, 1) - 1, first + f.givcol(r, 0) - 1, f.givnum(r, 1), f.givnum(r, 0));
    if (longer)
        turn(v, first + n, first + nl, *f.c, *f.s);
    const Wide places(u.columns, u.columns, [&](int i, int j) {
        return i == (j >= first && j < first + n ? first + f.perm[j - first] - 1 : j) ? 1.0 : 0.0;
    });
    Wide left = identity<float>(u.columns), right = left;
    for (int j = 0; j < *f.k; ++j) {
        const std::size_t column = left.at(first, first + j);
        double leftSquares = 0, rightSquares = 0;
        for (int i = 0; i < *f.k; ++i) {
            const double pole = f.poles(i, 1), beyond = pole - f.poles(i <= j ? j : j + 1, 1),
                         difference = beyond - (i <= j ? f.difl[j] : f.difr(j, 0));
            double &l = left.values[column + std::size_t(i)], &r = right.values[column + std::size_t(i)];
            r = *f.k == 1 ? 1 : f.z[i] / difference / (pole + f.poles(j, 0));
            l = *f.k == 1 ? (f.z[0] < 0 ? -1 : 1) : i == 0 ? -1 : pole * r;
            leftSquares += l * l, rightSquares += r * r;
        }
        EXPECT_NEAR(f.difr(j, 1) / std::sqrt(rightSquares), 1, 1e-5);
        for (std::size_t i = column; i < column + std::size_t(*f.k); ++i)
            left.values[i] /= std::sqrt(leftSquares), right.values[i] /= std::sqrt(rightSquares);
    }
    u = u * places * left, v = v * places * right;
}

// The vectors of n rows from `first` on, where U and V are the identity.
void multiply_out(const lapack::CompactForm& f, int leaf, int first, int n, Wide& u, Wide& v) {
    const auto of_leaf = [&](int row, int size, bool longer) {
        for (int j = 0; j < size + longer; ++j)
            for (int i = 0; i < size + longer; ++i) {
                v.values[v.at(first + row + i, first + row + j)] = f.vt(row + j, i);
                if (i < size && j < size)
                    u.values[u.at(first + row + i, first + row + j)] = f.u(row + i, j);
            }
    };
    if (n <= leaf)
        return of_leaf(0, n, false);
    std::vector<int> center(static_cast<std::size_t>(n)), left(center), right(center);
    const lapack::DivisionTree tree = lapack::lasdt(n, center.data(), left.data(), right.data(), leaf);
    for (int level = tree.levels - 1; level >= 0; --level)
        for (int p = (1 << level) - 1, end = 2 * p + 1, number = end; p < end; ++p, --number) {
            const auto at = std::size_t(p);
            const int row = center[at] - 1, nl = left[at], nr = right[at];
            const bool longer = p < end - 1;
            if (level == tree.levels - 1) {
                of_leaf(row - nl, nl, true);
                of_leaf(row + 1, nr, longer);
            }
            multiply_by_merge(f.merge(true, row - nl, level, number - 1), first + row - nl, nl, nl + nr + 1, longer, u,
                              v);
        }
}

// SBDSDC's, in arrays of exactly the published lengths.
TEST(BidiagonalSvd, ResidualOfCompactForm) {
    const int s = 25;
    combine({1, 2, 25, 26, 40, 52, 110}, "UL").each([](int n, char uplo) {
        for (const BidiagonalMatrix& b : matrices(n, uplo)) {
            SCOPED_TRACE(b.name);
            const int logarithm = static_cast<int>(std::log2(n / (s + 1.0))), l = logarithm + 1;
            std::vector<float> d = b.d, e = b.e;
            GuardedVector<float> q(n * (11 + 2 * s + 8 * logarithm)), work(6 * n);
            std::vector<int> iq(static_cast<std::size_t>(std::max(0, n * (3 + 3 * logarithm)))), iwork(8 * d.size());
            EXPECT_EQ(call(SBDSDC, uplo, 'P', n, d, e, nullptr, 1, nullptr, 1, q, iq, work, iwork), 0);
            EXPECT_TRUE(is_descending(d));
            Wide u = identity<float>(n), v = u;
            const Matrix<float> columns{q.data(), n};
            for (int first = 0; first < n;) {
                const auto from = [&](int column) { return columns.block(first, column); };
                if (n <= s) {
                    multiply_out({from(0), from(n), {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}}, s, 0, n, u, v);
                    break;
                }
                const float* const part = columns.column(2 * s + 1) + first;
                const int size = int(part[0]), nodes = size > s ? (1 << lapack::division_levels(size, s)) - 1 : 0;
                const float *const c = part + 1, *const sines = c + nodes, *const counts = sines + nodes;
                std::vector<int> k(counts, counts + nodes), givptr(counts + nodes, counts + 2 * nodes);
                std::vector<float> cosines(c, sines), sinesOfIt(sines, counts);
                const int next = 2 * s + 3;
                multiply_out({from(0),
                              from(s),
                              k.data(),
                              from(next),
                              from(next + l),
                              from(next + 3 * l),
                              from(next + 4 * l),
                              givptr.data(),
                              {&iq[std::size_t(l * n + first)], n},
                              {&iq[std::size_t(first)], n},
                              from(next + 6 * l),
                              cosines.data(),
                              sinesOfIt.data()},
                             s, first, size, u, v);
                first += std::max(1, size);
            }
            const auto place = [&](int j) { return n > s ? int(columns(j, 2 * s + 2)) - 1 : j; };
            const Wide &left = uplo == 'U' ? u : v, &right = uplo == 'U' ? v : u,
                       wholeU(n, n, [&](int i, int j) { return left(i, place(j)); }),
                       wholeVt(n, n, [&](int i, int j) { return right(j, place(i)); });
            EXPECT_LT(svd_error(b.wide(n, n), wholeU, d, wholeVt), 20);
        }
    });
}

TEST(BidiagonalSvd, RootOfThreePoles) {
    const float z[] = {0.3F, 0.2F, 0.5F};
    combine({0, 1}, {-2.0F, -0.1F, 0.0F, 0.3F, 5.0F}, {1e-4F, 0.1F, 0.9F}) // the gap of 0 from the pole below it
        .each([&](int last, float rho, float gap) {
            const float d[] = {last ? -2 : -gap, last ? -gap : 1 - gap, last ? 1 - gap : 2};
            const auto value_at = [&](double x) {
                return rho + z[0] / (d[0] - x) + z[1] / (d[1] - x) + z[2] / (d[2] - x);
            };
            float tau = nan;
            EXPECT_EQ(call(SLAED6, 2, last, rho, d, z, static_cast<float>(value_at(0)), &tau), 0);
            EXPECT_TRUE(tau > d[last] && tau < d[last + 1]);
            const double near = 1e-5 * std::min(tau - d[last], d[last + 1] - tau); // it grows from pole to pole
            EXPECT_TRUE(value_at(tau - near) < 0 && value_at(tau + near) > 0);
        });
}

TEST(BidiagonalSvd, TreesHalveTheirRows) {
    for (int n = 4; n < 300; n += n < 60 ? 1 : 13) {
        const int leaf = 3;
        std::vector<int> center(static_cast<std::size_t>(n)), left(center), right(center);
        int levels = 0, nodes = 0;
        call(SLASDT, n, &levels, &nodes, center, left, right, leaf);
        for (int p = 0; p < nodes; ++p) {
            const int above = left[std::size_t(p)], below = right[std::size_t(p)];
            EXPECT_TRUE(above > 0 && above - below >= 0 && above - below <= 1 && (p < nodes / 2 || above <= leaf)) << n;
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
