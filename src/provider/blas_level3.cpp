// BLAS level 3 of the real provider.
#include "provider/call.hpp"
#include "qrv/native/blas.h"
#include "qrv/providers/x86.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

ParallelX86SingleBlasLevel3::ParallelX86SingleBlasLevel3() = default;

void ParallelX86SingleBlasLevel3::Sgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k,
                                        float alpha, ProviderArray<const float> a, int aOffset, int lda,
                                        ProviderArray<const float> b, int bOffset, int ldb, float beta,
                                        ProviderArray<float> c, int cOffset, int ldc) {
    call(SGEMM, rule_r(transA), rule_r(transB), m, n, k, alpha, At(a, aOffset), lda, At(b, bOffset), ldb, beta,
         At(c, cOffset), ldc);
}

void ParallelX86SingleBlasLevel3::Ssymm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n,
                                        float alpha, ProviderArray<const float> a, int aOffset, int lda,
                                        ProviderArray<const float> b, int bOffset, int ldb, float beta,
                                        ProviderArray<float> c, int cOffset, int ldc) {
    call(SSYMM, side, triangleMode, m, n, alpha, At(a, aOffset), lda, At(b, bOffset), ldb, beta, At(c, cOffset), ldc);
}

void ParallelX86SingleBlasLevel3::Strmm(MatrixOperationSide side, MatrixTriangleMode triangleMode,
                                        TransposeOperation transA, MatrixDiagonalMode diag, int m, int n, float alpha,
                                        ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> b,
                                        int bOffset, int ldb) {
    call(STRMM, side, triangleMode, rule_r(transA), diag, m, n, alpha, At(a, aOffset), lda, At(b, bOffset), ldb);
}

void ParallelX86SingleBlasLevel3::Strsm(MatrixOperationSide side, MatrixTriangleMode triangleMode,
                                        TransposeOperation transA, MatrixDiagonalMode diag, int m, int n, float alpha,
                                        ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> b,
                                        int bOffset, int ldb) {
    call(STRSM, side, triangleMode, rule_r(transA), diag, m, n, alpha, At(a, aOffset), lda, At(b, bOffset), ldb);
}

void ParallelX86SingleBlasLevel3::Ssyrk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k,
                                        float alpha, ProviderArray<const float> a, int aOffset, int lda, float beta,
                                        ProviderArray<float> c, int cOffset, int ldc) {
    call(SSYRK, triangleMode, rule_r(trans), n, k, alpha, At(a, aOffset), lda, beta, At(c, cOffset), ldc);
}

void ParallelX86SingleBlasLevel3::Ssyr2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k,
                                         float alpha, ProviderArray<const float> a, int aOffset, int lda,
                                         ProviderArray<const float> b, int bOffset, int ldb, float beta,
                                         ProviderArray<float> c, int cOffset, int ldc) {
    call(SSYR2K, triangleMode, rule_r(trans), n, k, alpha, At(a, aOffset), lda, At(b, bOffset), ldb, beta,
         At(c, cOffset), ldc);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
