// One contest: several contestants do the same work, in random turns within the same seconds.
#pragma once

#include <benchmark/benchmark.h>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace bench {

struct Effort {
    int repetitions = 7;
    double seconds = 0.05; // of one repetition, at least
    bool best = false;     // the fastest repetition counts, not the median: for a machine that others use
};

struct Contestant {
    std::string name;
    double work;                                 // of one iteration: operations, or bytes
    std::function<void(benchmark::State&)> body; // iterates over the state
};

// Seconds of one iteration: the figure that counts, and the quartiles over the repetitions.
struct Timing {
    double work, seconds, lowerQuartile, upperQuartile;

    double rate() const { return work / seconds * 1e-9; }
    double spread() const { return (upperQuartile - lowerQuartile) / seconds; }
};

using Timings = std::map<std::string, Timing>;

// Call once, before the first contest.
void initialize(const Effort& effort);

Timings contest(const std::vector<Contestant>& contestants, const Effort& effort);

} // namespace bench
