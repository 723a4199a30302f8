#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fmt/os.h>
#include <set>

#include "report.hpp"

namespace bench {
namespace {

constexpr double frameLeft = 60, frameTop = 50, frameWidth = 660, frameHeight = 400;
constexpr double frameRight = frameLeft + frameWidth, frameBottom = frameTop + frameHeight;
constexpr const char* colors[] = {"#c1272d", "#e8833a", "#d4a017", "#1f5fa8", "#17a2b8",
                                  "#2e8b57", "#8e44ad", "#a0522d", "#e377c2", "#7f7f7f"};

// Logarithmic n, linear rate.
struct Axes {
    double smallest, largest, top;

    double x(double n) const {
        return frameLeft +
               frameWidth * (largest > smallest ? std::log(n / smallest) / std::log(largest / smallest) : 0);
    }
    double y(double rate) const { return frameBottom - frameHeight * std::min(rate / top, 1.0); }
};

std::string text(double x, double y, const char* anchor, const std::string& content) {
    return fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"{}\">{}</text>\n", x, y, anchor, content);
}

std::string line(double x1, double y1, double x2, double y2, const std::string& style) {
    return fmt::format("<line x1=\"{:.1f}\" y1=\"{:.1f}\" x2=\"{:.1f}\" y2=\"{:.1f}\" {}/>\n", x1, y1, x2, y2, style);
}

std::string grid(const Axes& axes, const std::set<int>& sizes, Unit unit) {
    std::string svg;
    const double decade = std::pow(10, std::floor(std::log10(axes.top)));
    const double step = decade / (axes.top < 3 * decade ? 5 : 1);
    for (int i = 0; i * step <= axes.top; ++i) {
        svg += line(frameLeft, axes.y(i * step), frameRight, axes.y(i * step), "stroke=\"#ddd\"");
        svg += text(frameLeft - 6, axes.y(i * step) + 4, "end", fmt::format("{:.4g}", i * step));
    }
    for (int n : sizes)
        if ((n & (n - 1)) == 0 || n % 100 == 0)
            svg += text(axes.x(n), frameBottom + 16, "middle", std::to_string(n));
    svg += text(frameLeft + frameWidth / 2, frameBottom + 34, "middle", "n");
    svg += text(frameLeft, frameTop - 8, "middle", rate_name(unit));
    return svg + line(frameLeft, frameBottom, frameRight, frameBottom, "stroke=\"#000\"");
}

// One contestant over n; its speed carries what the clock did from one contest to the next, and so do the peaks.
std::string curve(const Axes& axes, const std::string& contestant, const std::vector<Outcome>& outcomes,
                  const std::string& style) {
    std::string points;
    for (const Outcome& outcome : outcomes)
        if (const auto found = outcome.timings.find(contestant); found != outcome.timings.end())
            points += fmt::format("{:.1f},{:.1f} ", axes.x(outcome.work.plotSize), axes.y(found->second.rate()));
    return fmt::format("<polyline points=\"{}\" fill=\"none\" {}/>\n", points, style);
}

std::string legend(std::size_t row, const std::string& name, const std::string& style) {
    const double y = frameTop + 8 + 18 * static_cast<double>(row);
    return line(frameRight + 16, y, frameRight + 46, y, style) + text(frameRight + 52, y + 4, "start", name);
}

} // namespace

bool write_plot(const std::filesystem::path& path, const std::string& title, const Field& field,
                const std::vector<Outcome>& outcomes) {
    std::set<int> sizes;
    double fastest = 0, highestPeak = 0;
    for (const Outcome& outcome : outcomes) {
        sizes.insert(outcome.work.plotSize);
        for (const auto& [name, timing] : outcome.timings) {
            double& most = name.rfind(peak_contestant(""), 0) == 0 ? highestPeak : fastest;
            most = std::max(most, timing.rate());
        }
    }
    if (fastest == 0 || sizes.size() < 2)
        return false;
    // The axis ends at the highest peak, unless all are far below it: what memory limits has no use for peaks.
    const bool withPeaks = highestPeak > 0 && fastest > highestPeak / 3;
    const Axes axes{static_cast<double>(*sizes.begin()), static_cast<double>(*sizes.rbegin()),
                    withPeaks ? highestPeak : fastest};
    const std::vector<std::string> peaks = withPeaks ? field.peaks : std::vector<std::string>{};

    std::string svg =
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"880\" height=\"500\" font-family=\"sans-serif\" "
        "font-size=\"12\">\n<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
    svg += text(frameLeft, 20, "start", title) + grid(axes, sizes, outcomes.front().work.work.unit);
    std::size_t row = 0;
    const auto draw = [&](const std::string& contestant, const std::string& label, const std::string& style) {
        svg += curve(axes, contestant, outcomes, style) + legend(row++, label, style);
    };
    for (const std::string& peak : peaks) // the wider the vectors, the longer the dashes
        draw(peak_contestant(peak), peak + " peak",
             fmt::format("stroke=\"#000\" stroke-dasharray=\"{} 3\"", 2 + 5 * row));
    for (const std::vector<std::string>* names : {&field.ours, &field.peers})
        for (const std::string& name : *names)
            draw(name, name,
                 fmt::format("stroke=\"{}\" stroke-width=\"{}\"", colors[(row - peaks.size()) % std::size(colors)],
                             names == &field.ours ? 3 : 1.5));
    fmt::output_file(path.string()).print("{}</svg>\n", svg);
    return true;
}

} // namespace bench
