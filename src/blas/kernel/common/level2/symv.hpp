// y := alpha*A*x + beta*y for a symmetric matrix, with complex elements a Hermitian one, of which one triangle is
// stored.
//
// The triangle is read once, several columns a pass: each pack of a column is added to y, for the stored half, and
// multiplied with x, for the other half. Large matrices are cut into square blocks, so that the parts of x and y that a
// block works on stay in the first-level cache; vectors whose elements are apart are brought together block by block.
//
//   A        the named triangle or strip, read once;
//            of a Hermitian diagonal the real parts only;
//            by SYMV not at all for alpha = 0
//   x, y     n elements, any increments but 0; y is not read for beta = 0
//   memory   four blocks of blockElements on the stack
#pragma once

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/kernel/common/level2/columns.hpp"
#include "blas/kernel/common/level2/strided_vector.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/pack.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// All that a diagonal element is read for.
inline float real_part(const float& x) {
    return x;
}
inline float real_part(const SingleComplex& x) {
    return x.re;
}

// Neighbouring elements of x and y, as many as a block of the matrix has rows or columns.
template <class T>
struct VectorPair {
    const T* x;
    T* y;
    VectorPair from(int i) const { return {x + i, y + i}; }
};

// Both halves for some columns of m rows: v.y := v.y + A*s, dots[k] := the dot product of the conjugate of column k and
// v.x. Each element is loaded once for both. Of a corner only the triangle is stored, and its diagonal is left out
// here.
template <int columns, Corner corner, bool far = false, class T>
void add_both_halves(int m, const T* a, std::ptrdiff_t lda, const T* s, VectorPair<T> v, T* dots) {
    constexpr int count = Pack<T>::count;
    const ColumnStarts<columns, const T> column(a, lda);
    Factor<T> factor[columns];
    QRV_UNROLL
    for (int k = 0; k < columns; ++k)
        factor[k] = Factor<T>(s[k]);
    DotSum<isComplex<T>, T> sums[columns];
    clear(sums);
    const auto rows = [&](int i, auto load) __attribute__((always_inline)) {
        ScaledSum<T> sum(load(v.y + i));
        const DotOperand<T> x(load(v.x + i));
        QRV_UNROLL
        for (int k = 0; k < columns; ++k) {
            const Pack<T> p = loaded_once(load(column.at[k] + i));
            sum.add(p, factor[k]);
            sums[k].add(p, x);
        }
        return sum.result();
    };
    // As far as a column is stored: element `from(k)` to `end(k)` - 1 of column k.
    const auto ragged_rows = [&](int i, int height, auto from, auto end) __attribute__((always_inline)) {
        ScaledSum<T> sum(Pack<T>::load(v.y + i, height));
        const DotOperand<T> x(Pack<T>::load(v.x + i, height));
        QRV_UNROLL
        for (int k = 0; k < columns; ++k) {
            const auto range = Pack<T>::range(from(k), end(k));
            const Pack<T> p = Pack<T>::load(column.at[k] + i, range);
            sum.add(p, factor[k], range);
            sums[k].add(p, x, range);
        }
        sum.result().store(v.y + i, height);
    };
    int i = 0;
    if constexpr (corner == Corner::first) {
        static_assert(columns <= count);
        i = smaller(count, m);
        ragged_rows(
            0, i, [](int k) { return k + 1; }, [=](int) { return i; });
    }
    const auto some_rows = [&](int n) __attribute__((always_inline)) {
        if (n > 0)
            rows(i, [=](const T* p) { return Pack<T>::load(p, n); }).store(v.y + i, n);
        i += n;
    };
    const int end = corner == Corner::last ? m - columns : m;
    some_rows(rows_to_vector(end - i, a + i, lda));
    const auto whole_rows = [&](int at) __attribute__((always_inline)) {
        rows(at, [](const T* p) { return Pack<T>::load(p); }).store(v.y + at);
    };
    if constexpr (far)
        i = rows_asking_ahead(i, end, column, lda, whole_rows);
    for (; end - i >= 2 * count; i += 2 * count) {
        whole_rows(i);
        whole_rows(i + count);
    }
    if (end - i >= count) {
        whole_rows(i);
        i += count;
    }
    if (corner == Corner::last) {
        if (m - i > count) // what is left does not fit into one pack with the corner
            some_rows(end - i);
        ragged_rows(
            i, m - i, [](int) { return 0; }, [=](int k) { return m - i - columns + k; });
    } else {
        some_rows(end - i);
    }
    store_dots(sums, dots);
}

// A block on the diagonal.
template <class T>
void add_diagonal_block(Uplo uplo, int n, T alpha, Matrix<const T> a, VectorPair<T> v) {
    in_passes<columnsOfBothHalves<T>>(0, n, [&](auto columns, int j) {
        constexpr int count = columns();
        T s[count], dots[count];
        for (int k = 0; k < count; ++k)
            s[k] = alpha * v.x[j + k];
        if (uplo == Uplo::upper)
            add_both_halves<count, Corner::last>(j + count, a.column(j), a.ld, s, v, dots);
        else
            add_both_halves<count, Corner::first>(n - j, &a(j, j), a.ld, s, v.from(j), dots);
        for (int k = 0; k < count; ++k)
            v.y[j + k] += alpha * (dots[k] + real_part(a(j + k, j + k)) * v.x[j + k]);
    });
}

// A block beside the diagonal, which stands for itself and for its transpose.
template <bool far, class T>
void add_block_and_transpose(int m, int n, T alpha, Matrix<const T> a, VectorPair<T> rows, VectorPair<T> columns) {
    in_passes<columnsOfBothHalves<T>>(0, n, [&](auto inPass, int j) {
        constexpr int count = inPass();
        T s[count], dots[count];
        for (int k = 0; k < count; ++k)
            s[k] = alpha * columns.x[j + k];
        add_both_halves<count, Corner::none, far>(m, a.column(j), a.ld, s, rows, dots);
        for (int k = 0; k < count; ++k)
            columns.y[j + k] += alpha * dots[k];
    });
}

// That of a far matrix, out of line: short calls would feel it.
template <class T>
[[gnu::noinline]] void add_far_block(int m, int n, T alpha, Matrix<const T> a, VectorPair<T> rows,
                                     VectorPair<T> columns) {
    add_block_and_transpose<asksAhead<T, Passes::bothHalves>>(m, n, alpha, a, rows, columns);
}

// What the columns of a strip of the triangle stand for, with their mirror images: y := alpha*A*x + y for these.
template <class T>
void add_strip(Uplo uplo, int n, int firstColumn, int endColumn, T alpha, Matrix<const T> a, StridedVector<const T> x,
               StridedVector<T> y) {
    constexpr int block = blockElements<T>;
    const bool far = is_far<T, Passes::bothHalves>(n, endColumn - firstColumn);
    alignas(64) T buffers[4][block];
    for (int j = firstColumn, columns; j < endColumn; j += columns) {
        columns = smaller(block, endColumn - j);
        const VectorPair<T> vj{gathered(x, j, columns, buffers[0]), gathered(y, j, columns, buffers[1])};
        add_diagonal_block(uplo, columns, alpha, a.block(j, j), vj);
        const int end = uplo == Uplo::upper ? j : n;
        for (int i = uplo == Uplo::upper ? 0 : j + columns, rows; i < end; i += rows) {
            rows = smaller(block, end - i);
            const VectorPair<T> vi{gathered(x, i, rows, buffers[2]), gathered(y, i, rows, buffers[3])};
            if (far)
                add_far_block(rows, columns, alpha, a.block(i, j), vi, vj);
            else
                add_block_and_transpose<false>(rows, columns, alpha, a.block(i, j), vi, vj);
            scatter(y, i, rows, vi.y);
        }
        scatter(y, j, columns, vj.y);
    }
}

// Orders of real matrices that are cheaper element by element.
template <class T>
constexpr int elementwiseSymvUpTo = isComplex<T> || Pack<T>::count == 1 ? 0 : 8;

[[gnu::noinline]] inline void add_elements(Uplo uplo, int n, float alpha, Matrix<const float> a,
                                           StridedVector<const float> x, StridedVector<float> y) {
    for (int j = 0; j < n; ++j) {
        const float s = alpha * x[j];
        float dot = 0;
        const int end = uplo == Uplo::upper ? j : n;
        for (int i = uplo == Uplo::upper ? 0 : j + 1; i < end; ++i) {
            dot = multiply_add_element(a(i, j), x[i], dot);
            y[i] = multiply_add_element(a(i, j), s, y[i]);
        }
        y[j] += alpha * (dot + a(j, j) * x[j]);
    }
}

template <class T>
void symv(Uplo uplo, int n, T alpha, Matrix<const T> a, const T* x, int incx, T beta, T* y, int incy) {
    QRV_ASSERT(a.ld >= n || n <= 1);
    if (n <= 0 || (alpha == scalar<T>(0) && beta == scalar<T>(1)))
        return;
    const StridedVector<T> ys(n, y, incy);
    if (beta != scalar<T>(1))
        scale(ys, n, beta);
    if constexpr (elementwiseSymvUpTo < T >> 0)
        if (alpha != 0 && n <= elementwiseSymvUpTo<T>)
            return add_elements(uplo, n, alpha, a, {n, x, incx}, ys);
    if (alpha != scalar<T>(0))
        add_strip<T>(uplo, n, 0, n, alpha, a, {n, x, incx}, ys);
}

// The same with a strip alone: the last columns of an upper triangle, or the first ones of a lower triangle. All of y
// is scaled.
template <class T>
void symv_strip(Uplo uplo, int n, int columns, T alpha, Matrix<const T> a, const T* x, int incx, T beta, T* y,
                int incy) {
    QRV_ASSERT(columns <= n && (a.ld >= n || n <= 1));
    if (n <= 0)
        return;
    const StridedVector<T> ys(n, y, incy);
    scale(ys, n, beta);
    const int first = uplo == Uplo::upper ? n - columns : 0;
    add_strip<T>(uplo, n, first, first + columns, alpha, a, {n, x, incx}, ys);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
