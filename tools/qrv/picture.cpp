#include "picture.hpp"

#include "support/plot.hpp"

namespace tools {
namespace {

constexpr std::size_t mostCurves = 10;

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

} // namespace

void write_picture(OutputFile& file, const AnyMatrix& x, const std::string& title) {
    file.write(support::svg({title,
                             {.title = "index", .isWhole = true},
                             {},
                             std::visit([](const auto& matrix) { return curves(matrix); }, x)}));
    file.commit();
}

} // namespace tools
