// Both products of a step of the bidiagonal reduction with one reading of the matrix:
//
//   y := tau*(y + A^H*v),   x := x - y,   z := z + A*x
//
// Element j of y and of x is known as soon as column j has met v, so the column is added to z while it still lies in
// the caches: as many columns at a time as a product takes.
//
//   A        m x n, read once
//   v, z     m elements, next to each other
//   x, y     n elements, increments above 0
//   reads    nothing past the m rows of a column
#pragma once

#include "blas/kernel/common/level2/gemv.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

template <int columns, class T>
void gemvt_columns(int m, T tau, Matrix<const T> a, const T* v, T* x, std::ptrdiff_t incx, T* y, std::ptrdiff_t incy,
                   T* z) {
    T dots[columns], factors[columns];
    dot_columns<columns, isComplex<T>>(m, a.data, a.ld, v, dots);
    for (int k = 0; k < columns; ++k) {
        y[k * incy] = tau * (y[k * incy] + dots[k]);
        factors[k] = x[k * incx] = x[k * incx] - y[k * incy];
    }
    add_columns<columns>(m, a.data, a.ld, factors, z);
}

// Columns that begin at the same place of a vector of memory go together, as what lies across two lines is loaded at
// half the speed: all of them, every second one, every fourth ... If these were too few for a pass, all go together.
template <class T>
int sets_of_columns(int n, std::ptrdiff_t lda) {
    int sets = 1;
    if constexpr (isBeyondQuads<T>)
        while (lda % Pack<T>::count * sets % Pack<T>::count != 0)
            sets *= 2;
    return n < sets * columnsAtOnce<T> ? 1 : sets;
}

template <class T>
void gemvt(int m, int n, T tau, Matrix<const T> a, const T* v, T* x, int incx, T* y, int incy, T* z) {
    QRV_ASSERT(a.ld >= m || n <= 1);
    const int sets = sets_of_columns<T>(n, a.ld);
    const std::ptrdiff_t step = sets;
    for (std::ptrdiff_t set = 0; set < step; ++set)
        in_passes<columnsAtOnce<T>>(0, static_cast<int>((n - set + step - 1) / step), [&](auto inPass, int k) {
            const std::ptrdiff_t j = set + step * k;
            gemvt_columns<inPass()>(m, tau, {a.data + j * a.ld, step * a.ld}, v, x + j * incx, step * incx,
                                    y + j * incy, step * incy, z);
        });
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
