// Decisions and partitions of the threaded routines of level 3 but GEMM whose results fall into independent columns or
// rows.
#pragma once

#include "blas/options.hpp"
#include "blas/thread/common/slice.hpp"

namespace qrv {

// Threads for a B or C of m x n: 1 for a small one. The budget is asked for last.
template <class Machine>
constexpr int sliced_threads(int m, int n, const Machine& machine) {
    constexpr int serialUpTo = 16; // in both dimensions
    return m <= serialUpTo && n <= serialUpTo ? 1 : machine.budget();
}

// A thread's part of a matrix of m x n: columns where the other operand stands on the left, else rows; the last thread
// takes what remains.
//
//   columns team   slices
//   10      3      0+3  3+3  6+4
//   2       3      0+0  0+0  0+2
struct MatrixSlice {
    int row, column, m, n;
};
constexpr MatrixSlice matrix_slice(Side side, int m, int n, int team, int thread) {
    const bool byColumns = side == Side::left;
    const Slice slice = equal_slice(byColumns ? n : m, team, thread);
    return byColumns ? MatrixSlice{0, slice.first, m, slice.count} : MatrixSlice{slice.first, 0, slice.count, n};
}

} // namespace qrv
