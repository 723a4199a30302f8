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

// One product of the small path: `k` steps of op(A) and op(B), added up for each element of C.
struct SmallProduct {
    int k;
    float alpha;
    float beta; // 0: C is not read
    OpView<const float> a;
    OpView<const float> b;
};

inline bool transposes(char option) {
    return option != 'N' && option != 'n';
}

template <int rows>
void finish_column(const SmallProduct& p, Vec4f sums, float* c) {
    Vec4f result = Vec4f::splat(p.alpha) * sums;
    if (p.beta != 0)
        result = Vec4f::splat(p.beta) * load_first<rows>(c) + result;
    store_first<rows>(c, result);
}

// `rows` x `columns` of C at (i, j), the columns of A contiguous.
template <int rows, int columns>
void update_tile(const SmallProduct& p, int i, int j, Matrix<float> c) {
    constexpr int lowRows = rows < 4 ? rows : 4;
    constexpr int highRows = rows - lowRows;
    Vec4f low0 = Vec4f::zero(), high0 = low0, low1 = low0, high1 = low0;
    const float* a = p.a.at(i, 0);
    const float* b0 = p.b.at(0, j);
    const float* b1 = b0 + p.b.columnStride;
    for (int l = 0; l < p.k; ++l) {
        const Vec4f low = load_first<lowRows>(a);
        const Vec4f x0 = Vec4f::splat(*b0);
        low0 = low0 + low * x0;
        if constexpr (highRows > 0)
            high0 = high0 + load_first<highRows>(a + 4) * x0;
        if constexpr (columns > 1) {
            const Vec4f x1 = Vec4f::splat(*b1);
            low1 = low1 + low * x1;
            if constexpr (highRows > 0)
                high1 = high1 + load_first<highRows>(a + 4) * x1;
        }
        a += p.a.columnStride;
        b0 += p.b.rowStride;
        b1 += p.b.rowStride;
    }
    finish_column<lowRows>(p, low0, c.column(j) + i);
    if constexpr (highRows > 0)
        finish_column<highRows>(p, high0, c.column(j) + i + 4);
    if constexpr (columns > 1) {
        finish_column<lowRows>(p, low1, c.column(j + 1) + i);
        if constexpr (highRows > 0)
            finish_column<highRows>(p, high1, c.column(j + 1) + i + 4);
    }
}

template <int columns>
void update_columns(const SmallProduct& p, int m, int j, Matrix<float> c) {
    int i = 0;
    for (; m - i >= 8; i += 8)
        update_tile<8, columns>(p, i, j, c);
    // clang-format off
    switch (m - i) {
    case 7: return update_tile<7, columns>(p, i, j, c);
    case 6: return update_tile<6, columns>(p, i, j, c);
    case 5: return update_tile<5, columns>(p, i, j, c);
    case 4: return update_tile<4, columns>(p, i, j, c);
    case 3: return update_tile<3, columns>(p, i, j, c);
    case 2: return update_tile<2, columns>(p, i, j, c);
    case 1: return update_tile<1, columns>(p, i, j, c);
    default: return;
    }
    // clang-format on
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

// `rows` x `columns` of C at (i, j), the rows of op(A) contiguous.
template <int rows, int columns, bool bTransposed>
void dot_tile(const SmallProduct& p, int i, int j, Matrix<float> c) {
    Vec4f sum00 = Vec4f::zero(), sum10 = sum00, sum01 = sum00, sum11 = sum00;
    const float* a0 = p.a.at(i, 0);
    const float* a1 = a0 + p.a.rowStride;
    const float* b = p.b.at(0, j);
    const std::ptrdiff_t ldb = bTransposed ? p.b.rowStride : p.b.columnStride;
    const std::ptrdiff_t bStep = bTransposed ? ldb : 1;
    auto step = [&](auto steps) __attribute__((always_inline)) {
        Vec4f b0, b1;
        load_b<steps(), columns, bTransposed>(b, ldb, b0, b1);
        const Vec4f x0 = load_first<steps()>(a0);
        sum00 = sum00 + x0 * b0;
        if constexpr (columns > 1)
            sum01 = sum01 + x0 * b1;
        if constexpr (rows > 1) {
            const Vec4f x1 = load_first<steps()>(a1);
            sum10 = sum10 + x1 * b0;
            if constexpr (columns > 1)
                sum11 = sum11 + x1 * b1;
        }
        a0 += steps();
        a1 += steps();
        b += steps() * bStep;
    };
    int left = p.k;
    if (left >= peelFrom)
        for (int head = floats_to_boundary(a0); head > 0; --head, --left)
            step(Lanes<1>());
    for (; left >= 4; left -= 4)
        step(Lanes<4>());
    if (left & 2)
        step(Lanes<2>());
    if (left & 1)
        step(Lanes<1>());
    const Vec4f sums = sum_lanes(sum00, sum10, sum01, sum11);
    finish_column<rows>(p, sums, c.column(j) + i);
    if constexpr (columns > 1)
        finish_column<rows>(p, high_halves(sums, sums), c.column(j + 1) + i);
}

template <int columns, bool bTransposed>
void dot_columns(const SmallProduct& p, int m, int j, Matrix<float> c) {
    int i = 0;
    for (; m - i >= 2; i += 2)
        dot_tile<2, columns, bTransposed>(p, i, j, c);
    if (i < m)
        dot_tile<1, columns, bTransposed>(p, i, j, c);
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
