// A call in parts that do not wait for each other, on a team.
#pragma once

#include <omp.h>

#include "blas/thread/common/crowd.hpp"

namespace qrv {

// Calls part(team, thread) on each thread of a team of at most `threads`. Where teams do not pay the caller does the
// parts of all, one after the other, so that the result has the bits of the team.
template <class Part>
void on_team(int threads, const Part& part) {
    const Ticks begun = ticks_now();
    if (goes_alone(begun)) {
        for (int thread = 0; thread < threads; ++thread)
            part(threads, thread);
        return;
    }
    // A thread that waits for a core within its part tells nothing of the part: of two threads one hardly does.
    int size = 1;
    Ticks first = 0, second = 0;
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads(), thread = omp_get_thread_num();
        const Ticks start = thread == 1 ? ticks_now() : begun;
        part(team, thread);
        if (thread == 0) {
            size = team;
            first = ticks_now() - start;
        } else if (thread == 1) {
            second = ticks_now() - start;
        }
    }
    if (size > 1)
        note_region(size, std::min(first, second), begun, ticks_now());
}

} // namespace qrv
