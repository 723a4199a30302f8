// The complex C := alpha*op(A)*op(B) + beta*C without packing and without work memory, from the real running sums of
// gemm_small.hpp.
//
//   tile       8 rows x 1 column, the last rows as one tile: A, read as twice as many real rows, times the real and the
//              imaginary part of B, each a sum of its own. In 32-bit mode, with 8 registers, 4 x 1
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

// alpha*sums + beta*C for `count` floats of a column, 2 or 4; sums are re im.
template <int count>
void finish_elements(const ComplexProduct& p, Vec4f sums, float* c) {
    Vec4f result = ScaledBy<SingleComplex>(p.alpha)(sums);
    if (p.beta != scalar<SingleComplex>(0)) {
        const Vec4f old = load_first<count>(c);
        const bool asItIs = p.beta == scalar<SingleComplex>(1); // 0 times an infinite part would make NaN
        result = (asItIs ? old : ScaledBy<SingleComplex>(p.beta)(old)) + result;
    }
    store_first<count>(c, result);
}

// From the sums with the real parts of B and those with its imaginary parts. conj(B) has the latter negated.
template <int floats>
[[gnu::always_inline]] inline void finish_rows(const ComplexProduct& p, const TileSums<floats, 2>& sums, float* c) {
    using Sums = TileSums<floats, 2>;
    const Vec4f signs = p.conjugatedB ? Vec4f{_mm_setr_ps(0, -0.0F, 0, -0.0F)} : Vec4f{_mm_setr_ps(-0.0F, 0, -0.0F, 0)};
    QRV_UNROLL
    for (int v = 0; v < Sums::vectors; ++v, c += 4) {
        const Vec4f turned = swap_parts(sums.sum[1][v]); // i*x is -im, re
        const Vec4f sum = sums.sum[0][v] + change_signs(turned, signs);
        if (v < Sums::vectors - 1)
            finish_elements<4>(p, sum, c);
        else
            finish_elements<Sums::lastRows>(p, sum, c);
    }
}

// The rows of one tile: steps of contiguous elements.
struct TileRows {
    const SingleComplex* data;
    std::ptrdiff_t step;
};
constexpr int smallRows = updateRows / 2;

// `floats` floats, two a row, of column j; c is their place in C.
template <int floats>
void update_elements(const ComplexProduct& p, TileRows rows, int j, float* c) {
    const SingleComplex* b = p.b.at(0, j);
    TileSums<floats, 2> sums; // with the real and with the imaginary parts
    sums.add_steps(p.k, &rows.data->re, 2 * rows.step, &b->re, 2 * p.b.rowStride, 1);
    finish_rows<floats>(p, sums, c);
}

// All columns of a tile's rows, `left` floats and at most `floats` of them.
template <int floats>
void update_rows(int left, int n, const ComplexProduct& p, TileRows rows, Matrix<SingleComplex> c) {
    if (left == floats)
        for (int j = 0; j < n; ++j)
            update_elements<floats>(p, rows, j, &c(0, j).re);
    else if constexpr (floats > 2)
        update_rows<floats - 2>(left, n, p, rows, c);
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
