// Rank-k and rank-2k updates on a team, told once for all. By work, each thread has a trapezoid of the triangle: a
// block on the diagonal and the rectangle beside it, a kernel call each. Otherwise each thread has a block on the
// diagonal, and the rectangles then go through the threaded GEMM.
#pragma once

#include "blas/calls.hpp"
#include "blas/native.hpp"
#include "blas/thread/32/level3/level3_threads.hpp"
#include "blas/thread/common/machine.hpp"
#include "blas/thread/common/team_omp.hpp"

namespace qrv {

// Whether C is left alone, diagonal included.
template <class Alpha, class Beta>
bool changes_nothing(int n, int k, Alpha alpha, Beta beta) {
    return n <= 0 || ((alpha == scalar<Alpha>(0) || k <= 0) && beta == scalar<Beta>(1));
}

// A real or complex scalar as an element.
template <class T, class S>
T as_element(S x) {
    if constexpr (isComplex<T> && !isComplex<S>)
        return scalar<T>(x);
    else
        return x;
}

// Rows of op(A) from row i on.
template <class T>
Matrix<const T> rows_from(int i, Op op, Matrix<const T> a) {
    return op == Op::none ? a.block(i, 0) : a.block(0, i);
}

// c(rows, columns) := alpha*X*Y' + beta*c(rows, columns) with these rows of X = op(A) and Y = op(B), by a GEMM. The '
// is that of the kind of matrix: transposes, or conjugates too; operands that are not taken as they are, are taken with
// it.
template <Op mirror, class T, class Gemm>
void multiply(const Gemm& gemm, Op op, Slice rows, Slice columns, int k, T alpha, Matrix<const T> a, Matrix<const T> b,
              T beta, Matrix<T> c) {
    const bool plain = op == Op::none;
    gemm(plain ? Op::none : mirror, plain ? mirror : Op::none, rows.count, columns.count, k, alpha,
         rows_from(rows.first, op, a), rows_from(columns.first, op, b), beta, c.block(rows.first, columns.first));
}

// Calls block(rows) for blocks on the diagonal and rectangle(gemm, rows, columns) for what is beside them; `work` is
// that of the whole, which on one thread is one block.
template <class T, class Block, class Rectangle>
void update_on_team(Uplo uplo, int n, double work, const Block& block, const Rectangle& rectangle) {
    const Level3Team team = update_team(n, work, ThisMachine{});
    if (team.threads <= 1)
        return block(Slice{0, n});
    int size = 1;
    on_team(team.threads, [&](int threads, int thread) {
        if (thread == 0)
            size = threads;
        if (team.byWork) {
            const Trapezoid part = trapezoid(uplo, n, threads, thread);
            if (part.columns.count > 0)
                block(part.columns);
            if (part.columns.count > 0 && part.rectangle.count > 0)
                rectangle(kernel::gemm<T>, part.rectangle, part.columns);
        } else {
            block(triangle_block_row(n, threads, thread).rows);
        }
    });
    for (int i = 0; !team.byWork && i < size - 1; ++i) {
        const TriangleBlockRow row = triangle_block_row(n, size, i);
        if (uplo == Uplo::upper)
            rectangle(blas::gemm<T>, row.rows, row.rest);
        else
            rectangle(blas::gemm<T>, row.rest, row.rows);
    }
}

} // namespace qrv
