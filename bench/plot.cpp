#include <algorithm>
#include <fmt/format.h>
#include <fmt/os.h>
#include <set>

#include "report.hpp"
#include "support/plot.hpp"

namespace bench {
namespace {

// One contestant over n; its speed carries what the clock did from one contest to the next, and so do the peaks.
Series curve(const std::string& contestant, const std::string& label, const std::vector<Outcome>& outcomes) {
    Series series{label, {}, {}};
    for (const Outcome& outcome : outcomes)
        if (const auto found = outcome.timings.find(contestant); found != outcome.timings.end()) {
            series.x.push_back(outcome.work.plotSize);
            series.y.push_back(found->second.rate());
        }
    return series;
}

bool is_round(int n) {
    return (n & (n - 1)) == 0 || n % 100 == 0;
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
    const bool isRound = std::any_of(sizes.begin(), sizes.end(), is_round);
    Plot plot{title,
              {"n", true},
              {rate_name(outcomes.front().work.work.unit), false, 0, withPeaks ? highestPeak : fastest},
              {}};
    for (const int n : sizes)
        if (!isRound || is_round(n))
            plot.x.ticks.push_back(n);
    if (withPeaks)
        for (const std::string& peak : field.peaks) { // the wider the vectors, the longer the dashes
            Series& series = plot.series.emplace_back(curve(peak_contestant(peak), peak + " peak", outcomes));
            series.color = "#000";
            series.width = 1;
            series.dashes = fmt::format("{} 3", 5 * plot.series.size() - 3);
        }
    for (const std::vector<std::string>* names : {&field.ours, &field.peers})
        for (const std::string& name : *names)
            plot.series.emplace_back(curve(name, name, outcomes)).width = names == &field.ours ? 3 : 1.5;
    fmt::output_file(path.string()).print("{}", svg(plot));
    return true;
}

} // namespace bench
