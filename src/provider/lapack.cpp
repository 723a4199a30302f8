// LAPACK of the real provider.
#include <algorithm>
#include <limits>

#include "provider/call.hpp"
#include "qrv/native.h"
#include "qrv/providers/x86.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

ParallelX86SingleLapack::ParallelX86SingleLapack() = default;

void ParallelX86SingleLapack::Sgetrf(int m, int n, ProviderArray<float> a, int aOffset, int lda,
                                     ProviderArray<int> ipiv, int& info) {
    call(SGETRF, m, n, At(a, aOffset), lda, ipiv, Info(info));
}

void ParallelX86SingleLapack::Sgetrs(TransposeOperation trans, int n, int nrhs, ProviderArray<const float> a,
                                     int aOffset, int lda, ProviderArray<const int> ipiv, ProviderArray<float> b,
                                     int bOffset, int ldb, int& info) {
    call(SGETRS, rule_c(trans), n, nrhs, At(a, aOffset), lda, ipiv, At(b, bOffset), ldb, Info(info));
}

void ParallelX86SingleLapack::Sgetri(int n, ProviderArray<float> a, int aOffset, int lda, ProviderArray<const int> ipiv,
                                     int& info) {
    call(SGETRI, n, At(a, aOffset), lda, ipiv, SizedWork<float>(4, n), Info(info));
}

void ParallelX86SingleLapack::Sgecon(MatrixNorm norm, int n, ProviderArray<const float> a, int aOffset, int lda,
                                     float aNorm, float& rcond, int& info) {
    call(SGECON, norm, n, At(a, aOffset), lda, aNorm, Result(rcond), Work<float>(4, n), Work<int>(n), Info(info));
}

float ParallelX86SingleLapack::Slange(MatrixNorm norm, int m, int n, ProviderArray<const float> a, int aOffset,
                                      int lda) {
    return call(SLANGE, norm, m, n, At(a, aOffset), lda, NormWork(norm, m, At(a, aOffset)));
}

void ParallelX86SingleLapack::Sgeqrf(int m, int n, ProviderArray<float> a, int aOffset, int lda,
                                     ProviderArray<float> tau, int tauOffset, int& info) {
    call(SGEQRF, m, n, At(a, aOffset), lda, At(tau, tauOffset), Queried<float>(), Info(info));
}

void ParallelX86SingleLapack::Sgeqp3(int m, int n, ProviderArray<float> a, int aOffset, int lda,
                                     ProviderArray<int> jpvt, ProviderArray<float> tau, int tauOffset, int& info) {
    if (m == 0 || n == 0)
        return;
    call(SGEQP3, m, n, At(a, aOffset), lda, jpvt, At(tau, tauOffset), Queried<float>(), Info(info));
}

void ParallelX86SingleLapack::Sormqr(MatrixOperationSide side, TransposeOperation trans, int m, int n, int k,
                                     ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> tau,
                                     int tauOffset, ProviderArray<float> c, int cOffset, int Ldc, int& info) {
    call(SORMQR, side, rule_r(trans), m, n, k, At(a, aOffset), lda, At(tau, tauOffset), At(c, cOffset), Ldc,
         Queried<float>(), Info(info));
}

void ParallelX86SingleLapack::Strtrs(MatrixTriangleMode triangleMode, TransposeOperation trans, MatrixDiagonalMode diag,
                                     int n, int nrhs, ProviderArray<const float> a, int aOffset, int lda,
                                     ProviderArray<float> b, int bOffset, int ldb, int& info) {
    call(STRTRS, triangleMode, rule_c(trans), diag, n, nrhs, At(a, aOffset), lda, At(b, bOffset), ldb, Info(info));
}

void ParallelX86SingleLapack::Strtri(MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n,
                                     ProviderArray<float> a, int aOffset, int lda, int& info) {
    call(STRTRI, triangleMode, diag, n, At(a, aOffset), lda, Info(info));
}

void ParallelX86SingleLapack::Strcon(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n,
                                     ProviderArray<const float> a, int aOffset, int lda, float& rcond, int& info) {
    call(STRCON, norm, triangleMode, diag, n, At(a, aOffset), lda, Result(rcond), Work<float>(3, n), Work<int>(n),
         Info(info));
}

float ParallelX86SingleLapack::Slantr(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int m,
                                      int n, ProviderArray<const float> a, int aOffset, int lda) {
    return call(SLANTR, norm, triangleMode, diag, m, n, At(a, aOffset), lda, NormWork(norm, m, At(a, aOffset)));
}

void ParallelX86SingleLapack::Spotrf(MatrixTriangleMode triangleMode, int n, ProviderArray<float> a, int aOffset,
                                     int lda, int& info) {
    call(SPOTRF, triangleMode, n, At(a, aOffset), lda, Info(info));
}

void ParallelX86SingleLapack::Spotri(MatrixTriangleMode triangleMode, int n, ProviderArray<float> a, int aOffset,
                                     int lda, int& info) {
    call(SPOTRI, triangleMode, n, At(a, aOffset), lda, Info(info));
}

void ParallelX86SingleLapack::Spotrs(MatrixTriangleMode triangleMode, int n, int nrhs, ProviderArray<const float> a,
                                     int aOffset, int lda, ProviderArray<float> b, int bOffset, int ldb, int& info) {
    call(SPOTRS, triangleMode, n, nrhs, At(a, aOffset), lda, At(b, bOffset), ldb, Info(info));
}

void ParallelX86SingleLapack::Spocon(MatrixTriangleMode triangleMode, int n, ProviderArray<const float> a, int aOffset,
                                     int lda, float aNorm, float& rcond, int& info) {
    call(SPOCON, triangleMode, n, At(a, aOffset), lda, aNorm, Result(rcond), Work<float>(3, n), Work<int>(n),
         Info(info));
}

void ParallelX86SingleLapack::Sgbtrf(int m, int n, int kl, int ku, ProviderArray<float> a, int aOffset, int lda,
                                     ProviderArray<int> ipiv, int& info) {
    call(SGBTRF, m, n, kl, ku, At(a, aOffset), lda, ipiv, Info(info));
}

void ParallelX86SingleLapack::Sgbtrs(TransposeOperation trans, int n, int kl, int ku, int nrhs,
                                     ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const int> ipiv,
                                     ProviderArray<float> b, int bOffset, int ldb, int& info) {
    call(SGBTRS, rule_c(trans), n, kl, ku, nrhs, At(a, aOffset), lda, ipiv, At(b, bOffset), ldb, Info(info));
}

void ParallelX86SingleLapack::Sgbcon(MatrixNorm norm, int n, int kl, int ku, ProviderArray<const float> a, int aOffset,
                                     int lda, ProviderArray<const int> ipiv, float aNorm, float& rcond, int& info) {
    call(SGBCON, norm, n, kl, ku, At(a, aOffset), lda, ipiv, aNorm, Result(rcond), Work<float>(4, n), Work<int>(n),
         Info(info));
}

void ParallelX86SingleLapack::Stbtrs(MatrixTriangleMode triangleMode, TransposeOperation trans, MatrixDiagonalMode diag,
                                     int n, int kd, int nrhs, ProviderArray<const float> a, int aOffset, int lda,
                                     ProviderArray<float> b, int bOffset, int ldb, int& info) {
    call(STBTRS, triangleMode, rule_c(trans), diag, n, kd, nrhs, At(a, aOffset), lda, At(b, bOffset), ldb, Info(info));
}

void ParallelX86SingleLapack::Spbtrf(MatrixTriangleMode triangleMode, int n, int k, ProviderArray<float> a, int aOffset,
                                     int lda, int& info) {
    call(SPBTRF, triangleMode, n, k, At(a, aOffset), lda, Info(info));
}

void ParallelX86SingleLapack::Spbtrs(MatrixTriangleMode triangleMode, int n, int k, int nrhs,
                                     ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> b,
                                     int bOffset, int ldb, int& info) {
    call(SPBTRS, triangleMode, n, k, nrhs, At(a, aOffset), lda, At(b, bOffset), ldb, Info(info));
}

void ParallelX86SingleLapack::Spbcon(MatrixTriangleMode triangleMode, int n, int k, ProviderArray<const float> a,
                                     int aOffset, int lda, float aNorm, float& rcond, int& info) {
    call(SPBCON, triangleMode, n, k, At(a, aOffset), lda, aNorm, Result(rcond), Work<float>(3, n), Work<int>(n),
         Info(info));
}

void ParallelX86SingleLapack::Sgesdd(char16_t jobz, int m, int n, ProviderArray<float> a, int aOffset, int lda,
                                     ProviderArray<float> s, ProviderArray<float> u, int ldu, ProviderArray<float> vt,
                                     int ldvt, int& info) {
    call(SGESDD, narrow(jobz), m, n, At(a, aOffset), lda, s, u, ldu, vt, ldvt, Queried<float>(),
         Work<int>(8, std::min(m, n)), Info(info));
}

// Always the whole spectrum, and the supports of the eigenvectors stay here: bounds and array of the host are dropped.
void ParallelX86SingleLapack::Ssyevr(char16_t jobz, char16_t range, MatrixTriangleMode triangleMode, int n,
                                     ProviderArray<float> a, int aOffset, int lda, float, float, int, int, float,
                                     int& m, ProviderArray<float> w, int wOffset, ProviderArray<float> z, int zOffset,
                                     int ldz, ProviderArray<int>, int& info) {
    call(SSYEVR, narrow(jobz), narrow(range), triangleMode, n, At(a, aOffset), lda, -std::numeric_limits<float>::max(),
         std::numeric_limits<float>::max(), 1, n, 0.0F, Result(m), At(w, wOffset), At(z, zOffset), ldz, Work<int>(2, n),
         SizedWork<float>(36, n), SizedWork<int>(10, n), Info(info));
}

void ParallelX86SingleLapack::Sgeev(char16_t jobvl, char16_t jobvr, int n, ProviderArray<float> a, int aOffset, int lda,
                                    ProviderArray<float> wr, ProviderArray<float> wi, ProviderArray<float> vl, int ldvl,
                                    ProviderArray<float> vr, int ldvr, int& info) {
    call(SGEEV, narrow(jobvl), narrow(jobvr), n, At(a, aOffset), lda, wr, wi, vl, ldvl, vr, ldvr, Queried<float>(),
         Info(info));
}

void ParallelX86SingleLapack::Slacpy(MatrixTriangleMode triangleMode, int m, int n, ProviderArray<const float> a,
                                     int aOffset, int lda, ProviderArray<float> b, int bOffset, int ldb) {
    call(SLACPY, triangle_or_both(triangleMode), m, n, At(a, aOffset), lda, At(b, bOffset), ldb);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
