// Triangular matrix times vector on a team: x := op(A)*x.
//
// The result takes the place of x, of which every thread needs more than its own slice; so x is copied first, in a
// region of its own. Then each thread computes one slice of the result from the copy: the diagonal block of op(A)
// with the rectangle beside it.
#include <omp.h>

#include "blas/blas.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/machine.hpp"
#include "service/options.hpp"
#include "service/work_pool.hpp"

namespace qrv {
namespace {

template <class T>
struct TrmvFamily;

template <>
struct TrmvFamily<float> {
    static constexpr TrmvRule rule = strmvRule;
    static constexpr auto& kernel = qrv_blas_strmv_kernel;
    static constexpr auto& band_kernel = qrv_blas_strmv_band_kernel;
    static constexpr auto& copy = qrv_blas_scopy_kernel;
};
template <>
struct TrmvFamily<SingleComplex> {
    static constexpr TrmvRule rule = ctrmvRule;
    static constexpr auto& kernel = qrv_blas_ctrmv_kernel;
    static constexpr auto& band_kernel = qrv_blas_ctrmv_band_kernel;
    static constexpr auto& copy = qrv_blas_ccopy_kernel;
};

template <class T>
void copy_vector(int threads, int n, const T* x, int incx, T* copy) {
    const int unit = 1;
    if (incx != unit) {
        TrmvFamily<T>::copy(&n, x, &incx, copy, &unit);
        return;
    }
#pragma omp parallel num_threads(threads)
    {
        const Slice slice = equal_slice(n, omp_get_num_threads(), omp_get_thread_num());
        TrmvFamily<T>::copy(&slice.count, x + slice.first, &unit, copy + slice.first, &unit);
    }
}

// One thread's slice of the result.
template <class T>
void multiply_band(const T* copy, int team, int thread, QRV_TRIANGULAR_PARAMETERS(T)) {
    const TriangleBand band = trmv_band(*n, team, thread, same_letter(*uplo, 'U'), *trans);
    const int along = band.slice.first, across = band.first;
    const Matrix<const T> all{a, *lda};
    const T* const start = (transposes(*trans) ? all.block(across, along) : all.block(along, across)).data;
    TrmvFamily<T>::band_kernel(uplo, trans, diag, &band.slice.count, &band.length, start, lda, copy + across,
                               x + slice_offset(band.slice, *n, *incx), incx);
}

template <class T>
void trmv_region(int threads, QRV_TRIANGULAR_PARAMETERS(T)) {
    if (*n < 1)
        return;
    T* const copy = static_cast<T*>(qrv_serv_allocate(static_cast<std::size_t>(*n) * sizeof(T), 128));
    if (!copy) // the serial kernel needs no memory
        return TrmvFamily<T>::kernel(QRV_TRIANGULAR_ARGUMENTS);
    copy_vector(threads, *n, x, *incx, copy);
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads();
        if (team == 1)
            TrmvFamily<T>::kernel(QRV_TRIANGULAR_ARGUMENTS);
        else
            multiply_band<T>(copy, team, omp_get_thread_num(), QRV_TRIANGULAR_ARGUMENTS);
    }
    qrv_serv_deallocate(copy);
}

template <class T>
inline void trmv(QRV_TRIANGULAR_PARAMETERS(T)) {
    const int threads = trmv_threads(TrmvFamily<T>::rule, *n, ThisMachine{});
    if (threads > 1)
        trmv_region<T>(threads, QRV_TRIANGULAR_ARGUMENTS);
    else
        TrmvFamily<T>::kernel(QRV_TRIANGULAR_ARGUMENTS);
}

} // namespace
} // namespace qrv

using namespace qrv;

void qrv_blas_strmv(QRV_TRIANGULAR_PARAMETERS(float)) {
    trmv<float>(QRV_TRIANGULAR_ARGUMENTS);
}
void qrv_blas_ctrmv(QRV_TRIANGULAR_PARAMETERS(SingleComplex)) {
    trmv<SingleComplex>(QRV_TRIANGULAR_ARGUMENTS);
}
void qrv_blas_strmv_omp(const int* threads, QRV_TRIANGULAR_PARAMETERS(float)) {
    trmv_region<float>(*threads, QRV_TRIANGULAR_ARGUMENTS);
}
void qrv_blas_ctrmv_omp(const int* threads, QRV_TRIANGULAR_PARAMETERS(SingleComplex)) {
    trmv_region<SingleComplex>(*threads, QRV_TRIANGULAR_ARGUMENTS);
}
