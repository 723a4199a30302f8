// LAPACK of the real provider: encode, bring workspace, call one native entry. Results go through locals into the
// caller's variables, `info` before others, after the native routine has returned.
#include "provider/encoding.hpp"
#include "provider/workspace.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

ParallelX86SingleLapack::ParallelX86SingleLapack() = default;

void ParallelX86SingleLapack::Sgetrf(int m, int n, ProviderArray<float> a, int aOffset, int lda,
                                     ProviderArray<int> ipiv, int& info) {
    float* a0 = element(a, aOffset);
    int* pivots = element(ipiv);
    int result = 0;
    SGETRF(&m, &n, a0, &lda, pivots, &result);
    info = result;
}

void ParallelX86SingleLapack::Sgetrs(TransposeOperation trans, int n, int nrhs, ProviderArray<const float> a,
                                     int aOffset, int lda, ProviderArray<const int> ipiv, ProviderArray<float> b,
                                     int bOffset, int ldb, int& info) {
    const float* a0 = element(a, aOffset);
    const int* pivots = element(ipiv);
    float* b0 = element(b, bOffset);
    int result = 0;
    SGETRS(rule_c(trans), &n, &nrhs, a0, &lda, pivots, b0, &ldb, &result);
    info = result;
}

void ParallelX86SingleLapack::Sgetri(int n, ProviderArray<float> a, int aOffset, int lda, ProviderArray<const int> ipiv,
                                     int& info) {
    float* a0 = element(a, aOffset);
    const int* pivots = element(ipiv);
    const WorkArray<float> work(4, n);
    const int lwork = 4 * n;
    int result = 0;
    SGETRI(&n, a0, &lda, pivots, work.data(), &lwork, &result);
    info = result;
}

void ParallelX86SingleLapack::Sgecon(MatrixNorm norm, int n, ProviderArray<const float> a, int aOffset, int lda,
                                     float aNorm, float& rcond, int& info) {
    const float* a0 = element(a, aOffset);
    const WorkArray<float> work(4, n);
    const WorkArray<int> iwork(n);
    float condition = 0;
    int result = 0;
    SGECON(qrv::provider::norm(norm), &n, a0, &lda, &aNorm, &condition, work.data(), iwork.data(), &result);
    info = result;
    rcond = condition;
}

float ParallelX86SingleLapack::Slange(MatrixNorm norm, int m, int n, ProviderArray<const float> a, int aOffset,
                                      int lda) {
    const float* a0 = element(a, aOffset);
    return with_norm_work(norm, m, a0,
                          [&](float* work) { return SLANGE(qrv::provider::norm(norm), &m, &n, a0, &lda, work); });
}

void ParallelX86SingleLapack::Strtrs(MatrixTriangleMode triangleMode, TransposeOperation trans, MatrixDiagonalMode diag,
                                     int n, int nrhs, ProviderArray<const float> a, int aOffset, int lda,
                                     ProviderArray<float> b, int bOffset, int ldb, int& info) {
    const float* a0 = element(a, aOffset);
    float* b0 = element(b, bOffset);
    int result = 0;
    STRTRS(triangle(triangleMode), rule_c(trans), diagonal(diag), &n, &nrhs, a0, &lda, b0, &ldb, &result);
    info = result;
}

void ParallelX86SingleLapack::Strtri(MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n,
                                     ProviderArray<float> a, int aOffset, int lda, int& info) {
    float* a0 = element(a, aOffset);
    int result = 0;
    STRTRI(triangle(triangleMode), diagonal(diag), &n, a0, &lda, &result);
    info = result;
}

void ParallelX86SingleLapack::Strcon(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n,
                                     ProviderArray<const float> a, int aOffset, int lda, float& rcond, int& info) {
    const float* a0 = element(a, aOffset);
    const WorkArray<float> work(3, n);
    const WorkArray<int> iwork(n);
    float condition = 0;
    int result = 0;
    STRCON(qrv::provider::norm(norm), triangle(triangleMode), diagonal(diag), &n, a0, &lda, &condition, work.data(),
           iwork.data(), &result);
    info = result;
    rcond = condition;
}

float ParallelX86SingleLapack::Slantr(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int m,
                                      int n, ProviderArray<const float> a, int aOffset, int lda) {
    const float* a0 = element(a, aOffset);
    return with_norm_work(norm, m, a0, [&](float* work) {
        return SLANTR(qrv::provider::norm(norm), triangle(triangleMode), diagonal(diag), &m, &n, a0, &lda, work);
    });
}

void ParallelX86SingleLapack::Slacpy(MatrixTriangleMode triangleMode, int m, int n, ProviderArray<const float> a,
                                     int aOffset, int lda, ProviderArray<float> b, int bOffset, int ldb) {
    const float* a0 = element(a, aOffset);
    float* b0 = element(b, bOffset);
    SLACPY(triangle_or_both(triangleMode), &m, &n, a0, &lda, b0, &ldb);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
