// The dynamic scheduler of the LU factorization: which thread applies which panels to which block columns, and when
// which of them becomes the next panel. Plain data and functions; who calls them sees to it that one thread at a time
// does.
//
// The matrix is B = `blocks` block columns, counted from 1, of which the first P = `panels` are factored as panels
// here. Block column b needs panels 1 to min(b - 1, P), in this order.
//
// Ownership. Block columns up to S = B - `tail` are dealt out to the threads in groups of `span`, round and round; only
// the owner works on them. Those above S are anybody's, for one panel at a time. `team` is the team that is really
// there, so no group is left without an owner.
//
// Status of block column b:
//   0 .. P       so many panels are applied and nobody works on it; b itself once it is factored (b <= C)
//   negative     a thread holds it, and nobody else reads or writes it: -C if it is applying panels to its own,
//                -level on the way to that level in the tail, -b while it makes b the next panel
//
// What always holds between two calls:
//   - Panels 1 to C = `current` are factored and change no more, but for interchanges when all is done; so any number
//     of threads may read them. Panel 1 is factored before the schedule starts.
//   - Panel C + 1 has at most one thread working on it. It is factored by the same task that applies the last panels
//     to it, so nobody finds C panels applied to block column C + 1 while C < P.
//   - No block column of the tail behind C has fewer than W = `frontier` panels, counting those on their way.
//   - Whoever gets `wait` has work of its own left, or the tail has; some thread holds a block column then, and when it
//     reports, there is something to hand out or nothing left at all.
#pragma once

#include <algorithm>
#include <cstddef>

namespace qrv {

struct GetrfSchedule {
    int team;
    int blocks;
    int panels;
    int span;
    int tail;
    int frontier;
    int current;
    // behind it: int status[blocks]

    int& status(int block) { return reinterpret_cast<int*>(this + 1)[block - 1]; }
    int last_static() const { return std::max(blocks - tail, 0); }
    // Whether a factored panel is still to be applied to it and nobody holds it.
    bool is_ready(int block) { return status(block) >= 0 && status(block) < current; }
};

// Bytes of a schedule for n columns in blocks of nb.
constexpr std::size_t getrf_schedule_bytes(int n, int nb) {
    const auto blocks = static_cast<std::size_t>((n - 1) / nb + 1);
    return sizeof(GetrfSchedule) + blocks * sizeof(int);
}

enum class GetrfTaskKind : int {
    apply = 1,  // apply panels to block columns
    factor = 2, // apply panels to one block column, then factor it as the next panel
    wait = 0,   // nothing available now
    done = -1   // everything is handed out
};

struct GetrfTask {
    GetrfTaskKind kind = GetrfTaskKind::done;
    int firstPanel = 0, lastPanel = 0;
    int firstBlock = 0, lastBlock = 0;
};

} // namespace qrv

extern "C" {

// m x n in block columns of nb < min(m, n); the first panel counts as factored.
void qrv_lapack_getrf_sched_init(qrv::GetrfSchedule* schedule, const int* m, const int* n, const int* nb,
                                 const int* team, const int* span, const int* tail);

// What a thread starts from: `done` if it will never have work; else `wait`, with the block columns that it will begin
// with.
void qrv_lapack_getrf_sched_first(const int* thread, const qrv::GetrfSchedule* schedule, qrv::GetrfTask* task);

// Records that the thread finished *task, and makes it the next one.
void qrv_lapack_getrf_sched_next(const int* thread, qrv::GetrfSchedule* schedule, qrv::GetrfTask* task);

// The panels and the block columns of a task that has some.
void qrv_lapack_getrf_sched_range(const qrv::GetrfTask* task, int* firstPanel, int* lastPanel, int* firstBlock,
                                  int* lastBlock);
}
