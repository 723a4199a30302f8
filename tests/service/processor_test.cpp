// Processor classes, cache tables and dispatch: the pure decisions over recorded words, and what a fresh process
// makes of its environment.
#include <array>
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
    const std::pair<CpuidWords, int> rows[] = {{leaf1(sse42 | sse41 | ssse3 | sse3), 5},
                                               {leaf1(sse42), 5}, // each class has one bit of its own
                                               {leaf1(sse41 | ssse3 | sse3), 4},
                                               {leaf1(ssse3), 4},
                                               {leaf1(sse3), 3},
                                               {leaf1(0), 2},
                                               {leaf1(0, ~sse2Edx), 0},
                                               {{}, 0}}; // a machine that answers nothing
    for (const auto& [words, type] : rows)
        EXPECT_EQ(cpu_type_of(words), type) << std::hex << words.ecx;
}

TEST(CpuType, Override) {
    const std::pair<const char*, int> rows[] = {
        {nullptr, unknown}, {"", unknown},   {"0", 0},         {"00", unknown},
        {" 0", unknown},    {"0x", unknown}, {"1", 0},         {"2", 2},
        {"2x", 2},          {" 3", 3},       {"+4", 4},        {"5", 5},
        {"6", unknown},     {"-1", unknown}, {"abc", unknown}, {"99999999999999999999", unknown}};
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(cpu_type_override(text), expected) << (text ? text : "unset");
}

TEST(CpuMa, ByClassAndOverride) {
    for (const auto& [forced, withAes, without] : {std::array{0, 66, 64}, {64, 64, 64}, {65, 66, 64}, {66, 66, 66}}) {
        EXPECT_EQ(cpu_ma_of(5, leaf1(aes), forced), withAes);
        EXPECT_EQ(cpu_ma_of(5, leaf1(0), forced), without);
        EXPECT_EQ(cpu_ma_of(4, leaf1(sse41), forced), 33);
        EXPECT_EQ(cpu_ma_of(4, leaf1(0), forced), 32);
        for (const int type : {0, 2, 3})
            EXPECT_EQ(cpu_ma_of(type, leaf1(aes | sse41), forced), 0);
    }
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
    const std::pair<std::uint32_t, int> rows[] = {{0x40, 0}, {0x41, 1}, {0x79, 1},  {0x42, 2}, {0x7A, 2}, {0x82, 2},
                                                  {0x43, 3}, {0x7B, 3}, {0x83, -1}, {0x44, 4}, {0x7C, 4}, {0x84, 4},
                                                  {0x45, 5}, {0x7D, 5}, {0x85, 5},  {0x49, 6}, {0x4A, -1}};
    for (const auto& [descriptor, expected] : rows)
        EXPECT_EQ(l2_class_of({1, 0, descriptor, 0}), expected) << std::hex << descriptor;
}

struct CacheMachine {
    const char* what;
    std::vector<CpuidWords> leaf4, extended; // of leaf 4 and of leaf 0x8000001D; subleaves beyond are zero
    std::vector<int> kilobytes;
    std::uint32_t highest = 0x16, highestExtended = 0x80000021, extendedFeatures = 0x004003F3;
};

// The first two as recorded.
constexpr CpuidWords of32{1, 0x01C0003F, 0x3F, 0}, of48{1, 0x02C0003F, 0x3F, 0}; // kilobytes
const std::vector<CpuidWords> recorded4{{0x1C004121, 0x01C0003F, 0x3F, 0},
                                        {0x1C004122, 0x01C0003F, 0x3F, 0},
                                        {0x1C004143, 0x00C0003F, 0x3FF, 0},
                                        {0x1C03C163, 0x03C0003F, 0x1FFF, 6}},
    recordedExtended{{0x121, 0x02C0003F, 0x3F, 0},
                     {0x122, 0x01C0003F, 0x3F, 0},
                     {0x143, 0x03C0003F, 0x3FF, 2},
                     {0x4163, 0x03C0003F, 0x7FFF, 1}};
const CacheMachine cacheMachines[] = {
    {"three levels in leaf 4, no extended leaf", recorded4, {}, {32, 256, 8192}, 0x16, 0x80000008},
    {"three levels in the extended leaf", {}, recordedExtended, {48, 1024, 32768}, 0x1C},
    {"a virtual machine that answers zeros", {}, {}, {}},
    {"leaf 4 before the extended leaf", {of32}, {of48}, {32}},
    {"an extended leaf without meaning", {}, {of48}, {}, 0x16, 0x80000021, 0},
    {"leaves that answer beyond the highest", {of32}, {of48}, {}, 3, 0x8000001C},
};

TEST(Caches, OfMachines) {
    for (const CacheMachine& machine : cacheMachines) {
        const CacheList list = caches_of_machine([&](std::uint32_t leaf, int subleaf) -> CpuidWords {
            if (leaf == 0)
                return {machine.highest, 0, 0, 0};
            if (leaf == 0x80000000)
                return {machine.highestExtended, 0, 0, 0};
            if (leaf == 0x80000001)
                return {0, 0, machine.extendedFeatures, 0};
            const auto& words = leaf == 4 ? machine.leaf4 : machine.extended;
            const auto index = static_cast<std::size_t>(subleaf);
            return index < words.size() ? words[index] : CpuidWords{};
        });
        const int count = static_cast<int>(machine.kilobytes.size());
        ASSERT_EQ(list.count, count) << machine.what;
        for (int level = 1; level <= count; ++level)
            EXPECT_EQ(list.size(level), machine.kilobytes[static_cast<std::size_t>(level - 1)] << 10) << machine.what;
        EXPECT_EQ(list.size(0), count ? machine.kilobytes.back() << 10 : -1) << "level 0 is the last one";
        EXPECT_EQ(list.size(count + 1), -1);
        EXPECT_EQ(list.size(-1), -1);
    }
}

TEST(Caches, StrangeMachines) {
    const CacheList endless = caches_of([](int) { return of32; });
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
    Variants<Kernel> forms = variants;
    forms.avx2 = [] { return 52; }, forms.avx512 = [] { return 53; };
    using enum VectorForm;
    for (const int type : {0, 2, 3, 4, 5})
        for (const auto& [form, found] : {std::pair{sse, 5}, {avx2, 52}, {avx512, 53}}) {
            EXPECT_EQ(pick(variants, type, form)(), type) << "a routine without forms of its own";
            EXPECT_EQ(pick(forms, type, form)(), type == 5 ? found : type);
        }
    for (const int type : {1, 6})
        EXPECT_EQ(pick(variants, type), nullptr);
    DispatchSlot<Kernel> slot(variants);
    for (const char* call : {"first", "second"})
        EXPECT_EQ(slot(), qrv_serv_get_cpu_type()) << call;
}

TEST(ProcessorEnvironment, ForcedClasses) {
    const std::string detected = "cpu_type=" + std::to_string(cpu_type_of(cpuid(1)));
    const struct {
        const char *type, *ma;
        std::string found;
    } rows[] = {{"1", "", "cpu_type=0 cpu_ma=0"},
                {"5", "64", "cpu_type=5 cpu_ma=64"},
                {"5", "66", "cpu_type=5 cpu_ma=66"},
                {"3", "66", "cpu_type=3 cpu_ma=0"},
                {"", "", detected},
                {"2                               ", "", detected}}; // beyond its room
    for (const auto& [type, ma, found] : rows)
        expect_found({"ask"}, {{"QRV_DEBUG_CPU_TYPE", type}, {"QRV_DEBUG_CPU_MA", ma}}, found);
    expect_found({"ask"}, {}, detected);
    expect_found({"ask", "set_QRV_DEBUG_CPU_TYPE=3", "ask"}, {{"QRV_DEBUG_CPU_TYPE", "2"}}, "cpu_type=2");
}

TEST(VectorForms, NeedProcessorAndSystem) {
    constexpr std::uint32_t fma = 1U << 12, osxsave = 1U << 27, avx = 1U << 28;
    constexpr std::uint32_t avx2Bit = 1U << 5, f = 1U << 16, dq = 1U << 17, bw = 1U << 30, vl = 1U << 31;
    using enum VectorForm;
    const struct {
        std::uint32_t ecx1, ebx7, states; // what is missing
        VectorForm form;
    } rows[] = {{0, 0, 0, avx512},  {fma, 0, 0, sse},   {osxsave, 0, 0, sse}, {avx, 0, 0, sse}, {0, avx2Bit, 0, sse},
                {0, f, 0, avx2},    {0, dq, 0, avx2},   {0, bw, 0, avx2},     {0, vl, 0, avx2}, {0, 0, 0x20, avx2},
                {0, 0, 0x40, avx2}, {0, 0, 0x80, avx2}, {0, 0, 0x2, sse},     {0, 0, 0x4, sse}};
    for (const auto& row : rows) {
        CpuidWords leaf1, leaf7;
        leaf1.ecx = (fma | osxsave | avx) & ~row.ecx1;
        leaf7.ebx = (avx2Bit | f | dq | bw | vl) & ~row.ebx7;
        EXPECT_EQ(vector_form_of(leaf1, leaf7, 0xE7 & ~row.states), row.form)
            << row.ecx1 << ' ' << row.ebx7 << ' ' << row.states;
    }
}

} // namespace
} // namespace qrv::test
