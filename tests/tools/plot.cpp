// The plot: where values stand in the picture, and what is left out.
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/plot.hpp"

namespace support {
namespace {

using testing::HasSubstr, testing::Not;

// The frame spans 80 to 850 and, upwards, 420 to 50.
TEST(Plot, DrawsValuesAtTheirPlaces) {
    const std::vector<double> ends{1, 100}, gap{1, 4, NAN, 2, 3, INFINITY, 3};
    const struct {
        Plot plot;
        std::vector<const char*> parts;
        const char* absent;
    } cases[] = {
        {{"a < b & c", {"n"}, {"rate"}, {{"", ends, {-3, 5}}}},
         {"points='80.0,420.0 850.0,50.0 '", ">a &lt; b &amp; c<", ">n</text>", ">rate</text>", ">-2</text>",
          ">4</text>", ">20</text>"},
         ">6<"},
        {{"", {}, {}, {{"", {1, 2}, {7, 7}}}}, {"points='80.0,235.0 850.0,235.0 '"}, "nan"}, // a constant
        {{"", {"", true}, {"", true}, {{"", {1, 10, 100, 0}, {1e-3, 1, 1e3, 1}}}}, // logarithms, without the one of 0
         {"points='80.0,420.0 465.0,235.0 850.0,50.0 '", ">0.001<", ">100<"},
         ">20<"},
        {{"", {"", false, 0, 10, {0, 7}}, {"", false, 0, 1}, {{"", {0, 20}, {-5, 5}}}}, // beyond limits; given ticks
         {"points='80.0,420.0 850.0,50.0 '", ">7<"},
         ">5<"},
        {{"", {}, {}, {{"", {0, 1, 2, 3, 4, 5, 6}, gap}}}, // a line in two parts, and a point that is none
         {"points='80.0,420.0 208.3,50.0 '", "points='465.0,296.7 593.3,173.3 '"},
         "nan"},
        {{"", {}, {}, {{"", {1, 2, 3}, {2, 4, -4}, Mark::bars}}},
         {"x='118.5' y='142.5' width='179.7' height='92.5'", "height='185.0'"},
         "polyline"},
        {{"", {}, {}, {{"name", {1, 2}, {1, 2}, Mark::points, "#123456"}}},
         {"cx='690.0' cy='50.0' r='1.5' fill='#123456'", ">name<"},
         "polyline"},
        {{"empty", {}, {}, {{"", {NAN}, {1}}}}, {"</svg>"}, "nan"},
    };
    for (const auto& [plot, parts, absent] : cases) {
        const std::string picture = svg(plot);
        for (const char* part : parts)
            EXPECT_THAT(picture, HasSubstr(part));
        EXPECT_THAT(picture, Not(HasSubstr(absent)));
    }
}

} // namespace
} // namespace support
