// The complex C := alpha*op(A)*op(B) + beta*C without packing and without work memory, from the real running sums of
// gemm_small.hpp.
//
//   tile       8 rows x 1 column, the last rows as one tile, up to 4 rows x 2 columns and 2 x 4: A, read as twice as
//   many
//              real rows, times the real and the imaginary part of B, each a sum of its own. In 32-bit mode, with 8
//              registers, 4 x 1, 2 x 2 and 1 x 2
//   op(A)      A as it lies; the rows of A^T and A^H are brought together on the stack, those of one tile at a time
//   alignment  none assumed
//   reads      nothing past the operands; C only if beta is not 0; A and B only if alpha is not 0
//
// Each result is alpha*sum + beta*C. k goes in blocks of smallDepth.
#pragma once

#include "blas/complex.hpp"
#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "blas/kernel/common/gemm/gemm_small.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

struct ComplexProduct {
    int k;
    SingleComplex alpha;
    SingleComplex beta; // 0: C is not read
    OpView<const SingleComplex> a;
    OpView<const SingleComplex> b;
    bool conjugatedA, conjugatedB;
};

// The rows of one tile: steps of contiguous elements.
struct TileRows {
    const SingleComplex* data;
    std::ptrdiff_t step;
};
constexpr int smallRows = updateRows / 2;

// Few rows leave registers to more columns.
template <int floats>
constexpr int elementColumns = floats <= vectorRegisters / 4   ? 4
                               : floats <= vectorRegisters / 2 ? 2
                                                               : 1;

// `floats` floats, two a row, of `columns` columns from j on; c has them.
template <int floats, int columns>
[[gnu::always_inline]] inline void update_elements(const ComplexProduct& p, TileRows rows, int j,
                                                   Matrix<SingleComplex> c) {
    using Sums = TileSums<floats, columns, 2>;
    Sums sums; // with the real and with the imaginary parts
    sums.add_steps(p.k, &rows.data->re, 2 * rows.step, &p.b.at(0, j)->re, 2 * p.b.rowStride, 2 * p.b.columnStride);
    // conj(B) has the imaginary parts negated.
    const Vec4f signs = p.conjugatedB ? Vec4f{_mm_setr_ps(0, -0.0F, 0, -0.0F)} : Vec4f{_mm_setr_ps(-0.0F, 0, -0.0F, 0)};
    const auto finish = [&](auto result) __attribute__((always_inline)) {
        const ScaledBy<SingleComplex> alpha(p.alpha);
        QRV_UNROLL
        for (int l = 0; l < columns; ++l) {
            float* out = &c(0, j + l).re;
            QRV_UNROLL
            for (int v = 0; v < Sums::vectors; ++v, out += 4) {
                const Vec4f turned = swap_parts(sums.sum[2 * l + 1][v]); // i*x is -im, re
                const Vec4f x = alpha(sums.sum[2 * l][v] + change_signs(turned, signs));
                if (v < Sums::vectors - 1)
                    result(Lanes<4>(), x, out);
                else
                    result(Lanes<Sums::lastRows>(), x, out);
            }
        }
    };
    if (p.beta == scalar<SingleComplex>(0))
        finish([](auto lanes, Vec4f x, float* out) { store_first<lanes()>(out, x); });
    else if (p.beta == scalar<SingleComplex>(1)) // 0 times an infinite part would make NaN
        finish([](auto lanes, Vec4f x, float* out) { store_first<lanes()>(out, load_first<lanes()>(out) + x); });
    else
        finish([beta = ScaledBy<SingleComplex>(p.beta)](auto lanes, Vec4f x, float* out) {
            store_first<lanes()>(out, beta(load_first<lanes()>(out)) + x);
        });
}

// All columns of a tile's rows, `left` floats and at most `floats` of them.
template <int floats>
void update_rows(int left, int n, const ComplexProduct& p, TileRows rows, Matrix<SingleComplex> c) {
    if (left == floats) {
        constexpr int columns = elementColumns<floats>;
        int j = 0;
        for (; n - j >= columns; j += columns)
            update_elements<floats, columns>(p, rows, j, c);
        if constexpr (columns == 4)
            for (; n - j >= 2; j += 2)
                update_elements<floats, 2>(p, rows, j, c);
        if constexpr (columns > 1)
            if (j < n)
                update_elements<floats, 1>(p, rows, j, c);
    } else if constexpr (floats > 2) {
        update_rows<floats - 2>(left, n, p, rows, c);
    }
}

// Brings rows together that are contiguous along k, or their conjugates: step by step, smallRows apart.
inline TileRows gather_rows(const ComplexProduct& p, int i, int rows, SingleComplex* gathered) {
    const float sign = p.conjugatedA ? -0.0F : 0.0F;
    const Vec4f signs{_mm_setr_ps(0, sign, 0, sign)};
    const auto store_steps = [&](int row, int l, auto pair, auto steps) {
        const SingleComplex* a = p.a.at(i + row, l);
        constexpr int count = 2 * steps();
        const Vec4f first = change_signs(load_first<count>(&a->re), signs);
        const Vec4f second = pair() == 2 ? change_signs(load_first<count>(&a[p.a.rowStride].re), signs) : first;
        float* out = &gathered[l * smallRows + row].re;
        store_first<2 * pair()>(out, low_halves(first, second));
        if constexpr (count == 4)
            store_first<2 * pair()>(out + 2 * smallRows, high_halves(first, second));
    };
    const auto gather = [&](int row, auto pair) {
        int l = 0;
        for (; l + 2 <= p.k; l += 2)
            store_steps(row, l, pair, Lanes<2>());
        if (l < p.k)
            store_steps(row, l, pair, Lanes<1>());
    };
    int row = 0;
    for (; row + 2 <= rows; row += 2)
        gather(row, Lanes<2>());
    if (row < rows)
        gather(row, Lanes<1>());
    return {gathered, smallRows};
}

// The product `p` for an m x n matrix C, block by block along k; it is used up on the way.
inline void multiply_small(int m, int n, ComplexProduct&& p, Matrix<SingleComplex> c) {
    alignas(16) SingleComplex gathered[smallRows * smallDepth];
    // A row that is stored as a column of one step is contiguous both ways.
    const bool asItLies = p.a.columns_contiguous() && !p.conjugatedA;
    for (int left = p.k; left > 0; left -= p.k) {
        p.k = smaller(left, smallDepth);
        for (int i = 0, rows; i < m; i += rows) {
            rows = smaller(m - i, smallRows);
            update_rows<2 * smallRows>(
                2 * rows, n, p, asItLies ? TileRows{p.a.at(i, 0), p.a.columnStride} : gather_rows(p, i, rows, gathered),
                c.block(i, 0));
        }
        p.a.data = p.a.at(0, p.k);
        p.b.data = p.b.at(p.k, 0);
        p.beta = scalar<SingleComplex>(1);
    }
}

[[gnu::always_inline]] inline void gemm_small(const GemmCall<SingleComplex>& p) {
    if (p.is_empty())
        return;
    if (p.adds_nothing())
        return gemm_scale_c(p.m, p.n, p.beta, p.c);
    multiply_small(p.m, p.n, {p.k, p.alpha, p.beta, p.view_of_a(), p.view_of_b(), conjugates(p.opA), conjugates(p.opB)},
                   p.c);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
