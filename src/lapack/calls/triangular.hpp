// Triangular matrices, by value, for the rows of their routines and for other families. Instantiated for both element
// types.
#pragma once

#include "blas/complex.hpp"
#include "blas/options.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {

// Solves op(A) y = scale x for a triangular A and overwrites x with y; scale is the result, chosen so that y does not
// overflow. It is at most 1 unless a column of A has a sum near overflow, and 0 if A is singular, where y is a null
// vector, or if no float is so small. cnorm: the sums of abs1 over each column without its diagonal element, computed
// here unless they are given.
template <class T>
float latrs(Uplo uplo, Op op, Diag diag, bool cnormGiven, int n, Matrix<const T> a, T* x, float* cnorm);

// Position, from 1, of the first element on the diagonal that is exactly 0; 0 if there is none.
template <class T>
int zero_on_diagonal(int n, Matrix<const T> a) {
    for (int i = 0; i < n; ++i)
        if (a(i, i) == scalar<T>(0))
            return i + 1;
    return 0;
}

// A := inv(A) for a triangular A without zeros on its diagonal, column by column.
template <class T>
void trti2(Uplo uplo, Diag diag, int n, Matrix<T> a);

// The same in blocks. Result: 0, or the position of a zero on the diagonal, with nothing done.
template <class T>
int trtri(Uplo uplo, Diag diag, int n, Matrix<T> a);

// Overwrites B with the solution X of op(A) X = B. Result: 0, or the position of a zero on the diagonal of A, with
// nothing done.
template <class T>
int trtrs(Uplo uplo, Op op, Diag diag, int n, int nrhs, Matrix<const T> a, Matrix<T> b);

// Reciprocal condition number.
template <class T>
float trcon(Norm norm, Uplo uplo, Diag diag, int n, Matrix<const T> a, EstimateWork<T> work);

} // namespace qrv::lapack
