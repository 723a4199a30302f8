// Time that passes.
#pragma once

#include <algorithm>
#include <chrono>
#include <limits>

namespace support {

class Timer {
public:
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); }

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

// Of many short runs, `duration` seconds in all, the fastest counts: what else the machine does only makes a run
// slower.
template <class Prepare, class Work>
double best_seconds(double duration, Prepare prepare, Work work) {
    double best = std::numeric_limits<double>::infinity();
    const Timer total;
    do {
        prepare();
        const Timer run;
        work();
        best = std::min(best, run.seconds());
    } while (total.seconds() < duration);
    return best;
}

} // namespace support
