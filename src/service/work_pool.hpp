// Work memory: aligned scratch buffers, of which each thread keeps up to five for reuse.
//
// A repeat of the same allocation pattern on one thread costs a scan of at most five slots, without a lock and
// without a call of the allocator. Sizes above pooledLimit, and everything while the pool is off
// (QRV_DISABLE_FAST_MM or QRV_MM_DISABLE set), come from malloc as they are, so alignment is honoured for pooled
// blocks only. A caller that cannot live with an unaligned block aligns inside its buffer.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qrv/service.h"

// `size` bytes at `alignment` (a power of two; others above 4 are taken as 32, below 4 as none), or null if size
// is 0 or memory is exhausted.
extern "C" void* qrv_serv_allocate(std::size_t size, int alignment);

// Gives back a block of qrv_serv_allocate, on any thread. Null does nothing.
extern "C" void qrv_serv_deallocate(void* address);

namespace qrv {

constexpr std::size_t pooledLimit = 0x2800000; // bytes; larger blocks are not kept
constexpr int poolSlots = 5;                   // buffers kept per thread
constexpr int poolRecords = 8193;              // threads that get a record; later ones allocate unpooled

constexpr std::uint32_t heldSlot = ~0U; // in place of the capacity of a slot that a caller holds

struct Fit {
    int slot;    // -1: all are held
    bool refill; // its block, if any, does not fit
};

// Which of the first `count` slots, whose capacities `capacity(slot)` gives, serves `need` bytes: an exact match, else
// a new slot, else the first larger one as it is, else the first smaller one with a new block.
template <class Capacity>
constexpr Fit best_fit(int count, std::uint32_t need, Capacity capacity) {
    int larger = -1, smaller = -1;
    for (int slot = 0; slot < count; ++slot) {
        const std::uint32_t free = capacity(slot);
        if (free == need)
            return {slot, false};
        if (free == heldSlot)
            continue;
        int& candidate = free > need ? larger : smaller;
        if (candidate < 0)
            candidate = slot;
    }
    if (count < poolSlots)
        return {count, true};
    return larger >= 0 ? Fit{larger, false} : Fit{smaller, true};
}

// The C runtime's allocator, through which all work memory goes. Tests count and refuse calls here.
struct AllocatorSlots {
    void* (*malloc)(std::size_t);
    void* (*calloc)(std::size_t, std::size_t);
    void* (*realloc)(void*, std::size_t);
    void (*free)(void*);
};
extern AllocatorSlots allocatorSlots;

// Called on a thread that begins to keep buffers. They stay when it ends; in libqrv_blas, whose callers do not know of
// them, they are freed then (interop/thread_end.cpp).
void keep_buffers_of_thread();

// Whether buffers are kept at all; reads the environment on first use.
bool pool_enabled();

} // namespace qrv
