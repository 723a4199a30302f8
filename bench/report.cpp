#include "report.hpp"

#include <algorithm>
#include <fmt/format.h>

namespace bench {
namespace {

constexpr int caseWidth = 25, formWidth = 10, rateWidth = 17, oneThreadWidth = 6;

int width(const std::string& name) {
    return std::max(7, static_cast<int>(name.size()) + 2);
}

std::string duration(double seconds) {
    if (seconds < 1e-6)
        return fmt::format("{:.1f} ns", seconds * 1e9);
    if (seconds < 1e-3)
        return fmt::format("{:.2f} us", seconds * 1e6);
    return fmt::format("{:.2f} ms", seconds * 1e3);
}

// A figure that depends on another contestant, which may have sat this case out.
template <class Figure>
std::string cell(const Outcome& outcome, const std::string& other, int columns, int digits, Figure figure) {
    const auto found = outcome.timings.find(other);
    if (found == outcome.timings.end()) {
        const auto why = outcome.out.find(other);
        return fmt::format("{:>{}}", why == outcome.out.end() ? "-" : why->second, columns);
    }
    const double value = figure(found->second);
    return value < 1000 ? fmt::format("{:>{}.{}f}", value, columns, digits) : fmt::format("{:>{}}", ">999", columns);
}

} // namespace

std::string table_head(const Field& field) {
    std::string line = fmt::format("{:<{}}{:<{}}{:>10}{:>{}}{:>6}", "case", caseWidth, "form", formWidth, "a call",
                                   "rate", rateWidth, "+-%");
    for (const std::string& peak : field.peaks)
        line += fmt::format("{:>{}}", "%" + peak, width(peak));
    line += fmt::format("{:>{}} |", "x1t", oneThreadWidth);
    for (const std::string& peer : field.peers)
        line += fmt::format("{:>{}}", "x" + peer, width(peer));
    return line + "\n";
}

std::string table_rows(const Field& field, const Outcome& outcome) {
    std::string lines;
    for (const std::string& form : field.ours) {
        const auto found = outcome.timings.find(form);
        if (found == outcome.timings.end())
            continue;
        const Timing& ours = found->second;
        lines += fmt::format("{:<{}}{:<{}}{:>10}{:>{}.1f} {:<7}{:>6.0f}", outcome.work.name, caseWidth, form, formWidth,
                             duration(ours.seconds), ours.rate(), rateWidth - 8, rate_name(outcome.work.work.unit),
                             50 * ours.spread());
        for (const std::string& peak : field.peaks)
            lines += cell(outcome, peak_contestant(peak), width(peak), 0,
                          [&](const Timing& limit) { return 100 * ours.rate() / limit.rate(); });
        lines += cell(outcome, one_thread_contestant(form), oneThreadWidth, 2,
                      [&](const Timing& one) { return one.seconds / ours.seconds; });
        lines += " |";
        for (const std::string& peer : field.peers)
            lines +=
                cell(outcome, peer, width(peer), 2, [&](const Timing& other) { return other.seconds / ours.seconds; });
        lines += "\n";
    }
    if (lines.empty()) // what the peers did is in the CSV file
        lines = fmt::format("{:<{}}{}\n", outcome.work.name, caseWidth,
                            outcome.out.empty() ? "-" : outcome.out.begin()->second);
    return lines;
}

std::string csv_head() {
    return "case,threads,contestant,rate,unit,seconds,lower_quartile_seconds,upper_quartile_seconds\n";
}

std::string csv_rows(const Outcome& outcome) {
    std::string lines;
    for (const auto& [name, timing] : outcome.timings)
        lines += fmt::format("{},{},{},{:.4g},{},{:.6g},{:.6g},{:.6g}\n", outcome.work.name, outcome.work.threads, name,
                             timing.rate(), rate_name(outcome.work.work.unit), timing.seconds, timing.lowerQuartile,
                             timing.upperQuartile);
    return lines;
}

} // namespace bench
