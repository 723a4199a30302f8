// The provider's LAPACK for either element, on whole matrices.
#pragma once

#include <qrv/providers.hpp>

#include "support/matrix.hpp"

namespace tools {

using support::Matrix, support::SingleComplex, support::isComplex;

using Corvex::Mathematics::LinearAlgebra::MatrixDiagonalMode;
using Corvex::Mathematics::LinearAlgebra::MatrixNorm;
using Corvex::Mathematics::LinearAlgebra::MatrixOperationSide;
using Corvex::Mathematics::LinearAlgebra::MatrixTriangleMode;
using Corvex::Mathematics::LinearAlgebra::TransposeOperation;

// The provider object of this program.
const Corvex::Mathematics::LinearAlgebra::Providers::ParallelX86SingleLinearAlgebraProvider& provider();

float norm(MatrixNorm kind, const Matrix<float>& a);
float norm(MatrixNorm kind, const Matrix<SingleComplex>& a);

// P*L*U in place of A, and the row exchanges. Result: 0, or the number, from 1, of the first pivot that is 0.
int factor(Matrix<float>& a, std::vector<int>& pivots);
int factor(Matrix<SingleComplex>& a, std::vector<int>& pivots);

// A^-1*B in place of B, from the factors.
void solve_factored(const Matrix<float>& lu, const std::vector<int>& pivots, Matrix<float>& b);
void solve_factored(const Matrix<SingleComplex>& lu, const std::vector<int>& pivots, Matrix<SingleComplex>& b);

// A^-1 in place of the factors. Result: as factor.
int invert_factored(Matrix<float>& lu, const std::vector<int>& pivots);
int invert_factored(Matrix<SingleComplex>& lu, const std::vector<int>& pivots);

// Estimate of 1 / (|A| |A^-1|) from the factors and |A|.
float reciprocal_condition(MatrixNorm kind, const Matrix<float>& lu, float normOfA);
float reciprocal_condition(MatrixNorm kind, const Matrix<SingleComplex>& lu, float normOfA);

// L*L^H in the lower triangle of a symmetric or Hermitian A. Result: 0, or the order, from 1, of the first leading
// block that is not positive definite.
int factor_definite(Matrix<float>& a);
int factor_definite(Matrix<SingleComplex>& a);

// A^-1*B in place of B, and an estimate of 1 / (|A| |A^-1|), in the 1-norm, from this factor.
void solve_definite(const Matrix<float>& l, Matrix<float>& b);
void solve_definite(const Matrix<SingleComplex>& l, Matrix<SingleComplex>& b);
float reciprocal_condition_definite(const Matrix<float>& l, float normOfA);
float reciprocal_condition_definite(const Matrix<SingleComplex>& l, float normOfA);

// R on and above the diagonal of A, and below it the vectors, with their factors tau, that make Q. With pivoting, the
// number, from 1, of the column that stands in each place.
void factor_orthogonal(Matrix<float>& a, std::vector<float>& tau);
void factor_orthogonal(Matrix<SingleComplex>& a, std::vector<SingleComplex>& tau);
void factor_pivoted(Matrix<float>& a, std::vector<int>& places, std::vector<float>& tau);
void factor_pivoted(Matrix<SingleComplex>& a, std::vector<int>& places, std::vector<SingleComplex>& tau);

// Q^H*C in place of C; the columns of Q in the place of their vectors.
void apply_adjoint(const Matrix<float>& qr, const std::vector<float>& tau, Matrix<float>& c);
void apply_adjoint(const Matrix<SingleComplex>& qr, const std::vector<SingleComplex>& tau, Matrix<SingleComplex>& c);
void generate_orthogonal(Matrix<float>& q, const std::vector<float>& tau);
void generate_orthogonal(Matrix<SingleComplex>& q, const std::vector<SingleComplex>& tau);

// With the leading block of R that has as many rows as B, or the order given.
void solve_triangular(const Matrix<float>& r, Matrix<float>& b);
void solve_triangular(const Matrix<SingleComplex>& r, Matrix<SingleComplex>& b);
float reciprocal_condition_triangular(MatrixNorm kind, const Matrix<float>& r, int order);
float reciprocal_condition_triangular(MatrixNorm kind, const Matrix<SingleComplex>& r, int order);
float norm_triangular(MatrixNorm kind, const Matrix<float>& r, int order);
float norm_triangular(MatrixNorm kind, const Matrix<SingleComplex>& r, int order);

} // namespace tools
