// A call in parts on a team.
#pragma once

#include <algorithm>
#include <atomic>
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

// Calls part(team, share, piece) for `pieces` pieces of a share for each thread of a team of at most `threads`, for
// whoever comes to claim one: a thread that lost its core holds up the piece it has, and nothing else. For large calls:
// pieces should take as long as a time slice does.
template <class Part>
void on_team_in_pieces(int threads, int pieces, const Part& part) {
    if (pieces <= 1)
        return on_team(threads, [&](int team, int thread) { part(team, thread, 0); });
    const Ticks begun = ticks_now();
    if (goes_alone(begun))
        return on_team(threads, [&](int team, int thread) {
            for (int piece = 0; piece < pieces; ++piece)
                part(team, thread, piece);
        });
    int size = 1;
    Ticks each[2] = {longestAlone, longestAlone}; // piece
    std::atomic<int> claimed = 0;
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads(), thread = omp_get_thread_num(), all = pieces * team;
        const Ticks start = ticks_now();
        int own = 0;
        for (int i; (i = claimed.fetch_add(1, std::memory_order_relaxed)) < all; ++own)
            part(team, i % team, i / team);
        if (thread == 0)
            size = team;
        if (thread < 2 && own > 0)
            each[thread] = (ticks_now() - start) / own;
    }
    if (size > 1)
        note_region(size * pieces, std::min(each[0], each[1]), begun, ticks_now());
}

} // namespace qrv
