// A routine of level 3 whose result falls into independent columns or rows, on a team: each thread has a slice of them
// and all of the other operand, and calls the serial kernel.
#pragma once

#include <omp.h>

#include "blas/blas.hpp"
#include "blas/calls.hpp"
#include "blas/thread/32/level3/level3_threads.hpp"
#include "blas/thread/common/machine.hpp"

namespace qrv {

// Calls part(slice) for the slices of a matrix of m x n, which is the left or the right operand's partner.
template <class Part>
void on_matrix_slices(Side side, int m, int n, const Part& part) {
    if (m <= 0 || n <= 0)
        return;
    const int threads = sliced_threads(m, n, ThisMachine{});
    if (threads <= 1)
        return part(MatrixSlice{0, 0, m, n});
#pragma omp parallel num_threads(threads)
    part(matrix_slice(side, m, n, omp_get_num_threads(), omp_get_thread_num()));
}

} // namespace qrv
