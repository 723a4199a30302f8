#include "measure.hpp"

#include <algorithm>
#include <fmt/format.h>

namespace bench {
namespace {

// Keeps the raw repetitions: the table wants medians and quartiles over all contestants, not a line for each.
class Collector : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                seconds[run.run_name.function_name].push_back(run.real_accumulated_time /
                                                              static_cast<double>(run.iterations));
    }

    std::map<std::string, std::vector<double>> seconds;
};

double quantile(const std::vector<double>& sorted, double share) {
    const double position = share * static_cast<double>(sorted.size() - 1);
    const auto below = static_cast<std::size_t>(position);
    const std::size_t above = std::min(below + 1, sorted.size() - 1);
    return sorted[below] + (sorted[above] - sorted[below]) * (position - static_cast<double>(below));
}

} // namespace

void initialize(const Effort& effort) {
    // Without interleaving all repetitions of one contestant would run first and see one state of a clock that drifts.
    // The texts stay: Google Benchmark keeps the pointer to the program's name.
    static std::vector<std::string> texts = {"qrv_bench", "--benchmark_enable_random_interleaving=true",
                                             fmt::format("--benchmark_repetitions={}", effort.repetitions)};
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    int count = static_cast<int>(pointers.size());
    pointers.push_back(nullptr);
    benchmark::Initialize(&count, pointers.data());
}

Timings contest(const std::vector<Contestant>& contestants, const Effort& effort) {
    benchmark::ClearRegisteredBenchmarks();
    for (const Contestant& contestant : contestants)
        benchmark::RegisterBenchmark(contestant.name.c_str(), contestant.body)
            ->UseRealTime()
            ->Repetitions(effort.repetitions)
            ->MinTime(effort.seconds);
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);

    Timings timings;
    for (const Contestant& contestant : contestants) {
        std::vector<double>& seconds = collector.seconds[contestant.name];
        if (seconds.empty())
            continue;
        std::sort(seconds.begin(), seconds.end());
        timings[contestant.name] = {contestant.work, quantile(seconds, effort.best ? 0 : 0.5), quantile(seconds, 0.25),
                                    quantile(seconds, 0.75)};
    }
    return timings;
}

} // namespace bench
