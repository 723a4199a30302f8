// C := alpha*op(A)*op(B) + beta*C over wide vectors, without packing and without work memory: for problems too small to
// repay it.
//
//   tile       up to DirectTiles::vectors vectors of rows by DirectTiles::columns columns, rows and columns dealt out
//              evenly; each step takes A by vectors of rows and B singly
//   op(A) = A  straight from A; of the last vector only the rows that there are
//   op(A) = A^T, and columns of A that would displace each other in the cache: the steps of a tile are brought
//              together, in blocks, in a buffer on the stack
//   complex    rows as they lie, real and imaginary parts side by side, times the real and times the imaginary part of
//              an element of B, summed apart; the end combines the sums and settles all conjugations by signs
//   few steps  of real elements, see gemm_shallow.hpp
//   few rows, or few columns, and many steps  of real elements, see gemm_dots.hpp
//   few rows  of real elements: tiles of C' by vectors of columns of C, transposed on the way to it
//   alignment  none assumed
//   reads      nothing past the operands; C only if beta is not 0
//   m, n, k    positive; alpha = 0 and k = 0 are the caller's
//
// Each element of C sums its products in ascending k, in one chain (two if complex, and two
// of even and of odd steps in the smallest tiles) a block of steps: alpha*sum +
// beta*C for the first block, alpha*sum + C for those after it. Lanes past the last row hold what never reaches C.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "blas/kernel/common/gemm/gemm_dots.hpp"
#include "blas/kernel/common/gemm/gemm_gather.hpp"
#include "blas/kernel/common/gemm/gemm_shallow.hpp"
#include "blas/kernel/common/gemm/gemm_wide_complex.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/gemm_kernels.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// The largest register tile, in vectors of rows and in columns, and the columns of one that is a single vector high.
// Its sums fill the registers, but for a step of A and an element of B. Half: what the sums of the last vector are if
// at most half of it is rows; the vector itself if that saves nothing.
template <class Vector, class T>
struct DirectTiles;

// Steps per pass over C: the rows of a tile, so deep, stay in the innermost cache for all of its columns.
constexpr int directDepth = 256;
constexpr int directShallow = 64;
// Leading dimensions of A, in floats and in multiples of this, that bring its columns into the same few places of the
// innermost cache; and from how many columns of C on a copy of the tile repays itself.
template <class T>
constexpr int directConflict = 1024 / floatsIn<T>;
constexpr int directRepays = 24;
// The transposed rows of a tile, in floats.
constexpr int directBuffer = 3072;
// Steps that are brought together at once, at most: depths are a multiple.
constexpr int directUnit = 8;

// What all tiles of a call have in common, strides in floats. One record, filled once: its fields are read singly, as
// they were written.
template <class T>
struct DirectProduct {
    std::ptrdiff_t aStep; // from one step of A to the next; rows are contiguous
    std::ptrdiff_t bStep, bColumn;
    std::ptrdiff_t ldc;
    T alpha, beta;
    int k;
    bool conjugatedA, conjugatedB;
};

// The record of a call, its operands as they lie; k, the steps of a pass, is not set.
template <class T>
DirectProduct<T> direct_product(const GemmCall<T>& call) {
    constexpr std::ptrdiff_t element = floatsIn<T>;
    const bool transposedB = transposes(call.opB);
    const std::ptrdiff_t stepA = call.a.ld * element, stepB = call.b.ld * element;
    DirectProduct<T> p;
    p.aStep = stepA;
    p.bStep = transposedB ? stepB : element;
    p.bColumn = transposedB ? element : stepB;
    p.ldc = call.c.ld * element;
    p.alpha = call.alpha;
    p.beta = call.beta;
    if constexpr (isComplex<T>) {
        p.conjugatedA = conjugates(call.opA);
        p.conjugatedB = conjugates(call.opB);
    }
    return p;
}

constexpr float sign_bit(bool negative) {
    return negative ? -0.0F : 0.0F;
}

// A vector of rows of the product of complex elements, from the sums of A times the real and of A times the imaginary
// parts of B; real ones are what they are.
template <class Vector, class T>
QRV_INLINE Vector combine(const DirectProduct<T>& p, const Vector (&sums)[floatsIn<T>]) {
    if constexpr (isComplex<T>) {
        const Vector signsRe = Vector::alternate(0, sign_bit(p.conjugatedA));
        const Vector signsIm = Vector::alternate(sign_bit(p.conjugatedA == p.conjugatedB), sign_bit(p.conjugatedB));
        return change_signs(sums[0], signsRe) + change_signs(swap_parts(sums[1]), signsIm);
    } else {
        return sums[0];
    }
}

template <class Last, class Vector>
QRV_INLINE Last as_last(Vector x) {
    if constexpr (std::is_same_v<Last, Vector>)
        return x;
    else
        return lower_half(x);
}
template <class Vector, class Last>
QRV_INLINE Vector as_whole(Last x) {
    if constexpr (std::is_same_v<Last, Vector>)
        return x;
    else
        return whole(x);
}

// The sums of a tile: for each column and part of an element of B those of its vectors but the last one, and of that.
template <class Vector, class Last, int vectors, int columns, int parts>
struct DirectSums {
    Vector above[columns][vectors][parts];
    Last last[columns][parts];

    QRV_INLINE void clear() {
        QRV_UNROLL
        for (int j = 0; j < columns; ++j)
            QRV_UNROLL
        for (int part = 0; part < parts; ++part) {
            QRV_UNROLL
            for (int v = 0; v < vectors - 1; ++v)
                above[j][v][part] = Vector::zero();
            last[j][part] = Last::zero();
        }
    }
    QRV_INLINE void add(const DirectSums& other) {
        QRV_UNROLL
        for (int j = 0; j < columns; ++j)
            QRV_UNROLL
        for (int part = 0; part < parts; ++part) {
            QRV_UNROLL
            for (int v = 0; v < vectors - 1; ++v)
                above[j][v][part] = above[j][v][part] + other.above[j][v][part];
            last[j][part] = last[j][part] + other.last[j][part];
        }
    }
};

// The sums of a tile. Even and odd steps are summed apart if asked for.
template <class Vector, class Last, class T, int vectors, int columns, bool apart>
QRV_INLINE void sum_steps(const DirectProduct<T>& p, const float* a, const float* b, typename Vector::Mask mask,
                          DirectSums<Vector, Last, vectors, columns, floatsIn<T>>& sums) {
    constexpr int group = 4; // columns of B that share a pointer
    const std::ptrdiff_t aStep = p.aStep, bStep = p.bStep, bColumn = p.bColumn, bColumns3 = 3 * bColumn;
    constexpr int parts = floatsIn<T>; // of an element of B
    sums.clear();
    const float* start[(columns + group - 1) / group];
    QRV_UNROLL
    for (int g = 0; g * group < columns; ++g)
        start[g] = b + g * group * bColumn;
    const auto step = [&](auto& to) __attribute__((always_inline)) {
        [[maybe_unused]] Vector rows[vectors];
        QRV_UNROLL
        for (int v = 0; v < vectors - 1; ++v)
            rows[v] = once_for<columns>(Vector::load(a + v * Vector::lanes));
        const Last lastRow = as_last<Last>(load_kept(a + (vectors - 1) * Vector::lanes, mask));
        QRV_UNROLL
        for (int j = 0; j < columns; ++j)
            QRV_UNROLL
        for (int part = 0; part < parts; ++part) {
            const float& element = start[j / group][(j % group == 3 ? bColumns3 : j % group * bColumn) + part];
            if constexpr (vectors > 1) {
                const Vector x = Vector::splat(element);
                QRV_UNROLL
                for (int v = 0; v < vectors - 1; ++v)
                    to.above[j][v][part] = multiply_add(rows[v], x, to.above[j][v][part]);
                to.last[j][part] = multiply_add(lastRow, as_last<Last>(x), to.last[j][part]);
            } else {
                to.last[j][part] = multiply_add(lastRow, Last::splat(element), to.last[j][part]);
            }
        }
        a += aStep;
        QRV_UNROLL
        for (int g = 0; g * group < columns; ++g)
            start[g] += bStep;
    };
    int left = p.k;
    if constexpr (apart) {
        DirectSums<Vector, Last, vectors, columns, parts> odd;
        odd.clear();
        for (; left >= 2; left -= 2) {
            step(sums);
            step(odd);
        }
        sums.add(odd);
    }
    for (; left > 0; --left)
        step(sums);
}

// One tile: all rows of its vectors but the last one, of which there are `lastRows`, counted in floats as all rows
// here, summed in `Last`.
template <class Vector, class Last, class T, int vectors, int columns, bool apart>
void direct_tile(const DirectProduct<T>& p, const float* a, const float* b, float* c, int lastRows) {
    constexpr int parts = floatsIn<T>;
    const typename Vector::Mask mask = Vector::Mask::first(lastRows);
    DirectSums<Vector, Last, vectors, columns, parts> sums;
    sum_steps<Vector, Last, T, vectors, columns, apart>(p, a, b, mask, sums);
    const Factor<Vector, T> alpha(p.alpha), beta(p.beta);
    // A processor takes a load for dependent on a masked store that it overlaps in lanes which are not stored. So all
    // of C is read before any of it is written, and the last column is written without a mask: the next tile may begin
    // within a vector of it.
    Vector totals[columns][vectors];
    QRV_UNROLL
    for (int j = 0; j < columns; ++j)
        QRV_UNROLL
    for (int part = 0; part < parts; ++part)
        sums.above[j][vectors - 1][part] = as_whole<Vector>(sums.last[j][part]);
    QRV_UNROLL
    for (int j = 0; j < columns; ++j)
        QRV_UNROLL
    for (int v = 0; v < vectors; ++v)
        totals[j][v] = combine(p, sums.above[j][v]);
    if (scales_c(p.alpha))
        QRV_UNROLL
    for (int j = 0; j < columns; ++j)
        QRV_UNROLL
    for (int v = 0; v < vectors; ++v)
        totals[j][v] = alpha.times(totals[j][v]);
    if (p.beta != scalar<T>(0)) {
        const bool scalesC = scales_c(p.beta);
        const float* in = c;
        QRV_UNROLL
        for (int j = 0; j < columns; ++j, in += p.ldc)
            QRV_UNROLL
        for (int v = 0; v < vectors; ++v) {
            const float* at = in + v * Vector::lanes;
            const Vector old = v == vectors - 1 ? load_kept(at, mask) : Vector::load(at);
            totals[j][v] = scalesC ? beta.times_plus(old, totals[j][v]) : old + totals[j][v];
        }
    }
    QRV_UNROLL
    for (int j = 0; j < columns; ++j, c += p.ldc) {
        QRV_UNROLL
        for (int v = 0; v < vectors - 1; ++v)
            totals[j][v].store(c + v * Vector::lanes);
        float* last = c + (vectors - 1) * Vector::lanes;
        if (!Vector::masksStores && lastRows == Vector::lanes)
            totals[j][vectors - 1].store(last);
        else if (!Vector::masksStores || (j == columns - 1 && lastRows < Vector::lanes))
            store_in_pieces(last, totals[j][vectors - 1], lastRows);
        else
            store_kept(last, totals[j][vectors - 1], mask);
    }
}

template <class T>
using DirectTile = void(const DirectProduct<T>& p, const float* a, const float* b, float* c, int lastRows);

// The tiles of all sizes, one vector and one column first.
template <class Vector, class T>
constexpr int columns_of_tile(int vectors) {
    return vectors == 1 ? DirectTiles<Vector, T>::columnsOfOne : DirectTiles<Vector, T>::columns;
}

// With so few sums each waits for the one before, and from so many steps on two chains repay themselves.
template <class T>
constexpr bool sums_are_few(int vectors, int columns) {
    return vectors * columns * floatsIn<T> <= 4;
}
constexpr int leastApart = 32;

template <class Vector, class Last, class T>
struct DirectTileTable {
    // For few steps, and for many.
    DirectTile<T>* tile[2][DirectTiles<Vector, T>::vectors][DirectTiles<Vector, T>::columnsOfOne];

    template <int vectors = 1, int columns = 1>
    constexpr void fill() {
        tile[0][vectors - 1][columns - 1] = direct_tile<Vector, Last, T, vectors, columns, false>;
        tile[1][vectors - 1][columns - 1] =
            direct_tile<Vector, Last, T, vectors, columns, sums_are_few<T>(vectors, columns)>;
        if constexpr (columns < columns_of_tile<Vector, T>(vectors))
            fill<vectors, columns + 1>();
        else if constexpr (vectors < DirectTiles<Vector, T>::vectors)
            fill<vectors + 1, 1>();
    }
    constexpr DirectTileTable() : tile{} { fill(); }
};
template <class Vector, class Last, class T>
constexpr DirectTileTable<Vector, Last, T> directTiles;

template <class Vector, class T>
QRV_INLINE DirectTile<T>* direct_tile_of(int vectors, int lastRows, int columns, int steps) {
    const int apart = steps >= leastApart ? 1 : 0;
    using Half = typename DirectTiles<Vector, T>::Half;
    if constexpr (!std::is_same_v<Half, Vector>)
        if (lastRows <= Vector::lanes / 2)
            return directTiles<Vector, Half, T>.tile[apart][vectors - 1][columns - 1];
    return directTiles<Vector, Vector, T>.tile[apart][vectors - 1][columns - 1];
}

// The rows that the next tiles take.
template <class Vector, class T>
struct RowShare {
    int vectors, rows;
    explicit RowShare(int left)
        : vectors(even_share((left + Vector::lanes - 1) / Vector::lanes, DirectTiles<Vector, T>::vectors)),
          rows(smaller(left, vectors * Vector::lanes)) {}
    int last_rows() const { return rows - (vectors - 1) * Vector::lanes; }
};

// All columns of the rows of one tile.
template <class Vector, class T>
QRV_INLINE void direct_rows(RowShare<Vector, T> share, int n, const DirectProduct<T>& p, const float* a, const float* b,
                            float* c) {
    for (int columns; n > 0; n -= columns) {
        columns = even_share(n, columns_of_tile<Vector, T>(share.vectors));
        direct_tile_of<Vector, T>(share.vectors, share.last_rows(), columns, p.k)(p, a, b, c, share.last_rows());
        b += columns * p.bColumn;
        c += columns * p.ldc;
    }
}

template <class Vector, class T>
QRV_INLINE void direct_straight(int m, int n, DirectProduct<T>& p, int k, const float* a, const float* b, float* c) {
    const int steps = k <= directDepth ? k : even_block(k, directDepth, directUnit); // without a division
    for (int l = 0; l < k; l += p.k, p.beta = scalar<T>(1)) {
        p.k = smaller(k - l, steps);
        // Down the columns of C if the steps are few, as it is then C that the time goes into.
        const bool down = p.k <= directShallow && m > Vector::lanes;
        for (int j = 0, columns; j < n; j += columns) {
            columns = down ? even_share(n - j, DirectTiles<Vector, T>::columns) : n;
            for (int i = 0; i < m;) {
                const RowShare<Vector, T> share(m - i);
                direct_rows<Vector>(share, columns, p, a + i + l * p.aStep, b + l * p.bStep + j * p.bColumn,
                                    c + i + j * p.ldc);
                i += share.rows;
            }
        }
    }
}

template <class Vector, class T>
[[gnu::noinline]] void direct_gathered(bool transposed, int m, int n, DirectProduct<T>& p, int k, const float* a,
                                       std::ptrdiff_t lda, const float* b, float* c) {
    alignas(64) float buffer[directBuffer];
    const T beta = p.beta;
    for (int i = 0; i < m;) {
        const RowShare<Vector, T> share(m - i);
        const int depth = directBuffer / (share.vectors * Vector::lanes) / directUnit * directUnit;
        p.aStep = share.vectors * Vector::lanes;
        p.beta = beta;
        for (int l = 0; l < k; l += p.k) {
            p.k = smaller(k - l, depth);
            if (transposed)
                transpose_tile<Vector, T>(share.rows, share.vectors, p.k, a + l * floatsIn<T> + i / floatsIn<T> * lda,
                                          lda, buffer);
            else
                copy_tile<Vector>(share.rows, share.vectors, p.k, a + i + l * lda, lda, buffer);
            direct_rows<Vector>(share, n, p, buffer, b + l * p.bStep, c + i);
            p.beta = scalar<T>(1);
        }
        i += share.rows;
    }
}

template <class Vector, class T>
QRV_INLINE void direct_tiles(const GemmCall<T>& call) {
    constexpr std::ptrdiff_t element = floatsIn<T>;
    const bool transposedA = transposes(call.opA);
    const std::ptrdiff_t stepA = call.a.ld * element;
    DirectProduct<T> p = direct_product(call);
    const auto *aFloats = reinterpret_cast<const float*>(call.a.data),
               *bFloats = reinterpret_cast<const float*>(call.b.data);
    auto* cFloats = reinterpret_cast<float*>(call.c.data);
    const int rows = call.m * floatsIn<T>;
    if (transposedA || (stepA % directConflict<T> == 0 && call.n >= directRepays))
        direct_gathered<Vector>(transposedA, rows, call.n, p, call.k, aFloats, stepA, bFloats, cFloats);
    else
        direct_straight<Vector>(rows, call.n, p, call.k, aFloats, bFloats, cFloats);
}

// Few rows would leave most of a vector empty, where B transposed has vectors of columns: C' = op(B)'*op(A)' is summed,
// and the sums of a tile come home to C by columns, four or eight rows of each. B as it lies is transposed first.

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
    const auto row = [&](int i) { return first + i < rows ? x[smaller(first + i, rows - 1)] : Vector::zero(); };
    const Vector low01 = low_pairs(row(0), row(1)), high01 = high_pairs(row(0), row(1));
    const Vector low23 = low_pairs(row(2), row(3)), high23 = high_pairs(row(2), row(3));
    column[0] = low_halves(low01, low23);
    column[1] = high_halves(low01, low23);
    column[2] = low_halves(high01, high23);
    column[3] = high_halves(high01, high23);
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
// counts as columns, B as it lies as rows, for which there have to be some steps, and rows apart for more than their
// vectors. Of A as it lies many rows fill vectors. From so many steps on it may pay where all of them would wait in
// registers.
constexpr int mostMirroredRows = 40, mirroredSteps = 6, leastRepeated = 12;
template <class Vector>
constexpr bool pays_mirrored(bool transposedA, bool transposedB, int m, int n, int k) {
    constexpr int lanes = Vector::lanes, quarter = lanes / 4;
    if ((m > mostMirroredRows && !transposedA) || k < (transposedB ? 2 : 128 / lanes) ||
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

// Whether few rows have a way of their own.
template <class Vector>
constexpr bool pays_apart(bool transposedA, bool transposedB, int m, int n, int k) {
    return transposedB ? n >= Vector::lanes && pays_mirrored<Vector>(transposedA, true, m, n, k)
                       : pays_by_dots<Vector>(transposedA, transposedB, m, n, k);
}

// All rows, those that would begin another vector apart.
template <class Vector>
[[gnu::noinline]] void direct_rows_apart(GemmCall<float> call) {
    const bool dots = !transposes(call.opB);
    const int rest = call.m % Vector::lanes;
    GemmCall<float> last = call;
    call.m -= rest;
    last.m = rest;
    last.a.data = call.view_of_a().at(call.m, 0);
    last.c = call.c.block(call.m, 0);
    direct_tiles<Vector>(call);
    dots ? gemm_by_dots<Vector>(last) : direct_mirrored<Vector, false>(last);
}
// A product of few elements is one tile, and to look for it takes longer than to compute it.
constexpr int fewSteps = 32;
template <class Vector, class T>
QRV_INLINE bool is_one_tile(int m, int n, int k) {
    return m * floatsIn<T> <= Vector::lanes && n <= columns_of_tile<Vector, T>(1) && k <= fewSteps;
}
template <class Vector, bool gathered, class T>
QRV_INLINE void direct_one_tile(const GemmCall<T>& call) {
    DirectProduct<T> p = direct_product(call);
    p.k = call.k;
    const int rows = call.m * floatsIn<T>;
    const auto* a = reinterpret_cast<const float*>(call.a.data);
    alignas(gathered ? 64 : 4) float buffer[gathered ? Vector::lanes * fewSteps : 1];
    if constexpr (gathered) {
        transpose_tile<Vector, T>(rows, 1, call.k, a, p.aStep, buffer);
        p.aStep = Vector::lanes;
        a = buffer;
    }
    direct_tile_of<Vector, T>(1, rows, call.n, call.k)(p, a, reinterpret_cast<const float*>(call.b.data),
                                                       reinterpret_cast<float*>(call.c.data), rows);
}

// The whole product; m, n and k are positive.
template <class Vector, class T>
QRV_INLINE void gemm_direct(const GemmCall<T>& call) {
    QRV_ASSERT(call.is_well_formed());
    const bool transposedA = transposes(call.opA), transposedB = transposes(call.opB);
    if constexpr (!isComplex<T>) {
        // Two short vectors are one line of a step of B: where they displace each other, few rows are read with each.
        const bool repeats = Vector::lanes < 16 && call.m > leastRepeated && call.b.ld % directConflict<T> == 0;
        const bool mirrored = !repeats && pays_mirrored<Vector>(transposedA, transposedB, call.m, call.n, call.k);
        if (!mirrored && pays_shallow<Vector>(call.m, call.n, call.k))
            return gemm_shallow<Vector>(call);
        if (pays_by_dots<Vector>(transposedA, transposedB, call.m, call.n, call.k))
            return gemm_by_dots<Vector>(call);
        if (mirrored)
            return transposedB ? direct_mirrored<Vector, false>(call) : direct_mirrored<Vector, true>(call);
        const int rest = rows_apart<Vector>(call.m, call.n, call.k);
        if (rest > 0 && pays_apart<Vector>(transposedA, transposedB, rest, call.n, call.k))
            return direct_rows_apart<Vector>(call);
    }
    direct_tiles<Vector>(call);
}

// The same, straight from an entry. Each way has a frame of its own, and the arguments as they come: what chooses
// between them is a few comparisons.
template <class Vector, bool gathered, class T>
QRV_AS_WRITTEN void direct_by_one_tile(QRV_GEMM_PARAMETERS(T)) {
    direct_one_tile<Vector, gathered>(gemm_call<T>(QRV_GEMM_ARGUMENTS));
}
template <class Vector, class T>
QRV_AS_WRITTEN void direct_by_tiles(QRV_GEMM_PARAMETERS(T)) {
    gemm_direct<Vector>(gemm_call<T>(QRV_GEMM_ARGUMENTS));
}
template <class Vector, class T>
QRV_INLINE void gemm_direct(QRV_GEMM_PARAMETERS(T)) {
    if (!is_one_tile<Vector, T>(*m, *n, *k))
        return direct_by_tiles<Vector, T>(QRV_GEMM_ARGUMENTS);
    transposes(*transa) ? direct_by_one_tile<Vector, true, T>(QRV_GEMM_ARGUMENTS)
                        : direct_by_one_tile<Vector, false, T>(QRV_GEMM_ARGUMENTS);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
