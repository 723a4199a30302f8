// The tiles of unpacked products over wide vectors: C := alpha*op(A)*op(B) + beta*C without work memory.
//
//   tile       up to DirectTiles::vectors vectors of rows by DirectTiles::columns columns, rows and columns dealt out
//              evenly; each step takes A by vectors of rows and B singly
//   op(A) = A  straight from A; of the last vector only the rows that there are
//   op(A) = A^T, and columns of A that would displace each other in the cache: the steps of a tile are brought
//              together, in blocks, in a buffer on the stack
//   complex    rows as they lie, real and imaginary parts side by side, times the real and times the imaginary part of
//              an element of B, summed apart; the end combines the sums and settles all conjugations by signs
//   alignment  none assumed
//   reads      nothing past the operands; C only if beta is not 0
//   m, n, k    positive; alpha = 0 and k = 0 are the caller's
//
// Each element of C sums its products in ascending k, in one chain (two if complex, and two of even and of odd steps in
// the smallest tiles) a block of steps: alpha*sum + beta*C for the first block, alpha*sum + C for those after it. Lanes
// past the last row hold what never reaches C.
#pragma once

#include <cstddef>
#include <type_traits>

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "blas/kernel/common/gemm/gemm_gather.hpp"
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

} // namespace qrv::kernel::QRV_KERNEL_BUILD
