// One level 1 operation on a team, told once for all: the region in which every thread calls the kernel on its slices.
#pragma once

#include "blas/calls.hpp"
#include "blas/native.hpp"
#include "blas/thread/common/level1/level1_threads.hpp"
#include "blas/thread/common/machine.hpp"
#include "blas/thread/common/slice.hpp"
#include "blas/thread/common/team_omp.hpp"

namespace qrv {

// Calls body(slice) on each thread of a team of at most `threads`; the slices are those of n elements. A team of one
// gets the whole.
template <class Body>
void on_slices(int threads, int n, const Body& body) {
    on_team(threads, [&](int team, int thread) { body(vector_slice(n, team, thread)); });
}

} // namespace qrv
