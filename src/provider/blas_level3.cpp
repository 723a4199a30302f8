// BLAS level 3 of the real provider: encode, call one native entry.
#include "provider/encoding.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

ParallelX86SingleBlasLevel3::ParallelX86SingleBlasLevel3() = default;

void ParallelX86SingleBlasLevel3::Sgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k,
                                        float alpha, ProviderArray<const float> a, int aOffset, int lda,
                                        ProviderArray<const float> b, int bOffset, int ldb, float beta,
                                        ProviderArray<float> c, int cOffset, int ldc) {
    const float* a0 = element(a, aOffset);
    const float* b0 = element(b, bOffset);
    float* c0 = element(c, cOffset);
    SGEMM(rule_r(transA), rule_r(transB), &m, &n, &k, &alpha, a0, &lda, b0, &ldb, &beta, c0, &ldc);
}

void ParallelX86SingleBlasLevel3::Ssymm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n,
                                        float alpha, ProviderArray<const float> a, int aOffset, int lda,
                                        ProviderArray<const float> b, int bOffset, int ldb, float beta,
                                        ProviderArray<float> c, int cOffset, int ldc) {
    const float* a0 = element(a, aOffset);
    const float* b0 = element(b, bOffset);
    float* c0 = element(c, cOffset);
    SSYMM(qrv::provider::side(side), triangle(triangleMode), &m, &n, &alpha, a0, &lda, b0, &ldb, &beta, c0, &ldc);
}

void ParallelX86SingleBlasLevel3::Strmm(MatrixOperationSide side, MatrixTriangleMode triangleMode,
                                        TransposeOperation transA, MatrixDiagonalMode diag, int m, int n, float alpha,
                                        ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> b,
                                        int bOffset, int ldb) {
    const float* a0 = element(a, aOffset);
    float* b0 = element(b, bOffset);
    STRMM(qrv::provider::side(side), triangle(triangleMode), rule_r(transA), diagonal(diag), &m, &n, &alpha, a0, &lda,
          b0, &ldb);
}

void ParallelX86SingleBlasLevel3::Strsm(MatrixOperationSide side, MatrixTriangleMode triangleMode,
                                        TransposeOperation transA, MatrixDiagonalMode diag, int m, int n, float alpha,
                                        ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> b,
                                        int bOffset, int ldb) {
    const float* a0 = element(a, aOffset);
    float* b0 = element(b, bOffset);
    STRSM(qrv::provider::side(side), triangle(triangleMode), rule_r(transA), diagonal(diag), &m, &n, &alpha, a0, &lda,
          b0, &ldb);
}

void ParallelX86SingleBlasLevel3::Ssyrk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k,
                                        float alpha, ProviderArray<const float> a, int aOffset, int lda, float beta,
                                        ProviderArray<float> c, int cOffset, int ldc) {
    const float* a0 = element(a, aOffset);
    float* c0 = element(c, cOffset);
    SSYRK(triangle(triangleMode), rule_r(trans), &n, &k, &alpha, a0, &lda, &beta, c0, &ldc);
}

void ParallelX86SingleBlasLevel3::Ssyr2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k,
                                         float alpha, ProviderArray<const float> a, int aOffset, int lda,
                                         ProviderArray<const float> b, int bOffset, int ldb, float beta,
                                         ProviderArray<float> c, int cOffset, int ldc) {
    const float* a0 = element(a, aOffset);
    const float* b0 = element(b, bOffset);
    float* c0 = element(c, cOffset);
    SSYR2K(triangle(triangleMode), rule_r(trans), &n, &k, &alpha, a0, &lda, b0, &ldb, &beta, c0, &ldc);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
