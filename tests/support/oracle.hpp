// What routines should compute, in double precision by plain loops, and how far off a result may be.
#pragma once

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

// A matrix in double by columns, with the size of each element at hand.
template <class T>
struct WideMatrix {
    int rows, columns;
    std::vector<Wide<T>> values;
    std::vector<double> sizes;

    template <class Entry>
    WideMatrix(int m, int n, const Entry& entry) : rows(m), columns(n) {
        values.reserve(std::size_t(m) * std::size_t(n));
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i)
                values.push_back(entry(i, j));
        for (const Wide<T>& x : values)
            sizes.push_back(std::sqrt(std::norm(x)));
    }
    // op(X)
    explicit WideMatrix(const Operand<T>& x, char option = 'N')
        : WideMatrix(is_transposed(option) ? x.columns() : x.rows(), is_transposed(option) ? x.rows() : x.columns(),
                     [&](int i, int j) {
                         return !is_transposed(option)           ? x.entry(i, j)
                                : option == 'C' || option == 'c' ? conjugate(x.entry(j, i))
                                                                 : x.entry(j, i);
                     }) {}
    std::size_t at(int i, int j) const { return std::size_t(i) + std::size_t(rows) * std::size_t(j); }
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
            double error = expected == found ? 0 : std::abs(found - expected) / allowed[values.at(i, j)];
            if (!fits(std::real(expected), std::real(found)) || !fits(std::imag(expected), std::imag(found)))
                error = nan;
            else if (!std::isfinite(std::abs(expected)))
                error = 0;
            if (c.form().kind == Form::hermitian && i == j && std::imag(found) != 0)
                error = nan;
            worst = std::isnan(worst) || worst >= error ? worst : error; // no later element hides a NaN
        });
        return worst;
    }
    bool held_by(const Operand<T>& c) const { return c.guards_intact() && error(c) <= 1; }

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
                unit * ((k + 3) * std::abs(alpha) * size[i] + 2 * std::abs(scaled)) +
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

} // namespace qrv::test
