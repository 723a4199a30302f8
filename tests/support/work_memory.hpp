// Who takes work memory, and what happens if there is none.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <mutex>
#include <set>
#include <thread>

#include "qrv/service.h"
#include "service/work_pool.hpp"

namespace qrv::test {

// As long as it lives, work memory comes from fresh pools and is full of NaN, what is taken is recorded, sizes in
// [refuseFrom, refuseTo) bytes are refused, and the test fails if something was written behind a block. One at a time.
class WorkMemoryProbe {
public:
    explicit WorkMemoryProbe(std::size_t refuseFrom = 0, std::size_t refuseTo = 0) {
        qrv_serv_free_buffers();
        state = {refuseFrom, refuseTo, 0, {}, {}};
        original = allocatorSlots;
        allocatorSlots.malloc = take;
        allocatorSlots.free = give_back;
    }
    ~WorkMemoryProbe() {
        qrv_serv_free_buffers(); // a slot whose block was refused is not used again otherwise
        allocatorSlots = original;
    }
    WorkMemoryProbe(const WorkMemoryProbe&) = delete;

    int threads() const { return static_cast<int>(state.takers.size()); } // that took some
    int refusals() const { return state.refusals; }

private:
    static constexpr std::size_t guard = 4096;
    struct State {
        std::size_t refuseFrom, refuseTo;
        int refusals;
        std::set<std::thread::id> takers;
        std::map<void*, std::size_t> blocks;
    };
    static inline State state{};
    static inline AllocatorSlots original;
    static inline std::mutex mutex;

    static void* take(std::size_t bytes) {
        const std::lock_guard guarded(mutex);
        State& s = state;
        s.takers.insert(std::this_thread::get_id());
        if (bytes >= s.refuseFrom && bytes < s.refuseTo) {
            ++s.refusals;
            return nullptr;
        }
        void* const block = original.malloc(bytes + guard);
        if (block)
            s.blocks[std::memset(block, 0xFF, bytes + guard)] = bytes;
        return block;
    }
    static void give_back(void* block) {
        const std::lock_guard guarded(mutex);
        if (const auto found = state.blocks.find(block); found != state.blocks.end()) {
            const auto* const behind = static_cast<const unsigned char*>(block) + found->second;
            EXPECT_EQ(std::count(behind, behind + guard, 0xFF), int{guard}) << "behind " << found->second << " bytes";
            state.blocks.erase(found);
        }
        original.free(block);
    }
};

constexpr std::size_t anySize = std::numeric_limits<std::size_t>::max();

} // namespace qrv::test
