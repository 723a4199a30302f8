// BLAS level 2 of the real provider: encode, call one native entry.
#include "provider/encoding.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

ParallelX86SingleBlasLevel2::ParallelX86SingleBlasLevel2() = default;

void ParallelX86SingleBlasLevel2::Sgemv(TransposeOperation transA, int m, int n, float alpha,
                                        ProviderArray<const float> a, int aOffset, int lda,
                                        ProviderArray<const float> x, int xOffset, int incx, float beta,
                                        ProviderArray<float> y, int yOffset, int incy) {
    const float* a0 = element(a, aOffset);
    const float* x0 = element(x, xOffset);
    float* y0 = element(y, yOffset);
    SGEMV(rule_r(transA), &m, &n, &alpha, a0, &lda, x0, &incx, &beta, y0, &incy);
}

void ParallelX86SingleBlasLevel2::Strmv(MatrixTriangleMode triangleMode, TransposeOperation transA,
                                        MatrixDiagonalMode diag, int n, ProviderArray<const float> a, int aOffset,
                                        int lda, ProviderArray<float> x, int xOffset, int incx) {
    const float* a0 = element(a, aOffset);
    float* x0 = element(x, xOffset);
    STRMV(triangle(triangleMode), rule_r(transA), diagonal(diag), &n, a0, &lda, x0, &incx);
}

void ParallelX86SingleBlasLevel2::Strsv(MatrixTriangleMode triangleMode, TransposeOperation transA,
                                        MatrixDiagonalMode diag, int n, ProviderArray<const float> a, int aOffset,
                                        int lda, ProviderArray<float> x, int xOffset, int incx) {
    const float* a0 = element(a, aOffset);
    float* x0 = element(x, xOffset);
    STRSV(triangle(triangleMode), rule_r(transA), diagonal(diag), &n, a0, &lda, x0, &incx);
}

void ParallelX86SingleBlasLevel2::Ssymv(MatrixTriangleMode triangleMode, int n, float alpha,
                                        ProviderArray<const float> a, int aOffset, int lda,
                                        ProviderArray<const float> x, int xOffset, int incx, float beta,
                                        ProviderArray<float> y, int yOffset, int incy) {
    const float* a0 = element(a, aOffset);
    const float* x0 = element(x, xOffset);
    float* y0 = element(y, yOffset);
    SSYMV(triangle(triangleMode), &n, &alpha, a0, &lda, x0, &incx, &beta, y0, &incy);
}

void ParallelX86SingleBlasLevel2::Sger(int m, int n, float alpha, ProviderArray<const float> x, int xOffset, int incx,
                                       ProviderArray<const float> y, int yOffset, int incy, ProviderArray<float> a,
                                       int aOffset, int lda) {
    const float* x0 = element(x, xOffset);
    const float* y0 = element(y, yOffset);
    float* a0 = element(a, aOffset);
    SGER(&m, &n, &alpha, x0, &incx, y0, &incy, a0, &lda);
}

void ParallelX86SingleBlasLevel2::Ssyr(MatrixTriangleMode triangleMode, int n, float alpha,
                                       ProviderArray<const float> x, int xOffset, int incx, ProviderArray<float> a,
                                       int aOffset, int lda) {
    const float* x0 = element(x, xOffset);
    float* a0 = element(a, aOffset);
    SSYR(triangle(triangleMode), &n, &alpha, x0, &incx, a0, &lda);
}

void ParallelX86SingleBlasLevel2::Ssyr2(MatrixTriangleMode triangleMode, int n, float alpha,
                                        ProviderArray<const float> x, int xOffset, int incx,
                                        ProviderArray<const float> y, int yOffset, int incy, ProviderArray<float> a,
                                        int aOffset, int lda) {
    const float* x0 = element(x, xOffset);
    const float* y0 = element(y, yOffset);
    float* a0 = element(a, aOffset);
    SSYR2(triangle(triangleMode), &n, &alpha, x0, &incx, y0, &incy, a0, &lda);
}

void ParallelX86SingleBlasLevel2::Sgbmv(TransposeOperation transA, int m, int n, int kl, int ku, float alpha,
                                        ProviderArray<const float> a, int aOffset, int lda,
                                        ProviderArray<const float> x, int xOffset, int incx, float beta,
                                        ProviderArray<float> y, int yOffset, int incy) {
    const float* a0 = element(a, aOffset);
    const float* x0 = element(x, xOffset);
    float* y0 = element(y, yOffset);
    SGBMV(rule_r(transA), &m, &n, &kl, &ku, &alpha, a0, &lda, x0, &incx, &beta, y0, &incy);
}

void ParallelX86SingleBlasLevel2::Stbmv(MatrixTriangleMode triangleMode, TransposeOperation transA,
                                        MatrixDiagonalMode diag, int n, int k, ProviderArray<const float> a,
                                        int aOffset, int lda, ProviderArray<float> x, int xOffset, int incx) {
    const float* a0 = element(a, aOffset);
    float* x0 = element(x, xOffset);
    STBMV(triangle(triangleMode), rule_r(transA), diagonal(diag), &n, &k, a0, &lda, x0, &incx);
}

void ParallelX86SingleBlasLevel2::Stbsv(MatrixTriangleMode triangleMode, TransposeOperation transA,
                                        MatrixDiagonalMode diag, int n, int k, ProviderArray<const float> a,
                                        int aOffset, int lda, ProviderArray<float> x, int xOffset, int incx) {
    const float* a0 = element(a, aOffset);
    float* x0 = element(x, xOffset);
    STBSV(triangle(triangleMode), rule_r(transA), diagonal(diag), &n, &k, a0, &lda, x0, &incx);
}

void ParallelX86SingleBlasLevel2::Ssbmv(MatrixTriangleMode triangleMode, int n, int k, float alpha,
                                        ProviderArray<const float> a, int aOffset, int lda,
                                        ProviderArray<const float> x, int xOffset, int incx, float beta,
                                        ProviderArray<float> y, int yOffset, int incy) {
    const float* a0 = element(a, aOffset);
    const float* x0 = element(x, xOffset);
    float* y0 = element(y, yOffset);
    SSBMV(triangle(triangleMode), &n, &k, &alpha, a0, &lda, x0, &incx, &beta, y0, &incy);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
