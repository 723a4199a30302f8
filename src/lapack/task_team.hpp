// A team of threads that takes tasks from a schedule until nothing is left: the loop of the factorizations that hand
// out their own work.
//
// The schedule is a plain record without threads in it, and a job tells what to do with it:
//
//   Job::Task                               default-constructible; waits() and ends() tell that it is no work
//   void begin(int team)                    once, under the lock, with the team that is really there
//   Task first(int thread)                  each thread, then, under the lock
//   void next(int thread, Task& task)       under the lock: *task is finished, and becomes the next one
//   bool perform(const Task&, int thread)   without the lock; false asks the whole team to stop
//
// What a thread wrote before it calls `next` is seen by every thread that calls it later. Nobody waits for a thread
// that comes late, but at the end. Where teams do not pay (blas/thread/common/crowd.hpp), the caller is a team of one.
#pragma once

#include <algorithm>
#include <atomic>
#include <omp.h>
#include <thread>

#include "blas/thread/common/crowd.hpp"
#include "service/thread_budget.hpp"

namespace qrv::lapack {

template <class Job>
class TaskTeam {
public:
    explicit TaskTeam(Job& job) : job_(job) { omp_init_lock(&lock_); }
    ~TaskTeam() { omp_destroy_lock(&lock_); }
    TaskTeam(const TaskTeam&) = delete;
    TaskTeam& operator=(const TaskTeam&) = delete;

    // On at most so many threads.
    void run(int threads) {
        const Ticks begun = ticks_now();
        if (goes_alone(begun)) {
            const RegionOfOne region;
            return work(1, 0);
        }
#pragma omp parallel num_threads(threads)
        work(omp_get_num_threads(), omp_get_thread_num());
        if (team_ > 1) // who worked longest may have waited for a core within a task, and tells nothing
            note_region(team_, (worked_ - longest_) / (team_ - 1), begun, ticks_now());
    }

private:
    using Task = typename Job::Task;

    // Until nothing is left to be handed out, or a stop; tasks under way are finished all the same.
    void work(int team, int thread) {
        Ticks worked = 0;
        Task task;
        locked([&] {
            if (team_ == 0)
                job_.begin(team_ = team);
            task = job_.first(thread);
        });
        while (!task.ends() && !stop_.load(std::memory_order_relaxed)) {
            locked([&] { job_.next(thread, task); });
            if (task.waits()) {
                std::this_thread::yield(); // ready to run at once, but not in the way of a teammate without a core
            } else if (!task.ends()) {
                const Ticks start = ticks_now();
                if (!job_.perform(task, thread))
                    stop_.store(true, std::memory_order_relaxed);
                worked += ticks_now() - start;
            }
        }
        locked([&] {
            worked_ += worked;
            longest_ = std::max(longest_, worked);
        });
    }

    template <class Work>
    void locked(const Work& work) {
        omp_set_lock(&lock_);
        work();
        omp_unset_lock(&lock_);
    }

    Job& job_;
    omp_lock_t lock_; // of the schedule, and of these
    int team_ = 0;
    Ticks worked_ = 0, longest_ = 0; // of all threads and of one
    std::atomic<bool> stop_ = false;
};

} // namespace qrv::lapack
