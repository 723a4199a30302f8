#include "service/work_pool.hpp"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "service/environment.hpp"
#include "service/lock.hpp"

namespace qrv {

AllocatorSlots allocatorSlots{std::malloc, std::calloc, std::realloc, std::free};

namespace {

// One buffer of a thread. The owning thread works on it without a lock; others read it, and write inUse and what
// qrv_serv_free_buffers clears, under the lock. So all fields are atomic. Who releases a buffer and who takes it next
// may be two threads: inUse hands over what was done in it.
struct PoolSlot {
    std::atomic<void*> raw{nullptr};        // what the allocator returned
    std::atomic<void*> aligned{nullptr};    // what the caller was given
    std::atomic<std::uint32_t> capacity{0}; // size of raw, the alignment allowance included
    std::atomic<int> inUse{0};
};

// The buffers of one thread: the first `count` slots are filled, in index order.
struct WorkPoolRecord {
    PoolSlot slots[poolSlots];
    std::atomic<int> count{0};
    int place = 0; // in the table; changed under the lock
};

constexpr auto relaxed = std::memory_order_relaxed;

std::atomic<int> disabled{-1}; // 1 off, 0 on, -1 not read
// Changed under the lock.
WorkPoolRecord* recordTable[poolRecords];
std::atomic<int> recordCount{0};
std::atomic<unsigned> generation{0}; // how often all records were freed

// The calling thread's record, unless its generation is gone.
struct OwnRecord {
    WorkPoolRecord* record;
    unsigned generation;
};
constinit thread_local OwnRecord own{nullptr, 0};

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

WorkPoolRecord* own_record() {
    return own.generation == generation.load(relaxed) ? own.record : nullptr;
}

// A record for the calling thread, or null if the table is full or memory exhausted.
WorkPoolRecord* make_record() {
    if (recordCount.load(relaxed) >= poolRecords)
        return nullptr;
    const LockGuard guard;
    const int count = recordCount.load(relaxed);
    if (count >= poolRecords)
        return nullptr;
    void* block = allocatorSlots.malloc(sizeof(WorkPoolRecord));
    if (!block)
        return nullptr;
    auto* record = new (block) WorkPoolRecord;
    record->place = count;
    recordTable[count] = record;
    recordCount.store(count + 1, relaxed);
    own = {record, generation.load(relaxed)};
    return record;
}

void* take(PoolSlot& slot, Alignment alignment) {
    slot.inUse.store(1, relaxed);
    const auto raw = reinterpret_cast<std::uintptr_t>(slot.raw.load(relaxed));
    const auto aligned = (raw & alignment.mask) == 0 ? raw : (raw & ~alignment.mask) + alignment.allowance;
    slot.aligned.store(reinterpret_cast<void*>(aligned), relaxed);
    return reinterpret_cast<void*>(aligned);
}

// The slot that serves `need` bytes, with a new block in it if it has none that fits; null if all are held. A refused
// block leaves the slot held for good, with its size counted: the caller gets null and falls back.
PoolSlot* find_slot(WorkPoolRecord& record, std::uint32_t need) {
    const int count = record.count.load(relaxed);
    const Fit fit = best_fit(count, need, [&](int s) {
        const PoolSlot& slot = record.slots[s];
        return slot.inUse.load(std::memory_order_acquire) ? heldSlot : slot.capacity.load(relaxed);
    });
    if (fit.slot < 0)
        return nullptr;
    PoolSlot& slot = record.slots[fit.slot];
    if (fit.refill) {
        if (void* old = slot.raw.load(relaxed))
            allocatorSlots.free(old);
        slot.raw.store(allocatorSlots.malloc(need), relaxed);
        slot.capacity.store(need, relaxed);
        if (fit.slot == count)
            record.count.store(count + 1, relaxed);
    }
    return &slot;
}

// Marks the slot that holds `address` as free. False if the record has no such slot.
bool release(WorkPoolRecord& record, const void* address) {
    const int count = record.count.load(relaxed);
    for (int s = 0; s < count; ++s) {
        PoolSlot& slot = record.slots[s];
        if (slot.aligned.load(relaxed) == address && slot.raw.load(relaxed)) {
            slot.inUse.store(0, std::memory_order_release);
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
    if (size == 0)
        return nullptr;
    if (!pool_enabled() || size > pooledLimit)
        return allocatorSlots.malloc(size);
    WorkPoolRecord* record = own_record();
    if (!record) {
        record = make_record();
        if (record)
            keep_buffers_of_thread();
    }
    const Alignment normal = normalised(alignment);
    PoolSlot* slot = record ? find_slot(*record, static_cast<std::uint32_t>(size) + normal.allowance) : nullptr;
    return slot ? take(*slot, normal) : allocatorSlots.malloc(size);
}

void qrv_serv_deallocate(void* address) {
    if (!address)
        return;
    if (!pool_enabled()) {
        allocatorSlots.free(address);
        return;
    }
    WorkPoolRecord* record = own_record();
    if (record && release(*record, address))
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
    generation.fetch_add(1, relaxed); // the other threads' pointers to their records
}

void qrv_serv_free_thread_buffers() {
    WorkPoolRecord* record = pool_enabled() ? own_record() : nullptr;
    if (!record)
        return;
    const LockGuard guard;
    if (clear_free_slots(*record))
        return; // whoever holds the buffer will look for its record
    const int last = recordCount.load(relaxed) - 1;
    recordTable[record->place] = recordTable[last];
    recordTable[record->place]->place = record->place;
    recordCount.store(last, relaxed);
    own.record = nullptr;
    allocatorSlots.free(record);
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
