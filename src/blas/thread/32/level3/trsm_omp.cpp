// Triangular solve on a team: op(A)*X = alpha*B or X*op(A) = alpha*B; X takes the place of B.
#include "blas/thread/32/level3/sliced_team_omp.hpp"

namespace qrv {
namespace {

// With the caller's addresses: the serial way is one call with the arguments as they came.
template <class T>
inline void trsm(QRV_TRSM_PARAMETERS(T)) {
    if (*m <= 0 || *n <= 0)
        return;
    if (sliced_team(solve_call<T>(side_of(*side), *m, *n), ThisMachine{}).threads <= 1)
        return kernel::Native<T>::trsm(QRV_TRSM_ARGUMENTS);
    blas::trsm<T>(side_of(*side), uplo_of(*uplo), op_of(*transa), diag_of(*diag), *m, *n, *alpha, {a, *lda}, {b, *ldb});
}

} // namespace

template <class T>
void blas::trsm(Side side, Uplo uplo, Op op, Diag diag, int m, int n, Scalar<T> alpha, MatrixIn<T> a, Matrix<T> b) {
    on_matrix_slices(solve_call<T>(side, m, n), [&](const MatrixSlice& part) {
        kernel::trsm(side, uplo, op, diag, part.m, part.n, alpha, a, b.block(part.row, part.column));
    });
}

template void blas::trsm(Side, Uplo, Op, Diag, int, int, float, Matrix<const float>, Matrix<float>);
template void blas::trsm(Side, Uplo, Op, Diag, int, int, SingleComplex, Matrix<const SingleComplex>,
                         Matrix<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_strsm(QRV_TRSM_PARAMETERS(float)) {
    trsm<float>(QRV_TRSM_ARGUMENTS);
}
void qrv_blas_ctrsm(QRV_TRSM_PARAMETERS(SingleComplex)) {
    trsm<SingleComplex>(QRV_TRSM_ARGUMENTS);
}
