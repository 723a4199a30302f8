// BLAS level 3 of the complex provider: encode, call one native entry.
#include "provider/encoding.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

NativeComplexBlasLevel3::NativeComplexBlasLevel3() = default;

void NativeComplexBlasLevel3::Cgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k,
                                    SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<const SingleComplex> b, int bOffset, int ldb, SingleComplex beta,
                                    ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    const qrv_complex* a0 = element(a, aOffset);
    const qrv_complex* b0 = element(b, bOffset);
    qrv_complex* c0 = element(c, cOffset);
    CGEMM(rule_c(transA), rule_c(transB), &m, &n, &k, native(&alpha), a0, &lda, b0, &ldb, native(&beta), c0, &ldc);
}

void NativeComplexBlasLevel3::Chemm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n,
                                    SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<const SingleComplex> b, int bOffset, int ldb, SingleComplex beta,
                                    ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    const qrv_complex* a0 = element(a, aOffset);
    const qrv_complex* b0 = element(b, bOffset);
    qrv_complex* c0 = element(c, cOffset);
    CHEMM(qrv::provider::side(side), triangle(triangleMode), &m, &n, native(&alpha), a0, &lda, b0, &ldb, native(&beta),
          c0, &ldc);
}

void NativeComplexBlasLevel3::Cherk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k,
                                    float alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda, float beta,
                                    ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    const qrv_complex* a0 = element(a, aOffset);
    qrv_complex* c0 = element(c, cOffset);
    CHERK(triangle(triangleMode), rule_c(trans), &n, &k, &alpha, a0, &lda, &beta, c0, &ldc);
}

void NativeComplexBlasLevel3::Cher2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k,
                                     SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                     ProviderArray<const SingleComplex> b, int bOffset, int ldb, float beta,
                                     ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    const qrv_complex* a0 = element(a, aOffset);
    const qrv_complex* b0 = element(b, bOffset);
    qrv_complex* c0 = element(c, cOffset);
    CHER2K(triangle(triangleMode), rule_c(trans), &n, &k, native(&alpha), a0, &lda, b0, &ldb, &beta, c0, &ldc);
}

void NativeComplexBlasLevel3::Ctrmm(MatrixOperationSide side, MatrixTriangleMode triangleMode,
                                    TransposeOperation transA, MatrixDiagonalMode diag, int m, int n,
                                    SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<SingleComplex> b, int bOffset, int ldb) {
    const qrv_complex* a0 = element(a, aOffset);
    qrv_complex* b0 = element(b, bOffset);
    CTRMM(qrv::provider::side(side), triangle(triangleMode), rule_c(transA), diagonal(diag), &m, &n, native(&alpha), a0,
          &lda, b0, &ldb);
}

void NativeComplexBlasLevel3::Ctrsm(MatrixOperationSide side, MatrixTriangleMode triangleMode,
                                    TransposeOperation transA, MatrixDiagonalMode diag, int m, int n,
                                    SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<SingleComplex> b, int bOffset, int ldb) {
    const qrv_complex* a0 = element(a, aOffset);
    qrv_complex* b0 = element(b, bOffset);
    CTRSM(qrv::provider::side(side), triangle(triangleMode), rule_c(transA), diagonal(diag), &m, &n, native(&alpha), a0,
          &lda, b0, &ldb);
}

void NativeComplexBlasLevel3::Csymm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n,
                                    SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<const SingleComplex> b, int bOffset, int ldb, SingleComplex beta,
                                    ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    const qrv_complex* a0 = element(a, aOffset);
    const qrv_complex* b0 = element(b, bOffset);
    qrv_complex* c0 = element(c, cOffset);
    CSYMM(qrv::provider::side(side), triangle(triangleMode), &m, &n, native(&alpha), a0, &lda, b0, &ldb, native(&beta),
          c0, &ldc);
}

void NativeComplexBlasLevel3::Csyrk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k,
                                    SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    SingleComplex beta, ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    const qrv_complex* a0 = element(a, aOffset);
    qrv_complex* c0 = element(c, cOffset);
    CSYRK(triangle(triangleMode), rule_c(trans), &n, &k, native(&alpha), a0, &lda, native(&beta), c0, &ldc);
}

void NativeComplexBlasLevel3::Csyr2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k,
                                     SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                     ProviderArray<const SingleComplex> b, int bOffset, int ldb, SingleComplex beta,
                                     ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    const qrv_complex* a0 = element(a, aOffset);
    const qrv_complex* b0 = element(b, bOffset);
    qrv_complex* c0 = element(c, cOffset);
    CSYR2K(triangle(triangleMode), rule_c(trans), &n, &k, native(&alpha), a0, &lda, b0, &ldb, native(&beta), c0, &ldc);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
