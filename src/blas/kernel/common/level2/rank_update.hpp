// A := A + the sum of x[t]*s[t] over one or two terms, for some columns of A: what the rank-one and rank-two updates
// are made of.
#pragma once

#include "blas/kernel/common/level2/columns.hpp"
#include "blas/kernel/common/level2/strided_vector.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/pack.hpp"
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

// Whether vectors from a on are aligned in every column.
template <class T>
QRV_INLINE bool on_boundaries(const T* a, std::ptrdiff_t lda) {
    return (reinterpret_cast<std::uintptr_t>(a) | static_cast<std::uintptr_t>(lda * sizeof(T))) % sizeof(Vec) == 0;
}

// Column k of A is added x[t] times s[t][k] for each term t, in m rows; of a corner, its triangle. A pack of each
// vector is loaded once for all columns.
template <Corner corner, bool far = false, int columns, int terms, class T>
void update_columns(int m, T* a, std::ptrdiff_t lda, const T (&s)[terms][columns], UpdateVectors<terms, T> v) {
    constexpr int count = Pack<T>::count;
    const ColumnStarts<columns, T> column(a, lda);
    AddedFactor<T> factor[terms][columns];
    QRV_UNROLL
    for (int t = 0; t < terms; ++t)
        QRV_UNROLL
    for (int k = 0; k < columns; ++k)
        factor[t][k] = AddedFactor<T>(s[t][k]);
    // part(k) is nothing, a number of rows or a range of them: what of a pack belongs to column k.
    const auto rows = [&](int i, auto height, auto part) __attribute__((always_inline)) {
        AddedPack<T> x[terms];
        QRV_UNROLL
        for (int t = 0; t < terms; ++t)
            x[t] = AddedPack<T>(Pack<T>::load(v.x[t] + i, height));
        // All loads before all stores: with columns a multiple of 4096 bytes apart a load that follows the store to its
        // neighbour would wait for it.
        Pack<T> sums[columns];
        QRV_UNROLL
        for (int k = 0; k < columns; ++k) {
            sums[k] = Pack<T>::load_between_stores(column.at[k] + i, part(k));
            QRV_UNROLL
            for (int t = 0; t < terms; ++t)
                sums[k] = x[t].add_to(factor[t][k], sums[k]);
        }
        QRV_UNROLL
        for (int k = 0; k < columns; ++k)
            sums[k].store(column.at[k] + i, part(k));
    };
    // Where packs of 128 bits fill the corner, what of them belongs to it is known beforehand, and nothing is asked.
    constexpr bool wholeCorner = Vec::lanes == 4 && columns % count == 0;
    int i = 0;
    if constexpr (corner == Corner::first && wholeCorner) {
        repeat<columns / count>([&](auto pack) __attribute__((always_inline)) {
            rows(pack() * count, All{}, [=](int k) { return Pack<T>::range(larger(k - pack() * count, 0), count); });
        });
        i = columns;
    } else if constexpr (corner == Corner::first)
        for (; i < smaller(columns, m); i += count) {
            const int height = smaller(count, m - i);
            rows(i, height, [=](int k) { return Pack<T>::range(larger(k - i, 0), height); });
        }
    const int end = corner == Corner::last ? m - columns : m;
    if (const int first = rows_to_vector(end - i, a + i, lda); first > 0) {
        rows(i, first, [=](int) { return first; });
        i += first;
    }
    const auto whole_rows = [&](int at) __attribute__((always_inline)) {
        rows(at, All{}, [](int) { return All{}; });
    };
    if constexpr (far)
        i = rows_asking_ahead(i, end, column, lda, whole_rows);
    if constexpr (Vec::lanes == 16 || (isComplex<T> && Vec::lanes == 4))
        if (on_boundaries(a + i, lda))
            for (; end - i >= count; i += count)
                rows(i, All{}, [](int) { return AllAligned{}; });
    for (; end - i >= count; i += count)
        whole_rows(i);
    if (i < end)
        rows(i, end - i, [=](int) { return end - i; });
    if constexpr (corner == Corner::last && wholeCorner)
        repeat<columns / count>([&](auto pack) __attribute__((always_inline)) {
            rows(end + pack() * count, All{},
                 [=](int k) { return Pack<T>::range(0, smaller(larger(k + 1 - pack() * count, 0), count)); });
        });
    else if constexpr (corner == Corner::last)
        for (i = end; i < m; i += count) {
            const int height = smaller(count, m - i);
            rows(i, height, [=](int k) { return Pack<T>::range(0, smaller(k + 1 - (i - end), height)); });
        }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
