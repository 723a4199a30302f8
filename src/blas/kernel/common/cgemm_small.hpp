// The complex C := alpha*op(A)*op(B) + beta*C without packing and without work memory, from the real running sums of
// gemm_small.hpp.
//
//   op(A) = A         tile 8 rows x 1 column: A, read as twice as many real rows, times the real and the imaginary part
//                     of B, each a sum of its own; the last rows as one tile
//   op(A) = A^T, A^H  tile 4 x 1 dot products along k. A column of op(B) is brought together on the stack, as the two
//                     real columns that give the real and the imaginary part of the product with re im re im ... of A
//   registers         in 32-bit mode, with 8 of them, the tiles are half as large
//   alignment         none assumed
//   reads             nothing past the operands; C only if beta is not 0; A and B only if alpha is not 0
//
// Each result is alpha*sum + beta*C. k goes in blocks of smallDepth.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/gemm_blocks.hpp"
#include "blas/kernel/common/gemm_small.hpp"

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
    if (p.beta != scalar<SingleComplex>(0))
        result = ScaledBy<SingleComplex>(p.beta)(load_first<count>(c)) + result;
    store_first<count>(c, result);
}

// From the sums with the real parts of B and those with its imaginary parts. conj(B) has the latter negated.
template <int floats>
void finish_rows(const ComplexProduct& p, const ColumnSums<floats>& withRe, const ColumnSums<floats>& withIm,
                 float* c) {
    constexpr int count = smaller(floats, 4);
    const Vec4f turned = swap_neighbours(withIm.sum); // i*x is -im, re
    const Vec4f signs = p.conjugatedB ? Vec4f{_mm_setr_ps(0, -0.0F, 0, -0.0F)} : Vec4f{_mm_setr_ps(-0.0F, 0, -0.0F, 0)};
    finish_elements<count>(p, withRe.sum + flip_signs(turned, signs), c);
    if constexpr (floats > 4)
        finish_rows<floats - 4>(p, withRe.below, withIm.below, c + 4);
}

// `floats` floats, two a row, of column j of C from row i on; the columns of A contiguous.
template <int floats>
void update_elements(const ComplexProduct& p, int i, int j, Matrix<SingleComplex> c) {
    // With few vectors odd steps of k are kept apart, so that one sum need not wait for the one before.
    constexpr bool splitSteps = (floats + 3) / 4 * 2 <= vectorRegisters / 4;
    ColumnSums<floats> re, im, oddRe, oddIm;
    const SingleComplex* a = p.a.at(i, 0);
    const SingleComplex* b = p.b.at(0, j);
    auto step = [&](ColumnSums<floats> & withRe, ColumnSums<floats> & withIm) __attribute__((always_inline)) {
        withRe.add(&a->re, Vec4f::splat(b->re));
        withIm.add(&a->re, Vec4f::splat(b->im));
        a += p.a.columnStride;
        b += p.b.rowStride;
    };
    int left = p.k;
    if constexpr (splitSteps)
        for (; left >= 2; left -= 2) {
            step(re, im);
            step(oddRe, oddIm);
        }
    for (; left > 0; --left)
        step(re, im);
    if constexpr (splitSteps) {
        re.add(oddRe);
        im.add(oddIm);
    }
    finish_rows<floats>(p, re, im, &c(i, j).re);
}

// The last rows, `left` floats and at most `floats` of them, as one tile.
template <int floats>
void update_rest(int left, const ComplexProduct& p, int i, int j, Matrix<SingleComplex> c) {
    if (left == floats)
        update_elements<floats>(p, i, j, c);
    else if constexpr (floats > 2)
        update_rest<floats - 2>(left, p, i, j, c);
}

inline void update_column(const ComplexProduct& p, int m, int j, Matrix<SingleComplex> c) {
    constexpr int rows = updateRows / 2;
    int i = 0;
    for (; m - i >= rows; i += rows)
        update_elements<updateRows>(p, i, j, c);
    if (i < m)
        update_rest<updateRows - 2>(2 * (m - i), p, i, j, c);
}

// A column of op(B) as two real ones for a dot product with re im re im ... of a row of op(A): the first gives the
// real, the second the imaginary part.
//   A B  re -im, im re   A conj(B)  re im, -im re   conj(A) B  re im, im -re   conj(A) conj(B)  re -im, -im -re
struct GatheredColumn {
    alignas(16) float forRe[2 * smallDepth];
    alignas(16) float forIm[2 * smallDepth];

    GatheredColumn(const ComplexProduct& p, int j) {
        const float re = p.conjugatedA ? -0.0F : 0.0F, im = p.conjugatedB ? -0.0F : 0.0F; // signs to flip by
        const float both = p.conjugatedA == p.conjugatedB ? -0.0F : 0.0F;
        const Vec4f signsForRe{_mm_setr_ps(0, both, 0, both)}, signsForIm{_mm_setr_ps(im, re, im, re)};
        const auto store = [&](int l, Vec4f b) {
            flip_signs(b, signsForRe).store_aligned(forRe + 2 * l);
            flip_signs(swap_neighbours(b), signsForIm).store_aligned(forIm + 2 * l);
        };
        const float* b = &p.b.at(0, j)->re;
        const std::ptrdiff_t step = 2 * p.b.rowStride;
        int l = 0;
        for (; l + 2 <= p.k; l += 2, b += 2 * step)
            store(l, low_halves(load_first<2>(b), load_first<2>(b + step)));
        if (l < p.k)
            store(l, load_first<2>(b));
    }
};

// `rows` rows of column j of C from row i on, the rows of op(A) contiguous.
template <int rows>
void dot_elements(const ComplexProduct& p, int i, const GatheredColumn& b, SingleComplex* c) {
    DotSums<rows> re, im;
    const float* a = &p.a.at(i, 0)->re;
    const std::ptrdiff_t lda = 2 * p.a.rowStride;
    auto step = [&](int l, auto lanes) __attribute__((always_inline)) {
        re.template add<lanes()>(a + l, lda, load_first<lanes()>(b.forRe + l));
        im.template add<lanes()>(a + l, lda, load_first<lanes()>(b.forIm + l));
    };
    const int floats = 2 * p.k;
    int l = 0;
    for (; l + 4 <= floats; l += 4)
        step(l, Lanes<4>());
    if (l < floats)
        step(l, Lanes<2>());
    const Vec4f sumRe = re.total(), sumIm = im.total();
    finish_elements<smaller(2 * rows, 4)>(p, interleave_low(sumRe, sumIm), &c->re);
    if constexpr (rows > 2)
        finish_elements<2 * rows - 4>(p, interleave_high(sumRe, sumIm), &c[2].re);
}

inline void dot_column(const ComplexProduct& p, int m, int j, Matrix<SingleComplex> c) {
    const GatheredColumn b(p, j);
    constexpr int rows = vectorRegisters == 16 ? 4 : 2;
    int i = 0;
    for (; m - i >= rows; i += rows)
        dot_elements<rows>(p, i, b, &c(i, j));
    switch (m - i) {
    case 3:
        return dot_elements<3>(p, i, b, &c(i, j));
    case 2:
        return dot_elements<2>(p, i, b, &c(i, j));
    case 1:
        return dot_elements<1>(p, i, b, &c(i, j));
    }
}

// The product `p` for an m x n matrix C, block by block along k; it is used up on the way.
inline void multiply_small(int m, int n, ComplexProduct&& p, Matrix<SingleComplex> c) {
    // A row that is stored as a column of one step is contiguous both ways.
    const bool byColumns = p.a.columns_contiguous() && !p.conjugatedA;
    for (int left = p.k; left > 0; left -= p.k) {
        p.k = smaller(left, smallDepth);
        for (int j = 0; j < n; ++j)
            if (byColumns)
                update_column(p, m, j, c);
            else
                dot_column(p, m, j, c);
        p.a.data = p.a.at(0, p.k);
        p.b.data = p.b.at(p.k, 0);
        p.beta = scalar<SingleComplex>(1);
    }
}

inline void gemm_small(QRV_GEMM_PARAMETERS(SingleComplex)) {
    if (*m <= 0 || *n <= 0)
        return;
    if (*k <= 0 || *alpha == scalar<SingleComplex>(0))
        return gemm_scale_c(m, n, beta, c, ldc);
    multiply_small(*m, *n,
                   {*k,
                    *alpha,
                    *beta,
                    {a, *lda, transposes(*transa)},
                    {b, *ldb, transposes(*transb)},
                    conjugates(*transa),
                    conjugates(*transb)},
                   Matrix<SingleComplex>{c, *ldc});
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
