// C := alpha*op(A)*op(B) + beta*C over wide vectors, without packing and without work memory: for problems too small to
// repay it.
//
//   tile       up to DirectTiles::vectors vectors of rows by DirectTiles::columns columns, rows and columns dealt out
//              evenly; each step takes A by vectors of rows and B singly
//   op(A) = A  straight from A; of the last vector only the rows that there are
//   op(A) = A^T  the rows of a tile are brought together, steps in blocks, in a buffer on the stack
//   alignment  none assumed
//   reads      nothing past the operands; C only if beta is not 0
//   alpha, k   not 0: see the caller
//
// Each element of C sums its products in ascending k, in one chain a block of steps: alpha*sum + beta*C for the first
// block, alpha*sum + C for those after it. Lanes past the last row hold what never reaches C.
#pragma once

#include <cstddef>

#include "blas/kernel/common/gemm_blocks.hpp"
#include "blas/kernel/common/gemm_wide.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// The largest register tile. Its sums fill the registers, but for a step of A and an element of B.
template <class Vector>
struct DirectTiles;

// Steps per pass over C: the rows of a tile, so deep, stay in the innermost cache for all of its columns.
constexpr int directDepth = 256;
// The transposed rows of a tile, in floats.
constexpr int directBuffer = 3072;

// What all tiles of a call have in common. One record, filled once: its fields are read singly, as they were written.
struct DirectProduct {
    std::ptrdiff_t aStep; // from one step of A to the next; rows are contiguous
    std::ptrdiff_t bStep, bColumn;
    std::ptrdiff_t ldc;
    float alpha, beta;
    int k;
};

// One tile: all rows of its vectors but the last one, of which there are `lastRows`.
template <class Vector, int vectors, int columns>
void direct_tile(const DirectProduct& p, const float* a, const float* b, float* c, int lastRows) {
    constexpr int group = 4; // columns of B that share a pointer
    const typename Vector::Mask mask(Vector::lanes, lastRows);
    const std::ptrdiff_t aStep = p.aStep, bStep = p.bStep, bColumn = p.bColumn, bColumns3 = 3 * bColumn;
    Vector sums[columns][vectors];
    QRV_UNROLL
    for (int j = 0; j < columns; ++j)
        QRV_UNROLL
    for (int v = 0; v < vectors; ++v)
        sums[j][v] = Vector::zero();
    const float* second = b + (columns > group ? group * bColumn : 0);
    for (int l = p.k; l > 0; --l) {
        Vector rows[vectors];
        QRV_UNROLL
        for (int v = 0; v < vectors - 1; ++v)
            rows[v] = Vector::load(a + v * Vector::lanes);
        rows[vectors - 1] = load_kept(a + (vectors - 1) * Vector::lanes, mask);
        QRV_UNROLL
        for (int j = 0; j < columns; ++j) {
            const float* four = j < group ? b : second;
            const Vector x = Vector::splat(four[j % group == 3 ? bColumns3 : j % group * bColumn]);
            QRV_UNROLL
            for (int v = 0; v < vectors; ++v)
                sums[j][v] = multiply_add(rows[v], x, sums[j][v]);
        }
        a += aStep;
        b += bStep;
        second += bStep;
    }
    const Vector alpha = Vector::splat(p.alpha), beta = Vector::splat(p.beta);
    const bool overwrites = p.beta == 0;
    // All of C is read before any of it is written: a processor takes a masked load next to a masked store for one of
    // the same place.
    QRV_UNROLL
    for (int j = 0; j < columns; ++j)
        QRV_UNROLL
    for (int v = 0; v < vectors; ++v)
        sums[j][v] = alpha * sums[j][v];
    if (!overwrites) {
        const float* in = c;
        QRV_UNROLL
        for (int j = 0; j < columns; ++j, in += p.ldc)
            QRV_UNROLL
        for (int v = 0; v < vectors; ++v) {
            const float* at = in + v * Vector::lanes;
            sums[j][v] = multiply_add(beta, v == vectors - 1 ? load_kept(at, mask) : Vector::load(at), sums[j][v]);
        }
    }
    QRV_UNROLL
    for (int j = 0; j < columns; ++j, c += p.ldc) {
        QRV_UNROLL
        for (int v = 0; v < vectors - 1; ++v)
            sums[j][v].store(c + v * Vector::lanes);
        store_rows(c + (vectors - 1) * Vector::lanes, sums[j][vectors - 1], lastRows);
    }
}

// How many of `left` to take at once, at most `most`: all, or such that the last two shares are even.
constexpr int even_share(int left, int most) {
    return left >= 2 * most ? most : left > most ? (left + 1) / 2 : left;
}

// The tile of a given number of columns, 1 to most.
template <class Vector, int vectors, int columns>
QRV_INLINE void direct_columns(int wanted, const DirectProduct& p, const float* a, const float* b, float* c,
                               int lastRows) {
    if constexpr (columns > 1)
        if (wanted < columns)
            return direct_columns<Vector, vectors, columns - 1>(wanted, p, a, b, c, lastRows);
    direct_tile<Vector, vectors, columns>(p, a, b, c, lastRows);
}

// All columns of the rows of one tile.
template <class Vector, int vectors>
void direct_rows(int wanted, int n, const DirectProduct& p, const float* a, const float* b, float* c, int lastRows) {
    if constexpr (vectors > 1)
        if (wanted < vectors)
            return direct_rows<Vector, vectors - 1>(wanted, n, p, a, b, c, lastRows);
    constexpr int most = DirectTiles<Vector>::columns;
    for (int columns; n > 0; n -= columns) {
        columns = even_share(n, most);
        direct_columns<Vector, vectors, most>(columns, p, a, b, c, lastRows);
        b += columns * p.bColumn;
        c += columns * p.ldc;
    }
}

// Steps 0 to k-1 of `rows` rows, each contiguous in memory, ld floats apart: `vectors` vectors of rows a step. Where
// there are no more rows the last one stands.
template <class Vector>
void bring_rows_together(int rows, int vectors, int k, const float* a, std::ptrdiff_t ld, float* out) {
    constexpr int quads = Vector::quads;
    const std::ptrdiff_t outStep = vectors * Vector::lanes;
    for (int i = 0; i < rows; i += Vector::lanes, out += Vector::lanes) {
        const float* row[quads][4];
        QRV_UNROLL
        for (int q = 0; q < quads; ++q)
            QRV_UNROLL
        for (int r = 0; r < 4; ++r)
            row[q][r] = a + smaller(i + 4 * q + r, rows - 1) * ld;
        for (int l = 0; l < k; l += 4) {
            Vector x[quads][4 / quads];
            QRV_UNROLL
            for (int q = 0; q < quads; ++q)
                transpose_rows(row[q], l, k - l, x[q]);
            QRV_UNROLL
            for (int h = 0; h < 4 / quads; ++h) {
                Vector steps[quads];
                QRV_UNROLL
                for (int q = 0; q < quads; ++q)
                    steps[q] = x[q][h];
                transpose_quads(steps);
                QRV_UNROLL
                for (int q = 0; q < quads; ++q)
                    steps[q].store_aligned(out + (l + h * quads + q) * outStep);
            }
        }
    }
}

// The row tiles of a block of steps.
template <class Vector>
void direct_block(int m, int n, const DirectProduct& p, const float* a, const float* b, float* c) {
    constexpr int most = DirectTiles<Vector>::vectors;
    for (int taken; m > 0; m -= taken) {
        const int vectors = even_share((m + Vector::lanes - 1) / Vector::lanes, most);
        taken = smaller(m, vectors * Vector::lanes);
        direct_rows<Vector, most>(vectors, n, p, a, b, c, taken - (vectors - 1) * Vector::lanes);
        a += taken;
        c += taken;
    }
}

template <class Vector>
[[gnu::noinline]] void direct_transposed(int m, int n, DirectProduct& p, const float* a, std::ptrdiff_t lda,
                                         const float* b, float* c) {
    alignas(64) float buffer[directBuffer];
    constexpr int most = DirectTiles<Vector>::vectors;
    const int k = p.k;
    const float beta = p.beta;
    for (int taken; m > 0; m -= taken) {
        const int vectors = even_share((m + Vector::lanes - 1) / Vector::lanes, most);
        const int depth = directBuffer / (vectors * Vector::lanes) / 4 * 4;
        taken = smaller(m, vectors * Vector::lanes);
        p.aStep = vectors * Vector::lanes;
        p.beta = beta;
        for (int l = 0; l < k; l += depth) {
            p.k = smaller(depth, k - l);
            bring_rows_together<Vector>(taken, vectors, p.k, a + l, lda, buffer);
            direct_rows<Vector, most>(vectors, n, p, buffer, b + l * p.bStep, c, taken - (vectors - 1) * Vector::lanes);
            p.beta = 1;
        }
        a += taken * lda;
        c += taken;
    }
}

// The whole product; m, n and k are positive.
template <class Vector>
QRV_INLINE void gemm_direct(QRV_GEMM_PARAMETERS(float)) {
    const std::ptrdiff_t stepA = *lda, stepB = *ldb;
    DirectProduct p;
    p.bStep = transposes(*transb) ? stepB : 1;
    p.bColumn = transposes(*transb) ? 1 : stepB;
    p.ldc = *ldc;
    p.alpha = *alpha;
    p.beta = *beta;
    if (transposes(*transa)) {
        p.k = *k;
        direct_transposed<Vector>(*m, *n, p, a, stepA, b, c);
        return;
    }
    p.aStep = stepA;
    for (int left = *k; left > 0; left -= p.k) {
        p.k = smaller(left, directDepth);
        direct_block<Vector>(*m, *n, p, a, b, c);
        a += p.k * stepA;
        b += p.k * p.bStep;
        p.beta = 1;
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
