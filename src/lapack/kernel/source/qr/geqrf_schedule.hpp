// The dataflow schedule of the QR factorization: which thread applies which panel to which block columns, and which of
// them becomes the next panel. Plain data and functions; who calls `next` sees to it that one thread at a time does.
//
// The matrix is B = `blocks` block columns, counted from 1, of which the first P = `panels` are factored as panels.
// Block column b needs panels 1 to min(b - 1, P), in this order, each as soon as it is factored: nothing waits for a
// panel to reach all block columns.
//
// progress[b] is the panel that block column b must get next, b itself once it is factored, and -1 while a thread has
// it. What always holds between two calls:
//   - Panels 1 to `ready` are factored and change no more. Panel 1 is factored before the schedule starts. The next one
//     is factored by the job that brings its block column there.
//   - No block column that nobody has needs a panel below `stage`. One that comes back may, and lowers it then.
//   - Who takes a job takes it at `stage`, so no thread runs ahead of the lowest panel that is still wanted.
// `ready` and `stage` are read by jobs without the lock: whoever sees a panel as ready sees it whole.
//
// Why it ends: let p be the lowest panel that any block column still needs, had by a thread or not. It never falls, and
// neither does `stage` below it, as `stage` is lowered only to what some block column needs. Panel p is factored, or
// its own block column would need a lower one; so whoever has a block column that needs p applies it, whatever `stage`
// is meanwhile, and the sum of the panels that are applied grows. A thread waits only while the panel of the stage is
// on its way: its block column is neither free nor factored, so somebody has it. A job may also end with nothing done,
// as `stage` was lowered behind it; then a lower panel is wanted, which is taken first. Nobody waits for a thread that
// has ended: whoever has the last block columns goes on with them himself.
//
// A thread looks for its next job first at the block column that becomes the next panel, then where it was, then among
// those dealt to it in groups, round and round, then anywhere. Groups are taken whole as long as that leaves work for
// all threads.
#pragma once

#include <atomic>
#include <cstddef>
#include <new>

namespace qrv {

struct GeqrfTask {
    int first = 0, count = 0; // block columns
    int panel = 0;            // that they need next
    bool held = false, over = false;

    bool waits() const { return !held && !over; }
    bool ends() const { return over; }
};

struct GeqrfSchedule {
    int team;
    int blocks;
    int panels;
    int group; // block columns that a job takes at most; only shrinks
    std::atomic<int> ready;
    std::atomic<int> stage;
    // behind it: int progress[blocks]

    int& progress(int block) { return reinterpret_cast<int*>(this + 1)[block - 1]; }
};

constexpr std::size_t geqrf_schedule_bytes(int blocks) {
    return sizeof(GeqrfSchedule) + static_cast<std::size_t>(blocks) * sizeof(int);
}

// In so many bytes at `memory`, with panel 1 factored.
GeqrfSchedule* geqrf_schedule(void* memory, int blocks, int panels, int group);

// Records what the thread did, if it had a job, and makes `task` the next one. team > 0.
void geqrf_schedule_next(GeqrfSchedule& schedule, int thread, GeqrfTask& task);

// Whether a job may apply its panel now. Whoever has a job goes on with it as long as it may.
inline bool geqrf_schedule_may_apply(const GeqrfSchedule& s, const GeqrfTask& task) {
    return task.panel < task.first && task.panel <= s.panels && task.panel <= s.ready.load(std::memory_order_acquire) &&
           task.panel <= s.stage.load(std::memory_order_relaxed);
}
// Whether it has brought its first block column to where that is a panel, to be factored before anything else.
inline bool geqrf_schedule_is_panel(const GeqrfSchedule& s, const GeqrfTask& task) {
    return task.panel == task.first && task.first <= s.panels;
}

} // namespace qrv
