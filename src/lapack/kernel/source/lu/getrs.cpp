// SGETRS, CGETRS: solution of a general system from the factors of SGETRF, A = P L U.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/arguments.hpp"
#include "lapack/calls/lu.hpp"
#include "lapack/lapack.hpp"

namespace qrv::lapack {
namespace {

template <class T>
void getrs(Op op, int n, int nrhs, Matrix<const T> a, const int* ipiv, Matrix<T> b) {
    if (n == 0 || nrhs == 0)
        return;
    const T one = scalar<T>(1);
    if (op == Op::none) {
        laswp(nrhs, b, 1, n, ipiv);
        blas::trsm(Side::left, Uplo::lower, op, Diag::unit, n, nrhs, one, a, b);
        blas::trsm(Side::left, Uplo::upper, op, Diag::nonUnit, n, nrhs, one, a, b);
    } else {
        blas::trsm(Side::left, Uplo::upper, op, Diag::nonUnit, n, nrhs, one, a, b);
        blas::trsm(Side::left, Uplo::lower, op, Diag::unit, n, nrhs, one, a, b);
        laswp(nrhs, b, 1, n, ipiv, -1);
    }
}

template <class T>
void getrs_checked(char trans, int n, int nrhs, const T* a, int lda, const int* ipiv, T* b, int ldb, int* info) {
    const int bad = !is_one_of(trans, "NTC") ? 1
                    : n < 0                  ? 2
                    : nrhs < 0               ? 3
                    : lda < std::max(1, n)   ? 5
                    : ldb < std::max(1, n)   ? 8
                                             : 0;
    if (arguments_good(RoutineName<T>("GETRS"), bad, info))
        getrs<T>(op_of(trans), n, nrhs, {a, lda}, ipiv, {b, ldb});
}

} // namespace
} // namespace qrv::lapack

using namespace qrv;

void qrv_lapack_sgetrs(const char* trans, const int* n, const int* nrhs, const float* a, const int* lda,
                       const int* ipiv, float* b, const int* ldb, int* info) {
    lapack::getrs_checked(*trans, *n, *nrhs, a, *lda, ipiv, b, *ldb, info);
}
void qrv_lapack_cgetrs(const char* trans, const int* n, const int* nrhs, const qrv_complex* a, const int* lda,
                       const int* ipiv, qrv_complex* b, const int* ldb, int* info) {
    lapack::getrs_checked(*trans, *n, *nrhs, a, *lda, ipiv, b, *ldb, info);
}
