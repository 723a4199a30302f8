// SGEBD2, CGEBD2: reduction to bidiagonal form, reflector by reflector: of a column and of a row in turn. A tall matrix
// begins with the column and becomes upper bidiagonal, a wide one with the row and becomes lower bidiagonal.
#include <algorithm>

#include "lapack/calls/bidiagonal.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/elements.hpp"

namespace qrv::lapack {
namespace {

// Makes column j zero below row i, and applies the reflector to the columns behind. Result: the element that is left.
template <class T>
float reduce_column(int m, int n, int i, int j, Matrix<T> a, T& tau, T* work) {
    tau = larfg(m - i, a(i, j), a.column(std::min(i + 1, m - 1), j));
    const T left = a(i, j);
    a(i, j) = scalar<T>(1);
    larf<T>(Side::left, m - i, n - j - 1, a.column(i, j), conj(tau), a.block(i, std::min(j + 1, n - 1)), work);
    a(i, j) = left;
    return real_part(left);
}

// Makes row i zero behind column j, and applies the reflector to the rows below.
template <class T>
float reduce_row(int m, int n, int i, int j, Matrix<T> a, T& tau, T* work) {
    conjugate(n - j, a.row(i, j));
    tau = larfg(n - j, a(i, j), a.row(i, std::min(j + 1, n - 1)));
    const T left = a(i, j);
    a(i, j) = scalar<T>(1);
    larf<T>(Side::right, m - i - 1, n - j, a.row(i, j), tau, a.block(std::min(i + 1, m - 1), j), work);
    conjugate(n - j, a.row(i, j));
    a(i, j) = left;
    return real_part(left);
}

} // namespace

template <class T>
void gebd2(int m, int n, Matrix<T> a, float* d, float* e, T* tauq, T* taup, T* work) {
    const bool tall = m >= n;
    const int size = std::min(m, n);
    for (int i = 0; i < size; ++i) {
        d[i] = tall ? reduce_column(m, n, i, i, a, tauq[i], work) : reduce_row(m, n, i, i, a, taup[i], work);
        if (i + 1 < size)
            e[i] =
                tall ? reduce_row(m, n, i, i + 1, a, taup[i], work) : reduce_column(m, n, i + 1, i, a, tauq[i], work);
        else
            (tall ? taup : tauq)[i] = scalar<T>(0);
    }
}

template void gebd2(int, int, Matrix<float>, float*, float*, float*, float*, float*);
template void gebd2(int, int, Matrix<SingleComplex>, float*, float*, SingleComplex*, SingleComplex*, SingleComplex*);

} // namespace qrv::lapack
