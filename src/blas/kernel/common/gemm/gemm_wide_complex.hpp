// What is particular to complex elements in the micro-kernel of gemm_wide.hpp.
//
//   A        a step is 4 real parts, then 4 imaginary parts of a panel's rows
//   sliver   a step is the columns side by side as complex numbers, conjugated if op(B) is; loads alone spread them:
//            r0 r0 r1 r1 ... and i0 i0 i1 i1 ..., to meet a pair of real or of imaginary parts of A
//
// Real and imaginary parts of C are summed apart, so that no step needs a shuffle or a change of sign, and are brought
// together once at the end. Each sums its products in ascending k in one chain, that with the real part of A first.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/gemm/gemm_wide.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// As many columns as a vector holds complex numbers.
template <class Vector_>
struct ComplexSliver {
    using Vector = Vector_;
    using Element = SingleComplex;
    static constexpr int columns = Vector::lanes / 2;
    static constexpr int rowsAtOnce = 2;
};

// As many steps of as many streams as a vector holds pairs of floats: stream i's pair l becomes pair i of x[l]. Of each
// stream only the first `count` pairs from l on are read.
template <class Vector>
QRV_INLINE void transpose_pairs(const float* const (&stream)[Vector::lanes / 2], int l, int count,
                                Vector (&x)[Vector::lanes / 2]) {
    constexpr int pairs = Vector::lanes / 2;
    const typename Vector::Mask mask = Vector::Mask::first(2 * smaller(count, pairs));
    const auto load = [&](int i) __attribute__((always_inline)) {
        const float* p = stream[i] + 2 * l;
        return count >= pairs ? Vector::load(p) : load_kept(p, mask);
    };
    Vector even[Vector::quads], odd[Vector::quads]; // steps of two neighbouring streams in a quad
    QRV_UNROLL
    for (int q = 0; q < Vector::quads; ++q) {
        const Vector first = load(2 * q), second = load(2 * q + 1);
        even[q] = low_halves(first, second);
        odd[q] = high_halves(first, second);
    }
    transpose_quads(even);
    transpose_quads(odd);
    QRV_UNROLL
    for (int q = 0; q < Vector::quads; ++q) {
        x[2 * q] = even[q];
        x[2 * q + 1] = odd[q];
    }
}

// Columns stored by columns: a square of steps and columns at a time.
template <class Spread>
void expand_complex_columns(const OperandB<SingleComplex>& b, int j, int steps, typename Spread::Vector signs,
                            float* out, std::ptrdiff_t outStep) {
    using Vector = typename Spread::Vector;
    constexpr int square = Spread::columns;
    const float* column[square];
    QRV_UNROLL
    for (int i = 0; i < square; ++i)
        column[i] = b.data + smaller(j + i, b.n - 1) * b.ld;
    const auto expand_square = [&](int l, int count) {
        Vector x[square];
        transpose_pairs<Vector>(column, l, count, x);
        QRV_UNROLL
        for (int s = 0; s < square; ++s)
            if (s < count)
                change_signs(x[s], signs).store_aligned(out + (l + s) * outStep);
    };
    int l = 0;
    for (; l + square <= steps; l += square)
        expand_square(l, square);
    if (l < steps)
        expand_square(l, steps - l);
}

// Columns stored by rows, whole or in panels: a quad of memory is a quad of the step.
template <class Spread, bool Full>
void expand_complex_rows(const OperandB<SingleComplex>& b, int j, int steps, typename Spread::Vector signs, float* out,
                         std::ptrdiff_t outStep) {
    using Vector = typename Spread::Vector;
    ColumnQuad quad[Vector::quads];
    QRV_UNROLL
    for (int q = 0; q < Vector::quads; ++q)
        quad[q] = b.quad(j + q * quadColumns<SingleComplex>);
    for (int l = 0; l < steps; ++l) {
        __m128 x[Vector::quads];
        QRV_UNROLL
        for (int q = 0; q < Vector::quads; ++q)
            x[q] = Full ? _mm_loadu_ps(quad[q].at(l)) : load_quad(quad[q].at(l), 2 * quad[q].width);
        change_signs(join(x), signs).store_aligned(out + l * outStep);
    }
}

// The same of one row of memory.
template <class Spread>
void expand_complex_row(const OperandB<SingleComplex>& b, int j, int steps, typename Spread::Vector signs, float* out,
                        std::ptrdiff_t outStep) {
    const float* row = b.data + 2 * j;
    for (int l = 0; l < steps; ++l)
        change_signs(Spread::Vector::load(row + l * b.ld), signs).store_aligned(out + l * outStep);
}

template <class Spread>
void expand_vector(const OperandB<SingleComplex>& b, int j, int steps, float* out, std::ptrdiff_t outStep) {
    using Vector = typename Spread::Vector;
    using Storage = OperandB<SingleComplex>::Storage;
    const Vector signs = Vector::alternate(0, b.conjugated ? -0.0F : 0.0F);
    const bool full = j + Spread::columns <= b.n;
    if (b.storage == Storage::columns)
        expand_complex_columns<Spread>(b, j, steps, signs, out, outStep);
    else if (full && b.storage == Storage::rows)
        expand_complex_row<Spread>(b, j, steps, signs, out, outStep);
    else if (full)
        expand_complex_rows<Spread, true>(b, j, steps, signs, out, outStep);
    else
        expand_complex_rows<Spread, false>(b, j, steps, signs, out, outStep);
}

// Running sums: for each panel and vector two for each pair of the panel's rows.
template <class Shape>
struct TileSums<Shape, SingleComplex> {
    using Vector = typename Shape::Vector;
    static constexpr int quads = 2 * Shape::panels;
    static constexpr int parts = 2; // columns that share a quad of the sums
    struct {
        Vector re[Shape::vectors], im[Shape::vectors];
    } sums[Shape::panels][2];

    QRV_INLINE void clear() {
        QRV_UNROLL
        for (int p = 0; p < Shape::panels; ++p)
            QRV_UNROLL
        for (int pair = 0; pair < 2; ++pair)
            QRV_UNROLL
        for (int v = 0; v < Shape::vectors; ++v)
            sums[p][pair].re[v] = sums[p][pair].im[v] = Vector::zero();
    }

    template <bool Edge>
    QRV_INLINE void add_step(const float* const (&panel)[Shape::panels], std::ptrdiff_t offset, const float* sliver,
                             const typename Vector::Mask (&mask)[2]) {
        Vector re[Shape::vectors], im[Shape::vectors];
        QRV_UNROLL
        for (int v = 0; v < Shape::vectors; ++v) {
            re[v] = Vector::load_even_twice(sliver + v * Vector::lanes);
            im[v] = Vector::load_odd_twice(sliver + v * Vector::lanes);
        }
        QRV_UNROLL
        for (int p = 0; p < Shape::panels; ++p)
            QRV_UNROLL
        for (int pair = 0; pair < 2; ++pair) {
            const auto rows = [&](int from) __attribute__((always_inline)) {
                const Vector x = Vector::repeat_pair(panel[p] + offset + from + 2 * pair);
                return Edge && p == Shape::panels - 1 ? x.kept(mask[pair]) : x;
            };
            auto& sum = sums[p][pair];
            const Vector x = rows(0);
            QRV_UNROLL
            for (int v = 0; v < Shape::vectors; ++v) {
                sum.re[v] = multiply_add(x, re[v], sum.re[v]);
                sum.im[v] = multiply_add(x, im[v], sum.im[v]);
            }
            const Vector y = rows(panelRows);
            QRV_UNROLL
            for (int v = 0; v < Shape::vectors; ++v) {
                sum.re[v] = subtract_product(y, im[v], sum.re[v]);
                sum.im[v] = multiply_add(y, re[v], sum.im[v]);
            }
        }
    }
    // Rows 2q and 2q + 1 of the even, respectively odd columns of vector v.
    QRV_INLINE Vector columns(int v, int q, int part) const {
        const auto& sum = sums[q / 2][q % 2];
        return part == 0 ? low_pairs(sum.re[v], sum.im[v]) : high_pairs(sum.re[v], sum.im[v]);
    }
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
