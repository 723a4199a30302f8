// What the routes of the factorizations tell each other, and the progress routine.
#pragma once

#include "lapack/routine_name.hpp"
#include "service/reporter.hpp"

namespace qrv::lapack {

struct FactorResult {
    int info = 0;
    bool stopped = false; // by the progress routine
};

// Who factors a block and its first column in the whole matrix, counted from 0: for the progress routine.
struct FactorPlace {
    int thread = 0;
    int offset = 0;
};

// Tells the progress routine that the block of n columns at `place` is factored, with `info` as the result.
template <class T>
FactorResult tell_progress(const RoutineName<T>& routine, int n, FactorPlace place, int info) {
    const int step = place.offset + n, length = static_cast<int>(routine.letters.size());
    return {info, qrv_serv_progress(&place.thread, &step, routine.letters.data(), length) != 0};
}

} // namespace qrv::lapack
