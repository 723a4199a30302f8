// C := alpha*op(A)*op(B) + beta*C by dot products along k, for a C of few rows or few columns: vectors of rows would be
// mostly empty, or A^T transposed for the sake of few columns.
//
//   tile       up to 4 rows x up to 4 columns of C, dealt out evenly, Vector::lanes steps of k at a time, the last ones
//              by a mask
//   operands   rows of op(A) and columns of op(B) contiguous. One of them may have its few rows or columns, dotsMost at
//              most, brought together in a buffer on the stack, steps in blocks
//   alignment  none assumed
//   reads      nothing past the operands; C only if beta is not 0
#pragma once

#include <cstddef>

#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "blas/kernel/common/gemm/gemm_wide.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Rows or columns of C that count as few: half a vector.
template <class Vector>
constexpr int dotsMost = Vector::lanes / 2;
// Steps that repay adding up the lanes, at least.
template <class Vector>
constexpr int dotsDepth = 2 * Vector::lanes;
constexpr int dotsBlock = 384; // steps that are brought together at once

// Whether it pays to bring a few rows together, respectively columns, for so many others.
template <class Vector>
constexpr bool pays_gathered(int few, int others, int steps) {
    if (few <= 2) // for any number
        return steps >= 32;
    if (few <= 4)
        return others >= 64 ? steps >= 32 : steps >= (others >= 8 ? 64 : 256);
    return few <= dotsMost<Vector> && (others >= 64 ? steps >= 4 * Vector::lanes : others >= 16 && steps >= 128);
}
// Whether rows and columns that are contiguous anyway go by dots: few of them, for which tiles of many others would be
// brought together, and more of them where the sums are longer.
template <class Vector>
constexpr bool pays_contiguous(int m, int n, int steps) {
    const int few = smaller(m, n);
    return (few <= dotsMost<Vector> && (steps >= smaller(8 * few, 48) || larger(m, n) < 2 * Vector::lanes)) ||
           (steps >= 2048 / Vector::lanes && (n <= Vector::lanes || m <= Vector::lanes / 4 * 3)) ||
           (steps >= 512 && m <= 32 && n <= 32);
}
template <class Vector>
constexpr bool pays_by_dots(bool transposedA, bool transposedB, int m, int n, int k) {
    if (k < dotsDepth<Vector>)
        return false;
    if (transposedA)
        return transposedB ? pays_gathered<Vector>(n, m, k) : pays_contiguous<Vector>(m, n, k);
    return !transposedB && pays_gathered<Vector>(m, n, k);
}

// A vector loaded for `uses` products: for two or three of them the compiler would load it each time.
template <int uses, class Vector>
QRV_INLINE Vector once_for(Vector x) {
    if constexpr (Vector::lanes == 16 && (uses == 2 || uses == 3))
        return loaded_once(x);
    else
        return x;
}

struct DotProduct {
    std::ptrdiff_t aRow, bColumn; // from one row of op(A), respectively column of op(B), to the next
    int k;
    float alpha, beta;
};

// `rows` x `columns` of C, 4 rows at most.
template <class Vector, int rows, int columns>
void dot_tile(const DotProduct& p, const float* a, const float* b, float* c, std::ptrdiff_t ldc) {
    const float* row[rows];
    QRV_UNROLL
    for (int i = 0; i < rows; ++i)
        row[i] = a + i * p.aRow;
    Vector sums[columns][4];
    QRV_UNROLL
    for (int j = 0; j < columns; ++j)
        QRV_UNROLL
    for (int i = 0; i < 4; ++i)
        sums[j][i] = Vector::zero();
    const auto step = [&](auto load) __attribute__((always_inline)) {
        Vector x[rows];
        QRV_UNROLL
        for (int i = 0; i < rows; ++i)
            x[i] = once_for<columns>(load(row[i]));
        QRV_UNROLL
        for (int j = 0; j < columns; ++j) {
            const Vector y = once_for<rows>(load(b + j * p.bColumn));
            QRV_UNROLL
            for (int i = 0; i < rows; ++i)
                sums[j][i] = multiply_add(x[i], y, sums[j][i]);
        }
    };
    int l = 0;
    for (; p.k - l >= Vector::lanes; l += Vector::lanes)
        step([=](const float* x) { return Vector::load(x + l); });
    if (l < p.k) {
        const typename Vector::Mask mask = Vector::Mask::first(p.k - l);
        step([=](const float* x) { return load_kept(x + l, mask); });
    }
    const __m128 alpha = _mm_set1_ps(p.alpha), beta = _mm_set1_ps(p.beta);
    const auto finish = [&](__m128 sum, auto old) __attribute__((always_inline)) {
        sum = _mm_mul_ps(alpha, sum);
        return p.beta == 0 ? sum : _mm_add_ps(_mm_mul_ps(beta, old()), sum);
    };
    constexpr int paired = rows == 2 ? columns / 2 * 2 : 0; // columns that share a quad
    QRV_UNROLL
    for (int j = 0; j < paired; j += 2, c += 2 * ldc) {
        auto *first = reinterpret_cast<__m64*>(c), *second = reinterpret_cast<__m64*>(c + ldc);
        const __m128 x = finish(lane_sums(sums[j][0], sums[j][1], sums[j + 1][0], sums[j + 1][1]),
                                [=] { return _mm_loadh_pi(_mm_loadl_pi(_mm_setzero_ps(), first), second); });
        _mm_storel_pi(first, x);
        _mm_storeh_pi(second, x);
    }
    QRV_UNROLL
    for (int j = paired; j < columns; ++j, c += ldc) {
        const __m128 x =
            finish(lane_sums(sums[j][0], sums[j][1], sums[j][2], sums[j][3]), [=] { return load_first<rows>(c).v; });
        store_first<rows>(c, {x}); // whole stores: the next column waits for a masked one
    }
}

// All columns of `rows` rows, `columns` at most at a time.
template <class Vector, int rows, int columns>
QRV_INLINE void dot_columns(const DotProduct& p, int n, const float* a, const float* b, float* c, std::ptrdiff_t ldc) {
    for (; n >= 2 * columns || n == columns; n -= columns, b += columns * p.bColumn, c += columns * ldc)
        dot_tile<Vector, rows, columns>(p, a, b, c, ldc);
    if constexpr (columns > 1)
        for (int share; n > 0; n -= share, b += share * p.bColumn, c += share * ldc) {
            share = even_share(n, columns);
            if (share == columns)
                dot_tile<Vector, rows, columns>(p, a, b, c, ldc);
            else if (share == 3)
                dot_tile<Vector, rows, smaller(3, columns)>(p, a, b, c, ldc);
            else if (share == 2)
                dot_tile<Vector, rows, smaller(2, columns)>(p, a, b, c, ldc);
            else
                dot_tile<Vector, rows, 1>(p, a, b, c, ldc);
        }
}

template <class Vector>
QRV_INLINE void dot_tiles(const DotProduct& p, int m, int n, const float* a, const float* b, Matrix<float> c) {
    constexpr int most = sizeof(void*) == 4 ? 1 : Vector::lanes == 16 ? 4 : 2; // of 8, 32 and 16 registers
    for (int i = 0, rows; i < m; i += rows) {
        rows = even_share(m - i, 4);
        if (rows == 4)
            dot_columns<Vector, 4, most>(p, n, a + i * p.aRow, b, &c(i, 0), c.ld);
        else if (rows == 3)
            dot_columns<Vector, 3, most>(p, n, a + i * p.aRow, b, &c(i, 0), c.ld);
        else if (rows == 2)
            dot_columns<Vector, 2, most>(p, n, a + i * p.aRow, b, &c(i, 0), c.ld);
        else
            dot_columns<Vector, 1, most>(p, n, a + i * p.aRow, b, &c(i, 0), c.ld);
    }
}

// `count` rows, or columns, of which the steps lie ld floats apart, each contiguous, dotsBlock floats from the next.
inline void bring_steps_together(int count, int k, const float* x, std::ptrdiff_t ld, float* out) {
    const int quads = k / 4 * 4;
    for (int i = 0; i < count; i += 4, x += 4, out += 4 * dotsBlock) {
        const int rows = smaller(4, count - i);
        const auto step = [=](int l) { return rows == 4 ? _mm_loadu_ps(x + l * ld) : load_quad(x + l * ld, rows); };
        for (int l = 0; l < quads; l += 4) {
            __m128 a = step(l), b = step(l + 1), c = step(l + 2), d = step(l + 3);
            _MM_TRANSPOSE4_PS(a, b, c, d);
            _mm_store_ps(out + l, a);
            _mm_store_ps(out + dotsBlock + l, b); // of rows that there are not: into a buffer of whole quads of them
            _mm_store_ps(out + 2 * dotsBlock + l, c);
            _mm_store_ps(out + 3 * dotsBlock + l, d);
        }
        for (int j = 0; j < rows; ++j)
            for (int l = quads; l < k; ++l)
                out[j * dotsBlock + l] = x[j + l * ld];
    }
}

template <class Vector>
[[gnu::noinline]] void gemm_by_dots(GemmCall<float> call) {
    const bool gatherA = !transposes(call.opA), gatherB = transposes(call.opB);
    const std::ptrdiff_t stepA = call.a.ld, stepB = call.b.ld;
    const int block = gatherA || gatherB ? dotsBlock : call.k;
    DotProduct p{gatherA ? dotsBlock : stepA, gatherB ? dotsBlock : stepB, 0, call.alpha, call.beta};
    alignas(64) float buffer[dotsMost<Vector> * dotsBlock];
    for (int l = 0; l < call.k; l += p.k, p.beta = 1) {
        p.k = smaller(block, call.k - l);
        const float* aBlock = call.a.data + (gatherA ? l * stepA : l);
        const float* bBlock = call.b.data + (gatherB ? l * stepB : l);
        if (gatherA) {
            bring_steps_together(call.m, p.k, aBlock, stepA, buffer);
            aBlock = buffer;
        } else if (gatherB) {
            bring_steps_together(call.n, p.k, bBlock, stepB, buffer);
            bBlock = buffer;
        }
        dot_tiles<Vector>(p, call.m, call.n, aBlock, bBlock, call.c);
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
