// Affinity on this operating system, as the core count needs it.
#pragma once

#include <sched.h>

#include "service/core_count.hpp"

namespace qrv {

// The process mask is that of its first thread with the places of the OpenMP runtime, which may have bound that thread
// to one of them; a mask of the calling thread alone does not confine the process. The system mask is the widest that
// the calling thread could be given.
struct AffinityMachine {
    bool read_masks(ProcessorMask& process, ProcessorMask& system);
    bool pin(int processor);
    void restore();
    CpuidWords cpuid(int leaf, int subleaf);

    cpu_set_t own{}; // the calling thread's mask on entry
};

} // namespace qrv
