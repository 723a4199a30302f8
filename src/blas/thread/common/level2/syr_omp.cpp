// Symmetric and Hermitian updates on a team: A := alpha*x*x' + A and A := alpha*x*y' + conj(alpha)*y*x' + A.
//
// The triangle is cut into bands of rows (lower) or columns (upper), one for each thread. Rows of two threads share
// lines of memory: where threads go by work it is cut into columns.
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

template <class T, class Whole, class Strip>
void by_strips(int threads, Uplo uplo, int n, Matrix<T> a, const Whole& whole, const Strip& strip) {
    on_team(threads, [&](int team, int thread) {
        if (team == 1)
            return whole();
        const Slice columns = trapezoid(uplo, n, team, thread).columns, rows = rows_of(uplo, n, columns);
        strip(rows, columns.count, a.block(rows.first, rows.first));
    });
}
template <class T>
bool goes_by_strips() {
    return isComplex<T> || goes_by_work(ThisMachine{});
}

template <class T>
void syr_omp(int threads, Uplo uplo, int n, float alpha, Vector<const T> x, Matrix<T> a) {
    const auto whole = [&] { kernel::her(uplo, n, alpha, x, a); };
    if (goes_by_strips<T>())
        return by_strips(threads, uplo, n, a, whole, [&](Slice rows, int columns, Matrix<T> block) {
            kernel::her_strip(uplo, rows.count, columns, alpha, slice_of(x, n, rows), block);
        });
    if constexpr (!isComplex<T>)
        triangle_region(threads, uplo, n, a, whole, [&](const UpdateBand& band) {
            kernel::syr_band(uplo, band.width, band.length, alpha, slice_of(x, n, {0, band.length}), band.a);
        });
}

template <class T>
void syr2_omp(int threads, Uplo uplo, int n, T alpha, Vector<const T> x, Vector<const T> y, Matrix<T> a) {
    const auto whole = [&] { kernel::her2(uplo, n, alpha, x, y, a); };
    if (goes_by_strips<T>())
        return by_strips(threads, uplo, n, a, whole, [&](Slice rows, int columns, Matrix<T> block) {
            kernel::her2_strip(uplo, rows.count, columns, alpha, slice_of(x, n, rows), slice_of(y, n, rows), block);
        });
    if constexpr (!isComplex<T>)
        triangle_region(threads, uplo, n, a, whole, [&](const UpdateBand& band) {
            const Slice leading{0, band.length};
            kernel::syr2_band(uplo, band.width, band.length, alpha, slice_of(x, n, leading), slice_of(y, n, leading),
                              band.a);
        });
}

} // namespace

template <class T>
void blas::her(Uplo uplo, int n, float alpha, VectorIn<T> x, Matrix<T> a) {
    const int threads = syr_threads(row_for<T>(ssyrRule, cherRule), n, ThisMachine{});
    if (threads > 1)
        syr_omp(threads, uplo, n, alpha, x, a);
    else
        kernel::her(uplo, n, alpha, x, a);
}
template <class T>
void blas::her2(Uplo uplo, int n, Scalar<T> alpha, VectorIn<T> x, VectorIn<T> y, Matrix<T> a) {
    const int threads = syr_threads(row_for<T>(ssyr2Rule, cher2Rule), n, ThisMachine{});
    if (threads > 1)
        syr2_omp(threads, uplo, n, alpha, x, y, a);
    else
        kernel::her2(uplo, n, alpha, x, y, a);
}

template void blas::her(Uplo, int, float, Vector<const float>, Matrix<float>);
template void blas::her(Uplo, int, float, Vector<const SingleComplex>, Matrix<SingleComplex>);
template void blas::her2(Uplo, int, float, Vector<const float>, Vector<const float>, Matrix<float>);
template void blas::her2(Uplo, int, SingleComplex, Vector<const SingleComplex>, Vector<const SingleComplex>,
                         Matrix<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_ssyr(QRV_SYR_PARAMETERS(float)) {
    blas::her<float>(uplo_of(*uplo), *n, *alpha, {x, *incx}, {a, *lda});
}
void qrv_blas_ssyr2(QRV_SYR2_PARAMETERS(float)) {
    blas::her2<float>(uplo_of(*uplo), *n, *alpha, {x, *incx}, {y, *incy}, {a, *lda});
}
void qrv_blas_ssyr_omp(const int* threads, QRV_SYR_PARAMETERS(float)) {
    syr_omp<float>(*threads, uplo_of(*uplo), *n, *alpha, {x, *incx}, {a, *lda});
}
void qrv_blas_ssyr2_omp(const int* threads, QRV_SYR2_PARAMETERS(float)) {
    syr2_omp<float>(*threads, uplo_of(*uplo), *n, *alpha, {x, *incx}, {y, *incy}, {a, *lda});
}
void qrv_blas_cher(QRV_SYR_PARAMETERS(SingleComplex)) {
    blas::her<SingleComplex>(uplo_of(*uplo), *n, *alpha, {x, *incx}, {a, *lda});
}
void qrv_blas_cher2(QRV_SYR2_PARAMETERS(SingleComplex)) {
    blas::her2<SingleComplex>(uplo_of(*uplo), *n, *alpha, {x, *incx}, {y, *incy}, {a, *lda});
}
void qrv_blas_cher_omp(const int* threads, QRV_SYR_PARAMETERS(SingleComplex)) {
    syr_omp<SingleComplex>(*threads, uplo_of(*uplo), *n, *alpha, {x, *incx}, {a, *lda});
}
void qrv_blas_cher2_omp(const int* threads, QRV_SYR2_PARAMETERS(SingleComplex)) {
    syr2_omp<SingleComplex>(*threads, uplo_of(*uplo), *n, *alpha, {x, *incx}, {y, *incy}, {a, *lda});
}
