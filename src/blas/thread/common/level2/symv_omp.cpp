// Symmetric matrix times vector on a team: y := alpha*A*x + beta*y.
//
// The stored triangle is cut into square blocks along the diagonal and the rectangles beside them. A thread owns the
// rows of one block: first its diagonal block, which applies beta, then what is stored on either side of it. Each
// rectangle is so read by two threads, once as it is and once transposed, in exchange for no copies of y and no sum
// across threads.
#include <omp.h>

#include "blas/blas.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/machine.hpp"
#include "service/options.hpp"

namespace qrv {
namespace {

struct SymvProblem {
    char uplo;
    int n;
    float alpha;
    Matrix<const float> a;
    int lda;
    const float* x;
    int incx;
    float beta;
    float* y;
    int incy;

    bool upper() const { return same_letter(uplo, 'U'); }
    const float* x_slice(Slice slice) const { return x + slice_offset(slice, n, incx); }
    float* y_slice(Slice slice) const { return y + slice_offset(slice, n, incy); }
};

void diagonal_block(const SymvProblem& p, Slice rows) {
    qrv_blas_ssymv_kernel(&p.uplo, &rows.count, &p.alpha, p.a.block(rows.first, rows.first).data, &p.lda,
                          p.x_slice(rows), &p.incx, &p.beta, p.y_slice(rows), &p.incy);
}

// y(rows) += alpha * A(rows, columns) * x(columns), where the rectangle is stored on the other side of the diagonal if
// `mirrored`.
void add_rectangle(const SymvProblem& p, Slice rows, Slice columns, bool mirrored) {
    const float one = 1;
    if (mirrored)
        qrv_blas_sgemv_kernel("T", &columns.count, &rows.count, &p.alpha, p.a.block(columns.first, rows.first).data,
                              &p.lda, p.x_slice(columns), &p.incx, &one, p.y_slice(rows), &p.incy);
    else
        qrv_blas_sgemv_kernel("N", &rows.count, &columns.count, &p.alpha, p.a.block(rows.first, columns.first).data,
                              &p.lda, p.x_slice(columns), &p.incx, &one, p.y_slice(rows), &p.incy);
}

void symv_region(int threads, const SymvProblem& p) {
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads(), thread = omp_get_thread_num();
        if (team == 1) {
            diagonal_block(p, {0, p.n});
        } else {
            const int blocks = symv_blocks(team);
            // All of y is scaled before anything is added: the loop ends in a barrier.
#pragma omp for schedule(static, 1)
            for (int k = 0; k < blocks; ++k)
                diagonal_block(p, symv_block(p.n, blocks, k).rows);
            if (thread < blocks) {
                const auto [rows, before, after] = symv_block(p.n, blocks, thread);
                if (thread > 0)
                    add_rectangle(p, rows, {0, before}, p.upper());
                if (thread < blocks - 1)
                    add_rectangle(p, rows, {p.n - after, after}, !p.upper());
            }
        }
    }
}

} // namespace
} // namespace qrv

using namespace qrv;

void qrv_blas_ssymv(QRV_SYMV_PARAMETERS(float)) {
    const int threads = symv_threads(*n, ThisMachine{});
    if (threads > 1)
        qrv_blas_ssymv_omp(&threads, QRV_SYMV_ARGUMENTS);
    else
        qrv_blas_ssymv_kernel(QRV_SYMV_ARGUMENTS);
}
void qrv_blas_ssymv_omp(const int* threads, QRV_SYMV_PARAMETERS(float)) {
    symv_region(*threads, {*uplo, *n, *alpha, {a, *lda}, *lda, x, *incx, *beta, y, *incy});
}
