// BLAS level 3 of the complex provider.
#include "provider/call.hpp"
#include "qrv/native/blas.h"
#include "qrv/providers/x86.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

NativeComplexBlasLevel3::NativeComplexBlasLevel3() = default;

void NativeComplexBlasLevel3::Cgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k,
                                    SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<const SingleComplex> b, int bOffset, int ldb, SingleComplex beta,
                                    ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    call(CGEMM, rule_c(transA), rule_c(transB), m, n, k, alpha, At(a, aOffset), lda, At(b, bOffset), ldb, beta,
         At(c, cOffset), ldc);
}

void NativeComplexBlasLevel3::Csymm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n,
                                    SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<const SingleComplex> b, int bOffset, int ldb, SingleComplex beta,
                                    ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    call(CSYMM, side, triangleMode, m, n, alpha, At(a, aOffset), lda, At(b, bOffset), ldb, beta, At(c, cOffset), ldc);
}

void NativeComplexBlasLevel3::Chemm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n,
                                    SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<const SingleComplex> b, int bOffset, int ldb, SingleComplex beta,
                                    ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    call(CHEMM, side, triangleMode, m, n, alpha, At(a, aOffset), lda, At(b, bOffset), ldb, beta, At(c, cOffset), ldc);
}

void NativeComplexBlasLevel3::Csyrk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k,
                                    SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    SingleComplex beta, ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    call(CSYRK, triangleMode, rule_c(trans), n, k, alpha, At(a, aOffset), lda, beta, At(c, cOffset), ldc);
}

void NativeComplexBlasLevel3::Cherk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k,
                                    float alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda, float beta,
                                    ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    call(CHERK, triangleMode, rule_c(trans), n, k, alpha, At(a, aOffset), lda, beta, At(c, cOffset), ldc);
}

void NativeComplexBlasLevel3::Csyr2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k,
                                     SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                     ProviderArray<const SingleComplex> b, int bOffset, int ldb, SingleComplex beta,
                                     ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    call(CSYR2K, triangleMode, rule_c(trans), n, k, alpha, At(a, aOffset), lda, At(b, bOffset), ldb, beta,
         At(c, cOffset), ldc);
}

void NativeComplexBlasLevel3::Cher2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k,
                                     SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                     ProviderArray<const SingleComplex> b, int bOffset, int ldb, float beta,
                                     ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    call(CHER2K, triangleMode, rule_c(trans), n, k, alpha, At(a, aOffset), lda, At(b, bOffset), ldb, beta,
         At(c, cOffset), ldc);
}

void NativeComplexBlasLevel3::Ctrmm(MatrixOperationSide side, MatrixTriangleMode triangleMode,
                                    TransposeOperation transA, MatrixDiagonalMode diag, int m, int n,
                                    SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<SingleComplex> b, int bOffset, int ldb) {
    call(CTRMM, side, triangleMode, rule_c(transA), diag, m, n, alpha, At(a, aOffset), lda, At(b, bOffset), ldb);
}

void NativeComplexBlasLevel3::Ctrsm(MatrixOperationSide side, MatrixTriangleMode triangleMode,
                                    TransposeOperation transA, MatrixDiagonalMode diag, int m, int n,
                                    SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<SingleComplex> b, int bOffset, int ldb) {
    call(CTRSM, side, triangleMode, rule_c(transA), diag, m, n, alpha, At(a, aOffset), lda, At(b, bOffset), ldb);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
