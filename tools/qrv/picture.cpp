#include "picture.hpp"

#include <algorithm>
#include <complex>
#include <utility>

#include "support/judge.hpp"
#include "support/plot.hpp"

namespace tools {
namespace {

constexpr std::size_t mostCurves = 10;

using Complex = std::complex<double>;

double real_part(float value) {
    return value;
}
double real_part(SingleComplex value) {
    return value.Re();
}

// One part of column j over the index, from 1.
template <class T, class Part>
support::Series curve(const Matrix<T>& x, int j, const std::string& name, Part part) {
    support::Series series{name, {}, {}};
    for (int i = 0; i < x.rows; ++i) {
        series.x.push_back(i + 1);
        series.y.push_back(part(x(i, j)));
    }
    return series;
}

std::vector<support::Series> curves(const Matrix<float>& x) {
    std::vector<support::Series> list;
    for (int j = 0; j < x.columns && list.size() < mostCurves; ++j)
        list.push_back(
            curve(x, j, x.columns > 1 ? "x" + std::to_string(j + 1) : "", [](float value) { return value; }));
    return list;
}
std::vector<support::Series> curves(const Matrix<SingleComplex>& x) {
    std::vector<support::Series> list;
    for (int j = 0; j < x.columns && list.size() < mostCurves; ++j) {
        const std::string name = x.columns > 1 ? "x" + std::to_string(j + 1) : "x";
        list.push_back(curve(x, j, "Re " + name, [](SingleComplex value) { return value.Re(); }));
        list.push_back(curve(x, j, "Im " + name, [](SingleComplex value) { return value.Im(); }));
    }
    return list;
}

// One part of what is observed, of the fit and of what it leaves, in the order of the abscissa.
template <class Part>
void add_fit(std::vector<support::Series>& list, const std::vector<std::pair<double, int>>& places,
             const std::vector<Complex>& observed, const std::vector<Complex>& fitted, const std::string& prefix,
             Part part) {
    support::Series b{prefix + "b", {}, {}, support::Mark::points}, fit{prefix + "A x", {}, {}};
    support::Series rest{prefix + "b - A x", {}, {}, support::Mark::points};
    for (const auto& [x, row] : places) {
        const auto i = static_cast<std::size_t>(row);
        for (support::Series* series : {&b, &fit, &rest})
            series->x.push_back(x);
        b.y.push_back(part(observed[i]));
        fit.y.push_back(part(fitted[i]));
        rest.y.push_back(part(observed[i] - fitted[i]));
    }
    list.insert(list.end(), {b, fit, rest});
}

} // namespace

template <class T>
std::string fit_picture(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b, int over,
                        const std::string& title) {
    std::vector<std::pair<double, int>> places; // where an observation is drawn, and its row
    std::vector<Complex> observed, fitted;
    for (int i = 0; i < a.rows; ++i) {
        places.emplace_back(over > 0 ? real_part(a(i, over - 1)) : i + 1, i);
        observed.push_back(support::wide(b(i, 0)));
        fitted.emplace_back();
        for (int j = 0; j < a.columns; ++j)
            fitted.back() += Complex(support::wide(a(i, j))) * Complex(support::wide(x(j, 0)));
    }
    std::sort(places.begin(), places.end());
    std::vector<support::Series> list;
    add_fit(list, places, observed, fitted, isComplex<T> ? "Re " : "", [](const Complex& z) { return z.real(); });
    if (isComplex<T>)
        add_fit(list, places, observed, fitted, "Im ", [](const Complex& z) { return z.imag(); });
    const std::string abscissa = over > 0 ? "column " + std::to_string(over) + " of A" : "row";
    return support::svg({title, {.title = abscissa, .isWhole = over == 0}, {}, list});
}

template std::string fit_picture(const Matrix<float>&, const Matrix<float>&, const Matrix<float>&, int,
                                 const std::string&);
template std::string fit_picture(const Matrix<SingleComplex>&, const Matrix<SingleComplex>&,
                                 const Matrix<SingleComplex>&, int, const std::string&);

std::string picture(const AnyMatrix& x, const std::string& title) {
    return support::svg({title,
                         {.title = "index", .isWhole = true},
                         {},
                         std::visit([](const auto& matrix) { return curves(matrix); }, x)});
}

} // namespace tools
