// Affinity of the calling thread on this operating system, as the core count needs it.
#pragma once

#include <sched.h>

#include "service/core_count.hpp"

namespace qrv {

// The process mask is the calling thread's; the system mask is the widest that the thread could be given.
struct AffinityMachine {
    bool read_masks(ProcessorMask& process, ProcessorMask& system);
    bool pin(int processor);
    void restore();
    void yield();
    CpuidWords cpuid(int leaf, int subleaf);

    cpu_set_t own{}; // the calling thread's mask on entry
};

} // namespace qrv
