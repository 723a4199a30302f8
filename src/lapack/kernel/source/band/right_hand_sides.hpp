// Right-hand sides of a banded solve on a team: contiguous shares of columns, each solved on its own.
#pragma once

#include "blas/thread/common/slice.hpp"
#include "blas/thread/common/team_omp.hpp"

namespace qrv::lapack {

// Threads for so many right-hand sides; `least` are worth a team.
constexpr int right_hand_side_threads(int nrhs, int threads, int least) {
    return threads < 2 || nrhs < 2 || nrhs < least ? 1 : threads;
}

// Calls solve(first, count) for shares that cover all columns.
template <class Solve>
void share_right_hand_sides(int threads, int nrhs, const Solve& solve) {
    if (threads == 1)
        return solve(0, nrhs);
    on_team(threads, [&](int team, int thread) {
        const Slice share = even_slice(nrhs, team, thread);
        if (share.count > 0)
            solve(share.first, share.count);
    });
}

} // namespace qrv::lapack
