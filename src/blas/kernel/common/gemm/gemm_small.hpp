// C := alpha*op(A)*op(B) + beta*C without packing and without work memory: for problems too small to pack, and for
// the edges of the packed designs.
//
//   op(A) = A    tile 16 rows x 2 columns, the last rows as one tile, up to 8 rows x 4 columns; A comes by vectors of
//                rows, B singly
//   op(A) = A^T  the same, from rows that are brought together on the stack, where enough columns want them. Else tile
//                4 x 2 dot products along k, 4 steps at a time, then the 1 to 3 left; A is entered at a 16-byte
//                boundary where all of the tile's columns share one. op(B) = B^T: its columns are gathered on the stack
//   registers    in 32-bit mode, with 8 of them, the tiles are 8 x 2 and 4 x 1
//   alignment    none assumed
//   reads        nothing past the operands; C only if beta is not 0; A and B only if alpha is not 0
//
// Each result is alpha*sum + beta*C. k goes in blocks (see smallDepth), which matters for long thin operands only.
#pragma once

#include <cstddef>

#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/gemm_pack.hpp"
#include "blas/kernel/common/gemm/gemm_scale_c.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Steps of k per pass over C. A tile meets a new cache line, and with a large leading dimension a new page, at
// each step of a strided operand: this many stay in reach until the next tile wants the rest of each line.
constexpr int smallDepth = 64;

constexpr int vectorRegisters = sizeof(void*) == 8 ? 16 : 8;
constexpr int updateRows = vectorRegisters == 16 ? 16 : 8; // with 2 columns, half of the registers are sums

// One product of the small path: `k` steps of op(A) and op(B), added up for each element of C.
struct SmallProduct {
    int k;
    float alpha;
    float beta; // 0: C is not read
    OpView<const float> a;
    OpView<const float> b;
};

template <int rows>
[[gnu::always_inline]] inline void finish_column(const SmallProduct& p, Vec4f sums, float* c) {
    Vec4f result = Vec4f::splat(p.alpha) * sums;
    if (p.beta != 0)
        result = Vec4f::splat(p.beta) * load_first<rows>(c) + result;
    store_first<rows>(c, result);
}

// Running sums of `rows` rows of some columns of C, by vectors, of which the last one may be partly filled. An element
// of op(B) has 1 or 2 parts, and each part sums of its own.
template <int rows, int columns, int parts = 1>
struct TileSums {
    static constexpr int vectors = (rows + 3) / 4, lastRows = rows - 4 * (vectors - 1);
    static constexpr int allColumns = columns * parts;
    Vec4f sum[allColumns][vectors];

    [[gnu::always_inline]] TileSums() {
        QRV_UNROLL
        for (int s = 0; s < allColumns * vectors; ++s)
            sum[s / vectors][s % vectors] = Vec4f::zero();
    }
    // Of a step: contiguous elements of op(A) times those of op(B), which lie bColumn apart.
    [[gnu::always_inline]] void add(const float* a, const float* b, std::ptrdiff_t bColumn) {
        Vec4f x[vectors];
        QRV_UNROLL
        for (int v = 0; v < vectors - 1; ++v)
            x[v] = Vec4f::load(a + 4 * v);
        x[vectors - 1] = load_first<lastRows>(a + 4 * (vectors - 1));
        QRV_UNROLL
        for (int j = 0; j < allColumns; ++j) {
            const Vec4f y = Vec4f::splat(b[j / parts * bColumn + j % parts]);
            QRV_UNROLL
            for (int v = 0; v < vectors; ++v)
                sum[j][v] = sum[j][v] + x[v] * y;
        }
    }
    [[gnu::always_inline]] void add(const TileSums& other) {
        QRV_UNROLL
        for (int s = 0; s < allColumns * vectors; ++s)
            sum[s / vectors][s % vectors] = sum[s / vectors][s % vectors] + other.sum[s / vectors][s % vectors];
    }
    // Of k steps. A tile of few vectors keeps odd ones apart, so that one sum need not wait for the one before.
    [[gnu::always_inline]] void add_steps(int k, const float* a, std::ptrdiff_t aStep, const float* b,
                                          std::ptrdiff_t bStep, std::ptrdiff_t bColumn) {
        if constexpr (vectors * allColumns <= vectorRegisters / 4) {
            TileSums odd;
            for (; k >= 2; k -= 2, a += aStep, b += bStep) {
                add(a, b, bColumn);
                a += aStep, b += bStep;
                odd.add(a, b, bColumn);
            }
            if (k > 0)
                add(a, b, bColumn);
            add(odd);
        } else {
            for (; k > 0; --k, a += aStep, b += bStep)
                add(a, b, bColumn);
        }
    }
};

// `rows` x `columns` of C at (i, j), the columns of A contiguous.
template <int rows, int columns>
[[gnu::always_inline]] inline void update_tile(const SmallProduct& p, int i, int j, Matrix<float> c) {
    using Sums = TileSums<rows, columns>;
    Sums sums;
    sums.add_steps(p.k, p.a.at(i, 0), p.a.columnStride, p.b.at(0, j), p.b.rowStride, p.b.columnStride);
    const Vec4f alpha = Vec4f::splat(p.alpha), beta = Vec4f::splat(p.beta);
    const auto finish = [&](auto result) __attribute__((always_inline)) {
        QRV_UNROLL
        for (int l = 0; l < columns; ++l) {
            float* out = c.column(j + l) + i;
            QRV_UNROLL
            for (int v = 0; v < Sums::vectors; ++v, out += 4)
                if (v < Sums::vectors - 1)
                    result(Lanes<4>(), alpha * sums.sum[l][v], out);
                else
                    result(Lanes<Sums::lastRows>(), alpha * sums.sum[l][v], out);
        }
    };
    if (p.beta == 0)
        finish([](auto lanes, Vec4f x, float* out) { store_first<lanes()>(out, x); });
    else
        finish([beta](auto lanes, Vec4f x, float* out) {
            store_first<lanes()>(out, beta * load_first<lanes()>(out) + x);
        });
}

// Few rows leave registers to more columns.
template <int rows>
constexpr int updateColumns = rows <= vectorRegisters / 2 ? 4 : 2;

// All columns of `rows` rows.
template <int rows>
void update_columns(const SmallProduct& p, int i, int n, Matrix<float> c) {
    int j = 0;
    if constexpr (updateColumns<rows> == 4)
        for (; n - j >= 4; j += 4)
            update_tile<rows, 4>(p, i, j, c);
    for (; n - j >= 2; j += 2)
        update_tile<rows, 2>(p, i, j, c);
    if (j < n)
        update_tile<rows, 1>(p, i, j, c);
}

// All columns of the last `left` rows, at most `rows` of them: which tile it is, is asked once.
template <int rows>
void update_rest(int left, const SmallProduct& p, int i, int n, Matrix<float> c) {
    if (left == rows)
        update_columns<rows>(p, i, n, c);
    else if constexpr (rows > 1)
        update_rest<rows - 1>(left, p, i, n, c);
}

// A function of its own: beside it in one, dot products of transposed rows took 1.1 to 1.2 times as long.
[[gnu::noinline]] inline void update_all(const SmallProduct& p, int m, int n, Matrix<float> c) {
    const int rest = m % updateRows, whole = m - rest;
    for (int j = 0; j < n && whole > 0; j += 2)
        for (int i = 0; i < whole; i += updateRows)
            n - j >= 2 ? update_tile<updateRows, 2>(p, i, j, c) : update_tile<updateRows, 1>(p, i, j, c);
    if (rest > 0)
        update_rest<updateRows - 1>(rest, p, whole, n, c);
}

// Copies one or two columns of op(B) whose steps lie ldb apart, so that each becomes contiguous, smallDepth floats
// from the other. The last vector of a column is filled up with zeros.
template <int columns>
void gather_columns(int k, const float* b, std::ptrdiff_t ldb, float* gathered) {
    // A row of B holds one step: both columns, or the one there is, in the low half.
    auto store = [&](Vec4f row0, Vec4f row1, Vec4f row2, Vec4f row3) {
        const Vec4f first = low_halves(row0, row1), second = low_halves(row2, row3);
        Vec4f{_mm_shuffle_ps(first.v, second.v, _MM_SHUFFLE(2, 0, 2, 0))}.store_aligned(gathered);
        if constexpr (columns > 1)
            Vec4f{_mm_shuffle_ps(first.v, second.v, _MM_SHUFFLE(3, 1, 3, 1))}.store_aligned(gathered + smallDepth);
    };
    auto row = [&](int l) { return load_first<columns>(b + l * ldb); };
    int left = k;
    for (; left >= 4; left -= 4, b += 4 * ldb, gathered += 4)
        store(row(0), row(1), row(2), row(3));
    const Vec4f none = Vec4f::zero();
    if (left > 0)
        store(row(0), left > 1 ? row(1) : none, left > 2 ? row(2) : none, none);
}

// Up to updateRows rows of op(A), each contiguous in memory: out gets them step by step, updateRows floats apart. Where
// there are no more of four rows, their lanes are 0.
template <int rows>
using GatheredRows = PanelShape<rows, updateRows, 4>;
inline void gather_rows(int rows, int k, const float* a, std::ptrdiff_t ld, float* out) {
    for (; rows >= 4; rows -= 4, a += 4 * ld, out += 4)
        pack_transposed<GatheredRows<4>>(k, a, ld, out, Unscaled());
    if (rows == 3)
        pack_transposed<GatheredRows<3>>(k, a, ld, out, Unscaled());
    else if (rows == 2)
        pack_transposed<GatheredRows<2>>(k, a, ld, out, Unscaled());
    else if (rows == 1)
        pack_transposed<GatheredRows<1>>(k, a, ld, out, Unscaled());
}

// Op(A) transposed, by updates: its rows brought together some at a time.
[[gnu::noinline]] inline void update_transposed(SmallProduct p, int m, int n, Matrix<float> c) {
    alignas(16) float buffer[updateRows * smallDepth];
    const OpView<const float> a = p.a;
    for (int i = 0, rows; i < m; i += rows) {
        rows = smaller(m - i, updateRows);
        gather_rows(rows, p.k, a.at(i, 0), a.rowStride, buffer);
        p.a = {buffer, updateRows, false};
        update_all(p, rows, n, c.block(i, 0));
    }
}

// Running dot products of 1 to 4 rows of op(A) with one column of op(B), four steps of k side by side.
template <int rows>
struct DotSums {
    Vec4f sum0 = Vec4f::zero(), sum1 = sum0, sum2 = sum0, sum3 = sum0;

    template <int steps>
    [[gnu::always_inline]] void add(const float* a, std::ptrdiff_t lda, Vec4f b) {
        sum0 = sum0 + load_first<steps>(a) * b;
        if constexpr (rows > 1)
            sum1 = sum1 + load_first<steps>(a + lda) * b;
        if constexpr (rows > 2)
            sum2 = sum2 + load_first<steps>(a + 2 * lda) * b;
        if constexpr (rows > 3)
            sum3 = sum3 + load_first<steps>(a + 3 * lda) * b;
    }
    Vec4f total() const { return sum_lanes(sum0, sum1, sum2, sum3); }
};

// `rows` x `columns` of C at (i, 0), the rows of op(A) and the columns of op(B) contiguous.
template <int rows, int columns>
void dot_tile(const SmallProduct& p, int i, Matrix<const float> b, Matrix<float> c) {
    DotSums<rows> column0, column1;
    const float* a = p.a.at(i, 0);
    const std::ptrdiff_t lda = p.a.rowStride;
    auto step = [&](auto steps) __attribute__((always_inline)) {
        column0.template add<steps()>(a, lda, load_first<steps()>(b.data));
        if constexpr (columns > 1)
            column1.template add<steps()>(a, lda, load_first<steps()>(b.column(1)));
        a += steps();
        b.data += steps();
    };
    auto short_step = [&](int steps) __attribute__((always_inline)) {
        if (steps == 3)
            step(Lanes<3>());
        else if (steps == 2)
            step(Lanes<2>());
        else if (steps == 1)
            step(Lanes<1>());
    };
    int left = p.k;
    if (left >= peelFrom && lda % 4 == 0) { // else no more than one row of four would be aligned
        const int head = floats_to_boundary(a);
        short_step(head);
        left -= head;
    }
    for (; left >= 4; left -= 4)
        step(Lanes<4>());
    short_step(left);
    finish_column<rows>(p, column0.total(), c.column(0) + i);
    if constexpr (columns > 1)
        finish_column<rows>(p, column1.total(), c.column(1) + i);
}

template <int rows, int columns>
void dot_rows(const SmallProduct& p, int i, Matrix<const float> b, Matrix<float> c) {
    if constexpr (columns == 2 && vectorRegisters < 16) {
        dot_tile<rows, 1>(p, i, b, c);
        dot_tile<rows, 1>(p, i, b.block(0, 1), c.block(0, 1));
    } else {
        dot_tile<rows, columns>(p, i, b, c);
    }
}

template <int columns>
void dot_columns(const SmallProduct& p, int m, Matrix<const float> b, Matrix<float> c) {
    int i = 0;
    for (; m - i >= 4; i += 4)
        dot_rows<4, columns>(p, i, b, c);
    if (m - i == 3)
        dot_rows<3, columns>(p, i, b, c);
    else if (m - i == 2)
        dot_rows<2, columns>(p, i, b, c);
    else if (m - i == 1)
        dot_rows<1, columns>(p, i, b, c);
}

template <int columns>
void transposed_columns(const SmallProduct& p, int m, int j, Matrix<float> c) {
    if (p.b.columns_contiguous())
        return dot_columns<columns>(p, m, {p.b.at(0, j), p.b.columnStride}, c.block(0, j));
    alignas(16) float gathered[columns * smallDepth];
    gather_columns<columns>(p.k, p.b.at(0, j), p.b.rowStride, gathered);
    dot_columns<columns>(p, m, {gathered, smallDepth}, c.block(0, j));
}

// Whether rows that are brought together for updates repay that: so many columns want them, and of dot products with
// columns that are contiguous in the first place only few steps are slower.
constexpr bool pays_gathered_rows(int m, int n, int k, bool contiguousColumns) {
    if (contiguousColumns && m <= 8 && k > 16)
        return false;
    return n >= (m > 8 ? 2 : 6) + k / (contiguousColumns ? 2 : 4);
}

// The product `p` for an m x n matrix C, block by block along k. It is used up on the way: a copy of so small a
// record costs a tiny product a tenth of its time, since vector loads wait for the scalar stores before them.
inline void multiply_small(int m, int n, SmallProduct&& p, Matrix<float> c) {
    for (int left = p.k; left > 0; left -= p.k) {
        p.k = left < smallDepth ? left : smallDepth;
        if (p.a.columns_contiguous()) {
            update_all(p, m, n, c);
        } else if (pays_gathered_rows(m, n, p.k, p.b.columns_contiguous())) {
            update_transposed(p, m, n, c);
        } else {
            int j = 0;
            for (; n - j >= 2; j += 2)
                transposed_columns<2>(p, m, j, c);
            if (j < n)
                transposed_columns<1>(p, m, j, c);
        }
        p.a.data = p.a.at(0, p.k);
        p.b.data = p.b.at(p.k, 0);
        p.beta = 1;
    }
}

[[gnu::always_inline]] inline void gemm_small(const GemmCall<float>& p) {
    if (p.is_empty())
        return;
    if (p.adds_nothing())
        return gemm_scale_c(p.m, p.n, p.beta, p.c);
    multiply_small(p.m, p.n, {p.k, p.alpha, p.beta, p.view_of_a(), p.view_of_b()}, p.c);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
