// A := alpha*x*op(y) + A for a general matrix, where op transposes, and conjugates or not.
//
// Several columns a pass, so that x is loaded once for all of them. A column whose element of y is 0 is left alone; a
// real one also where alpha times it vanishes: it is an AXPY with that factor.
//
//   A        m x n, read and written once, but for the columns left alone
//   x, y     m and n elements, any increments but 0; x is read only for columns that change
//   memory   a block of blockElements on the stack
#pragma once

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/kernel/common/level2/columns.hpp"
#include "blas/kernel/common/level2/rank_update.hpp"
#include "blas/kernel/common/level2/strided_vector.hpp"
#include "blas/kernel/pack.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// A matrix of so many bytes is far from the processor: longer pieces of columns are faster there, and of real ones a
// single stream; with the widest vectors of complex ones too, as long as a third-level cache may hold them.
inline constexpr double farBytes = 0x1p23, fartherBytes = 0x1p25;
inline constexpr int farRows = 8192;

template <bool conjugated, class T>
void ger(int m, int n, T alpha, const T* x, int incx, const T* y, int incy, Matrix<T> a) {
    QRV_ASSERT(a.ld >= m || n <= 1);
    if (m <= 0 || n <= 0 || alpha == scalar<T>(0))
        return;
    const StridedVector<const T> xs(m, x, incx), ys(n, y, incy);
    const auto left_alone = [&](int j, T factor) {
        return ys[j] == scalar<T>(0) || (!isComplex<T> && factor == scalar<T>(0));
    };
    alignas(64) T buffer[blockElements<T>];
    const double bytes = static_cast<double>(m) * n * sizeof(T);
    const bool far = bytes > farBytes;
    const bool singleStream = far && (!isComplex<T> || (Pack<T>::count == 8 && bytes <= fartherBytes));
    const bool fromMemory = is_far<T, Passes::update>(m, n);
    const int rowBlock = far && incx == 1 ? farRows : blockElements<T>;
    for (int i = 0, rows; i < m; i += rows) {
        rows = smaller(rowBlock, m - i);
        const UpdateVectors<1, T> v{{gathered(xs, i, rows, buffer)}};
        const auto update = [&](auto columns, int j) {
            T s[1][columns()];
            bool all = true;
            for (int k = 0; k < columns(); ++k) {
                s[0][k] = alpha * conj_if<conjugated>(ys[j + k]);
                all = all && !left_alone(j + k, s[0][k]);
            }
            if (all) {
                near_or_far<T, Passes::update>(fromMemory, [&](auto askAhead) {
                    update_columns<Corner::none, askAhead()>(rows, &a(i, j), a.ld, s, v);
                });
                return;
            }
            for (int k = 0; k < columns(); ++k)
                if (const T single[1][1] = {{s[0][k]}}; !left_alone(j + k, s[0][k]))
                    update_columns<Corner::none>(rows, &a(i, j + k), a.ld, single, v);
        };
        if (singleStream)
            in_passes<1>(0, n, update);
        else
            in_passes<columnsOfUpdate<T, 1>>(0, n, update);
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
