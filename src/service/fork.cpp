#include "service/fork.hpp"

#include <atomic>
#include <pthread.h>
#include <sys/single_threaded.h>

#include "service/lock.hpp"

namespace qrv {
namespace {

std::atomic<bool> threadsLost{false};
bool hadThreads; // of the process that forks, under the locks

void before_fork() {
    lock_first_query();
    qrv_serv_lock();
    hadThreads = !__libc_single_threaded;
}

void after_fork_in_parent() {
    qrv_serv_unlock();
    unlock_first_query();
}

void after_fork_in_child() {
    if (hadThreads)
        threadsLost.store(true, std::memory_order_relaxed);
    after_fork_in_parent();
}

[[gnu::constructor]] void register_handlers() {
    pthread_atfork(before_fork, after_fork_in_parent, after_fork_in_child);
}

} // namespace

bool threads_lost_in_fork() {
    return threadsLost.load(std::memory_order_relaxed);
}

} // namespace qrv
