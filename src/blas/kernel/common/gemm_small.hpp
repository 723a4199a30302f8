// C := alpha*op(A)*op(B) + beta*C without packing and without work memory: for problems too small to pack, and for
// the edges of the packed designs.
//
//   op(A) = A    tile 8 rows x 2 columns, the last 1 to 7 rows as one tile; A comes by vectors of rows, B singly
//   op(A) = A^T  tile 2 x 2 dot products along k, 4 steps at a time, then 2 and 1; each A column of a depth worth it
//                is entered at a 16-byte boundary
//   alignment    none assumed
//   reads        nothing past the operands; C only if beta is not 0; A and B only if alpha is not 0
//
// Each result is alpha*sum + beta*C. k goes in blocks (see smallDepth), which matters for long thin operands only.
#pragma once

#include <cstddef>

#include "blas/kernel/common/gemm_scale_c.hpp"
#include "blas/kernel/common/vec4f.hpp"
#include "blas/kernel/kernels.hpp"
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

// Running sums of `rows` rows of one column of C, by vectors; the last one may be partly filled.
template <int rows>
struct ColumnSums {
    static constexpr int lanes = rows < 4 ? rows : 4;
    Vec4f sum = Vec4f::zero();
    ColumnSums<rows - lanes> below;

    [[gnu::always_inline]] void add(const float* a, Vec4f b) {
        sum = sum + load_first<lanes>(a) * b;
        below.add(a + 4, b);
    }
    [[gnu::always_inline]] void add(const ColumnSums& other) {
        sum = sum + other.sum;
        below.add(other.below);
    }
    [[gnu::always_inline]] void finish(const SmallProduct& p, float* c) const {
        finish_column<lanes>(p, sum, c);
        below.finish(p, c + 4);
    }
};
template <>
struct ColumnSums<0> {
    void add(const float*, Vec4f) {}
    void add(const ColumnSums&) {}
    void finish(const SmallProduct&, float*) const {}
};

// `rows` x `columns` of C at (i, j), the columns of A contiguous. A tile of few vectors keeps odd steps of k apart,
// so that one sum need not wait for the one before.
template <int rows, int columns>
void update_tile(const SmallProduct& p, int i, int j, Matrix<float> c) {
    constexpr bool splitSteps = (rows + 3) / 4 * columns <= vectorRegisters / 4;
    ColumnSums<rows> even0, even1, odd0, odd1;
    const float* a = p.a.at(i, 0);
    const float* b = p.b.at(0, j);
    auto step = [&](ColumnSums<rows> & sums0, ColumnSums<rows> & sums1) __attribute__((always_inline)) {
        sums0.add(a, Vec4f::splat(b[0]));
        if constexpr (columns > 1)
            sums1.add(a, Vec4f::splat(b[p.b.columnStride]));
        a += p.a.columnStride;
        b += p.b.rowStride;
    };
    int left = p.k;
    if constexpr (splitSteps)
        for (; left >= 2; left -= 2) {
            step(even0, even1);
            step(odd0, odd1);
        }
    for (; left > 0; --left)
        step(even0, even1);
    if constexpr (splitSteps) {
        even0.add(odd0);
        even1.add(odd1);
    }
    even0.finish(p, c.column(j) + i);
    if constexpr (columns > 1)
        even1.finish(p, c.column(j + 1) + i);
}

// The last `left` rows, at most `rows` of them, as one tile.
template <int rows, int columns>
void update_rest(int left, const SmallProduct& p, int i, int j, Matrix<float> c) {
    if (left == rows)
        update_tile<rows, columns>(p, i, j, c);
    else if constexpr (rows > 1)
        update_rest<rows - 1, columns>(left, p, i, j, c);
}

template <int columns>
void update_columns(const SmallProduct& p, int m, int j, Matrix<float> c) {
    int i = 0;
    for (; m - i >= updateRows; i += updateRows)
        update_tile<updateRows, columns>(p, i, j, c);
    update_rest<updateRows - 1, columns>(m - i, p, i, j, c);
}

// `steps` steps of k of one or two adjacent columns of op(B), each column as one vector.
template <int steps, int columns, bool transposed>
[[gnu::always_inline]] inline void load_b(const float* b, std::ptrdiff_t ldb, Vec4f& column0, Vec4f& column1) {
    if constexpr (!transposed) {
        column0 = load_first<steps>(b);
        if constexpr (columns > 1)
            column1 = load_first<steps>(b + ldb);
    } else {
        // A row of B holds one step: both columns, or the one there is, in the low half.
        auto row = [=](int l) { return l < steps ? load_first<columns>(b + l * ldb) : Vec4f::zero(); };
        const Vec4f first = low_halves(row(0), row(1)), second = low_halves(row(2), row(3));
        column0 = {_mm_shuffle_ps(first.v, second.v, _MM_SHUFFLE(2, 0, 2, 0))};
        column1 = {_mm_shuffle_ps(first.v, second.v, _MM_SHUFFLE(3, 1, 3, 1))};
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

// `rows` x `columns` of C at (i, j), the rows of op(A) contiguous.
template <int rows, int columns, bool bTransposed>
void dot_tile(const SmallProduct& p, int i, int j, Matrix<float> c) {
    DotSums<rows> column0, column1;
    const float* a = p.a.at(i, 0);
    const float* b = p.b.at(0, j);
    const std::ptrdiff_t lda = p.a.rowStride;
    const std::ptrdiff_t ldb = bTransposed ? p.b.rowStride : p.b.columnStride;
    auto step = [&](auto steps) __attribute__((always_inline)) {
        Vec4f b0, b1;
        load_b<steps(), columns, bTransposed>(b, ldb, b0, b1);
        column0.template add<steps()>(a, lda, b0);
        if constexpr (columns > 1)
            column1.template add<steps()>(a, lda, b1);
        a += steps();
        b += steps() * (bTransposed ? ldb : 1);
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
    finish_column<rows>(p, column0.total(), c.column(j) + i);
    if constexpr (columns > 1)
        finish_column<rows>(p, column1.total(), c.column(j + 1) + i);
}

template <int rows, int columns, bool bTransposed>
void dot_rows(const SmallProduct& p, int i, int j, Matrix<float> c) {
    if constexpr (columns == 2 && vectorRegisters < 16) {
        dot_tile<rows, 1, bTransposed>(p, i, j, c);
        dot_tile<rows, 1, bTransposed>(p, i, j + 1, c);
    } else {
        dot_tile<rows, columns, bTransposed>(p, i, j, c);
    }
}

template <int columns, bool bTransposed>
void dot_columns(const SmallProduct& p, int m, int j, Matrix<float> c) {
    int i = 0;
    for (; m - i >= 4; i += 4)
        dot_rows<4, columns, bTransposed>(p, i, j, c);
    if (m - i == 3)
        dot_rows<3, columns, bTransposed>(p, i, j, c);
    else if (m - i == 2)
        dot_rows<2, columns, bTransposed>(p, i, j, c);
    else if (m - i == 1)
        dot_rows<1, columns, bTransposed>(p, i, j, c);
}

template <int columns>
void small_columns(const SmallProduct& p, int m, int j, Matrix<float> c) {
    if (p.a.columns_contiguous())
        update_columns<columns>(p, m, j, c);
    else if (p.b.columns_contiguous())
        dot_columns<columns, false>(p, m, j, c);
    else
        dot_columns<columns, true>(p, m, j, c);
}

// The product `p` for an m x n matrix C, block by block along k.
inline void multiply_small(int m, int n, SmallProduct p, Matrix<float> c) {
    for (int left = p.k; left > 0; left -= p.k) {
        p.k = left < smallDepth ? left : smallDepth;
        int j = 0;
        for (; n - j >= 2; j += 2)
            small_columns<2>(p, m, j, c);
        if (j < n)
            small_columns<1>(p, m, j, c);
        p.a = p.a.block(0, p.k);
        p.b = p.b.block(p.k, 0);
        p.beta = 1;
    }
}

inline void gemm_small(QRV_GEMM_PARAMETERS(float)) {
    if (*m <= 0 || *n <= 0)
        return;
    if (*k <= 0 || *alpha == 0) {
        if (*beta != 1)
            gemm_scale_c(m, n, beta, c, ldc);
        return;
    }
    const SmallProduct product{*k, *alpha, *beta, {a, *lda, transposes(*transa)}, {b, *ldb, transposes(*transb)}};
    multiply_small(*m, *n, product, Matrix<float>{c, *ldc});
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
