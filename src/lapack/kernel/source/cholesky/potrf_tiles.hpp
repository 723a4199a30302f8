// The tasks of a tiled Cholesky factorization: what a team does with the tiles that a schedule (potrf_schedule.hpp)
// hands out. Products with finished tiles are taken off a cell, then it is solved with the factored cell on the
// diagonal, or is that and gets factored.
//
// A task takes as many steps as are ready, up to a limit: one deep product instead of several shallow ones. Threads
// read finished cells only, and write only to the one that they hold. A cell on the diagonal is ready to be factored
// when all before it are, so one thread at a time factors.
//
// Where columns of the triangle share sets of the caches (goes_aside in potrf_route.hpp), all this is done in a copy: a
// cell is copied by the first task on it, and goes back with its last one.
#pragma once

#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/elements.hpp"
#include "lapack/kernel/source/cholesky/potrf.hpp"
#include "lapack/kernel/source/cholesky/potrf_schedule.hpp"

namespace qrv::lapack {

// The job of a TaskTeam.
template <class T>
struct TiledMatrix {
    struct Task : PotrfTask {
        bool done = false; // all tiles are finished
        bool waits() const { return i < 0 && !done; }
        bool ends() const { return done; }
    };

    Uplo uplo;
    int n, nb;
    int steps; // a task takes at most
    Matrix<T> a;
    PotrfTable* table;
    Matrix<T> home{};      // the triangle, if `a` is a copy
    FactorResult result{}; // of the diagonal; at most one thread factors there

    void begin(int) {}
    Task first(int) const { return {}; }
    void next(int, Task& task) const {
        qrv_lapack_potrf_sched_next(table, &task);
        task.done = qrv_lapack_potrf_sched_done(table);
    }
    bool perform(Task& task, int thread) {
        if (task.step == 1)
            copy(task, home, a);
        const bool goesOn = take_steps(task, thread);
        if (task.step == 0 || !goesOn)
            copy(task, a, home);
        if (!goesOn)
            return false; // a cell that failed stays held: nobody may factor what is left of it
        qrv_lapack_potrf_sched_release(table, &task);
        return true;
    }

    // Rows or columns of `tiles` tiles from `tile` on, counted from 1.
    int first_of(int tile) const { return (tile - 1) * nb; }
    int length(int tile, int tiles) const {
        return static_cast<int>(std::min(std::int64_t{tiles} * nb, std::int64_t{n} - first_of(tile)));
    }
    // The block of tile (i, j): of U where it stands, of L across the diagonal.
    Matrix<T> block(int i, int j) const { return block_of(a, i, j); }

    // Brings a cell over, if there is a copy.
    void copy(const PotrfTask& cell, Matrix<T> from, Matrix<T> to) const {
        if (!home.data)
            return;
        const int height = length(cell.i, cell.span), width = length(cell.j, cell.span);
        const Part part = cell.i < cell.j ? Part::whole : upper() ? Part::upper : Part::lower;
        lacpy<T>(part, upper() ? height : width, upper() ? width : height, block_of(from, cell.i, cell.j),
                 block_of(to, cell.i, cell.j));
    }

private:
    bool upper() const { return uplo == Uplo::upper; }
    Matrix<T> block_of(Matrix<T> x, int i, int j) const {
        return upper() ? x.block(first_of(i), first_of(j)) : x.block(first_of(j), first_of(i));
    }

    // As many steps of the task as are ready, within the limit; its step goes on with them, to 0 after the last one.
    // Result: false once a block turns out not to be positive definite, and on a stop.
    bool take_steps(PotrfTask& task, int thread) {
        const int ready = qrv_lapack_potrf_sched_depth(table, &task), products = std::min(ready, task.i - task.step);
        if (const int count = std::min(products, steps); count > 0) {
            subtract_products(task, count);
            task.step += count;
        }
        if (task.step < task.i || ready == products)
            return true;
        if (task.i == task.j)
            return factor_diagonal(task, thread);
        solve(task);
        return true;
    }

    // `count` steps of the task, off its cell.
    void subtract_products(const PotrfTask& task, int count) const {
        const int k = task.step, depth = count * nb;
        const int height = length(task.i, task.span), width = length(task.j, task.span);
        const Matrix<T> cell = block(task.i, task.j), left = block(k, task.i), right = block(k, task.j);
        const T one = scalar<T>(1), minusOne = scalar<T>(-1);
        if (task.i == task.j)
            blas::rank_k(uplo, upper() ? adjoint<T> : Op::none, height, depth, -1, left, 1, cell);
        else if (upper())
            blas::gemm(adjoint<T>, Op::none, height, width, depth, minusOne, left, right, one, cell);
        else
            blas::gemm(Op::none, adjoint<T>, width, height, depth, minusOne, right, left, one, cell);
    }

    // Result: whether there is anything to go on with.
    bool factor_diagonal(PotrfTask& task, int thread) {
        const int offset = first_of(task.i);
        result = potrf_serial(uplo, length(task.i, task.span), block(task.i, task.i), {thread, offset});
        if (result.info > 0)
            result.info += offset;
        if (result.info > 0 || result.stopped)
            return false;
        task.step = 0;
        return true;
    }

    void solve(PotrfTask& task) const {
        const int height = length(task.i, task.span), width = length(task.j, task.span);
        const Matrix<T> cell = block(task.i, task.j), diagonal = block(task.i, task.i);
        if (upper())
            blas::trsm(Side::left, uplo, adjoint<T>, Diag::nonUnit, height, width, scalar<T>(1), diagonal, cell);
        else
            blas::trsm(Side::right, uplo, adjoint<T>, Diag::nonUnit, width, height, scalar<T>(1), diagonal, cell);
        task.step = 0;
    }
};

} // namespace qrv::lapack
