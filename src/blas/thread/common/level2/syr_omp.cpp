// Symmetric updates on a team: A := alpha*x*x' + A and A := alpha*x*y' + alpha*y*x' + A.
//
// The triangle is cut into bands of rows (lower) or columns (upper), one for each thread. Rows of two threads share
// lines of memory; where threads go by work the second update is cut into columns, and the first, which has no kernel
// for these, is left to one thread.
#include <omp.h>

#include "blas/calls.hpp"
#include "blas/native.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/machine.hpp"
#include "blas/thread/common/team_omp.hpp"

namespace qrv {
namespace {

// A band begins at the edge of the triangle, and reads the vectors up to its end: their leading part.
struct UpdateBand {
    int width, length;
    Matrix<float> a;
};

// Calls whole() on a team of one, band(update) on the threads of a larger one.
template <class Whole, class Band>
void triangle_region(int threads, Uplo uplo, int n, Matrix<float> a, const Whole& whole, const Band& band) {
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads();
        if (team == 1) {
            whole();
        } else {
            const Slice part = syr_band(n, team, omp_get_thread_num(), uplo);
            band(UpdateBand{part.count, part.first + part.count,
                            uplo == Uplo::upper ? a.block(0, part.first) : a.block(part.first, 0)});
        }
    }
}

void syr_omp(int threads, Uplo uplo, int n, float alpha, Vector<const float> x, Matrix<float> a) {
    triangle_region(
        threads, uplo, n, a, [&] { kernel::her(uplo, n, alpha, x, a); },
        [&](const UpdateBand& band) {
            kernel::syr_band(uplo, band.width, band.length, alpha, slice_of(x, n, {0, band.length}), band.a);
        });
}

void syr2_omp(int threads, Uplo uplo, int n, float alpha, Vector<const float> x, Vector<const float> y,
              Matrix<float> a) {
    const auto whole = [&] { kernel::her2(uplo, n, alpha, x, y, a); };
    if (goes_by_work(ThisMachine{}))
        return on_team(threads, [&](int team, int thread) {
            if (team == 1)
                return whole();
            const Slice columns = trapezoid(uplo, n, team, thread).columns, rows = rows_of(uplo, n, columns);
            kernel::syr2_strip(uplo, rows.count, columns.count, alpha, slice_of(x, n, rows), slice_of(y, n, rows),
                               a.block(rows.first, rows.first));
        });
    triangle_region(threads, uplo, n, a, whole, [&](const UpdateBand& band) {
        const Slice leading{0, band.length};
        kernel::syr2_band(uplo, band.width, band.length, alpha, slice_of(x, n, leading), slice_of(y, n, leading),
                          band.a);
    });
}

} // namespace

void blas::her(Uplo uplo, int n, float alpha, Vector<const float> x, Matrix<float> a) {
    const int threads = syr_threads(ssyrRule, n, ThisMachine{});
    if (threads > 1)
        syr_omp(threads, uplo, n, alpha, x, a);
    else
        kernel::her(uplo, n, alpha, x, a);
}
void blas::her2(Uplo uplo, int n, float alpha, Vector<const float> x, Vector<const float> y, Matrix<float> a) {
    const int threads = syr_threads(ssyr2Rule, n, ThisMachine{});
    if (threads > 1)
        syr2_omp(threads, uplo, n, alpha, x, y, a);
    else
        kernel::her2(uplo, n, alpha, x, y, a);
}

} // namespace qrv

using namespace qrv;

void qrv_blas_ssyr(QRV_SYR_PARAMETERS(float)) {
    blas::her(uplo_of(*uplo), *n, *alpha, {x, *incx}, {a, *lda});
}
void qrv_blas_ssyr2(QRV_SYR2_PARAMETERS(float)) {
    blas::her2(uplo_of(*uplo), *n, *alpha, {x, *incx}, {y, *incy}, {a, *lda});
}
void qrv_blas_ssyr_omp(const int* threads, QRV_SYR_PARAMETERS(float)) {
    syr_omp(*threads, uplo_of(*uplo), *n, *alpha, {x, *incx}, {a, *lda});
}
void qrv_blas_ssyr2_omp(const int* threads, QRV_SYR2_PARAMETERS(float)) {
    syr2_omp(*threads, uplo_of(*uplo), *n, *alpha, {x, *incx}, {y, *incy}, {a, *lda});
}
