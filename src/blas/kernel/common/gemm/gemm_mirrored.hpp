// Real C := alpha*op(A)*op(B) + beta*C of few rows, which would leave most of a vector empty, where B transposed has
// vectors of columns: C' = op(B)'*op(A)' is summed by the tiles of gemm_direct_tiles.hpp, and the sums of a tile come
// home to C by columns, four or eight rows of each. B as it lies is transposed first.
#pragma once

#include <cstddef>
#include <cstdint>

#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "blas/kernel/common/gemm/gemm_direct_tiles.hpp"
#include "blas/kernel/common/gemm/gemm_gather.hpp"
#include "blas/kernel/common/gemm/gemm_shallow.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Rows of C in a tile of so many vectors of columns, at most.
template <class Vector>
constexpr int mirrored_rows(int vectors) {
    return vectors == 1 ? smaller(16, columns_of_tile<Vector, float>(1)) : DirectTiles<Vector, float>::columns;
}
// How many of the rows that are left to take: whole quads, but for the last ones, where the steps are few.
constexpr int mirrored_share(int left, int most, bool fewSteps) {
    return !fewSteps ? even_share(left, most) : left <= most ? left : left - most < 4 ? 4 : most / 4 * 4;
}

// Rows first to first + 3 of x, those that there are, by columns: quad q of column[s] is column 4 q + s.
template <class Vector, int rows, int first>
QRV_INLINE void transpose_four(const Vector (&x)[rows], Vector (&column)[4]) {
    QRV_UNROLL
    for (int i = 0; i < 4; ++i)
        column[i] = first + i < rows ? x[smaller(first + i, rows - 1)] : Vector::zero();
    transpose_four(column);
}

// c := x' + beta*c for the rows of C in x, from `first` on, and `columns` columns: a vector of them if they are whole.
template <class Vector, bool whole, int first = 0, int rows>
QRV_INLINE void bring_home(const Vector (&x)[rows], int columns, float beta, float* c, std::ptrdiff_t ldc) {
    constexpr int here = smaller(8, rows - first), last = here % 4 == 0 ? 4 : here % 4;
    const __m256 factor = _mm256_set1_ps(beta);
    Vector upper[4], lower[4], pair[4][2];
    transpose_four<Vector, rows, first>(x, upper);
    if constexpr (here > 4)
        transpose_four<Vector, rows, first + 4>(x, lower);
    if constexpr (here == 8)
        QRV_UNROLL
    for (int s = 0; s < 4; ++s)
        pair_quads(upper[s], lower[s], pair[s]);
    const auto bring_quad = [=](auto count, __m128 sum, float* to) __attribute__((always_inline)) {
        const auto old = [=] { return load_first<count()>(to).v; };
        store_first<count()>(to, {beta == 0 ? sum : _mm_fmadd_ps(_mm256_castps256_ps128(factor), old(), sum)});
    };
    float* column = c + first;
    QRV_UNROLL
    for (int q = 0; q < Vector::quads; ++q) {
        QRV_UNROLL
        for (int s = 0; s < 4; ++s) {
            if (!whole && 4 * q + s >= columns)
                break;
            float* to = column + s * ldc;
            if constexpr (here == 8) {
                const __m256 sum = octet(pair[s], q);
                _mm256_storeu_ps(to, beta == 0 ? sum : _mm256_fmadd_ps(factor, _mm256_loadu_ps(to), sum));
            } else if constexpr (here > 4) {
                bring_quad(Lanes<4>(), quad_of(upper[s], q), to);
                bring_quad(Lanes<last>(), quad_of(lower[s], q), to + 4);
            } else {
                bring_quad(Lanes<last>(), quad_of(upper[s], q), to);
            }
        }
        column += 4 * ldc;
        asm("" : "+r"(column)); // one pointer: the compiler would keep one for each column
    }
    if constexpr (first + 8 < rows)
        bring_home<Vector, whole, first + 8>(x, columns, beta, c, ldc);
}

template <class Vector, int vectors, int rows, bool apart>
void mirrored_tile(const DirectProduct<float>& p, const float* a, const float* b, float* c, int lastColumns) {
    const typename Vector::Mask mask = Vector::Mask::first(lastColumns);
    DirectSums<Vector, Vector, vectors, rows, 1> sums;
    sum_steps<Vector, Vector, float, vectors, rows, apart>(p, a, b, mask, sums);
    const Vector alpha = Vector::splat(p.alpha);
    const std::ptrdiff_t ldc = p.ldc;
    const float beta = p.beta;
    QRV_UNROLL
    for (int v = 0; v < vectors; ++v, c += Vector::lanes * ldc) {
        Vector x[rows];
        QRV_UNROLL
        for (int i = 0; i < rows; ++i)
            x[i] = alpha * (v == vectors - 1 ? sums.last[i][0] : sums.above[i][v][0]);
        if (v < vectors - 1 || lastColumns == Vector::lanes)
            bring_home<Vector, true>(x, Vector::lanes, beta, c, ldc);
        else
            bring_home<Vector, false>(x, lastColumns, beta, c, ldc);
    }
}

template <class Vector>
struct MirroredTileTable {
    DirectTile<float>* tile[2][DirectTiles<Vector, float>::vectors][mirrored_rows<Vector>(1)];

    template <int vectors = 1, int rows = 1>
    constexpr void fill() {
        tile[0][vectors - 1][rows - 1] = mirrored_tile<Vector, vectors, rows, false>;
        tile[1][vectors - 1][rows - 1] = mirrored_tile<Vector, vectors, rows, sums_are_few<float>(vectors, rows)>;
        if constexpr (rows < mirrored_rows<Vector>(vectors))
            fill<vectors, rows + 1>();
        else if constexpr (vectors < DirectTiles<Vector, float>::vectors)
            fill<vectors + 1, 1>();
    }
    constexpr MirroredTileTable() : tile{} { fill(); }
};
template <class Vector>
constexpr MirroredTileTable<Vector> mirroredTiles;

// Rows that would begin another vector, so few that they may be computed apart. Steps that repay it, for many columns
// and for any number.
constexpr int mostRowsApart = 2;
constexpr int leastStepsApart = 9, manyStepsApart = 32, columnsApart = 64;
template <class Vector>
constexpr int rows_apart(int m, int n, int k) {
    const int rest = m % Vector::lanes;
    return m > Vector::lanes && rest <= mostRowsApart && k >= (n >= columnsApart ? leastStepsApart : manyStepsApart)
               ? rest
               : 0;
}

// It pays where fewer vectors are added to, those that are not full counted as such. A C of more than half a vector of
// rows is worth less: as if it had a row more, and some steps more for the way home. To bring A transposed together
// counts as columns, B as it lies as rows, for which short vectors want some steps, and rows apart for more than their
// vectors. Of A as it lies many rows fill vectors. From so many steps on it may pay where all of them would wait in
// registers.
constexpr int mostMirroredRows = 40, mirroredSteps = 6, leastRepeated = 12;
template <class Vector>
constexpr int gatheredSteps = Vector::lanes == 16 ? 2 : 8; // of B as it lies
template <class Vector>
constexpr bool pays_mirrored(bool transposedA, bool transposedB, int m, int n, int k) {
    constexpr int lanes = Vector::lanes, quarter = lanes / 4;
    if ((m > mostMirroredRows && !transposedA) || k < (transposedB ? 1 : gatheredSteps<Vector>) ||
        ((lanes < 16 || k < mirroredSteps) && pays_shallow<Vector>(m, n, k)))
        return false;
    const bool low = m <= lanes / 2;
    const int rest = rows_apart<Vector>(m, n, k), rowVectors = (m - rest + lanes - 1) / lanes;
    const std::int64_t columnVectors = (n + lanes - 1) / lanes, columns = std::int64_t{n} + (transposedA ? quarter : 0);
    const std::int64_t vectors = columnVectors * ((low ? m : m + 1) + (transposedB ? 0 : 2 * quarter));
    return vectors * (k + (low ? 0 : quarter)) <= (rowVectors * columns + rest * columnVectors * quarter) * k;
}
template <class Vector, bool gathers>
[[gnu::noinline]] void direct_mirrored(GemmCall<float> call) {
    DirectProduct<float> p =
        direct_product(GemmCall<float>{Op::none, call.opA == Op::none ? Op::transpose : Op::none, call.n, call.m,
                                       call.k, call.alpha, call.b, call.a, call.beta, call.c});
    constexpr int depth = gathers ? directBuffer / (DirectTiles<Vector, float>::vectors * Vector::lanes) : directDepth;
    alignas(gathers ? 64 : 4) float buffer[gathers ? directBuffer : 1];
    const std::ptrdiff_t ldb = call.b.ld;
    const int steps = call.k <= depth ? call.k : even_block(call.k, depth, directUnit);
    for (int l = 0; l < call.k; l += p.k, p.beta = 1) {
        p.k = smaller(call.k - l, steps);
        for (int j = 0; j < call.n;) {
            const RowShare<Vector, float> share(call.n - j);
            const float* columns = call.b.data + (gathers ? l + j * ldb : j + l * ldb);
            if constexpr (gathers) {
                transpose_tile<Vector, float>(share.rows, share.vectors, p.k, columns, ldb, buffer);
                columns = buffer;
                p.aStep = share.vectors * Vector::lanes;
            }
            const int most = mirrored_rows<Vector>(share.vectors);
            const bool fewSteps = p.k < leastApart;
            for (int i = 0, rows; i < call.m; i += rows) {
                rows = mirrored_share(call.m - i, most, fewSteps);
                mirroredTiles<Vector>.tile[fewSteps ? 0 : 1][share.vectors - 1][rows - 1](
                    p, columns, call.a.data + i * p.bColumn + l * p.bStep, &call.c(i, j), share.last_rows());
            }
            j += share.rows;
        }
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
