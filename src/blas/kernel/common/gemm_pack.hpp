// Packing of the real operands into panels of four: told once for A and B and for both transpositions.
//
//   panel   four rows of op(A), or four columns of op(B); panels are `stride` floats apart
//   step    l of k takes four consecutive floats, 16-byte aligned; A is multiplied by alpha, B copied
//   k       filled up with zero steps to a multiple of kUnit
//   last    A with r rows left: only the first r lanes of a step are stored, the others stay as they are
//           B with 3 columns left: the fourth place is zero; with 1 or 2: steps of two floats, 0 in the second
//   reads   nothing past the end of the operand
//
// "Lanes" below are the four rows of op(A) or columns of op(B), whichever is packed: they lie side by side in memory
// (copyAN, copyBT) or a leading dimension apart (copyAT, copyBN).
#pragma once

#include <xmmintrin.h>

#include "blas/kernel/common/gemm_blocks.hpp"
#include "blas/kernel/common/vec4f.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int packUnit = 4;  // steps to which k is filled up; also lanes of a panel
constexpr int packGroup = 4; // panels packed together, so that a 64-byte line of the operand is used whole

struct Scaled {
    float alpha;
    Vec4f operator()(Vec4f x) const { return x * Vec4f::splat(alpha); }
    float operator()(float x) const { return x * alpha; }
};
struct Unscaled {
    Vec4f operator()(Vec4f x) const { return x; }
    float operator()(float x) const { return x; }
};

// Steps `from` to `to` of one panel become zero; `stored` of the `width` floats of a step are written.
inline void zero_steps(float* panel, int from, int to, int width, int stored) {
    for (int l = from; l < to; ++l)
        for (int lane = 0; lane < stored; ++lane)
            panel[l * width + lane] = 0;
}

// Full panels whose lanes lie side by side: `panels` of them at a time, four steps at a time.
template <int panels, class Scale>
void pack_side_by_side(int k, const float* x, std::ptrdiff_t ld, float* out, std::ptrdiff_t stride, Scale scale) {
    const auto copy_step = [&](int l) {
        const float* source = x + l * ld;
        float* step = out + l * packUnit;
        scale(Vec4f::load(source)).store_aligned(step);
        if constexpr (panels == packGroup) {
            scale(Vec4f::load(source + 4)).store_aligned(step + stride);
            scale(Vec4f::load(source + 8)).store_aligned(step + 2 * stride);
            scale(Vec4f::load(source + 12)).store_aligned(step + 3 * stride);
        }
    };
    int l = 0;
    for (; l + 4 <= k; l += 4) {
        copy_step(l);
        copy_step(l + 1);
        copy_step(l + 2);
        copy_step(l + 3);
    }
    for (; l < k; ++l)
        copy_step(l);
    for (int p = 0; p < panels; ++p)
        zero_steps(out + p * stride, k, round_up(k, packUnit), packUnit, packUnit);
}

// One full panel whose lanes lie ld apart, each contiguous along k.
template <class Scale>
void pack_transposed(int k, const float* x, std::ptrdiff_t ld, float* out, Scale scale) {
    int l = 0;
    for (; l + 4 <= k; l += 4) {
        Vec4f x0 = Vec4f::load(x + l), x1 = Vec4f::load(x + ld + l);
        Vec4f x2 = Vec4f::load(x + 2 * ld + l), x3 = Vec4f::load(x + 3 * ld + l);
        transpose(x0, x1, x2, x3);
        float* step = out + l * packUnit;
        scale(x0).store_aligned(step);
        scale(x1).store_aligned(step + 4);
        scale(x2).store_aligned(step + 8);
        scale(x3).store_aligned(step + 12);
    }
    for (; l < k; ++l)
        for (int lane = 0; lane < packUnit; ++lane)
            out[l * packUnit + lane] = scale(x[lane * ld + l]);
    zero_steps(out, k, round_up(k, packUnit), packUnit, packUnit);
}

// The last panel, of one to three lanes: `stored` floats of a step of `width` are written, zeros behind the lanes.
template <int lanes, int width, int stored, class Scale>
void pack_rest(int k, OpView<const float> x, float* out, Scale scale) {
    const float *lane0 = x.at(0, 0), *lane1 = x.at(lanes > 1, 0), *lane2 = x.at(lanes > 2 ? 2 : 0, 0);
    for (int l = 0; l < k; ++l) {
        const std::ptrdiff_t at = l * x.columnStride;
        float* step = out + l * width;
        step[0] = scale(lane0[at]);
        if constexpr (stored > 1)
            step[1] = lanes > 1 ? scale(lane1[at]) : 0;
        if constexpr (stored > 2)
            step[2] = lanes > 2 ? scale(lane2[at]) : 0;
        if constexpr (stored > 3)
            step[3] = 0;
    }
    zero_steps(out, k, round_up(k, packUnit), width, stored);
}

// All full panels of an operand with `lanes` rows (A) or columns (B). Result: the lanes packed.
template <bool sideBySide, class Scale>
int pack_panels(int lanes, int k, const float* x, std::ptrdiff_t ld, float* out, std::ptrdiff_t stride, Scale scale) {
    int lane = 0;
    if constexpr (sideBySide)
        for (; lane + packGroup * packUnit <= lanes; lane += packGroup * packUnit)
            pack_side_by_side<packGroup>(k, x + lane, ld, out + lane / packUnit * stride, stride, scale);
    for (; lane + packUnit <= lanes; lane += packUnit) {
        float* panel = out + lane / packUnit * stride;
        if constexpr (sideBySide)
            pack_side_by_side<1>(k, x + lane, ld, panel, stride, scale);
        else
            pack_transposed(k, x + lane * ld, ld, panel, scale);
    }
    return lane;
}

template <bool trans>
void sgemm_copy_a(const int* m, const int* k, const float* a, const int* lda, float* buffer, const int* stride,
                  const float* alpha) {
    const Scaled scale{*alpha};
    const int packed = pack_panels<!trans>(*m, *k, a, *lda, buffer, *stride, scale);
    const OpView<const float> x = OpView<const float>(a, *lda, trans).block(packed, 0);
    float* last = buffer + std::ptrdiff_t{packed / packUnit} * *stride;
    switch (*m - packed) {
    case 3:
        return pack_rest<3, packUnit, 3>(*k, x, last, scale);
    case 2:
        return pack_rest<2, packUnit, 2>(*k, x, last, scale);
    case 1:
        return pack_rest<1, packUnit, 1>(*k, x, last, scale);
    }
}

template <bool trans>
void sgemm_copy_b(const int* k, const int* n, const float* b, const int* ldb, float* buffer, const int* stride) {
    const Unscaled scale;
    const int packed = pack_panels<trans>(*n, *k, b, *ldb, buffer, *stride, scale);
    // Element (lane, l) is op(B)[l, lane], hence the opposite transposition.
    const OpView<const float> x = OpView<const float>(b, *ldb, !trans).block(packed, 0);
    float* last = buffer + std::ptrdiff_t{packed / packUnit} * *stride;
    switch (*n - packed) {
    case 3:
        return pack_rest<3, packUnit, 4>(*k, x, last, scale);
    case 2:
        return pack_rest<2, 2, 2>(*k, x, last, scale);
    case 1:
        return pack_rest<1, 2, 2>(*k, x, last, scale);
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
