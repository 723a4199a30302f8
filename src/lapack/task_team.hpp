// A team of threads that takes tasks from a schedule until nothing is left: the loop of the factorizations that hand
// out their own work.
//
// The schedule is a plain record without threads in it, and a job tells what to do with it:
//
//   Job::Task                               default-constructible; waits() and ends() tell that it is no work
//   void begin(int team)                    one thread, before all others, with the team that is really there
//   Task first(int thread)                  each thread, before any of them has work
//   void next(int thread, Task& task)       under the lock: *task is finished, and becomes the next one
//   bool perform(const Task&, int thread)   without the lock; false asks the whole team to stop
//
// What a thread wrote before it calls `next` is seen by every thread that calls it later.
#pragma once

#include <atomic>
#include <omp.h>
#include <thread>

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
#pragma omp parallel num_threads(threads)
        {
#pragma omp single
            job_.begin(omp_get_num_threads()); // a barrier
            const int thread = omp_get_thread_num();
            Task task = job_.first(thread);
#pragma omp barrier
            work(task, thread);
        }
    }

private:
    using Task = typename Job::Task;

    // Until nothing is left to be handed out, or a stop; tasks under way are finished all the same.
    void work(Task& task, int thread) {
        while (!task.ends() && !stop_.load(std::memory_order_relaxed)) {
            take_next(task, thread);
            if (task.waits())
                std::this_thread::yield(); // ready to run at once, but not in the way of a teammate without a core
            else if (!task.ends() && !job_.perform(task, thread))
                stop_.store(true, std::memory_order_relaxed);
        }
    }

    void take_next(Task& task, int thread) {
        omp_set_lock(&lock_);
        job_.next(thread, task);
        omp_unset_lock(&lock_);
    }

    Job& job_;
    omp_lock_t lock_; // of the schedule
    std::atomic<bool> stop_ = false;
};

} // namespace qrv::lapack
