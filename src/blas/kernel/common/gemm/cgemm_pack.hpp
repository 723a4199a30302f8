// Packing of complex operands for the 4 x 2 tile: panels of four rows of op(A) and of two columns of op(B).
//
//   panel A  a step of k takes 8 floats: the real parts of the four rows, then their imaginary parts, times alpha
//   panel B  a step takes 4 floats: re im of column 0, re im of column 1; not scaled
//   option   C conjugates on the way in, for A and for B
//   k        filled up to an even depth with a zero step
//   last     A with r rows left: only the first r lanes of either half of a step are stored,
//            the others stay as they are
//            B with one column left: zeros beside it
//   stride   from panel to panel, in complex elements; panels are 16-byte aligned
//   reads    nothing past the end of the operand
#pragma once

#include <cstddef>

#include "blas/complex.hpp"
#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD::complex_tile {

constexpr int rowUnit = 4;    // rows of a panel of A
constexpr int columnUnit = 2; // columns of a panel of B
constexpr int stepUnit = 2;   // steps to which k is filled up
constexpr int parts = 2;      // floats of an element
constexpr int aStep = rowUnit * parts;
constexpr int bStep = columnUnit * parts;
constexpr int panelGroup = 4; // panels of A packed together, so that whole lines of the operand are used

inline const float* floats(const SingleComplex* x) {
    return &x->re;
}
inline float* floats(SingleComplex* x) {
    return &x->re;
}

// ---- A ------------------------------------------------------------------------------------------------------------

// One step of up to four rows, the parts kept apart.
struct Rows {
    Vec4f re, im;

    // From `count` neighbouring elements.
    template <int count>
    static Rows load(const float* p) {
        const Vec4f low = load_first<smaller(count * parts, 4)>(p);
        if constexpr (count <= 2)
            return {unzip_even(low, low), unzip_odd(low, low)};
        else {
            const Vec4f high = load_first<count * parts - 4>(p + 4);
            return {unzip_even(low, high), unzip_odd(low, high)};
        }
    }
    template <int count>
    void store(float* step) const {
        if constexpr (count == rowUnit) {
            re.store_aligned(step);
            im.store_aligned(step + rowUnit);
        } else {
            store_first<count>(step, re);
            store_first<count>(step + rowUnit, im);
        }
    }
};

// alpha * x, or alpha * conj(x).
template <bool conjugated>
struct Factor {
    Vec4f re, im;
    explicit Factor(SingleComplex alpha) : re(Vec4f::splat(alpha.re)), im(Vec4f::splat(alpha.im)) {}

    Rows operator()(Rows x) const {
        if constexpr (conjugated)
            return {x.re * re + x.im * im, x.re * im - x.im * re};
        else
            return {x.re * re - x.im * im, x.re * im + x.im * re};
    }
};

// `panels` panels of rows that lie side by side in memory, `stride` floats apart.
template <int rows, int panels>
void pack_side_by_side(int k, const float* a, std::ptrdiff_t lda, float* out, std::ptrdiff_t stride,
                       Factor<false> alpha) {
    for (int l = 0; l < k; ++l, a += lda, out += aStep)
        for (int p = 0; p < panels; ++p)
            alpha(Rows::load<rows>(a + p * aStep)).template store<rows>(out + p * stride);
    if (k % stepUnit)
        for (int p = 0; p < panels; ++p)
            Rows{Vec4f::zero(), Vec4f::zero()}.store<rows>(out + p * stride);
}

// One panel of rows that are contiguous along k, two steps at a time.
template <int rows, bool conjugated>
void pack_transposed(int k, const float* a, std::ptrdiff_t lda, float* out, Factor<conjugated> alpha) {
    const auto copy_steps = [&](auto steps) {
        const auto row = [&](int i) {
            return i < rows ? load_first<parts * steps()>(a + (i < rows ? i : 0) * lda) : Vec4f::zero();
        };
        Vec4f re0 = row(0), im0 = row(1), re1 = row(2), im1 = row(3);
        transpose(re0, im0, re1, im1);
        alpha({re0, im0}).template store<rows>(out);
        const Rows next = steps() == 2 ? alpha({re1, im1}) : Rows{Vec4f::zero(), Vec4f::zero()};
        next.template store<rows>(out + aStep);
        a += stepUnit * parts;
        out += stepUnit * aStep;
    };
    for (; k >= stepUnit; k -= stepUnit)
        copy_steps(Lanes<2>());
    if (k > 0)
        copy_steps(Lanes<1>());
}

template <bool transposed, bool conjugated>
void copy_a(const int* m, const int* k, const SingleComplex* a, const int* lda, SingleComplex* buffer,
            const int* stride, const SingleComplex* alpha) {
    const Factor<conjugated> factor(*alpha);
    const std::ptrdiff_t ld = std::ptrdiff_t{parts} * *lda, panelStride = std::ptrdiff_t{parts} * *stride;
    const float* source = floats(a);
    float* out = floats(buffer);
    const auto pack_panel = [&](auto rows) {
        if constexpr (transposed)
            pack_transposed<rows()>(*k, source, ld, out, factor);
        else
            pack_side_by_side<rows(), 1>(*k, source, ld, out, 0, factor);
    };
    int left = *m;
    if constexpr (!transposed)
        for (; left >= panelGroup * rowUnit; left -= panelGroup * rowUnit) {
            pack_side_by_side<rowUnit, panelGroup>(*k, source, ld, out, panelStride, factor);
            source += panelGroup * aStep;
            out += panelGroup * panelStride;
        }
    for (; left >= rowUnit; left -= rowUnit) {
        pack_panel(Lanes<rowUnit>());
        source += transposed ? rowUnit * ld : aStep;
        out += panelStride;
    }
    switch (left) {
    case 3:
        return pack_panel(Lanes<3>());
    case 2:
        return pack_panel(Lanes<2>());
    case 1:
        return pack_panel(Lanes<1>());
    }
}

// ---- B ------------------------------------------------------------------------------------------------------------

// Two elements, or their conjugates.
template <bool conjugated>
Vec4f conj_pair(Vec4f x) {
    return conjugated ? change_signs(x, Vec4f{_mm_setr_ps(0, -0.0F, 0, -0.0F)}) : x;
}

// One step of one or two columns, `ld` floats apart.
template <int columns>
Vec4f load_columns(const float* b, std::ptrdiff_t ld) {
    const Vec4f first = load_first<parts>(b);
    return columns == 1 ? first : low_halves(first, load_first<parts>(b + ld));
}

template <bool transposed, bool conjugated>
void copy_b(const int* k, const int* n, const SingleComplex* b, const int* ldb, SingleComplex* buffer,
            const int* stride) {
    const std::ptrdiff_t ld = std::ptrdiff_t{parts} * *ldb;
    const std::ptrdiff_t column = transposed ? parts : ld, step = transposed ? ld : parts;
    const auto pack_panel = [&](int j, auto columns) {
        const float* source = floats(b) + j * column;
        float* out = floats(buffer) + j / columnUnit * (std::ptrdiff_t{parts} * *stride);
        for (int l = 0; l < *k; ++l, source += step, out += bStep)
            conj_pair<conjugated>(load_columns<columns()>(source, column)).store_aligned(out);
        if (*k % stepUnit)
            Vec4f::zero().store_aligned(out);
    };
    int j = 0;
    for (; j + columnUnit <= *n; j += columnUnit)
        pack_panel(j, Lanes<columnUnit>());
    if (j < *n)
        pack_panel(j, Lanes<1>());
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD::complex_tile
