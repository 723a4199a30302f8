// Products with banded matrices, general, symmetric and triangular, and banded triangular solves.
//
// Band storage keeps column j of the matrix in column j of an array, so that element (i, j) lies in row d + i - j, d
// being the row of the diagonal. As each column begins one place lower than the one before, that is an ordinary matrix
// of a leading dimension less by one.
#pragma once

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/kernel/common/action.hpp"
#include "blas/kernel/common/level2/band_columns.hpp"
#include "blas/kernel/common/level2/strided_vector.hpp"
#include "blas/kernel/common/level2/triangle.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// s := alpha times elements j, j + 1 ... of x.
template <int columns, class T, class X>
void scaled_elements(T alpha, X x, int j, T (&s)[columns]) {
    QRV_UNROLL
    for (int k = 0; k < columns; ++k)
        s[k] = alpha * x[j + k];
}

template <class T>
Matrix<const T> band_matrix(Matrix<const T> a, int diagonalRow) {
    return {a.data + diagonalRow, a.ld - 1};
}

// ---- General -------------------------------------------------------------------------------------------------------

struct BandShape {
    int m, below, above; // rows of the matrix, diagonals on either side

    template <int columns>
    BandRows<columns> rows(int j) const {
        BandRows<columns> rows;
        QRV_UNROLL
        for (int k = 0; k < columns; ++k) {
            rows.from[k] = larger(0, j + k - above);
            rows.to[k] = j + k < m - below ? j + k + below + 1 : m;
        }
        return rows;
    }
};

// y := y + alpha*op(A)*x, x and y being addresses or StridedVectors. An empty column has the dot product 0.
template <class T, class X, class Y>
void add_band_product(bool transposed, BandShape shape, int n, T alpha, Matrix<const T> a, X x, Y y) {
    // Columns beyond have no rows.
    const int columnsWithRows = n - shape.above < shape.m ? n : shape.m + shape.above;
    const bool inGroups = shape.below + std::ptrdiff_t{shape.above} >= groupColumns - 1;
    walk_columns(columnsWithRows, inGroups, true, [&](auto columns, int j) {
        const auto rows = shape.rows<columns()>(j);
        T s[columns()];
        if (transposed) {
            dot_band_columns<columns(), false>(rows, a.column(j), a.ld, x, s);
            for (int k = 0; k < columns(); ++k)
                y[j + k] += alpha * s[k];
        } else {
            scaled_elements(alpha, x, j, s);
            add_band_columns<columns()>(rows, a.column(j), a.ld, s, y);
        }
    });
    for (int j = columnsWithRows; transposed && j < n; ++j)
        y[j] += alpha * scalar<T>(0);
}

template <class T>
void gbmv(Op op, int m, int n, int kl, int ku, T alpha, Matrix<const T> a, const T* x, int incx, T beta, T* y,
          int incy) {
    QRV_ASSERT(a.ld > std::ptrdiff_t{kl} + ku);
    if (m <= 0 || n <= 0 || (alpha == scalar<T>(0) && beta == scalar<T>(1)))
        return;
    const bool transposed = transposes(op);
    const int nx = transposed ? m : n, ny = transposed ? n : m;
    const StridedVector<T> ys(ny, y, incy);
    scale(ys, ny, beta);
    if (alpha != scalar<T>(0))
        with_neighbours(StridedVector<const T>(nx, x, incx), nx, ys, ny, [&](auto xn, auto yn) {
            add_band_product(transposed, {m, kl, ku}, n, alpha, band_matrix(a, ku), xn, yn);
        });
}

// ---- Symmetric -----------------------------------------------------------------------------------------------------

// s := D*x for a diagonal block D of which one triangle is stored, a being its first element.
template <int columns, class T>
void multiply_symmetric_block(Matrix<const T> a, bool upper, const T (&x)[columns], T (&s)[columns]) {
    QRV_UNROLL
    for (int j = 0; j < columns; ++j)
        s[j] = a(j, j) * x[j];
    QRV_UNROLL
    for (int j = 1; j < columns; ++j)
        QRV_UNROLL
    for (int i = 0; i < j; ++i) {
        const T element = upper ? a(i, j) : a(j, i);
        s[i] += element * x[j];
        s[j] += element * x[i];
    }
}

// y := y + alpha*A*x. What is stored beside a diagonal block serves both sides of the diagonal.
template <class T, class X, class Y>
void add_symmetric_band_product(const Triangle<T>& t, T alpha, X x, Y y) {
    walk_columns(t.n, t.reach >= groupColumns - 1, true, [&](auto columns, int j) {
        const auto rows = rows_beside<columns()>(t, j);
        T s[columns()], dots[columns()], sums[columns()];
        scaled_elements(alpha, x, j, s);
        dot_band_columns<columns(), false>(rows, t.a.column(j), t.a.ld, x, dots);
        add_band_columns<columns()>(rows, t.a.column(j), t.a.ld, s, y);
        multiply_symmetric_block(t.a.block(j, j), t.upper(), s, sums);
        for (int k = 0; k < columns(); ++k)
            y[j + k] += alpha * dots[k] + sums[k];
    });
}

template <class T>
Triangle<T> band_triangle(Uplo uplo, Diag diag, int n, int k, Matrix<const T> a) {
    QRV_ASSERT(a.ld > k);
    return {band_matrix(a, uplo == Uplo::upper ? k : 0), n, smaller(k, n - 1), uplo, diag};
}

template <class T>
void sbmv(Uplo uplo, int n, int k, T alpha, Matrix<const T> a, const T* x, int incx, T beta, T* y, int incy) {
    if (n <= 0 || (alpha == scalar<T>(0) && beta == scalar<T>(1)))
        return;
    const StridedVector<T> ys(n, y, incy);
    scale(ys, n, beta);
    if (alpha != scalar<T>(0))
        with_neighbours(StridedVector<const T>(n, x, incx), n, ys, n, [&](auto xn, auto yn) {
            add_symmetric_band_product(band_triangle(uplo, Diag::nonUnit, n, k, a), alpha, xn, yn);
        });
}

// ---- Triangular ----------------------------------------------------------------------------------------------------

template <Action action, class T>
void banded_triangular(Uplo uplo, Op op, Diag diag, int n, int k, Matrix<const T> a, T* x, int incx) {
    if (n > 0)
        with_neighbours(StridedVector<T>(n, x, incx), n,
                        [&](auto xn) { apply_triangle<action>(op, band_triangle(uplo, diag, n, k, a), xn); });
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
