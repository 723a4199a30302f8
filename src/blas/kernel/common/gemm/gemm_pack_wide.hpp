// Packing of A for the wide forms: the layout of gemm_pack.hpp, whole lines at a time.
//
//   panel   four rows of op(A), `stride` floats apart; step l takes a quad of four consecutive floats, 16-byte aligned,
//           of complex elements two: the real parts, then the imaginary ones
//   k       filled up with zero steps to a multiple of kStep quads
//   last    with r rows left only the first r lanes of a quad are stored
//   reads   nothing outside the operand
//
// By rows, complex elements are real ones of twice the depth: a transposed quad of floats is one of parts already.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/gemm/gemm_wide.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Rows packed side by side. Columns of A and panels often lie a multiple of a page apart, where lines of the same row
// compete for few places in the innermost cache: two lines of each column at a time and eight panels still fit, and
// the neighbour of a line is fetched with it.
constexpr int packRows = 32;

// Columns of A become lines of panels: Vector::quads quads of each.
template <class T, class Vector>
QRV_INLINE void arrange_panels(Vector (&x)[Vector::quads / floatsIn<T>]) {
    if constexpr (isComplex<T>)
        separate_parts(x);
    else
        transpose_quads(x);
}

// A line of as many panels as the vectors that hold its steps: from step l on as many as `count`, the others zero. Of
// `rows` floats in a column of A, fewer than a vector unless Full.
template <class Vector, class T, bool Full>
QRV_INLINE void pack_steps(int rows, int count, const float* a, std::ptrdiff_t lda, float* out, std::ptrdiff_t stride,
                           Factor<Vector, T> alpha) {
    constexpr int steps = Vector::quads / floatsIn<T>;
    Vector x[steps];
    QRV_UNROLL
    for (int s = 0; s < steps; ++s)
        x[s] =
            s < count ? alpha.times(Full ? Vector::load(a + s * lda) : load_rows(a + s * lda, rows)) : Vector::zero();
    arrange_panels<T>(x);
    const int panelFloats = panelRows * floatsIn<T>;
    const int panels = (rows + panelFloats - 1) / panelFloats;
    QRV_UNROLL
    for (int p = 0; p < steps; ++p) {
        if (Full || p < panels - 1)
            x[p].store(out + p * stride);
        else if (p == panels - 1)
            store_kept(out + p * stride, x[p], typename Vector::Mask(panelRows, rows / floatsIn<T> - panelRows * p));
    }
}

// All steps of `Vectors` full vectors of rows, or of one that is not full.
template <class Vector, class T, int Vectors, bool Full>
void pack_columns(int rows, int k, const float* a, std::ptrdiff_t lda, float* out, std::ptrdiff_t stride,
                  Factor<Vector, T> alpha) {
    constexpr int steps = Vector::quads / floatsIn<T>;
    const auto pack = [&](int l, int count) {
        QRV_UNROLL
        for (int v = 0; v < Vectors; ++v)
            pack_steps<Vector, T, Full>(rows, count, a + v * Vector::lanes + l * lda, lda,
                                        out + v * steps * stride + l * panelRows * floatsIn<T>, stride, alpha);
    };
    int l = 0;
    for (; l + steps <= k; l += steps)
        pack(l, steps);
    for (; l < round_up(k, kStep / floatsIn<T>); l += steps)
        pack(l, k - l);
}

// Quads of a panel times alpha: of complex elements one of real parts and one of imaginary parts, conjugated beforehand
// if asked for.
template <class Vector, class T>
struct QuadFactor {
    Vector factor;
    QuadFactor(float x, bool) : factor(Vector::splat(x)) {}
    QRV_INLINE Vector times(Vector x) const { return factor * x; }
};
template <class Vector>
struct QuadFactor<Vector, SingleComplex> {
    Vector straight, crossed;
    QuadFactor(SingleComplex x, bool conjugated)
        : straight(Vector::alternate_quads(x.re, conjugated ? -x.re : x.re)),
          crossed(Vector::alternate_quads(conjugated ? x.im : -x.im, x.im)) {}
    QRV_INLINE Vector times(Vector x) const { return straight * x + crossed * swap_quads(x); }
};

// One panel (of fewer than four rows unless Full) whose rows are stored as columns, k floats each.
template <class Vector, class T, bool Full>
void pack_rows(int rows, int k, const float* a, std::ptrdiff_t lda, float* out, QuadFactor<Vector, T> alpha) {
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
            Vector scaled = alpha.times(x[v]);
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

// op(A) = A
template <class Vector, class T>
void copy_an(const int* m, const int* k, const T* a, const int* lda, T* buffer, const int* stride, const T* alpha) {
    constexpr std::ptrdiff_t element = floatsIn<T>;
    constexpr int vectorRows = Vector::lanes / floatsIn<T>;
    const Factor<Vector, T> factor(*alpha);
    const std::ptrdiff_t panelStride = *stride * element;
    int i = 0;
    const auto pack = [&](auto pack_rows_of, int rows) {
        pack_rows_of(rows * floatsIn<T>, *k, reinterpret_cast<const float*>(a + i), *lda * element,
                     reinterpret_cast<float*>(buffer) + i / panelRows * panelStride, panelStride, factor);
        i += rows;
    };
    while (i + packRows / floatsIn<T> <= *m)
        pack(pack_columns<Vector, T, packRows / Vector::lanes, true>, packRows / floatsIn<T>);
    while (i + vectorRows <= *m)
        pack(pack_columns<Vector, T, 1, true>, vectorRows);
    if (i < *m)
        pack(pack_columns<Vector, T, 1, false>, *m - i);
}

// op(A) = A^T, or its conjugate
template <class Vector, class T, bool conjugated>
void copy_at(const int* m, const int* k, const T* a, const int* lda, T* buffer, const int* stride, const T* alpha) {
    const QuadFactor<Vector, T> factor(*alpha, conjugated);
    const std::ptrdiff_t ld = *lda;
    for (int i = 0; i < *m; i += panelRows) {
        float* panel = reinterpret_cast<float*>(buffer + std::ptrdiff_t{i / panelRows} * *stride);
        const float* rows = reinterpret_cast<const float*>(a + i * ld);
        const int floats = *k * floatsIn<T>;
        if (i + panelRows <= *m)
            pack_rows<Vector, T, true>(panelRows, floats, rows, ld * floatsIn<T>, panel, factor);
        else
            pack_rows<Vector, T, false>(*m - i, floats, rows, ld * floatsIn<T>, panel, factor);
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
