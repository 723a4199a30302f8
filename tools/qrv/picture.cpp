#include "picture.hpp"

#include <algorithm>
#include <fmt/format.h>
#include <vector>

#include "matrix_market/replace_file.hpp"

namespace tools {
namespace {

constexpr double width = 900, height = 400, left = 90, right = 20, top = 40, bottom = 40; // in the SVG's units
constexpr const char* colours[] = {"#1f77b4", "#d62728", "#2ca02c", "#9467bd", "#ff7f0e", "#8c564b"};
constexpr std::size_t mostCurves = std::size(colours);

using Curve = std::vector<float>;

std::vector<Curve> curves(const Matrix<float>& x) {
    std::vector<Curve> list;
    for (int j = 0; j < x.columns && list.size() < mostCurves; ++j) {
        Curve& curve = list.emplace_back();
        for (int i = 0; i < x.rows; ++i)
            curve.push_back(x(i, j));
    }
    return list;
}
std::vector<Curve> curves(const Matrix<SingleComplex>& x) {
    std::vector<Curve> list;
    for (int j = 0; j < x.columns && list.size() < mostCurves; ++j) {
        Curve re, im;
        for (int i = 0; i < x.rows; ++i) {
            re.push_back(x(i, j).Re());
            im.push_back(x(i, j).Im());
        }
        list.push_back(std::move(re));
        list.push_back(std::move(im));
    }
    return list;
}

// Where values stand; a curve that is constant gets room too.
struct Scale {
    double low, high;
    explicit Scale(const std::vector<Curve>& list) : low(list[0][0]), high(list[0][0]) {
        for (const Curve& curve : list)
            for (const double value : curve) {
                low = std::min(low, value);
                high = std::max(high, value);
            }
        if (low == high) {
            const double room = low == 0 ? 1 : std::abs(low) / 2;
            low -= room;
            high += room;
        }
    }
    double y(double value) const { return height - bottom - (value - low) / (high - low) * (height - top - bottom); }
};

double x_of(std::size_t index, std::size_t count) {
    const double step = count > 1 ? static_cast<double>(index) / static_cast<double>(count - 1) : 0.5;
    return left + step * (width - left - right);
}

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text)
        result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
    return result;
}

std::string axes(const Scale& scale, std::size_t count) {
    std::string text;
    for (int tick = 0; tick <= 4; ++tick) {
        const double value = scale.low + (scale.high - scale.low) * tick / 4, y = scale.y(value);
        text += fmt::format("<line x1='{}' x2='{}' y1='{:.1f}' y2='{:.1f}' stroke='#ddd'/>\n"
                            "<text x='{}' y='{:.1f}' text-anchor='end'>{:.4g}</text>\n",
                            left, width - right, y, y, left - 8, y + 4, value);
    }
    text += fmt::format("<text x='{}' y='{}'>1</text>\n<text x='{}' y='{}' text-anchor='end'>{}</text>\n", left,
                        height - bottom + 20, width - right, height - bottom + 20, count);
    return text;
}

} // namespace

void write_picture(const std::string& path, const AnyMatrix& x, const std::string& title) {
    const auto list = std::visit([](const auto& matrix) { return curves(matrix); }, x);
    const Scale scale(list);
    std::string text =
        fmt::format("<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 {} {}' font-family='sans-serif' "
                    "font-size='12'>\n<rect width='100%' height='100%' fill='white'/>\n"
                    "<text x='{}' y='24' font-size='15'>{}</text>\n",
                    width, height, left, escaped(title));
    text += axes(scale, list[0].size());
    for (std::size_t c = 0; c < list.size(); ++c) {
        text += fmt::format("<polyline fill='none' stroke='{}' points='", colours[c]);
        for (std::size_t i = 0; i < list[c].size(); ++i)
            text += fmt::format("{:.1f},{:.1f} ", x_of(i, list[c].size()), scale.y(list[c][i]));
        text += "'/>\n";
    }
    ReplacedFile file(path);
    file.write(text + "</svg>\n");
    file.commit();
}

} // namespace tools
