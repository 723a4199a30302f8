// The micro-kernel of the plan-driven SGEMM in 128-bit registers: C += packed A * B for a block of A panels.
// alpha is in A already and beta in C, so the kernel only adds.
//
//   tile     4 x 4, in 64-bit mode two of them on top of each other; of the last columns 4 x 2; of the last rows less
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

#include "blas/kernel/common/gemm/gemm_sliver.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"
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
    return {_mm_castpd_ps(_mm_set1_pd(float_pair(p)))};
}

// The rows of one step of a panel as a tile takes them: a0 a1 a0 a1 and a2 a3 a2 a3. Of an edge, with fewer rows, only
// the floats that exist are read; what stands in for the others is never stored.
template <int rows>
Vec4f load_upper_rows(const float* a) {
    return rows == 1 ? Vec4f::splat(a[0]) : load_pair(a);
}
template <int rows>
Vec4f load_lower_rows(const float* a) {
    return rows < 3 ? Vec4f::zero() : rows == 3 ? Vec4f::splat(a[2]) : load_pair(a + 2);
}

// Running sums of two columns: r0c0 r1c0 r0c1 r1c1, and if there are more than two rows r2c0 r3c0 r2c1 r3c1.
template <int rows>
struct ColumnPair {
    Vec4f upper = Vec4f::zero(), lower = Vec4f::zero();

    void add_step(Vec4f a01, Vec4f a23, Vec4f b) {
        upper = upper + a01 * b;
        if constexpr (rows > 2)
            lower = lower + a23 * b;
    }
    Vec4f first() const { return low_halves(upper, lower); }
    Vec4f second() const { return high_halves(upper, lower); }
};

// Running sums of a tile of up to 4 x 4.
template <int rows, int columns>
struct Tile {
    ColumnPair<rows> left, right;

    void add_step(const float* a, const float* sliver) {
        const Vec4f a01 = load_upper_rows<rows>(a), a23 = load_lower_rows<rows>(a);
        left.add_step(a01, a23, Vec4f::load_aligned(sliver));
        if constexpr (columns > 2)
            right.add_step(a01, a23, Vec4f::load_aligned(sliver + 4));
    }

    // `aligned` says that all columns of C begin at 16-byte boundaries.
    static void add_to(float* c, Vec4f sums, bool aligned) {
        if (rows == 4 && aligned)
            (Vec4f::load_aligned(c) + sums).store_aligned(c);
        else
            store_first<rows>(c, load_first<rows>(c) + sums);
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

// No rows at all: what stands below a single tile.
template <int columns>
struct Tile<0, columns> {
    void add_step(const float*, const float*) {}
    void add_to(Matrix<float>, bool) const {}
};

template <int columns>
void prefetch_tile(Matrix<float> c) {
    for (int j = 0; j < columns; ++j)
        prefetch(c.column(j) + prefetchC);
}

// One panel, or two and perhaps a single row below each other, times one sliver.
template <int upperRows, int lowerRows, int edgeRows, int columns>
void multiply_tile(int kp, const float* a, std::ptrdiff_t aStride, const float* sliver, Matrix<float> c, bool aligned) {
    constexpr int width = sliver_step(columns);
    Tile<upperRows, columns> upper;
    Tile<lowerRows, columns> lower;
    Tile<edgeRows, columns> edge;
    // A loop of its own: straight-line code for several steps makes compilers spill the sums.
    const auto add_four_steps = [&](int first) {
        for (int l = first; l < first + 4; ++l) {
            upper.add_step(a + l * tileRows, sliver + l * width);
            lower.add_step(a + aStride + l * tileRows, sliver + l * width);
            edge.add_step(a + 2 * aStride + l * tileRows, sliver + l * width);
        }
    };
    prefetch_tile<columns>(c);
    int l = 0;
    for (; l + 8 <= kp; l += 8) {
        prefetch(a + l * tileRows + prefetchA);
        prefetch(a + l * tileRows + prefetchA + prefetchLine);
        add_four_steps(l);
        add_four_steps(l + 4);
    }
    if (l < kp)
        add_four_steps(l);
    upper.add_to(c, aligned);
    lower.add_to(c.block(tileRows, 0), aligned);
    edge.add_to(c.block(2 * tileRows, 0), aligned);
}

// All rows of the block times one sliver.
template <int columns>
void multiply_column_group(int m, int kp, const float* a, std::ptrdiff_t aStride, const float* sliver, Matrix<float> c,
                           bool aligned) {
    const auto multiply = [&](auto upperRows, auto lowerRows, auto edgeRows) {
        multiply_tile<upperRows(), lowerRows(), edgeRows(), columns>(kp, a, aStride, sliver, c, aligned);
    };
    constexpr Lanes<0> none;
    constexpr Lanes<4> full;
    constexpr int panels = pairTiles ? 2 : 1;
    // One row alone is one chain of additions and waits for each; with a pair of tiles it costs little.
    const auto row_below_pair = [](int rows) { return pairTiles && rows == 2 * tileRows + 1; };
    for (; m >= panels * tileRows && !row_below_pair(m); m -= panels * tileRows) {
        if constexpr (pairTiles)
            multiply(full, full, none);
        else
            multiply(full, none, none);
        a += panels * aStride;
        c = c.block(panels * tileRows, 0);
    }
    switch (m) {
    case 9:
        return multiply(full, full, Lanes<1>());
    case 7:
        return multiply(full, Lanes<3>(), none);
    case 6:
        return multiply(full, Lanes<2>(), none);
    case 5:
        return multiply(full, Lanes<1>(), none);
    case 4:
        return multiply(full, none, none);
    case 3:
        return multiply(Lanes<3>(), none, none);
    case 2:
        return multiply(Lanes<2>(), none, none);
    case 1:
        return multiply(Lanes<1>(), none, none);
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
