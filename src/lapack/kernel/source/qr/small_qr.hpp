// Small matrices, and the last columns or rows of larger ones: the unblocked routines of QR do them in a copy, those of
// LQ in a copy of the adjoint, on which they are those of QR.
#pragma once

#include "lapack/kernel/source/reflectors/small_columns.hpp"

namespace qrv::lapack {

// a, or its adjoint, has m rows and n columns.
template <class T>
void factor_small(int m, int n, Matrix<T> a, Op op, T* tau) {
    SmallColumns<T> columns(m, n, a, op);
    for (int i = 0; i < smaller(m, n); ++i) {
        tau[i] = columns.reflect(i, i);
        columns.apply(conj(tau[i]), i + 1);
    }
    columns.store(a);
}

// Columns of Q, in the place of the vectors of the first k.
template <class T>
void generate_small(int m, int n, int k, Matrix<T> a, Op op, const T* tau) {
    SmallColumns<T> columns(m, n, a, op);
    for (int j = k; j < n; ++j)
        columns.make_unit(j);
    for (int i = k - 1; i >= 0; --i) {
        columns.take(i, i);
        columns.apply(tau[i], i + 1);
        columns.generate(tau[i], i);
    }
    columns.store(a);
}

} // namespace qrv::lapack
