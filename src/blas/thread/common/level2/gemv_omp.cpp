// General matrix times vector on a team: y := alpha*op(A)*x + beta*y.
//
// Every thread computes its own slice of y with one call of the serial kernel, from a band of rows of A (option N) or
// of columns (the others). So nothing is summed across threads and nothing is waited for.
#include "blas/calls.hpp"
#include "blas/native.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/machine.hpp"
#include "blas/thread/common/team_omp.hpp"

namespace qrv {
namespace {

template <class T>
void gemv_omp(int threads, Op op, int m, int n, T alpha, Matrix<const T> a, Vector<const T> x, T beta, Vector<T> y) {
    const int columnUnit = goes_by_work(ThisMachine{}) ? gemvColumnUnit : 1;
    on_team(threads, [&](int team, int thread) {
        const Slice part = gemv_slice(op, m, n, team, thread, columnUnit);
        if (op == Op::none)
            kernel::gemv(op, part.count, n, alpha, a.block(part.first, 0), x, beta, slice_of(y, m, part));
        else
            kernel::gemv(op, m, part.count, alpha, a.block(0, part.first), x, beta, slice_of(y, n, part));
    });
}

template <class T>
int threads_for(Op op, int m, int n) {
    return gemv_threads(row_for<T>(sgemvRule, cgemvRule), op, m, n, ThisMachine{});
}

// With the caller's addresses: the serial way is one call with the arguments as they came.
template <class T>
inline void gemv(QRV_GEMV_PARAMETERS(T)) {
    if (*m < 1 || *n < 1)
        return;
    const Op op = op_of(*trans);
    const int threads = threads_for<T>(op, *m, *n);
    if (threads <= 1)
        return kernel::Native<T>::gemv(QRV_GEMV_ARGUMENTS);
    gemv_omp<T>(threads, op, *m, *n, *alpha, {a, *lda}, {x, *incx}, *beta, {y, *incy});
}

} // namespace

template <class T>
void blas::gemv(Op op, int m, int n, Scalar<T> alpha, MatrixIn<T> a, VectorIn<T> x, Scalar<T> beta, Vector<T> y) {
    if (m < 1 || n < 1)
        return;
    const int threads = threads_for<T>(op, m, n);
    if (threads > 1)
        gemv_omp<T>(threads, op, m, n, alpha, a, x, beta, y);
    else
        kernel::gemv(op, m, n, alpha, a, x, beta, y);
}

template void blas::gemv(Op, int, int, float, Matrix<const float>, Vector<const float>, float, Vector<float>);
template void blas::gemv(Op, int, int, SingleComplex, Matrix<const SingleComplex>, Vector<const SingleComplex>,
                         SingleComplex, Vector<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_sgemv(QRV_GEMV_PARAMETERS(float)) {
    gemv<float>(QRV_GEMV_ARGUMENTS);
}
void qrv_blas_cgemv(QRV_GEMV_PARAMETERS(SingleComplex)) {
    gemv<SingleComplex>(QRV_GEMV_ARGUMENTS);
}
void qrv_blas_sgemv_omp(const int* threads, QRV_GEMV_PARAMETERS(float)) {
    gemv_omp<float>(*threads, op_of(*trans), *m, *n, *alpha, {a, *lda}, {x, *incx}, *beta, {y, *incy});
}
void qrv_blas_cgemv_omp(const int* threads, QRV_GEMV_PARAMETERS(SingleComplex)) {
    gemv_omp<SingleComplex>(*threads, op_of(*trans), *m, *n, *alpha, {a, *lda}, {x, *incx}, *beta, {y, *incy});
}
