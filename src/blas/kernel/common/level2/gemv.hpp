// y := alpha*op(A)*x + beta*y for a general matrix.
//
// A is read once, several columns a pass: op(A) = A adds them to y, alpha being in x already, the others take their dot
// products with x. Rows are worked through in blocks, so that x or y stays in the first-level cache; a vector whose
// elements are apart is brought together block by block.
#pragma once

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/kernel/common/level2/columns.hpp"
#include "blas/kernel/common/level2/multiples.hpp"
#include "blas/kernel/common/level2/strided_vector.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/pack.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// y := y + the sum of column k of A times s[k]
template <int columns, bool far = false, class T>
void add_columns(int m, const T* a, std::ptrdiff_t lda, const T* s, T* y) {
    const ColumnStarts<columns, const T> column(a, lda);
    Factor<T> factor[columns];
    QRV_UNROLL
    for (int k = 0; k < columns; ++k)
        factor[k] = Factor<T>(s[k]);
    const auto rows = [&](int i, auto load) __attribute__((always_inline)) {
        ScaledSum<T> sum, other; // two chains, of the even and of the odd columns
        QRV_UNROLL
        for (int k = 0; k < columns; ++k) {
            const Pack<T> p = load(column.at[k] + i);
            if (k == 0)
                sum = ScaledSum<T>(load(y + i), p, factor[k]);
            else if (k == 1)
                other = ScaledSum<T>(p, factor[k]);
            else
                (k % 2 ? other : sum).add(p, factor[k]);
        }
        if constexpr (columns > 1)
            sum.join(other);
        return sum.result();
    };
    int i = rows_to_vector(m, a, lda);
    if (i > 0)
        rows(0, [=](const T* p) { return Pack<T>::load(p, i); }).store(y, i);
    const auto whole_rows = [&](int at) __attribute__((always_inline)) {
        rows(at, [](const T* p) { return Pack<T>::load(p); }).store(y + at);
    };
    if constexpr (far)
        i = rows_asking_ahead(i, m, column, lda, whole_rows);
    for (; m - i >= Pack<T>::count; i += Pack<T>::count)
        whole_rows(i);
    if (i < m)
        rows(i, [=](const T* p) { return Pack<T>::load(p, m - i); }).store(y + i, m - i);
}

// The same for any number of columns and so few rows that the sums of all of them stay in registers: `packs` of them,
// the last of which may be partly filled.
template <int packs, class T>
void add_to_few_rows(int m, int n, const T* a, std::ptrdiff_t lda, const T* s, T* y) {
    constexpr int chains = 4 * packs <= columnsAtOnce<T> ? 4 : 2;
    const int last = m - (packs - 1) * Pack<T>::count;
    const auto load = [=](const T* p, int r) {
        return r < packs - 1 ? Pack<T>::load(p + r * Pack<T>::count) : Pack<T>::load(p + r * Pack<T>::count, last);
    };
    ScaledSum<T> sums[chains][packs];
    QRV_UNROLL
    for (int r = 0; r < packs; ++r) {
        sums[0][r] = ScaledSum<T>(load(y, r));
        QRV_UNROLL
        for (int chain = 1; chain < chains; ++chain)
            sums[chain][r] = ScaledSum<T>(Pack<T>::zero());
    }
    const auto add_column = [&](int j, int chain) __attribute__((always_inline)) {
        const Factor<T> factor(s[j]);
        QRV_UNROLL
        for (int r = 0; r < packs; ++r)
            sums[chain][r].add(load(a + j * lda, r), factor);
    };
    int j = 0;
    for (; n - j >= chains; j += chains) {
        QRV_UNROLL
        for (int chain = 0; chain < chains; ++chain)
            add_column(j + chain, chain);
    }
    for (; j < n; ++j)
        add_column(j, 0);
    QRV_UNROLL
    for (int r = 0; r < packs; ++r) {
        sums[0][r].join(sums[1][r]);
        if constexpr (chains == 4) {
            sums[2][r].join(sums[3][r]);
            sums[0][r].join(sums[2][r]);
        }
        sums[0][r].result().store(y + r * Pack<T>::count, r < packs - 1 ? Pack<T>::count : last);
    }
}

// dots[k] := the dot product of op(column k of A) and x
template <int columns, bool conjugated, bool far = false, class T>
void dot_columns(int m, const T* a, std::ptrdiff_t lda, const T* x, T* dots) {
    const ColumnStarts<columns, const T> column(a, lda);
    DotSum<conjugated, T> sums[columns];
    clear(sums);
    const auto rows = [&](int i, auto load) __attribute__((always_inline)) {
        const DotOperand<T> xi(load(x + i));
        QRV_UNROLL
        for (int k = 0; k < columns; ++k)
            sums[k].add(load(column.at[k] + i), xi);
    };
    // The first rows go to the last lanes, so that each lane sums the same products as without them; at the end all
    // lanes return to their places. Thus a result does not depend on where A lies.
    const int first = rows_to_vector(m, a, lda);
    int i = first;
    if constexpr (isBeyondQuads<T>)
        if (first > 0)
            rows(first - Pack<T>::count,
                 [=](const T* p) { return Pack<T>::load(p, Pack<T>::range(Pack<T>::count - first, Pack<T>::count)); });
    const auto whole_rows = [&](int at) __attribute__((always_inline)) {
        rows(at, [](const T* p) { return Pack<T>::load(p); });
    };
    if constexpr (far)
        i = rows_asking_ahead(i, m, column, lda, whole_rows);
    for (; m - i >= Pack<T>::count; i += Pack<T>::count)
        whole_rows(i);
    if (i < m)
        rows(i, [=](const T* p) { return Pack<T>::load(p, m - i); });
    if constexpr (isBeyondQuads<T>)
        if (first > 0)
            QRV_UNROLL
    for (int k = 0; k < columns; ++k)
        sums[k].rotate(first);
    store_dots(sums, dots);
}

// The same by the instance for so many rows, from `packs` on, but of `most` packs at most.
template <int packs, int most, class T>
void add_to_packs(int m, int n, const T* a, std::ptrdiff_t lda, const T* s, T* y) {
    if constexpr (packs < most)
        if (m > packs * Pack<T>::count)
            return add_to_packs<packs + 1, most>(m, n, a, lda, s, y);
    add_to_few_rows<packs>(m, n, a, lda, s, y);
}

// Columns for which a frame of its own is worth while: a short call feels the one of whole blocks.
constexpr int fewColumns = 128;

// Rows that are cheaper a few at a time, as y then is read once.
template <class T>
constexpr int mostPacks = isComplex<T> ? 2 : 4;
template <class T>
constexpr bool is_low(int m) {
    return Pack<T>::count > 1 && m <= 2 * mostPacks<T> * Pack<T>::count;
}
template <class T>
[[gnu::noinline]] void add_low_product(int m, int n, Matrix<const T> a, const T* s, T* y) {
    constexpr int few = mostPacks<T> * Pack<T>::count;
    add_to_packs<1, mostPacks<T>>(smaller(few, m), n, a.data, a.ld, s, y);
    if (m > few)
        add_to_packs<1, mostPacks<T>>(m - few, n, a.data + few, a.ld, s, y + few);
}

// y := y + A*s for a block of A
template <bool far, class T>
void add_block_product(int m, int n, Matrix<const T> a, const T* s, T* y) {
    if (is_low<T>(m))
        return add_low_product(m, n, a, s, y);
    in_passes<columnsAtOnce<T>>(
        0, n, [&](auto columns, int j) { add_columns<columns(), far>(m, a.column(j), a.ld, s + j, y); });
}

// Rows of a block. Of a y that is not brought together they may be more: beyond the second-level cache longer pieces of
// columns take 0.8 to 0.9 of the time.
template <class T>
constexpr int rows_of_block(StridedVector<T> y) {
    return y.inc == 1 ? 2 * blockElements<T> : blockElements<T>;
}

// y := y + alpha*A*x for a low A of few columns and vectors that are not brought together
template <class T>
[[gnu::noinline]] void add_small_product(int m, int n, T alpha, Matrix<const T> a, const T* x, T* y) {
    alignas(64) T scaled[fewColumns];
    scaled_copy(StridedVector<const T>(n, x, 1), 0, n, alpha, scaled);
    add_low_product(m, n, a, scaled, y);
}

// y := y + alpha*A*x
template <bool far, class T>
void add_product(int m, int n, T alpha, Matrix<const T> a, StridedVector<const T> x, StridedVector<T> y) {
    constexpr int block = blockElements<T>;
    alignas(64) T scaled[block], buffer[block];
    const int rowBlock = rows_of_block(y);
    for (int j = 0, columns; j < n; j += columns) {
        columns = smaller(block, n - j);
        const bool asItIs = alpha == scalar<T>(1) && x.inc == 1;
        if (!asItIs)
            scaled_copy(x, j, columns, alpha, scaled);
        const T* const xj = asItIs ? &x[j] : scaled;
        for (int i = 0, rows; i < m; i += rows) {
            rows = smaller(rowBlock, m - i);
            T* const yi = gathered(y, i, rows, buffer);
            add_block_product<far>(rows, columns, a.block(i, j), xj, yi);
            scatter(y, i, rows, yi);
        }
    }
}

// y := y + alpha*op(A)*x, where op transposes and conjugates or not.
template <bool conjugated, bool far, class T>
void add_transposed_product(int m, int n, T alpha, Matrix<const T> a, StridedVector<const T> x, StridedVector<T> y) {
    constexpr int block = blockElements<T>;
    alignas(64) T dots[block], buffer[block];
    const int rowBlock = x.inc == 1 ? m : block;
    for (int i = 0, rows; i < m; i += rows) {
        rows = smaller(rowBlock, m - i);
        const T* const xi = gathered(x, i, rows, buffer);
        for (int j = 0, columns; j < n; j += columns) {
            columns = smaller(block, n - j);
            in_passes<columnsAtOnce<T>>(0, columns, [&](auto inPass, int k) {
                dot_columns<inPass(), conjugated, far>(rows, &a(i, j + k), a.ld, xi, dots + k);
            });
            add_scaled(y, j, columns, alpha, dots);
        }
    }
}

// y := y + alpha*op(A)*x for columns of a pack at most and vectors that are not brought together
template <bool conjugated, class T>
[[gnu::noinline]] void add_short_dots(int m, int n, T alpha, Matrix<const T> a, const T* x, T* y) {
    const DotOperand<T> xs(Pack<T>::load(x, m));
    in_passes<columnsAtOnce<T>>(0, n, [&](auto inPass, int j) {
        constexpr int columns = inPass();
        DotSum<conjugated, T> sums[columns];
        clear(sums);
        QRV_UNROLL
        for (int k = 0; k < columns; ++k)
            sums[k].add(Pack<T>::load(a.column(j + k), m), xs);
        add_dots(sums, alpha, y + j);
    });
}

// y := y + alpha*op(A)*x in blocks, for a part of a matrix that is far or not.
template <class T>
[[gnu::noinline]] void gemv_by_blocks(Op op, int m, int n, T alpha, Matrix<const T> a, StridedVector<const T> x,
                                      StridedVector<T> y, bool isFar) {
    near_or_far<T, Passes::oneHalf>(isFar, [&](auto far) {
        if (!transposes(op))
            add_product<far()>(m, n, alpha, a, x, y);
        else if (isComplex<T> && op == Op::adjoint)
            add_transposed_product<isComplex<T>, far()>(m, n, alpha, a, x, y);
        else
            add_transposed_product<false, far()>(m, n, alpha, a, x, y);
    });
}

//   A        m x n, stored: op(A) is n x m if op transposes; read once, and not at all for alpha = 0
//   x, y     as long as op(A) has columns and rows, any increments but 0; y is not read for beta = 0
//   memory   two or three blocks of blockElements on the stack
//   reads    nothing past the m rows of a column
//
// A product of few rows is called from here with its arguments in registers: it costs little more than its call.
template <class T>
QRV_INLINE void gemv(Op op, int m, int n, T alpha, Matrix<const T> a, const T* x, int incx, T beta, T* y, int incy) {
    QRV_ASSERT(a.ld >= m || n <= 1);
    if (m <= 0 || n <= 0 || (alpha == scalar<T>(0) && beta == scalar<T>(1)))
        return;
    const bool transposed = transposes(op);
    const StridedVector<T> ys(transposed ? n : m, y, incy);
    if (beta != scalar<T>(1))
        scale(ys, transposed ? n : m, beta);
    if (alpha == scalar<T>(0))
        return;
    if constexpr (Pack<T>::count > 1)
        if (incx == 1 && incy == 1) {
            if constexpr (!isComplex<T>)
                if (transposed && a.ld == m && n >= 2 * Pack<T>::count) { // few rows one behind the other
                    if (m == 2)
                        return add_dots_without_gaps(Count<2>{}, n, alpha, a.data, x, y);
                    if (m == 3)
                        return add_dots_without_gaps(Count<3>{}, n, alpha, a.data, x, y);
                    if (m == 4)
                        return add_dots_without_gaps(Count<4>{}, n, alpha, a.data, x, y);
                    if constexpr (Pack<T>::count >= 16)
                        if (m == 8)
                            return add_dots_without_gaps(Count<8>{}, n, alpha, a.data, x, y);
                }
            if (transposed && m <= Pack<T>::count)
                return op == Op::adjoint ? add_short_dots<isComplex<T>>(m, n, alpha, a, x, y)
                                         : add_short_dots<false>(m, n, alpha, a, x, y);
            if (!transposed && is_low<T>(m) && (n <= fewColumns || alpha == scalar<T>(1)))
                return alpha == scalar<T>(1) ? add_low_product(m, n, a, x, y) : add_small_product(m, n, alpha, a, x, y);
        }
    gemv_by_blocks<T>(op, m, n, alpha, a, {transposed ? m : n, x, incx}, ys, is_far<T, Passes::oneHalf>(m, n));
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
