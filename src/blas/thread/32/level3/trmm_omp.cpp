// Triangular product on a team: B := alpha*op(A)*B or B := alpha*B*op(A).
#include "blas/thread/32/level3/sliced_team_omp.hpp"

namespace qrv {
namespace {

// With the caller's addresses: the serial way is one call with the arguments as they came.
template <class T>
inline void trmm(QRV_TRSM_PARAMETERS(T)) {
    if (*m <= 0 || *n <= 0)
        return;
    if (sliced_team(product_call<T>(side_of(*side), *m, *n), ThisMachine{}).threads <= 1)
        return kernel::Native<T>::trmm(QRV_TRSM_ARGUMENTS);
    blas::trmm<T>(side_of(*side), uplo_of(*uplo), op_of(*transa), diag_of(*diag), *m, *n, *alpha, {a, *lda}, {b, *ldb});
}

} // namespace

template <class T>
void blas::trmm(Side side, Uplo uplo, Op op, Diag diag, int m, int n, Scalar<T> alpha, MatrixIn<T> a, Matrix<T> b) {
    on_matrix_slices(product_call<T>(side, m, n), [&](const MatrixSlice& part) {
        kernel::trmm(side, uplo, op, diag, part.m, part.n, alpha, a, b.block(part.row, part.column));
    });
}

template void blas::trmm(Side, Uplo, Op, Diag, int, int, float, Matrix<const float>, Matrix<float>);
template void blas::trmm(Side, Uplo, Op, Diag, int, int, SingleComplex, Matrix<const SingleComplex>,
                         Matrix<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_strmm(QRV_TRSM_PARAMETERS(float)) {
    trmm<float>(QRV_TRSM_ARGUMENTS);
}
void qrv_blas_ctrmm(QRV_TRSM_PARAMETERS(SingleComplex)) {
    trmm<SingleComplex>(QRV_TRSM_ARGUMENTS);
}
