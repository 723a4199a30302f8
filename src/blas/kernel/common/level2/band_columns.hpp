// A few neighbouring columns of a band matrix. Each column has rows of its own, most of which all of them share: these
// go through the vector code, the corners above and below element by element.
//
// Nothing outside the rows of a column is read: neither the unused triangle of a matrix nor the corners of band
// storage.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/level2/columns.hpp"
#include "blas/kernel/common/level2/gemv.hpp"
#include "blas/kernel/common/level2/strided_vector.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/pack.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Columns of a group.
constexpr int groupColumns = 4;

// Rows [from, to) of each column; neither bound decreases from one column to the next.
template <int columns>
struct BandRows {
    int from[columns], to[columns];

    int common_from() const { return from[columns - 1]; }
    int common_to() const { return larger(to[0], common_from()); }
};

template <class T>
constexpr bool isContiguous = false;
template <class T>
constexpr bool isContiguous<T*> = true;

// Calls each(k, i) for the elements in row i of column k that lie above, respectively below, the common rows: in most
// places a triangle of columns - 1 rows, or nothing.
template <int columns, class Each>
void corner_above(const BandRows<columns>& rows, Each each) {
    const int top = rows.common_from();
    if (rows.from[0] == top)
        return;
    if (rows.from[0] == top - (columns - 1) && rows.to[0] >= top) {
        QRV_UNROLL
        for (int k = 0; k < columns - 1; ++k)
            QRV_UNROLL
        for (int i = 1; i < columns - k; ++i)
            each(k, top - i);
    } else {
        for (int k = 0; k < columns - 1; ++k)
            for (int i = rows.from[k]; i < smaller(rows.to[k], top); ++i)
                each(k, i);
    }
}
template <int columns, class Each>
void corner_below(const BandRows<columns>& rows, Each each) {
    const int end = rows.common_to();
    if (rows.to[columns - 1] == end)
        return;
    if (rows.to[columns - 1] == end + columns - 1 && rows.to[0] == end) {
        QRV_UNROLL
        for (int k = 1; k < columns; ++k)
            QRV_UNROLL
        for (int i = 0; i < k; ++i)
            each(k, end + i);
    } else {
        for (int k = 0; k < columns; ++k)
            for (int i = larger(rows.from[k], end); i < rows.to[k]; ++i)
                each(k, i);
    }
}

// Where the rows that are read back first end: there a pass ends with whole vectors. What a vector with lanes left out
// has stored reaches a later load only through the cache.
enum class WholeVectors { first, last };

// A corner above and the row below it, as many rows as columns: one vector of y, that a later load can take whole.
template <int columns, class T>
void add_corner_vector(const T* a, std::ptrdiff_t ld, const T (&s)[columns], T* y) {
    T sums[columns];
    QRV_UNROLL
    for (int i = 0; i < columns; ++i)
        sums[i] = y[i];
    QRV_UNROLL
    for (int k = 0; k < columns; ++k)
        QRV_UNROLL
    for (int i = k; i < columns; ++i)
        sums[i] += a[i + k * ld] * s[k];
    QRV_UNROLL
    for (int i = 0; i < columns; ++i)
        y[i] = sums[i];
}

// y := y + the sum of column k * s[k]. `a` is row 0 of the first column. A vector is an address, or a StridedVector.
template <int columns, class T, class Y>
void add_band_columns(const BandRows<columns>& rows, const T* a, std::ptrdiff_t ld, const T (&s)[columns], Y y,
                      WholeVectors whole = WholeVectors::first) {
    const auto add = [&](int k, int i) { y[i] += a[i + k * ld] * s[k]; };
    int from = rows.common_from();
    const int to = rows.common_to();
    if constexpr (isContiguous<Y>) {
        if (const int first = from - (columns - 1); columns > 1 && rows.from[0] == first && from < to) {
            add_corner_vector(a + first, ld, s, y + first);
            ++from;
        } else {
            corner_above(rows, add);
        }
        if (const int part = (to - from) % Pack<T>::count; whole == WholeVectors::last && part > 0) {
            add_columns<columns>(part, a + from, ld, s, y + from);
            from += part;
        }
        if (from < to)
            add_columns<columns>(to - from, a + from, ld, s, y + from);
    } else {
        corner_above(rows, add);
        for (int i = from; i < to; ++i)
            for (int k = 0; k < columns; ++k)
                add(k, i);
    }
    corner_below(rows, add);
}

// out[k] := the dot product of op(column k) and x, where op conjugates or not.
template <int columns, bool conjugated, class T, class X>
void dot_band_columns(const BandRows<columns>& rows, const T* a, std::ptrdiff_t ld, X x, T (&out)[columns]) {
    const auto add = [&](int k, int i) { out[k] += conj_if<conjugated>(a[i + k * ld]) * x[i]; };
    const int from = rows.common_from(), to = rows.common_to();
    bool summed = false;
    if constexpr (isContiguous<X>) {
        summed = from < to;
        if (summed)
            dot_columns<columns, conjugated>(to - from, a + from, ld, x + from, out);
    }
    if (!summed) {
        QRV_UNROLL
        for (int k = 0; k < columns; ++k)
            out[k] = scalar<T>(0);
        for (int i = from; i < to; ++i)
            for (int k = 0; k < columns; ++k)
                add(k, i);
    }
    corner_above(rows, add);
    corner_below(rows, add);
}

// The walk over all columns in groups, if the band is wide enough for a group to have common rows; what remains comes
// last, one by one: each(Count<columns>, j).
template <class Each>
void walk_columns(int n, bool inGroups, bool ascending, Each each) {
    int done = 0;
    if (inGroups)
        for (; n - done >= groupColumns; done += groupColumns)
            each(Count<groupColumns>{}, ascending ? done : n - done - groupColumns);
    for (; done < n; ++done)
        each(Count<1>{}, ascending ? done : n - done - 1);
}

// Runs body(x) on the n elements of x next to each other: where they are, or brought together in a buffer and put back.
// Elements that are apart and too many for the buffer are a StridedVector.
template <class T>
constexpr bool fits_buffer(StridedVector<T> x, int n) {
    return x.inc == 1 || n <= blockElements<T>;
}
template <class T, class Body>
void with_neighbours(StridedVector<T> x, int n, Body body) {
    if (!fits_buffer(x, n))
        return body(x);
    alignas(64) T buffer[blockElements<T>];
    T* const neighbours = gathered(x, 0, n, buffer);
    body(neighbours);
    scatter(x, 0, n, neighbours);
}
// The same for x and y, of which y is written.
template <class T, class Body>
void with_neighbours(StridedVector<const T> x, int nx, StridedVector<T> y, int ny, Body body) {
    if (!fits_buffer(x, nx) || !fits_buffer(y, ny))
        return body(x, y);
    alignas(64) T xBuffer[blockElements<T>], yBuffer[blockElements<T>];
    T* const yNeighbours = gathered(y, 0, ny, yBuffer);
    body(gathered(x, 0, nx, xBuffer), yNeighbours);
    scatter(y, 0, ny, yNeighbours);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
