// C := alpha*op(A)*op(B)' + (alpha*op(A)*op(B)')' + beta*C on a team: SSYR2K, CSYR2K and, with the adjoint and a real
// beta, CHER2K.
#include "blas/thread/32/level3/rank_update_team_omp.hpp"

namespace qrv {
namespace {

// `kernel` is the serial routine, S the type of its beta: real for a Hermitian matrix.
template <Op mirror, class T, class S, class Kernel>
void update(Uplo uplo, Op op, int n, int k, T alpha, Matrix<const T> a, Matrix<const T> b, S beta, Matrix<T> c,
            const Kernel& kernel) {
    if (changes_nothing(n, k, alpha, beta))
        return;
    update_on_team<T>(
        uplo, n, work_of<T>(n, n, k),
        [&](Slice rows) {
            kernel(uplo, op, rows.count, k, alpha, rows_from(rows.first, op, a), rows_from(rows.first, op, b), beta,
                   c.block(rows.first, rows.first));
        },
        [&](const auto& gemm, Slice rows, Slice columns) {
            multiply<mirror>(gemm, op, rows, columns, k, alpha, a, b, as_element<T>(beta), c);
            multiply<mirror>(gemm, op, rows, columns, k, conj_if<mirror == Op::adjoint>(alpha), b, a, scalar<T>(1), c);
        });
}

} // namespace

template <class T>
void blas::syr2k(Uplo uplo, Op op, int n, int k, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, Scalar<T> beta,
                 Matrix<T> c) {
    update<Op::transpose, T>(uplo, op, n, k, alpha, a, b, beta, c, kernel::syr2k<T>);
}
template <class T>
void blas::rank_2k(Uplo uplo, Op op, int n, int k, Scalar<T> alpha, MatrixIn<T> a, MatrixIn<T> b, float beta,
                   Matrix<T> c) {
    update<Op::adjoint, T>(uplo, op, n, k, alpha, a, b, beta, c, kernel::rank_2k<T>);
}

template void blas::syr2k(Uplo, Op, int, int, float, Matrix<const float>, Matrix<const float>, float, Matrix<float>);
template void blas::syr2k(Uplo, Op, int, int, SingleComplex, Matrix<const SingleComplex>, Matrix<const SingleComplex>,
                          SingleComplex, Matrix<SingleComplex>);
template void blas::rank_2k(Uplo, Op, int, int, float, Matrix<const float>, Matrix<const float>, float, Matrix<float>);
template void blas::rank_2k(Uplo, Op, int, int, SingleComplex, Matrix<const SingleComplex>, Matrix<const SingleComplex>,
                            float, Matrix<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_ssyr2k(QRV_SYR2K_PARAMETERS(float, float)) {
    blas::syr2k<float>(uplo_of(*uplo), op_of(*trans), *n, *k, *alpha, {a, *lda}, {b, *ldb}, *beta, {c, *ldc});
}
void qrv_blas_csyr2k(QRV_SYR2K_PARAMETERS(SingleComplex, SingleComplex)) {
    blas::syr2k<SingleComplex>(uplo_of(*uplo), op_of(*trans), *n, *k, *alpha, {a, *lda}, {b, *ldb}, *beta, {c, *ldc});
}
void qrv_blas_cher2k(QRV_SYR2K_PARAMETERS(SingleComplex, float)) {
    blas::rank_2k<SingleComplex>(uplo_of(*uplo), op_of(*trans), *n, *k, *alpha, {a, *lda}, {b, *ldb}, *beta, {c, *ldc});
}
