// A call in parts on a team.
#pragma once

#include <algorithm>
#include <omp.h>

#include "blas/thread/common/crowd.hpp"
#include "service/thread_budget.hpp"

namespace qrv {

// Calls phase(team, thread) on each thread of a team of at most `threads`; the parts of a phase do not wait for each
// other, and each phase begins when the one before is over. Where teams do not pay the caller does the parts of all,
// one after the other, so that the result has the bits of the team.
template <class... Phases>
void on_team(int threads, const Phases&... phases) {
    const Ticks begun = ticks_now();
    if (goes_alone(begun)) {
        const RegionOfOne region;
        const int team = std::min(threads, omp_get_thread_limit()); // that there would be
        const auto perform = [=](const auto& phase) {
            for (int thread = 0; thread < team; ++thread)
                phase(team, thread);
        };
        (perform(phases), ...);
        return;
    }
    // A thread that waits for a core within its part tells nothing of the part: of two threads one hardly does.
    int size = 1;
    Ticks worked[2] = {};
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads(), thread = omp_get_thread_num();
        Ticks start = thread == 0 ? begun : ticks_now(), own = 0;
        const auto perform = [&](const auto& phase) {
            if (own > 0) {
#pragma omp barrier
                start = ticks_now();
            }
            phase(team, thread);
            own += std::max<Ticks>(1, ticks_now() - start);
        };
        (perform(phases), ...);
        if (thread == 0)
            size = team;
        if (thread < 2)
            worked[thread] = own;
    }
    if (size > 1)
        note_region(size, std::min(worked[0], worked[1]), begun, ticks_now());
}

} // namespace qrv
