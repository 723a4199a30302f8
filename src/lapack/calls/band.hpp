// Band matrices by value, for the rows of their routines. Arrays are band storage as the published routines take it.
#pragma once

#include "blas/options.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {

// The sizes of a general band matrix.
struct BandShape {
    int m, n, kl, ku;
    int kv() const { return kl + ku; } // diagonals of U above the main one
};

// LU factorization with partial pivoting: in blocks; column by column. Result: 0, or the position of the first pivot
// that is exactly 0.
int gbtrf(const BandShape& shape, float* ab, int ldab, int* ipiv);
int gbtf2(const BandShape& shape, float* ab, int ldab, int* ipiv);

// Cholesky factorization. Result: 0, or the order of the first leading block that is not positive definite.
int pbtrf(Uplo uplo, int n, int kd, float* ab, int ldab);
int pbtf2(Uplo uplo, int n, int kd, float* ab, int ldab);

// Solutions, in the place of the nrhs columns of B. tbtrs: 0, or the first zero on the diagonal, with nothing done.
void gbtrs(Op op, const BandShape& shape, int nrhs, const float* ab, int ldab, const int* ipiv, Matrix<float> b);
void pbtrs(Uplo uplo, int n, int kd, int nrhs, const float* ab, int ldab, Matrix<float> b);
int tbtrs(Uplo uplo, Op op, Diag diag, int n, int kd, int nrhs, const float* ab, int ldab, Matrix<float> b);

// Factor A and overwrite B with the solution of A X = B. Result: that of the factorization; without one B stays.
int gbsv(const BandShape& shape, int nrhs, float* ab, int ldab, int* ipiv, Matrix<float> b);
int pbsv(Uplo uplo, int n, int kd, int nrhs, float* ab, int ldab, Matrix<float> b);

// latrs for a triangle with kd diagonals beside the main one.
float latbs(Uplo uplo, Op op, Diag diag, bool cnormGiven, int n, int kd, const float* ab, int ldab, float* x,
            float* cnorm);

// Reciprocal condition numbers from the factors and the norm; three vectors of n floats and n signs of work.
float gbcon(Norm norm, const BandShape& shape, const float* ab, int ldab, const int* ipiv, float anorm,
            EstimateWork<float> work);
float pbcon(Uplo uplo, int n, int kd, const float* ab, int ldab, float anorm, EstimateWork<float> work);

} // namespace qrv::lapack
