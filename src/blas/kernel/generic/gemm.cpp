// Serial GEMM for processors without vector instructions, real and complex.
//
//   tile      real 4 x 1, complex 2 x 1:
//             four running sums in extended precision,
//             rounded once per block of k when added to C
//   packed A  up to 16 rows (complex: 8) x 64 steps of alpha*op(A), in groups of the tile's rows, step by step
//   packed B  columns of 64 elements, only where op(B)'s columns are not contiguous or the block is padded
//   reads     nothing past the end of A, B or C; packed operands to their padded depth
//
// k goes in blocks of 64. Of what is left after the last full block, 58 steps or more are padded with zeros to a
// full block; otherwise 48, 32 or 16 steps are taken as a block and the rest goes through a plain loop. Rows go in
// tiles of 16, then one of 8, then singly; complex ones in half of these.
#include <cstring>

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/no_plan.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"
#include "service/work_pool.hpp"

namespace qrv::kernel::generic {
namespace {

constexpr int kBlock = 64;     // steps of k per packed block
constexpr int paddedFrom = 58; // a remainder of k from here on is padded to a full block
constexpr int kTailUnit = 16;  // a shorter one is cut to a multiple of this, the rest goes singly
constexpr int memsetRows = 25; // from this column height on, zeroing calls memset
constexpr int workAlignment = 128;
constexpr int tileBytes = 4112;

template <class T>
constexpr int panelBytes = isComplex<T> ? 32784 : 51216;
template <class T>
constexpr int columnGroup = isComplex<T> ? 64 : 128; // columns of C per pass over k
template <class T>
constexpr int rowTile = isComplex<T> ? 8 : 16;
template <class T>
constexpr int rowTail = rowTile<T> / 2;
template <class T>
constexpr int rowGroup = isComplex<T> ? 2 : 4; // rows of one register tile

// op(X), and whether its elements are conjugated on top.
template <class T>
struct Operand {
    OpView<const T> view;
    bool conjugated;

    Operand(Matrix<const T> x, Op op)
        : view(x.data, x.ld, transposes(op)), conjugated(isComplex<T> && conjugates(op)) {}
    T operator()(int i, int j) const { return conjugated ? conj(view(i, j)) : view(i, j); }
    Operand block(int i, int j) const {
        Operand part = *this;
        part.view = view.block(i, j);
        return part;
    }
};

// Buffers for packed A and packed B; without them the plain loop does all the work.
template <class T>
struct Work {
    T* tile;
    T* panel;
};

// A block of k: `count` steps of the operands, taken as `depth` steps with zeros behind them.
struct KBlock {
    int count;
    int depth;
};

// op(B) as the kernel reads it: contiguous columns of at least `depth` elements.
template <class T>
struct PanelView {
    const T* data;
    std::ptrdiff_t stride;
    const T* column(int j) const { return data + j * stride; }
};

// A running sum of products in extended precision.
template <class T>
struct Sum;
template <>
struct Sum<float> {
    long double value = 0;
    void add(float a, float b) { value += static_cast<long double>(a) * b; }
    float added_to(float c) const { return static_cast<float>(c + value); }
};
template <>
struct Sum<SingleComplex> {
    Sum<float> re, im;
    void add(SingleComplex a, SingleComplex b) {
        re.add(a.re, b.re);
        re.add(-a.im, b.im);
        im.add(a.re, b.im);
        im.add(a.im, b.re);
    }
    SingleComplex added_to(SingleComplex c) const { return {re.added_to(c.re), im.added_to(c.im)}; }
};

// C += alpha*op(A)*op(B), element by element.
template <class T>
void plain_loop(int m, int n, int k, T alpha, Operand<T> a, Operand<T> b, Matrix<T> c) {
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) {
            Sum<T> sum;
            for (int l = 0; l < k; ++l)
                sum.add(alpha * a(i, l), b(l, j));
            c(i, j) = sum.added_to(c(i, j));
        }
}

template <class T>
void fill_with_zeros(T* p, int count) {
    std::memset(static_cast<void*>(p), 0, sizeof(T) * static_cast<std::size_t>(count));
}

template <class T>
void pack_tile(int rows, KBlock k, T alpha, Operand<T> a, T* tile) {
    for (int first = 0; first < rows; first += rowGroup<T>, tile += rowGroup<T> * k.depth) {
        T* step = tile;
        for (int l = 0; l < k.count; ++l)
            for (int i = 0; i < rowGroup<T>; ++i)
                *step++ = alpha * a(first + i, l);
        fill_with_zeros(step, rowGroup<T> * (k.depth - k.count));
    }
}

template <class T>
PanelView<T> pack_panel(int n, KBlock k, Operand<T> b, T* panel) {
    if (b.view.columns_contiguous() && !b.conjugated && k.count == k.depth)
        return {b.view.data, b.view.columnStride};
    for (int j = 0; j < n; ++j) {
        T* column = panel + j * k.depth;
        for (int l = 0; l < k.count; ++l)
            column[l] = b(l, j);
        fill_with_zeros(column + k.count, k.depth - k.count);
    }
    return {panel, k.depth};
}

// Adds one packed tile times one panel to C.
template <class T>
void multiply_tile(int rows, int n, int depth, const T* tile, PanelView<T> b, Matrix<T> c) {
    for (int j = 0; j < n; ++j) {
        const T* bj = b.column(j);
        const T* a = tile;
        T* out = c.column(j);
        for (int i = 0; i < rows; i += rowGroup<T>, out += rowGroup<T>) {
            Sum<T> sums[rowGroup<T>]; // in registers, with the loops over them unrolled
#pragma GCC unroll 2
            for (int l = 0; l < depth; ++l, a += rowGroup<T>) {
                const T bl = bj[l];
#pragma GCC unroll 4
                for (int r = 0; r < rowGroup<T>; ++r)
                    sums[r].add(a[r], bl);
            }
#pragma GCC unroll 4
            for (int r = 0; r < rowGroup<T>; ++r)
                out[r] = sums[r].added_to(out[r]);
        }
    }
}

// C += alpha*op(A)*op(B) over one block of k.
template <class T>
void multiply_block(int m, int n, KBlock k, T alpha, Operand<T> a, Operand<T> b, Matrix<T> c, Work<T> work) {
    const PanelView<T> panel = pack_panel(n, k, b, work.panel);
    int i = 0;
    while (m - i >= rowTail<T>) {
        const int rows = m - i >= rowTile<T> ? rowTile<T> : rowTail<T>;
        pack_tile(rows, k, alpha, a.block(i, 0), work.tile);
        multiply_tile(rows, n, k.depth, work.tile, panel, c.block(i, 0));
        i += rows;
    }
    if (i < m)
        plain_loop(m - i, n, k.count, alpha, a.block(i, 0), b, c.block(i, 0));
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

template <class T>
void multiply(int m, int n, int k, T alpha, Operand<T> a, Operand<T> b, Matrix<T> c, Work<T> work) {
    for (int j = 0, columns; j < n; j += columns) {
        columns = smaller(columnGroup<T>, n - j);
        for (int l = 0; l < k;) {
            KBlock block = next_block(k - l);
            if (!work.tile || !work.panel)
                block.depth = 0;
            if (block.depth > 0)
                multiply_block(m, columns, block, alpha, a.block(0, l), b.block(l, j), c.block(0, j), work);
            else
                plain_loop(m, columns, block.count, alpha, a.block(0, l), b.block(l, j), c.block(0, j));
            l += block.count;
        }
    }
}

template <class T>
void scale_c(int m, int n, T beta, Matrix<T> c) {
    for (int j = 0; beta != scalar<T>(1) && j < n; ++j) {
        T* column = c.column(j);
        if (beta != scalar<T>(0)) {
            for (int i = 0; i < m; ++i)
                column[i] *= beta;
        } else if (m >= memsetRows) {
            fill_with_zeros(column, m);
        } else {
            for (int i = 0; i < m; ++i)
                column[i] = scalar<T>(0);
        }
    }
}

template <class T>
void gemm(const GemmCall<T>& p) {
    static_assert(rowTile<T> * kBlock * sizeof(T) <= tileBytes);
    static_assert(columnGroup<T> * kBlock * sizeof(T) <= panelBytes<T>);
    if (p.is_empty())
        return;
    QRV_ASSERT(p.is_well_formed());
    scale_c(p.m, p.n, p.beta, p.c);
    if (p.adds_nothing())
        return;
    const Work<T> work{static_cast<T*>(qrv_serv_allocate(tileBytes, workAlignment)),
                       static_cast<T*>(qrv_serv_allocate(panelBytes<T>, workAlignment))};
    multiply(p.m, p.n, p.k, p.alpha, Operand<T>(p.a, p.opA), Operand<T>(p.b, p.opB), p.c, work);
    qrv_serv_deallocate(work.panel);
    qrv_serv_deallocate(work.tile);
}

} // namespace

#define QRV_DEFINE_GEMM(T, name)                                                                                       \
    void blas_##name##_scale_c(const int* m, const int* n, const T* beta, T* c, const int* ldc) {                      \
        scale_c(*m, *n, *beta, Matrix<T>{c, *ldc});                                                                    \
    }                                                                                                                  \
    void blas_##name##_kernel(QRV_GEMM_PARAMETERS(T)) {                                                                \
        gemm(gemm_call<T>(QRV_GEMM_ARGUMENTS));                                                                        \
    }
QRV_DEFINE_GEMM(float, sgemm)
QRV_DEFINE_GEMM(SingleComplex, cgemm)
#undef QRV_DEFINE_GEMM

} // namespace qrv::kernel::generic
