// BLAS level 2 of the complex provider: encode, call one native entry.
#include "provider/encoding.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

NativeComplexBlasLevel2::NativeComplexBlasLevel2() = default;

void NativeComplexBlasLevel2::Cgemv(TransposeOperation transA, int m, int n, SingleComplex alpha,
                                    ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<const SingleComplex> x, int xOffset, int incx, SingleComplex beta,
                                    ProviderArray<SingleComplex> y, int yOffset, int incy) {
    const qrv_complex* a0 = element(a, aOffset);
    const qrv_complex* x0 = element(x, xOffset);
    qrv_complex* y0 = element(y, yOffset);
    CGEMV(rule_c(transA), &m, &n, native(&alpha), a0, &lda, x0, &incx, native(&beta), y0, &incy);
}

void NativeComplexBlasLevel2::Chemv(MatrixTriangleMode triangleMode, int n, SingleComplex alpha,
                                    ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<const SingleComplex> x, int xOffset, int incx, SingleComplex beta,
                                    ProviderArray<SingleComplex> y, int yOffset, int incy) {
    const qrv_complex* a0 = element(a, aOffset);
    const qrv_complex* x0 = element(x, xOffset);
    qrv_complex* y0 = element(y, yOffset);
    CHEMV(triangle(triangleMode), &n, native(&alpha), a0, &lda, x0, &incx, native(&beta), y0, &incy);
}

void NativeComplexBlasLevel2::Ctrmv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag,
                                    int n, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<SingleComplex> x, int xOffset, int incx) {
    const qrv_complex* a0 = element(a, aOffset);
    qrv_complex* x0 = element(x, xOffset);
    CTRMV(triangle(triangleMode), rule_c(transA), diagonal(diag), &n, a0, &lda, x0, &incx);
}

void NativeComplexBlasLevel2::Ctrsv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag,
                                    int n, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<SingleComplex> x, int xOffset, int incx) {
    const qrv_complex* a0 = element(a, aOffset);
    qrv_complex* x0 = element(x, xOffset);
    CTRSV(triangle(triangleMode), rule_c(transA), diagonal(diag), &n, a0, &lda, x0, &incx);
}

void NativeComplexBlasLevel2::Cgeru(int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> x,
                                    int xOffset, int incx, ProviderArray<const SingleComplex> y, int yOffset, int incy,
                                    ProviderArray<SingleComplex> a, int aOffset, int lda) {
    const qrv_complex* x0 = element(x, xOffset);
    const qrv_complex* y0 = element(y, yOffset);
    qrv_complex* a0 = element(a, aOffset);
    CGERU(&m, &n, native(&alpha), x0, &incx, y0, &incy, a0, &lda);
}

void NativeComplexBlasLevel2::Cgerc(int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> x,
                                    int xOffset, int incx, ProviderArray<const SingleComplex> y, int yOffset, int incy,
                                    ProviderArray<SingleComplex> a, int aOffset, int lda) {
    const qrv_complex* x0 = element(x, xOffset);
    const qrv_complex* y0 = element(y, yOffset);
    qrv_complex* a0 = element(a, aOffset);
    CGERC(&m, &n, native(&alpha), x0, &incx, y0, &incy, a0, &lda);
}

void NativeComplexBlasLevel2::Cher(MatrixTriangleMode triangleMode, int n, float alpha,
                                   ProviderArray<const SingleComplex> x, int xOffset, int incx,
                                   ProviderArray<SingleComplex> a, int aOffset, int lda) {
    const qrv_complex* x0 = element(x, xOffset);
    qrv_complex* a0 = element(a, aOffset);
    CHER(triangle(triangleMode), &n, &alpha, x0, &incx, a0, &lda);
}

void NativeComplexBlasLevel2::Cher2(MatrixTriangleMode triangleMode, int n, SingleComplex alpha,
                                    ProviderArray<const SingleComplex> x, int xOffset, int incx,
                                    ProviderArray<const SingleComplex> y, int yOffset, int incy,
                                    ProviderArray<SingleComplex> a, int aOffset, int lda) {
    const qrv_complex* x0 = element(x, xOffset);
    const qrv_complex* y0 = element(y, yOffset);
    qrv_complex* a0 = element(a, aOffset);
    CHER2(triangle(triangleMode), &n, native(&alpha), x0, &incx, y0, &incy, a0, &lda);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
