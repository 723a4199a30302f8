// The Cholesky factorization on a team: the triangle is cut into square tiles, and threads take tasks from a schedule
// (potrf_schedule.hpp), which says who owns what and in which order steps are taken.
//
//   factor the leading block   caller; its tiles are finished then
//   tasks                      region: products with finished tiles are taken off a cell, then it is solved with the
//                              factored cell on the diagonal, or is that and gets factored
//
// A task takes as many steps as are ready, up to a limit: one deep product instead of several shallow ones. Threads
// read finished cells only, and write only to the one that they hold. A cell on the diagonal is ready to be factored
// when all before it are, so one thread at a time factors. The schedule belongs to the call and is given back on every
// path out of it.
#include <algorithm>

#include "blas/calls.hpp"
#include "blas/complex.hpp"
#include "lapack/elements.hpp"
#include "lapack/kernel/source/cholesky/potrf.hpp"
#include "lapack/kernel/source/cholesky/potrf_schedule.hpp"
#include "lapack/task_team.hpp"
#include "service/work_pool.hpp"

namespace qrv::lapack {
namespace {

template <class T>
struct TiledMatrix {
    Uplo uplo;
    int n, nb;
    int steps; // a task takes at most
    Matrix<T> a;
    PotrfTable* table;
    FactorResult result{}; // of the diagonal; at most one thread factors there

    // Rows or columns of `tiles` tiles from `tile` on, counted from 1.
    int first(int tile) const { return (tile - 1) * nb; }
    int length(int tile, int tiles) const {
        return static_cast<int>(std::min(std::int64_t{tiles} * nb, std::int64_t{n} - first(tile)));
    }
    // The block of tile (i, j): of U where it stands, of L across the diagonal.
    Matrix<T> block(int i, int j) const {
        return uplo == Uplo::upper ? a.block(first(i), first(j)) : a.block(first(j), first(i));
    }
    bool upper() const { return uplo == Uplo::upper; }
};

// `steps` steps of the task, off its cell.
template <class T>
void subtract_products(const TiledMatrix<T>& x, const PotrfTask& task, int steps) {
    const int k = task.step, depth = steps * x.nb;
    const int height = x.length(task.i, task.span), width = x.length(task.j, task.span);
    const Matrix<T> cell = x.block(task.i, task.j), left = x.block(k, task.i), right = x.block(k, task.j);
    const T one = scalar<T>(1), minusOne = scalar<T>(-1);
    if (task.i == task.j)
        blas::rank_k(x.uplo, x.upper() ? adjoint<T> : Op::none, height, depth, -1, left, 1, cell);
    else if (x.upper())
        blas::gemm(adjoint<T>, Op::none, height, width, depth, minusOne, left, right, one, cell);
    else
        blas::gemm(Op::none, adjoint<T>, width, height, depth, minusOne, right, left, one, cell);
}

// Result: whether there is anything to go on with.
template <class T>
bool factor_diagonal(TiledMatrix<T>& x, PotrfTask& task, int thread) {
    const int offset = x.first(task.i);
    x.result = potrf_serial(x.uplo, x.length(task.i, task.span), x.block(task.i, task.i), {thread, offset});
    if (x.result.info > 0)
        x.result.info += offset;
    if (x.result.info > 0 || x.result.stopped)
        return false;
    task.step = 0;
    return true;
}

template <class T>
void solve(const TiledMatrix<T>& x, PotrfTask& task) {
    const int height = x.length(task.i, task.span), width = x.length(task.j, task.span);
    const Matrix<T> cell = x.block(task.i, task.j), diagonal = x.block(task.i, task.i);
    if (x.upper())
        blas::trsm(Side::left, x.uplo, adjoint<T>, Diag::nonUnit, height, width, scalar<T>(1), diagonal, cell);
    else
        blas::trsm(Side::right, x.uplo, adjoint<T>, Diag::nonUnit, width, height, scalar<T>(1), diagonal, cell);
    task.step = 0;
}

// As many steps of the task as are ready, within the limit; its step goes on with them, to 0 after the last one.
// Result: false once a block turns out not to be positive definite, and on a stop.
template <class T>
bool perform(TiledMatrix<T>& x, PotrfTask& task, int thread) {
    const int ready = qrv_lapack_potrf_sched_depth(x.table, &task), products = std::min(ready, task.i - task.step);
    if (const int steps = std::min(products, x.steps); steps > 0) {
        subtract_products(x, task, steps);
        task.step += steps;
    }
    if (task.step < task.i || ready == products)
        return true;
    if (task.i == task.j)
        return factor_diagonal(x, task, thread);
    solve(x, task);
    return true;
}

// What a TaskTeam does with the schedule.
template <class T>
struct TileJob {
    struct Task : PotrfTask {
        bool done = false; // all tiles are finished
        bool waits() const { return i < 0 && !done; }
        bool ends() const { return done; }
    };
    TiledMatrix<T>& x;

    void begin(int) {}
    Task first(int) const { return {}; }
    void next(int, Task& task) const {
        qrv_lapack_potrf_sched_next(x.table, &task);
        task.done = qrv_lapack_potrf_sched_done(x.table);
    }
    bool perform(Task& task, int thread) const {
        if (!lapack::perform(x, task, thread))
            return false; // a cell that failed stays held: nobody may factor what is left of it
        qrv_lapack_potrf_sched_release(x.table, &task);
        return true;
    }
};

// Tiles of the leading cell, which is factored.
void finish_leading_cell(PotrfTable& table) {
    const PotrfTask leading{1, 1, 0, table.cell};
    qrv_lapack_potrf_sched_release(&table, &leading);
}

template <class T>
FactorResult factor(TiledMatrix<T>& x, int threads, PotrfGrain grain) {
    PotrfTable& table = *x.table;
    table.cell = first_span(table.cell, grain);
    x.steps = std::max(x.steps / table.cell, 1) * table.cell;
    const FactorResult leading = potrf_any(x.uplo, x.length(1, table.cell), x.a);
    if (leading.info != 0 || leading.stopped)
        return leading;
    finish_leading_cell(table);
    TileJob<T> job{x};
    TaskTeam(job).run(threads);
    return x.result;
}

} // namespace

template <class T>
FactorResult potrf_tiles(int threads, PotrfGrain grain, Uplo uplo, int n, Matrix<T> a) {
    const int tiles = (n - 1) / grain.tile + 1;
    const auto words = static_cast<std::size_t>(qrv_lapack_potrf_sched_size(&tiles));
    void* const block = qrv_serv_allocate(words * sizeof(std::int32_t), 128);
    if (!block)
        return potrf_serial(uplo, n, a, {});
    TiledMatrix<T> x{uplo, n, grain.tile, grain.steps, a, static_cast<PotrfTable*>(block)};
    qrv_lapack_potrf_sched_init(x.table, &tiles, &threads);
    const FactorResult result = factor(x, threads, grain);
    qrv_serv_deallocate(block);
    return result;
}

template FactorResult potrf_tiles(int, PotrfGrain, Uplo, int, Matrix<float>);
template FactorResult potrf_tiles(int, PotrfGrain, Uplo, int, Matrix<SingleComplex>);

} // namespace qrv::lapack
