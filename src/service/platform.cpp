#include "service/platform.hpp"

#include <sched.h>

namespace qrv {
namespace {

static_assert(maxProcessors == CPU_SETSIZE);

ProcessorMask to_mask(const cpu_set_t& set) {
    ProcessorMask mask;
    for (int processor = 0; processor < maxProcessors; ++processor)
        mask[static_cast<std::size_t>(processor)] = CPU_ISSET(processor, &set);
    return mask;
}

constexpr pid_t callingThread = 0;

} // namespace

bool AffinityMachine::read_masks(ProcessorMask& process, ProcessorMask& system) {
    if (sched_getaffinity(callingThread, sizeof own, &own) != 0)
        return false;
    process = to_mask(own);

    // Asked for every processor there could be, the kernel grants those that the system (or the container that
    // stands for it) has.
    cpu_set_t all;
    CPU_ZERO(&all);
    for (int processor = 0; processor < maxProcessors; ++processor)
        CPU_SET(processor, &all);
    cpu_set_t granted;
    CPU_ZERO(&granted);
    const bool known = sched_setaffinity(callingThread, sizeof all, &all) == 0 &&
                       sched_getaffinity(callingThread, sizeof granted, &granted) == 0;
    restore();
    system = to_mask(granted);
    return known;
}

bool AffinityMachine::pin(int processor) {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(processor, &one);
    return sched_setaffinity(callingThread, sizeof one, &one) == 0;
}

void AffinityMachine::restore() {
    sched_setaffinity(callingThread, sizeof own, &own);
}

void AffinityMachine::yield() {
    sched_yield();
}

CpuidWords AffinityMachine::cpuid(int leaf, int subleaf) {
    return qrv::cpuid(leaf, subleaf);
}

} // namespace qrv
