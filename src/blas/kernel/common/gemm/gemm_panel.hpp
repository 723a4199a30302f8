// Serial GEMM of the builds without a plan, real and complex: C waits in a panel of work memory while all of k passes
// over it.
//
//   tile      4 x 1 dot products: one accumulator a row, its lanes four steps of k; summed across once a block of k.
//             Complex: one for the real, one for the imaginary part
//   A tile    up to 64 rows (complex: 32) x 64 steps of alpha*op(A): groups of 4 rows, each a sequence of 4 x 4 blocks
//             along k, a block being four consecutive steps of each of its rows; of a complex row, the four real parts
//             and then the four imaginary ones
//   B panel   64 steps x nb columns of op(B), each column contiguous, complex ones in the same fours
//   C panel   512 rows x nb columns of C, times beta: panels of 16 rows, each column 16 elements as they are in C
//   alignment the three areas begin at 64 bytes, so everything the kernel touches is aligned to 16; the caller's
//             operands may lie anywhere
//   reads     nothing past the operands; C only if beta is not 0; of the work areas only what was written
//
// Rows go in tiles and groups of 16, then 8. A rest of k is taken by 48, 32 or 16 steps. What is smaller, and
// whole problems below the thresholds, goes through the small path, straight from the caller's A and B.
//
// The build's vec.hpp comes before this header.
#pragma once

#include <cstddef>
#include <cstdint>

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/cgemm_small.hpp"
#include "blas/kernel/common/gemm/gemm_scale_c.hpp"
#include "blas/kernel/common/gemm/gemm_small.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"
#include "blas/kernel/vec.hpp"
#include "blas/matrix.hpp"
#include "qrv/service.h"
#include "service/work_pool.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int panelDepth = 64; // steps of k per block: a tile of A is half of a 32 KB first-level cache
constexpr int panelRows = 512; // rows of C per panel
template <class T>
constexpr int tileRows = isComplex<T> ? 32 : 64;
constexpr int groupRows = 16; // rows of one pass over the B panel: 4 KB of A that stay in the first level
constexpr int tailRows = 8;   // the one shorter pass
constexpr int depthUnit = 16; // to which a rest of k is cut
static_assert(panelRows % tileRows<float> == 0 && tileRows<SingleComplex> % groupRows == 0 &&
              panelDepth % depthUnit == 0);

// ---- Decisions -------------------------------------------------------------------------------------------------

// Problems with m + n + k below `sizeLimit` go unpacked if the operands' elements per operation reach `ratio`.
struct SmallRule {
    int sizeLimit;
    double ratio;
};
constexpr SmallRule smallRules[2][2] = {
    // op(B) = B     op(B) = B^T
    {{150, 0.06}, {150, 0.045}}, // op(A) = A
    {{150, 0.07}, {80, 0.075}},  // op(A) = A^T
};
constexpr SmallRule complexSmallRule{50, 0.08};
template <class T>
constexpr int smallestPacked = isComplex<T> ? 4 : 8; // of m, n and k

template <class T>
constexpr bool goes_unpacked(bool aTransposed, bool bTransposed, int m, int n, int k) {
    constexpr int least = smallestPacked<T>;
    if (m < least || n < least || k < least)
        return true;
    const SmallRule rule = isComplex<T> ? complexSmallRule : smallRules[aTransposed][bTransposed];
    // Operations on an element of C: one to scale it and one a step, in units of real multiplications and additions.
    constexpr double forC = isComplex<T> ? 14 : 2, forStep = isComplex<T> ? 8 : 2;
    const double x = m, y = n, z = k;
    return x + y + z < rule.sizeLimit && ((x + z) * y + x * z) / (forC * x * y + forStep * x * y * z) >= rule.ratio;
}

// Columns of a panel. The wide panel belongs to the second-level caches of 512 KB.
template <class T>
constexpr int panel_columns(int l2Class) {
    constexpr int columns = isComplex<T> ? 192 : 240;
    return l2Class == 3 ? 2 * columns : columns;
}

// ---- Work memory -----------------------------------------------------------------------------------------------

constexpr std::size_t workAlignment = 64; // inside the block, which may come with less
template <class T>
constexpr std::size_t tileBytes = sizeof(T) * tileRows<T>* panelDepth;
template <class T>
constexpr std::size_t panel_work_bytes(int columns) {
    return sizeof(T) * (panelDepth + panelRows) * static_cast<std::size_t>(columns) + tileBytes<T> + 2 * workAlignment;
}
static_assert(panel_work_bytes<float>(240) == 2304 * 240 + 16512);
static_assert(panel_work_bytes<SingleComplex>(192) == 4608 * 192 + 16512);

template <class T>
struct PanelWork {
    T* tile; // of A
    T* b;
    T* c;
    std::ptrdiff_t columns; // of the panels in this pass

    PanelWork(void* block, int nb) {
        const auto start = (reinterpret_cast<std::uintptr_t>(block) & ~(workAlignment - 1)) + workAlignment;
        tile = reinterpret_cast<T*>(start);
        b = tile + tileRows<T> * panelDepth;
        c = b + static_cast<std::ptrdiff_t>(panelDepth) * nb;
        columns = nb;
    }
    // Rows i to i + 15 of the C panel, i a multiple of 16.
    Matrix<T> group(int i) const { return {c + i * columns, groupRows}; }
};
static_assert(tileBytes<float> % workAlignment == 0 && sizeof(float) * panelDepth % workAlignment == 0);

// alpha*op(A)*op(B) for an m x n matrix C: a whole product, or the part of one whose C is in the panel.
template <class T>
struct PanelProduct {
    int m;
    int n;
    int k;
    T alpha;
    OpView<const T> a;
    OpView<const T> b;
    bool conjugatedA = false, conjugatedB = false;
};

// The part of a product that goes through the small path: rows from i on, `depth` steps from l on, added to C.
inline SmallProduct small_part(const PanelProduct<float>& p, int i, int l, int depth) {
    return {depth, p.alpha, 1, p.a.block(i, l), p.b.block(l, 0)};
}
inline ComplexProduct small_part(const PanelProduct<SingleComplex>& p, int i, int l, int depth) {
    return {depth, p.alpha, scalar<SingleComplex>(1), p.a.block(i, l), p.b.block(l, 0), p.conjugatedA, p.conjugatedB};
}

// ---- Copying ---------------------------------------------------------------------------------------------------

// `rows` rows, a multiple of 4, from `first` on and `depth` steps from l0 on of alpha*op(A).
template <int depth>
void copy_a_tile(int rows, const PanelProduct<float>& p, int first, int l0, float* tile) {
    const OpView<const float> a = p.a.block(first, l0);
    const Vec4f factor = Vec4f::splat(p.alpha);
    constexpr int groupFloats = 4 * depth;
    if (a.columns_contiguous()) {
        for (int l = 0; l < depth; l += 4)
            for (int i = 0; i < rows; i += 4) {
                Vec4f x0 = Vec4f::load(a.at(i, l)), x1 = Vec4f::load(a.at(i, l + 1));
                Vec4f x2 = Vec4f::load(a.at(i, l + 2)), x3 = Vec4f::load(a.at(i, l + 3));
                transpose(x0, x1, x2, x3);
                float* block = tile + i / 4 * groupFloats + 4 * l;
                (factor * x0).store_aligned(block);
                (factor * x1).store_aligned(block + 4);
                (factor * x2).store_aligned(block + 8);
                (factor * x3).store_aligned(block + 12);
            }
    } else {
        for (int i = 0; i < rows; i += 4, tile += groupFloats)
            for (int l = 0; l < depth; l += 4)
                for (int r = 0; r < 4; ++r)
                    (factor * Vec4f::load(a.at(i + r, l))).store_aligned(tile + 4 * l + 4 * r);
    }
}

// All columns, `depth` steps from l0 on, of op(B); columns panelDepth apart.
template <int depth>
void copy_b_panel(const PanelProduct<float>& p, int l0, float* panel) {
    const OpView<const float> b = p.b.block(l0, 0);
    const int n = p.n;
    int j = 0;
    if (!b.columns_contiguous()) {
        for (; n - j >= 4; j += 4)
            for (int l = 0; l < depth; l += 4) {
                Vec4f x0 = Vec4f::load(b.at(l, j)), x1 = Vec4f::load(b.at(l + 1, j));
                Vec4f x2 = Vec4f::load(b.at(l + 2, j)), x3 = Vec4f::load(b.at(l + 3, j));
                transpose(x0, x1, x2, x3);
                float* block = panel + j * panelDepth + l;
                x0.store_aligned(block);
                x1.store_aligned(block + panelDepth);
                x2.store_aligned(block + 2 * panelDepth);
                x3.store_aligned(block + 3 * panelDepth);
            }
        for (; j < n; ++j)
            for (int l = 0; l < depth; ++l)
                panel[j * panelDepth + l] = b(l, j);
    }
    for (; j < n; ++j) {
        const float* source = b.at(0, j);
        float* column = panel + j * panelDepth;
        for (int l = 0; l < depth; l += 8) {
            Vec4f::load(source + l).store_aligned(column + l);
            Vec4f::load(source + l + 4).store_aligned(column + l + 4);
        }
    }
}

// Four neighbouring complex elements, their parts kept apart.
struct FourParts {
    Vec4f re, im;

    // From p on; with `conjugated` the imaginary parts change sign.
    static FourParts load(const SingleComplex* p, bool conjugated) {
        const Vec4f low = Vec4f::load(&p->re), high = Vec4f::load(&p[2].re);
        return {unzip_even(low, high), change_signs(unzip_odd(low, high), Vec4f::splat(conjugated ? -0.0F : 0.0F))};
    }
    FourParts times(SingleComplex x) const {
        const Vec4f xr = Vec4f::splat(x.re), xi = Vec4f::splat(x.im);
        return {re * xr - im * xi, re * xi + im * xr};
    }
    void store_aligned(SingleComplex* p) const {
        re.store_aligned(&p->re);
        im.store_aligned(&p[2].re);
    }
};
// Four of these as the rows of a matrix, transposed.
inline void transpose(FourParts (&x)[4]) {
    transpose(x[0].re, x[1].re, x[2].re, x[3].re);
    transpose(x[0].im, x[1].im, x[2].im, x[3].im);
}

template <int depth>
void copy_a_tile(int rows, const PanelProduct<SingleComplex>& p, int first, int l0, SingleComplex* tile) {
    const OpView<const SingleComplex> a = p.a.block(first, l0);
    for (int i = 0; i < rows; i += 4, tile += 4 * depth)
        for (int l = 0; l < depth; l += 4) {
            FourParts x[4];
            for (int r = 0; r < 4; ++r)
                x[r] = FourParts::load(a.columns_contiguous() ? a.at(i, l + r) : a.at(i + r, l), p.conjugatedA);
            if (a.columns_contiguous())
                transpose(x);
            for (int r = 0; r < 4; ++r)
                x[r].times(p.alpha).store_aligned(tile + 4 * l + 4 * r);
        }
}

template <int depth>
void copy_b_panel(const PanelProduct<SingleComplex>& p, int l0, SingleComplex* panel) {
    const OpView<const SingleComplex> b = p.b.block(l0, 0);
    int j = 0;
    if (!b.columns_contiguous()) {
        for (; p.n - j >= 4; j += 4)
            for (int l = 0; l < depth; l += 4) {
                FourParts x[4];
                for (int r = 0; r < 4; ++r)
                    x[r] = FourParts::load(b.at(l + r, j), p.conjugatedB);
                transpose(x);
                for (int r = 0; r < 4; ++r)
                    x[r].store_aligned(panel + (j + r) * panelDepth + l);
            }
        for (; j < p.n; ++j)
            for (int l = 0; l < depth; l += 4) {
                const SingleComplex four[4] = {b(l, j), b(l + 1, j), b(l + 2, j), b(l + 3, j)};
                FourParts::load(four, p.conjugatedB).store_aligned(panel + j * panelDepth + l);
            }
    }
    for (; j < p.n; ++j)
        for (int l = 0; l < depth; l += 4)
            FourParts::load(b.at(l, j), p.conjugatedB).store_aligned(panel + j * panelDepth + l);
}

// Visits the m x n block of C at c beside its place in the panel: move(inner, outer, lanes) is called for each
// vector, or where rows fall short of a group for each element, of the panel and of C.
template <class T, class Move>
void for_panel(int m, int n, const PanelWork<T>& work, Matrix<T> c, Move move) {
    constexpr int unit = sizeof(T) / sizeof(float);
    for (int i = 0; i < m; i += groupRows) {
        const Matrix<T> group = work.group(i);
        for (int j = 0; j < n; ++j) {
            auto* inner = reinterpret_cast<float*>(group.column(j));
            auto* outer = reinterpret_cast<float*>(c.column(j) + i);
            if (m - i >= groupRows)
                for (int r = 0; r < unit * groupRows; r += 4)
                    move(inner + r, outer + r, Lanes<4>());
            else
                for (int r = 0; r < unit * (m - i); r += unit)
                    move(inner + r, outer + r, Lanes<unit>());
        }
    }
}

template <class T>
void load_c_panel(int m, int n, T beta, const PanelWork<T>& work, Matrix<T> c) {
    if (beta == scalar<T>(0))
        for_panel(m, n, work, c,
                  [](float* inner, const float*, auto lanes) { store_first<lanes()>(inner, Vec4f::zero()); });
    else if (beta == scalar<T>(1))
        for_panel(m, n, work, c, [](float* inner, const float* outer, auto lanes) {
            store_first<lanes()>(inner, load_first<lanes()>(outer));
        });
    else
        for_panel(m, n, work, c, [scaled = ScaledBy<T>(beta)](float* inner, const float* outer, auto lanes) {
            store_first<lanes()>(inner, scaled(outer, lanes));
        });
}

template <class T>
void store_c_panel(int m, int n, const PanelWork<T>& work, Matrix<T> c) {
    for_panel(m, n, work, c, [](const float* inner, float* outer, auto lanes) {
        store_first<lanes()>(outer, load_first<lanes()>(inner));
    });
}

// ---- Products --------------------------------------------------------------------------------------------------

// Four dot products of a column of B with the rows of a group.
template <int depth>
[[gnu::always_inline]] inline Vec4f multiply_group(const float* a, const float* b) {
    Vec4f sum0 = Vec4f::zero(), sum1 = sum0, sum2 = sum0, sum3 = sum0;
    auto step = [&](int l) __attribute__((always_inline)) {
        const Vec4f x = Vec4f::load_aligned(b + l);
        sum0 = sum0 + Vec4f::load_aligned(a + 4 * l) * x;
        sum1 = sum1 + Vec4f::load_aligned(a + 4 * l + 4) * x;
        sum2 = sum2 + Vec4f::load_aligned(a + 4 * l + 8) * x;
        sum3 = sum3 + Vec4f::load_aligned(a + 4 * l + 12) * x;
        // Eight registers hold one step at a time. An empty statement that changes the sums keeps the compiler from
        // running several steps into one another and spilling.
        if constexpr (vectorRegisters == 8)
            asm("" : "+x"(sum0.v), "+x"(sum1.v), "+x"(sum2.v), "+x"(sum3.v));
    };
    for (int l = 0; l < depth; l += 16) {
        step(l);
        step(l + 4);
        step(l + 8);
        step(l + 12);
    }
    return horizontal_sums(sum0, sum1, sum2, sum3);
}

template <int depth>
[[gnu::always_inline]] inline FourParts multiply_group(const SingleComplex* a, const SingleComplex* b) {
    Vec4f re[4], im[4]; // in registers, with the loops over them unrolled
#pragma GCC unroll 4
    for (int r = 0; r < 4; ++r)
        re[r] = im[r] = Vec4f::zero();
    for (int l = 0; l < depth; l += 4, a += 16, b += 4) {
        const Vec4f br = Vec4f::load_aligned(&b->re), bi = Vec4f::load_aligned(&b->re + 4);
#pragma GCC unroll 4
        for (int r = 0; r < 4; ++r) {
            const Vec4f ar = Vec4f::load_aligned(&a->re + 8 * r), ai = Vec4f::load_aligned(&a->re + 8 * r + 4);
            re[r] = re[r] + (ar * br - ai * bi);
            im[r] = im[r] + (ar * bi + ai * br);
        }
    }
    return {horizontal_sums(re[0], re[1], re[2], re[3]), horizontal_sums(im[0], im[1], im[2], im[3])};
}

// Adds `rows` rows of the tile times n columns of the B panel to C.
template <int rows, int depth>
void multiply_rows(int n, const float* tile, const float* b, Matrix<float> c) {
    for (int j = 0; j < n; ++j, b += panelDepth)
        for (int i = 0; i < rows; i += 4) {
            float* out = c.column(j) + i;
            (Vec4f::load_aligned(out) + multiply_group<depth>(tile + i * depth, b)).store_aligned(out);
        }
}

template <int rows, int depth>
void multiply_rows(int n, const SingleComplex* tile, const SingleComplex* b, Matrix<SingleComplex> c) {
    for (int j = 0; j < n; ++j, b += panelDepth)
        for (int i = 0; i < rows; i += 4) {
            const FourParts sums = multiply_group<depth>(tile + i * depth, b);
            float* out = &c(i, j).re;
            (Vec4f::load_aligned(out) + interleave_low(sums.re, sums.im)).store_aligned(out);
            (Vec4f::load_aligned(out + 4) + interleave_high(sums.re, sums.im)).store_aligned(out + 4);
        }
}

// Adds the steps l to l + depth - 1 of k to the C panel.
template <int depth, class T>
void multiply_block(const PanelProduct<T>& p, int l, const PanelWork<T>& work) {
    const int grouped = p.m - p.m % groupRows;
    const bool tail = p.m - grouped >= tailRows;
    if (grouped > 0 || tail)
        copy_b_panel<depth>(p, l, work.b);
    for (int i = 0; i < grouped; i += tileRows<T>) {
        const int rows = grouped - i < tileRows<T> ? grouped - i : tileRows<T>;
        copy_a_tile<depth>(rows, p, i, l, work.tile);
        for (int r = 0; r < rows; r += groupRows)
            multiply_rows<groupRows, depth>(p.n, work.tile + r * depth, work.b, work.group(i + r));
    }
    if (tail) {
        copy_a_tile<depth>(tailRows, p, grouped, l, work.tile);
        multiply_rows<tailRows, depth>(p.n, work.tile, work.b, work.group(grouped));
    }
    const int first = grouped + (tail ? tailRows : 0);
    if (first < p.m)
        multiply_small(p.m - first, p.n, small_part(p, first, l, depth), work.group(grouped).block(first - grouped, 0));
}

// Adds the whole product to the C panel.
template <class T>
void multiply_panel(const PanelProduct<T>& p, const PanelWork<T>& work) {
    const int k = p.k;
    int l = 0;
    for (; k - l >= panelDepth; l += panelDepth)
        multiply_block<panelDepth>(p, l, work);
    switch ((k - l) / depthUnit) {
    case 3:
        multiply_block<48>(p, l, work);
        break;
    case 2:
        multiply_block<32>(p, l, work);
        break;
    case 1:
        multiply_block<16>(p, l, work);
        break;
    default:
        break;
    }
    l += (k - l) / depthUnit * depthUnit;
    for (int i = 0; l < k && i < p.m; i += groupRows) {
        const int rows = p.m - i < groupRows ? p.m - i : groupRows;
        multiply_small(rows, p.n, small_part(p, i, l, k - l), work.group(i));
    }
}

// C := beta*C + the product, in panels of nb columns. `block` holds panel_work_bytes(nb).
template <class T>
void multiply_by_panels(const PanelProduct<T>& p, T beta, Matrix<T> c, int nb, void* block) {
    PanelWork<T> work(block, nb);
    for (int j = 0, columns; j < p.n; j += columns) {
        columns = smaller(nb, p.n - j);
        work.columns = columns;
        for (int i = 0, rows; i < p.m; i += rows) {
            rows = smaller(panelRows, p.m - i);
            PanelProduct<T> part = p;
            part.m = rows;
            part.n = columns;
            part.a = p.a.block(i, 0);
            part.b = p.b.block(0, j);
            load_c_panel(rows, columns, beta, work, c.block(i, j));
            multiply_panel(part, work);
            store_c_panel(rows, columns, work, c.block(i, j));
        }
    }
}

// In line, so that a tiny product is not written down and read again.
template <class T>
[[gnu::always_inline]] inline void gemm_panel(const GemmCall<T>& p) {
    if (p.is_empty())
        return;
    QRV_ASSERT(p.is_well_formed());
    if (p.alpha == scalar<T>(0))
        return gemm_scale_c(p.m, p.n, p.beta, p.c);
    const bool unpacked = goes_unpacked<T>(transposes(p.opA), transposes(p.opB), p.m, p.n, p.k);
    const int nb = unpacked ? 0 : panel_columns<T>(qrv_serv_get_l2_class());
    void* const block = unpacked ? nullptr : qrv_serv_allocate(panel_work_bytes<T>(nb), 128);
    if (!block)
        return gemm_small(p);
    const PanelProduct<T> product{
        p.m, p.n, p.k, p.alpha, p.view_of_a(), p.view_of_b(), conjugates(p.opA), conjugates(p.opB)};
    multiply_by_panels(product, p.beta, p.c, nb, block);
    qrv_serv_deallocate(block);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
