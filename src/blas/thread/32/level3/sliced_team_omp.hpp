// A routine of level 3 whose result falls into independent columns or rows, on a team: each thread has a slice of them
// and all of the other operand, and calls the serial kernel.
#pragma once

#include "blas/calls.hpp"
#include "blas/native.hpp"
#include "blas/thread/32/level3/level3_threads.hpp"
#include "blas/thread/common/machine.hpp"
#include "blas/thread/common/team_omp.hpp"

namespace qrv {

// Calls part(slice) for the slices of the matrix of a call.
template <class Part>
void on_matrix_slices(const SlicedCall& call, const Part& part) {
    if (call.m <= 0 || call.n <= 0)
        return;
    const Level3Team team = sliced_team(call, ThisMachine{});
    if (team.threads <= 1)
        return part(MatrixSlice{0, 0, call.m, call.n});
    on_team(team.threads, [&](int threads, int thread) { part(matrix_slice(call, team.byWork, threads, thread)); });
}

} // namespace qrv
