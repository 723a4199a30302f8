// BLAS level 2 of the real provider.
#include "provider/call.hpp"
#include "qrv/native/blas.h"
#include "qrv/providers/x86.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

ParallelX86SingleBlasLevel2::ParallelX86SingleBlasLevel2() = default;

void ParallelX86SingleBlasLevel2::Sgemv(TransposeOperation transA, int m, int n, float alpha,
                                        ProviderArray<const float> a, int aOffset, int lda,
                                        ProviderArray<const float> x, int xOffset, int incx, float beta,
                                        ProviderArray<float> y, int yOffset, int incy) {
    call(SGEMV, rule_r(transA), m, n, alpha, At(a, aOffset), lda, At(x, xOffset), incx, beta, At(y, yOffset), incy);
}

void ParallelX86SingleBlasLevel2::Strmv(MatrixTriangleMode triangleMode, TransposeOperation transA,
                                        MatrixDiagonalMode diag, int n, ProviderArray<const float> a, int aOffset,
                                        int lda, ProviderArray<float> x, int xOffset, int incx) {
    call(STRMV, triangleMode, rule_r(transA), diag, n, At(a, aOffset), lda, At(x, xOffset), incx);
}

void ParallelX86SingleBlasLevel2::Strsv(MatrixTriangleMode triangleMode, TransposeOperation transA,
                                        MatrixDiagonalMode diag, int n, ProviderArray<const float> a, int aOffset,
                                        int lda, ProviderArray<float> x, int xOffset, int incx) {
    call(STRSV, triangleMode, rule_r(transA), diag, n, At(a, aOffset), lda, At(x, xOffset), incx);
}

void ParallelX86SingleBlasLevel2::Ssymv(MatrixTriangleMode triangleMode, int n, float alpha,
                                        ProviderArray<const float> a, int aOffset, int lda,
                                        ProviderArray<const float> x, int xOffset, int incx, float beta,
                                        ProviderArray<float> y, int yOffset, int incy) {
    call(SSYMV, triangleMode, n, alpha, At(a, aOffset), lda, At(x, xOffset), incx, beta, At(y, yOffset), incy);
}

void ParallelX86SingleBlasLevel2::Sger(int m, int n, float alpha, ProviderArray<const float> x, int xOffset, int incx,
                                       ProviderArray<const float> y, int yOffset, int incy, ProviderArray<float> a,
                                       int aOffset, int lda) {
    call(SGER, m, n, alpha, At(x, xOffset), incx, At(y, yOffset), incy, At(a, aOffset), lda);
}

void ParallelX86SingleBlasLevel2::Ssyr(MatrixTriangleMode triangleMode, int n, float alpha,
                                       ProviderArray<const float> x, int xOffset, int incx, ProviderArray<float> a,
                                       int aOffset, int lda) {
    call(SSYR, triangleMode, n, alpha, At(x, xOffset), incx, At(a, aOffset), lda);
}

void ParallelX86SingleBlasLevel2::Ssyr2(MatrixTriangleMode triangleMode, int n, float alpha,
                                        ProviderArray<const float> x, int xOffset, int incx,
                                        ProviderArray<const float> y, int yOffset, int incy, ProviderArray<float> a,
                                        int aOffset, int lda) {
    call(SSYR2, triangleMode, n, alpha, At(x, xOffset), incx, At(y, yOffset), incy, At(a, aOffset), lda);
}

void ParallelX86SingleBlasLevel2::Sgbmv(TransposeOperation transA, int m, int n, int kl, int ku, float alpha,
                                        ProviderArray<const float> a, int aOffset, int lda,
                                        ProviderArray<const float> x, int xOffset, int incx, float beta,
                                        ProviderArray<float> y, int yOffset, int incy) {
    call(SGBMV, rule_r(transA), m, n, kl, ku, alpha, At(a, aOffset), lda, At(x, xOffset), incx, beta, At(y, yOffset),
         incy);
}

void ParallelX86SingleBlasLevel2::Stbmv(MatrixTriangleMode triangleMode, TransposeOperation transA,
                                        MatrixDiagonalMode diag, int n, int k, ProviderArray<const float> a,
                                        int aOffset, int lda, ProviderArray<float> x, int xOffset, int incx) {
    call(STBMV, triangleMode, rule_r(transA), diag, n, k, At(a, aOffset), lda, At(x, xOffset), incx);
}

void ParallelX86SingleBlasLevel2::Stbsv(MatrixTriangleMode triangleMode, TransposeOperation transA,
                                        MatrixDiagonalMode diag, int n, int k, ProviderArray<const float> a,
                                        int aOffset, int lda, ProviderArray<float> x, int xOffset, int incx) {
    call(STBSV, triangleMode, rule_r(transA), diag, n, k, At(a, aOffset), lda, At(x, xOffset), incx);
}

void ParallelX86SingleBlasLevel2::Ssbmv(MatrixTriangleMode triangleMode, int n, int k, float alpha,
                                        ProviderArray<const float> a, int aOffset, int lda,
                                        ProviderArray<const float> x, int xOffset, int incx, float beta,
                                        ProviderArray<float> y, int yOffset, int incy) {
    call(SSBMV, triangleMode, n, k, alpha, At(a, aOffset), lda, At(x, xOffset), incx, beta, At(y, yOffset), incy);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
