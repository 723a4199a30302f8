#include "service/lock.hpp"

#include <atomic>

namespace {
std::atomic<int> lockWord{0}; // 0 free, 1 held
}

void qrv_serv_lock() {
    int free = 0;
    while (!lockWord.compare_exchange_weak(free, 1, std::memory_order_acquire, std::memory_order_relaxed))
        free = 0;
}

void qrv_serv_unlock() {
    lockWord.store(0, std::memory_order_release);
}
