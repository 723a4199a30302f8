// The sliver: up to four columns of op(B), expanded so that the micro-kernel needs no broadcast.
//
//   4 or 3 columns   a step takes 8 floats: b0 b0 b1 b1 b2 b2 b3 b3; of three columns, b3 is zero
//   2 or 1 columns   a step takes 4 floats: b0 b0 b1 b1; of one column, b1 is zero
//   k                filled up to a multiple of 4 with zero steps
//   sliver           16-byte aligned
//   reads            from a packed panel, that panel to its padded depth; from the caller's matrix, nothing past
//                    the last step or column
#pragma once

#include <xmmintrin.h>

#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Floats that one step takes in the sliver of a tile with this many columns.
constexpr int sliver_step(int columns) {
    return columns > 2 ? 8 : 4;
}

// x0 x0 x1 x1 and x2 x2 x3 x3
inline Vec4f double_low(Vec4f x) {
    return {_mm_unpacklo_ps(x.v, x.v)};
}
inline Vec4f double_high(Vec4f x) {
    return {_mm_unpackhi_ps(x.v, x.v)};
}

template <int columns>
void store_step(Vec4f b, float* step) {
    double_low(b).store_aligned(step);
    if constexpr (columns > 2)
        double_high(b).store_aligned(step + 4);
}

// From a packed panel: four floats a step, or two where the panel is two wide. kp is a multiple of 4.
template <int columns>
void expand_packed(int kp, const float* panel, float* sliver) {
    constexpr int width = columns > 2 ? 4 : 2;
    for (int l = 0; l < kp; ++l)
        store_step<columns>(load_first<width>(panel + l * width), sliver + l * sliver_step(columns));
}

// Four steps of columns that are contiguous along k, of which `steps` exist; the others become zero.
template <int columns, int steps>
void expand_column_block(const float* b, std::ptrdiff_t ldb, float* sliver) {
    constexpr int width = sliver_step(columns);
    const auto column = [&](int j) { return j < columns ? load_first<steps>(b + j * ldb) : Vec4f::zero(); };
    Vec4f b0 = column(0), b1 = column(1), b2 = column(2), b3 = column(3);
    transpose(b0, b1, b2, b3);
    store_step<columns>(b0, sliver);
    store_step<columns>(b1, sliver + width);
    store_step<columns>(b2, sliver + 2 * width);
    store_step<columns>(b3, sliver + 3 * width);
}

// From the caller's matrix, columns contiguous along k (not transposed).
template <int columns>
void expand_columns(int k, const float* b, std::ptrdiff_t ldb, float* sliver) {
    for (; k >= 4; k -= 4) {
        expand_column_block<columns, 4>(b, ldb, sliver);
        b += 4;
        sliver += 4 * sliver_step(columns);
    }
    switch (k) {
    case 3:
        return expand_column_block<columns, 3>(b, ldb, sliver);
    case 2:
        return expand_column_block<columns, 2>(b, ldb, sliver);
    case 1:
        return expand_column_block<columns, 1>(b, ldb, sliver);
    }
}

// From the caller's matrix, the columns of a step side by side (transposed).
template <int columns>
void expand_rows(int k, const float* b, std::ptrdiff_t ldb, float* sliver) {
    for (int l = 0; l < k; ++l)
        store_step<columns>(load_first<columns>(b + l * ldb), sliver + l * sliver_step(columns));
    for (int l = k; l < round_up(k, 4); ++l)
        store_step<columns>(Vec4f::zero(), sliver + l * sliver_step(columns));
}

template <int columns>
void expand_direct(int k, const float* b, std::ptrdiff_t ldb, bool transposed, float* sliver) {
    if (transposed)
        expand_rows<columns>(k, b, ldb, sliver);
    else
        expand_columns<columns>(k, b, ldb, sliver);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
