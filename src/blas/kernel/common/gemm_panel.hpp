// Serial SGEMM of the builds without a plan: C waits in a panel of work memory while all of k passes over it.
//
//   tile      4 x 1 dot products: one accumulator a row, its lanes four steps of k; summed across once a block of k
//   A tile    up to 64 rows x 64 steps of alpha*op(A): groups of 4 rows, each a sequence of 4 x 4 blocks along k,
//             a block being four consecutive steps of each of its rows
//   B panel   64 steps x nb columns of op(B), each column contiguous
//   C panel   512 rows x nb columns of C, times beta: panels of 16 rows, each column 16 floats
//   alignment the three areas begin at 64 bytes, so everything the kernel touches is aligned to 16; the caller's
//             operands may lie anywhere
//   reads     nothing past the operands; C only if beta is not 0; of the work areas only what was written
//
// Rows go in tiles of 64 and groups of 16, then 8. A rest of k is taken by 48, 32 or 16 steps. What is smaller, and
// whole problems below the thresholds, goes through the small path, straight from the caller's A and B.
//
// The build's vec.hpp comes before this header.
#pragma once

#include <cstddef>
#include <cstdint>

#include "blas/kernel/common/gemm_scale_c.hpp"
#include "blas/kernel/common/gemm_small.hpp"
#include "blas/kernel/common/vec4f.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/matrix.hpp"
#include "qrv/service.h"
#include "service/work_pool.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int panelDepth = 64; // steps of k per block: a tile of A is half of a 32 KB first-level cache
constexpr int panelRows = 512; // rows of C per panel
constexpr int tileRows = 64;
constexpr int groupRows = 16; // rows of one pass over the B panel: 4 KB of A that stay in the first level
constexpr int tailRows = 8;   // the one shorter pass
constexpr int depthUnit = 16; // to which a rest of k is cut
static_assert(panelRows % tileRows == 0 && tileRows % groupRows == 0 && panelDepth % depthUnit == 0);

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
constexpr int smallestPacked = 8; // of m, n and k

constexpr bool goes_unpacked(bool aTransposed, bool bTransposed, int m, int n, int k) {
    if (m < smallestPacked || n < smallestPacked || k < smallestPacked)
        return true;
    const SmallRule rule = smallRules[aTransposed][bTransposed];
    const double x = m, y = n, z = k;
    return x + y + z < rule.sizeLimit && ((x + z) * y + x * z) / (2 * x * y + 2 * x * y * z) >= rule.ratio;
}

// Columns of a panel. The wide panel belongs to the second-level caches of 512 KB.
constexpr int panel_columns(int l2Class) {
    return l2Class == 3 ? 480 : 240;
}

// ---- Work memory -----------------------------------------------------------------------------------------------

constexpr std::size_t workAlignment = 64; // inside the block, which may come with less
constexpr std::size_t tileBytes = sizeof(float) * tileRows * panelDepth;
constexpr std::size_t bytesPerColumn = sizeof(float) * (panelDepth + panelRows);
constexpr std::size_t panel_work_bytes(int columns) {
    return bytesPerColumn * static_cast<std::size_t>(columns) + tileBytes + 2 * workAlignment;
}
static_assert(panel_work_bytes(240) == 2304 * 240 + 16512);

struct PanelWork {
    float* tile; // of A
    float* b;
    float* c;
    std::ptrdiff_t columns; // of the panels in this pass

    PanelWork(void* block, int nb) {
        const auto start = (reinterpret_cast<std::uintptr_t>(block) & ~(workAlignment - 1)) + workAlignment;
        tile = reinterpret_cast<float*>(start);
        b = tile + tileRows * panelDepth;
        c = b + static_cast<std::ptrdiff_t>(panelDepth) * nb;
        columns = nb;
    }
    // Rows i to i + 15 of the C panel, i a multiple of 16.
    Matrix<float> group(int i) const { return {c + i * columns, groupRows}; }
};
static_assert(tileBytes % workAlignment == 0 && sizeof(float) * panelDepth % workAlignment == 0);

// alpha*op(A)*op(B) for an m x n matrix C: a whole product, or the part of one whose C is in the panel.
struct PanelProduct {
    int m;
    int n;
    int k;
    float alpha;
    OpView<const float> a;
    OpView<const float> b;
};

// ---- Copying ---------------------------------------------------------------------------------------------------

// `rows` rows, a multiple of 4, and `depth` steps of alpha*op(A).
template <int depth>
void copy_a_tile(int rows, float alpha, OpView<const float> a, float* tile) {
    const Vec4f factor = Vec4f::splat(alpha);
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

// n columns of `depth` steps of op(B), columns panelDepth apart.
template <int depth>
void copy_b_panel(int n, OpView<const float> b, float* panel) {
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

// Visits the m x n block of C at c beside its place in the panel: move(inner, outer, lanes) is called for each
// vector, or where rows fall short of a group for each float, of the panel and of C.
template <class Move>
void for_panel(int m, int n, const PanelWork& work, Matrix<float> c, Move move) {
    for (int i = 0; i < m; i += groupRows) {
        const Matrix<float> group = work.group(i);
        for (int j = 0; j < n; ++j) {
            float* inner = group.column(j);
            float* outer = c.column(j) + i;
            if (m - i >= groupRows)
                for (int r = 0; r < groupRows; r += 4)
                    move(inner + r, outer + r, Lanes<4>());
            else
                for (int r = 0; r < m - i; ++r)
                    move(inner + r, outer + r, Lanes<1>());
        }
    }
}

inline void load_c_panel(int m, int n, float beta, const PanelWork& work, Matrix<float> c) {
    if (beta == 0)
        for_panel(m, n, work, c,
                  [](float* inner, const float*, auto lanes) { store_first<lanes()>(inner, Vec4f::zero()); });
    else if (beta == 1)
        for_panel(m, n, work, c, [](float* inner, const float* outer, auto lanes) {
            store_first<lanes()>(inner, load_first<lanes()>(outer));
        });
    else
        for_panel(m, n, work, c, [factor = Vec4f::splat(beta)](float* inner, const float* outer, auto lanes) {
            store_first<lanes()>(inner, factor * load_first<lanes()>(outer));
        });
}

inline void store_c_panel(int m, int n, const PanelWork& work, Matrix<float> c) {
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

// Adds `rows` rows of the tile times n columns of the B panel to C.
template <int rows, int depth>
void multiply_rows(int n, const float* tile, const float* b, Matrix<float> c) {
    for (int j = 0; j < n; ++j, b += panelDepth)
        for (int i = 0; i < rows; i += 4) {
            float* out = c.column(j) + i;
            (Vec4f::load_aligned(out) + multiply_group<depth>(tile + i * depth, b)).store_aligned(out);
        }
}

// Adds the steps l to l + depth - 1 of k to the C panel.
template <int depth>
void multiply_block(const PanelProduct& p, int l, const PanelWork& work) {
    const int grouped = p.m - p.m % groupRows;
    const bool tail = p.m - grouped >= tailRows;
    const OpView<const float> b = p.b.block(l, 0);
    if (grouped > 0 || tail)
        copy_b_panel<depth>(p.n, b, work.b);
    for (int i = 0; i < grouped; i += tileRows) {
        const int rows = grouped - i < tileRows ? grouped - i : tileRows;
        copy_a_tile<depth>(rows, p.alpha, p.a.block(i, l), work.tile);
        for (int r = 0; r < rows; r += groupRows)
            multiply_rows<groupRows, depth>(p.n, work.tile + r * depth, work.b, work.group(i + r));
    }
    if (tail) {
        copy_a_tile<depth>(tailRows, p.alpha, p.a.block(grouped, l), work.tile);
        multiply_rows<tailRows, depth>(p.n, work.tile, work.b, work.group(grouped));
    }
    const int first = grouped + (tail ? tailRows : 0);
    if (first < p.m)
        multiply_small(p.m - first, p.n, {depth, p.alpha, 1, p.a.block(first, l), b},
                       work.group(grouped).block(first - grouped, 0));
}

// Adds the whole product to the C panel.
inline void multiply_panel(const PanelProduct& p, const PanelWork& work) {
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
        multiply_small(rows, p.n, {k - l, p.alpha, 1, p.a.block(i, l), p.b.block(l, 0)}, work.group(i));
    }
}

// C := beta*C + the product, in panels of nb columns. `block` holds panel_work_bytes(nb).
inline void multiply_by_panels(const PanelProduct& p, float beta, Matrix<float> c, int nb, void* block) {
    PanelWork work(block, nb);
    for (int j = 0; j < p.n; j += nb) {
        const int columns = p.n - j < nb ? p.n - j : nb;
        work.columns = columns;
        for (int i = 0; i < p.m; i += panelRows) {
            const int rows = p.m - i < panelRows ? p.m - i : panelRows;
            load_c_panel(rows, columns, beta, work, c.block(i, j));
            multiply_panel({rows, columns, p.k, p.alpha, p.a.block(i, 0), p.b.block(0, j)}, work);
            store_c_panel(rows, columns, work, c.block(i, j));
        }
    }
}

inline void gemm_panel(QRV_GEMM_PARAMETERS(float)) {
    if (*m < 1 || *n < 1)
        return;
    if (*alpha == 0) {
        if (*beta != 1)
            gemm_scale_c(m, n, beta, c, ldc);
        return;
    }
    const bool aTransposed = transposes(*transa), bTransposed = transposes(*transb);
    if (goes_unpacked(aTransposed, bTransposed, *m, *n, *k))
        return gemm_small(QRV_GEMM_ARGUMENTS);
    const int nb = panel_columns(qrv_serv_get_l2_class());
    void* block = qrv_serv_allocate(panel_work_bytes(nb), 128);
    if (!block)
        return gemm_small(QRV_GEMM_ARGUMENTS);
    const PanelProduct product{*m, *n, *k, *alpha, {a, *lda, aTransposed}, {b, *ldb, bTransposed}};
    multiply_by_panels(product, *beta, Matrix<float>{c, *ldc}, nb, block);
    qrv_serv_deallocate(block);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
