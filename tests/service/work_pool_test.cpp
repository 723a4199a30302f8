// The work memory pool: which slot serves a request, what reaches the allocator, and what other threads may do.
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "service/work_pool.hpp"
#include "support/child.hpp"

namespace qrv::test {
namespace {

std::atomic<int> mallocs, frees, refuseFrom;

void* counting_malloc(std::size_t size) {
    return ++mallocs >= refuseFrom ? nullptr : std::malloc(size);
}
void counting_free(void* block) {
    ++frees;
    std::free(block);
}

// Each test starts with an empty pool and a counting allocator, and ends with every buffer released.
class WorkPool : public testing::Test {
protected:
    void SetUp() override {
        if (!pool_enabled())
            GTEST_SKIP() << "the pool is off in this environment";
        qrv_serv_free_buffers();
        saved_ = allocatorSlots;
        allocatorSlots.malloc = counting_malloc;
        allocatorSlots.free = counting_free;
        mallocs = frees = 0;
        refuseFrom = 1 << 30;
    }
    void TearDown() override {
        qrv_serv_free_buffers();
        int buffers = 0;
        EXPECT_EQ(qrv_serv_memory_stat(&buffers), 0);
        EXPECT_EQ(buffers, 0);
        allocatorSlots = saved_;
    }
    static int buffers() {
        int count = 0;
        qrv_serv_memory_stat(&count);
        return count;
    }
    static std::int64_t bytes() {
        int count = 0;
        return qrv_serv_memory_stat(&count);
    }
    static void* once(std::size_t size, int alignment) {
        void* block = qrv_serv_allocate(size, alignment);
        qrv_serv_deallocate(block);
        return block;
    }

private:
    AllocatorSlots saved_{};
};

TEST_F(WorkPool, NullInNullOut) {
    EXPECT_EQ(qrv_serv_allocate(0, 128), nullptr);
    qrv_serv_deallocate(nullptr);
    EXPECT_EQ(mallocs + frees, 0);
}

TEST_F(WorkPool, RepeatReusesTheSlot) {
    void* first = once(1000, 128);
    const int after = mallocs.load();
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first) % 128, 0U);
    EXPECT_EQ(once(1000, 128), first);
    EXPECT_EQ(mallocs, after);
    EXPECT_EQ(buffers(), 1);
    EXPECT_EQ(bytes(), 1128);
}

TEST(WorkPoolFit, ExactThenNewThenLargerThenSmaller) {
    constexpr std::uint32_t held = heldSlot;
    const struct {
        std::vector<std::uint32_t> slots;
        int slot;
        bool refill;
    } rows[] = {
        {{}, 0, true},
        {{100}, 0, false},
        {{200}, 1, true}, // a new slot before one of the wrong size
        {{held, 50, 100}, 2, false},
        {{100, 100}, 0, false},
        {{200, 50, 300, 100, 400}, 3, false},
        {{50, 200, 300, 60, 400}, 1, false},
        {{50, held, 60, 70, 80}, 0, true},
        {{held, 99, held, 0, held}, 1, true},
        {{held, held, 101, held, held}, 2, false},
        {{held, held, held, held, held}, -1, true},
        {{held, held, held, held}, 4, true},
    };
    for (const auto& row : rows) {
        const Fit fit = best_fit(static_cast<int>(row.slots.size()), 100,
                                 [&](int slot) { return row.slots[static_cast<std::size_t>(slot)]; });
        EXPECT_EQ(fit.slot, row.slot) << testing::PrintToString(row.slots);
        EXPECT_EQ(fit.refill, row.refill) << testing::PrintToString(row.slots);
    }
}

TEST_F(WorkPool, FullRecordRefillsASmallerSlot) {
    for (const std::size_t size : {2000U, 1000U, 3000U, 4000U, 5000U})
        once(size, 128);
    const std::int64_t before = bytes();
    once(900, 128);
    EXPECT_EQ(bytes(), before) << "a larger slot serves as it is";
    const int full = mallocs;
    once(6000, 128);
    EXPECT_EQ(mallocs, full + 1);
    EXPECT_EQ(frees, 1);
    EXPECT_EQ(bytes(), before - 2128 + 6128);
    EXPECT_EQ(buffers(), 5);
}

TEST_F(WorkPool, SixthBufferIsUnpooled) {
    std::vector<void*> held;
    for (int i = 0; i < 5; ++i)
        held.push_back(qrv_serv_allocate(1000, 128));
    void* sixth = qrv_serv_allocate(1000, 128);
    EXPECT_EQ(buffers(), 5);
    const int before = frees;
    qrv_serv_deallocate(sixth);
    EXPECT_EQ(frees, before + 1);
    qrv_serv_free_buffers();
    EXPECT_EQ(buffers(), 5) << "held buffers stay";
    for (void* block : held)
        qrv_serv_deallocate(block);
    EXPECT_EQ(frees, before + 1) << "pooled buffers are kept";
}

TEST_F(WorkPool, SizeLimit) {
    once(pooledLimit + 1, 128);
    EXPECT_EQ(buffers(), 0);
    EXPECT_EQ(frees, 1);
    once(pooledLimit, 128);
    EXPECT_EQ(buffers(), 1);
}

TEST_F(WorkPool, Alignments) {
    const struct {
        int alignment;
        std::int64_t allowance;
    } rows[] = {{96, 32}, {2, 0}, {0, 0}, {-64, 0}, {4, 4}, {64, 64}, {4096, 4096}};
    for (const auto& row : rows) {
        qrv_serv_free_buffers();
        auto* block = static_cast<char*>(qrv_serv_allocate(1000, row.alignment));
        EXPECT_EQ(bytes(), 1000 + row.allowance) << row.alignment;
        if (row.allowance) {
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % static_cast<std::uintptr_t>(row.allowance), 0U);
        }
        for (int i = 0; i < 1000; ++i) // the sanitizer sees a block that is too short
            block[i] = 1;
        qrv_serv_deallocate(block);
    }
}

TEST_F(WorkPool, ReleaseOnAnotherThread) {
    void* block = qrv_serv_allocate(1000, 128);
    std::thread([&] {
        void* own = qrv_serv_allocate(500, 64); // so that this thread has a record to look through first
        qrv_serv_deallocate(block);
        qrv_serv_deallocate(own);
    }).join();
    EXPECT_EQ(buffers(), 2);
    EXPECT_EQ(qrv_serv_allocate(1000, 128), block) << "free again in the first thread's record";
    qrv_serv_deallocate(block);
}

TEST_F(WorkPool, RefusedMemory) {
    refuseFrom = 1;
    EXPECT_EQ(qrv_serv_allocate(1000, 128), nullptr) << "not even a record";
    EXPECT_EQ(buffers(), 0);
    refuseFrom = mallocs + 2;
    EXPECT_EQ(qrv_serv_allocate(1000, 128), nullptr);
    EXPECT_EQ(buffers(), 1) << "the slot counts as held";
    refuseFrom = 1 << 30;
    void* block = qrv_serv_allocate(1000, 128);
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(buffers(), 2);
    qrv_serv_deallocate(block);
}

TEST_F(WorkPool, ManyThreadsAtOnce) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < 500; ++i) {
                const std::size_t size = 100 + static_cast<std::size_t>((t + i) % 7);
                auto* block = static_cast<char*>(qrv_serv_allocate(size, 64));
                block[0] = block[size - 1] = static_cast<char>(t);
                EXPECT_EQ(block[0], block[size - 1]);
                qrv_serv_deallocate(block);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(buffers(), 8 * 5);
}

// More threads than there are records, each of which leaves nothing.
TEST_F(WorkPool, ThreadsGiveBackTheirBuffers) {
    constexpr int threads = 10'000;
    int reused = 0;
    for (int t = 0; t < threads; ++t)
        std::thread([&] {
            void* first = once(1000, 128);
            once(70'000, 64);
            reused += once(1000, 128) == first;
            qrv_serv_free_thread_buffers();
        }).join();
    EXPECT_EQ(reused, threads) << "each has a record";
    EXPECT_EQ(buffers(), 0);
    EXPECT_EQ(mallocs, frees);
    EXPECT_EQ(mallocs, 3 * threads) << "a record and two buffers";
}

TEST_F(WorkPool, ThreadBuffersOfOneThreadOnly) {
    once(500, 64);
    void* held = nullptr;
    std::thread([&] {
        once(2000, 64);
        held = qrv_serv_allocate(1000, 64);
        qrv_serv_free_thread_buffers();
        EXPECT_EQ(bytes(), 564 + 1064) << "what is held stays, and the other thread's";
    }).join();
    qrv_serv_free_thread_buffers();
    EXPECT_EQ(bytes(), 1064);
    qrv_serv_deallocate(held); // in the record that stayed
    EXPECT_EQ(mallocs - frees, 2) << "the buffer and its record";
    void* again = once(500, 64);
    EXPECT_EQ(once(500, 64), again) << "a new record";
    qrv_serv_free_buffers();
    qrv_serv_free_thread_buffers(); // of which nothing is left
    EXPECT_EQ(mallocs, frees);
}

// Threads that act in the order told.
class Turns {
public:
    template <class Action>
    void at(int turn, Action action) {
        while (turn_ != turn)
            std::this_thread::yield();
        action();
        ++turn_;
    }

private:
    std::atomic<int> turn_{0};
};

TEST_F(WorkPool, RecordsGoInAnyOrder) {
    Turns turns;
    std::vector<std::thread> threads;
    for (const int thread : {0, 1, 2})
        threads.emplace_back([&turns, thread] {
            turns.at(thread, [] { once(1000, 64); });
            if (thread != 1)
                turns.at(3 + thread / 2, qrv_serv_free_thread_buffers);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(mallocs - frees, 2) << "the middle one's";
    qrv_serv_free_buffers();
    EXPECT_EQ(mallocs, frees);
}

TEST_F(WorkPool, RecordsOfAnEarlierGenerationAreNotUsed) {
    Turns turns;
    const auto use = [] { once(1000, 64); };
    std::thread other([&] {
        turns.at(0, use);
        turns.at(2, use);
    });
    turns.at(1, [] {
        qrv_serv_free_buffers();
        EXPECT_EQ(mallocs, frees);
    });
    other.join();
    EXPECT_EQ(buffers(), 1);
    EXPECT_EQ(mallocs - frees, 2);
}

TEST(WorkPoolEnvironment, SwitchedOff) {
    expect_found({"pool"}, {}, "buffers=1");
    for (const char* name : {"QRV_DISABLE_FAST_MM", "QRV_MM_DISABLE"}) {
        expect_found({"pool"}, {{name, "0"}}, "buffers=-1 bytes=0");
        expect_found({"pool"}, {{name, ""}}, "buffers=1"); // empty is unset
    }
}

} // namespace
} // namespace qrv::test
