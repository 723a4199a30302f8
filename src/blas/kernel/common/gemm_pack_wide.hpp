// Packing of A for the wide forms: the layout of gemm_pack.hpp, whole lines at a time.
//
//   panel   four rows of op(A), `stride` floats apart; step l takes four consecutive floats, 16-byte aligned
//   k       filled up with zero steps to a multiple of kStep
//   last    with r rows left only the first r lanes of a step are stored
//   reads   nothing outside the operand
#pragma once

#include "blas/kernel/common/gemm_wide.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Rows packed side by side. Columns of A and panels often lie a multiple of a page apart, where lines of the same row
// compete for few places in the innermost cache: two lines of each column at a time and eight panels still fit, and
// the neighbour of a line is fetched with it.
constexpr int packRows = 32;

// Steps l to l + Vector::quads - 1 of as many rows as a vector has lanes (fewer unless Full), stored by columns. Steps
// from `count` on are zero.
template <class Vector, bool Full>
QRV_INLINE void pack_steps(int rows, int count, const float* a, std::ptrdiff_t lda, float* out, std::ptrdiff_t stride,
                           Vector alpha) {
    Vector x[Vector::quads];
    QRV_UNROLL
    for (int s = 0; s < Vector::quads; ++s)
        x[s] = s < count ? alpha * (Full ? Vector::load(a + s * lda) : load_rows(a + s * lda, rows)) : Vector::zero();
    transpose_quads(x);
    const int panels = (rows + panelRows - 1) / panelRows;
    QRV_UNROLL
    for (int p = 0; p < Vector::quads; ++p) {
        if (Full || p < panels - 1)
            x[p].store(out + p * stride);
        else if (p == panels - 1)
            store_kept(out + p * stride, x[p], typename Vector::Mask(panelRows, rows - panelRows * p));
    }
}

// All steps of `Vectors` full vectors of rows, or of one that is not full.
template <class Vector, int Vectors, bool Full>
void pack_columns(int rows, int k, const float* a, std::ptrdiff_t lda, float* out, std::ptrdiff_t stride,
                  Vector alpha) {
    constexpr int steps = Vector::quads;
    const auto pack = [&](int l, int count) {
        QRV_UNROLL
        for (int v = 0; v < Vectors; ++v)
            pack_steps<Vector, Full>(rows, count, a + v * Vector::lanes + l * lda, lda,
                                     out + v * Vector::quads * stride + l * panelRows, stride, alpha);
    };
    int l = 0;
    for (; l + steps <= k; l += steps)
        pack(l, steps);
    for (; l < round_up(k, kStep); l += steps)
        pack(l, k - l);
}

// One panel (of fewer than four rows unless Full) whose rows are stored as columns.
template <class Vector, bool Full>
void pack_rows(int rows, int k, const float* a, std::ptrdiff_t lda, float* out, Vector alpha) {
    const typename Vector::Mask kept(panelRows, rows);
    const float* row[panelRows];
    QRV_UNROLL
    for (int i = 0; i < panelRows; ++i)
        row[i] = a + smaller(i, rows - 1) * lda;
    const auto pack_steps = [&](int l, int count) {
        Vector x[kStep / Vector::quads];
        transpose_rows(row, l, count, x);
        QRV_UNROLL
        for (int v = 0; v < kStep / Vector::quads; ++v) {
            float* line = out + l * panelRows + v * Vector::lanes;
            Vector scaled = alpha * x[v];
            if (count < kStep) // an infinite alpha would make a NaN of a step's zeros
                scaled = scaled.kept({Vector::lanes, panelRows * count - v * Vector::lanes});
            if (Full)
                scaled.store(line);
            else
                store_kept(line, scaled, kept);
        }
    };
    int l = 0;
    for (; l + kStep <= k; l += kStep)
        pack_steps(l, kStep);
    if (l < k)
        pack_steps(l, k - l);
}

template <class Vector>
void copy_an(const int* m, const int* k, const float* a, const int* lda, float* buffer, const int* stride,
             const float* alpha) {
    const Vector factor = Vector::splat(*alpha);
    const std::ptrdiff_t ld = *lda, panelStride = *stride;
    int i = 0;
    const auto pack = [&](auto pack_rows_of, int rows) {
        pack_rows_of(rows, *k, a + i, ld, buffer + i / panelRows * panelStride, panelStride, factor);
        i += rows;
    };
    while (i + packRows <= *m)
        pack(pack_columns<Vector, packRows / Vector::lanes, true>, packRows);
    while (i + Vector::lanes <= *m)
        pack(pack_columns<Vector, 1, true>, Vector::lanes);
    if (i < *m)
        pack(pack_columns<Vector, 1, false>, *m - i);
}

template <class Vector>
void copy_at(const int* m, const int* k, const float* a, const int* lda, float* buffer, const int* stride,
             const float* alpha) {
    const Vector factor = Vector::splat(*alpha);
    const std::ptrdiff_t ld = *lda;
    for (int i = 0; i < *m; i += panelRows) {
        float* panel = buffer + std::ptrdiff_t{i / panelRows} * *stride;
        if (i + panelRows <= *m)
            pack_rows<Vector, true>(panelRows, *k, a + i * ld, ld, panel, factor);
        else
            pack_rows<Vector, false>(*m - i, *k, a + i * ld, ld, panel, factor);
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
