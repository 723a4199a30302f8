// Processor classes, cache tables and dispatch: the pure decisions over recorded words, and what a fresh process
// makes of its environment.
#include <gtest/gtest.h>

#include "service/dispatch.hpp"
#include "service/processor.hpp"
#include "support/child.hpp"

namespace qrv::test {
namespace {

constexpr std::uint32_t sse42 = 1U << 20, sse41 = 1U << 19, ssse3 = 1U << 9, sse3 = 1U, aes = 1U << 25;
constexpr std::uint32_t sse2Edx = 1U << 26;

CpuidWords leaf1(std::uint32_t ecx, std::uint32_t edx = sse2Edx) {
    return {0, 0, ecx, edx};
}

TEST(CpuType, LadderTakesTheHighestClass) {
    EXPECT_EQ(cpu_type_of(leaf1(sse42 | sse41 | ssse3 | sse3)), 5);
    EXPECT_EQ(cpu_type_of(leaf1(sse42)), 5) << "each class has one bit of its own";
    EXPECT_EQ(cpu_type_of(leaf1(sse41 | ssse3 | sse3)), 4);
    EXPECT_EQ(cpu_type_of(leaf1(ssse3 | sse3)), 4);
    EXPECT_EQ(cpu_type_of(leaf1(sse3)), 3);
    EXPECT_EQ(cpu_type_of(leaf1(0)), 2);
    EXPECT_EQ(cpu_type_of(leaf1(0, ~sse2Edx)), 0);
    EXPECT_EQ(cpu_type_of({}), 0) << "a machine that answers nothing";
}

TEST(CpuType, Override) {
    const struct {
        const char* text;
        int expected;
    } rows[] = {{nullptr, unknown}, {"", unknown},   {"0", 0},         {"00", unknown},
                {" 0", unknown},    {"0x", unknown}, {"1", 0},         {"2", 2},
                {"2x", 2},          {" 3", 3},       {"+4", 4},        {"5", 5},
                {"6", unknown},     {"-1", unknown}, {"abc", unknown}, {"99999999999999999999", unknown}};
    for (const auto& row : rows)
        EXPECT_EQ(cpu_type_override(row.text), row.expected) << (row.text ? row.text : "unset");
}

TEST(CpuMa, ByClassAndOverride) {
    EXPECT_EQ(cpu_ma_of(5, leaf1(aes), 0), 66);
    EXPECT_EQ(cpu_ma_of(5, leaf1(0), 0), 64);
    EXPECT_EQ(cpu_ma_of(5, leaf1(0), 66), 66);
    EXPECT_EQ(cpu_ma_of(5, leaf1(aes), 64), 64);
    EXPECT_EQ(cpu_ma_of(5, leaf1(aes), 65), 66) << "only 64 and 66 are overrides";
    EXPECT_EQ(cpu_ma_of(4, leaf1(sse41), 66), 33);
    EXPECT_EQ(cpu_ma_of(4, leaf1(0), 66), 32);
    for (const int type : {0, 2, 3})
        EXPECT_EQ(cpu_ma_of(type, leaf1(aes | sse41), 66), 0);
}

TEST(L2Class, LastKnownDescriptorWins) {
    EXPECT_EQ(l2_class_of({0x00427B01, 0, 0, 0}), 2) << "0x7B, then 0x42";
    EXPECT_EQ(l2_class_of({0x007B4201, 0, 0, 0}), 3);
    EXPECT_EQ(l2_class_of({0x00000042, 0, 0, 0}), -1) << "the low byte of EAX is a repeat count";
    EXPECT_EQ(l2_class_of({0, 0x00000042, 0, 0}), 2) << "the low byte of EBX is a descriptor";
    EXPECT_EQ(l2_class_of({0, 0x80000042, 0, 0x43}), 3) << "a register with bit 31 set holds none";
    EXPECT_EQ(l2_class_of({1, 0x45, 0x40, 0}), 0) << "EBX before ECX";
    EXPECT_EQ(l2_class_of({0x665B5001, 0, 0, 0x007A7040}), 2);
    EXPECT_EQ(l2_class_of({}), -1);
    const struct {
        std::uint32_t descriptor;
        int expected;
    } rows[] = {{0x40, 0}, {0x41, 1}, {0x79, 1}, {0x42, 2}, {0x7A, 2}, {0x82, 2}, {0x43, 3}, {0x7B, 3}, {0x83, -1},
                {0x44, 4}, {0x7C, 4}, {0x84, 4}, {0x45, 5}, {0x7D, 5}, {0x85, 5}, {0x49, 6}, {0x4A, -1}};
    for (const auto& row : rows)
        EXPECT_EQ(l2_class_of({1, 0, row.descriptor, 0}), row.expected) << std::hex << row.descriptor;
}

// Words of leaf 4 for a cache of the given geometry.
CpuidWords cache(std::uint32_t type, std::uint32_t ways, std::uint32_t line, std::uint32_t sets) {
    return {type, (ways - 1) << 22 | (line - 1), sets - 1, 0};
}

TEST(Caches, ListSkipsInstructionCaches) {
    const CpuidWords machine[] = {
        cache(1, 8, 64, 64), cache(2, 8, 64, 64), cache(3, 4, 64, 1024), cache(3, 12, 64, 4096), {}};
    const CacheList list = caches_of([&](int subleaf) { return machine[subleaf]; });
    ASSERT_EQ(list.count, 3);
    EXPECT_EQ(list.size(1), 32 << 10);
    EXPECT_EQ(list.size(2), 256 << 10);
    EXPECT_EQ(list.size(3), 3 << 20);
    EXPECT_EQ(list.size(0), 3 << 20) << "level 0 is the last one";
    EXPECT_EQ(list.size(4), -1);
    EXPECT_EQ(list.size(-1), -1);
}

TEST(Caches, StrangeMachines) {
    EXPECT_EQ(caches_of([](int) { return CpuidWords{}; }).size(0), -1) << "no cache at all";
    const CacheList endless = caches_of([](int) { return cache(1, 8, 64, 64); });
    EXPECT_EQ(endless.count, 32) << "a leaf that never ends";
    const CacheList huge = caches_of([](int s) { return s == 0 ? CpuidWords{1, ~0U, ~0U, 0} : CpuidWords{}; });
    EXPECT_EQ(huge.size(1), std::numeric_limits<int>::max());
    const CacheList noSets = caches_of([](int) { return CpuidWords{1, 63, 0, 0}; });
    EXPECT_EQ(noSets.count, 0) << "a zero in ECX ends the walk";
}

TEST(Dispatch, PickKnowsTheFiveClasses) {
    using Kernel = int();
    constexpr Variants<Kernel> variants{[] { return 0; }, [] { return 2; }, [] { return 3; }, [] { return 4; },
                                        [] { return 5; }};
    for (const int type : {0, 2, 3, 4, 5})
        EXPECT_EQ(pick(variants, type)(), type);
    EXPECT_EQ(pick(variants, 1), nullptr);
    EXPECT_EQ(pick(variants, 6), nullptr);
    EXPECT_EQ(pick(variants, 5, VectorForm::avx512)(), 5) << "a routine without forms of its own";
    constexpr Variants<Kernel> forms{variants.generic, variants.sse2,     variants.sse3,    variants.ssse3,
                                     variants.sse42,   [] { return 52; }, [] { return 53; }};
    EXPECT_EQ(pick(forms, 5)(), 5);
    EXPECT_EQ(pick(forms, 5, VectorForm::avx2)(), 52);
    EXPECT_EQ(pick(forms, 5, VectorForm::avx512)(), 53);
    EXPECT_EQ(pick(forms, 4, VectorForm::avx512)(), 4);
    DispatchSlot<Kernel> slot(variants);
    EXPECT_EQ(slot(), qrv_serv_get_cpu_type()) << "first call";
    EXPECT_EQ(slot(), qrv_serv_get_cpu_type()) << "second call";
}

TEST(ProcessorEnvironment, ForcedClasses) {
    const std::string detected = std::to_string(cpu_type_of(cpuid(1)));
    const struct {
        Environment environment;
        const char* cpuType; // null: as detected
        const char* cpuMa;   // null: not looked at
    } rows[] = {
        {{{"QRV_DEBUG_CPU_TYPE", "1"}}, "0", "0"},
        {{{"QRV_DEBUG_CPU_TYPE", "0"}}, "0", "0"},
        {{{"QRV_DEBUG_CPU_TYPE", "2x"}}, "2", "0"},
        {{{"QRV_DEBUG_CPU_TYPE", "5"}, {"QRV_DEBUG_CPU_MA", "64"}}, "5", "64"},
        {{{"QRV_DEBUG_CPU_TYPE", "5"}, {"QRV_DEBUG_CPU_MA", "66"}}, "5", "66"},
        {{{"QRV_DEBUG_CPU_TYPE", "3"}, {"QRV_DEBUG_CPU_MA", "66"}}, "3", "0"},
        {{{"QRV_DEBUG_CPU_TYPE", "6"}}, nullptr, nullptr},
        {{{"QRV_DEBUG_CPU_TYPE", "00"}}, nullptr, nullptr},
        {{{"QRV_DEBUG_CPU_TYPE", ""}}, nullptr, nullptr},
        {{{"QRV_DEBUG_CPU_TYPE", "2                               "}}, nullptr, nullptr}, // beyond its room
        {{}, nullptr, nullptr},
    };
    for (const auto& row : rows) {
        auto found = probe({"processor"}, row.environment);
        EXPECT_EQ(found["cpu_type"], row.cpuType ? row.cpuType : detected);
        if (row.cpuMa) {
            EXPECT_EQ(found["cpu_ma"], row.cpuMa);
        }
    }
}

TEST(ProcessorEnvironment, ReadOnce) {
    auto found = probe({"processor", "set_QRV_DEBUG_CPU_TYPE=3", "processor"}, {{"QRV_DEBUG_CPU_TYPE", "2"}});
    EXPECT_EQ(found["cpu_type"], "2");
}

TEST(VectorForms, NeedProcessorAndSystem) {
    constexpr std::uint32_t fma = 1U << 12, osxsave = 1U << 27, avx = 1U << 28;
    constexpr std::uint32_t avx2 = 1U << 5, f = 1U << 16, dq = 1U << 17, bw = 1U << 30, vl = 1U << 31;
    const auto form = [](std::uint32_t ecx1, std::uint32_t ebx7, std::uint32_t xcr0) {
        CpuidWords leaf1, leaf7;
        leaf1.ecx = ecx1;
        leaf7.ebx = ebx7;
        return vector_form_of(leaf1, leaf7, xcr0);
    };
    constexpr std::uint32_t all1 = fma | osxsave | avx, all7 = avx2 | f | dq | bw | vl, allStates = 0xE7;
    EXPECT_EQ(form(all1, all7, allStates), VectorForm::avx512);
    for (const std::uint32_t missing : {fma, osxsave, avx})
        EXPECT_EQ(form(all1 & ~missing, all7, allStates), VectorForm::sse) << missing;
    EXPECT_EQ(form(all1, all7 & ~avx2, allStates), VectorForm::sse);
    for (const std::uint32_t missing : {f, dq, bw, vl})
        EXPECT_EQ(form(all1, all7 & ~missing, allStates), VectorForm::avx2) << missing;
    for (const std::uint32_t missing : {0x20U, 0x40U, 0x80U})
        EXPECT_EQ(form(all1, all7, allStates & ~missing), VectorForm::avx2) << missing;
    for (const std::uint32_t missing : {0x2U, 0x4U})
        EXPECT_EQ(form(all1, all7, allStates & ~missing), VectorForm::sse) << missing;
}

TEST(VectorForms, CanBeRestricted) {
    const VectorForm widest = vector_form();
    restrict_vector_form(VectorForm::sse);
    EXPECT_EQ(vector_form(), VectorForm::sse);
    restrict_vector_form(VectorForm::avx512);
    EXPECT_EQ(vector_form(), widest);
}

} // namespace
} // namespace qrv::test
