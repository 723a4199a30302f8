// Rank-k and rank-2k updates on a team, told once for all. Only the diagonal blocks of the triangle are special, and
// they are few: one kernel call for each thread. The rest is rectangles, which then go through the threaded GEMM.
#pragma once

#include <omp.h>

#include "blas/blas.hpp"
#include "blas/calls.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/thread/32/level3/triangle_blocks.hpp"
#include "qrv/service.h"
#include "service/options.hpp"

namespace qrv {

// Calls block(rows) for each block on the diagonal in parallel, then rectangle(rows, columns) for what is beside them.
// whole() takes the place of all that for a team of one.
template <class Whole, class Block, class Rectangle>
void update_on_team(int threads, char uplo, int n, const Whole& whole, const Block& block, const Rectangle& rectangle) {
    int size = 1;
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads(), thread = omp_get_thread_num();
        if (thread == 0)
            size = team;
        if (team == 1)
            whole();
        else
            block(triangle_block_row(n, team, thread).rows);
    }
    for (int i = 0; i < size - 1; ++i) {
        const TriangleBlockRow row = triangle_block_row(n, size, i);
        if (same_letter(uplo, 'U'))
            rectangle(row.rows, row.rest);
        else
            rectangle(row.rest, row.rows);
    }
}

// The operands of an update, as its kernel takes them.
template <class T>
struct UpdateOperands {
    bool transposed; // the updates multiply A' with A
    Op mirror;       // the ' of the kind of matrix: transposes, or conjugates too
    int k;

    const T* rows_from(int i, const T* x, int ld) const {
        const Matrix<const T> all{x, ld};
        return (transposed ? all.block(0, i) : all.block(i, 0)).data;
    }
    // c(rows, columns) := beta*c(rows, columns) + alpha*X*Y' with these rows of X and of Y
    void multiply(Slice rows, Slice columns, T alpha, const T* x, int ldx, const T* y, int ldy, T beta,
                  Matrix<T> c) const {
        blas::gemm(transposed ? mirror : Op::none, transposed ? Op::none : mirror, rows.count, columns.count, k, alpha,
                   {rows_from(rows.first, x, ldx), ldx}, {rows_from(columns.first, y, ldy), ldy}, beta,
                   c.block(rows.first, columns.first));
    }
};

// Whether C is left alone, diagonal included.
template <class Alpha, class Beta>
bool changes_nothing(int n, int k, Alpha alpha, Beta beta) {
    return n <= 0 || ((alpha == scalar<Alpha>(0) || k <= 0) && beta == scalar<Beta>(1));
}
inline int update_threads(int n) {
    return n <= serialUpdateUpTo ? 1 : qrv_serv_domain_get_max_threads(QRV_DOMAIN_BLAS);
}

// A real or complex scalar as an element.
template <class T, class S>
T as_element(S x) {
    if constexpr (isComplex<T> && !isComplex<S>)
        return scalar<T>(x);
    else
        return x;
}

// `kernel` is the serial routine, S the type of its scalars: real for a Hermitian matrix.
template <Op mirror, auto& kernel, class T, class S>
void syrk_on_team(QRV_SYRK_PARAMETERS(T, S)) {
    if (changes_nothing(*n, *k, *alpha, *beta))
        return;
    const int threads = update_threads(*n);
    const auto serially = [&] { kernel(QRV_SYRK_ARGUMENTS); };
    if (threads <= 1)
        return serially();
    const UpdateOperands<T> operands{transposes(*trans), mirror, *k};
    const Matrix<T> matrix{c, *ldc};
    update_on_team(
        threads, *uplo, *n, serially,
        [&](Slice rows) {
            kernel(uplo, trans, &rows.count, k, alpha, operands.rows_from(rows.first, a, *lda), lda, beta,
                   matrix.block(rows.first, rows.first).data, ldc);
        },
        [&](Slice rows, Slice columns) {
            operands.multiply(rows, columns, as_element<T>(*alpha), a, *lda, a, *lda, as_element<T>(*beta), matrix);
        });
}

template <Op mirror, auto& kernel, class T, class S>
void syr2k_on_team(QRV_SYR2K_PARAMETERS(T, S)) {
    if (changes_nothing(*n, *k, *alpha, *beta))
        return;
    const int threads = update_threads(*n);
    const auto serially = [&] { kernel(QRV_SYR2K_ARGUMENTS); };
    if (threads <= 1)
        return serially();
    const UpdateOperands<T> operands{transposes(*trans), mirror, *k};
    const Matrix<T> matrix{c, *ldc};
    update_on_team(
        threads, *uplo, *n, serially,
        [&](Slice rows) {
            kernel(uplo, trans, &rows.count, k, alpha, operands.rows_from(rows.first, a, *lda), lda,
                   operands.rows_from(rows.first, b, *ldb), ldb, beta, matrix.block(rows.first, rows.first).data, ldc);
        },
        [&](Slice rows, Slice columns) {
            operands.multiply(rows, columns, *alpha, a, *lda, b, *ldb, as_element<T>(*beta), matrix);
            operands.multiply(rows, columns, conj_if<mirror == Op::adjoint>(*alpha), b, *ldb, a, *lda, scalar<T>(1),
                              matrix);
        });
}

} // namespace qrv
