// Teams of a chosen size, and who takes work memory in them.
#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>
#include <set>
#include <thread>

#include "qrv/service.h"
#include "service/work_pool.hpp"

namespace qrv::test {

constexpr int teamSizes[] = {1, 2, 3, 4, 8}; // more threads than cores: it is the partition that is tested

// As long as it lives, BLAS routines ask for `threads`, whatever the machine has.
class ForcedTeam {
public:
    explicit ForcedTeam(int threads) : dynamic_(qrv_serv_get_dynamic()) {
        qrv_serv_set_dynamic(0);
        qrv_serv_domain_set_num_threads(threads, QRV_DOMAIN_BLAS);
    }
    ~ForcedTeam() {
        qrv_serv_domain_set_num_threads(0, QRV_DOMAIN_BLAS);
        qrv_serv_set_dynamic(dynamic_);
    }
    ForcedTeam(const ForcedTeam&) = delete;
    ForcedTeam& operator=(const ForcedTeam&) = delete;

private:
    int dynamic_;
};

// As long as it lives, work memory comes from fresh pools, the threads that take some are recorded, and sizes in
// [refuseFrom, refuseTo) bytes are refused. One at a time.
class WorkMemoryProbe {
public:
    explicit WorkMemoryProbe(std::size_t refuseFrom = 0, std::size_t refuseTo = 0) {
        qrv_serv_free_buffers();
        state() = {refuseFrom, refuseTo, 0, {}};
        original() = allocatorSlots.malloc;
        allocatorSlots.malloc = take;
    }
    ~WorkMemoryProbe() {
        allocatorSlots.malloc = original();
        qrv_serv_free_buffers(); // a slot whose block was refused is not used again otherwise
    }
    WorkMemoryProbe(const WorkMemoryProbe&) = delete;
    WorkMemoryProbe& operator=(const WorkMemoryProbe&) = delete;

    int threads() const { return static_cast<int>(state().takers.size()); }
    int refusals() const { return state().refusals; }

private:
    struct State {
        std::size_t refuseFrom, refuseTo;
        int refusals;
        std::set<std::thread::id> takers;
    };
    static State& state() {
        static State value;
        return value;
    }
    static void* (*&original())(std::size_t) {
        static void* (*value)(std::size_t);
        return value;
    }
    static std::mutex& mutex() {
        static std::mutex value;
        return value;
    }
    static void* take(std::size_t bytes) {
        const std::lock_guard guard(mutex());
        State& s = state();
        s.takers.insert(std::this_thread::get_id());
        if (bytes >= s.refuseFrom && bytes < s.refuseTo) {
            ++s.refusals;
            return nullptr;
        }
        return original()(bytes);
    }
};

} // namespace qrv::test
