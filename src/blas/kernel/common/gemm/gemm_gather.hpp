// The steps of some rows of op(A) brought together: each a few whole vectors, aligned, in a buffer of the caller's.
//
//   transpose_tile  rows that are contiguous along k: A^T. Complex ones too
//   copy_tile       steps that are contiguous: A
//   reads           nothing past the operand
#pragma once

#include <cstddef>

#include "blas/complex.hpp"
#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "blas/kernel/common/gemm/gemm_wide_complex.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// In each quad of lanes, lane i of x[j] becomes lane j of x[i].
template <class Vector>
QRV_INLINE void transpose_four(Vector (&x)[4]) {
    const Vector low01 = low_pairs(x[0], x[1]), high01 = high_pairs(x[0], x[1]);
    const Vector low23 = low_pairs(x[2], x[3]), high23 = high_pairs(x[2], x[3]);
    x[0] = low_halves(low01, low23);
    x[1] = high_halves(low01, low23);
    x[2] = low_halves(high01, high23);
    x[3] = high_halves(high01, high23);
}

// Lane i of x[j] becomes lane j of x[i].
template <class Vector>
QRV_INLINE void transpose_square(Vector (&x)[Vector::lanes]) {
    constexpr int quads = Vector::quads;
    QRV_UNROLL
    for (int q = 0; q < quads; ++q) {
        Vector four[4] = {x[4 * q], x[4 * q + 1], x[4 * q + 2], x[4 * q + 3]};
        transpose_four(four);
        QRV_UNROLL
        for (int s = 0; s < 4; ++s)
            x[4 * q + s] = four[s];
    }
    QRV_UNROLL
    for (int s = 0; s < 4; ++s) {
        Vector step[quads];
        QRV_UNROLL
        for (int q = 0; q < quads; ++q)
            step[q] = x[4 * q + s];
        transpose_quads(step);
        QRV_UNROLL
        for (int q = 0; q < quads; ++q)
            x[4 * q + s] = step[q];
    }
}

// Steps 0 to k-1 of the `rows` rows of one vector, each contiguous in memory, ld floats apart: a line of each row at a
// time, and the last few steps by fours. Where there are no more rows, lanes are filled from the last one.
template <class Vector, bool whole>
void transpose_vector(int rows, int k, const float* a, std::ptrdiff_t ld, float* out, std::ptrdiff_t outStep) {
    constexpr int lanes = Vector::lanes, byFours = lanes == 16 ? 12 : 4;
    const auto each_row = [&](int l, auto body) __attribute__((always_inline)) {
        const float* row = a + l;
        QRV_UNROLL
        for (int i = 0; i < lanes; ++i) {
            body(i, row);
            if (whole || i + 1 < rows)
                row += ld;
        }
    };
    const auto transpose = [&](int l, auto load) __attribute__((always_inline)) {
        Vector x[lanes];
        each_row(
            l, [&](int i, const float* row) __attribute__((always_inline)) { x[i] = load(row); });
        transpose_square(x);
        QRV_UNROLL
        for (int s = 0; s < lanes; ++s)
            if (l + s < k)
                x[s].store_aligned(out + (l + s) * outStep);
    };
    const auto transpose_quad = [&](int l, auto load) __attribute__((always_inline)) {
        __m128 quad[4][Vector::quads];
        each_row(
            l, [&](int i, const float* row) __attribute__((always_inline)) { quad[i % 4][i / 4] = load(row); });
        Vector x[4] = {join(quad[0]), join(quad[1]), join(quad[2]), join(quad[3])};
        transpose_four(x);
        QRV_UNROLL
        for (int s = 0; s < 4; ++s)
            if (l + s < k)
                x[s].store_aligned(out + (l + s) * outStep);
    };
    int l = 0;
    for (; k - l >= lanes; l += lanes)
        transpose(l, [](const float* p) { return Vector::load(p); });
    if (k - l <= byFours) {
        for (; k - l >= 4; l += 4)
            transpose_quad(l, [](const float* p) { return _mm_loadu_ps(p); });
        if (l < k)
            transpose_quad(l, [left = k - l](const float* p) { return load_quad(p, left); });
    } else if (l < k) {
        transpose(l, [mask = Vector::Mask::first(k - l)](const float* p) { return load_kept(p, mask); });
    }
}

// The same of complex rows, as many as the vector holds pairs of floats.
template <class Vector, bool whole>
void transpose_complex_vector(int rows, int k, const float* a, std::ptrdiff_t ld, float* out, std::ptrdiff_t outStep) {
    constexpr int pairs = Vector::lanes / 2;
    const float* row[pairs];
    QRV_UNROLL
    for (int i = 0; i < pairs; ++i)
        row[i] = a + (whole ? i : smaller(i, rows - 1)) * ld;
    for (int l = 0; l < k; l += pairs) {
        Vector steps[pairs];
        transpose_pairs<Vector>(row, l, k - l, steps);
        QRV_UNROLL
        for (int s = 0; s < pairs; ++s)
            steps[s].store_aligned(out + (l + s) * outStep);
    }
}

// The same of up to `vectors` vectors of rows, side by side.
template <class Vector, class T>
QRV_INLINE void transpose_tile(int rows, int vectors, int k, const float* a, std::ptrdiff_t ld, float* out) {
    constexpr int vectorRows = Vector::lanes / floatsIn<T>;
    const std::ptrdiff_t outStep = vectors * Vector::lanes;
    const auto transpose = [&](auto whole) __attribute__((always_inline)) {
        if constexpr (isComplex<T>)
            transpose_complex_vector<Vector, whole()>(smaller(rows, vectorRows), k, a, ld, out, outStep);
        else
            transpose_vector<Vector, whole()>(smaller(rows, vectorRows), k, a, ld, out, outStep);
    };
    for (rows /= floatsIn<T>; rows >= vectorRows; rows -= vectorRows, a += vectorRows * ld, out += Vector::lanes)
        transpose(Lanes<true>());
    if (rows > 0)
        transpose(Lanes<false>());
}

// Where it is the steps that are contiguous: a copy.
template <class Vector>
QRV_INLINE void copy_tile(int rows, int vectors, int k, const float* a, std::ptrdiff_t ld, float* out) {
    const typename Vector::Mask mask = Vector::Mask::first(rows - (vectors - 1) * Vector::lanes);
    for (int l = 0; l < k; ++l, a += ld) {
        for (int v = 0; v < vectors - 1; ++v, out += Vector::lanes)
            Vector::load(a + v * Vector::lanes).store_aligned(out);
        load_kept(a + (vectors - 1) * Vector::lanes, mask).store_aligned(out);
        out += Vector::lanes;
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
