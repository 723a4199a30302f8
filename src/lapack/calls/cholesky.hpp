// Cholesky factorization by value, for the rows of its routines and for other families. Instantiated for both element
// types.
#pragma once

#include "blas/options.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {

// A = U^H U or L L^H in the place of its triangle. Result: 0, or the order of the first leading block that is not
// positive definite. potf2, for small matrices, leaves the pivot of that block on the diagonal.
template <class T>
int potrf(Uplo uplo, int n, Matrix<T> a);
template <class T>
int potf2(Uplo uplo, int n, Matrix<T> a);

// B := inv(A) B, from the factor.
template <class T>
void potrs(Uplo uplo, int n, int nrhs, Matrix<const T> a, Matrix<T> b);

// Factors A and overwrites B with the solution of A X = B. Result: that of potrf; without one B stays.
template <class T>
int posv(Uplo uplo, int n, int nrhs, Matrix<T> a, Matrix<T> b);

// A := inv(A), from the factor. Result: 0, or the position of a zero on its diagonal, with nothing done.
template <class T>
int potri(Uplo uplo, int n, Matrix<T> a);

// Reciprocal condition number from the factor and the norm of A.
template <class T>
float pocon(Uplo uplo, int n, Matrix<const T> a, float anorm, EstimateWork<T> work);

// The product U U^H or L^H L in the place of the factor: in blocks; row by row.
template <class T>
void lauum(Uplo uplo, int n, Matrix<T> a);
template <class T>
void lauu2(Uplo uplo, int n, Matrix<T> a);

} // namespace qrv::lapack
