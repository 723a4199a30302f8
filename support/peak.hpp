// What the machine can do at most, measured: loops that only compute, in registers, for each vector width.
#pragma once

#include <string>
#include <vector>

namespace support {

// One loop. run(threads) executes it once on each of `threads` threads at a time; flops is the work of one thread.
struct Peak {
    std::string name;
    double flops;
    void (*run)(int threads);
};

// Narrowest first; only the ones that this processor has.
std::vector<Peak> machine_peaks();

} // namespace support
