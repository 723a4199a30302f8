// The CPUID instruction and the words it answers with.
#pragma once

#include <cstdint>

// Executes CPUID and stores EAX, EBX, ECX, EDX.
extern "C" void qrv_serv_cpuid(int leaf, int subleaf, int* eax, int* ebx, int* ecx, int* edx);

namespace qrv {

struct CpuidWords {
    std::uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
};

CpuidWords cpuid(int leaf, int subleaf = 0);

// Bits first to last of a register word.
constexpr std::uint32_t bits(std::uint32_t word, int first, int last) {
    return (word << (31 - last)) >> (31 - last + first);
}
constexpr bool bit(std::uint32_t word, int position) {
    return (word >> position) & 1;
}

// The vendor whose package, core and thread fields of leaves 1 and 4 the core count understands.
constexpr bool has_known_topology_vendor(const CpuidWords& leaf0) {
    return leaf0.ebx == 0x756E6547 && leaf0.edx == 0x49656E69 && leaf0.ecx == 0x6C65746E;
}

} // namespace qrv
