// C := alpha*op(A)*op(B) + beta*C over wide vectors from copies: the tiles of gemm_direct_tiles.hpp, for operands that
// the caches would not keep as they lie.
//
//   for l over k in blocks          as deep as lets a strip of B stay in the innermost cache
//     for i over m in blocks        A, copied into panels as high as a tile: they stay in the outer cache
//       for j over n                B, copied into strips as wide as a tile: several at once where they are stored by
//                                   rows; read as it lies where few panels would use a strip
//         for each strip, each panel: one tile of C
//
//   panel      the steps of a tile's rows one behind the other, whole vectors each; what fills the last vector is never
//              stored to C
//   strip      op(B) = B: columns one behind the other; transposed: steps
//   memory     the panels of a block and some strips, from the pool
//   reads      nothing past the operands; C only if beta is not 0
//
// Each element of C is summed as gemm_direct_tiles.hpp tells. Columns, panels and strips that a walk goes through side
// by side are padded, as they would lie a power of two apart.
//
// Of a square C a triangle alone may be asked for. Tiles beyond its edge are left out, those across it are computed
// aside by as few vectors as have rows in it, and what they have in the triangle is added.
#pragma once

#include <cstddef>
#include <cstdint>

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/gemm_direct_tiles.hpp"
#include "blas/matrix.hpp"
#include "service/work_pool.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int panelsDepth = 384;     // steps of a block, at most
constexpr int panelsBytes = 3 << 18; // of a block, at most: with B and C in a second-level cache of 1 MB
constexpr int panelPad = 16;         // floats: a line
constexpr int panelsAtOnce = 4;      // that a column of A is copied into
constexpr int stripsAtOnce = 8;      // that a row of B is copied into
constexpr int panelsForStrip = 3;    // panels that repay a strip
constexpr int stepsCopiedAhead = 64; // of rows of B: with fewer a walk has enough to do with C

// Sizes in elements, lengths in floats.
template <class Vector, class T>
struct PanelBlocks {
    static constexpr int element = floatsIn<T>;
    static constexpr int tileFloats = DirectTiles<Vector, T>::vectors * Vector::lanes;
    static constexpr int tileRows = tileFloats / element, tileColumns = DirectTiles<Vector, T>::columns;

    int steps, rows;
    bool strips;
    int columns; // of the strips that are copied at once

    explicit PanelBlocks(const GemmCall<T>& call) : steps(even_block(call.k, panelsDepth, directUnit)) {
        const int mostRows = panelsBytes / (steps * static_cast<int>(sizeof(T))) / tileRows * tileRows;
        rows = even_block(call.m, mostRows, tileRows);
        const bool conflict = call.b.ld * element % directConflict<T> == 0;
        strips = conflict || call.m >= panelsForStrip * tileRows;
        columns = (transposes(call.opB) ? stripsAtOnce : 1) * tileColumns;
    }
    // A few steps more than there are may be written.
    std::ptrdiff_t panel_length() const { return std::ptrdiff_t{steps + directUnit} * tileFloats + panelPad; }
    std::ptrdiff_t panels_length() const { return (rows + tileRows - 1) / tileRows * panel_length(); }
    // Of a column, with the vector that its last floats are written with.
    std::ptrdiff_t column_length() const { return steps * element + Vector::lanes; }
    std::ptrdiff_t strip_length() const { return tileColumns * column_length() + panelPad; }
    std::ptrdiff_t group_length() const { return columns / tileColumns * strip_length(); }
    std::size_t bytes() const { // of rows of B the next group of strips is copied beside the one in use
        const std::ptrdiff_t group = strips ? (columns > tileColumns ? 2 : 1) * group_length() : 0;
        return static_cast<std::size_t>(panels_length() + group) * sizeof(float) + lineBytes;
    }
    static constexpr int lineBytes = 64;
};

// ---- Panels of A ----------------------------------------------------------------------------------------------------

// Full panels, `panelLength` floats apart.
template <class Vector, class T>
void copy_full_panels(int steps, const float* a, std::ptrdiff_t lda, float* panels, std::ptrdiff_t panelLength) {
    constexpr int rows = PanelBlocks<Vector, T>::tileFloats;
    for (int l = 0; l < steps; ++l, a += lda, panels += rows)
        QRV_UNROLL
    for (int p = 0; p < panelsAtOnce; ++p)
        QRV_UNROLL
    for (int i = 0; i < rows; i += Vector::lanes)
        Vector::load(a + p * rows + i).store_aligned(panels + p * panelLength + i);
}

// `rows` floats of each step from element (0, 0) of op(A) on. Result: the number of panels.
template <class Vector, class T>
int copy_panels(bool transposed, int rows, int steps, const float* a, std::ptrdiff_t lda, float* panels,
                std::ptrdiff_t panelLength) {
    constexpr int tile = PanelBlocks<Vector, T>::tileFloats, full = panelsAtOnce * tile;
    int count = 0;
    for (int i = 0; i < rows; panels += panelLength, ++count) {
        const RowShare<Vector, T> share(rows - i);
        if (transposed) {
            transpose_tile<Vector, T>(share.rows, share.vectors, steps, a + i / floatsIn<T> * lda, lda, panels);
        } else if (rows - i == full || rows - i > full + tile) { // the shares of all of them are full
            copy_full_panels<Vector, T>(steps, a + i, lda, panels, panelLength);
            i += full - share.rows;
            panels += (panelsAtOnce - 1) * panelLength;
            count += panelsAtOnce - 1;
        } else {
            copy_tile<Vector>(share.rows, share.vectors, steps, a + i, lda, panels);
        }
        i += share.rows;
    }
    return count;
}

// ---- Strips of B ----------------------------------------------------------------------------------------------------

// Columns of B, each copied by whole vectors.
template <class Vector>
void copy_columns(int columns, int length, const float* b, std::ptrdiff_t ldb, float* strip,
                  std::ptrdiff_t columnLength) {
    const int whole = length / Vector::lanes * Vector::lanes;
    const auto mask = Vector::Mask::first(length - whole);
    for (int j = 0; j < columns; ++j, b += ldb, strip += columnLength) {
        for (int l = 0; l < whole; l += Vector::lanes)
            Vector::load(b + l).store(strip + l);
        load_kept(b + whole, mask).store(strip + whole);
    }
}

// A few floats, by whole loads and stores: masked ones, or such as overlap, take several times as long.
template <class Vector, int floats>
QRV_INLINE void copy_floats(const float* in, float* out) {
    constexpr int half = Vector::lanes / 2, piece = floats >= half ? half : smaller(floats, 4);
    store_piece<piece>(out, load_piece<piece>(in));
    if constexpr (floats > piece)
        copy_floats<Vector, floats - piece>(in + piece, out + piece);
}

// Steps of B from `from` on, rows as they lie, each cut into those of the strips.
template <class Vector, class T>
void copy_rows(int columns, int from, int steps, const float* b, std::ptrdiff_t ldb, float* strips,
               std::ptrdiff_t stripLength) {
    constexpr int tileColumns = DirectTiles<Vector, T>::columns, width = tileColumns * floatsIn<T>;
    b += from * ldb;
    for (int l = from; l < from + steps; ++l, b += ldb) {
        float* strip = strips;
        const float* in = b;
        int left = columns;
        for (; left >= 2 * tileColumns || left == tileColumns; left -= tileColumns, in += width, strip += stripLength)
            copy_floats<Vector, width>(in, strip + l * width);
        for (int share; left > 0; left -= share, strip += stripLength) {
            share = even_share(left, tileColumns);
            const int floats = share * floatsIn<T>;
            load_kept(in, Vector::Mask::first(floats)).store(strip + std::ptrdiff_t{l} * floats);
            in += floats;
        }
    }
}

// What a walk through the panels does for the columns of B to come, a share with each panel.
struct NothingToCome {
    void take_share() {}
};

// The next strips are copied from rows of B: these lie so far apart that the processor does not find the next one, nor
// would the caches keep many of them. So a share is asked for while the one before it is copied.
template <class Vector, class T>
class NextRowsOfB {
public:
    NextRowsOfB(int columns, int steps, const float* b, std::ptrdiff_t ldb, float* strips, std::ptrdiff_t stripLength,
                int shares)
        : columns_(columns), left_(columns > 0 ? steps : 0), share_((steps + shares - 1) / shares), b_(b), ldb_(ldb),
          strips_(strips), stripLength_(stripLength) {}
    QRV_INLINE void take_share() {
        if (left_ > 0)
            take_more();
    }
    void take_rest() { take(left_); }

private:
    [[gnu::noinline]] void take_more() {
        take(smaller(share_, left_));
        const float* row = b_ + done_ * ldb_;
        for (int l = smaller(share_, left_); l > 0; --l, row += ldb_) {
            const int floats = columns_ * floatsIn<T>;
            for (int i = 0; i < floats; i += 16)
                __builtin_prefetch(row + i);
            __builtin_prefetch(row + floats - 1);
        }
    }
    void take(int steps) {
        copy_rows<Vector, T>(columns_, done_, steps, b_, ldb_, strips_, stripLength_);
        done_ += steps;
        left_ -= steps;
    }
    int columns_, left_, share_, done_ = 0;
    const float* b_;
    std::ptrdiff_t ldb_;
    float* strips_;
    std::ptrdiff_t stripLength_;
};

// Columns are asked for.
class NextColumnsOfB {
public:
    NextColumnsOfB(int columns, int length, const float* b, std::ptrdiff_t ldb, int panels)
        : at_(b), ldb_(ldb), inColumn_((length + line - 1) / line), left_(columns * inColumn_),
          share_((left_ + panels - 1) / panels) {}
    void take_share() {
        for (int i = smaller(share_, left_); i > 0; --i, --left_) {
            __builtin_prefetch(at_ + row_ * line);
            if (++row_ == inColumn_) {
                row_ = 0;
                at_ += ldb_;
            }
        }
    }

private:
    static constexpr int line = 16; // floats
    const float* at_;
    std::ptrdiff_t ldb_;
    int inColumn_, left_, share_, row_ = 0;
};

// ---- The product ----------------------------------------------------------------------------------------------------

QRV_INLINE void prefetch_rows(int rows, int columns, const float* c, std::ptrdiff_t ldc) {
    for (int j = 0; j < columns; ++j, c += ldc) {
        for (int i = 0; i < rows; i += 16)
            __builtin_prefetch(c + i, 1);
        __builtin_prefetch(c + rows - 1, 1);
    }
}

// All panels times a few columns of B. C is asked for a tile ahead, at the end the first one of the next columns.
template <class Vector, class T, class Next>
void multiply_panels(DirectProduct<T>& p, int rows, int columns, const float* panels, std::ptrdiff_t panelLength,
                     const float* b, float* c, Next& toCome, int columnsToCome) {
    for (int i = 0; i < rows; panels += panelLength) {
        const RowShare<Vector, T> share(rows - i);
        p.aStep = share.vectors * Vector::lanes;
        toCome.take_share();
        const int end = i + share.rows, full = PanelBlocks<Vector, T>::tileFloats;
        if (end < rows)
            prefetch_rows(smaller(full, rows - end), columns, c + end, p.ldc);
        else
            prefetch_rows(smaller(full, rows), columnsToCome, c + columns * p.ldc, p.ldc);
        direct_tile_of<Vector, T>(share.vectors, share.last_rows(), columns, p.k)(p, panels, b, c + i,
                                                                                  share.last_rows());
        i = end;
    }
}

// What of C is computed: all of it, or a triangle with its diagonal.
struct WholeOfC {
    int n;
    constexpr Range columns_of(Range) const { return {0, n}; }
};
struct TriangleOfC {
    Uplo uplo;
    int n;
    bool square; // op(B) is op(A) mirrored: rows of A in panels are columns of B
    constexpr Range columns_of(Range rows) const {
        const Range own = square ? Range{rows.first, 0} : rows;
        return uplo == Uplo::upper ? Range{rows.end() - own.count, n - rows.end() + own.count} : Range{0, own.end()};
    }
    constexpr Range rows_of(Range columns) const {
        return uplo == Uplo::upper ? Range{0, columns.end()} : Range{columns.first, n - columns.first};
    }
    constexpr bool holds(Range rows, Range columns) const {
        return uplo == Uplo::upper ? rows.end() <= columns.first + 1 : columns.end() <= rows.first + 1;
    }
};

template <class Part>
constexpr bool isWhole = false;
template <>
constexpr bool isWhole<WholeOfC> = true;

// c := x + beta*c
template <class Vector, class T>
void add_column(int floats, const float* x, T beta, float* c) {
    const Factor<Vector, T> factor(beta);
    for (int i = 0; i < floats; i += Vector::lanes) {
        const auto mask = Vector::Mask::first(smaller(floats - i, Vector::lanes));
        Vector total = load_kept(x + i, mask);
        if (beta != scalar<T>(0)) {
            const Vector old = load_kept(c + i, mask);
            total = scales_c(beta) ? factor.times_plus(old, total) : old + total;
        }
        store_kept(c + i, total, mask);
    }
}

// All panels, those of these rows of C, times a few columns of B, for what the triangle has of these columns.
template <class Vector, class T, class Next>
void multiply_panels_in(const TriangleOfC& triangle, DirectProduct<T>& p, Range rows, Range columns,
                        const float* panels, std::ptrdiff_t panelLength, const float* b, Matrix<T> c, Next& toCome) {
    constexpr int element = floatsIn<T>, vectorRows = Vector::lanes / element;
    constexpr int full = PanelBlocks<Vector, T>::tileFloats;
    const Range wanted = triangle.rows_of(columns);
    for (int first = rows.first, next; first < rows.end(); first = next, panels += panelLength) {
        const RowShare<Vector, T> share((rows.end() - first) * element);
        next = first + share.rows / element;
        const int skipped = larger(0, wanted.first - first) / vectorRows;
        const int end = smaller(share.vectors, (wanted.end() - first + vectorRows - 1) / vectorRows);
        if (skipped >= end)
            continue;
        toCome.take_share();
        const int lastRows = end == share.vectors ? share.last_rows() : Vector::lanes;
        const Range tileRows{first + skipped * vectorRows, (end - skipped - 1) * vectorRows + lastRows / element};
        const auto tile = direct_tile_of<Vector, T>(end - skipped, lastRows, columns.count, p.k);
        const float* a = panels + skipped * Vector::lanes;
        p.aStep = share.vectors * Vector::lanes;
        if (triangle.holds(tileRows, columns)) {
            auto* ci = reinterpret_cast<float*>(&c(tileRows.first, columns.first));
            if (next < rows.end())
                prefetch_rows(smaller(full, (rows.end() - next) * element), columns.count,
                              ci + tileRows.count * element, p.ldc);
            tile(p, a, b, ci, lastRows);
            continue;
        }
        alignas(64) float buffer[full * PanelBlocks<Vector, T>::tileColumns];
        DirectProduct<T> aside = p;
        aside.beta = scalar<T>(0);
        aside.ldc = full;
        tile(aside, a, b, buffer, lastRows);
        for (int j = 0; j < columns.count; ++j) {
            const Range run = common(tileRows, triangle.rows_of({columns.first + j, 1}));
            if (run.count > 0)
                add_column<Vector>(run.count * element, buffer + j * full + (run.first - tileRows.first) * element,
                                   p.beta, reinterpret_cast<float*>(&c(run.first, columns.first + j)));
        }
    }
}

// The same for the columns that are the rows of the panels: these take the place of strips.
template <class Vector, class T>
void multiply_panels_by_themselves(const TriangleOfC& triangle, DirectProduct<T> p, Range rows, const float* panels,
                                   std::ptrdiff_t panelLength, Matrix<T> c) {
    const float* panel = panels;
    NothingToCome none;
    p.bColumn = floatsIn<T>;
    for (int first = rows.first, next; first < rows.end(); first = next, panel += panelLength) {
        const RowShare<Vector, T> share((rows.end() - first) * floatsIn<T>);
        next = first + share.rows / floatsIn<T>;
        p.bStep = share.vectors * Vector::lanes;
        for (int j = first, columns; j < next; j += columns) {
            columns = even_share(next - j, PanelBlocks<Vector, T>::tileColumns);
            multiply_panels_in<Vector, T>(triangle, p, rows, {j, columns}, panels, panelLength,
                                          panel + (j - first) * floatsIn<T>, c, none);
        }
    }
}

// The panels of `rows` of C, `count` of them, times the columns `wanted` of B, steps l to l + p.k - 1.
template <class Vector, class T, class Part>
void multiply_panels_by_columns(const PanelBlocks<Vector, T>& blocks, const GemmCall<T>& call, const Part& part,
                                DirectProduct<T> p, int l, Range rows, int count, Range wanted, const float* panels,
                                float* strips) {
    using Blocks = PanelBlocks<Vector, T>;
    constexpr int element = floatsIn<T>;
    const bool transposedB = transposes(call.opB);
    const std::ptrdiff_t ldb = call.b.ld * element;
    const std::ptrdiff_t bStep = p.bStep, bColumn = p.bColumn;
    const int atOnce = blocks.strips ? blocks.columns : Blocks::tileColumns;
    const bool byRows = blocks.strips && transposedB, byColumns = blocks.strips && !transposedB;
    const bool ahead = byRows && p.k >= stepsCopiedAhead;
    const auto rows_from = [&](int first, float* to, int shares) {
        return NextRowsOfB<Vector, T>(smaller(atOnce, wanted.end() - first), p.k,
                                      reinterpret_cast<const float*>(call.view_of_b().at(l, first)), ldb, to,
                                      blocks.strip_length(), shares);
    };
    float* othersStrips = strips + blocks.group_length();
    for (int first = wanted.first, group; first < wanted.end(); first += group) {
        const int left = wanted.end() - first;
        group = transposedB ? smaller(atOnce, left) : even_share(left, Blocks::tileColumns);
        const auto* b = reinterpret_cast<const float*>(call.view_of_b().at(l, first));
        if (byRows && (!ahead || first == wanted.first))
            rows_from(first, strips, 1).take_rest();
        auto nextRows =
            rows_from(ahead ? first + group : wanted.end(), othersStrips, count * (group / Blocks::tileColumns + 1));
        float* strip = strips;
        for (int j = 0, columns; j < group; j += columns, strip += blocks.strip_length()) {
            columns = even_share(group - j, Blocks::tileColumns);
            const float* bj = b + j * bColumn;
            NextColumnsOfB nextColumns(byColumns ? smaller(columns, left - columns) : 0, p.k * element,
                                       bj + columns * bColumn, ldb, count);
            p.bStep = bStep;
            p.bColumn = bColumn;
            if (byRows) {
                bj = strip;
                p.bStep = columns * element;
            } else if (byColumns) {
                copy_columns<Vector>(columns, p.k * element, bj, ldb, strip, blocks.column_length());
                bj = strip;
                p.bColumn = blocks.column_length();
            }
            const auto multiply = [&](auto& toCome) {
                if constexpr (isWhole<Part>) {
                    float* cj = reinterpret_cast<float*>(&call.c(rows.first, first + j));
                    multiply_panels<Vector, T>(p, rows.count * element, columns, panels, blocks.panel_length(), bj, cj,
                                               toCome, smaller(columns, left - j - columns));
                } else {
                    multiply_panels_in<Vector, T>(part, p, rows, {first + j, columns}, panels, blocks.panel_length(),
                                                  bj, call.c, toCome);
                }
            };
            byRows ? multiply(nextRows) : multiply(nextColumns);
        }
        nextRows.take_rest();
        if (ahead) {
            float* const used = strips;
            strips = othersStrips;
            othersStrips = used;
        }
    }
}

// The whole product, or what is asked for of it; m, n and k are positive. False if memory is refused: nothing has been
// done then.
template <class Vector, class T, class Part>
bool gemm_by_panels(const GemmCall<T>& call, const Part& part) {
    QRV_ASSERT(call.is_well_formed());
    using Blocks = PanelBlocks<Vector, T>;
    constexpr int element = floatsIn<T>;
    const Blocks blocks(call);
    void* const memory = qrv_serv_allocate(blocks.bytes(), Blocks::lineBytes);
    if (!memory)
        return false;
    const std::uintptr_t mask = Blocks::lineBytes - 1;
    auto* const panels = reinterpret_cast<float*>((reinterpret_cast<std::uintptr_t>(memory) + mask) & ~mask);
    float* const strips = panels + blocks.panels_length();
    const std::ptrdiff_t panelLength = blocks.panel_length();

    const bool transposedA = transposes(call.opA);
    const std::ptrdiff_t lda = call.a.ld * element;
    DirectProduct<T> p = direct_product(call);
    for (int l = 0; l < call.k; l += p.k, p.beta = scalar<T>(1)) {
        p.k = smaller(blocks.steps, call.k - l);
        for (int i = 0, rows; i < call.m; i += rows) {
            rows = smaller(blocks.rows, call.m - i);
            const auto* a = reinterpret_cast<const float*>(call.view_of_a().at(i, l));
            const int count = copy_panels<Vector, T>(transposedA, rows * element, p.k, a, lda, panels, panelLength);
            if constexpr (!isWhole<Part>)
                if (part.square)
                    multiply_panels_by_themselves<Vector, T>(part, p, {i, rows}, panels, panelLength, call.c);
            multiply_panels_by_columns(blocks, call, part, p, l, {i, rows}, count, part.columns_of({i, rows}), panels,
                                       strips);
        }
    }
    qrv_serv_deallocate(memory);
    return true;
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
