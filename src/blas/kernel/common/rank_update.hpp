// A := A + the sum of x[t]*s[t] over one or two terms, for some columns of A: what the rank-one and rank-two updates
// are made of.
#pragma once

#include "blas/kernel/common/columns.hpp"
#include "blas/kernel/common/strided_vector.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// The vectors of an update, one a term.
template <int terms, class T>
struct UpdateVectors {
    const T* x[terms];
    UpdateVectors from(int i) const {
        UpdateVectors v = *this;
        for (const T*& p : v.x)
            p += i;
        return v;
    }
};

// Column k of A is added x[t] times s[t][k] for each term t. A pack of each vector is loaded once for all columns.
template <int columns, int terms, class T>
void update_columns(int m, T* a, std::ptrdiff_t lda, const T (&s)[terms][columns], const UpdateVectors<terms, T>& v) {
    const ColumnStarts<columns, T> column(a, lda);
    Factor<T> factor[terms][columns];
    QRV_UNROLL
    for (int t = 0; t < terms; ++t)
        QRV_UNROLL
    for (int k = 0; k < columns; ++k)
        factor[t][k] = Factor<T>(s[t][k]);
    const auto rows = [&](int i, auto load, auto store) __attribute__((always_inline)) {
        AddedPack<T> x[terms];
        QRV_UNROLL
        for (int t = 0; t < terms; ++t)
            x[t] = AddedPack<T>(load(v.x[t] + i));
        QRV_UNROLL
        for (int k = 0; k < columns; ++k) {
            Pack<T> sum = load(column.at[k] + i);
            QRV_UNROLL
            for (int t = 0; t < terms; ++t)
                sum = x[t].add_to(factor[t][k], sum);
            store(column.at[k] + i, sum);
        }
    };
    int i = 0;
    for (; i + Pack<T>::count <= m; i += Pack<T>::count)
        rows(
            i, [](const T* p) { return Pack<T>::load(p); }, [](T* p, Pack<T> x) { x.store(p); });
    if (i < m)
        rows(
            i, [=](const T* p) { return Pack<T>::load(p, m - i); }, [=](T* p, Pack<T> x) { x.store(p, m - i); });
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
