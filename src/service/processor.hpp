// Processor class, micro-architecture class and cache sizes: decisions over CPUID words, each made once.
//
//   CpuType   5 sse42, 4 ssse3, 3 sse3, 2 sse2, 0 generic: selects the kernel builds
//   CpuMa     66, 64 (class 5 with, without AES), 33, 32 (class 4 with, without SSE4.1), else 0: tuning
//
// The functions in namespace qrv decide over words and texts that a test can supply; the qrv_serv_ routines ask
// this machine and keep the answer. The environment is read at the first decision and never again.
#pragma once

#include <array>
#include <cstdint>
#include <limits>

#include "qrv/service.h"
#include "service/cpuid.hpp"
#include "service/vector_form.hpp"

namespace qrv {

constexpr int unknown = -1; // a decision not made, an override not given, a class without a name

// ---- CpuType ---------------------------------------------------------------------------------------------

constexpr int cpu_type_of(const CpuidWords& leaf1) {
    if (bit(leaf1.ecx, 20))
        return 5;
    if (bit(leaf1.ecx, 9))
        return 4;
    if (bit(leaf1.ecx, 0))
        return 3;
    if (bit(leaf1.edx, 26))
        return 2;
    return 0;
}

// Value of QRV_DEBUG_CPU_TYPE (null if unset) as a CpuType, or unknown if it is no valid override: a leading
// number 1 to 5, where 1 means 0, or exactly "0".
int cpu_type_override(const char* text);

// The KernelVariant of a CpuType: "generic", "sse2", "sse3", "ssse3" or "sse42".
const char* kernel_variant_name(int cpuType);

// ---- CpuMa -----------------------------------------------------------------------------------------------

// `forced` is the leading number of QRV_DEBUG_CPU_MA, 0 if unset; only 64 and 66 in class 5 have an effect.
constexpr int cpu_ma_of(int cpuType, const CpuidWords& leaf1, int forced) {
    if (cpuType == 5) {
        if (forced == 64 || forced == 66)
            return forced;
        return bit(leaf1.ecx, 25) ? 66 : 64;
    }
    if (cpuType == 4)
        return bit(leaf1.ecx, 19) ? 33 : 32;
    return 0;
}

// ---- Vector form -----------------------------------------------------------------------------------------

// The widest form that processor and operating system support: leaves 1 and 7 (subleaf 0) of CPUID, and the states
// that the system saves, register XCR0.
constexpr VectorForm vector_form_of(const CpuidWords& leaf1, const CpuidWords& leaf7, std::uint32_t xcr0) {
    constexpr std::uint32_t ymmState = 0x06, zmmState = 0xE0; // SSE and AVX; masks, upper halves, upper registers
    const bool osSaves = bit(leaf1.ecx, 27);
    const bool avx2 = bit(leaf1.ecx, 28) && bit(leaf1.ecx, 12) && bit(leaf7.ebx, 5);
    if (!osSaves || !avx2 || (xcr0 & ymmState) != ymmState)
        return VectorForm::sse;
    const bool avx512 = bit(leaf7.ebx, 16) && bit(leaf7.ebx, 17) && bit(leaf7.ebx, 30) && bit(leaf7.ebx, 31);
    return avx512 && (xcr0 & zmmState) == zmmState ? VectorForm::avx512 : VectorForm::avx2;
}

// ---- Caches ----------------------------------------------------------------------------------------------

// Class of the second-level cache by the descriptors of leaf 2, or unknown. Registers with bit 31 set hold none,
// nor does the low byte of EAX; of several known descriptors the last counts.
constexpr int l2_class_of(const CpuidWords& leaf2) {
    int found = unknown;
    const std::uint32_t registers[] = {leaf2.eax, leaf2.ebx, leaf2.ecx, leaf2.edx};
    for (int r = 0; r < 4; ++r) {
        if (bit(registers[r], 31))
            continue;
        for (int byte = r == 0 ? 1 : 0; byte < 4; ++byte) {
            switch (bits(registers[r], 8 * byte, 8 * byte + 7)) {
            case 0x40:
                found = 0;
                break; // no second level
            case 0x41:
            case 0x79:
                found = 1;
                break; // 128 KB
            case 0x42:
            case 0x7A:
            case 0x82:
                found = 2;
                break; // 256 KB
            case 0x43:
            case 0x7B:
                found = 3;
                break; // 512 KB
            case 0x44:
            case 0x7C:
            case 0x84:
                found = 4;
                break; // 1 MB
            case 0x45:
            case 0x7D:
            case 0x85:
                found = 5;
                break; // 2 MB
            case 0x49:
                found = 6;
                break; // 4 MB
            default:
                break;
            }
        }
    }
    return found;
}

// Sizes in bytes of the data and unified caches, in the order of leaf 4.
struct CacheList {
    static constexpr int subleaves = 32;
    int count = 0;
    std::array<int, subleaves> bytes{};

    // Size of a level counted from 1, of the last one for level 0, -1 if there is none.
    constexpr int size(int level) const {
        if (level < 0 || level > count || count == 0)
            return -1;
        return bytes[static_cast<std::size_t>(level == 0 ? count - 1 : level - 1)];
    }
};

// Walks leaf 4, or another of the same form, whose words `leaf(subleaf)` gives.
template <class Leaf>
constexpr CacheList caches_of(Leaf leaf) {
    constexpr std::uint32_t noCache = 0, instructionCache = 2;
    CacheList list;
    for (int subleaf = 0; subleaf < CacheList::subleaves; ++subleaf) {
        const CpuidWords words = leaf(subleaf);
        const std::uint32_t type = bits(words.eax, 0, 4);
        if (type == noCache || words.ebx == 0 || words.ecx == 0)
            break;
        if (type == instructionCache)
            continue;
        const std::uint64_t wayBytes = std::uint64_t{bits(words.ebx, 12, 21) + 1} * (bits(words.ebx, 0, 11) + 1);
        const std::uint64_t sets = std::uint64_t{words.ecx} + 1;
        const std::uint64_t ways = bits(words.ebx, 22, 31) + 1;
        constexpr std::uint64_t largest = std::numeric_limits<int>::max();
        // Each factor is bounded before the product, so nothing overflows on absurd words.
        const std::uint64_t size = sets > largest / (wayBytes * ways) ? largest : wayBytes * ways * sets;
        list.bytes[static_cast<std::size_t>(list.count++)] = static_cast<int>(size);
    }
    return list;
}

// The caches of the processor whose words `cpuid(leaf, subleaf)` gives: those of leaf 4, or, where that names none, of
// the extended leaf in which AMD's processors tell the same. On a processor with cores of two kinds they are those of
// the core that is asked.
template <class Cpuid>
constexpr CacheList caches_of_machine(Cpuid cpuid) {
    constexpr std::uint32_t cacheLeaf = 4, extended = 0x80000000, extendedFeatures = 0x80000001,
                            extendedCacheLeaf = 0x8000001D;
    constexpr int topologyExtensions = 22; // without them the extended leaf has no meaning
    CacheList list;
    if (cpuid(0U, 0).eax >= cacheLeaf)
        list = caches_of([&](int subleaf) { return cpuid(cacheLeaf, subleaf); });
    if (list.count == 0 && cpuid(extended, 0).eax >= extendedCacheLeaf &&
        bit(cpuid(extendedFeatures, 0).ecx, topologyExtensions))
        list = caches_of([&](int subleaf) { return cpuid(extendedCacheLeaf, subleaf); });
    return list;
}

// Where the CpuType came from, for the configuration text.
enum class CpuTypeOrigin { detected, forced };
CpuTypeOrigin cpu_type_origin();

} // namespace qrv
