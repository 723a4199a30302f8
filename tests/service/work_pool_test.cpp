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

TEST_F(WorkPool, NewSlotBeforeAWrongSize) {
    once(2000, 128);
    void* second = once(1000, 128);
    EXPECT_EQ(buffers(), 2) << "room for a new slot is preferred to a larger free one";
    once(3000, 128);
    once(4000, 128);
    once(5000, 128);
    EXPECT_EQ(buffers(), 5);
    const int full = mallocs;
    EXPECT_EQ(once(1000, 128), second) << "an exact match wins over the first larger slot";
    const std::int64_t before = bytes();
    once(900, 128);
    EXPECT_EQ(mallocs, full) << "the first larger slot serves as it is";
    EXPECT_EQ(bytes(), before);
    once(6000, 128);
    EXPECT_EQ(mallocs, full + 1) << "larger than all: the first smaller slot is refilled";
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

TEST(WorkPoolEnvironment, SwitchedOff) {
    EXPECT_EQ(probe({"pool"}, {})["buffers"], "1");
    for (const char* name : {"QRV_DISABLE_FAST_MM", "QRV_MM_DISABLE"}) {
        auto found = probe({"pool"}, {{name, "0"}});
        EXPECT_EQ(found["buffers"], "-1") << name;
        EXPECT_EQ(found["bytes"], "0") << name;
        EXPECT_EQ(probe({"pool"}, {{name, ""}})["buffers"], "1") << "empty is unset";
    }
}

} // namespace
} // namespace qrv::test
