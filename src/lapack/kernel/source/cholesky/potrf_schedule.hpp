// The scheduler of the tiled Cholesky factorization: which thread works on which tiles, and for how many steps. Plain
// data and functions; who calls them sees to it that one thread at a time takes a task.
//
// The stored triangle is cut into T tile columns, counted from 1. Tile (i, j), i <= j, is that of U; of L it is the
// tile at block row j and block column i. It goes through the steps 1 to i: step k < i takes the product of tiles
// (k, i) and (k, j) off it, step i is the solve with tile (i, i) or, on the diagonal, its factorization.
//
// Tasks are on cells: squares of `span` x `span` tiles (on the diagonal, triangles; at the right and lower edge, what
// there is) whose corner lies on the grid of their span. All tiles of a cell have the same status. The grain `cell` is
// the span of new tasks. It is a power of two and only ever halves, so tasks on coarser cells that are still under way
// lie on the grid too, and tiles that were finished together still are.
//
// Status of a tile:
//   0          finished: it changes no more, so any number of threads may read it
//   k > 0      step k is its next one, and nobody works on it
//   negative   a thread holds it at step -status, and nobody else reads or writes it
//
// What always holds between two calls:
//   - Columns up to `lowColumn` are finished; no tile of a column above `reach` was ever handed out.
//   - Of the unfinished tiles that nobody holds, the first in the first unfinished column is ready. So if nothing is
//     ready within reach, some thread holds a tile there, or the reach can grow.
//   - A status is written with release and read with acquire: who finds a tile finished, or takes it over, sees what
//     was written to it.
//   - A cell is given back without a lock, while other threads take tasks. Its corner goes last, as does that of each
//     finer cell in it: who looks at a corner finds the whole cell given back.
//
// So it comes to an end. Each task takes its cell on by a step at least, and there are so many steps; the reach grows
// so many times. A thread that finds nothing waits only while the first unfinished tile of the first unfinished column,
// which would be ready, is held; its holder waits for nobody, and ends its task or, where its cell fails, the team.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace qrv {

struct PotrfTable {
    int tiles; // T
    std::atomic<int> finished;
    int lowColumn;
    int cell;
    int reach;
    int threads; // asked for
    // behind it: std::atomic<int> status[T * (T + 1) / 2], by columns

    std::atomic<int>& status(int i, int j) {
        return reinterpret_cast<std::atomic<int>*>(this + 1)[std::ptrdiff_t{j} * (j - 1) / 2 + i - 1];
    }
    int status(int i, int j) const {
        return const_cast<PotrfTable*>(this)->status(i, j).load(std::memory_order_acquire);
    }
    // One past the last tile of a cell in one direction.
    int end(int first, int span) const { return std::min(first + span, tiles + 1); }
};
static_assert(sizeof(PotrfTable) == 6 * sizeof(std::int32_t) && sizeof(std::atomic<int>) == sizeof(std::int32_t));

struct PotrfTask {
    int i = -1, j = -1; // corner of the cell; -1: no task
    int step = 0;       // next one of its tiles; 0 once they are finished
    int span = 0;
};

} // namespace qrv

extern "C" {

// Words of a table, each of 4 bytes.
std::int64_t qrv_lapack_potrf_sched_size(const int* tiles);

// All tiles at step 1, and the grain for so many threads.
void qrv_lapack_potrf_sched_init(qrv::PotrfTable* table, const int* tiles, const int* threads);

// Gives a thread its next task, which may be to hold the one again that it has just released; *task is that.
void qrv_lapack_potrf_sched_next(qrv::PotrfTable* table, qrv::PotrfTask* task);

// Steps from task->step on, up to the last one, for which all that they read is finished. A cell whose span is coarser
// than the diagonal cell that it waits for has not got its last one until all of that is finished.
int qrv_lapack_potrf_sched_depth(const qrv::PotrfTable* table, const qrv::PotrfTask* task);

// Gives the cell back at task->step.
void qrv_lapack_potrf_sched_release(qrv::PotrfTable* table, const qrv::PotrfTask* task);

// Whether all tiles are finished.
bool qrv_lapack_potrf_sched_done(const qrv::PotrfTable* table);
}
