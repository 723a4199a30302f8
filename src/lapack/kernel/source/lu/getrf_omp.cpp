// The LU factorization on a team with dynamic scheduling: the matrix is cut into block columns, and threads take tasks
// from a schedule (getrf_schedule.hpp), which says who owns what and in which order panels are applied.
//
//   factor panel 1          caller
//   tasks                   region: panels 2 to P are factored and each applied to all block columns to its right
//   factor the last block   caller: what is right of and below panel P
//   interchange to the left region: the only time that the columns left of a panel see its interchanges
//
// So a panel stays as it was factored while others are computed from it: rows of block column b, b > p, are in the
// order of panel p when it is applied. Pivots are complete, counted from the first row of A, before the schedule is
// told of their panel, and that happens under its lock; whoever sees the panel as factored there sees them.
// The schedule belongs to the call and is given back on every path out of it.
#include <algorithm>
#include <atomic>

#include "blas/thread/common/team_omp.hpp"
#include "lapack/calls/lu.hpp"
#include "lapack/kernel/source/lu/getrf.hpp"
#include "lapack/kernel/source/lu/getrf_schedule.hpp"
#include "lapack/routine_name.hpp"
#include "lapack/task_team.hpp"
#include "service/tuning.hpp"
#include "service/work_pool.hpp"

namespace qrv::lapack {
namespace {

// The job of the team.
template <class T>
struct TaskedMatrix {
    using Task = GetrfTask;

    int m, n, nb;
    Matrix<T> a;
    int* ipiv;
    GetrfSchedule* schedule;
    FactorResult result{}; // of the panels so far; at most one thread factors one

    int panels() const { return (std::min(m, n) - 1) / nb; }
    Panel panel(int number) const { return {(number - 1) * nb, nb}; } // counted from 1, as in the schedule

    // Factors the panel as thread `thread`, and takes its result over.
    void factor(Panel panel, int thread) {
        const int k = panel.k;
        const FactorResult own = getrf_recursive(m - k, panel.width, a.block(k, k), ipiv + k, {thread, k});
        getrf_append(result, own, {k, std::min(m - k, panel.width)}, ipiv);
    }

    void begin(int team) {
        const RoutineName<T> name("GETRF");
        const int span = tuning::lu_span(name, n, team), tail = tuning::lu_tail(name, n, team);
        qrv_lapack_getrf_sched_init(schedule, &m, &n, &nb, &team, &span, &tail);
    }
    Task first(int thread) const {
        Task task;
        qrv_lapack_getrf_sched_first(&thread, schedule, &task);
        return task;
    }
    void next(int thread, Task& task) { qrv_lapack_getrf_sched_next(&thread, schedule, &task); }
    bool perform(const Task& task, int thread) {
        int firstPanel, lastPanel, firstBlock, lastBlock;
        qrv_lapack_getrf_sched_range(&task, &firstPanel, &lastPanel, &firstBlock, &lastBlock);
        // Each block column by itself: how many are ready at once depends on the timing, and a column of a wide product
        // need not have the bits that it has in a narrow one.
        for (int block = firstBlock; block <= lastBlock; ++block) {
            const int first = panel(block).k, count = std::min(nb, n - first);
            for (int number = firstPanel; number <= lastPanel; ++number)
                getrf_apply_panel(m, a, ipiv, panel(number), first, count);
        }
        if (task.kind != GetrfTaskKind::factor)
            return true;
        factor(panel(firstBlock), thread);
        return !result.stopped;
    }
};

// The last panels first: they are what the caches still hold.
template <class T>
void interchange_left(const TaskedMatrix<T>& x, int threads) {
    const int panels = x.panels(), length = std::min(x.m, x.n);
    std::atomic<int> left = panels;
    on_team(threads, [&](int, int) {
        for (int panel; (panel = left--) > 0;)
            laswp(x.nb, x.a.block(0, (panel - 1) * x.nb), panel * x.nb + 1, length, x.ipiv);
    });
}

template <class T>
FactorResult factor(TaskedMatrix<T>& x, int threads) {
    x.factor(x.panel(1), 0);
    if (!x.result.stopped)
        TaskTeam(x).run(threads);
    if (const int k = x.panels() * x.nb; !x.result.stopped)
        x.factor({k, x.n - k}, 0);
    if (!x.result.stopped)
        interchange_left(x, threads);
    return x.result;
}

} // namespace

template <class T>
FactorResult getrf_dynamic(int threads, int nb, int m, int n, Matrix<T> a, int* ipiv) {
    void* const block = qrv_serv_allocate(getrf_schedule_bytes(n, nb), 128);
    if (!block)
        return getrf_ib(threads, m, n, a, ipiv);
    TaskedMatrix<T> x{m, n, nb, a, ipiv, static_cast<GetrfSchedule*>(block)};
    const FactorResult result = factor(x, threads);
    qrv_serv_deallocate(block);
    return result;
}

template FactorResult getrf_dynamic(int, int, int, int, Matrix<float>, int*);
template FactorResult getrf_dynamic(int, int, int, int, Matrix<SingleComplex>, int*);

} // namespace qrv::lapack
