// Who takes work memory, and what happens if there is none.
#pragma once

#include <cstddef>
#include <cstring>
#include <limits>
#include <mutex>
#include <set>
#include <thread>

#include "qrv/service.h"
#include "service/work_pool.hpp"

namespace qrv::test {

// As long as it lives, work memory comes from fresh pools and is full of NaN, what is taken is recorded, and sizes in
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

    int threads() const { return static_cast<int>(state().takers.size()); } // that took some
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
        void* const block = original()(bytes);
        return block ? std::memset(block, 0xFF, bytes) : block;
    }
};

constexpr std::size_t anySize = std::numeric_limits<std::size_t>::max();

} // namespace qrv::test
