// SLASWP, CLASWP: a sequence of row interchanges.
//
// All interchanges are made in some columns before the next ones are touched: rows of a column-major matrix share no
// cache lines along the row, but the lines of a few columns stay in the cache while their rows are exchanged.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/lu.hpp"

namespace qrv::lapack {
namespace {

// Columns that are taken together. If they lie whole pages apart, the lines of a row all fall into one set of the
// first-level cache, which holds 8 to 12: with 16 of them each exchange would miss, and half a block fits.
template <class T>
int block_columns(const Matrix<T>& a) {
    constexpr int columns = 16, pageBytes = 4096;
    const bool collide = a.ld * std::ptrdiff_t{sizeof(T)} % pageBytes == 0;
    return collide ? columns / 2 : columns;
}

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

template <class T>
void interchange_rows(int n, Matrix<T> a, const Interchanges& rows) {
    const int* pivot = rows.pivot;
    for (int k = rows.first;; k += rows.step, pivot += rows.pivotStep) {
        if (*pivot != k)
            kernel::swap(n, a.row(k - 1, 0), a.row(*pivot - 1, 0));
        if (k == rows.last)
            return;
    }
}

} // namespace

template <class T>
void laswp(int n, Matrix<T> a, int k1, int k2, const int* ipiv, int incx) {
    if (incx == 0 || k1 > k2)
        return;
    const Interchanges rows = interchanges(k1, k2, ipiv, incx);
    const int columns = block_columns(a);
    for (int left = n; left > 0; left -= columns, a = a.block(0, columns)) // what is left, as n may end the ints
        interchange_rows(std::min(columns, left), a, rows);
}

template void laswp(int, Matrix<float>, int, int, const int*, int);
template void laswp(int, Matrix<SingleComplex>, int, int, const int*, int);

} // namespace qrv::lapack
