// Counts the distinct physical cores of a machine by visiting each processor and reading its APIC id.
//
// The machine is a template argument, so that tests count simulated ones. A Machine has
//
//   bool read_masks(ProcessorMask& process, ProcessorMask& system)   false if the system refuses
//   bool pin(int processor)            moves the calling thread there before it returns; false if it cannot
//   void restore()                     back to the mask that the calling thread had
//   CpuidWords cpuid(int leaf, int subleaf)                          on the processor pinned to
//
// The APIC id has eight bits, so at most 256 cores can be told apart. With holes in the system mask the last
// processors are not looked at: the count errs on the side of fewer threads.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <bitset>
#include <cstdint>

#include "service/cpuid.hpp"

namespace qrv {

constexpr int maxProcessors = 1024;
using ProcessorMask = std::bitset<maxProcessors>;

enum class CountOutcome {
    counted,
    confined, // the process may not use all processors of the system, which counts as one core
    refused,  // the system lets no thread choose its processors, so nothing can be counted
};

struct CoreCount {
    int physicalCores = 1;
    int logicalProcessors = 1;
    CountOutcome outcome = CountOutcome::counted;
};

// Number of APIC id bits that tell `count` things apart.
constexpr int id_width(std::uint32_t count) {
    return count <= 1 ? 0 : 32 - std::countl_zero(count - 1);
}

// How many logical processors a package and how many cores it reserves ids for.
struct PackageShape {
    std::uint32_t logicalPerPackage = 1;
    std::uint32_t coresPerPackage = 1;
};

// `hyperThreading`: leaf 1 says so and the vendor is one whose leaves 1 and 4 have the meaning used here.
template <class Machine>
PackageShape package_shape(Machine& machine, bool hyperThreading, std::uint32_t highestLeaf) {
    PackageShape shape;
    if (!hyperThreading)
        return shape;
    shape.logicalPerPackage = bits(machine.cpuid(1, 0).ebx, 16, 23);
    if (highestLeaf >= 4)
        shape.coresPerPackage = bits(machine.cpuid(4, 0).eax, 26, 31) + 1;
    return shape;
}

// Package and core fields of the APIC id of the processor pinned to, as one signature. `smtWidth` bits below them
// tell the threads of a core apart.
template <class Machine>
std::uint8_t core_signature(Machine& machine, bool hyperThreading, std::uint32_t highestLeaf, int smtWidth) {
    const std::uint32_t apicId = bits(machine.cpuid(1, 0).ebx, 24, 31);
    const PackageShape shape = package_shape(machine, hyperThreading, highestLeaf);
    const int coreWidth = id_width(shape.coresPerPackage);
    const int packageWidth = id_width(shape.logicalPerPackage);
    const std::uint32_t coreField = apicId & ((255U << smtWidth) ^ (255U << (smtWidth + coreWidth)));
    const std::uint32_t packageField = apicId & (255U << packageWidth);
    return static_cast<std::uint8_t>(coreField | packageField);
}

template <class Machine>
CoreCount qrv_serv_count_cores(Machine& machine) {
    CoreCount count;
    ProcessorMask process, system;
    if (!machine.read_masks(process, system))
        count.outcome = CountOutcome::refused;
    else if (process != system)
        count.outcome = CountOutcome::confined;
    if (count.outcome != CountOutcome::counted)
        return count;

    const CpuidWords leaf0 = machine.cpuid(0, 0);
    const bool hyperThreading = leaf0.eax >= 1 && has_known_topology_vendor(leaf0) && bit(machine.cpuid(1, 0).edx, 28);
    const PackageShape shape = package_shape(machine, hyperThreading, leaf0.eax);
    const int smtWidth = id_width(shape.logicalPerPackage / shape.coresPerPackage);

    std::array<std::uint8_t, maxProcessors> signatures{}; // by processor number, 0 where there is none
    int visited = 0;
    int highest = maxProcessors - 1;
    while (highest >= 0 && !system[static_cast<std::size_t>(highest)])
        --highest;
    for (int processor = 0; processor <= highest; ++processor) {
        if (!machine.pin(processor))
            continue;
        signatures[static_cast<std::size_t>(processor)] = core_signature(machine, hyperThreading, leaf0.eax, smtWidth);
        ++visited;
    }
    machine.restore();

    count.logicalProcessors = visited;
    // The first `visited` entries are looked at, wherever the visited processors stand.
    const auto end = signatures.begin() + std::max(visited, 1);
    std::sort(signatures.begin(), end);
    count.physicalCores = static_cast<int>(std::unique(signatures.begin(), end) - signatures.begin());
    return count;
}

} // namespace qrv
