// LAPACK of the complex provider.
#include <algorithm>
#include <cstdint>

#include "provider/call.hpp"
#include "qrv/native.h"
#include "qrv/providers/x86.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

NativeComplexLapack::NativeComplexLapack() = default;

void NativeComplexLapack::Cgetrf(int m, int n, ProviderArray<SingleComplex> a, int aOffset, int lda,
                                 ProviderArray<int> ipiv, int& info) {
    call(CGETRF, m, n, At(a, aOffset), lda, ipiv, Info(info));
}

void NativeComplexLapack::Cgetrs(TransposeOperation trans, int n, int nrhs, ProviderArray<const SingleComplex> a,
                                 int aOffset, int lda, ProviderArray<const int> ipiv, ProviderArray<SingleComplex> b,
                                 int bOffset, int ldb, int& info) {
    call(CGETRS, rule_c(trans), n, nrhs, At(a, aOffset), lda, ipiv, At(b, bOffset), ldb, Info(info));
}

void NativeComplexLapack::Cgetri(int n, ProviderArray<SingleComplex> a, int aOffset, int lda,
                                 ProviderArray<const int> ipiv, int& info) {
    call(CGETRI, n, At(a, aOffset), lda, ipiv, SizedWork<qrv_complex>(4, n), Info(info));
}

void NativeComplexLapack::Cgecon(MatrixNorm norm, int n, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                 float aNorm, float& rcond, int& info) {
    call(CGECON, norm, n, At(a, aOffset), lda, aNorm, Result(rcond), Work<qrv_complex>(2, n), Work<float>(2, n),
         Info(info));
}

void NativeComplexLapack::Cgeqrf(int m, int n, ProviderArray<SingleComplex> a, int aOffset, int lda,
                                 ProviderArray<SingleComplex> tau, int tauOffset, int& info) {
    call(CGEQRF, m, n, At(a, aOffset), lda, At(tau, tauOffset), Queried<qrv_complex>(), Info(info));
}

void NativeComplexLapack::Ctrtrs(MatrixTriangleMode uplo, TransposeOperation trans, MatrixDiagonalMode diag, int n,
                                 int nrhs, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                 ProviderArray<SingleComplex> b, int bOffset, int ldb, int& info) {
    call(CTRTRS, uplo, rule_c(trans), diag, n, nrhs, At(a, aOffset), lda, At(b, bOffset), ldb, Info(info));
}

void NativeComplexLapack::Ctrtri(MatrixTriangleMode uplo, MatrixDiagonalMode diag, int n,
                                 ProviderArray<SingleComplex> a, int aOffset, int lda, int& info) {
    call(CTRTRI, uplo, diag, n, At(a, aOffset), lda, Info(info));
}

void NativeComplexLapack::Ctrcon(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n,
                                 ProviderArray<const SingleComplex> a, int aOffset, int lda, float& rcond, int& info) {
    call(CTRCON, norm, triangleMode, diag, n, At(a, aOffset), lda, Result(rcond), Work<qrv_complex>(2, n),
         Work<float>(n), Info(info));
}

void NativeComplexLapack::Cpotrf(MatrixTriangleMode triangleMode, int n, ProviderArray<SingleComplex> a, int aOffset,
                                 int lda, int& info) {
    call(CPOTRF, triangleMode, n, At(a, aOffset), lda, Info(info));
}

void NativeComplexLapack::Cpotri(MatrixTriangleMode triangleMode, int n, ProviderArray<SingleComplex> a, int aOffset,
                                 int lda, int& info) {
    call(CPOTRI, triangleMode, n, At(a, aOffset), lda, Info(info));
}

void NativeComplexLapack::Cpotrs(MatrixTriangleMode triangleMode, int n, int nrhs, ProviderArray<const SingleComplex> a,
                                 int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb,
                                 int& info) {
    call(CPOTRS, triangleMode, n, nrhs, At(a, aOffset), lda, At(b, bOffset), ldb, Info(info));
}

void NativeComplexLapack::Cpocon(MatrixTriangleMode triangleMode, int n, ProviderArray<const SingleComplex> a,
                                 int aOffset, int lda, float aNorm, float& rcond, int& info) {
    call(CPOCON, triangleMode, n, At(a, aOffset), lda, aNorm, Result(rcond), Work<qrv_complex>(2, n), Work<float>(n),
         Info(info));
}

void NativeComplexLapack::Cunmqr(MatrixOperationSide side, TransposeOperation trans, int m, int n, int k,
                                 ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                 ProviderArray<const SingleComplex> tau, int tauOffset, ProviderArray<SingleComplex> c,
                                 int cOffset, int ldc, int& info) {
    call(CUNMQR, side, rule_c(trans), m, n, k, At(a, aOffset), lda, At(tau, tauOffset), At(c, cOffset), ldc,
         Queried<qrv_complex>(), Info(info));
}

void NativeComplexLapack::Cgesdd(char16_t jobz, int m, int n, ProviderArray<SingleComplex> a, int aOffset, int lda,
                                 ProviderArray<float> s, ProviderArray<SingleComplex> u, int ldu,
                                 ProviderArray<SingleComplex> vt, int ldvt, int& info) {
    if (m == 0 || n == 0)
        return;
    const std::int64_t least = std::min(m, n), t = std::max<std::int64_t>(1, 5 * least);
    const std::int64_t side = std::min<std::int64_t>(t, 1 << 20); // a larger square is no array's size either
    const std::int64_t lrwork = jobz == u'N' ? t : side * side + 7 * least;
    call(CGESDD, narrow(jobz), m, n, At(a, aOffset), lda, s, u, ldu, vt, ldvt, Queried<qrv_complex>(),
         Work<float>(lrwork), Work<int>(8, std::min(m, n)), Info(info));
}

void NativeComplexLapack::Clacpy(MatrixTriangleMode triangleMode, int m, int n, ProviderArray<const SingleComplex> a,
                                 int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb) {
    call(CLACPY, triangle_or_both(triangleMode), m, n, At(a, aOffset), lda, At(b, bOffset), ldb);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
