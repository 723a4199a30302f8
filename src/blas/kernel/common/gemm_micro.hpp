// The micro-kernel of the plan-driven SGEMM in 128-bit registers: C += packed A * B for a block of A panels.
// alpha is in A already and beta in C, so the kernel only adds.
//
//   tile     4 x 4, or in 64-bit mode two of them on top of each other; 4 x 2 for the last one or two columns
//   A        panels of 4 rows, `aStride` floats apart, 4 floats a step, 16-byte aligned, zero steps up to a multiple
//            of 4; in the last panel only the lanes of existing rows are read
//   B        packed form: panels of 4 columns, `ldb` floats apart, the last as the packing leaves it; kp is padded
//            direct form: the caller's matrix; kp is the true depth, and nothing past it is read
//   sliver   8 floats for each step of the padded depth, 16-byte aligned: the expanded columns of one tile
//   C        any ldc, any alignment; reads and writes m x n elements only
//   prefetch may ask for addresses past the end of A and C, which never faults
//
// A step takes the pairs (a0 a1 a0 a1) and (a2 a3 a2 a3), each one load, times b0 b0 b1 b1 and b2 b2 b3 b3: sixteen
// products without a shuffle. Each element of C is the sum over k in ascending order in one lane, added to C last;
// tiles and edges sum alike, so a result does not depend on where in C an element lies.
#pragma once

#include <cstdint>
#include <pmmintrin.h>

#include "blas/kernel/common/gemm_sliver.hpp"
#include "blas/kernel/common/vec4f.hpp"
#include "blas/kernel/gemm_plan.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int tileRows = 4;
constexpr int tileColumns = 4;
// Eight vector registers hold one tile's four accumulators and four operands; sixteen hold two tiles' work, which
// hides the latency of the additions.
constexpr bool pairTiles = sizeof(void*) == 8;
constexpr int prefetchA = 384;   // floats ahead of the step: 1536 bytes, and the line behind it
constexpr int prefetchLine = 16; // floats
constexpr int prefetchC = 4;     // floats on from the tile's first row

// Two floats, twice: a load without a shuffle.
inline Vec4f load_pair(const float* p) {
    return {_mm_castpd_ps(_mm_loaddup_pd(reinterpret_cast<const double*>(p)))};
}

// Running sums of 4 rows x 2 columns: r0c0 r1c0 r0c1 r1c1 and r2c0 r3c0 r2c1 r3c1.
struct ColumnPair {
    Vec4f top, bottom;

    void add_step(Vec4f a01, Vec4f a23, Vec4f b) {
        top = top + a01 * b;
        bottom = bottom + a23 * b;
    }
    Vec4f first() const { return low_halves(top, bottom); }
    Vec4f second() const { return high_halves(top, bottom); }
};

// Running sums of one 4 x 4 tile, or of a 4 x 2 one in its left half.
template <int columns>
struct Tile {
    ColumnPair left{Vec4f::zero(), Vec4f::zero()}, right{Vec4f::zero(), Vec4f::zero()};

    void add_step(const float* a, const float* sliver) {
        const Vec4f a01 = load_pair(a), a23 = load_pair(a + 2);
        left.add_step(a01, a23, Vec4f::load_aligned(sliver));
        if constexpr (columns > 2)
            right.add_step(a01, a23, Vec4f::load_aligned(sliver + 4));
    }

    static void add_to(float* c, Vec4f sums, bool aligned) {
        if (aligned)
            (Vec4f::load_aligned(c) + sums).store_aligned(c);
        else
            (Vec4f::load(c) + sums).store(c);
    }
    void add_to(Matrix<float> c, bool aligned) const {
        add_to(c.column(0), left.first(), aligned);
        if constexpr (columns > 1)
            add_to(c.column(1), left.second(), aligned);
        if constexpr (columns > 2)
            add_to(c.column(2), right.first(), aligned);
        if constexpr (columns > 3)
            add_to(c.column(3), right.second(), aligned);
    }
};

template <int columns>
void prefetch_tile(Matrix<float> c) {
    for (int j = 0; j < columns; ++j)
        prefetch(c.column(j) + prefetchC);
}

// Rows of one panel, or of two, times one sliver.
template <int panels, int columns>
void multiply_tile(int kp, const float* a, std::ptrdiff_t aStride, const float* sliver, Matrix<float> c, bool aligned) {
    constexpr int width = sliver_step(columns);
    Tile<columns> upper, lower;
    const auto add_steps = [&](int l) {
        for (int s = l; s < l + 4; ++s) {
            upper.add_step(a + s * tileRows, sliver + s * width);
            if constexpr (panels == 2)
                lower.add_step(a + aStride + s * tileRows, sliver + s * width);
        }
    };
    prefetch_tile<columns>(c);
    int l = 0;
    for (; l + 8 <= kp; l += 8) {
        prefetch(a + l * tileRows + prefetchA);
        prefetch(a + l * tileRows + prefetchA + prefetchLine);
        add_steps(l);
        add_steps(l + 4);
    }
    if (l < kp)
        add_steps(l);
    upper.add_to(c, aligned);
    if constexpr (panels == 2)
        lower.add_to(c.block(tileRows, 0), aligned);
}

// The last one to three rows: lanes are columns here, so that only the lanes of A that exist are read.
template <int rows, int columns>
void multiply_edge(int kp, const float* a, const float* sliver, Matrix<float> c) {
    constexpr int width = sliver_step(columns);
    Vec4f sum0 = Vec4f::zero(), sum1 = sum0, sum2 = sum0;
    for (int l = 0; l < kp; ++l) {
        const float* step = sliver + l * width;
        const __m128 low = _mm_load_ps(step), high = columns > 2 ? _mm_load_ps(step + width - 4) : low;
        const Vec4f b{_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0))}; // b0 b1 b2 b3
        sum0 = sum0 + Vec4f::splat(a[l * tileRows]) * b;
        if constexpr (rows > 1)
            sum1 = sum1 + Vec4f::splat(a[l * tileRows + 1]) * b;
        if constexpr (rows > 2)
            sum2 = sum2 + Vec4f::splat(a[l * tileRows + 2]) * b;
    }
    float sums[3][4];
    sum0.store(sums[0]);
    sum1.store(sums[1]);
    sum2.store(sums[2]);
    for (int j = 0; j < columns; ++j)
        for (int i = 0; i < rows; ++i)
            c(i, j) += sums[i][j];
}

// All rows of the block times one sliver.
template <int columns>
void multiply_column_group(int m, int kp, const float* a, std::ptrdiff_t aStride, const float* sliver, Matrix<float> c,
                           bool aligned) {
    int i = 0;
    if constexpr (pairTiles)
        for (; i + 2 * tileRows <= m; i += 2 * tileRows, a += 2 * aStride)
            multiply_tile<2, columns>(kp, a, aStride, sliver, c.block(i, 0), aligned);
    for (; i + tileRows <= m; i += tileRows, a += aStride)
        multiply_tile<1, columns>(kp, a, aStride, sliver, c.block(i, 0), aligned);
    switch (m - i) {
    case 3:
        return multiply_edge<3, columns>(kp, a, sliver, c.block(i, 0));
    case 2:
        return multiply_edge<2, columns>(kp, a, sliver, c.block(i, 0));
    case 1:
        return multiply_edge<1, columns>(kp, a, sliver, c.block(i, 0));
    }
}

// One call of the micro-kernel; `b` and `c` move along the columns.
struct MicroCall {
    int m, k;
    const float* a;
    std::ptrdiff_t aStride;
    const float* b;
    std::ptrdiff_t ldb;
    Matrix<float> c;
    float* sliver;
    MicroForm form;
    bool transposedB;
    bool alignedC;

    template <int columns>
    void multiply_columns() {
        if (form == MicroForm::packedB)
            expand_packed<columns>(k, b, sliver);
        else
            expand_direct<columns>(k, b, ldb, transposedB, sliver);
        multiply_column_group<columns>(m, round_up(k, 4), a, aStride, sliver, c, alignedC);
    }
    void next_columns() {
        b += form == MicroForm::directB && transposedB ? tileColumns
             : form == MicroForm::directB              ? tileColumns * ldb
                                                       : ldb;
        c = c.block(0, tileColumns);
    }
};

inline void sgemm_micro(const char*, const char* transb, const int* m, const int* n, const int* kp, const float*,
                        const float* aPacked, const int* aStride, const float* b, const int* ldb, const float*,
                        float* c, const int* ldc, float* sliver, MicroForm form) {
    // Both cases of 'N', by the bits that tell it from the other options.
    constexpr int noTranspose = 'N';
    const auto address = reinterpret_cast<std::uintptr_t>(c);
    const bool aligned = ((static_cast<std::uintptr_t>(*ldc) * sizeof(float) & 15) + (address & 15)) == 0;
    MicroCall call{*m,
                   *kp,
                   aPacked,
                   *aStride,
                   b,
                   *ldb,
                   Matrix<float>{c, *ldc},
                   sliver,
                   form,
                   (*transb & noTranspose) != noTranspose,
                   aligned};
    int left = *n;
    for (; left >= tileColumns; left -= tileColumns, call.next_columns())
        call.multiply_columns<4>();
    switch (left) {
    case 3:
        return call.multiply_columns<3>();
    case 2:
        return call.multiply_columns<2>();
    case 1:
        return call.multiply_columns<1>();
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
