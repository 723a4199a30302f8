#include "lapack/kernel/source/qr/geqrf_schedule.hpp"

#include <algorithm>

namespace qrv {
namespace {

constexpr int taken = -1;

int stage_of(const GeqrfSchedule& s) {
    return s.stage.load(std::memory_order_relaxed);
}
int ready_of(const GeqrfSchedule& s) {
    return s.ready.load(std::memory_order_relaxed);
}

void record(GeqrfSchedule& s, GeqrfTask& task) {
    for (int block = task.first; block < task.first + task.count; ++block)
        s.progress(block) = task.panel;
    if (geqrf_schedule_is_panel(s, task))
        s.ready.store(task.panel, std::memory_order_release);
    if (task.panel < stage_of(s))
        s.stage.store(task.panel, std::memory_order_relaxed);
    if (const int left = s.blocks - stage_of(s) + 1; s.group * s.team >= left)
        s.group = std::max(1, left / s.team);
    task.held = false;
}

// Groups begin at multiples of their length. The quotient may be less than the thread.
bool begins_own_group(const GeqrfSchedule& s, int thread, int block) {
    return block % s.group == 0 && (block / s.group - thread) % s.team == 0;
}

// A block column that needs the panel of the stage, in the order that the thread prefers; 0 if there is none.
int choose(GeqrfSchedule& s, int thread, int previous) {
    const int stage = stage_of(s), next = stage + 1;
    const auto wants = [&](int block) { return s.progress(block) == stage; };
    if (next <= s.blocks && wants(next))
        return next;
    if (previous > next && wants(previous))
        return previous;
    int own = next;
    while (own <= s.blocks && !begins_own_group(s, thread, own))
        ++own;
    for (; own <= s.blocks; own += s.team * s.group)
        if (wants(own))
            return own;
    for (int block = next; block <= s.blocks; ++block)
        if (wants(block))
            return block;
    return 0;
}

void take(GeqrfSchedule& s, int thread, int block, GeqrfTask& task) {
    task = {block, 1, s.progress(block), true, false};
    s.progress(block) = taken;
    if (block == task.panel + 1 || !begins_own_group(s, thread, block))
        return; // the next panel goes alone
    for (; task.count < s.group; ++task.count) {
        const int neighbour = block + task.count;
        if (neighbour > s.blocks || s.progress(neighbour) != task.panel)
            return;
        s.progress(neighbour) = taken;
    }
}

} // namespace

GeqrfSchedule* geqrf_schedule(void* memory, int blocks, int panels, int group) {
    auto* const schedule = new (memory) GeqrfSchedule{1, blocks, panels, group, {1}, {1}};
    std::fill_n(&schedule->progress(1), blocks, 1);
    return schedule;
}

void geqrf_schedule_next(GeqrfSchedule& s, int thread, GeqrfTask& task) {
    if (task.held)
        record(s, task);
    for (; stage_of(s) <= s.panels; s.stage.store(stage_of(s) + 1, std::memory_order_relaxed)) {
        if (stage_of(s) > ready_of(s))
            return; // its panel is on its way
        if (const int block = choose(s, thread, task.first); block > 0)
            return take(s, thread, block, task);
    }
    task.over = true;
}

} // namespace qrv
