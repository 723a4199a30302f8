// STRTRS, CTRTRS: solution of a triangular system with many right-hand sides, after a test for a singular matrix.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/arguments.hpp"
#include "lapack/calls/triangular.hpp"
#include "lapack/lapack.hpp"

namespace qrv::lapack {
namespace {

template <class T>
int trtrs(Uplo uplo, Op op, Diag diag, int n, int nrhs, Matrix<const T> a, Matrix<T> b) {
    if (diag == Diag::nonUnit)
        if (const int zero = zero_on_diagonal(n, a))
            return zero;
    if (n > 0)
        blas::trsm(Side::left, uplo, op, diag, n, nrhs, scalar<T>(1), a, b);
    return 0;
}

template <class T>
void trtrs_checked(char uplo, char trans, char diag, int n, int nrhs, const T* a, int lda, T* b, int ldb, int* info) {
    const int bad = !is_one_of(uplo, "UL")     ? 1
                    : !is_one_of(trans, "NTC") ? 2
                    : !is_one_of(diag, "NU")   ? 3
                    : n < 0                    ? 4
                    : nrhs < 0                 ? 5
                    : lda < std::max(1, n)     ? 7
                    : ldb < std::max(1, n)     ? 9
                                               : 0;
    if (arguments_good(RoutineName<T>("TRTRS"), bad, info))
        *info = trtrs<T>(uplo_of(uplo), op_of(trans), diag_of(diag), n, nrhs, {a, lda}, {b, ldb});
}

} // namespace
} // namespace qrv::lapack

using namespace qrv;

void qrv_lapack_strtrs(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs,
                       const float* a, const int* lda, float* b, const int* ldb, int* info) {
    lapack::trtrs_checked(*uplo, *trans, *diag, *n, *nrhs, a, *lda, b, *ldb, info);
}
void qrv_lapack_ctrtrs(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs,
                       const qrv_complex* a, const int* lda, qrv_complex* b, const int* ldb, int* info) {
    lapack::trtrs_checked(*uplo, *trans, *diag, *n, *nrhs, a, *lda, b, *ldb, info);
}
