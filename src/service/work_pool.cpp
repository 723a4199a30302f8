#include "service/work_pool.hpp"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <pthread.h>

#include "service/environment.hpp"
#include "service/lock.hpp"

namespace qrv {

AllocatorSlots allocatorSlots{std::malloc, std::calloc, std::realloc, std::free};

namespace {

// One buffer of a thread. The owning thread works on it without a lock; others read it, and write inUse and what
// qrv_serv_free_buffers clears, under the lock. So all fields that both touch are atomic, in relaxed order.
struct PoolSlot {
    std::atomic<void*> raw{nullptr};     // what the allocator returned
    std::atomic<void*> aligned{nullptr}; // what the caller was given
    std::atomic<std::uint32_t> requested{0};
    std::atomic<std::uint32_t> capacity{0}; // size of raw, the alignment allowance included
    std::atomic<int> inUse{0};
};

// The buffers of one thread: the first `count` slots are filled, in index order.
struct WorkPoolRecord {
    PoolSlot slots[poolSlots];
    std::atomic<int> count{0};
    std::int64_t totalBytes = 0; // sum of the capacities; the owner's alone
};

constexpr auto relaxed = std::memory_order_relaxed;
constexpr int noKey = -1;
static_assert(sizeof(pthread_key_t) == sizeof(int));

std::atomic<int> threadKey{noKey}; // of the calling thread's record
std::atomic<int> disabled{-1};     // 1 off, 0 on, -1 not read
// Changed under the lock.
WorkPoolRecord* recordTable[poolRecords];
std::atomic<int> recordCount{0};

struct Alignment {
    std::uint32_t allowance; // bytes added to a block so that it can be aligned inside
    std::uintptr_t mask;
};

Alignment normalised(int alignment) {
    if (alignment < 4)
        return {0, 0};
    if ((alignment & (alignment - 1)) != 0)
        alignment = 32;
    return {static_cast<std::uint32_t>(alignment), static_cast<std::uintptr_t>(alignment) - 1};
}

void ensure_key() {
    if (threadKey.load(std::memory_order_acquire) != noKey)
        return;
    const LockGuard guard;
    if (threadKey.load(relaxed) != noKey)
        return;
    pthread_key_t key;
    if (pthread_key_create(&key, nullptr) == 0)
        threadKey.store(static_cast<int>(key), std::memory_order_release);
}

WorkPoolRecord* own_record() {
    const int key = threadKey.load(relaxed);
    return key == noKey ? nullptr : static_cast<WorkPoolRecord*>(pthread_getspecific(static_cast<pthread_key_t>(key)));
}

// A record for the calling thread, or null if the table is full or memory exhausted.
WorkPoolRecord* make_record() {
    if (recordCount.load(relaxed) >= poolRecords || threadKey.load(relaxed) == noKey)
        return nullptr;
    const LockGuard guard;
    const int count = recordCount.load(relaxed);
    if (count >= poolRecords)
        return nullptr;
    void* block = allocatorSlots.malloc(sizeof(WorkPoolRecord));
    if (!block)
        return nullptr;
    auto* record = new (block) WorkPoolRecord;
    if (pthread_setspecific(static_cast<pthread_key_t>(threadKey.load(relaxed)), record) != 0) {
        allocatorSlots.free(block);
        return nullptr;
    }
    recordTable[count] = record;
    recordCount.store(count + 1, relaxed);
    return record;
}

void* take(PoolSlot& slot, std::size_t size, Alignment alignment) {
    slot.inUse.store(1, relaxed);
    slot.requested.store(static_cast<std::uint32_t>(size), relaxed);
    const auto raw = reinterpret_cast<std::uintptr_t>(slot.raw.load(relaxed));
    const auto aligned = (raw & alignment.mask) == 0 ? raw : (raw & ~alignment.mask) + alignment.allowance;
    slot.aligned.store(reinterpret_cast<void*>(aligned), relaxed);
    return reinterpret_cast<void*>(aligned);
}

// Puts a new block into a slot whose old one, if any, has been freed. A refused block leaves the slot held for
// good, with its size counted: the caller gets null and falls back.
void refill(WorkPoolRecord& record, PoolSlot& slot, std::uint32_t need) {
    slot.raw.store(allocatorSlots.malloc(need), relaxed);
    slot.capacity.store(need, relaxed);
    record.totalBytes += need;
}

// The slot that serves `need` bytes: an exact match, else a new slot, else the first larger one, else the first
// smaller one refilled; null if all are held.
PoolSlot* find_slot(WorkPoolRecord& record, std::uint32_t need) {
    const int count = record.count.load(relaxed);
    PoolSlot* bigger = nullptr;
    PoolSlot* smaller = nullptr;
    for (int s = 0; s < count; ++s) {
        PoolSlot& slot = record.slots[s];
        if (slot.inUse.load(relaxed))
            continue;
        const std::uint32_t capacity = slot.capacity.load(relaxed);
        if (capacity == need)
            return &slot;
        PoolSlot*& candidate = capacity > need ? bigger : smaller;
        if (!candidate)
            candidate = &slot;
    }
    if (count < poolSlots) {
        PoolSlot& slot = record.slots[count];
        refill(record, slot, need);
        record.count.store(count + 1, relaxed);
        return &slot;
    }
    if (bigger)
        return bigger;
    if (smaller) {
        if (void* old = smaller->raw.load(relaxed)) {
            allocatorSlots.free(old);
            record.totalBytes -= smaller->capacity.load(relaxed);
        }
        refill(record, *smaller, need);
    }
    return smaller;
}

// Marks the slot that holds `address` as free. False if the record has no such slot.
bool release(WorkPoolRecord& record, const void* address) {
    const int count = record.count.load(relaxed);
    for (int s = 0; s < count; ++s) {
        PoolSlot& slot = record.slots[s];
        if (slot.aligned.load(relaxed) == address && slot.raw.load(relaxed)) {
            slot.inUse.store(0, relaxed);
            return true;
        }
    }
    return false;
}

// Frees the free buffers of a record. Result: whether one of its buffers is held.
bool clear_free_slots(WorkPoolRecord& record) {
    bool held = false;
    for (int s = 0; s < record.count.load(relaxed); ++s) {
        PoolSlot& slot = record.slots[s];
        void* raw = slot.raw.load(relaxed);
        if (!raw)
            continue;
        if (slot.inUse.load(relaxed)) {
            held = true;
            continue;
        }
        allocatorSlots.free(raw);
        slot.raw.store(nullptr, relaxed);
        slot.aligned.store(nullptr, relaxed);
        slot.requested.store(0, relaxed);
        slot.capacity.store(0, relaxed);
    }
    return held;
}

} // namespace

bool pool_enabled() {
    if (const int known = disabled.load(relaxed); known != -1)
        return known == 0;
    const LockGuard guard;
    if (disabled.load(relaxed) == -1) {
        constexpr std::size_t anyLength = static_cast<std::size_t>(-1);
        const bool off = read_variable(process_environment, "QRV_DISABLE_FAST_MM", anyLength) ||
                         read_variable(process_environment, "QRV_MM_DISABLE", anyLength);
        disabled.store(off, relaxed);
    }
    return disabled.load(relaxed) == 0;
}

} // namespace qrv

using namespace qrv;

void* qrv_serv_allocate(std::size_t size, int alignment) {
    ensure_key();
    if (size == 0)
        return nullptr;
    if (!pool_enabled() || size > pooledLimit)
        return allocatorSlots.malloc(size);
    WorkPoolRecord* record = own_record();
    if (!record)
        record = make_record();
    const Alignment normal = normalised(alignment);
    PoolSlot* slot = record ? find_slot(*record, static_cast<std::uint32_t>(size) + normal.allowance) : nullptr;
    return slot ? take(*slot, size, normal) : allocatorSlots.malloc(size);
}

void qrv_serv_deallocate(void* address) {
    if (!address)
        return;
    if (!pool_enabled()) {
        allocatorSlots.free(address);
        return;
    }
    WorkPoolRecord* own = own_record();
    if (own && release(*own, address))
        return;
    {
        const LockGuard guard;
        for (int r = 0; r < recordCount.load(relaxed); ++r)
            if (release(*recordTable[r], address))
                return;
    }
    allocatorSlots.free(address); // not pooled
}

void qrv_serv_free_buffers() {
    if (!pool_enabled())
        return;
    const LockGuard guard;
    bool held = false;
    for (int r = 0; r < recordCount.load(relaxed); ++r)
        held |= clear_free_slots(*recordTable[r]);
    if (held)
        return; // the records stay: threads still point to them
    for (int r = 0; r < recordCount.load(relaxed); ++r)
        allocatorSlots.free(recordTable[r]);
    recordCount.store(0, relaxed);
    // The other threads' pointers to their records go with the key.
    if (threadKey.load(relaxed) != noKey)
        pthread_key_delete(static_cast<pthread_key_t>(threadKey.load(relaxed)));
    threadKey.store(noKey, relaxed);
}

std::int64_t qrv_serv_memory_stat(int* buffers) {
    if (!pool_enabled()) {
        *buffers = -1;
        return 0;
    }
    const LockGuard guard;
    *buffers = 0;
    std::int64_t bytes = 0;
    for (int r = 0; r < recordCount.load(relaxed); ++r) {
        const WorkPoolRecord& record = *recordTable[r];
        *buffers += record.count.load(relaxed);
        for (const PoolSlot& slot : record.slots)
            if (slot.raw.load(relaxed))
                bytes += slot.capacity.load(relaxed);
    }
    return bytes;
}
