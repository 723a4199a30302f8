// Serial SGEMM for processors without vector instructions.
//
//   tile      4 x 1: four running sums in extended precision, rounded once per block of k when added to C
//   packed A  up to 16 rows x 64 steps of alpha*op(A), in groups of 4 rows, 4 floats a step
//   packed B  columns of 64 floats, only where op(B)'s columns are not contiguous or the block is padded
//   reads     nothing past the end of A, B or C; packed operands to their padded depth
//
// k goes in blocks of 64. Of what is left after the last full block, 58 steps or more are padded with zeros to a
// full block; otherwise 48, 32 or 16 steps are taken as a block and the rest goes through a plain loop. Rows go in
// tiles of 16, then one of 8, then singly.
#include <cstring>

#include "blas/kernel/common/no_plan.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/matrix.hpp"
#include "service/work_pool.hpp"

namespace qrv::kernel::generic {
namespace {

using Operand = OpView<const float>;

constexpr int kBlock = 64;       // steps of k per packed block
constexpr int paddedFrom = 58;   // a remainder of k from here on is padded to a full block
constexpr int kTailUnit = 16;    // a shorter one is cut to a multiple of this, the rest goes singly
constexpr int columnGroup = 128; // columns of C per pass over k
constexpr int rowTile = 16;
constexpr int rowTail = 8;
constexpr int rowGroup = 4;    // rows of one register tile
constexpr int memsetRows = 25; // from this column height on, zeroing calls memset
constexpr int workAlignment = 128;
constexpr int tileBytes = 4112;
constexpr int panelBytes = 51216;
static_assert(rowTile * kBlock * sizeof(float) <= tileBytes);
static_assert(columnGroup * kBlock * sizeof(float) <= panelBytes);

// Buffers for packed A and packed B; without them the plain loop does all the work.
struct Work {
    float* tile;
    float* panel;
};

// A block of k: `count` steps of the operands, taken as `depth` steps with zeros behind them.
struct KBlock {
    int count;
    int depth;
};

// op(B) as the kernel reads it: contiguous columns of at least `depth` floats.
struct PanelView {
    const float* data;
    std::ptrdiff_t stride;
    const float* column(int j) const { return data + j * stride; }
};

constexpr int smaller(int a, int b) {
    return a < b ? a : b;
}

// C += alpha*op(A)*op(B), element by element.
void plain_loop(int m, int n, int k, float alpha, Operand a, Operand b, Matrix<float> c) {
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) {
            long double sum = 0;
            for (int l = 0; l < k; ++l) {
                const float scaled = alpha * a(i, l);
                sum += static_cast<long double>(scaled) * b(l, j);
            }
            c(i, j) = static_cast<float>(c(i, j) + sum);
        }
}

void pack_tile(int rows, KBlock k, float alpha, Operand a, float* tile) {
    for (int first = 0; first < rows; first += rowGroup, tile += rowGroup * k.depth) {
        float* step = tile;
        for (int l = 0; l < k.count; ++l)
            for (int i = 0; i < rowGroup; ++i)
                *step++ = alpha * a(first + i, l);
        std::memset(step, 0, sizeof(float) * static_cast<std::size_t>(rowGroup * (k.depth - k.count)));
    }
}

PanelView pack_panel(int n, KBlock k, Operand b, float* panel) {
    if (b.columns_contiguous() && k.count == k.depth)
        return {b.data, b.columnStride};
    for (int j = 0; j < n; ++j) {
        float* column = panel + j * k.depth;
        for (int l = 0; l < k.count; ++l)
            column[l] = b(l, j);
        std::memset(column + k.count, 0, sizeof(float) * static_cast<std::size_t>(k.depth - k.count));
    }
    return {panel, k.depth};
}

// Adds one packed tile times one panel to C. depth is even.
void multiply_tile(int rows, int n, int depth, const float* tile, PanelView b, Matrix<float> c) {
    for (int j = 0; j < n; ++j) {
        const float* bj = b.column(j);
        const float* a = tile;
        float* out = c.column(j);
        for (int i = 0; i < rows; i += rowGroup, out += rowGroup) {
            long double sum0 = 0, sum1 = 0, sum2 = 0, sum3 = 0;
            for (int l = 0; l < depth; l += 2, a += 2 * rowGroup) {
                const long double b0 = bj[l], b1 = bj[l + 1];
                sum0 += a[0] * b0;
                sum1 += a[1] * b0;
                sum2 += a[2] * b0;
                sum3 += a[3] * b0;
                sum0 += a[4] * b1;
                sum1 += a[5] * b1;
                sum2 += a[6] * b1;
                sum3 += a[7] * b1;
            }
            out[0] = static_cast<float>(out[0] + sum0);
            out[1] = static_cast<float>(out[1] + sum1);
            out[2] = static_cast<float>(out[2] + sum2);
            out[3] = static_cast<float>(out[3] + sum3);
        }
    }
}

// C += alpha*op(A)*op(B) over one block of k.
void multiply_block(int m, int n, KBlock k, float alpha, Operand a, Operand b, Matrix<float> c, Work work) {
    const PanelView panel = pack_panel(n, k, b, work.panel);
    int i = 0;
    while (m - i >= rowTail) {
        const int rows = m - i >= rowTile ? rowTile : rowTail;
        Operand tileA = a;
        tileA.data = a.at(i, 0);
        pack_tile(rows, k, alpha, tileA, work.tile);
        multiply_tile(rows, n, k.depth, work.tile, panel, c.block(i, 0));
        i += rows;
    }
    Operand rest = a;
    rest.data = a.at(i, 0);
    plain_loop(m - i, n, k.count, alpha, rest, b, c.block(i, 0));
}

// The next block of k when `left` steps are to go; depth 0 sends the rest through the plain loop.
constexpr KBlock next_block(int left) {
    if (left >= kBlock)
        return {kBlock, kBlock};
    if (left >= paddedFrom)
        return {left, kBlock};
    const int depth = left / kTailUnit * kTailUnit;
    return depth > 0 ? KBlock{depth, depth} : KBlock{left, 0};
}

void multiply(int m, int n, int k, float alpha, Operand a, Operand b, Matrix<float> c, Work work) {
    for (int j = 0; j < n; j += columnGroup) {
        const int columns = smaller(columnGroup, n - j);
        for (int l = 0; l < k;) {
            KBlock block = next_block(k - l);
            if (!work.tile || !work.panel)
                block.depth = 0;
            Operand ablock = a, bblock = b;
            ablock.data = a.at(0, l);
            bblock.data = b.at(l, j);
            if (block.depth > 0)
                multiply_block(m, columns, block, alpha, ablock, bblock, c.block(0, j), work);
            else
                plain_loop(m, columns, block.count, alpha, ablock, bblock, c.block(0, j));
            l += block.count;
        }
    }
}

} // namespace

void blas_sgemm_scale_c(const int* m, const int* n, const float* beta, float* c, const int* ldc) {
    const Matrix<float> matrix{c, *ldc};
    for (int j = 0; j < *n; ++j) {
        float* column = matrix.column(j);
        if (*beta != 0) {
            for (int i = 0; i < *m; ++i)
                column[i] *= *beta;
        } else if (*m >= memsetRows) {
            std::memset(column, 0, sizeof(float) * static_cast<std::size_t>(*m));
        } else {
            for (int i = 0; i < *m; ++i)
                column[i] = 0;
        }
    }
}

void blas_sgemm_kernel(QRV_GEMM_PARAMETERS(float)) {
    if (*m < 1 || *n < 1)
        return;
    if (*beta != 1)
        blas_sgemm_scale_c(m, n, beta, c, ldc);
    if (*alpha == 0 || *k < 1)
        return;
    const Work work{static_cast<float*>(qrv_serv_allocate(tileBytes, workAlignment)),
                    static_cast<float*>(qrv_serv_allocate(panelBytes, workAlignment))};
    multiply(*m, *n, *k, *alpha, Operand(a, *lda, transposes(*transa)), Operand(b, *ldb, transposes(*transb)),
             Matrix<float>{c, *ldc}, work);
    qrv_serv_deallocate(work.panel);
    qrv_serv_deallocate(work.tile);
}

} // namespace qrv::kernel::generic
