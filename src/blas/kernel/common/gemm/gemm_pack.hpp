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

#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int packUnit = 4;  // steps to which k is filled up; also lanes of a panel
constexpr int packGroup = 4; // panels packed together, so that a 64-byte line of the operand is used whole

struct Scaled {
    float alpha;
    Vec4f operator()(Vec4f x) const { return x * Vec4f::splat(alpha); }
};
struct Unscaled {
    Vec4f operator()(Vec4f x) const { return x; }
};

// A panel of 1 to 4 lanes: floats from step to step, and how many of them are written; the ones without a lane are 0.
template <int laneCount, int stepWidth, int storedFloats>
struct PanelShape {
    static constexpr int lanes = laneCount;

    static Vec4f load(const float* p) { return load_first<lanes>(p); }
    static void store(float* panel, int l, Vec4f x) {
        float* step = panel + l * stepWidth;
        if constexpr (storedFloats == 4)
            x.store_aligned(step);
        else
            store_first<storedFloats>(step, x);
    }
    // From step k on, to the depth that is filled up.
    static void store_zeros(float* panel, int k) {
        for (int l = k; l < round_up(k, packUnit); ++l)
            store(panel, l, Vec4f::zero());
    }
};
using FullPanel = PanelShape<4, 4, 4>;
template <int lanes>
using LastPanelOfA = PanelShape<lanes, 4, lanes>;
template <int lanes>
using LastPanelOfB = PanelShape<lanes, (lanes == 3 ? 4 : 2), (lanes == 3 ? 4 : 2)>;

// Panels whose lanes lie side by side: `panels` of them, `stride` apart, four steps at a time.
template <class Shape, int panels, class Scale>
void pack_side_by_side(int k, const float* x, std::ptrdiff_t ld, float* out, std::ptrdiff_t stride, Scale scale) {
    const auto copy_step = [&](int l) {
        const float* source = x + l * ld;
        Shape::store(out, l, scale(Shape::load(source)));
        if constexpr (panels == packGroup) {
            Shape::store(out + stride, l, scale(Shape::load(source + 4)));
            Shape::store(out + 2 * stride, l, scale(Shape::load(source + 8)));
            Shape::store(out + 3 * stride, l, scale(Shape::load(source + 12)));
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
        Shape::store_zeros(out + p * stride, k);
}

// Four steps of a panel whose lanes lie ld apart, of which `steps` exist.
template <class Shape, int steps, class Scale>
void pack_transposed_block(int l, const float* x, std::ptrdiff_t ld, float* out, Scale scale) {
    const auto lane = [&](int i) { return i < Shape::lanes ? load_first<steps>(x + i * ld + l) : Vec4f::zero(); };
    Vec4f x0 = lane(0), x1 = lane(1), x2 = lane(2), x3 = lane(3);
    transpose(x0, x1, x2, x3);
    Shape::store(out, l, scale(x0));
    Shape::store(out, l + 1, steps > 1 ? scale(x1) : Vec4f::zero());
    Shape::store(out, l + 2, steps > 2 ? scale(x2) : Vec4f::zero());
    Shape::store(out, l + 3, steps > 3 ? scale(x3) : Vec4f::zero());
}

// One panel whose lanes lie ld apart, each contiguous along k.
template <class Shape, class Scale>
void pack_transposed(int k, const float* x, std::ptrdiff_t ld, float* out, Scale scale) {
    int l = 0;
    for (; l + 4 <= k; l += 4)
        pack_transposed_block<Shape, 4>(l, x, ld, out, scale);
    switch (k - l) {
    case 3:
        return pack_transposed_block<Shape, 3>(l, x, ld, out, scale);
    case 2:
        return pack_transposed_block<Shape, 2>(l, x, ld, out, scale);
    case 1:
        return pack_transposed_block<Shape, 1>(l, x, ld, out, scale);
    }
}

template <class Shape, bool sideBySide, class Scale>
void pack_panel(int k, const float* x, std::ptrdiff_t ld, float* out, Scale scale) {
    if constexpr (sideBySide)
        pack_side_by_side<Shape, 1>(k, x, ld, out, 0, scale);
    else
        pack_transposed<Shape>(k, x, ld, out, scale);
}

// All `lanes` rows (A) or columns (B) of an operand.
template <template <int> class LastPanel, bool sideBySide, class Scale>
void pack(int lanes, int k, const float* x, std::ptrdiff_t ld, float* out, std::ptrdiff_t stride, Scale scale) {
    const std::ptrdiff_t laneStride = sideBySide ? 1 : ld;
    if constexpr (sideBySide)
        for (; lanes >= packGroup * packUnit; lanes -= packGroup * packUnit) {
            pack_side_by_side<FullPanel, packGroup>(k, x, ld, out, stride, scale);
            x += packGroup * packUnit;
            out += packGroup * stride;
        }
    for (; lanes >= packUnit; lanes -= packUnit) {
        pack_panel<FullPanel, sideBySide>(k, x, ld, out, scale);
        x += packUnit * laneStride;
        out += stride;
    }
    switch (lanes) {
    case 3:
        return pack_panel<LastPanel<3>, sideBySide>(k, x, ld, out, scale);
    case 2:
        return pack_panel<LastPanel<2>, sideBySide>(k, x, ld, out, scale);
    case 1:
        return pack_panel<LastPanel<1>, sideBySide>(k, x, ld, out, scale);
    }
}

template <bool trans>
void sgemm_copy_a(const int* m, const int* k, const float* a, const int* lda, float* buffer, const int* stride,
                  const float* alpha) {
    pack<LastPanelOfA, !trans>(*m, *k, a, *lda, buffer, *stride, Scaled{*alpha});
}

template <bool trans>
void sgemm_copy_b(const int* k, const int* n, const float* b, const int* ldb, float* buffer, const int* stride) {
    pack<LastPanelOfB, trans>(*n, *k, b, *ldb, buffer, *stride, Unscaled());
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
