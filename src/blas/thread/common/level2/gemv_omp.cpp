// General matrix times vector on a team: y := alpha*op(A)*x + beta*y.
//
// Every thread computes its own slice of y with one call of the serial kernel, from a band of rows of A (option N) or
// of columns (the others). So nothing is summed across threads and nothing is waited for.
#include <omp.h>

#include "blas/blas.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/machine.hpp"

namespace qrv {
namespace {

template <class T>
struct GemvFamily;

template <>
struct GemvFamily<float> {
    static constexpr GemvRule rule = sgemvRule;
    static constexpr auto& kernel = qrv_blas_sgemv_kernel;
};
template <>
struct GemvFamily<SingleComplex> {
    static constexpr GemvRule rule = cgemvRule;
    static constexpr auto& kernel = qrv_blas_cgemv_kernel;
};

template <class T>
void gemv_region(int threads, QRV_GEMV_PARAMETERS(T)) {
    const bool byColumns = transposes(*trans);
    const int length = byColumns ? *n : *m; // of y
#pragma omp parallel num_threads(threads)
    {
        const Slice slice = gemv_slice(*trans, *m, *n, omp_get_num_threads(), omp_get_thread_num());
        const Matrix<const T> all{a, *lda};
        const Matrix<const T> band = byColumns ? all.block(0, slice.first) : all.block(slice.first, 0);
        const int rows = byColumns ? *m : slice.count, columns = byColumns ? slice.count : *n;
        GemvFamily<T>::kernel(trans, &rows, &columns, alpha, band.data, lda, x, incx, beta,
                              y + slice_offset(slice, length, *incy), incy);
    }
}

template <class T>
inline void gemv(QRV_GEMV_PARAMETERS(T)) {
    if (*m < 1 || *n < 1)
        return;
    const int threads = gemv_threads(GemvFamily<T>::rule, *trans, *m, *n, ThisMachine{});
    if (threads > 1)
        gemv_region<T>(threads, QRV_GEMV_ARGUMENTS);
    else
        GemvFamily<T>::kernel(QRV_GEMV_ARGUMENTS);
}

} // namespace
} // namespace qrv

using namespace qrv;

void qrv_blas_sgemv(QRV_GEMV_PARAMETERS(float)) {
    gemv<float>(QRV_GEMV_ARGUMENTS);
}
void qrv_blas_cgemv(QRV_GEMV_PARAMETERS(SingleComplex)) {
    gemv<SingleComplex>(QRV_GEMV_ARGUMENTS);
}
void qrv_blas_sgemv_omp(const int* threads, QRV_GEMV_PARAMETERS(float)) {
    gemv_region<float>(*threads, QRV_GEMV_ARGUMENTS);
}
void qrv_blas_cgemv_omp(const int* threads, QRV_GEMV_PARAMETERS(SingleComplex)) {
    gemv_region<SingleComplex>(*threads, QRV_GEMV_ARGUMENTS);
}
