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
#include <mutex>
#include <omp.h>
#include <thread>

#include "lapack/arguments.hpp"
#include "lapack/calls/lu.hpp"
#include "lapack/kernel/source/lu/getrf.hpp"
#include "lapack/kernel/source/lu/getrf_schedule.hpp"
#include "service/tuning.hpp"
#include "service/work_pool.hpp"

namespace qrv::lapack {
namespace {

template <class T>
struct TaskedMatrix {
    int m, n, nb;
    Matrix<T> a;
    int* ipiv;
    GetrfSchedule* schedule;
    GetrfResult result{};           // of the panels so far; at most one thread factors one
    std::mutex lock{};              // of the schedule
    std::atomic<bool> stop = false; // the progress routine asked for it

    int panels() const { return (std::min(m, n) - 1) / nb; }
};

// Factors the panel of `width` columns at (k, k), and takes its result over.
template <class T>
void factor_panel(TaskedMatrix<T>& x, int k, int width, int thread) {
    const GetrfResult panel = getrf_recursive(x.m - k, width, x.a.block(k, k), x.ipiv + k, {thread, k});
    getrf_append(x.result, panel, k, std::min(x.m - k, width), x.ipiv);
}

template <class T>
void perform(TaskedMatrix<T>& x, const GetrfTask& task, int thread) {
    int firstPanel, lastPanel, firstBlock, lastBlock;
    qrv_lapack_getrf_sched_range(&task, &firstPanel, &lastPanel, &firstBlock, &lastBlock);
    const int first = (firstBlock - 1) * x.nb, count = std::min((lastBlock - firstBlock + 1) * x.nb, x.n - first);
    for (int panel = firstPanel; panel <= lastPanel; ++panel)
        getrf_apply_panel(x.m, x.a, x.ipiv, (panel - 1) * x.nb, x.nb, first, count);
    if (task.kind == GetrfTaskKind::factor) {
        factor_panel(x, first, x.nb, thread);
        if (x.result.stopped)
            x.stop.store(true, std::memory_order_relaxed);
    }
}

// Until nothing is left to be handed out, or a stop; tasks under way are finished all the same.
template <class T>
void work(TaskedMatrix<T>& x, GetrfTask task, int thread) {
    while (task.kind != GetrfTaskKind::done && !x.stop.load(std::memory_order_relaxed)) {
        {
            const std::lock_guard guard(x.lock);
            qrv_lapack_getrf_sched_next(&thread, x.schedule, &task);
        }
        if (task.kind == GetrfTaskKind::wait)
            std::this_thread::yield(); // ready to run at once, but not in the way of a teammate without a core
        else if (task.kind != GetrfTaskKind::done)
            perform(x, task, thread);
    }
}

template <class T>
void task_region(TaskedMatrix<T>& x, int threads) {
#pragma omp parallel num_threads(threads)
    {
#pragma omp single
        {
            const int team = omp_get_num_threads();
            const RoutineName<T> name("GETRF");
            const int span = tuning::lu_span(name, x.n, team), tail = tuning::lu_tail(name, x.n, team);
            qrv_lapack_getrf_sched_init(x.schedule, &x.m, &x.n, &x.nb, &team, &span, &tail);
        } // a barrier
        const int thread = omp_get_thread_num();
        GetrfTask task;
        qrv_lapack_getrf_sched_first(&thread, x.schedule, &task);
#pragma omp barrier
        work(x, task, thread);
    }
}

// The last panels first: they are what the caches still hold.
template <class T>
void interchange_left(const TaskedMatrix<T>& x, int threads) {
    const int panels = x.panels(), length = std::min(x.m, x.n);
#pragma omp parallel for schedule(dynamic, 1) num_threads(threads)
    for (int i = 0; i < panels; ++i) {
        const int end = (panels - i) * x.nb;
        laswp(x.nb, x.a.block(0, end - x.nb), end + 1, length, x.ipiv);
    }
}

template <class T>
GetrfResult factor(TaskedMatrix<T>& x, int threads) {
    factor_panel(x, 0, x.nb, 0);
    if (!x.result.stopped)
        task_region(x, threads);
    if (!x.result.stopped)
        factor_panel(x, x.panels() * x.nb, x.n - x.panels() * x.nb, 0);
    if (!x.result.stopped)
        interchange_left(x, threads);
    return x.result;
}

} // namespace

template <class T>
GetrfResult getrf_dynamic(int threads, int nb, int m, int n, Matrix<T> a, int* ipiv) {
    void* const block = qrv_serv_allocate(getrf_schedule_bytes(n, nb), 128);
    if (!block)
        return getrf_ib(threads, m, n, a, ipiv);
    TaskedMatrix<T> x{m, n, nb, a, ipiv, static_cast<GetrfSchedule*>(block)};
    const GetrfResult result = factor(x, threads);
    qrv_serv_deallocate(block);
    return result;
}

template GetrfResult getrf_dynamic(int, int, int, int, Matrix<float>, int*);
template GetrfResult getrf_dynamic(int, int, int, int, Matrix<SingleComplex>, int*);

} // namespace qrv::lapack
