// How the threads of one update share the columns that are right of the panel, when the first of them also factors
// the next panel, which begins those columns.
#pragma once

#include "blas/thread/common/slice.hpp"

namespace qrv::lapack {

struct LookaheadShare {
    int first;    // columns of thread 0
    int others;   // of each other thread but the last, which takes what remains
    bool factors; // thread 0 holds the whole next panel, and factors it

    Slice slice(int columns, int team, int thread) const {
        if (thread == 0)
            return {0, first};
        const int begin = first + (thread - 1) * others;
        return {begin, thread == team - 1 ? columns - begin : others};
    }
};

// Thread 0 gets less than its part, by a quarter of the panel that is applied, in exchange for the factorization; but
// the whole next panel if that fits into its part at all.
//
//   columns team applied next   first others factors
//   1024    4    128     128    224   266    yes
//   512     4    128     128    128   128    yes
//   400     4    128     128    100   100    no
//   300     1    128     128    300   0      yes
constexpr LookaheadShare lookahead_share(int columns, int team, int applied, int next) {
    if (team == 1)
        return {columns, 0, true};
    const int part = columns / team;
    const int first = part >= applied / 4 + next ? part - applied / 4 : part >= next ? next : part;
    return {first, (columns - first) / (team - 1), part >= next};
}

} // namespace qrv::lapack
