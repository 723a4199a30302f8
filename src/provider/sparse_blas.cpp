// The sparse class: every operation is empty.
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

ParallelX86SingleSparseBlas::ParallelX86SingleSparseBlas() = default;

void ParallelX86SingleSparseBlas::Scscmv(TransposeOperation, int, int, float, MatrixStructure, MatrixTriangleMode,
                                         MatrixDiagonalMode, ProviderArray<const float>, ProviderArray<const int>,
                                         ProviderArray<const int>, ProviderArray<const int>, ProviderArray<const float>,
                                         int, int, float, ProviderArray<float>, int, int) {}

void ParallelX86SingleSparseBlas::Scscsv(TransposeOperation, int, float, MatrixStructure, MatrixTriangleMode,
                                         MatrixDiagonalMode, ProviderArray<const float>, ProviderArray<const int>,
                                         ProviderArray<const int>, ProviderArray<const int>, ProviderArray<const float>,
                                         int, int, ProviderArray<float>, int, int) {}

void ParallelX86SingleSparseBlas::Scscmm(TransposeOperation, int, int, int, float, MatrixStructure, MatrixTriangleMode,
                                         MatrixDiagonalMode, ProviderArray<const float>, ProviderArray<const int>,
                                         ProviderArray<const int>, ProviderArray<const int>, ProviderArray<const float>,
                                         int, int, float, ProviderArray<float>, int, int) {}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
