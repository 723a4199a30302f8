#include "plot.hpp"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>

namespace support {
namespace {

// The picture, in its own units.
constexpr double width = 880, height = 480;
constexpr double left = 80, right = 30, legendWidth = 160, top = 50, bottom = 60;
constexpr double frameBottom = height - bottom;

constexpr const char* colors[] = {"#c1272d", "#1f5fa8", "#2e8b57", "#e8833a", "#8e44ad",
                                  "#17a2b8", "#d4a017", "#a0522d", "#e377c2", "#7f7f7f"};

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text)
        result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
    return result;
}

std::string text(double x, double y, const char* anchor, const std::string& content) {
    if (content.empty())
        return {};
    return fmt::format("<text x='{:.1f}' y='{:.1f}' text-anchor='{}'>{}</text>\n", x, y, anchor, escaped(content));
}

std::string line(double x1, double y1, double x2, double y2, const std::string& style) {
    return fmt::format("<line x1='{:.1f}' y1='{:.1f}' x2='{:.1f}' y2='{:.1f}' {}/>\n", x1, y1, x2, y2, style);
}

// Values of one direction on the picture. A logarithmic axis is a linear one of the logarithms.
class Direction {
public:
    Direction(const Axis& axis, const std::vector<const std::vector<double>*>& values, double from, double to)
        : axis_(axis), from_(from), to_(to) {
        double smallest = std::numeric_limits<double>::infinity(), largest = -smallest;
        for (const auto* list : values)
            for (const double value : *list)
                if (is_drawn(value)) {
                    smallest = std::min(smallest, value);
                    largest = std::max(largest, value);
                }
        low_ = scaled(axis.low.value_or(smallest));
        high_ = scaled(axis.high.value_or(largest));
        if (!(low_ <= high_)) // nothing to draw
            low_ = high_ = 0;
        if (low_ == high_) { // a constant gets room too
            const double room = axis.isLogarithmic ? 0.5 : low_ == 0 ? 1 : std::abs(low_) / 2;
            low_ -= room;
            high_ += room;
        }
    }

    bool is_drawn(double value) const { return std::isfinite(value) && (!axis_.isLogarithmic || value > 0); }

    double place(double value) const {
        const double share = std::clamp((scaled(value) - low_) / (high_ - low_), 0.0, 1.0);
        return from_ + share * (to_ - from_);
    }

    // At 1, 2 or 5 times a power of ten, about so many; on logarithmic axes of a decade and more at the powers.
    std::vector<double> ticks(double about) const {
        if (!axis_.ticks.empty())
            return axis_.ticks;
        const bool byPowers = axis_.isLogarithmic && high_ - low_ >= 1;
        const double low = byPowers ? low_ : value(low_), high = byPowers ? high_ : value(high_);
        const double wanted = (high - low) / about, decade = std::pow(10, std::floor(std::log10(wanted)));
        double step = (wanted <= decade ? 1 : wanted <= 2 * decade ? 2 : wanted <= 5 * decade ? 5 : 10) * decade;
        if (byPowers || axis_.isWhole)
            step = std::max(step, 1.0);
        std::vector<double> result;
        for (double i = std::ceil(low / step - 1e-9); i * step <= high + 1e-9 * step; ++i)
            result.push_back(byPowers ? value(i * step) : i * step + 0.0); // no negative zero
        return result;
    }

private:
    double scaled(double value) const { return axis_.isLogarithmic ? std::log10(value) : value; }
    double value(double scaled) const { return axis_.isLogarithmic ? std::pow(10, scaled) : scaled; }

    const Axis& axis_;
    double low_, high_, from_, to_;
};

struct Frame {
    Direction x, y;
    double right;
};

// Bars stand evenly, the first one first.
double bar_step(const Series& series) {
    const std::size_t last = series.x.size() - 1;
    return last > 0 ? (series.x[last] - series.x[0]) / static_cast<double>(last) : 1;
}

Frame frame_of(const Plot& plot) {
    std::vector<const std::vector<double>*> xs, ys;
    const std::vector<double> base{0};
    std::vector<double> sides; // of the first and the last bar
    bool hasLegend = false;
    for (const Series& series : plot.series) {
        xs.push_back(&series.x);
        ys.push_back(&series.y);
        if (series.mark == Mark::bars && !series.x.empty()) {
            ys.push_back(&base);
            sides.push_back(series.x.front() - bar_step(series) / 2);
            sides.push_back(series.x.back() + bar_step(series) / 2);
        }
        hasLegend = hasLegend || !series.name.empty();
    }
    xs.push_back(&sides);
    const double end = width - right - (hasLegend ? legendWidth : 0);
    return {Direction(plot.x, xs, left, end), Direction(plot.y, ys, frameBottom, top), end};
}

std::string axes(const Plot& plot, const Frame& frame) {
    std::string result;
    for (const double tick : frame.y.ticks(6)) {
        const double y = frame.y.place(tick);
        result +=
            line(left, y, frame.right, y, "stroke='#ddd'") + text(left - 8, y + 4, "end", fmt::format("{:.4g}", tick));
    }
    for (const double tick : frame.x.ticks(8)) {
        const double x = frame.x.place(tick);
        result += line(x, frameBottom, x, frameBottom + 4, "stroke='#000'") +
                  text(x, frameBottom + 18, "middle", fmt::format("{:.6g}", tick));
    }
    result += line(left, frameBottom, frame.right, frameBottom, "stroke='#000'");
    result += text((left + frame.right) / 2, frameBottom + 40, "middle", plot.x.title);
    return result + text(left, top - 10, "middle", plot.y.title);
}

std::string stroke(const Series& series, const std::string& color) {
    std::string style = fmt::format("stroke='{}' stroke-width='{}'", color, series.width);
    return series.dashes.empty() ? style : style + fmt::format(" stroke-dasharray='{}'", series.dashes);
}

std::string drawn(const Series& series, const Frame& frame, const std::string& color) {
    std::string result, run; // of points without a gap
    const auto end_run = [&] {
        if (!run.empty())
            result += fmt::format("<polyline points='{}' fill='none' {}/>\n", run, stroke(series, color));
        run.clear();
    };
    const bool isBars = series.mark == Mark::bars && !series.x.empty();
    const double barWidth =
        isBars ? 0.7 * (frame.x.place(series.x[0]) - frame.x.place(series.x[0] - bar_step(series) / 2)) * 2 : 0;
    for (std::size_t i = 0; i < series.x.size(); ++i) {
        if (!frame.x.is_drawn(series.x[i]) || !frame.y.is_drawn(series.y[i])) {
            end_run();
            continue;
        }
        const double x = frame.x.place(series.x[i]), y = frame.y.place(series.y[i]), base = frame.y.place(0);
        switch (series.mark) {
        case Mark::line:
            run += fmt::format("{:.1f},{:.1f} ", x, y);
            break;
        case Mark::points:
            result += fmt::format("<circle cx='{:.1f}' cy='{:.1f}' r='{}' fill='{}'/>\n", x, y, series.width, color);
            break;
        case Mark::bars:
            result += fmt::format("<rect x='{:.1f}' y='{:.1f}' width='{:.1f}' height='{:.1f}' fill='{}'/>\n",
                                  x - barWidth / 2, std::min(y, base), barWidth, std::abs(base - y), color);
        }
    }
    end_run();
    return result;
}

} // namespace

std::string svg(const Plot& plot) {
    const Frame frame = frame_of(plot);
    std::string result =
        fmt::format("<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 {} {}' width='{}' height='{}' "
                    "font-family='sans-serif' font-size='12'>\n<rect width='100%' height='100%' fill='#fff'/>\n",
                    width, height, width, height);
    result += text(left, 22, "start", plot.title) + axes(plot, frame);
    std::size_t next = 0;
    double legendY = top + 8;
    for (const Series& series : plot.series) {
        const std::string color = series.color.empty() ? colors[next++ % std::size(colors)] : series.color;
        result += drawn(series, frame, color);
        if (series.name.empty())
            continue;
        const double x = frame.right + 16;
        result += series.mark == Mark::line
                      ? line(x, legendY, x + 30, legendY, stroke(series, color))
                      : fmt::format("<rect x='{:.1f}' y='{:.1f}' width='10' height='10' fill='{}'/>\n", x + 10,
                                    legendY - 5, color);
        result += text(x + 38, legendY + 4, "start", series.name);
        legendY += 18;
    }
    return result + "</svg>\n";
}

} // namespace support
