// C := alpha*A*B + beta*C and C := alpha*B*A + beta*C on a team, with a symmetric or Hermitian A.
#include "blas/thread/32/level3/sliced_team_omp.hpp"

namespace qrv {

template <class T>
void blas::symm(Side side, Uplo uplo, int m, int n, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, Scalar<T> beta,
                Matrix<T> c) {
    if (alpha == scalar<T>(0) && beta == scalar<T>(1))
        return;
    on_matrix_slices(symmetric_call<T>(side, m, n), [&](const MatrixSlice& part) {
        kernel::symm(side, uplo, part.m, part.n, alpha, a, b.block(part.row, part.column), beta,
                     c.block(part.row, part.column));
    });
}
template <class T>
void blas::hemm(Side side, Uplo uplo, int m, int n, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, Scalar<T> beta,
                Matrix<T> c) {
    if (alpha == scalar<T>(0) && beta == scalar<T>(1))
        return;
    on_matrix_slices(symmetric_call<T>(side, m, n), [&](const MatrixSlice& part) {
        kernel::hemm(side, uplo, part.m, part.n, alpha, a, b.block(part.row, part.column), beta,
                     c.block(part.row, part.column));
    });
}

template void blas::symm(Side, Uplo, int, int, float, Matrix<const float>, Matrix<const float>, float, Matrix<float>);
template void blas::symm(Side, Uplo, int, int, SingleComplex, Matrix<const SingleComplex>, Matrix<const SingleComplex>,
                         SingleComplex, Matrix<SingleComplex>);
template void blas::hemm(Side, Uplo, int, int, float, Matrix<const float>, Matrix<const float>, float, Matrix<float>);
template void blas::hemm(Side, Uplo, int, int, SingleComplex, Matrix<const SingleComplex>, Matrix<const SingleComplex>,
                         SingleComplex, Matrix<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_ssymm(QRV_SYMM_PARAMETERS(float)) {
    blas::symm<float>(side_of(*side), uplo_of(*uplo), *m, *n, *alpha, {a, *lda}, {b, *ldb}, *beta, {c, *ldc});
}
void qrv_blas_csymm(QRV_SYMM_PARAMETERS(SingleComplex)) {
    blas::symm<SingleComplex>(side_of(*side), uplo_of(*uplo), *m, *n, *alpha, {a, *lda}, {b, *ldb}, *beta, {c, *ldc});
}
void qrv_blas_chemm(QRV_SYMM_PARAMETERS(SingleComplex)) {
    blas::hemm<SingleComplex>(side_of(*side), uplo_of(*uplo), *m, *n, *alpha, {a, *lda}, {b, *ldb}, *beta, {c, *ldc});
}
