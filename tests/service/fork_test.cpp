// Children of a process with threads.
#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "qrv/service.h"
#include "service/lock.hpp"

namespace qrv::test {
namespace {

// Result of body() in a child, or -1 if it did not come to its end.
template <class Body>
int in_child(Body body) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(20);
        _exit(body());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Fork, ChildOfThreadsUsesOne) {
    const int dynamic = qrv_serv_get_dynamic();
    qrv_serv_set_dynamic(0);
    qrv_serv_domain_set_num_threads(3, QRV_DOMAIN_BLAS);
    std::atomic<int> team{0};
#pragma omp parallel num_threads(3)
    ++team;
    EXPECT_EQ(in_child([] { return qrv_serv_domain_get_max_threads(QRV_DOMAIN_BLAS); }), 1);
    EXPECT_EQ(qrv_serv_domain_get_max_threads(QRV_DOMAIN_BLAS), 3) << "the parent goes on as before";
    qrv_serv_domain_set_num_threads(0, QRV_DOMAIN_BLAS);
    qrv_serv_set_dynamic(dynamic);
}

TEST(Fork, ChildFindsTheLocksFree) {
    const std::pair<void (*)(), void (*)()> locks[] = {{qrv_serv_lock, qrv_serv_unlock},
                                                       {lock_first_query, unlock_first_query}};
    for (const auto& [lock, unlock] : locks) {
        std::atomic<bool> held{false}, released{false};
        std::thread holder([&] {
            lock();
            held = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(50)); // into the fork, which waits
            released = true;
            unlock();
        });
        while (!held)
            ;
        const int found = in_child([&] {
            lock();
            unlock();
            return released ? 0 : 1;
        });
        EXPECT_EQ(found, 0);
        holder.join();
    }
}

} // namespace
} // namespace qrv::test
