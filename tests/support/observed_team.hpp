// The largest team of any region since the value was last set. Regions ask for the size of their team, and the linker
// sends that question through here.
#pragma once

#include <atomic>

namespace qrv::test {
inline std::atomic<int> largestTeam{0};
}

extern "C" int __real_omp_get_num_threads();
extern "C" [[gnu::used]] inline int __wrap_omp_get_num_threads() {
    const int team = __real_omp_get_num_threads();
    auto& most = qrv::test::largestTeam;
    for (int largest = most; largest < team && !most.compare_exchange_weak(largest, team);)
        ;
    return team;
}
