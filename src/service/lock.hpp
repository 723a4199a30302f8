// The one spin lock of the run-time services. It is not recursive, and it is held for one-time work and for
// changes of the work pool's table only, so it spins without pause or back-off.
#pragma once

extern "C" void qrv_serv_lock();
extern "C" void qrv_serv_unlock();

namespace qrv {

struct LockGuard {
    LockGuard() { qrv_serv_lock(); }
    ~LockGuard() { qrv_serv_unlock(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;
};

} // namespace qrv
