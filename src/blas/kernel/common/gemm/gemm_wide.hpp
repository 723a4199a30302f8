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
//
// Complex elements, of which a step of packed A is two such quads, go the same way; what is theirs alone is in
// gemm_wide_complex.hpp. Strides and addresses are in floats throughout, sizes and indices in elements.
#pragma once

#include <cstddef>

#include "blas/complex.hpp"
#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "blas/kernel/common/vec/complex_factor.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/gemm_plan.hpp"
#include "blas/kernel/vec.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int panelRows = 4;
constexpr int kStep = 4; // packed A is zero up to a multiple of so many quads
// Columns of which the elements of a step fill a quad of floats.
template <class T>
constexpr int quadColumns = 4 / floatsIn<T>;

// By the bits of 'N' in both cases, which no other option has together.
constexpr bool micro_transposes(char option) {
    return (option & 0x4E) != 0x4E;
}

// Elements in a vector, as they lie in memory, times one factor.
template <class Vector, class T>
struct Factor {
    Vector factor;
    explicit Factor(float x) : factor(Vector::splat(x)) {}
    QRV_INLINE Vector times(Vector x) const { return factor * x; }
    QRV_INLINE Vector times_plus(Vector x, Vector y) const { return multiply_add(factor, x, y); }
};
template <class Vector>
struct Factor<Vector, SingleComplex> : ComplexFactor<Vector> {
    using ComplexFactor<Vector>::ComplexFactor;
};

// Whether to multiply C by a beta that is not 0. Real elements may be multiplied by 1; of complex ones with an infinite
// part 0 times infinity would make NaN.
constexpr bool scales_c(float) {
    return true;
}
constexpr bool scales_c(SingleComplex beta) {
    return beta != scalar<SingleComplex>(1);
}

// ---- Operand B and its slivers ------------------------------------------------------------------------------------

// The columns of a quad of op(B) as they lie in memory: element (l, j) at data + l*step + j*column, in floats.
struct ColumnQuad {
    const float* data;
    std::ptrdiff_t step;
    std::ptrdiff_t column;
    int width; // columns that may be read

    const float* at(int l) const { return data + l * step; }
    const float* last_or(int j) const { return data + (j < width ? j : width - 1) * column; }
};

template <class T>
struct OperandB {
    enum class Storage { columns, rows, panels };
    const float* data;
    std::ptrdiff_t ld; // floats
    Storage storage;
    bool conjugated;
    int n;

    // Columns from j on. Past the last one some quad that exists: its products are not stored.
    ColumnQuad quad(int j) const {
        constexpr int element = floatsIn<T>, columns = quadColumns<T>;
        if (j >= n)
            j = (n - 1) / columns * columns;
        const int width = smaller(columns, n - j);
        switch (storage) {
        case Storage::columns:
            return {data + j * ld, element, ld, width};
        case Storage::rows:
            return {data + j * element, ld, element, width};
        default: {
            const int panelWidth = width > 2 ? columns : 2;
            return {data + j / columns * ld, panelWidth * element, element, panelWidth};
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
    using Element = typename Spread::Element;
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
        column[j] = quad[j / quadColumns<float>].last_or(j % quadColumns<float>);
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

// One vector's columns, from j on.
template <class Spread>
void expand_vector(const OperandB<float>& b, int j, int steps, float* out, std::ptrdiff_t outStep) {
    ColumnQuad quad[Spread::quads];
    bool full = true;
    for (int q = 0; q < Spread::quads; ++q) {
        quad[q] = b.quad(j + q * quadColumns<float>);
        full = full && quad[q].width == quadColumns<float>;
    }
    if (b.storage == OperandB<float>::Storage::columns)
        expand_columns<Spread>(quad, steps, out, outStep);
    else if (full)
        expand_rows<Spread, true>(quad, steps, out, outStep);
    else
        expand_rows<Spread, false>(quad, steps, out, outStep);
}

// The sliver of the columns from j on: k steps of B, zeros up to kp.
template <class Shape, class T>
void expand(const OperandB<T>& b, int j, int k, int kp, float* sliver) {
    using Spread = typename Shape::Spread;
    using Vector = typename Shape::Vector;
    for (int v = 0; v < Shape::vectors; ++v) {
        float* out = sliver + v * Vector::lanes;
        expand_vector<Spread>(b, j + v * Spread::columns, k, out, Shape::sliverStep);
        for (int l = k; l < kp; ++l)
            Vector::zero().store_aligned(out + l * Shape::sliverStep);
    }
}

// ---- The register tile ----------------------------------------------------------------------------------------------

// Running sums: for each panel and vector one for each part of the panel's rows.
template <class Shape, class T>
struct TileSums {
    using Vector = typename Shape::Vector;
    using Spread = typename Shape::Spread;
    static constexpr int quads = Shape::panels; // that the rows of a column of C fill
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
    // Quad q of the rows of every column of vector v, or of each second one.
    QRV_INLINE Vector columns(int v, int q, int part) const { return Spread::whole_columns(sums[q][v], part); }
};

// The tile of C that a register tile updates. Passed by value: a copy of one's own cannot change under a store to C.
template <class T>
struct TileOfC {
    float* data;
    std::ptrdiff_t ld; // floats
    int columns, rows;
    T beta;
};

template <class Shape, class T>
QRV_INLINE void prefetch_tile(const TileOfC<T>& c) {
    QRV_UNROLL
    for (int j = 0; j < Shape::columns; ++j)
        if (j < c.columns) {
            __builtin_prefetch(c.data + j * c.ld, 1);
            __builtin_prefetch(c.data + j * c.ld + c.rows * floatsIn<T> - 1, 1);
        }
}

// The columns of vector v, for the quads from `first` on that together fill a vector of `rows` floats.
template <class Shape, class T>
QRV_INLINE void update_columns(const TileSums<Shape, T>& tile, int v, int first, const TileOfC<T>& c, int rows) {
    using Vector = typename Shape::Vector;
    using Spread = typename Shape::Spread;
    const Factor<Vector, T> beta(c.beta);
    const bool readsC = c.beta != scalar<T>(0);
    const bool scalesC = scales_c(c.beta);
    QRV_UNROLL
    for (int part = 0; part < tile.parts; ++part) {
        Vector x[Vector::quads];
        QRV_UNROLL
        for (int q = 0; q < Vector::quads; ++q)
            x[q] = tile.columns(v, smaller(first + q, tile.quads - 1), part);
        transpose_quads(x);
        QRV_UNROLL
        for (int q = 0; q < Vector::quads; ++q) {
            const int j = v * Spread::columns + tile.parts * q + part;
            if (j >= c.columns)
                continue;
            float* out = c.data + j * c.ld + 4 * first;
            if (readsC) {
                const Vector old = load_rows(out, rows);
                x[q] = (scalesC ? beta.times(old) : old) + x[q];
            }
            store_rows(out, x[q], rows);
        }
    }
}

// All columns of a tile.
template <class Shape, bool Edge, class T>
QRV_INLINE void store_tile(const TileSums<Shape, T>& tile, const TileOfC<T>& c) {
    constexpr int quads = Shape::Vector::quads;
    QRV_UNROLL
    for (int v = 0; v < Shape::vectors; ++v)
        QRV_UNROLL
    for (int first = 0; first < tile.quads; first += quads) {
        const int full = 4 * smaller(quads, tile.quads - first);
        update_columns<Shape>(tile, v, first, c, Edge ? smaller(full, c.rows * floatsIn<T> - 4 * first) : full);
    }
}

// One register tile: Shape::rows rows (fewer only with Edge) and the first columns of the sliver.
template <class Shape, bool Edge, class T>
void multiply_tile(const float* a, std::ptrdiff_t aStride, const float* sliver, int kp, TileOfC<T> c) {
    using Vector = typename Shape::Vector;
    constexpr int group = Shape::Spread::rowsAtOnce;
    constexpr int aStep = panelRows * floatsIn<T>;
    const int lastRows = c.rows - panelRows * (Shape::panels - 1);
    const typename Vector::Mask mask[2] = {{group, lastRows}, {group, lastRows - group}};
    prefetch_tile<Shape>(c);
    const float* panel[Shape::panels];
    QRV_UNROLL
    for (int p = 0; p < Shape::panels; ++p)
        panel[p] = a + p * aStride;
    TileSums<Shape, T> tile;
    tile.clear();
    const std::ptrdiff_t end = std::ptrdiff_t{kp} * aStep;
    for (std::ptrdiff_t l = 0; l < end; l += aStep, sliver += Shape::sliverStep)
        tile.template add_step<Edge>(panel, l, sliver, mask);
    store_tile<Shape, Edge>(tile, c);
}

// ---- The micro-kernel ---------------------------------------------------------------------------------------

// Sizes and indices in elements, strides in floats.
template <class T>
struct MicroCall {
    int m;
    int k;  // steps of B
    int kp; // the same, rounded up to the steps of packed A
    const float* a;
    std::ptrdiff_t aStride;
    OperandB<T> b;
    float* c;
    std::ptrdiff_t ldc;
    T beta;
    float* sliver;
    bool expanded = false; // whether the sliver holds the columns, one group of them, already

    // The panels from row i on, and the tile of C that they update.
    const float* panels(int i) const { return a + i / panelRows * aStride; }
    TileOfC<T> tile(int i, int j, int rows, int columns) const {
        return {c + i * floatsIn<T> + j * ldc, ldc, columns, rows, beta};
    }
};

// A tile of so many panels.
template <class Spread, int Panels, int Vectors, class T>
void multiply_rows(const MicroCall<T>& call, int panels, int i, int j, int rows, int columns) {
    using Shape = TileShape<Spread, Panels, Vectors>;
    if constexpr (Panels > 1)
        if (panels < Panels)
            return multiply_rows<Spread, Panels - 1, Vectors>(call, panels, i, j, rows, columns);
    if (rows == Shape::rows)
        multiply_tile<Shape, false>(call.panels(i), call.aStride, call.sliver, call.kp, call.tile(i, j, rows, columns));
    else
        multiply_tile<Shape, true>(call.panels(i), call.aStride, call.sliver, call.kp, call.tile(i, j, rows, columns));
}

// All rows of the columns from j on, at most Shape::columns of them.
template <class Shape, class T>
void multiply_columns(const MicroCall<T>& call, int j) {
    const int columns = smaller(Shape::columns, call.b.n - j);
    if (!call.expanded)
        expand<Shape>(call.b, j, call.k, call.kp, call.sliver);
    // The last panels are dealt out evenly: the few sums of a single one would wait for each other.
    for (int i = 0, rows; i < call.m; i += rows) {
        const int panels = even_share((call.m - i + panelRows - 1) / panelRows, Shape::panels);
        rows = smaller(panels * panelRows, call.m - i);
        multiply_rows<typename Shape::Spread, Shape::panels, Shape::vectors>(call, panels, i, j, rows, columns);
    }
}

// The next columns, by the first shape unless the one after it holds all that are left. Result: how many.
template <class T, class Shape>
int multiply_next(const MicroCall<T>& call, int j) {
    multiply_columns<Shape>(call, j);
    return Shape::columns;
}
template <class T, class Shape, class Next, class... Narrower>
int multiply_next(const MicroCall<T>& call, int j) {
    return call.b.n - j <= Next::columns ? multiply_next<T, Next, Narrower...>(call, j)
                                         : multiply_next<T, Shape>(call, j);
}

// GemmPlan<T>::Micro by the given shapes, widest first.
template <class T, class... Shapes>
void wide_micro(const char*, const char* transb, const int* m, const int* n, const int* kp, const T*, const T* aPacked,
                const int* aStride, const T* b, const int* ldb, const T* beta, T* c, const int* ldc, T* sliver,
                MicroForm form) {
    using Storage = typename OperandB<T>::Storage;
    constexpr std::ptrdiff_t element = floatsIn<T>;
    const Storage direct = micro_transposes(*transb) ? Storage::rows : Storage::columns;
    const bool packed = form == MicroForm::packedB;
    const MicroCall<T> call{*m,
                            *kp,
                            round_up(*kp, kStep / floatsIn<T>),
                            reinterpret_cast<const float*>(aPacked),
                            *aStride * element,
                            {reinterpret_cast<const float*>(b), *ldb * element, packed ? Storage::panels : direct,
                             isComplex<T> && !packed && conjugates(*transb), *n},
                            reinterpret_cast<float*>(c),
                            *ldc * element,
                            *beta,
                            reinterpret_cast<float*>(sliver),
                            form == MicroForm::expandedB};
    for (int j = 0; j < *n;)
        j += multiply_next<T, Shapes...>(call, j);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
