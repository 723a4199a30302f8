// BLAS level 2 of the complex provider.
#include "provider/call.hpp"
#include "qrv/native/blas.h"
#include "qrv/providers/x86.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

NativeComplexBlasLevel2::NativeComplexBlasLevel2() = default;

void NativeComplexBlasLevel2::Cgemv(TransposeOperation transA, int m, int n, SingleComplex alpha,
                                    ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<const SingleComplex> x, int xOffset, int incx, SingleComplex beta,
                                    ProviderArray<SingleComplex> y, int yOffset, int incy) {
    call(CGEMV, rule_c(transA), m, n, alpha, At(a, aOffset), lda, At(x, xOffset), incx, beta, At(y, yOffset), incy);
}

void NativeComplexBlasLevel2::Chemv(MatrixTriangleMode triangleMode, int n, SingleComplex alpha,
                                    ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<const SingleComplex> x, int xOffset, int incx, SingleComplex beta,
                                    ProviderArray<SingleComplex> y, int yOffset, int incy) {
    call(CHEMV, triangleMode, n, alpha, At(a, aOffset), lda, At(x, xOffset), incx, beta, At(y, yOffset), incy);
}

void NativeComplexBlasLevel2::Ctrmv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag,
                                    int n, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<SingleComplex> x, int xOffset, int incx) {
    call(CTRMV, triangleMode, rule_c(transA), diag, n, At(a, aOffset), lda, At(x, xOffset), incx);
}

void NativeComplexBlasLevel2::Ctrsv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag,
                                    int n, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<SingleComplex> x, int xOffset, int incx) {
    call(CTRSV, triangleMode, rule_c(transA), diag, n, At(a, aOffset), lda, At(x, xOffset), incx);
}

void NativeComplexBlasLevel2::Cgeru(int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> x,
                                    int xOffset, int incx, ProviderArray<const SingleComplex> y, int yOffset, int incy,
                                    ProviderArray<SingleComplex> a, int aOffset, int lda) {
    call(CGERU, m, n, alpha, At(x, xOffset), incx, At(y, yOffset), incy, At(a, aOffset), lda);
}

void NativeComplexBlasLevel2::Cgerc(int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> x,
                                    int xOffset, int incx, ProviderArray<const SingleComplex> y, int yOffset, int incy,
                                    ProviderArray<SingleComplex> a, int aOffset, int lda) {
    call(CGERC, m, n, alpha, At(x, xOffset), incx, At(y, yOffset), incy, At(a, aOffset), lda);
}

void NativeComplexBlasLevel2::Cher(MatrixTriangleMode triangleMode, int n, float alpha,
                                   ProviderArray<const SingleComplex> x, int xOffset, int incx,
                                   ProviderArray<SingleComplex> a, int aOffset, int lda) {
    call(CHER, triangleMode, n, alpha, At(x, xOffset), incx, At(a, aOffset), lda);
}

void NativeComplexBlasLevel2::Cher2(MatrixTriangleMode triangleMode, int n, SingleComplex alpha,
                                    ProviderArray<const SingleComplex> x, int xOffset, int incx,
                                    ProviderArray<const SingleComplex> y, int yOffset, int incy,
                                    ProviderArray<SingleComplex> a, int aOffset, int lda) {
    call(CHER2, triangleMode, n, alpha, At(x, xOffset), incx, At(y, yOffset), incy, At(a, aOffset), lda);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
