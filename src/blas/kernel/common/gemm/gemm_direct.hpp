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
//   few rows and B transposed  of real elements: C' aside, by vectors of columns of C
//   alignment  none assumed
//   reads      nothing past the operands; C only if beta is not 0
//   m, n, k    positive; alpha = 0 and k = 0 are the caller's
//
// Each element of C sums its products in ascending k, in one chain (two if complex, and two
// of even and of odd steps in the smallest tiles) a block of steps: alpha*sum +
// beta*C for the first block, alpha*sum + C for those after it. Lanes past the last row hold what never reaches C.
#pragma once

#include <cstddef>
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
constexpr double directFar = 0x1p15; // floats of such a C
// Leading dimensions of A, in floats and in multiples of this, that bring its columns into the same few places of the
// innermost cache; and from how many columns of C on a copy of the tile repays itself.
template <class T>
constexpr int directConflict = 1024 / floatsIn<T>;
constexpr int directRepays = 24;
// The transposed rows of a tile, or rows of C aside, in floats.
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

// One tile: all rows of its vectors but the last one, of which there are `lastRows`, counted in floats as all rows
// here, summed in `Last`. Even and odd steps are summed apart if asked for.
template <class Vector, class Last, class T, int vectors, int columns, bool apart>
void direct_tile(const DirectProduct<T>& p, const float* a, const float* b, float* c, int lastRows) {
    constexpr int group = 4; // columns of B that share a pointer
    const typename Vector::Mask mask = Vector::Mask::first(lastRows);
    const std::ptrdiff_t aStep = p.aStep, bStep = p.bStep, bColumn = p.bColumn, bColumns3 = 3 * bColumn;
    constexpr int parts = floatsIn<T>; // of an element of B
    DirectSums<Vector, Last, vectors, columns, parts> sums;
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
        // Down the columns of C if the steps are few, as it is then C that the time goes into: few columns where it is
        // not in the innermost cache, eight being more than the processor follows.
        constexpr int tileColumns = DirectTiles<Vector, T>::columns;
        const bool far = tileColumns == 8 && static_cast<double>(m) * n > directFar;
        const int columnsAtOnce = p.k > directShallow || m <= Vector::lanes ? n : far ? tileColumns / 2 : tileColumns;
        for (int j = 0, columns; j < n; j += columns) {
            columns = smaller(columnsAtOnce, n - j);
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

// c := x' + beta*c for up to four rows of C and up to four columns, of which all may be read in a row of x.
template <int rows>
QRV_INLINE void bring_quads_home(int columns, const float* x, std::ptrdiff_t ldx, float beta, float* c,
                                 std::ptrdiff_t ldc) {
    __m128 quad[4];
    QRV_UNROLL
    for (int i = 0; i < 4; ++i)
        quad[i] = i < rows ? _mm_load_ps(x + i * ldx) : _mm_setzero_ps();
    _MM_TRANSPOSE4_PS(quad[0], quad[1], quad[2], quad[3]);
    // By whole loads and stores: the next columns wait for masked ones.
    const __m128 factor = _mm_set1_ps(beta);
    const auto bring = [&](int j) __attribute__((always_inline)) {
        float* to = c + j * ldc;
        store_first<rows>(to, {beta == 0 ? quad[j] : _mm_add_ps(quad[j], _mm_mul_ps(factor, load_first<rows>(to).v))});
    };
    if (columns == 4) {
        QRV_UNROLL
        for (int j = 0; j < 4; ++j)
            bring(j);
    } else {
        for (int j = 0; j < columns; ++j)
            bring(j);
    }
}

// Few rows would leave most of a vector empty, where B transposed has vectors of columns: C' = B*op(A)' is computed,
// some columns of C at a time, and brought home, which takes as long as four steps, or eight of more than two quads.
// Up to so many rows it pays from so many steps, in all and for each row, and so many columns on.
struct MirroredRange {
    int rows, steps, stepsForRow, columns;
};
constexpr int never = 1 << 30;
constexpr MirroredRange mirroredRanges[2][2][5] = {
    // vectors of 8 lanes: A as it lies, A transposed
    {{{6, 0, 4, 8}, {8, never, 0, 0}, {12, 0, 4, 64}}, {{6, 4, 0, 8}, {8, never, 0, 0}, {12, 16, 0, 8}}},
    // vectors of 16 lanes
    {{{4, 2, 0, 16}, {8, 16, 0, 16}, {12, 0, 8, 64}},
     {{4, 2, 0, 16}, {8, 16, 0, 16}, {12, 0, 2, 16}, {16, never, 0, 0}, {24, 0, 2, 16}}},
};
template <class Vector>
constexpr bool pays_mirrored(bool transposedA, int m, int n, int k) {
    for (const MirroredRange& range : mirroredRanges[Vector::lanes / 16][transposedA ? 1 : 0])
        if (m <= range.rows)
            return n >= range.columns && k >= larger(range.steps, range.stepsForRow * m);
    return false;
}
constexpr int mostMirroredColumns = 192; // at once
template <class Vector>
[[gnu::noinline]] void direct_mirrored(GemmCall<float> call) {
    constexpr int tile = DirectTiles<Vector, float>::vectors * Vector::lanes; // columns of C
    alignas(64) float buffer[directBuffer];
    const int most = smaller(mostMirroredColumns, directBuffer / call.m) / tile * tile;
    for (int j = 0, columns; j < call.n; j += columns) {
        columns = smaller(most, call.n - j);
        direct_tiles<Vector>(GemmCall<float>{Op::none,
                                             call.opA == Op::none ? Op::transpose : Op::none,
                                             columns,
                                             call.m,
                                             call.k,
                                             call.alpha,
                                             call.b.block(j, 0),
                                             call.a,
                                             0,
                                             {buffer, most}});
        const auto bring = [&](auto rows, int row) __attribute__((always_inline)) {
            for (int i = 0; i < columns; i += 4)
                bring_quads_home<rows()>(smaller(4, columns - i), buffer + row * most + i, most, call.beta,
                                         &call.c(row, j + i), call.c.ld);
        };
        int row = 0;
        for (; call.m - row >= 4; row += 4)
            bring(Lanes<4>(), row);
        if (call.m - row == 3)
            bring(Lanes<3>(), row);
        else if (call.m - row == 2)
            bring(Lanes<2>(), row);
        else if (call.m - row == 1)
            bring(Lanes<1>(), row);
    }
}

// Whether few rows have a way of their own.
template <class Vector>
constexpr bool pays_apart(bool transposedA, bool transposedB, int m, int n, int k) {
    return transposedB ? pays_mirrored<Vector>(transposedA, m, n, k)
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
    dots ? gemm_by_dots<Vector>(last) : direct_mirrored<Vector>(last);
}
constexpr int mostRowsApart = 2;
// Steps that repay it, for many columns and for any number.
constexpr int leastStepsApart = 9, manyStepsApart = 32, columnsApart = 64;

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
        if (pays_shallow<Vector>(call.m, call.n, call.k))
            return gemm_shallow<Vector>(call);
        if (pays_by_dots<Vector>(transposedA, transposedB, call.m, call.n, call.k))
            return gemm_by_dots<Vector>(call);
        if (transposedB && pays_mirrored<Vector>(transposedA, call.m, call.n, call.k))
            return direct_mirrored<Vector>(call);
        const int rest = call.m % Vector::lanes;
        if (call.m > Vector::lanes && rest > 0 && rest <= mostRowsApart &&
            call.k >= (call.n >= columnsApart ? leastStepsApart : manyStepsApart) &&
            pays_apart<Vector>(transposedA, transposedB, rest, call.n, call.k))
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
