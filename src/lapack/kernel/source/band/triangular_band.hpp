// Solves with a triangular band matrix, many right-hand sides at a time.
#pragma once

#include "blas/matrix.hpp"
#include "blas/options.hpp"

namespace qrv::lapack {

// A triangle of order n with kd diagonals beside the main one, as the dense view of its band, and an option for it.
struct TriangularBand {
    Uplo uplo;
    Op op;
    Diag diag;
    int n, kd;
    Matrix<const float> a;
};

// B := inv(op(A)) B, of `nrhs` columns, in blocks of nb <= kd unknowns and nb columns. work: nb * nb floats.
void solve_band_blocked(const TriangularBand& t, int nb, int nrhs, Matrix<float> b, float* work);

// The same column by column.
void solve_band_unblocked(const TriangularBand& t, int nrhs, Matrix<float> b);

// The one or the other: in blocks of nb if that is 2 at least and there is memory.
void solve_band(const TriangularBand& t, int nb, int nrhs, Matrix<float> b);

} // namespace qrv::lapack
