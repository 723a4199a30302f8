// The micro-kernel of the plan-driven CGEMM in 128-bit registers: C += packed A * B for a block of A panels. alpha is
// in A already and beta in C, so the kernel only adds.
//
//   tile     4 x 2; of the last rows and the last column less
//   A, B     packed as cgemm_pack.hpp says; kp is even then. Direct form: B is the caller's matrix, kp the true depth,
//            and nothing past it is read
//   sliver   up to 8 columns of B, two to a part of 8*kp floats; a step takes 8 floats:
//            re(b0) re(b0) re(b1) re(b1) im(b0) im(b0) im(b1) im(b1), the imaginary parts of conj(B) negated;
//            beside a single column, and beside an odd last step, zeros; 16-byte aligned
//   C        any ldc, any alignment; reads and writes m x n elements only
//   prefetch may ask for addresses past the end of B, sliver and C, which never faults
//
// With X the pair a0 a1 a0 a1 of the real or of the imaginary parts, each one load, a step adds
//   re += Xr*Br - Xi*Bi    im += Xr*Bi + Xi*Br
// for rows 0 1 and rows 2 3: sixteen products and sums without a shuffle. The two products are combined before they are
// added to the sum, which halves the chain of additions. Each element is the sum over k in ascending order in one
// lane, added to C last, wherever in C it lies.
#pragma once

#include <cstddef>

#include "blas/complex.hpp"
#include "blas/kernel/common/gemm/cgemm_pack.hpp"
#include "blas/kernel/common/gemm/gemm_micro.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"
#include "blas/kernel/gemm_plan.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD::complex_tile {

constexpr int sliverColumns = 8; // 16 KB at the deepest block: with a panel of A they fill 20 KB of L1
constexpr int sliverStep = 2 * bStep;
constexpr int sourceAhead = 128; // floats of a column of B prefetched ahead: 512 bytes
constexpr int targetAhead = 128; // the same of the sliver
constexpr int cAhead = 8;        // floats of C ahead of the tile: 32 bytes

// ---- Sliver -------------------------------------------------------------------------------------------------------

// One step of two columns: re im of the one, re im of the other.
template <bool conjugated>
void store_expanded(Vec4f b, float* step) {
    b = conj_pair<conjugated>(b);
    Vec4f{_mm_shuffle_ps(b.v, b.v, _MM_SHUFFLE(2, 2, 0, 0))}.store_aligned(step);
    Vec4f{_mm_shuffle_ps(b.v, b.v, _MM_SHUFFLE(3, 3, 1, 1))}.store_aligned(step + 4);
}

// B in memory: packed panels, or the caller's matrix with either direction contiguous. Strides are in floats.
struct DirectColumns {
    const float* data;
    std::ptrdiff_t column, step;

    const float* at(int j, int l) const { return data + j * column + l * step; }
    template <int columns>
    Vec4f load(int j, int l) const {
        return load_columns<columns>(at(j, l), column);
    }
};
struct PackedColumns {
    const float* data;
    std::ptrdiff_t panel;

    const float* at(int j, int l) const { return data + j / columnUnit * panel + l * bStep; }
    template <int>
    Vec4f load(int j, int l) const {
        return Vec4f::load_aligned(at(j, l));
    }
};

// One or two columns for each of `pairs` parts. The parts are filled side by side, so that B walked across its columns
// is read once.
template <int pairs, int columns, bool conjugated, class B>
void expand(B b, int j, int k, int kp, float* sliver) {
    const std::ptrdiff_t part = std::ptrdiff_t{kp} * sliverStep;
    const auto expand_step = [&](int l) {
        for (int p = 0; p < pairs; ++p)
            store_expanded<conjugated>(b.template load<columns>(j + p * columnUnit, l),
                                       sliver + p * part + l * sliverStep);
    };
    int l = 0;
    for (; l + stepUnit <= k; l += stepUnit) {
        for (int p = 0; p < pairs; ++p) {
            prefetch(b.at(j + p * columnUnit, l) + sourceAhead);
            prefetch(sliver + p * part + l * sliverStep + targetAhead);
        }
        expand_step(l);
        expand_step(l + 1);
    }
    if (l < k)
        expand_step(l++);
    for (; l < kp; ++l)
        for (int p = 0; p < pairs; ++p)
            store_expanded<false>(Vec4f::zero(), sliver + p * part + l * sliverStep);
}

// ---- Tile ---------------------------------------------------------------------------------------------------------

// Running sums of two columns, real and imaginary parts apart.
template <int rows>
struct Tile {
    ColumnPair<rows> re, im;

    void add_step(const float* a, const float* b) {
        const Vec4f br = Vec4f::load_aligned(b), bi = Vec4f::load_aligned(b + 4);
        add_rows(re.upper, im.upper, load_upper_rows<rows>(a), load_upper_rows<rows>(a + rowUnit), br, bi);
        if constexpr (rows > 2)
            add_rows(re.lower, im.lower, load_lower_rows<rows>(a), load_lower_rows<rows>(a + rowUnit), br, bi);
    }
    static void add_rows(Vec4f& sumRe, Vec4f& sumIm, Vec4f xr, Vec4f xi, Vec4f br, Vec4f bi) {
        sumRe = sumRe + (xr * br - xi * bi);
        sumIm = sumIm + (xr * bi + xi * br);
    }

    static void add_to(float* c, Vec4f sumRe, Vec4f sumIm) {
        constexpr int count = rows * parts;
        constexpr int low = smaller(count, 4);
        store_first<low>(c, load_first<low>(c) + interleave_low(sumRe, sumIm));
        if constexpr (count > 4)
            store_first<count - 4>(c + 4, load_first<count - 4>(c + 4) + interleave_high(sumRe, sumIm));
    }
};

// C[rows x columns] += one panel of A * one part of the sliver.
template <int rows>
void multiply_tile(int columns, int kp, const float* a, const float* b, Matrix<float> c) {
    Tile<rows> tile;
    prefetch(c.column(0) + cAhead);
    if (columns == columnUnit)
        prefetch(c.column(1) + cAhead);
    for (int l = 0; l < kp; l += stepUnit, a += stepUnit * aStep, b += stepUnit * sliverStep) {
        tile.add_step(a, b);
        tile.add_step(a + aStep, b + sliverStep);
    }
    Tile<rows>::add_to(c.column(0), tile.re.first(), tile.im.first());
    if (columns == columnUnit)
        Tile<rows>::add_to(c.column(1), tile.re.second(), tile.im.second());
}

// All rows of the block times one sliver. A panel serves all columns while it is in the first cache.
inline void multiply_panels(int m, int columns, int kp, const float* a, std::ptrdiff_t aStride, const float* sliver,
                            Matrix<float> c) {
    const auto multiply = [&](auto rows) {
        const float* part = sliver;
        for (int j = 0; j < columns; j += columnUnit, part += std::ptrdiff_t{kp} * sliverStep)
            multiply_tile<rows()>(smaller(columns - j, columnUnit), kp, a, part, c.block(0, j));
    };
    for (; m >= rowUnit; m -= rowUnit) {
        multiply(Lanes<rowUnit>());
        a += aStride;
        c = c.block(rowUnit * parts, 0);
    }
    switch (m) {
    case 3:
        return multiply(Lanes<3>());
    case 2:
        return multiply(Lanes<2>());
    case 1:
        return multiply(Lanes<1>());
    }
}

template <bool conjugated, class B>
void multiply_columns(int m, int n, int k, const float* a, std::ptrdiff_t aStride, B b, Matrix<float> c,
                      float* sliver) {
    const int kp = round_up(k, stepUnit);
    const auto multiply = [&](int j, int columns) {
        multiply_panels(m, columns, kp, a, aStride, sliver, c.block(0, j));
    };
    int j = 0;
    for (; j + sliverColumns <= n; j += sliverColumns) {
        expand<4, 2, conjugated>(b, j, k, kp, sliver);
        multiply(j, sliverColumns);
    }
    if (n - j >= 4) {
        expand<2, 2, conjugated>(b, j, k, kp, sliver);
        multiply(j, 4);
        j += 4;
    }
    if (n - j >= 2) {
        expand<1, 2, conjugated>(b, j, k, kp, sliver);
        multiply(j, 2);
        j += 2;
    }
    if (j < n) {
        expand<1, 1, conjugated>(b, j, k, kp, sliver);
        multiply(j, 1);
    }
}

inline void micro(const char*, const char* transb, const int* m, const int* n, const int* kp, const SingleComplex*,
                  const SingleComplex* aPacked, const int* aStride, const SingleComplex* b, const int* ldb,
                  const SingleComplex*, SingleComplex* c, const int* ldc, SingleComplex* sliver, MicroForm form) {
    const std::ptrdiff_t ld = std::ptrdiff_t{parts} * *ldb;
    const auto multiply = [&](auto conjugated, auto columns) {
        multiply_columns<conjugated() != 0>(*m, *n, *kp, floats(aPacked), std::ptrdiff_t{parts} * *aStride, columns,
                                            Matrix<float>{floats(c), std::ptrdiff_t{parts} * *ldc}, floats(sliver));
    };
    if (form == MicroForm::packedB)
        multiply(Lanes<false>(), PackedColumns{floats(b), ld});
    else if (!transposes(*transb))
        multiply(Lanes<false>(), DirectColumns{floats(b), ld, parts});
    else if (conjugates(*transb))
        multiply(Lanes<true>(), DirectColumns{floats(b), parts, ld});
    else
        multiply(Lanes<false>(), DirectColumns{floats(b), parts, ld});
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD::complex_tile
