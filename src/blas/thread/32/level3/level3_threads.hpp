// Decisions and partitions of the threaded routines of level 3 but GEMM: how many threads a call gets, and which part
// of the matrices a thread takes.
#pragma once

#include "blas/options.hpp"
#include "blas/thread/common/slice.hpp"

namespace qrv {

// One kernel call costs less than a team up to this size: of both dimensions of a B or C whose columns or rows are
// independent, and of the order of a triangle that is updated.
struct Level3Rule {
    int serialUpTo;
};
inline constexpr Level3Rule slicedRule{.serialUpTo = 16};
inline constexpr Level3Rule updateRule{.serialUpTo = 16};

// Threads, 1 for a serial call. The budget is asked for last: `machine` answers budget().
template <class Machine>
constexpr int sliced_threads(int m, int n, const Machine& machine) {
    return m <= slicedRule.serialUpTo && n <= slicedRule.serialUpTo ? 1 : machine.budget();
}
template <class Machine>
constexpr int update_threads(int n, const Machine& machine) {
    return n <= updateRule.serialUpTo ? 1 : machine.budget();
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

// One block row of the triangle of an update: the diagonal block, and what follows it in its rows (upper triangle) or
// in its columns (lower). Equal blocks, the last one taking what remains; nothing follows it.
//
//   n     team  diagonal blocks     rests
//   17    2     0+8    8+9          8+9    17+0
//   3     4     0+0 (three) 0+3     0+3 (three) 3+0
struct TriangleBlockRow {
    Slice rows, rest;
};
constexpr TriangleBlockRow triangle_block_row(int n, int team, int part) {
    const Slice rows = equal_slice(n, team, part);
    const int end = rows.first + rows.count;
    return {rows, {end, n - end}};
}

} // namespace qrv
