// The LU factorization of a band in blocks of columns, right-looking. Before the step of the block in columns
// [j, j + jb):
//
//           jb   j2   j3
//     jb  [ A11  A12  A13 ]
//     i2  [ A21  A22  A23 ]
//     i3  [ A31  A32  A33 ]
//
// A13 is a lower triangle and A31 an upper one: the band ends in them, so they are worked on in squares W13 and W31,
// whose other triangles are 0. Each of i2, i3, j2 and j3 may be 0 or less: there is no such block then.
//
// The panel A11, A21, A31 is factored by the calling thread, a few columns at a time, with interchanges in its own
// columns only; elements of A31 go to W31 as soon as their column is done, and rows of W31 take part in later
// interchanges.
// Then the columns to the right get the interchanges, the rows of U (solves with A11) and the products. At last the
// panel's interchanges are undone in the columns left of each pivot, from the last to the first, since the multipliers
// have to stay where they were computed.
//
// On a team columns are shared out in the solves and the loops; the products between them decide on threads for
// themselves. Every column is written by one thread.
#include <algorithm>
#include <cstring>
#include <omp.h>

#include "blas/calls.hpp"
#include "blas/thread/common/slice.hpp"
#include "lapack/calls/lu.hpp"
#include "lapack/kernel/source/band/band_view.hpp"
#include "lapack/kernel/source/band/gbtrf.hpp"
#include "service/reporter.hpp"

namespace qrv::lapack {
namespace {

constexpr int side = gbtrfWidest;
constexpr int panelStep = 8; // columns of a panel that are factored one by one

// One factorization.
struct BlockedBand {
    int threads;
    BandShape shape;
    Matrix<float> a;
    int* ipiv;
    Matrix<float> w13, w31; // squares of `side`
    int info = 0;
    int reach = 0; // the last column that a pivot row so far has elements in
};

// The block at hand; see the drawing.
struct Block {
    int j, jb, i2, i3;
    int j2 = 0, j3 = 0; // known when the panel is factored
};

// Calls job(column) for each of `count` columns, shared out.
template <class Job>
void for_each_column(int threads, int count, const Job& job) {
    if (threads == 1) {
        for (int column = 0; column < count; ++column)
            job(column);
        return;
    }
#pragma omp parallel for schedule(static) num_threads(threads)
    for (int column = 0; column < count; ++column)
        job(column);
}

// Solves with A11 for `count` columns of B, in contiguous shares.
void solve_shared(const BlockedBand& x, const Block& b, int count, Matrix<float> right) {
    const auto solve = [&](Slice columns) {
        if (columns.count > 0)
            kernel::trsm(Side::left, Uplo::lower, Op::none, Diag::unit, b.jb, columns.count, 1, x.a.block(b.j, b.j),
                         right.block(0, columns.first));
    };
    if (x.threads == 1)
        return solve({0, count});
#pragma omp parallel num_threads(x.threads)
    solve(even_slice(count, omp_get_num_threads(), omp_get_thread_num()));
}

// ---- The panel ------------------------------------------------------------------------------------------------------

// Where row `row` of the block stands in columns left of the pivot at hand: in the band, or in W31.
Vector<float> panel_row(const BlockedBand& x, const Block& b, int row) {
    return row < b.j + x.shape.kl ? x.a.row(row, b.j) : x.w31.row(row - b.j - x.shape.kl, 0);
}

// Of the columns of the panel. What is left of the pivot and past the band is in W31 by now.
void interchange_in_panel(const BlockedBand& x, const Block& b, int row, int pivotRow) {
    const int left = row - b.j;
    kernel::swap(left, x.a.row(row, b.j), panel_row(x, b, pivotRow));
    kernel::swap(b.jb - left, x.a.row(row, row), x.a.row(pivotRow, row));
}

// `end`: of the columns that get its elimination now.
void factor_column(BlockedBand& x, const Block& b, int column, int end) {
    const Matrix<float> a = x.a;
    const int below = std::min(x.shape.kl, x.shape.m - column - 1);
    const int pivotRow = column + kernel::iamax(below + 1, a.column(column, column)) - 1;
    x.ipiv[column] = pivotRow - b.j + 1; // from the block's first row, until it is done
    const float pivot = a(pivotRow, column);
    if (pivot == 0) {
        x.info = x.info == 0 ? column + 1 : x.info;
        return;
    }
    x.reach = std::max(x.reach, pivotRow + std::min(x.shape.ku, x.shape.n - 1 - pivotRow));
    if (pivotRow != column)
        interchange_in_panel(x, b, column, pivotRow);
    divide_multipliers(below, pivot, &a(column + 1, column));
    const int right = std::min(x.reach, end - 1) - column;
    if (right > 0 && below > 0)
        kernel::geru(below, right, -1, a.column(column + 1, column), a.row(column, column + 1),
                     a.block(column + 1, column + 1));
}

// The eliminations of columns [first, end) of the panel in those behind them.
void update_panel(const BlockedBand& x, const Block& b, int first, int end) {
    const int width = end - first, right = b.j + b.jb - end, last = b.j + x.shape.kl;
    const Matrix<float> u = x.a.block(first, end);
    kernel::trsm(Side::left, Uplo::lower, Op::none, Diag::unit, width, right, 1, x.a.block(first, first), u);
    const auto subtract = [&](int rows, int row, Matrix<const float> multipliers) {
        if (rows > 0)
            kernel::gemm(Op::none, Op::none, rows, right, width, -1, multipliers, u, 1, x.a.block(row, end));
    };
    subtract(std::min(last, x.shape.m) - end, end, x.a.block(end, first));
    subtract(std::min(end - b.j, b.i3), last, x.w31.block(0, first - b.j));
}

void factor_panel(BlockedBand& x, const Block& b) {
    const int last = b.j + x.shape.kl; // first row of A31
    for (int first = b.j, end; first < b.j + b.jb; first = end) {
        end = std::min(first + panelStep, b.j + b.jb);
        for (int column = first; column < end; ++column) {
            clear_fill(x.shape, column, x.a);
            factor_column(x, b, column, end);
            if (const int height = std::min(column - b.j + 1, b.i3); height > 0)
                std::copy_n(&x.a(last, column), height, &x.w31(0, column - b.j));
        }
        if (end < b.j + b.jb)
            update_panel(x, b, first, end);
    }
}

// From the last column to the first, left of each pivot. W31 is as it was copied then, and the band with it.
void undo_interchanges(const BlockedBand& x, const Block& b) {
    for (int column = b.j + b.jb - 1; column >= b.j; --column)
        if (const int pivotRow = x.ipiv[column] - 1; pivotRow != column)
            kernel::swap(column - b.j, x.a.row(column, b.j), panel_row(x, b, pivotRow));
}

// ---- The columns to its right ---------------------------------------------------------------------------------------

// Products of the panel with `count` columns whose rows of U are given: for rows i2 and i3 from column `column` on.
void subtract_products(const BlockedBand& x, const Block& b, int count, Matrix<float> u, int column) {
    const auto subtract = [&](int rows, int row, Matrix<const float> multipliers) {
        if (rows <= 0)
            return;
        const Matrix<float> target = x.a.block(row, column);
        if (x.threads == 1)
            kernel::gemm(Op::none, Op::none, rows, count, b.jb, -1, multipliers, u, 1, target);
        else
            blas::gemm(Op::none, Op::none, rows, count, b.jb, -1, multipliers, u, 1, target);
    };
    const int row2 = b.j + b.jb, row3 = b.j + x.shape.kl;
    subtract(b.i2, row2, x.a.block(row2, b.j));
    subtract(b.i3, row3, x.w31);
}

// Interchanges in the columns of A13, A23 and A33, each from its first row on.
void interchange_corner(const BlockedBand& x, const Block& b) {
    const int first = b.j + x.shape.kv();
    for_each_column(x.threads, b.j3, [&](int c) {
        for (int row = b.j + c; row < b.j + b.jb; ++row)
            if (const int pivotRow = x.ipiv[row] - 1; pivotRow != row)
                std::swap(x.a(row, first + c), x.a(pivotRow, first + c));
    });
}

void update_corner(const BlockedBand& x, const Block& b) {
    const int first = b.j + x.shape.kv();
    const Matrix<float> a13 = x.a.block(b.j, first);
    for_each_column(x.threads, b.j3, [&](int c) { std::copy_n(&a13(c, c), b.jb - c, &x.w13(c, c)); });
    solve_shared(x, b, b.j3, x.w13);
    subtract_products(x, b, b.j3, x.w13, first);
    for_each_column(x.threads, b.j3, [&](int c) { std::copy_n(&x.w13(c, c), b.jb - c, &a13(c, c)); });
}

void update_right(const BlockedBand& x, const Block& b) {
    const int first = b.j + b.jb;
    if (b.j2 > 0) {
        const Matrix<float> a12 = x.a.block(b.j, first);
        solve_shared(x, b, b.j2, a12);
        subtract_products(x, b, b.j2, a12, first);
    }
    if (b.j3 > 0)
        update_corner(x, b);
}

// ---- One step after the other ---------------------------------------------------------------------------------------

void clear_work(const BlockedBand& x, int nb) {
    for_each_column(x.threads, nb, [&](int c) {
        std::fill_n(&x.w13(0, c), c, 0.0F);
        std::fill_n(&x.w31(c + 1, c), nb - c - 1, 0.0F);
    });
}

void clear_first_fills(const BlockedBand& x) {
    const int first = x.shape.ku + 1, count = std::min(x.shape.kv(), x.shape.n) - first;
    for_each_column(x.threads, count, [&](int c) { clear_first_fill(x.shape, first + c, x.a); });
}

bool asks_to_stop(const char* stage, int step) {
    const int thread = 0;
    return qrv_serv_progress(&thread, &step, stage, static_cast<int>(std::strlen(stage))) != 0;
}

} // namespace

int gbtrf_blocked(int threads, int nb, const char* stage, const BandShape& shape, Matrix<float> a, int* ipiv) {
    float squares[2][side * side];
    BlockedBand x{threads, shape, a, ipiv, {squares[0], side}, {squares[1], side}};
    clear_work(x, nb);
    clear_first_fills(x);
    const int length = std::min(shape.m, shape.n), kv = shape.kv();
    for (int j = 0, jb; j < length; j += jb) {
        jb = std::min(nb, length - j);
        Block b{j, jb, std::min(shape.kl - jb, shape.m - j - jb), std::min(jb, shape.m - j - shape.kl)};
        factor_panel(x, b);
        if (asks_to_stop(stage, j + jb))
            return x.info;
        const bool last = j + jb >= shape.n;
        if (!last) {
            b.j2 = std::min(x.reach - j + 1, kv) - jb;
            b.j3 = std::max(0, x.reach - j - kv + 1);
            laswp(b.j2, a.block(j, j + jb), 1, jb, ipiv + j);
        }
        for (int i = j; i < j + jb; ++i)
            ipiv[i] += j;
        if (!last) {
            interchange_corner(x, b);
            update_right(x, b);
        }
        undo_interchanges(x, b);
    }
    return x.info;
}

} // namespace qrv::lapack
