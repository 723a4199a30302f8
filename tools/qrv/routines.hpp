// The provider's LAPACK for either element, on whole matrices.
#pragma once

#include <qrv/providers.hpp>

#include "matrix_market/matrix.hpp"

namespace tools {

using Corvex::Mathematics::LinearAlgebra::MatrixNorm;
using Corvex::Mathematics::LinearAlgebra::TransposeOperation;

// The provider object of this program.
const Corvex::Mathematics::LinearAlgebra::Providers::ParallelX86SingleLinearAlgebraProvider& provider();

float norm(MatrixNorm kind, const Matrix<float>& a);
float norm(MatrixNorm kind, const Matrix<SingleComplex>& a);

} // namespace tools
