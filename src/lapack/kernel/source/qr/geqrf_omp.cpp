// The QR factorization on a team: the matrix is cut into block columns, and threads take jobs from a schedule
// (geqrf_schedule.hpp). A panel is factored by the thread that brought it there, while the others go on with what the
// panels before it still have to reach.
//
// A panel and its T are complete before the schedule is told of them, and whoever reads them has seen that first. T of
// all panels stay until the end, as a block column far to the right may come to an early panel late.
#include <algorithm>

#include "lapack/elements.hpp"
#include "lapack/factorization.hpp"
#include "lapack/kernel/source/qr/geqrf.hpp"
#include "lapack/kernel/source/qr/geqrf_schedule.hpp"
#include "lapack/task_team.hpp"
#include "qrv/service.h"
#include "service/work_pool.hpp"

namespace qrv::lapack {
namespace {

// The job of the team.
template <class T>
struct BlockColumns {
    using Task = GeqrfTask;

    GeqrfPlan plan;
    Matrix<T> a;
    T *tau, *area;
    GeqrfSchedule* schedule;
    bool stopped = false; // at most one thread factors a panel

    int column(int block) const { return (block - 1) * plan.nb; } // and the row of a panel
    int columns(int block, int count) const {
        return static_cast<int>(std::min(std::int64_t{count} * plan.nb, std::int64_t{plan.n} - column(block)));
    }
    Matrix<T> t(int panel) const { return {area + std::int64_t{column(panel)} * plan.nb, plan.nb}; }

    void begin(int team) const { schedule->team = team; }
    Task first(int) const { return {}; }
    void next(int thread, Task& task) const { geqrf_schedule_next(*schedule, thread, task); }
    bool perform(Task& task, int thread) {
        while (geqrf_schedule_may_apply(*schedule, task)) {
            apply(task, thread);
            ++task.panel;
            if (geqrf_schedule_is_panel(*schedule, task) && !factor(task.panel, thread))
                return false;
        }
        return true;
    }

    // Result: false on a stop.
    bool factor(int panel, int thread) {
        const int k = column(panel), width = columns(panel, 1);
        laqrf(plan.m - k, width, a.block(k, k), tau + k, t(panel));
        stopped = tell_progress(geqrfName<T>, width, {thread, k}, 0).stopped;
        return !stopped;
    }

private:
    // Each block column by itself: how many a job has depends on the timing, and a column of a wide product need not
    // have the bits that it has in a narrow one.
    void apply(const Task& task, int thread) const {
        const int row = column(task.panel), reflectors = std::min(plan.nb, plan.k() - row);
        T* const work = area + plan.factors() + thread * plan.scratch();
        for (int block = task.first; block < task.first + task.count; ++block)
            larfb<T>(Side::left, adjoint<T>,
                     {Direct::forward, StoreV::columns, reflectors, a.block(row, row), t(task.panel)}, plan.m - row,
                     columns(block, 1), a.block(row, column(block)), {work, reflectors}, BlockWork::upright);
    }
};

} // namespace

template <class T>
bool geqrf_team(const GeqrfPlan& plan, Matrix<T> a, T* tau, T* area) {
    const int blocks = plan.blocks();
    void* const memory = qrv_serv_allocate(geqrf_schedule_bytes(blocks), 128);
    if (!memory)
        return false;
    BlockColumns<T> job{plan, a, tau, area, geqrf_schedule(memory, blocks, plan.panels(), plan.group)};
    const bool few = blocks <= plan.threads && qrv_serv_get_dynamic() != 0;
    if (job.factor(1, 0) && blocks > 1)
        TaskTeam(job).run(few ? blocks - 1 : plan.threads);
    if (!job.stopped)
        tell_progress(geqrfName<T>, plan.k(), {}, 0);
    qrv_serv_deallocate(memory);
    return true;
}

template bool geqrf_team(const GeqrfPlan&, Matrix<float>, float*, float*);
template bool geqrf_team(const GeqrfPlan&, Matrix<SingleComplex>, SingleComplex*, SingleComplex*);

} // namespace qrv::lapack
