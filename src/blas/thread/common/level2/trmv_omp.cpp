// Triangular matrix times vector on a team: x := op(A)*x.
//
// The result takes the place of x, of which every thread needs more than its own slice; so x is copied first, in a
// region of its own. Then each thread computes one slice of the result from the copy: the diagonal block of op(A)
// with the rectangle beside it.
#include <omp.h>

#include "blas/calls.hpp"
#include "blas/native.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/machine.hpp"
#include "blas/thread/common/team_omp.hpp"
#include "service/work_pool.hpp"

namespace qrv {
namespace {

template <class T>
void copy_vector(int threads, int n, Vector<const T> x, T* copy) {
    if (x.inc != 1 || threads == 1)
        return kernel::copy(n, x, Vector{copy});
#pragma omp parallel num_threads(threads)
    {
        const Slice part = equal_slice(n, omp_get_num_threads(), omp_get_thread_num());
        kernel::copy(part.count, x.from(part.first), Vector{copy + part.first});
    }
}

template <class T>
void trmv_omp(int threads, Uplo uplo, Op op, Diag diag, int n, Matrix<const T> a, Vector<T> x) {
    if (n < 1)
        return;
    T* const copy = static_cast<T*>(qrv_serv_allocate(static_cast<std::size_t>(n) * sizeof(T), 128));
    if (!copy) // the serial kernel needs no memory
        return kernel::trmv(uplo, op, diag, n, a, x);
    const bool byWork = goes_by_work(ThisMachine{});
    copy_vector<T>(byWork ? 1 : threads, n, x, copy);
    const auto part = [&](int team, int thread) {
        if (team == 1)
            return kernel::trmv(uplo, op, diag, n, a, x);
        const TriangleBand band = trmv_band(n, team, thread, uplo, op, byWork);
        const int along = band.slice.first, across = band.first;
        kernel::trmv_band(uplo, op, diag, band.slice.count, band.length,
                          op == Op::none ? a.block(along, across) : a.block(across, along), copy + across,
                          slice_of(x, n, band.slice));
    };
    if (byWork) {
        on_team(threads, part);
    } else {
#pragma omp parallel num_threads(threads)
        part(omp_get_num_threads(), omp_get_thread_num());
    }
    qrv_serv_deallocate(copy);
}

} // namespace

template <class T>
void blas::trmv(Uplo uplo, Op op, Diag diag, int n, MatrixIn<T> a, Vector<T> x) {
    const int threads = trmv_threads(row_for<T>(strmvRule, ctrmvRule), n, ThisMachine{});
    if (threads > 1)
        trmv_omp(threads, uplo, op, diag, n, a, x);
    else
        kernel::trmv(uplo, op, diag, n, a, x);
}

template void blas::trmv(Uplo, Op, Diag, int, Matrix<const float>, Vector<float>);
template void blas::trmv(Uplo, Op, Diag, int, Matrix<const SingleComplex>, Vector<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_strmv(QRV_TRIANGULAR_PARAMETERS(float)) {
    blas::trmv<float>(uplo_of(*uplo), op_of(*trans), diag_of(*diag), *n, {a, *lda}, {x, *incx});
}
void qrv_blas_ctrmv(QRV_TRIANGULAR_PARAMETERS(SingleComplex)) {
    blas::trmv<SingleComplex>(uplo_of(*uplo), op_of(*trans), diag_of(*diag), *n, {a, *lda}, {x, *incx});
}
void qrv_blas_strmv_omp(const int* threads, QRV_TRIANGULAR_PARAMETERS(float)) {
    trmv_omp<float>(*threads, uplo_of(*uplo), op_of(*trans), diag_of(*diag), *n, {a, *lda}, {x, *incx});
}
void qrv_blas_ctrmv_omp(const int* threads, QRV_TRIANGULAR_PARAMETERS(SingleComplex)) {
    trmv_omp<SingleComplex>(*threads, uplo_of(*uplo), op_of(*trans), diag_of(*diag), *n, {a, *lda}, {x, *incx});
}
