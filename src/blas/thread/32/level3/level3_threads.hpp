// Decisions and partitions of the threaded routines of level 3 but GEMM: how many threads a call gets, and which part
// of the matrices a thread takes.
#pragma once

#include <cmath>

#include "blas/options.hpp"
#include "blas/thread/common/slice.hpp"
#include "blas/thread/common/trapezoid.hpp"
#include "blas/thread/common/work_threads.hpp"

namespace qrv {

// One kernel call costs less than a team up to this size: of both dimensions of a B or C whose columns or rows are
// independent, and of the order of a triangle that is updated.
struct Level3Rule {
    int serialUpTo;
};
inline constexpr Level3Rule slicedRule{.serialUpTo = 16};
inline constexpr Level3Rule updateRule{.serialUpTo = 16};
constexpr bool is_short(const Level3Rule& rule, int m, int n) {
    return m <= rule.serialUpTo && n <= rule.serialUpTo;
}

// A call whose columns (other operand on the left) or rows are independent.
struct SlicedCall {
    Side side;
    int m, n;
    double work; // multiply-adds of real numbers
};
// That of a product with a symmetric matrix, with a triangle, of a triangular solve.
template <class T>
constexpr SlicedCall symmetric_call(Side side, int m, int n) {
    return {side, m, n, work_of<T>(m, n, side == Side::left ? m : n)};
}
template <class T>
constexpr SlicedCall product_call(Side side, int m, int n) {
    return {side, m, n, work_of<T>(m, n, side == Side::left ? m : n) / 2};
}
// Each thread of a solve prepares the coefficients for itself: it must get twice the work.
template <class T>
constexpr SlicedCall solve_call(Side side, int m, int n) {
    return {side, m, n, work_of<T>(m, n, side == Side::left ? m : n) / 4};
}

// Columns or rows below which a slice is as slow as one of this many.
inline constexpr int leastSlice = 8;

// How a call is shared out: on how many threads, 1 for a serial call, and by which of two rules.
struct Level3Team {
    int threads;
    bool byWork; // in whole tiles and trapezoids; or else in plain shares
};

// The budget is asked for last.
template <class Machine>
constexpr Level3Team sliced_team(const SlicedCall& call, const Machine& machine) {
    if (is_short(slicedRule, call.m, call.n))
        return {1, false};
    if (!goes_by_work(machine))
        return {machine.budget(), false};
    const int slices = (call.side == Side::left ? call.n : call.m) / leastSlice;
    return {slices < 2 ? 1 : smaller(slices, threads_by_work(call.work, machine)), true};
}
template <class Machine>
constexpr Level3Team update_team(int n, double work, const Machine& machine) {
    if (is_short(updateRule, n, n))
        return {1, false};
    if (!goes_by_work(machine))
        return {machine.budget(), false};
    return {smaller(n / leastSlice, threads_by_work(work, machine)), true};
}

// A thread's part of a matrix of m x n: columns where the other operand stands on the left, else rows.
//
//   columns team   plain slices      by work
//   40      3      0+13 13+13 26+14   0+16 16+16 32+8
struct MatrixSlice {
    int row, column, m, n;
};
constexpr MatrixSlice matrix_slice(const SlicedCall& call, bool byWork, int team, int thread) {
    const bool byColumns = call.side == Side::left;
    const int m = call.m, n = call.n, total = byColumns ? n : m;
    const Slice slice = !byWork     ? equal_slice(total, team, thread)
                        : byColumns ? column_slice(total, team, thread)
                                    : row_slice(total, team, thread);
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
