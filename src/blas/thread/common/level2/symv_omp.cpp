// Symmetric or Hermitian matrix times vector on a team: y := alpha*A*x + beta*y.
//
// The stored triangle is cut into square blocks along the diagonal and the rectangles beside them. A thread owns the
// rows of one block: first its diagonal block, which applies beta, then what is stored on either side of it. Each
// rectangle is so read by two threads, once as it is and once transposed, in exchange for no copies of y and no sum
// across threads. Where threads go by work a matrix is larger, and is read once instead, as all Hermitian ones are.
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
struct SymvCall {
    Uplo uplo;
    int n;
    T alpha;
    Matrix<const T> a;
    Vector<const T> x;
    T beta;
    Vector<T> y;

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

// By work, a thread reads its columns once, for both halves, and its result is a vector of its own but for the thread
// that has the longest column: it adds to y. The others are added to that in the order of the threads.
template <class T>
void symv_by_columns(int threads, const SymvCall<T>& call) {
    const auto whole = [&] { kernel::hemv(call.uplo, call.n, call.alpha, call.a, call.x, call.beta, call.y); };
    const auto length = static_cast<std::size_t>(call.n);
    T* results = nullptr;
    if (call.alpha != scalar<T>(0) && threads > 1)
        results = static_cast<T*>(qrv_serv_allocate((static_cast<std::size_t>(threads) - 1) * length * sizeof(T), 128));
    if (!results)
        return whole();
    const bool upper = call.uplo == Uplo::upper;
    const auto result_of = [=](int thread) {
        return results + static_cast<std::size_t>(upper ? thread : thread - 1) * length;
    };
    int size = 1;
    on_team(threads, [&](int team, int thread) {
        if (team == 1)
            return whole();
        const Slice columns = trapezoid(call.uplo, call.n, team, thread).columns,
                    rows = rows_of(call.uplo, call.n, columns);
        const bool addsToY = thread == (upper ? team - 1 : 0);
        kernel::hemv_strip(call.uplo, rows.count, columns.count, call.alpha, call.a.block(rows.first, rows.first),
                           slice_of(call.x, call.n, rows), addsToY ? call.beta : scalar<T>(0),
                           addsToY ? call.y : Vector<T>{result_of(thread), 1});
        if (thread == 0)
            size = team;
    });
    for (int thread = upper ? 0 : 1; size > 1 && thread < (upper ? size - 1 : size); ++thread) {
        const Slice rows = rows_of(call.uplo, call.n, trapezoid(call.uplo, call.n, size, thread).columns);
        kernel::axpy(rows.count, scalar<T>(1), Vector<const T>{result_of(thread), 1}, slice_of(call.y, call.n, rows));
    }
    qrv_serv_deallocate(results);
}

void symv_by_blocks(int threads, const SymvCall<float>& call) {
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

template <class T>
void symv_omp(int threads, const SymvCall<T>& call) {
    if constexpr (!isComplex<T>)
        if (!goes_by_work(ThisMachine{}))
            return symv_by_blocks(threads, call);
    symv_by_columns(threads, call);
}

} // namespace

template <class T>
void blas::hemv(Uplo uplo, int n, Scalar<T> alpha, MatrixIn<T> a, VectorIn<T> x, Scalar<T> beta, Vector<T> y) {
    const int threads = symv_threads(row_for<T>(ssymvRule, chemvRule), n, ThisMachine{});
    if (threads > 1)
        symv_omp<T>(threads, {uplo, n, alpha, a, x, beta, y});
    else
        kernel::hemv(uplo, n, alpha, a, x, beta, y);
}

template void blas::hemv(Uplo, int, float, Matrix<const float>, Vector<const float>, float, Vector<float>);
template void blas::hemv(Uplo, int, SingleComplex, Matrix<const SingleComplex>, Vector<const SingleComplex>,
                         SingleComplex, Vector<SingleComplex>);

} // namespace qrv

using namespace qrv;

void qrv_blas_ssymv(QRV_SYMV_PARAMETERS(float)) {
    blas::hemv<float>(uplo_of(*uplo), *n, *alpha, {a, *lda}, {x, *incx}, *beta, {y, *incy});
}
void qrv_blas_chemv(QRV_SYMV_PARAMETERS(SingleComplex)) {
    blas::hemv<SingleComplex>(uplo_of(*uplo), *n, *alpha, {a, *lda}, {x, *incx}, *beta, {y, *incy});
}
void qrv_blas_ssymv_omp(const int* threads, QRV_SYMV_PARAMETERS(float)) {
    symv_omp<float>(*threads, {uplo_of(*uplo), *n, *alpha, {a, *lda}, {x, *incx}, *beta, {y, *incy}});
}
void qrv_blas_chemv_omp(const int* threads, QRV_SYMV_PARAMETERS(SingleComplex)) {
    symv_omp<SingleComplex>(*threads, {uplo_of(*uplo), *n, *alpha, {a, *lda}, {x, *incx}, *beta, {y, *incy}});
}
