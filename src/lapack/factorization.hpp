// What the routes of the factorizations tell each other, and the progress routine.
#pragma once

#include "lapack/routine_name.hpp"
#include "service/reporter.hpp"

namespace qrv::lapack {

// Half of n, in whole blocks of kernels: with blocks of so many the steps are two, and the products as large as can be.
// Triangles above `mostInBlocks` are inverted and squared so: from 512 on, halves took 0.93 to 1.02 of the time of
// blocks of 64, below 0.98 to 1.02.
constexpr int mostInBlocks = 128;
constexpr int half_in_blocks(int n) {
    constexpr int block = 32;
    return (n / 2 + block - 1) / block * block;
}

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
