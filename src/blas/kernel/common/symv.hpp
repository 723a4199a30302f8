// y := alpha*A*x + beta*y for a symmetric matrix, with complex elements a Hermitian one, of which one triangle is
// stored.
//
// The triangle is read once, several columns a pass: each pack of a column is added to y, for the stored half, and
// multiplied with x, for the other half. Large matrices are cut into square blocks, so that the parts of x and y that a
// block works on stay in the first-level cache; vectors whose elements are apart are brought together block by block.
#pragma once

#include "blas/kernel/common/columns.hpp"
#include "blas/kernel/common/strided_vector.hpp"
#include "blas/matrix.hpp"

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

// Both halves for some columns: v.y := v.y + A*s, dots[k] := the dot product of the conjugate of column k and v.x.
template <int columns, class T>
void add_and_dot_columns(int m, const T* a, std::ptrdiff_t lda, const T (&s)[columns], VectorPair<T> v,
                         T (&dots)[columns]) {
    const ColumnStarts<columns, const T> column(a, lda);
    Factor<T> factor[columns];
    QRV_UNROLL
    for (int k = 0; k < columns; ++k)
        factor[k] = Factor<T>(s[k]);
    DotSum<isComplex<T>, T> dotSums[columns];
    clear(dotSums);
    const auto rows = [&](int i, auto load) __attribute__((always_inline)) {
        auto sum = ScaledSum<T>::zero();
        const DotOperand<T> x(load(v.x + i));
        QRV_UNROLL
        for (int k = 0; k < columns; ++k) {
            const Pack<T> p = load(column.at[k] + i);
            sum.add(p, factor[k]);
            dotSums[k].add(p, x);
        }
        return sum.plus(load(v.y + i));
    };
    int i = 0;
    for (; i + Pack<T>::count <= m; i += Pack<T>::count)
        rows(i, [](const T* p) { return Pack<T>::load(p); }).store(v.y + i);
    if (i < m)
        rows(i, [=](const T* p) { return Pack<T>::load(p, m - i); }).store(v.y + i, m - i);
    store_dots(dotSums, dots);
}

// The triangle of `columns` rows and columns on the diagonal.
template <int columns, class T>
void add_triangle(bool upper, T alpha, Matrix<const T> a, const T (&s)[columns], VectorPair<T> v) {
    for (int k = 0; k < columns; ++k) {
        T dot = real_part(a(k, k)) * v.x[k];
        for (int i = upper ? 0 : k + 1; i < (upper ? k : columns); ++i) {
            v.y[i] += s[k] * a(i, k);
            dot += conj(a(i, k)) * v.x[i];
        }
        v.y[k] += alpha * dot;
    }
}

// A block on the diagonal.
template <class T>
void add_diagonal_block(bool upper, int n, T alpha, Matrix<const T> a, VectorPair<T> v) {
    in_passes<columnsOfBothHalves<T>>(0, n, [&](auto columns, int j) {
        constexpr int count = columns();
        T s[count], dots[count];
        for (int k = 0; k < count; ++k)
            s[k] = alpha * v.x[j + k];
        add_triangle(upper, alpha, a.block(j, j), s, v.from(j));
        const int first = upper ? 0 : j + count, rows = upper ? j : n - first;
        add_and_dot_columns(rows, &a(first, j), a.ld, s, v.from(first), dots);
        for (int k = 0; k < count; ++k)
            v.y[j + k] += alpha * dots[k];
    });
}

// A block beside the diagonal, which stands for itself and for its transpose.
template <class T>
void add_block_and_transpose(int m, int n, T alpha, Matrix<const T> a, VectorPair<T> rows, VectorPair<T> columns) {
    in_passes<columnsOfBothHalves<T>>(0, n, [&](auto inPass, int j) {
        constexpr int count = inPass();
        T s[count], dots[count];
        for (int k = 0; k < count; ++k)
            s[k] = alpha * columns.x[j + k];
        add_and_dot_columns(m, &a(0, j), a.ld, s, rows, dots);
        for (int k = 0; k < count; ++k)
            columns.y[j + k] += alpha * dots[k];
    });
}

template <class T>
void symv(bool upper, int n, T alpha, Matrix<const T> a, const T* x, int incx, T beta, T* y, int incy) {
    if (n <= 0 || (alpha == scalar<T>(0) && beta == scalar<T>(1)))
        return;
    const StridedVector<const T> xs(n, x, incx);
    const StridedVector<T> ys(n, y, incy);
    scale(ys, n, beta);
    if (alpha == scalar<T>(0))
        return;
    constexpr int block = blockElements<T>;
    alignas(64) T buffers[4][block];
    for (int j = 0; j < n; j += block) {
        const int columns = smaller(block, n - j);
        const VectorPair<T> vj{gathered(xs, j, columns, buffers[0]), gathered(ys, j, columns, buffers[1])};
        add_diagonal_block(upper, columns, alpha, a.block(j, j), vj);
        for (int i = upper ? 0 : j + block; i < (upper ? j : n); i += block) {
            const int rows = smaller(block, n - i);
            const VectorPair<T> vi{gathered(xs, i, rows, buffers[2]), gathered(ys, i, rows, buffers[3])};
            add_block_and_transpose(rows, columns, alpha, a.block(i, j), vi, vj);
            scatter(ys, i, rows, vi.y);
        }
        scatter(ys, j, columns, vj.y);
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
