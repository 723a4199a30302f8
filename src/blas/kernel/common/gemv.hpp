// y := alpha*op(A)*x + beta*y for a general matrix.
//
// A is read once, several columns a pass: op(A) = A adds them to y, alpha being in x already, the others take their dot
// products with x. Rows are worked through in blocks, so that x or y stays in the first-level cache; a vector whose
// elements are apart is brought together block by block.
#pragma once

#include "blas/kernel/common/columns.hpp"
#include "blas/kernel/common/strided_vector.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// y := y + the sum of op(column k of A)*s[k], where op conjugates or not.
template <int columns, bool conjugated, class T>
void add_columns(int m, const T* a, std::ptrdiff_t lda, const T (&s)[columns], T* y) {
    const ColumnStarts<columns, const T> column(a, lda);
    Factor<T> factor[columns];
    QRV_UNROLL
    for (int k = 0; k < columns; ++k)
        factor[k] = Factor<T>(s[k]);
    const auto rows = [&](int i, auto load) {
        ScaledSum<conjugated, T> sum;
        QRV_UNROLL
        for (int k = 0; k < columns; ++k)
            sum.add(load(column.at[k] + i), factor[k]);
        return sum.plus(load(y + i));
    };
    int i = 0;
    for (; i + Pack<T>::count <= m; i += Pack<T>::count)
        rows(i, [](const T* p) { return Pack<T>::load(p); }).store(y + i);
    if (i < m)
        rows(i, [=](const T* p) { return Pack<T>::load(p, m - i); }).store(y + i, m - i);
}

// out[k] := the dot product of op(column k of A) and x.
template <int columns, bool conjugated, class T>
void dot_columns(int m, const T* a, std::ptrdiff_t lda, const T* x, T (&out)[columns]) {
    const ColumnStarts<columns, const T> column(a, lda);
    DotSum<conjugated, T> sums[columns];
    const auto rows = [&](int i, auto load) {
        const DotOperand<T> xi(load(x + i));
        QRV_UNROLL
        for (int k = 0; k < columns; ++k)
            sums[k].add(load(column.at[k] + i), xi);
    };
    int i = 0;
    for (; i + Pack<T>::count <= m; i += Pack<T>::count)
        rows(i, [](const T* p) { return Pack<T>::load(p); });
    if (i < m)
        rows(i, [=](const T* p) { return Pack<T>::load(p, m - i); });
    dot_results(sums, out);
}

// y := y + alpha*A*x
template <class T>
void add_product(int m, int n, T alpha, Matrix<const T> a, StridedVector<const T> x, StridedVector<T> y) {
    alignas(64) T buffer[blockElements<T>];
    for (int i = 0; i < m; i += blockElements<T>) {
        const int rows = smaller(blockElements<T>, m - i);
        T* const yi = gathered(y, i, rows, buffer);
        in_passes<columnsAtOnce<T>>(0, n, [&](auto columns, int j) {
            T s[columns()];
            for (int k = 0; k < columns(); ++k)
                s[k] = alpha * x[j + k];
            add_columns<columns(), false>(rows, &a(i, j), a.ld, s, yi);
        });
        scatter(y, i, rows, yi);
    }
}

// y := y + alpha*op(A)*x, where op transposes and conjugates or not.
template <bool conjugated, class T>
void add_transposed_product(int m, int n, T alpha, Matrix<const T> a, StridedVector<const T> x, StridedVector<T> y) {
    alignas(64) T buffer[blockElements<T>];
    const int block = x.inc == 1 ? m : blockElements<T>;
    for (int i = 0; i < m; i += block) {
        const int rows = smaller(block, m - i);
        const T* const xi = gathered(x, i, rows, buffer);
        in_passes<columnsAtOnce<T>>(0, n, [&](auto columns, int j) {
            T dots[columns()];
            dot_columns<columns(), conjugated>(rows, &a(i, j), a.ld, xi, dots);
            for (int k = 0; k < columns(); ++k)
                y[j + k] += alpha * dots[k];
        });
    }
}

template <class T>
void gemv(char trans, int m, int n, T alpha, Matrix<const T> a, const T* x, int incx, T beta, T* y, int incy) {
    if (m <= 0 || n <= 0 || (alpha == scalar<T>(0) && beta == scalar<T>(1)))
        return;
    const bool transposed = transposes(trans);
    const StridedVector<const T> xs(transposed ? m : n, x, incx);
    const StridedVector<T> ys(transposed ? n : m, y, incy);
    scale(ys, transposed ? n : m, beta);
    if (alpha == scalar<T>(0))
        return;
    if (!transposed)
        add_product(m, n, alpha, a, xs, ys);
    else if (isComplex<T> && (trans == 'C' || trans == 'c'))
        add_transposed_product<isComplex<T>>(m, n, alpha, a, xs, ys);
    else
        add_transposed_product<false>(m, n, alpha, a, xs, ys);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
