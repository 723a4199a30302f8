// A plot as SVG: two axes, and on them lines, points and bars.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace support {

struct Axis {
    std::string title;
    bool isLogarithmic = false;                // base 10; what is not positive is left out
    std::optional<double> low = {}, high = {}; // from the values without
    std::vector<double> ticks = {};            // chosen without
    bool isWhole = false;                      // ticks at whole numbers only
};

enum class Mark { line, points, bars };

struct Series {
    std::string name; // for the legend; empty: not there
    std::vector<double> x, y;
    Mark mark = Mark::line;
    std::string color = {};  // the next of a list without
    double width = 1.5;      // of a line, in the picture's units; of a point, half its diameter
    std::string dashes = {}; // lengths of dash and gap; empty: drawn through
};

// Values beyond the limits of an axis are drawn at them. A value that is not finite leaves a gap.
struct Plot {
    std::string title;
    Axis x, y;
    std::vector<Series> series;
};

std::string svg(const Plot& plot);

} // namespace support
