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
// Status of block column b, of whoever holds it or not:
//    x >= 0   so many panels are applied, and nobody works on it; b itself once it is factored
//   -x        a thread holds it on the way to x, and nobody else reads or writes it
//
// What always holds between two calls:
//   - Panels 1 to C = `current` are factored and change no more, but for interchanges when all is done; so any number
//     of threads may read them. Panel 1 is factored before the schedule starts.
//   - Panel C + 1 has at most one thread working on it. It is factored by the same task that applies the last panels
//     to it, so nobody finds C panels applied to block column C + 1 while C < P.
//   - No block column of the tail behind C has fewer than W = `frontier` panels, counting those on their way.
//   - Whoever gets `wait` has work of its own left, or the tail has; some thread holds a block column then, and when it
//     reports, there is something to hand out or nothing left at all.
//
// Six block columns, a team of two, span 1, tail 2 (so 1 to 4 have owners: thread 0 has 3, thread 1 has 2 and 4), and
// threads that come for their next task in turn:
//
//   thread   takes                             C  W    status of 2  3  4  5  6
//                                              1  0              0  0  0  0  0
//   1        factor 2, after panel 1           1  0             -2  0  0  0  0
//   0        apply 1 to 3                      1  0             -2 -1  0  0  0
//   1        apply 1 and 2 to 4                2  0              2 -1 -2  0  0   2 is factored: who has 4 can use it
//   0        factor 3, after panel 2           2  0              2 -3 -2  0  0   before anything in the tail
//   1        apply 1 to 5                      2  0              2 -3  2 -1  0   its own 4 waits for panel 3
//   0        apply 1 to 6                      3  0              2  3  2 -1 -1
//   1        factor 4, after panel 3           3  0              2  3 -4  1 -1
//   0        apply 2 to 5                      3  1              2  3 -4 -2  1   all of the tail has 1, or is behind it
//   1        apply 2 to 6                      4  1              2  3  4 -2 -2
//   0        factor 5, after panels 3 and 4    4  2              2  3  4 -5 -2   the tail may become a panel too
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
    int status(int block) const { return reinterpret_cast<const int*>(this + 1)[block - 1]; }

    // Of a block column that nobody holds: the panels that it has had.
    int applied(int block) const { return status(block); }
    bool has_just(int block, int panelCount) const { return status(block) == panelCount; }
    // Whether a factored panel is still to be applied to it and nobody holds it.
    bool is_ready(int block) const { return status(block) >= 0 && status(block) < current; }
    bool is_on_its_way_to(int block, int level) const { return status(block) == -level; }
    void hold(int block, int target) { status(block) = -target; }
    void release(int block) { status(block) = -status(block); }

    // The last block column that has an owner.
    int last_static() const { return std::max(blocks - tail, 0); }
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

    bool waits() const { return kind == GetrfTaskKind::wait; }
    bool ends() const { return kind == GetrfTaskKind::done; }
    // Of those that the thread holds.
    int last_block() const { return kind == GetrfTaskKind::factor ? firstBlock : lastBlock; }
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
