// The micro-kernel of the plan-driven GEMM over vectors wider than the panel: several 4 x 4 tiles side by side in
// one register tile.
//
//   c[m x n] := beta*c + A * B over kp steps. alpha is already in A.
//   A        panels of 4 rows, aStride floats apart, 4 floats a step, 16-byte aligned; steps past k are zero. Of the
//            last panel only the first m mod 4 lanes of a step have been written: the others never reach the sums.
//   B        packed panels of 4 columns (zero past k; the last may be 2 wide) or the caller's matrix, of which nothing
//            outside k x n is read; k is then the number of steps given, and A is zero up to the next multiple of 4.
//   sliver   work memory, 64-byte aligned: Shape::sliverStep floats a step for one group of Shape::columns columns
//   C        column-major, any ldc, any float alignment; nothing outside m x n is read or written, and with beta = 0
//            nothing is read
//
// A sliver step of eight columns is b0 b0 b1 b1 ... b7 b7. Times a pair of rows, a0 a1 in every pair of lanes, it
// gives 2 x 8 products: the pairs come from packed A by loads alone, so that no shuffle takes a turn from the
// multiply-adds. The last columns of a row of C may use steps of b0 b0 b0 b0 b1 ..., times a0 a1 a2 a3, instead.
// Each element of C sums its products in ascending k, in one chain, which is then added to beta*C.
#pragma once

#include <cstddef>

#include "blas/kernel/common/gemm_blocks.hpp"
#include "blas/kernel/gemm_plan.hpp"

// The sums of a tile are arrays that must live in registers: every loop over them is unrolled, every function that
// takes them is inlined.
#define QRV_UNROLL _Pragma("GCC unroll 32")
#define QRV_INLINE [[gnu::always_inline]] inline

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int panelRows = 4;
constexpr int quadColumns = 4;
constexpr int kStep = 4; // kp is a multiple

// ---- Operand B and its slivers ------------------------------------------------------------------------------------

// Four columns of op(B) as they lie in memory: element (l, j) at data + l*step + j*column.
struct ColumnQuad {
    const float* data;
    std::ptrdiff_t step;
    std::ptrdiff_t column;
    int width; // columns that may be read

    const float* at(int l) const { return data + l * step; }
    const float* last_or(int j) const { return data + (j < width ? j : width - 1) * column; }
};

struct OperandB {
    enum class Storage { columns, rows, panels };
    const float* data;
    std::ptrdiff_t ld;
    Storage storage;
    int n;

    // Columns from j on. Past the last one some quad that exists: its products are not stored.
    ColumnQuad quad(int j) const {
        if (j >= n)
            j = (n - 1) / quadColumns * quadColumns;
        const int width = smaller(quadColumns, n - j);
        switch (storage) {
        case Storage::columns:
            return {data + j * ld, 1, ld, width};
        case Storage::rows:
            return {data + j, ld, 1, width};
        default: {
            const int panelWidth = width > 2 ? quadColumns : 2;
            return {data + j / quadColumns * ld, panelWidth, 1, panelWidth};
        }
        }
    }
};

// The register tile, in panels of A and in vectors of a sliver step.
//   Spread   how Spread::columns columns of B lie in one vector of the step, and which rows of A they meet:
//            Spread::rowsAtOnce, 2 or 4
template <class Spread_, int Panels, int Vectors>
struct TileShape {
    using Spread = Spread_;
    using Vector = typename Spread::Vector;
    static constexpr int panels = Panels;
    static constexpr int vectors = Vectors;
    static constexpr int rows = panelRows * Panels;
    static constexpr int columns = Spread::columns * Vectors;
    static constexpr int sliverStep = Vector::lanes * Vectors;
};

// One vector's columns, stored by rows: a quad of memory is a quad of the step.
template <class Spread, bool Full>
void expand_rows(const ColumnQuad (&quad)[Spread::quads], int steps, float* out, std::ptrdiff_t outStep) {
    for (int l = 0; l < steps; ++l) {
        __m128 x[Spread::quads];
        QRV_UNROLL
        for (int q = 0; q < Spread::quads; ++q)
            x[q] = Full ? _mm_loadu_ps(quad[q].at(l)) : load_quad(quad[q].at(l), quad[q].width);
        Spread::step(x).store_aligned(out + l * outStep);
    }
}

// One vector's columns, stored by columns: four steps at a time, then singly.
template <class Spread>
void expand_columns(const ColumnQuad (&quad)[Spread::quads], int steps, float* out, std::ptrdiff_t outStep) {
    const float* column[Spread::columns];
    QRV_UNROLL
    for (int j = 0; j < Spread::columns; ++j)
        column[j] = quad[j / quadColumns].last_or(j % quadColumns);
    int l = 0;
    for (; l + kStep <= steps; l += kStep)
        Spread::four_steps(column, l, out + l * outStep, outStep);
    for (; l < steps; ++l) {
        __m128 x[Spread::quads];
        QRV_UNROLL
        for (int q = 0; q < Spread::quads; ++q)
            x[q] = _mm_setr_ps(column[4 * q][l], column[4 * q + 1][l], column[4 * q + 2][l], column[4 * q + 3][l]);
        Spread::step(x).store_aligned(out + l * outStep);
    }
}

// The sliver of the columns from j on: k steps of B, zeros up to kp.
template <class Shape>
void expand(const OperandB& b, int j, int k, int kp, float* sliver) {
    using Spread = typename Shape::Spread;
    using Vector = typename Shape::Vector;
    for (int v = 0; v < Shape::vectors; ++v) {
        float* out = sliver + v * Vector::lanes;
        ColumnQuad quad[Spread::quads];
        bool full = true;
        for (int q = 0; q < Spread::quads; ++q) {
            quad[q] = b.quad(j + v * Spread::columns + q * quadColumns);
            full = full && quad[q].width == quadColumns;
        }
        if (b.storage == OperandB::Storage::columns)
            expand_columns<Spread>(quad, k, out, Shape::sliverStep);
        else if (full)
            expand_rows<Spread, true>(quad, k, out, Shape::sliverStep);
        else
            expand_rows<Spread, false>(quad, k, out, Shape::sliverStep);
        for (int l = k; l < kp; ++l)
            Vector::zero().store_aligned(out + l * Shape::sliverStep);
    }
}

// ---- The register tile ----------------------------------------------------------------------------------------------

// Running sums: for each panel and vector one for each part of the panel's rows.
template <class Shape>
struct TileSums {
    using Vector = typename Shape::Vector;
    using Spread = typename Shape::Spread;
    static constexpr int parts = panelRows / Spread::rowsAtOnce;
    Vector sums[Shape::panels][Shape::vectors][parts];

    QRV_INLINE void clear() {
        QRV_UNROLL
        for (int p = 0; p < Shape::panels; ++p)
            QRV_UNROLL
        for (int v = 0; v < Shape::vectors; ++v)
            QRV_UNROLL
        for (int part = 0; part < parts; ++part)
            sums[p][v][part] = Vector::zero();
    }

    // One step of the panels whose steps start at `offset`. With Edge, of the last panel only the rows that the masks
    // keep.
    template <bool Edge>
    QRV_INLINE void add_step(const float* const (&panel)[Shape::panels], std::ptrdiff_t offset, const float* sliver,
                             const typename Vector::Mask (&mask)[2]) {
        Vector z[Shape::vectors];
        QRV_UNROLL
        for (int v = 0; v < Shape::vectors; ++v)
            z[v] = Vector::load_aligned(sliver + v * Vector::lanes);
        QRV_UNROLL
        for (int p = 0; p < Shape::panels; ++p)
            QRV_UNROLL
        for (int part = 0; part < parts; ++part) {
            Vector x = Spread::repeat_rows(panel[p] + offset + part * Spread::rowsAtOnce);
            if (Edge && p == Shape::panels - 1)
                x = x.kept(mask[part]);
            QRV_UNROLL
            for (int v = 0; v < Shape::vectors; ++v)
                sums[p][v][part] = multiply_add(x, z[v], sums[p][v][part]);
        }
    }
};

// The tile of C that a register tile updates. Passed by value: a copy of one's own cannot change under a store to C.
struct TileOfC {
    float* data;
    std::ptrdiff_t ld;
    int columns, rows;
    float beta;
};

template <class Shape>
QRV_INLINE void prefetch_tile(const TileOfC& c) {
    QRV_UNROLL
    for (int j = 0; j < Shape::columns; ++j)
        if (j < c.columns) {
            __builtin_prefetch(c.data + j * c.ld, 1);
            __builtin_prefetch(c.data + j * c.ld + c.rows - 1, 1);
        }
}

// The columns of vector v, for the panels from `first` on that together fill a vector of rows.
template <class Shape>
QRV_INLINE void update_columns(const TileSums<Shape>& tile, int v, int first, const TileOfC& c, int rows) {
    using Vector = typename Shape::Vector;
    using Spread = typename Shape::Spread;
    const Vector beta = Vector::splat(c.beta);
    const bool readsC = c.beta != 0;
    QRV_UNROLL
    for (int part = 0; part < tile.parts; ++part) {
        Vector x[Vector::quads];
        QRV_UNROLL
        for (int p = 0; p < Vector::quads; ++p)
            x[p] = Spread::whole_columns(tile.sums[smaller(first + p, Shape::panels - 1)][v], part);
        transpose_quads(x);
        QRV_UNROLL
        for (int q = 0; q < Vector::quads; ++q) {
            const int j = v * Spread::columns + tile.parts * q + part;
            if (j >= c.columns)
                continue;
            float* out = c.data + j * c.ld + panelRows * first;
            store_rows(out, readsC ? beta * load_rows(out, rows) + x[q] : x[q], rows);
        }
    }
}

// One register tile: Shape::rows rows (fewer only with Edge) and the first columns of the sliver.
template <class Shape, bool Edge>
void multiply_tile(const float* a, std::ptrdiff_t aStride, const float* sliver, int kp, TileOfC c) {
    using Vector = typename Shape::Vector;
    constexpr int group = Shape::Spread::rowsAtOnce;
    const int lastRows = c.rows - panelRows * (Shape::panels - 1);
    const typename Vector::Mask mask[2] = {{group, lastRows}, {group, lastRows - group}};
    prefetch_tile<Shape>(c);
    const float* panel[Shape::panels];
    QRV_UNROLL
    for (int p = 0; p < Shape::panels; ++p)
        panel[p] = a + p * aStride;
    TileSums<Shape> tile;
    tile.clear();
    const std::ptrdiff_t end = std::ptrdiff_t{kp} * panelRows;
    for (std::ptrdiff_t l = 0; l < end; l += panelRows, sliver += Shape::sliverStep)
        tile.template add_step<Edge>(panel, l, sliver, mask);
    QRV_UNROLL
    for (int v = 0; v < Shape::vectors; ++v)
        QRV_UNROLL
    for (int first = 0; first < Shape::panels; first += Vector::quads) {
        const int full = panelRows * smaller(Vector::quads, Shape::panels - first);
        update_columns<Shape>(tile, v, first, c, Edge ? smaller(full, c.rows - panelRows * first) : full);
    }
}

// ---- The micro-kernel
// -------------------------------------------------------------------------------------------------

struct MicroCall {
    int m;
    int k;  // steps of B
    int kp; // the same, rounded up to kStep
    const float* a;
    std::ptrdiff_t aStride;
    OperandB b;
    Matrix<float> c;
    float beta;
    float* sliver;

    // The panels from row i on, and the tile of C that they update.
    const float* panels(int i) const { return a + i / panelRows * aStride; }
    TileOfC tile(int i, int j, int rows, int columns) const { return {&c(i, j), c.ld, columns, rows, beta}; }
};

inline MicroCall micro_call(bool transposedB, int m, int n, int k, const float* a, int aStride, const float* b, int ldb,
                            float beta, float* c, int ldc, float* sliver, MicroForm form) {
    using Storage = OperandB::Storage;
    const Storage direct = transposedB ? Storage::rows : Storage::columns;
    const Storage storage = form == MicroForm::packedB ? Storage::panels : direct;
    return {m, k, round_up(k, kStep), a, aStride, {b, ldb, storage, n}, {c, ldc}, beta, sliver};
}

// The rows left over: a tile of just the panels that they need.
template <class Spread, int Panels, int Vectors>
void multiply_edge(const MicroCall& call, int i, int j, int columns) {
    const int rows = call.m - i;
    if (rows > panelRows * (Panels - 1))
        multiply_tile<TileShape<Spread, Panels, Vectors>, true>(call.panels(i), call.aStride, call.sliver, call.kp,
                                                                call.tile(i, j, rows, columns));
    else if constexpr (Panels > 1)
        multiply_edge<Spread, Panels - 1, Vectors>(call, i, j, columns);
}

// Asks for the columns that come next, a share with each tile: B is the one operand that no earlier pass has brought
// near, and read by columns it gives the processor sixteen short streams to find.
template <class Shape>
class NextColumns {
public:
    NextColumns(const MicroCall& call, int j) : b_(call.b), j_(j), columns_(smaller(Shape::columns, call.b.n - j)) {
        const int tiles = (call.m + Shape::rows - 1) / Shape::rows;
        stepsAtOnce_ = round_up((call.k + tiles - 1) / tiles, line);
        left_ = columns_ > 0 && call.b.storage != OperandB::Storage::panels ? call.k : 0;
    }
    void prefetch_share() {
        const int end = smaller(step_ + stepsAtOnce_, left_);
        if (b_.storage == OperandB::Storage::columns) {
            for (; step_ < end; step_ += line)
                for (int j = 0; j < columns_; ++j)
                    __builtin_prefetch(b_.data + step_ + (j_ + j) * b_.ld);
        } else {
            for (; step_ < end; ++step_) {
                __builtin_prefetch(b_.data + step_ * b_.ld + j_);
                __builtin_prefetch(b_.data + step_ * b_.ld + j_ + columns_ - 1);
            }
        }
    }

private:
    static constexpr int line = 16; // floats
    const OperandB& b_;
    int j_, columns_;
    int stepsAtOnce_, left_;
    int step_ = 0;
};

// All rows of the columns from j on, at most Shape::columns of them.
template <class Shape>
void multiply_columns(const MicroCall& call, int j) {
    const int columns = smaller(Shape::columns, call.b.n - j);
    expand<Shape>(call.b, j, call.k, call.kp, call.sliver);
    NextColumns<Shape> next(call, j + columns);
    int i = 0;
    for (; i + Shape::rows <= call.m; i += Shape::rows) {
        next.prefetch_share();
        multiply_tile<Shape, false>(call.panels(i), call.aStride, call.sliver, call.kp,
                                    call.tile(i, j, Shape::rows, columns));
    }
    if (i < call.m)
        multiply_edge<typename Shape::Spread, Shape::panels, Shape::vectors>(call, i, j, columns);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
