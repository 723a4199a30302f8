// Update of a general matrix on a team: A := alpha*x*op(y) + A. Every thread has columns or rows of its own, so that
// the result has the bits of one thread.
#include "blas/calls.hpp"
#include "blas/native.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/machine.hpp"
#include "blas/thread/common/team_omp.hpp"

namespace qrv {
namespace {

template <bool conjugated, class T>
void ger_of(int m, int n, T alpha, Vector<const T> x, Vector<const T> y, Matrix<T> a) {
    if constexpr (conjugated)
        kernel::gerc(m, n, alpha, x, y, a);
    else
        kernel::geru(m, n, alpha, x, y, a);
}

template <bool conjugated, class T>
void ger_omp(int threads, int m, int n, T alpha, Vector<const T> x, Vector<const T> y, Matrix<T> a) {
    on_team(threads, [&](int team, int thread) {
        const bool byColumns = ger_by_columns(n, team);
        const Slice part = byColumns ? tile_slice(n, team, thread, gemvColumnUnit) : vector_slice(m, team, thread);
        if (byColumns)
            ger_of<conjugated>(m, part.count, alpha, x, slice_of(y, n, part), a.block(0, part.first));
        else
            ger_of<conjugated>(part.count, n, alpha, slice_of(x, m, part), y, a.block(part.first, 0));
    });
}

template <bool conjugated, class T>
void ger(int m, int n, T alpha, Vector<const T> x, Vector<const T> y, Matrix<T> a) {
    const int threads = ger_threads(row_for<T>(sgerRule, cgerRule), m, n, ThisMachine{});
    if (threads > 1)
        ger_omp<conjugated>(threads, m, n, alpha, x, y, a);
    else
        ger_of<conjugated>(m, n, alpha, x, y, a);
}

} // namespace

template <class T>
void blas::geru(int m, int n, Scalar<T> alpha, VectorIn<T> x, VectorIn<T> y, Matrix<T> a) {
    ger<false>(m, n, alpha, x, y, a);
}
template <class T>
void blas::gerc(int m, int n, Scalar<T> alpha, VectorIn<T> x, VectorIn<T> y, Matrix<T> a) {
    ger<isComplex<T>>(m, n, alpha, x, y, a);
}

template void blas::geru(int, int, float, Vector<const float>, Vector<const float>, Matrix<float>);
template void blas::geru(int, int, SingleComplex, Vector<const SingleComplex>, Vector<const SingleComplex>,
                         Matrix<SingleComplex>);
template void blas::gerc(int, int, float, Vector<const float>, Vector<const float>, Matrix<float>);
template void blas::gerc(int, int, SingleComplex, Vector<const SingleComplex>, Vector<const SingleComplex>,
                         Matrix<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_sger(QRV_GER_PARAMETERS(float)) {
    ger<false, float>(*m, *n, *alpha, {x, *incx}, {y, *incy}, {a, *lda});
}
void qrv_blas_cgeru(QRV_GER_PARAMETERS(SingleComplex)) {
    ger<false, SingleComplex>(*m, *n, *alpha, {x, *incx}, {y, *incy}, {a, *lda});
}
void qrv_blas_cgerc(QRV_GER_PARAMETERS(SingleComplex)) {
    ger<true, SingleComplex>(*m, *n, *alpha, {x, *incx}, {y, *incy}, {a, *lda});
}
void qrv_blas_sger_omp(const int* threads, QRV_GER_PARAMETERS(float)) {
    ger_omp<false, float>(*threads, *m, *n, *alpha, {x, *incx}, {y, *incy}, {a, *lda});
}
void qrv_blas_cgeru_omp(const int* threads, QRV_GER_PARAMETERS(SingleComplex)) {
    ger_omp<false, SingleComplex>(*threads, *m, *n, *alpha, {x, *incx}, {y, *incy}, {a, *lda});
}
void qrv_blas_cgerc_omp(const int* threads, QRV_GER_PARAMETERS(SingleComplex)) {
    ger_omp<true, SingleComplex>(*threads, *m, *n, *alpha, {x, *incx}, {y, *incy}, {a, *lda});
}
