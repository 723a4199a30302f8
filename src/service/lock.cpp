#include "service/lock.hpp"

#include <atomic>
#include <pthread.h>

namespace {
std::atomic<int> lockWord{0}; // 0 free, 1 held
pthread_mutex_t firstQuery = PTHREAD_MUTEX_INITIALIZER;
} // namespace

void qrv::lock_first_query() {
    pthread_mutex_lock(&firstQuery);
}

void qrv::unlock_first_query() {
    pthread_mutex_unlock(&firstQuery);
}

void qrv_serv_lock() {
    int free = 0;
    while (!lockWord.compare_exchange_weak(free, 1, std::memory_order_acquire, std::memory_order_relaxed))
        free = 0;
}

void qrv_serv_unlock() {
    lockWord.store(0, std::memory_order_release);
}
