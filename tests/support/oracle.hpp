// What routines should compute, in double precision by plain loops, and how far off a result may be.
#pragma once

#include <numeric>

#include "support/operand.hpp"

namespace qrv::test {

constexpr double unitRoundoff = std::numeric_limits<float>::epsilon() / 2;

inline double times(double x, double y) {
    return x * y;
}
// Four products and no repair of NaN, as in Fortran.
inline std::complex<double> times(std::complex<double> x, std::complex<double> y) {
    return {x.real() * y.real() - x.imag() * y.imag(), x.real() * y.imag() + x.imag() * y.real()};
}

// |x|, without the care for the ends of the range that std::abs takes.
inline double magnitude(double x) {
    return std::abs(x);
}
inline double magnitude(std::complex<double> x) {
    return std::sqrt(std::norm(x));
}
// The worse of two errors; NaN if one is.
inline double worse(double x, double y) {
    return std::isnan(x) || x >= y ? x : y;
}

// A matrix in double by columns, with the size of each element at hand.
template <class T>
struct WideMatrix {
    int rows, columns;
    std::vector<Wide<T>> values;
    std::vector<double> sizes;

    WideMatrix(int m, int n, std::vector<Wide<T>> elements) : rows(m), columns(n), values(std::move(elements)) {
        sizes.reserve(values.size());
        for (const Wide<T>& x : values)
            sizes.push_back(magnitude(x));
    }
    template <class Entry, class = std::enable_if_t<std::is_invocable_v<Entry, int, int>>>
    WideMatrix(int m, int n, const Entry& entry) : rows(m), columns(n) {
        values.reserve(std::size_t(m) * std::size_t(n)), sizes.reserve(values.capacity());
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i) {
                values.push_back(entry(i, j));
                sizes.push_back(magnitude(values.back()));
            }
    }
    // op(X)
    explicit WideMatrix(const Operand<T>& x, char option = 'N')
        : WideMatrix(is_transposed(option) ? x.columns() : x.rows(), is_transposed(option) ? x.rows() : x.columns(),
                     [&, conjugated = option == 'C' || option == 'c'](int i, int j) {
                         const Wide<T> value = is_transposed(option) ? x.entry(j, i) : x.entry(i, j);
                         return conjugated ? conjugate(value) : value;
                     }) {}
    std::size_t at(int i, int j) const { return std::size_t(i) + std::size_t(rows) * std::size_t(j); }
    const Wide<T>& operator()(int i, int j) const { return values[at(i, j)]; }
    WideMatrix adjoint() const {
        return {columns, rows, [&](int i, int j) { return conjugate((*this)(j, i)); }};
    }
    // Terms with a zero of B are left out.
    friend WideMatrix operator*(const WideMatrix& a, const WideMatrix& b) {
        const auto m = std::size_t(a.rows);
        std::vector<Wide<T>> sums(m * std::size_t(b.columns));
        for (int j = 0; j < b.columns; ++j)
            for (int l = 0; l < a.columns; ++l)
                if (const Wide<T> factor = b(l, j); factor != 0.0)
                    for (std::size_t i = 0; i < m; ++i)
                        sums[m * std::size_t(j) + i] += times(a.values[a.at(0, l) + i], factor);
        return {a.rows, b.columns, std::move(sums)};
    }
    friend WideMatrix operator-(const WideMatrix& a, const WideMatrix& b) {
        return {a.rows, a.columns, [&](int i, int j) { return a(i, j) - b(i, j); }};
    }
};

// What an operand should become, and how far off each element may be.
template <class T>
struct Expected {
    WideMatrix<T> values;
    std::vector<double> allowed;

    // The largest error of a stored element in units of what is allowed: good up to 1. NaN if a part is finite and
    // should not be, or the other way round.
    double error(const Operand<T>& c) const {
        double worst = 0;
        c.each_stored([&](int i, int j) {
            const Wide<T> expected = values.values[values.at(i, j)], found = widen(c(i, j));
            double error = expected == found ? 0 : magnitude(found - expected) / allowed[values.at(i, j)];
            if (!fits(std::real(expected), std::real(found)) || !fits(std::imag(expected), std::imag(found)))
                error = nan;
            else if (!std::isfinite(magnitude(expected)))
                error = 0;
            if (c.form().kind == Form::hermitian && i == j && std::imag(found) != 0)
                error = nan;
            worst = worse(worst, error); // no later element hides a NaN
        });
        return worst;
    }

private:
    // An infinite real number must be that; of complex ones, sums of several products, none is told apart from NaN.
    static bool fits(double expected, double found) {
        if (isComplex<T> || std::isfinite(expected))
            return std::isfinite(expected) == std::isfinite(found);
        return std::isnan(expected) ? std::isnan(found) : expected == found;
    }
};

// alpha*A*B + beta*C; with beta = 0 C is not looked at, with alpha = 0 neither A nor B. A sum of k products may be off
// by about k roundings of its terms' sizes, a complex product by 2 sqrt 2 times as much.
template <class T>
Expected<T> product(Wide<T> alpha, const WideMatrix<T>& a, const WideMatrix<T>& b, Wide<T> beta, const Operand<T>& c) {
    constexpr double unit = unitRoundoff * (isComplex<T> ? 2 * 1.4143 : 1);
    const int k = alpha == 0.0 ? 0 : a.columns;
    Expected<T> result{{c.rows(), c.columns(), [](int, int) { return 0; }}, {}};
    result.allowed.resize(result.values.values.size());
    std::vector<double> size;
    for (int j = 0; j < c.columns(); ++j) {
        const auto [firstRow, lastRow] = c.form().stored_rows(j);
        const auto first = std::size_t(firstRow), last = std::size_t(lastRow);
        Wide<T>* const sum = result.values.values.data() + result.values.at(0, j);
        size.assign(last, 0);
        for (int l = 0; l < k; ++l) {
            const Wide<T> factor = b.values[b.at(l, j)], *const column = a.values.data() + a.at(0, l);
            const double factorSize = b.sizes[b.at(l, j)], *const sizes = a.sizes.data() + a.at(0, l);
            for (std::size_t i = first; i < last; ++i) {
                sum[i] += times(column[i], factor);
                size[i] += sizes[i] * factorSize;
            }
        }
        for (std::size_t i = first; i < last; ++i) {
            const Wide<T> before = beta == 0.0 ? 0 : c.entry(int(i), j),
                          scaled = beta == 1.0 ? before : times(beta, before);
            sum[i] = (alpha == 0.0 ? 0 : alpha == 1.0 ? sum[i] : times(alpha, sum[i])) + scaled;
            if (c.form().kind == Form::hermitian && int(i) == j)
                sum[i] = std::real(sum[i]);
            result.allowed[result.values.at(int(i), j)] =
                unit * ((k + 3) * magnitude(alpha) * size[i] + 2 * magnitude(scaled)) +
                std::numeric_limits<float>::denorm_min();
        }
    }
    return result;
}

// Whether the elements of v are `expected`, with an error of at most allowed(i) in element i, and nothing else has
// changed. `expected` is like widened().
template <class T, class Allowed>
bool holds(const GuardedVector<T>& v, const std::vector<Wide<T>>& expected, const Allowed& allowed) {
    bool good = v.guards_intact();
    for (std::size_t i = 0; i < expected.size(); ++i)
        good = good && std::abs(widen(v[static_cast<int>(i)]) - expected[i]) <= allowed(i);
    return good;
}

// ---- What LAPACK's properties are written with ----------------------------------------------------------------------

template <class T>
WideMatrix<T> identity(int n) {
    return {n, n, [](int i, int j) { return i == j ? 1.0 : 0.0; }};
}
template <class T>
Operand<T> random_matrix(int m, int n, unsigned seed, int extra = 2) {
    Operand<T> x(m, n, std::max(m, 1) + extra);
    std::mt19937 random(seed);
    return x.fill_random(random);
}
template <class T = float>
Operand<T> identity_operand(int n) {
    Operand<T> q(n, n, std::max(n, 1) + 1);
    return q.set([](int i, int j) { return scalar<T>(i == j); });
}

// The triangles of a factored matrix, of as many columns or rows as its shorter side.
template <class T>
WideMatrix<T> lower_factor(const Operand<T>& x, bool unit = false) {
    return {x.rows(), std::min(x.rows(), x.columns()), [&](int i, int j) -> Wide<T> {
                return i == j && unit ? 1 : i >= j && x.form().stored(i, j) ? widen(x(i, j)) : 0;
            }};
}
template <class T>
WideMatrix<T> upper_factor(const Operand<T>& x) {
    return {std::min(x.rows(), x.columns()), x.columns(),
            [&](int i, int j) -> Wide<T> { return i <= j && x.form().stored(i, j) ? widen(x(i, j)) : 0; }};
}

// What a Cholesky factorization took apart: U^H U or L L^H.
template <class T>
WideMatrix<T> cholesky_product(const Operand<T>& factor) {
    if (!is_upper(factor.form().uplo))
        return lower_factor(factor) * lower_factor(factor).adjoint();
    return upper_factor(factor).adjoint() * upper_factor(factor);
}

// By Gauss-Jordan elimination with pivots.
template <class T>
WideMatrix<T> inverse(const WideMatrix<T>& a) {
    const auto n = std::size_t(a.rows);
    std::vector<std::vector<Wide<T>>> rows(n, std::vector<Wide<T>>(2 * n));
    for (std::size_t i = 0; i < n; rows[i][n + i] = 1, ++i)
        for (std::size_t j = 0; j < n; ++j)
            rows[i][j] = a.values[i + n * j];
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t pivot = k;
        for (std::size_t i = k; i < n; ++i)
            if (std::abs(rows[i][k]) > std::abs(rows[pivot][k]))
                pivot = i;
        std::swap(rows[k], rows[pivot]);
        const Wide<T> head = rows[k][k];
        for (Wide<T>& x : rows[k])
            x /= head;
        for (std::size_t i = 0; i < n; ++i)
            if (const Wide<T> factor = rows[i][k]; i != k && factor != 0.0)
                for (std::size_t j = k; j < 2 * n; ++j)
                    rows[i][j] -= times(factor, rows[k][j]);
    }
    return {a.rows, a.rows, [&](int i, int j) { return rows[std::size_t(i)][n + std::size_t(j)]; }};
}

// 'M' the largest element, 'O' or 'I' the largest sum of a column or a row, 'F' the root of all squares.
template <class T>
double norm(const WideMatrix<T>& x, char which = 'F') {
    std::vector<double> sums(std::size_t(std::max({x.rows, x.columns, 1})));
    for (int j = 0; j < x.columns; ++j)
        for (int i = 0; i < x.rows; ++i) {
            const double size = x.sizes[x.at(i, j)];
            double& sum = sums[which == 'O' ? std::size_t(j) : which == 'I' ? std::size_t(i) : 0];
            sum = which == 'M' ? worse(sum, size) : sum + (which == 'F' ? size * size : size);
        }
    const double largest = std::accumulate(sums.begin(), sums.end(), 0.0, worse);
    return which == 'F' ? std::sqrt(largest) : largest;
}

// The largest error of an element, relative to the largest element.
template <class T>
double difference(const Operand<T>& c, const WideMatrix<T>& expected) {
    const double error = norm(WideMatrix<T>(c) - expected, 'M');
    return error == 0 ? 0 : error / norm(expected, 'M');
}
template <class T>
double difference(const Operand<T>& c, const Operand<T>& expected) {
    return difference(c, WideMatrix<T>(expected));
}

// An error in units of n roundings of a size: of a good factorization about 1 at most.
inline double in_roundings(double error, int n, double size) {
    return error == 0 ? 0 : error / (n * 2 * unitRoundoff * size);
}

// The largest |B - A X| of a column, in roundings of |A| |X|.
template <class T>
double solve_residual(const WideMatrix<T>& a, const WideMatrix<T>& x, const WideMatrix<T>& b) {
    const WideMatrix<T> rest = b - a * x;
    const double size = norm(a, 'I');
    double worst = 0;
    for (int j = 0; j < x.columns; ++j) {
        const auto column = [j](const WideMatrix<T>& y) {
            return norm(WideMatrix<T>(y.rows, 1, [&](int i, int) { return y(i, j); }), 'M');
        };
        worst = worse(worst, in_roundings(column(rest), a.rows, size * column(x)));
    }
    return worst;
}

template <class T>
WideMatrix<T> diagonal(const std::vector<double>& values) {
    const int n = static_cast<int>(values.size());
    return {n, n, [&](int i, int j) { return i == j ? values[std::size_t(i)] : 0.0; }};
}

// Columns on which products of matrices are compared: all unit vectors, or a few of length 1 if those were many.
template <class T>
WideMatrix<T> probes(int n) {
    if (n <= 80)
        return identity<T>(n);
    std::mt19937 random(static_cast<unsigned>(n));
    const double size = 1 / std::sqrt(n);
    return {n, 8, [&](int, int) { return Wide<T>(random() % 2 == 0 ? size : -size); }};
}
// |Q^H Q - I| by columns, in roundings for each row.
template <class T>
double orthogonality_error(const WideMatrix<T>& q) {
    const WideMatrix<T> x = probes<T>(q.columns);
    return in_roundings(norm(q.adjoint() * (q * x) - x, 'O'), q.rows, 1);
}
// |A Q - Q B| in roundings of |A|
template <class T>
double similarity_error(const WideMatrix<T>& a, const WideMatrix<T>& q, const WideMatrix<T>& b) {
    const WideMatrix<T> x = probes<T>(q.columns);
    return in_roundings(norm(a * (q * x) - q * (b * x), 'O'), a.rows, norm(a, 'O'));
}
// Whether A Q = Q B, and Q is orthogonal.
template <class T>
void expect_similar(const WideMatrix<T>& a, const WideMatrix<T>& q, const WideMatrix<T>& b, double bound) {
    EXPECT_LE(similarity_error(a, q, b), bound);
    EXPECT_LE(orthogonality_error(q), bound);
}
// The worst of |A - U S V^H| and of what U and V^H lack of orthogonality.
template <class T>
double svd_error(const WideMatrix<T>& a, const WideMatrix<T>& u, const std::vector<float>& s, const WideMatrix<T>& vt) {
    const int longest = std::max(a.rows, a.columns), count = static_cast<int>(s.size());
    const WideMatrix<T> scaled(a.rows, count, [&](int i, int j) { return u(i, j) * double{s[std::size_t(j)]}; }),
        rows(count, a.columns, [&](int i, int j) { return vt(i, j); });
    return worse(in_roundings(norm(a - scaled * rows, 'O'), longest, norm(a, 'O')),
                 worse(orthogonality_error(u), orthogonality_error(vt.adjoint())));
}
inline bool is_descending(const std::vector<float>& s) {
    for (std::size_t i = 0; i < s.size(); ++i)
        if (!(s[i] >= 0) || std::signbit(s[i]) || (i > 0 && s[i] > s[i - 1]))
            return false;
    return true;
}

// 1 / (|A| |inv(A)|)
template <class T>
double reciprocal_condition(const WideMatrix<T>& a, char which = 'O') {
    return 1 / (norm(a, which) * norm(inverse(a), which));
}

} // namespace qrv::test
