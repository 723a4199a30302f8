// Parts of the LU factorization, by value, for other families. Instantiated for both element types.
#pragma once

#include "blas/complex.hpp"

namespace qrv::lapack {

// Interchanges row k with row ipiv[k - 1] in all n columns, for k from k1 to k2 (counted from 1, as in ipiv) or, with
// a negative increment, from k2 down to k1, which undoes it. Pivots after the first lie |incx| places apart.
template <class T>
void laswp(int n, Matrix<T> a, int k1, int k2, const int* ipiv, int incx = 1);

} // namespace qrv::lapack
