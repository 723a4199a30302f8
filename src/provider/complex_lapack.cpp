// LAPACK of the complex provider: encode, bring workspace, call one native entry. Results go through locals into the
// caller's variables, `info` before others, after the native routine has returned.
#include "provider/encoding.hpp"
#include "provider/workspace.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

NativeComplexLapack::NativeComplexLapack() = default;

void NativeComplexLapack::Cgetrf(int m, int n, ProviderArray<SingleComplex> a, int aOffset, int lda,
                                 ProviderArray<int> ipiv, int& info) {
    qrv_complex* a0 = element(a, aOffset);
    int* pivots = element(ipiv);
    int result = 0;
    CGETRF(&m, &n, a0, &lda, pivots, &result);
    info = result;
}

void NativeComplexLapack::Cgetrs(TransposeOperation trans, int n, int nrhs, ProviderArray<const SingleComplex> a,
                                 int aOffset, int lda, ProviderArray<const int> ipiv, ProviderArray<SingleComplex> b,
                                 int bOffset, int ldb, int& info) {
    const qrv_complex* a0 = element(a, aOffset);
    const int* pivots = element(ipiv);
    qrv_complex* b0 = element(b, bOffset);
    int result = 0;
    CGETRS(rule_c(trans), &n, &nrhs, a0, &lda, pivots, b0, &ldb, &result);
    info = result;
}

void NativeComplexLapack::Cgetri(int n, ProviderArray<SingleComplex> a, int aOffset, int lda,
                                 ProviderArray<const int> ipiv, int& info) {
    qrv_complex* a0 = element(a, aOffset);
    const int* pivots = element(ipiv);
    const WorkArray<qrv_complex> work(4, n);
    const int lwork = 4 * n;
    int result = 0;
    CGETRI(&n, a0, &lda, pivots, work.data(), &lwork, &result);
    info = result;
}

void NativeComplexLapack::Cgecon(MatrixNorm norm, int n, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                 float aNorm, float& rcond, int& info) {
    const qrv_complex* a0 = element(a, aOffset);
    const WorkArray<qrv_complex> work(2, n);
    const WorkArray<float> rwork(2, n);
    float condition = 0;
    int result = 0;
    CGECON(qrv::provider::norm(norm), &n, a0, &lda, &aNorm, &condition, work.data(), rwork.data(), &result);
    info = result;
    rcond = condition;
}

void NativeComplexLapack::Ctrtrs(MatrixTriangleMode uplo, TransposeOperation trans, MatrixDiagonalMode diag, int n,
                                 int nrhs, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                 ProviderArray<SingleComplex> b, int bOffset, int ldb, int& info) {
    const qrv_complex* a0 = element(a, aOffset);
    qrv_complex* b0 = element(b, bOffset);
    int result = 0;
    CTRTRS(triangle(uplo), rule_c(trans), diagonal(diag), &n, &nrhs, a0, &lda, b0, &ldb, &result);
    info = result;
}

void NativeComplexLapack::Ctrtri(MatrixTriangleMode uplo, MatrixDiagonalMode diag, int n,
                                 ProviderArray<SingleComplex> a, int aOffset, int lda, int& info) {
    qrv_complex* a0 = element(a, aOffset);
    int result = 0;
    CTRTRI(triangle(uplo), diagonal(diag), &n, a0, &lda, &result);
    info = result;
}

void NativeComplexLapack::Ctrcon(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n,
                                 ProviderArray<const SingleComplex> a, int aOffset, int lda, float& rcond, int& info) {
    const qrv_complex* a0 = element(a, aOffset);
    const WorkArray<qrv_complex> work(2, n);
    const WorkArray<float> rwork(n);
    float condition = 0;
    int result = 0;
    CTRCON(qrv::provider::norm(norm), triangle(triangleMode), diagonal(diag), &n, a0, &lda, &condition, work.data(),
           rwork.data(), &result);
    info = result;
    rcond = condition;
}

void NativeComplexLapack::Clacpy(MatrixTriangleMode triangleMode, int m, int n, ProviderArray<const SingleComplex> a,
                                 int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb) {
    const qrv_complex* a0 = element(a, aOffset);
    qrv_complex* b0 = element(b, bOffset);
    CLACPY(triangle_or_both(triangleMode), &m, &n, a0, &lda, b0, &ldb);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
