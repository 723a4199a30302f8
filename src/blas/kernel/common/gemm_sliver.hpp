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

#include "blas/kernel/common/gemm_blocks.hpp"
#include "blas/kernel/common/vec4f.hpp"

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

// From the caller's matrix, columns contiguous along k (not transposed).
template <int columns>
void expand_columns(int k, const float* b, std::ptrdiff_t ldb, float* sliver) {
    constexpr int width = sliver_step(columns);
    const auto column = [&](int j, int l) { return j < columns ? Vec4f::load(b + j * ldb + l) : Vec4f::zero(); };
    const auto element = [&](int j, int l) { return j < columns ? b[j * ldb + l] : 0.0F; };
    int l = 0;
    for (; l + 4 <= k; l += 4) {
        Vec4f b0 = column(0, l), b1 = column(1, l), b2 = column(2, l), b3 = column(3, l);
        transpose(b0, b1, b2, b3);
        float* step = sliver + l * width;
        store_step<columns>(b0, step);
        store_step<columns>(b1, step + width);
        store_step<columns>(b2, step + 2 * width);
        store_step<columns>(b3, step + 3 * width);
    }
    for (; l < k; ++l)
        store_step<columns>({_mm_setr_ps(element(0, l), element(1, l), element(2, l), element(3, l))},
                            sliver + l * width);
}

// From the caller's matrix, the columns of a step side by side (transposed).
template <int columns>
void expand_rows(int k, const float* b, std::ptrdiff_t ldb, float* sliver) {
    for (int l = 0; l < k; ++l)
        store_step<columns>(load_first<columns>(b + l * ldb), sliver + l * sliver_step(columns));
}

template <int columns>
void expand_direct(int k, const float* b, std::ptrdiff_t ldb, bool transposed, float* sliver) {
    if (transposed)
        expand_rows<columns>(k, b, ldb, sliver);
    else
        expand_columns<columns>(k, b, ldb, sliver);
    for (int l = k; l < round_up(k, 4); ++l)
        store_step<columns>(Vec4f::zero(), sliver + l * sliver_step(columns));
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
