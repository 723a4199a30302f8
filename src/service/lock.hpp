// The locks of the run-time services, both held over a fork (fork.cpp). Neither is recursive.
//
// The spin lock is held for a few instructions, or a call of the allocator, of one-time work and of changes to the work
// pool's table, so it spins without pause or back-off. Threads that wait for the first budget query, which visits every
// processor, sleep instead.
#pragma once

extern "C" void qrv_serv_lock();
extern "C" void qrv_serv_unlock();

namespace qrv {

void lock_first_query();
void unlock_first_query();

struct LockGuard {
    LockGuard() { qrv_serv_lock(); }
    ~LockGuard() { qrv_serv_unlock(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;
};

} // namespace qrv
