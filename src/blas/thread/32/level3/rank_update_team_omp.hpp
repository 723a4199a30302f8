// Rank-k and rank-2k updates on a team, told once for all. Only the diagonal blocks of the triangle are special, and
// they are few: one kernel call for each thread. The rest is rectangles, which then go through the threaded GEMM.
#pragma once

#include <omp.h>

#include "blas/blas.hpp"
#include "blas/calls.hpp"
#include "blas/thread/32/level3/level3_threads.hpp"
#include "blas/thread/common/machine.hpp"

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

// c(rows, columns) := alpha*X*Y' + beta*c(rows, columns) with these rows of X = op(A) and Y = op(B). The ' is that of
// the kind of matrix: transposes, or conjugates too; operands that are not taken as they are, are taken with it.
template <Op mirror, class T>
void multiply(Op op, Slice rows, Slice columns, int k, T alpha, Matrix<const T> a, Matrix<const T> b, T beta,
              Matrix<T> c) {
    const bool plain = op == Op::none;
    blas::gemm(plain ? Op::none : mirror, plain ? mirror : Op::none, rows.count, columns.count, k, alpha,
               rows_from(rows.first, op, a), rows_from(columns.first, op, b), beta, c.block(rows.first, columns.first));
}

// Calls block(rows) for each block on the diagonal in parallel, then rectangle(rows, columns) for what is beside them.
// On one thread the whole is one block.
template <class Block, class Rectangle>
void update_on_team(Uplo uplo, int n, const Block& block, const Rectangle& rectangle) {
    const int threads = update_threads(n, ThisMachine{});
    if (threads <= 1)
        return block(Slice{0, n});
    int size = 1;
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads(), thread = omp_get_thread_num();
        if (thread == 0)
            size = team;
        block(triangle_block_row(n, team, thread).rows);
    }
    for (int i = 0; i < size - 1; ++i) {
        const TriangleBlockRow row = triangle_block_row(n, size, i);
        if (uplo == Uplo::upper)
            rectangle(row.rows, row.rest);
        else
            rectangle(row.rest, row.rows);
    }
}

} // namespace qrv
