// C := alpha*op(A)*op(A)' + beta*C on a team: SSYRK, CSYRK and, with the adjoint and real scalars, CHERK.
#include "blas/thread/32/level3/rank_update_team_omp.hpp"

namespace qrv {
namespace {

// `kernel` is the serial routine, S the type of its scalars: real for a Hermitian matrix.
template <Op mirror, class T, class S, class Kernel>
void update(Uplo uplo, Op op, int n, int k, S alpha, Matrix<const T> a, S beta, Matrix<T> c, const Kernel& kernel) {
    if (changes_nothing(n, k, alpha, beta))
        return;
    update_on_team<T>(
        uplo, n, work_of<T>(n, n, k) / 2,
        [&](Slice rows) {
            kernel(uplo, op, rows.count, k, alpha, rows_from(rows.first, op, a), beta, c.block(rows.first, rows.first));
        },
        [&](const auto& gemm, Slice rows, Slice columns) {
            multiply<mirror>(gemm, op, rows, columns, k, as_element<T>(alpha), a, a, as_element<T>(beta), c);
        });
}

} // namespace

template <class T>
void blas::syrk(Uplo uplo, Op op, int n, int k, Scalar<T> alpha, MatrixIn<T> a, Scalar<T> beta, Matrix<T> c) {
    update<Op::transpose, T>(uplo, op, n, k, alpha, a, beta, c, kernel::syrk<T>);
}
template <class T>
void blas::rank_k(Uplo uplo, Op op, int n, int k, float alpha, MatrixIn<T> a, float beta, Matrix<T> c) {
    update<Op::adjoint, T>(uplo, op, n, k, alpha, a, beta, c, kernel::rank_k<T>);
}

template void blas::syrk(Uplo, Op, int, int, float, Matrix<const float>, float, Matrix<float>);
template void blas::syrk(Uplo, Op, int, int, SingleComplex, Matrix<const SingleComplex>, SingleComplex,
                         Matrix<SingleComplex>);
template void blas::rank_k(Uplo, Op, int, int, float, Matrix<const float>, float, Matrix<float>);
template void blas::rank_k(Uplo, Op, int, int, float, Matrix<const SingleComplex>, float, Matrix<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_ssyrk(QRV_SYRK_PARAMETERS(float, float)) {
    blas::syrk<float>(uplo_of(*uplo), op_of(*trans), *n, *k, *alpha, {a, *lda}, *beta, {c, *ldc});
}
void qrv_blas_csyrk(QRV_SYRK_PARAMETERS(SingleComplex, SingleComplex)) {
    blas::syrk<SingleComplex>(uplo_of(*uplo), op_of(*trans), *n, *k, *alpha, {a, *lda}, *beta, {c, *ldc});
}
void qrv_blas_cherk(QRV_SYRK_PARAMETERS(SingleComplex, float)) {
    blas::rank_k<SingleComplex>(uplo_of(*uplo), op_of(*trans), *n, *k, *alpha, {a, *lda}, *beta, {c, *ldc});
}
