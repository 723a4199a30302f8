// Symmetric updates on a team: A := alpha*x*x' + A and A := alpha*x*y' + alpha*y*x' + A.
//
// The triangle is cut into bands of rows (lower) or columns (upper), one for each thread.
#include <omp.h>

#include "blas/blas.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/machine.hpp"
#include "service/options.hpp"

namespace qrv {
namespace {

// Calls whole() on a team of one, band(slice) on the threads of a larger one.
template <class Whole, class Band>
void triangle_region(int threads, char uplo, int n, const Whole& whole, const Band& band) {
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads();
        if (team == 1)
            whole();
        else
            band(syr_band(n, team, omp_get_thread_num(), same_letter(uplo, 'U')));
    }
}

// A band begins at the edge of the triangle, and reads the vectors up to its end: their leading part, which has an
// address of its own if the increment is negative.
struct UpdateBand {
    Slice slice;
    int length;
    float* a;

    UpdateBand(Slice part, char uplo, float* matrix, int lda) : slice(part), length(part.first + part.count) {
        const Matrix<float> all{matrix, lda};
        a = (same_letter(uplo, 'U') ? all.block(0, part.first) : all.block(part.first, 0)).data;
    }
    const float* leading(const float* x, int n, int inc) const { return x + slice_offset({0, length}, n, inc); }
};

} // namespace
} // namespace qrv

using namespace qrv;

void qrv_blas_ssyr(QRV_SYR_PARAMETERS(float)) {
    const int threads = syr_threads(*n, ThisMachine{});
    if (threads > 1)
        qrv_blas_ssyr_omp(&threads, QRV_SYR_ARGUMENTS);
    else
        qrv_blas_ssyr_kernel(QRV_SYR_ARGUMENTS);
}
void qrv_blas_ssyr_omp(const int* threads, QRV_SYR_PARAMETERS(float)) {
    triangle_region(
        *threads, *uplo, *n, [&] { qrv_blas_ssyr_kernel(QRV_SYR_ARGUMENTS); },
        [&](Slice slice) {
            const UpdateBand band(slice, *uplo, a, *lda);
            qrv_blas_ssyr_band_kernel(uplo, &slice.count, &band.length, alpha, band.leading(x, *n, *incx), incx, band.a,
                                      lda);
        });
}

void qrv_blas_ssyr2(QRV_SYR2_PARAMETERS(float)) {
    const int threads = syr_threads(*n, ThisMachine{});
    if (threads > 1)
        qrv_blas_ssyr2_omp(&threads, QRV_SYR2_ARGUMENTS);
    else
        qrv_blas_ssyr2_kernel(QRV_SYR2_ARGUMENTS);
}
void qrv_blas_ssyr2_omp(const int* threads, QRV_SYR2_PARAMETERS(float)) {
    triangle_region(
        *threads, *uplo, *n, [&] { qrv_blas_ssyr2_kernel(QRV_SYR2_ARGUMENTS); },
        [&](Slice slice) {
            const UpdateBand band(slice, *uplo, a, *lda);
            qrv_blas_ssyr2_band_kernel(uplo, &slice.count, &band.length, alpha, band.leading(x, *n, *incx), incx,
                                       band.leading(y, *n, *incy), incy, band.a, lda);
        });
}
