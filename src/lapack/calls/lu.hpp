// LU factorization by value, for the rows of its routines and for other families. Instantiated for both element types.
#pragma once

#include <cstdint>

#include "blas/options.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {

// A = P L U in the place of A, an m x n matrix. Result: 0, or the position of the first pivot that is exactly 0. The
// second one chooses among the routes without tasks.
template <class T>
int getrf(int m, int n, Matrix<T> a, int* ipiv);
template <class T>
int getrf_ib_omp(int m, int n, Matrix<T> a, int* ipiv);

// Interchanges row k with row ipiv[k - 1] in all n columns, for k from k1 to k2 (counted from 1, as in ipiv) or, with
// a negative increment, from k2 down to k1, which undoes it. Pivots after the first lie |incx| places apart.
template <class T>
void laswp(int n, Matrix<T> a, int k1, int k2, const int* ipiv, int incx = 1);

// B := inv(op(A)) B, from the factors.
template <class T>
void getrs(Op op, int n, int nrhs, Matrix<const T> a, const int* ipiv, Matrix<T> b);

// Factors A and overwrites B with the solution of A X = B. Result: that of getrf; without one B stays.
template <class T>
int gesv(int n, int nrhs, Matrix<T> a, int* ipiv, Matrix<T> b);

// Elements of work with which the inverse runs at full speed; n do.
template <class T>
std::int64_t getri_work(int n);

// A := inv(A), from the factors. work: lwork >= n elements; the first one becomes the length for the block size that
// was wanted. Result: 0, or the position of a zero on the diagonal of U, with nothing done.
template <class T>
int getri(int n, Matrix<T> a, const int* ipiv, T* work, int lwork);

// The parts of the work arrays of gecon: two vectors, the sums over the columns of L and of U.
template <class T>
struct GeconWork {
    T *x, *v;
    float *sumsL, *sumsU;
    int* isgn;
};
template <class T>
GeconWork<T> gecon_work(int n, EstimateWork<T>& from) {
    return {from.vector(n), from.vector(n), from.reals(n), from.reals(n), from.signs(n)};
}

// Reciprocal condition number from the factors and the norm of A.
template <class T>
float gecon(Norm norm, int n, Matrix<const T> a, float anorm, EstimateWork<T> work);

} // namespace qrv::lapack
