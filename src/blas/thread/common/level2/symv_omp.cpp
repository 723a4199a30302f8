// Symmetric matrix times vector on a team: y := alpha*A*x + beta*y.
//
// The stored triangle is cut into square blocks along the diagonal and the rectangles beside them. A thread owns the
// rows of one block: first its diagonal block, which applies beta, then what is stored on either side of it. Each
// rectangle is so read by two threads, once as it is and once transposed, in exchange for no copies of y and no sum
// across threads.
#include <omp.h>

#include "blas/calls.hpp"
#include "blas/native.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/machine.hpp"

namespace qrv {
namespace {

struct SymvCall {
    Uplo uplo;
    int n;
    float alpha;
    Matrix<const float> a;
    Vector<const float> x;
    float beta;
    Vector<float> y;

    void diagonal_block(Slice rows) const {
        kernel::hemv(uplo, rows.count, alpha, a.block(rows.first, rows.first), slice_of(x, n, rows), beta,
                     slice_of(y, n, rows));
    }
    // y(rows) += alpha * A(rows, columns) * x(columns)
    void add_rectangle(Slice rows, Slice columns) const {
        const bool stored = (uplo == Uplo::lower) == (columns.first < rows.first); // or else its mirror image is
        if (stored)
            kernel::gemv(Op::none, rows.count, columns.count, alpha, a.block(rows.first, columns.first),
                         slice_of(x, n, columns), 1, slice_of(y, n, rows));
        else
            kernel::gemv(Op::transpose, columns.count, rows.count, alpha, a.block(columns.first, rows.first),
                         slice_of(x, n, columns), 1, slice_of(y, n, rows));
    }
};

void symv_omp(int threads, const SymvCall& call) {
    const int n = call.n;
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads(), thread = omp_get_thread_num();
        if (team == 1) {
            call.diagonal_block({0, n});
        } else {
            const int blocks = symv_blocks(team);
            // All of y is scaled before anything is added: the loop ends in a barrier.
#pragma omp for schedule(static, 1)
            for (int k = 0; k < blocks; ++k)
                call.diagonal_block(symv_block(n, blocks, k).rows);
            if (thread < blocks) {
                const auto [rows, before, after] = symv_block(n, blocks, thread);
                if (thread > 0)
                    call.add_rectangle(rows, {0, before});
                if (thread < blocks - 1)
                    call.add_rectangle(rows, {n - after, after});
            }
        }
    }
}

} // namespace

void blas::hemv(Uplo uplo, int n, float alpha, Matrix<const float> a, Vector<const float> x, float beta,
                Vector<float> y) {
    const int threads = symv_threads(ssymvRule, n, ThisMachine{});
    if (threads > 1)
        symv_omp(threads, {uplo, n, alpha, a, x, beta, y});
    else
        kernel::hemv(uplo, n, alpha, a, x, beta, y);
}

} // namespace qrv

using namespace qrv;

void qrv_blas_ssymv(QRV_SYMV_PARAMETERS(float)) {
    blas::hemv(uplo_of(*uplo), *n, *alpha, {a, *lda}, {x, *incx}, *beta, {y, *incy});
}
void qrv_blas_ssymv_omp(const int* threads, QRV_SYMV_PARAMETERS(float)) {
    symv_omp(*threads, {uplo_of(*uplo), *n, *alpha, {a, *lda}, {x, *incx}, *beta, {y, *incy}});
}
