#include "lapack/kernel/source/lu/getrf_schedule.hpp"

namespace qrv {
namespace {

using Kind = GetrfTaskKind;

void record(GetrfSchedule& s, const GetrfTask& task) {
    if (task.kind == Kind::factor)
        s.current = task.firstBlock;
    if (!task.waits() && !task.ends())
        for (int block = task.firstBlock; block <= task.last_block(); ++block)
            s.release(block);
}

// The block column behind the last factored panel, to be the next one.
GetrfTask next_panel(GetrfSchedule& s) {
    const int block = s.current + 1, applied = s.applied(block);
    s.hold(block, block);
    return {Kind::factor, applied + 1, s.current, block, block};
}

// All panels that the first ready block column lacks, to it and those behind it that lack the same ones: one task
// instead of several. `wait` if none is ready.
GetrfTask widest_run(GetrfSchedule& s, int first, int last) {
    while (first <= last && !s.is_ready(first))
        ++first;
    if (first > last)
        return {Kind::wait};
    const int applied = s.applied(first);
    int end = first;
    for (; end <= last && s.has_just(end, applied); ++end)
        s.hold(end, s.current);
    return {Kind::apply, applied + 1, s.current, first, end - 1};
}

bool any_unfinished(const GetrfSchedule& s, int first, int last) {
    for (int block = first; block <= last; ++block)
        if (!s.has_just(block, s.panels))
            return true;
    return false;
}

// A task in the groups of the thread; `wait` if there is none but will be, else `done`.
GetrfTask own_task(GetrfSchedule& s, int thread) {
    GetrfTask outcome{Kind::done};
    const int lastStatic = s.last_static();
    if (s.current >= lastStatic)
        return outcome;
    for (int start = thread * s.span + 1; start <= lastStatic; start += s.team * s.span) {
        const int first = std::max(start, s.current + 1), last = std::min(start + s.span - 1, lastStatic);
        if (first > last)
            continue;
        if (first == s.current + 1 && s.current < s.panels && s.is_ready(first))
            return next_panel(s);
        if (const GetrfTask run = widest_run(s, first, last); run.kind == Kind::apply)
            return run;
        if (any_unfinished(s, first, last))
            outcome.kind = Kind::wait;
    }
    return outcome;
}

// A block column of the tail that has had `level` panels.
GetrfTask tail_step(GetrfSchedule& s, int block, int level) {
    if (level >= s.current)
        return {Kind::wait}; // its next panel is not factored yet
    if (block == s.current + 1 && s.current < s.panels)
        return next_panel(s);
    s.hold(block, level + 1);
    return {Kind::apply, level + 1, level + 1, block, block};
}

// One panel for one block column of the tail, the lowest level first. `done` if nothing is left to be handed out.
GetrfTask tail_task(GetrfSchedule& s) {
    bool busy = false; // a block column is on its way to this level or to one before it
    for (int level = s.frontier; level < s.panels; ++level) {
        for (int block = std::max(s.last_static(), s.current) + 1; block <= s.blocks; ++block) {
            if (s.has_just(block, level))
                return tail_step(s, block, level);
            busy = busy || s.is_on_its_way_to(block, level);
        }
        if (!busy)
            s.frontier = level + 1;
    }
    return {s.frontier >= s.panels ? Kind::done : Kind::wait};
}

GetrfTask next_task(GetrfSchedule& s, int thread) {
    const GetrfTask own = own_task(s, thread);
    if (own.kind == Kind::apply || own.kind == Kind::factor)
        return own;
    const GetrfTask shared = tail_task(s);
    return shared.kind == Kind::done ? own : shared;
}

} // namespace
} // namespace qrv

using namespace qrv;

void qrv_lapack_getrf_sched_init(GetrfSchedule* schedule, const int* m, const int* n, const int* nb, const int* team,
                                 const int* span, const int* tail) {
    const int blocks = (*n - 1) / *nb + 1, panels = (std::min(*m, *n) - 1) / *nb;
    *schedule = {*team, blocks, panels, *span, *tail, 0, 1};
    std::fill_n(&schedule->status(1), blocks, 0);
}

void qrv_lapack_getrf_sched_first(const int* thread, const GetrfSchedule* schedule, GetrfTask* task) {
    const GetrfSchedule& s = *schedule;
    const int lastStatic = s.last_static();
    int first = *thread * s.span + 1, last = first + s.span - 1;
    if (*thread == 0 && s.span > 1)
        first = 2; // the first panel is factored
    else if (*thread == 0)
        first = last = s.team + 1;
    if (first <= lastStatic)
        *task = {Kind::wait, 0, 0, first, std::min(last, lastStatic)};
    else if (s.tail < 1)
        *task = {Kind::done};
    else
        *task = {Kind::wait, 0, 0, lastStatic + 1, lastStatic + 1};
}

void qrv_lapack_getrf_sched_next(const int* thread, GetrfSchedule* schedule, GetrfTask* task) {
    record(*schedule, *task);
    *task = next_task(*schedule, *thread);
}

void qrv_lapack_getrf_sched_range(const GetrfTask* task, int* firstPanel, int* lastPanel, int* firstBlock,
                                  int* lastBlock) {
    *firstPanel = task->firstPanel;
    *lastPanel = task->lastPanel;
    *firstBlock = task->firstBlock;
    *lastBlock = task->last_block();
}
