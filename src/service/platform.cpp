#include "service/platform.hpp"

#include <omp.h>
#include <sched.h>
#include <unistd.h>

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

ProcessorMask runtime_places() {
    ProcessorMask mask;
    int ids[maxProcessors];
    for (int place = 0; place < omp_get_num_places(); ++place) {
        const int count = omp_get_place_num_procs(place);
        if (count > maxProcessors)
            continue;
        omp_get_place_proc_ids(place, ids);
        for (int i = 0; i < count; ++i)
            if (ids[i] >= 0 && ids[i] < maxProcessors)
                mask[static_cast<std::size_t>(ids[i])] = true;
    }
    return mask;
}

} // namespace

bool AffinityMachine::read_masks(ProcessorMask& process, ProcessorMask& system) {
    const ProcessorMask places = runtime_places(); // first, as the runtime may bind the calling thread when asked
    cpu_set_t leader;
    if (sched_getaffinity(callingThread, sizeof own, &own) != 0 ||
        sched_getaffinity(getpid(), sizeof leader, &leader) != 0)
        return false;
    process = to_mask(leader) | places;

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

CpuidWords AffinityMachine::cpuid(int leaf, int subleaf) {
    return qrv::cpuid(leaf, subleaf);
}

} // namespace qrv
