// SLASWP, CLASWP: a sequence of row interchanges.
//
// All interchanges are made in two columns before the next ones are touched: those stay in the first-level cache,
// however far apart they are, and share the loads of the pivots. With 1024 and 2048 rows that took half of the time of
// exchanges of rows in eight columns at once, which miss where columns are pages apart, with 256 and 1000 rows nine
// tenths.
//
// Long columns are fetched ahead, since no processor foresees which rows come: a factorization of order 2048 then took
// 0.95 of the time; in short columns, which are near, it cost a twentieth.
#include <utility>

#include "lapack/calls/lu.hpp"

namespace qrv::lapack {
namespace {

struct Interchanges {
    int first, last, step; // rows, counted from 1
    const int* pivot;      // of the first row
    std::ptrdiff_t pivotStep;
};

Interchanges interchanges(int k1, int k2, const int* ipiv, int incx) {
    if (incx > 0)
        return {k1, k2, 1, ipiv + (k1 - 1), incx};
    return {k2, k1, -1, ipiv + (k1 - 1) + std::ptrdiff_t{k1 - k2} * incx, incx};
}

constexpr std::ptrdiff_t longColumn = 5000; // bytes
constexpr int columnsAhead = 4;

// In `columns` columns, one or two; the rows of those `ahead` of them, unless it is 0, are fetched.
template <int columns, int ahead = 0, class T>
void interchange(Matrix<T> a, const Interchanges& rows) {
    T *const x = a.column(0), *const y = a.column(columns - 1);
    const int* pivot = rows.pivot;
    for (int k = rows.first;; k += rows.step, pivot += rows.pivotStep) {
        if constexpr (ahead > 0) {
            __builtin_prefetch(a.column(ahead) + *pivot - 1, 1);
            __builtin_prefetch(a.column(ahead + 1) + *pivot - 1, 1);
        }
        if (const int other = *pivot; other != k) {
            std::swap(x[k - 1], x[other - 1]);
            if constexpr (columns == 2)
                std::swap(y[k - 1], y[other - 1]);
        }
        if (k == rows.last)
            return;
    }
}

} // namespace

template <class T>
void laswp(int n, Matrix<T> a, int k1, int k2, const int* ipiv, int incx) {
    if (n <= 0 || incx == 0 || k1 > k2)
        return;
    const Interchanges rows = interchanges(k1, k2, ipiv, incx);
    if (a.ld * std::ptrdiff_t{sizeof(T)} >= longColumn)
        for (; n >= columnsAhead + 2; n -= 2, a = a.block(0, 2))
            interchange<2, columnsAhead>(a, rows);
    for (; n >= 2; n -= 2, a = a.block(0, 2))
        interchange<2>(a, rows);
    if (n == 1)
        interchange<1>(a, rows);
}

template void laswp(int, Matrix<float>, int, int, const int*, int);
template void laswp(int, Matrix<SingleComplex>, int, int, const int*, int);

} // namespace qrv::lapack
