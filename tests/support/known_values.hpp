// Matrices with a spectrum that is known, or hard: lists of values, symmetric and general matrices that have them as
// eigenvalues or singular values, symmetric tridiagonal ones, and their eigenvalues in double.
#pragma once

#include <functional>
#include <string>

#include "support/stored_q.hpp"

namespace qrv::test {

// ---- Spectra ------------------------------------------------------------------------------------------------------

struct Spectrum {
    std::string name;
    std::vector<double> values;
};

// Positive values of size one, in descending order, of every kind; the condition number is about `condition`.
inline std::vector<Spectrum> spectra(int n, double condition = 1e4) {
    std::vector<Spectrum> list;
    const auto add = [&](const char* name, const auto& value) {
        Spectrum s{name, {}};
        for (int i = 0; i < n; ++i)
            s.values.push_back(value(i, n > 1 ? i / (n - 1.0) : 0.0)); // the place, and its share of the way
        list.push_back(s);
    };
    add("equal", [](int, double) { return 1.0; });
    add("arithmetic", [&](int, double t) { return 1 - t * (1 - 1 / condition); });
    add("geometric", [&](int, double t) { return std::pow(condition, -t); });
    add("one large", [&](int i, double) { return i == 0 ? 1 : 1 / condition; });
    add("one small", [&](int i, double) { return i == n - 1 ? 1 / condition : 1; });
    add("rank one", [](int i, double) { return i == 0 ? 1.0 : 0.0; });
    add("clustered", [](int i, double) { return 1 / (1.0 + i / 4) + 1e-6 * (i % 4); });
    add("repeated", [](int i, double) { return 1 / (1.0 + i / 3); });
    add("graded", [](int, double t) { return std::pow(2.0, -60 * t); });
    return list;
}

inline Spectrum times(double factor, Spectrum s) {
    s.name += " times " + std::to_string(std::ilogb(factor));
    for (double& value : s.values)
        value *= factor;
    return s;
}

// Vectors v of reflectors I - v v' that together turn the space every way; the k-th one leaves the first k places
// alone.
template <class Random>
std::vector<std::vector<double>> random_turn(int n, Random& random) {
    std::normal_distribution<double> component;
    std::vector<std::vector<double>> reflectors(std::size_t(n), std::vector<double>(std::size_t(n), 0.0));
    for (std::size_t k = 0; k < reflectors.size(); ++k) {
        std::vector<double>& v = reflectors[k];
        std::generate(v.begin() + std::ptrdiff_t(k), v.end(), [&] { return component(random); });
        const double squares = std::inner_product(v.begin(), v.end(), v.begin(), 0.0);
        for (double& x : v)
            x *= std::sqrt(2 / squares);
    }
    return reflectors;
}

// With these eigenvalues, symmetric, by columns.
template <class Random>
std::vector<double> symmetric_matrix(const std::vector<double>& eigenvalues, Random& random) {
    WideMatrix<float> a = diagonal<float>(eigenvalues);
    for (const auto& v : random_turn(a.rows, random)) {
        reflect<float>(true, a, v, 1);
        reflect<float>(false, a, v, 1);
    }
    return a.values;
}

// m x n with these singular values, the smaller of m and n of them, by columns.
template <class Random>
std::vector<double> general_matrix(int m, int n, const std::vector<double>& singularValues, Random& random) {
    WideMatrix<float> a(m, n, [&](int i, int j) { return i == j ? singularValues[std::size_t(i)] : 0.0; });
    for (const auto& v : random_turn(m, random))
        reflect<float>(true, a, v, 1);
    for (const auto& v : random_turn(n, random))
        reflect<float>(false, a, v, 1);
    return a.values;
}

// ---- Symmetric tridiagonal matrices -------------------------------------------------------------------------------

// D on the diagonal, E on either side of it.
template <class D, class E>
WideMatrix<float> tridiagonal_matrix(const D& d, const E& e) {
    const int n = static_cast<int>(d.size());
    return {n, n, [&](int i, int j) {
                return i == j ? double{d[i]} : std::abs(i - j) == 1 ? double{e[std::min(i, j)]} : 0;
            }};
}

struct Tridiagonal {
    std::string name;
    std::vector<float> d, e;

    int n() const { return static_cast<int>(d.size()); }
    // Largest sum over a row, which is at least the largest magnitude of an eigenvalue.
    double norm() const {
        double largest = 0;
        for (std::size_t i = 0; i < d.size(); ++i)
            largest = std::max(largest, std::abs(double{d[i]}) + (i > 0 ? std::abs(double{e[i - 1]}) : 0) +
                                            (i < e.size() ? std::abs(double{e[i]}) : 0));
        return largest;
    }
    // Eigenvalues below x, by the signs of the pivots of T - x.
    int count_below(double x) const {
        int count = 0;
        double pivot = 1;
        for (std::size_t i = 0; i < d.size(); ++i) {
            const double beside = i > 0 ? double{e[i - 1]} * e[i - 1] : 0;
            pivot = d[i] - x - (beside == 0 ? 0 : beside / pivot);
            if (pivot == 0)
                pivot = -std::numeric_limits<double>::min();
            count += pivot < 0;
        }
        return count;
    }
    // All of them in ascending order, to some roundings in double of the largest.
    std::vector<double> eigenvalues() const {
        std::vector<double> values;
        for (int i = 0; i < n(); ++i) {
            double low = -norm() * (1 + 1e-12), high = -low;
            for (int step = 0; step < 200 && low < high; ++step) {
                const double middle = low + (high - low) / 2;
                if (middle == low || middle == high)
                    break;
                (count_below(middle) > i ? high : low) = middle;
            }
            values.push_back(low + (high - low) / 2);
        }
        return values;
    }
};

// Of every kind that solvers find hard.
inline std::vector<Tridiagonal> tridiagonals(int n) {
    std::mt19937 random(static_cast<unsigned>(n));
    const auto any = [&](int) { return any_size_one<float>(random); };
    const auto zero = [](int) { return 0; };
    const auto one = [](int) { return 1; };
    const int half = 10, period = 2 * half + 1; // of Wilkinson's W21+
    const auto wilkinson = [&](int i) { return std::abs(i % period - half); };
    const auto scaled = [&](int power) { return [&any, power](int i) { return std::ldexp(any(i), power); }; };
    const auto falling = [](int behind) { return [=](int i) { return std::pow(2.0, -(i % 61) - behind); }; };
    const struct {
        const char* name;
        std::function<double(int)> diagonal, beside;
    } kinds[] = {{"random", any, any},
                 {"1-2-1", [](int) { return 2; }, one},
                 {"Wilkinson", wilkinson, one},
                 {"glued Wilkinson", wilkinson, [&](int i) { return i % period == period - 1 ? 1e-4 : 1.0; }},
                 {"clustered", [&](int i) { return 1 + 1e-6F * any(i); }, [&](int i) { return 1e-6F * any(i); }},
                 {"graded", falling(0), falling(1)},
                 {"diagonal", any, zero},
                 {"zero", zero, zero},
                 {"equal", one, zero},
                 {"one pair", zero, [](int i) { return i == 0 ? 1 : 0; }},
                 {"Clement", zero, [n](int i) { return std::sqrt((i + 1.0) * (n - 1 - i)); }},
                 {"in parts", any, [&](int i) { return i % 7 == 6 ? 0 : any(i); }},
                 {"huge", scaled(60), scaled(60)},
                 {"tiny", scaled(-60), scaled(-60)}};
    std::vector<Tridiagonal> list;
    for (const auto& kind : kinds) {
        Tridiagonal& t = list.emplace_back(Tridiagonal{kind.name, {}, {}});
        for (int i = 0; i < n; ++i)
            t.d.push_back(static_cast<float>(kind.diagonal(i)));
        for (int i = 0; i + 1 < n; ++i)
            t.e.push_back(static_cast<float>(kind.beside(i)));
    }
    return list;
}

} // namespace qrv::test
