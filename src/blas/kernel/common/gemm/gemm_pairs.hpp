// The plan-driven SGEMM that takes k in pairs: packing, sliver and micro-kernel. Needs SSE3's horizontal add.
//
//   tile      4 x 2: four accumulators, (rows 0 1, rows 2 3) x (column 0, column 1); the two lanes of a row hold
//             the sums over even and odd steps of k and meet in a horizontal add at the end
//   packed A  panels of 4 rows; a pair of steps (l, l+1) is 8 floats: r0(l) r0(l+1) r1(l) r1(l+1) r2(l) ...;
//             alpha applied; in a last panel of r rows only the first 2r floats of a pair are written or read
//   packed B  panels of 2 columns; a pair of steps is 4 floats: c0(l) c0(l+1) c1(l) c1(l+1); a single last column
//             has zeros beside it
//   sliver    up to 8 columns of B, two to a part of 4*kp floats; a pair of steps is 8 floats:
//             c0(l) c0(l+1) c0(l) c0(l+1) c1(l) c1(l+1) c1(l) c1(l+1)
//   odd k     the step beside the last one is zero in A, B and sliver: kp is k rounded up to 2
//   aligned   packed operands and sliver to 16 bytes; A, B and C of the caller to 4
//   reads     nothing outside the caller's operands, nothing past the last pair of a packed panel
//
// A pair of steps costs 4 loads, 4 products and 4 sums without a shuffle or a broadcast, for processors where
// those cost as much as a product.
//
// Included once, by the gemm.cpp of a build with such a plan row.
#pragma once

#include <cstddef>
#include <pmmintrin.h>

#include "blas/kernel/common/vec/vec4f.hpp"
#include "blas/kernel/gemm_plan.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD::pairs {

constexpr int rowUnit = 4;    // rows of a panel of A and of a tile
constexpr int columnUnit = 2; // columns of a panel of B and of a tile
constexpr int pair = 2;       // steps of k that stand side by side
constexpr int aPair = rowUnit * pair;
constexpr int bPair = columnUnit * pair;
constexpr int sliverPair = 2 * bPair;
constexpr int sliverColumns = 8;   // 4 parts of 4 KB at the deepest block: with a panel of A they fill 20 KB of L1
constexpr int straightSteps = 256; // the deepest block of k, the usual case
constexpr int loopSteps = 32;
constexpr int unrolledSteps = 8;
constexpr int targetAhead = 128; // floats of sliver prefetched ahead of the writer: 512 bytes
constexpr int sourceAhead = 128; // the same for a column of B
constexpr int rowsAhead = 16;    // the same in rows, where B is walked across its columns
constexpr int cAhead = 8;        // floats of C ahead of the tile: 32 bytes

// ---- Operands in pairs --------------------------------------------------------------------------------------------
//
// A line is a row of op(A) or a column of op(B), a step an index of k. pair_of<lines, steps>(line, l) is
// x0(l) x0(l+1) x1(l) x1(l+1) of the lines `line` and `line` + 1; with one line or one step the others are zero and
// not read.

// Steps of a line are contiguous: A transposed, B not transposed.
struct AlongSteps {
    static constexpr int linesTogether = 1; // each is a stream of its own
    const float* data;
    std::ptrdiff_t stride;

    const float* at(int line, int l) const { return data + line * stride + l; }
    template <int lines, int steps>
    Vec4f pair_of(int line, int l) const {
        const Vec4f first = load_first<steps>(at(line, l));
        if constexpr (lines == 1)
            return first;
        else if constexpr (steps == 2)
            return {_mm_loadh_pi(first.v, reinterpret_cast<const __m64*>(at(line + 1, l)))};
        else
            return low_halves(first, load_first<1>(at(line + 1, l)));
    }
    void prefetch_source(int line, int l) const {
        prefetch_once(at(line, l) + sourceAhead);
        prefetch_once(at(line + 1, l) + sourceAhead);
    }
};

// Lines of a step are contiguous: A not transposed, B transposed.
struct AcrossSteps {
    static constexpr int linesTogether = 16; // 64 bytes, so that what is loaded at a step is used at once
    const float* data;
    std::ptrdiff_t stride;

    const float* at(int line, int l) const { return data + l * stride + line; }
    template <int lines, int steps>
    Vec4f pair_of(int line, int l) const {
        const Vec4f first = load_first<lines>(at(line, l));
        if constexpr (steps == 1)
            return interleave_low(first, Vec4f::zero());
        else
            return interleave_low(first, load_first<lines>(at(line, l + 1)));
    }
    void prefetch_source(int line, int l) const {
        prefetch_once(at(line, l + rowsAhead));
        prefetch_once(at(line, l + rowsAhead + 1));
    }
};

// B as copy_b leaves it; missing columns and steps are zeros there already.
struct PackedColumns {
    const float* data;
    std::ptrdiff_t stride;

    const float* at(int line, int l) const {
        return data + line / columnUnit * stride + l / pair * bPair + line % columnUnit * pair + l % pair;
    }
    template <int, int>
    Vec4f pair_of(int line, int l) const {
        return Vec4f::load_aligned(at(line, l));
    }
    void prefetch_source(int line, int l) const { prefetch_once(at(line, l) + sourceAhead); }
};

// ---- Packing ------------------------------------------------------------------------------------------------------

template <int rows, int steps, class X>
inline void pack_a_pair(X x, int row, int l, Vec4f scale, float* out) {
    constexpr int topRows = rows == 1 ? 1 : 2;
    const Vec4f top = x.template pair_of<topRows, steps>(row, l) * scale;
    if constexpr (rows == 1)
        store_first<2>(out, top);
    else
        top.store_aligned(out);
    if constexpr (rows == 3)
        store_first<2>(out + bPair, x.template pair_of<1, steps>(row + 2, l) * scale);
    if constexpr (rows == 4)
        (x.template pair_of<2, steps>(row + 2, l) * scale).store_aligned(out + bPair);
}

// One panel of `rows` rows, or several full ones side by side.
template <int panels, int rows, class X>
inline void pack_a_panels(X x, int row, int k, float alpha, float* out, std::ptrdiff_t stride) {
    const Vec4f scale = Vec4f::splat(alpha);
    int l = 0;
    for (; l + pair <= k; l += pair, out += aPair)
        for (int p = 0; p < panels; ++p)
            pack_a_pair<rows, 2>(x, row + p * rowUnit, l, scale, out + p * stride);
    // The partner of an odd step is scaled by 1: an infinite alpha would make a NaN of its zero.
    if (l < k)
        for (int p = 0; p < panels; ++p)
            pack_a_pair<rows, 1>(x, row + p * rowUnit, l, interleave_low(scale, Vec4f::splat(1)), out + p * stride);
}

template <class X>
inline void pack_a(int m, int k, X x, float alpha, float* buffer, std::ptrdiff_t stride) {
    constexpr int panels = X::linesTogether / rowUnit;
    int row = 0;
    const auto panel = [&] { return buffer + row / rowUnit * stride; };
    if constexpr (panels > 1)
        for (; row + panels * rowUnit <= m; row += panels * rowUnit)
            pack_a_panels<panels, rowUnit>(x, row, k, alpha, panel(), stride);
    for (; row + rowUnit <= m; row += rowUnit)
        pack_a_panels<1, rowUnit>(x, row, k, alpha, panel(), stride);
    switch (m - row) {
    case 1:
        return pack_a_panels<1, 1>(x, row, k, alpha, panel(), stride);
    case 2:
        return pack_a_panels<1, 2>(x, row, k, alpha, panel(), stride);
    case 3:
        return pack_a_panels<1, 3>(x, row, k, alpha, panel(), stride);
    default:
        return;
    }
}

template <int panels, int columns, class X>
inline void pack_b_panels(X x, int column, int k, float* out, std::ptrdiff_t stride) {
    int l = 0;
    for (; l + pair <= k; l += pair, out += bPair)
        for (int p = 0; p < panels; ++p)
            x.template pair_of<columns, 2>(column + p * columnUnit, l).store_aligned(out + p * stride);
    if (l < k)
        for (int p = 0; p < panels; ++p)
            x.template pair_of<columns, 1>(column + p * columnUnit, l).store_aligned(out + p * stride);
}

template <class X>
inline void pack_b(int k, int n, X x, float* buffer, std::ptrdiff_t stride) {
    constexpr int panels = X::linesTogether / columnUnit;
    int column = 0;
    const auto panel = [&] { return buffer + column / columnUnit * stride; };
    if constexpr (panels > 1)
        for (; column + panels * columnUnit <= n; column += panels * columnUnit)
            pack_b_panels<panels, columnUnit>(x, column, k, panel(), stride);
    for (; column + columnUnit <= n; column += columnUnit)
        pack_b_panels<1, columnUnit>(x, column, k, panel(), stride);
    if (column < n)
        pack_b_panels<1, 1>(x, column, k, panel(), stride);
}

// The plan's copy routines.

inline void copy_an(const int* m, const int* k, const float* a, const int* lda, float* buffer, const int* stride,
                    const float* alpha) {
    pack_a(*m, *k, AcrossSteps{a, *lda}, *alpha, buffer, *stride);
}
inline void copy_at(const int* m, const int* k, const float* a, const int* lda, float* buffer, const int* stride,
                    const float* alpha) {
    pack_a(*m, *k, AlongSteps{a, *lda}, *alpha, buffer, *stride);
}
inline void copy_bn(const int* k, const int* n, const float* b, const int* ldb, float* buffer, const int* stride) {
    pack_b(*k, *n, AlongSteps{b, *ldb}, buffer, *stride);
}
inline void copy_bt(const int* k, const int* n, const float* b, const int* ldb, float* buffer, const int* stride) {
    pack_b(*k, *n, AcrossSteps{b, *ldb}, buffer, *stride);
}

// ---- Sliver -------------------------------------------------------------------------------------------------------

inline void store_doubled(Vec4f x, float* out) {
    low_halves(x, x).store_aligned(out);
    high_halves(x, x).store_aligned(out + 4);
}

// Two columns (or one, with zeros for the other) for each of `parts` parts, kp*4 floats apart. The parts are filled
// side by side, so that B walked across its columns is read once.
template <int parts, int columns, class B>
inline void expand(B b, int column, int k, int kp, float* sliver) {
    const std::ptrdiff_t partStride = static_cast<std::ptrdiff_t>(kp) * bPair;
    const auto store_pairs = [&](int l, float* out, auto steps) {
        for (int part = 0; part < parts; ++part)
            store_doubled(b.template pair_of<columns, steps()>(column + part * columnUnit, l), out + part * partStride);
    };
    int l = 0;
    for (; l + 2 * pair <= k; l += 2 * pair, sliver += 2 * sliverPair) {
        for (int part = 0; part < parts; ++part) {
            b.prefetch_source(column + part * columnUnit, l);
            prefetch(sliver + part * partStride + targetAhead);
        }
        store_pairs(l, sliver, Lanes<pair>{});
        store_pairs(l + pair, sliver + sliverPair, Lanes<pair>{});
    }
    if (l + pair <= k) {
        store_pairs(l, sliver, Lanes<pair>{});
        l += pair;
        sliver += sliverPair;
    }
    if (l < k)
        store_pairs(l, sliver, Lanes<1>{});
}

// ---- Main kernel --------------------------------------------------------------------------------------------------

struct Tile {
    Vec4f top0, bottom0, top1, bottom1; // rows 0 1 and rows 2 3 of columns 0 and 1
};

// Values in registers, for the compiler's eyes changed here. It would take an operand that it has just loaded from
// memory once more for its second use, and loads are what this kernel has most of; and it would put the loads of four
// steps in front of their sums, for which there are not registers enough.
inline void hold(Vec4f& x) {
    __asm__("" : "+x"(x.v));
}
template <class... Rest>
inline void hold(Vec4f& x, Rest&... rest) {
    hold(x);
    hold(rest...);
}

inline void add_pair(Tile& t, const float* a, const float* b) {
    Vec4f b0 = Vec4f::load_aligned(b), b1 = Vec4f::load_aligned(b + 4);
    Vec4f rows = Vec4f::load_aligned(a);
    hold(rows, b0, b1, t.top0, t.top1);
    t.top0 = t.top0 + rows * b0;
    t.top1 = t.top1 + rows * b1;
    rows = Vec4f::load_aligned(a + 4);
    hold(rows, t.bottom0, t.bottom1);
    t.bottom0 = t.bottom0 + rows * b0;
    t.bottom1 = t.bottom1 + rows * b1;
}

template <int steps>
inline void add_steps(Tile& t, const float*& a, const float*& b) {
    static_assert(steps % unrolledSteps == 0 && unrolledSteps == 4 * pair);
    for (int l = 0; l < steps; l += unrolledSteps, a += 4 * aPair, b += 4 * sliverPair) {
        add_pair(t, a, b);
        add_pair(t, a + aPair, b + sliverPair);
        add_pair(t, a + 2 * aPair, b + 2 * sliverPair);
        add_pair(t, a + 3 * aPair, b + 3 * sliverPair);
    }
}

// c += the four rows of a column, each the sum of two adjacent lanes.
inline void add_column(float* c, Vec4f top, Vec4f bottom) {
    (Vec4f::load(c) + Vec4f{_mm_hadd_ps(top.v, bottom.v)}).store(c);
}

// C[4 x columns] += one panel of A * one part of the sliver, columns 1 or 2.
inline void multiply_tile(int columns, int kp, const float* a, const float* b, Matrix<float> c) {
    Tile t{Vec4f::zero(), Vec4f::zero(), Vec4f::zero(), Vec4f::zero()};
    prefetch(c.column(0) + cAhead);
    if (columns == columnUnit)
        prefetch(c.column(1) + cAhead);
    int left = kp;
    for (; left >= straightSteps; left -= straightSteps)
        add_steps<straightSteps>(t, a, b);
    for (; left >= loopSteps; left -= loopSteps)
        add_steps<loopSteps>(t, a, b);
    for (; left >= unrolledSteps; left -= unrolledSteps)
        add_steps<unrolledSteps>(t, a, b);
    for (; left > 0; left -= pair, a += aPair, b += sliverPair)
        add_pair(t, a, b);
    add_column(c.column(0), t.top0, t.bottom0);
    if (columns == columnUnit)
        add_column(c.column(1), t.top1, t.bottom1);
}

// C[rows x columns] += A * sliver, rows a multiple of 4. A panel serves all columns while it is in the first cache.
inline void multiply_panels(int rows, int columns, int kp, const float* a, std::ptrdiff_t aStride, const float* sliver,
                            Matrix<float> c) {
    const std::ptrdiff_t partStride = static_cast<std::ptrdiff_t>(kp) * bPair;
    for (int row = 0; row < rows; row += rowUnit, a += aStride) {
        const float* part = sliver;
        for (int column = 0; column < columns; column += columnUnit, part += partStride)
            multiply_tile(columns - column == 1 ? 1 : columnUnit, kp, a, part, c.block(row, column));
    }
}

template <class B>
inline void multiply_main(int rows, int n, int k, int kp, const float* a, std::ptrdiff_t aStride, B b, Matrix<float> c,
                          float* sliver) {
    int column = 0;
    for (; column + sliverColumns <= n; column += sliverColumns) {
        expand<4, 2>(b, column, k, kp, sliver);
        multiply_panels(rows, sliverColumns, kp, a, aStride, sliver, c.block(0, column));
    }
    if (n - column >= 4) {
        expand<2, 2>(b, column, k, kp, sliver);
        multiply_panels(rows, 4, kp, a, aStride, sliver, c.block(0, column));
        column += 4;
    }
    if (n - column >= 2) {
        expand<1, 2>(b, column, k, kp, sliver);
        multiply_panels(rows, 2, kp, a, aStride, sliver, c.block(0, column));
        column += 2;
    }
    if (n - column == 1) {
        expand<1, 1>(b, column, k, kp, sliver);
        multiply_panels(rows, 1, kp, a, aStride, sliver, c.block(0, column));
    }
}

// ---- Row edge: the last 1 to 3 rows, in scalar arithmetic ----------------------------------------------------------

// The sums of one column over `rows` rows of a panel.
template <int rows>
struct ColumnSums {
    float sum = 0;
    ColumnSums<rows - 1> below{};

    void add(const float* a, float b) {
        sum += a[0] * b;
        below.add(a + pair, b);
    }
    void add_to(float* c) const {
        c[0] += sum;
        below.add_to(c + 1);
    }
};
template <>
struct ColumnSums<0> {
    void add(const float*, float) {}
    void add_to(float*) const {}
};

// The rows' values at step l of a panel, `pair` floats apart.
inline const float* panel_step(const float* a, int l) {
    return a + l / pair * aPair + l % pair;
}

template <int rows, class B>
inline void edge_four_columns(int k, const float* a, B b, int column, Matrix<float> c) {
    ColumnSums<rows> sum0, sum1, sum2, sum3;
    for (int l = 0; l < k; ++l) {
        const float* step = panel_step(a, l);
        sum0.add(step, *b.at(column, l));
        sum1.add(step, *b.at(column + 1, l));
        sum2.add(step, *b.at(column + 2, l));
        sum3.add(step, *b.at(column + 3, l));
    }
    sum0.add_to(c.column(column));
    sum1.add_to(c.column(column + 1));
    sum2.add_to(c.column(column + 2));
    sum3.add_to(c.column(column + 3));
}

template <int rows, class B>
inline void edge_rows(int n, int k, const float* a, B b, Matrix<float> c) {
    int column = 0;
    for (; column + 4 <= n; column += 4)
        edge_four_columns<rows>(k, a, b, column, c);
    for (; column < n; ++column) {
        ColumnSums<rows> sum;
        for (int l = 0; l < k; ++l)
            sum.add(panel_step(a, l), *b.at(column, l));
        sum.add_to(c.column(column));
    }
}

template <class B>
inline void multiply(int m, int n, int k, const float* a, std::ptrdiff_t aStride, B b, Matrix<float> c, float* sliver) {
    const int rows = m / rowUnit * rowUnit;
    if (rows > 0)
        multiply_main(rows, n, k, (k + 1) / pair * pair, a, aStride, b, c, sliver);
    const float* lastPanel = a + rows / rowUnit * aStride;
    switch (m - rows) {
    case 1:
        return edge_rows<1>(n, k, lastPanel, b, c.block(rows, 0));
    case 2:
        return edge_rows<2>(n, k, lastPanel, b, c.block(rows, 0));
    case 3:
        return edge_rows<3>(n, k, lastPanel, b, c.block(rows, 0));
    default:
        return;
    }
}

// The plan's micro routine. With B in place the depth may be odd and is then not read past; with B packed it may be
// given padded or not.
inline void micro(const char*, const char* transb, const int* m, const int* n, const int* k, const float*,
                  const float* aPacked, const int* aStride, const float* b, const int* ldb, const float*, float* c,
                  const int* ldc, float* sliver, MicroForm form) {
    const Matrix<float> matrix{c, *ldc};
    if (form == MicroForm::packedB)
        multiply(*m, *n, *k, aPacked, *aStride, PackedColumns{b, *ldb}, matrix, sliver);
    else if (!transposes(*transb))
        multiply(*m, *n, *k, aPacked, *aStride, AlongSteps{b, *ldb}, matrix, sliver);
    else
        multiply(*m, *n, *k, aPacked, *aStride, AcrossSteps{b, *ldb}, matrix, sliver);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD::pairs
