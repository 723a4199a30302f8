#include "service/processor.hpp"

#include <atomic>
#include <cpuid.h>
#include <cstdlib>
#include <cstring>
#include <x86intrin.h>

#include "service/environment.hpp"
#include "service/lock.hpp"

namespace qrv {
namespace {

constexpr std::size_t overrideRoom = 32; // characters of an override's text, NUL included

constexpr int undecided = -1;
constexpr int l2Undecided = -2; // -1 is an answer: a processor that lists no known descriptor
std::atomic<int> cpuTypeWord{undecided};
std::atomic<int> cpuMaWord{undecided};
std::atomic<int> l2ClassWord{l2Undecided};
std::atomic<bool> cpuTypeForced{false};
std::atomic<int> vectorFormWord{undecided};
std::atomic<VectorForm> widestAllowed{VectorForm::avx512};

CacheList cacheList; // written once, under the lock, before cachesKnown
std::atomic<bool> cachesKnown{false};

// The usual leading-number conversion, with texts beyond the range of int at its ends.
int leading_number(const char* text) {
    const long value = std::strtol(text, nullptr, 10);
    constexpr long largest = std::numeric_limits<int>::max();
    return static_cast<int>(value > largest ? largest : value < -largest ? -largest : value);
}

// CPUID exists if bit 21 of EFLAGS can be changed.
bool has_cpuid() {
    constexpr auto idFlag = 1U << 21;
    const auto before = __readeflags();
    __writeeflags(before ^ idFlag);
    const auto after = __readeflags();
    __writeeflags(before);
    return ((before ^ after) & idFlag) != 0;
}

// The vendor plays no part: every processor runs the same ladder.
int detect_cpu_type() {
    return has_cpuid() ? cpu_type_of(cpuid(1)) : 0;
}

// XCR0, or 0 where it cannot be read.
std::uint32_t extended_state() {
    constexpr int osxsave = 27;
    if (!bit(cpuid(1).ecx, osxsave))
        return 0;
    std::uint32_t low, high;
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

#ifdef QRV_WIDE_KERNELS
constexpr bool wideKernels = true;
#else
constexpr bool wideKernels = false;
#endif

VectorForm detect_vector_form() {
    constexpr std::uint32_t featureLeaf = 7;
    if (!wideKernels || !has_cpuid() || cpuid(0).eax < featureLeaf)
        return VectorForm::sse;
    return vector_form_of(cpuid(1), cpuid(featureLeaf), extended_state());
}

CacheList detect_caches() {
    return caches_of_machine([](std::uint32_t leaf, int subleaf) { return cpuid(static_cast<int>(leaf), subleaf); });
}

const CacheList& caches() {
    if (!cachesKnown.load(std::memory_order_acquire)) {
        const CacheList found = detect_caches(); // CPUID is slow on virtual machines: not under the lock
        const LockGuard guard;
        if (!cachesKnown.load(std::memory_order_relaxed)) {
            cacheList = found;
            cachesKnown.store(true, std::memory_order_release);
        }
    }
    return cacheList;
}

} // namespace

CpuidWords cpuid(int leaf, int subleaf) {
    CpuidWords words;
    __cpuid_count(leaf, subleaf, words.eax, words.ebx, words.ecx, words.edx);
    return words;
}

int cpu_type_override(const char* text) {
    if (!text)
        return unknown;
    const int value = leading_number(text);
    if (value == 0 && std::strcmp(text, "0") == 0)
        return 0;
    if (value < 1 || value > 5)
        return unknown;
    return value == 1 ? 0 : value;
}

// Without a lock: threads that come here at once compute the same value.
VectorForm vector_form() {
    int detected = vectorFormWord.load(std::memory_order_relaxed);
    if (detected == undecided) {
        detected = static_cast<int>(detect_vector_form());
        vectorFormWord.store(detected, std::memory_order_relaxed);
    }
    const VectorForm allowed = widestAllowed.load(std::memory_order_relaxed);
    return detected < static_cast<int>(allowed) ? static_cast<VectorForm>(detected) : allowed;
}

VectorForm vector_form_in_use() {
    constexpr int sse42Class = 5;
    return qrv_serv_get_cpu_type() == sse42Class ? vector_form() : VectorForm::sse;
}

void restrict_vector_form(VectorForm most) {
    widestAllowed.store(most, std::memory_order_relaxed);
}

const char* kernel_variant_name(int cpuType) {
    switch (cpuType) {
    case 5:
        return "sse42";
    case 4:
        return "ssse3";
    case 3:
        return "sse3";
    case 2:
        return "sse2";
    default:
        return "generic";
    }
}

CpuTypeOrigin cpu_type_origin() {
    qrv_serv_get_cpu_type();
    return cpuTypeForced.load(std::memory_order_relaxed) ? CpuTypeOrigin::forced : CpuTypeOrigin::detected;
}

} // namespace qrv

using namespace qrv;

void qrv_serv_cpuid(int leaf, int subleaf, int* eax, int* ebx, int* ecx, int* edx) {
    const CpuidWords words = cpuid(leaf, subleaf);
    *eax = static_cast<int>(words.eax);
    *ebx = static_cast<int>(words.ebx);
    *ecx = static_cast<int>(words.ecx);
    *edx = static_cast<int>(words.edx);
}

int qrv_serv_get_cpu_type() {
    if (const int known = cpuTypeWord.load(std::memory_order_relaxed); known >= 0)
        return known;
    const LockGuard guard;
    if (const int known = cpuTypeWord.load(std::memory_order_relaxed); known >= 0)
        return known;
    const int forced = cpu_type_override(read_variable(process_environment, "QRV_DEBUG_CPU_TYPE", overrideRoom));
    cpuTypeForced.store(forced != unknown, std::memory_order_relaxed);
    const int decided = forced != unknown ? forced : detect_cpu_type();
    cpuTypeWord.store(decided, std::memory_order_relaxed);
    return decided;
}

// Without a lock: threads that come here at once compute the same value.
int qrv_serv_get_cpu_ma() {
    if (const int known = cpuMaWord.load(std::memory_order_relaxed); known != undecided)
        return known;
    const char* text = read_variable(process_environment, "QRV_DEBUG_CPU_MA", overrideRoom);
    const int decided = cpu_ma_of(qrv_serv_get_cpu_type(), cpuid(1), text ? leading_number(text) : 0);
    cpuMaWord.store(decided, std::memory_order_relaxed);
    return decided;
}

int qrv_serv_get_l2_class() {
    if (const int known = l2ClassWord.load(std::memory_order_relaxed); known != l2Undecided)
        return known;
    const int decided = l2_class_of(cpuid(2));
    l2ClassWord.store(decided, std::memory_order_relaxed);
    return decided;
}

int qrv_serv_get_cache_size(int level) {
    return caches().size(level);
}

int qrv_serv_get_cache_sizes(int* sizes) {
    constexpr int room = 4; // words behind the count
    const CacheList& list = caches();
    sizes[0] = list.count;
    for (int level = 1; level <= list.count && level <= room; ++level)
        sizes[level] = list.size(level);
    return list.count;
}
