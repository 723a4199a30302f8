#include "lapack/kernel/source/cholesky/potrf_schedule.hpp"

#include <new>

namespace qrv {
namespace {

// Calls visit(status) for each tile of a cell, its corner last, and so that of each finer cell in it.
template <class Table, class Visit>
void for_each_tile(Table& table, const PotrfTask& cell, const Visit& visit) {
    for (int j = table.end(cell.j, cell.span) - 1; j >= cell.j; --j)
        for (int i = std::min(table.end(cell.i, cell.span) - 1, j); i >= cell.i; --i)
            visit(table.status(i, j));
}

void set_status(PotrfTable& table, const PotrfTask& cell, int status) {
    for_each_tile(table, cell, [status](std::atomic<int>& tile) { tile.store(status, std::memory_order_release); });
}

bool is_finished(const PotrfTable& table, const PotrfTask& cell) {
    bool finished = true;
    for_each_tile(table, cell, [&finished](int status) { finished = finished && status == 0; });
    return finished;
}

// Whether the tiles that step k of the cell reads are finished. The cell's own may be held by the caller.
bool step_is_ready(const PotrfTable& table, const PotrfTask& cell, int k) {
    if (k == cell.i) // the solve reads the diagonal cell, the factorization nothing
        return cell.i == cell.j || is_finished(table, {cell.i, cell.i, 0, cell.span});
    for (int t = 0; t < cell.span; ++t) {
        if (cell.i + t <= table.tiles && table.status(k, cell.i + t) != 0)
            return false;
        if (cell.j + t <= table.tiles && table.status(k, cell.j + t) != 0)
            return false;
    }
    return true;
}

// Claims the cell of the present grain at (i, j) if nobody holds it and its next step is ready.
bool claim(PotrfTable& table, int i, int j, PotrfTask& task) {
    const int step = table.status(i, j).load(std::memory_order_acquire);
    const PotrfTask cell{i, j, step, table.cell};
    if (step <= 0 || !step_is_ready(table, cell, step))
        return false;
    set_status(table, cell, -step);
    task = cell;
    return true;
}

// The first ready cell of the columns within reach, by columns. Passes finished columns for good.
bool scan(PotrfTable& table, PotrfTask& task) {
    for (int j = table.lowColumn + 1; j <= table.reach; j += table.cell) {
        bool finished = true;
        for (int i = 1; i <= j; i += table.cell) {
            if (claim(table, i, j, task))
                return true;
            finished = finished && table.status(i, j).load(std::memory_order_acquire) == 0;
        }
        if (finished) // and so are those before it, which it needs
            table.lowColumn = table.end(j, table.cell) - 1;
    }
    return false;
}

constexpr int round_down(int x, int unit) {
    return x / unit * unit;
}

// Opens half of the columns that are left, in finer cells.
void widen(PotrfTable& table) {
    table.cell = std::max(table.cell / 2, 1);
    const int growth = std::max(round_down((table.tiles - table.reach) / 2, table.cell), table.cell);
    table.reach = std::min(table.reach + growth, table.tiles);
}

} // namespace
} // namespace qrv

using namespace qrv;

std::int64_t qrv_lapack_potrf_sched_size(const int* tiles) {
    return std::int64_t{*tiles} * (*tiles + 1) / 2 + 6;
}

void qrv_lapack_potrf_sched_init(PotrfTable* table, const int* tiles, const int* threads) {
    int cell = 1;
    while (2 * cell <= *tiles / (*threads + 1))
        cell *= 2;
    const int reach = (*tiles / 2 + cell - 1) / cell * cell;
    new (table) PotrfTable{*tiles, 0, 0, cell, std::min(reach, *tiles), *threads};
    for (std::int64_t k = 0; k < qrv_lapack_potrf_sched_size(tiles) - 6; ++k)
        new (reinterpret_cast<std::atomic<int>*>(table + 1) + k) std::atomic<int>(1);
}

void qrv_lapack_potrf_sched_next(PotrfTable* table, PotrfTask* task) {
    const PotrfTask before = *task;
    *task = {};
    if (before.i > 0) { // the tiles that the thread has in its caches
        if (claim(*table, before.i, before.j, *task))
            return;
        const int next = before.i + before.span;
        if (next <= before.j && claim(*table, next, before.j, *task))
            return;
    }
    if (scan(*table, *task))
        return;
    if (table->reach < table->tiles)
        widen(*table);
    else if (table->lowColumn == table->tiles)
        table->finished.store(1, std::memory_order_release);
}

int qrv_lapack_potrf_sched_depth(const PotrfTable* table, const PotrfTask* task) {
    int k = task->step;
    while (k <= task->i && step_is_ready(*table, *task, k))
        ++k;
    return k - task->step;
}

void qrv_lapack_potrf_sched_release(PotrfTable* table, const PotrfTask* task) {
    set_status(*table, *task, task->step);
}

bool qrv_lapack_potrf_sched_done(const PotrfTable* table) {
    return table->finished.load(std::memory_order_acquire) == 1;
}
