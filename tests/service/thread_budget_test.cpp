// The thread budget: its environment grammar, its decision, the core count on simulated machines, and what a fresh
// process makes of all three.
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "service/core_count.hpp"
#include "service/thread_budget.hpp"
#include "support/child.hpp"

namespace qrv::test {
namespace {

// ---- Environment ------------------------------------------------------------------------------------------

std::map<std::string, std::string> fakeEnvironment;

// What is not as without an environment.
std::string settings_of(const std::map<std::string, std::string>& environment, ThreadSettings given = {}) {
    fakeEnvironment = environment;
    const ThreadSettings found = read_thread_settings(given, [](const char* name) {
        const auto it = fakeEnvironment.find(name);
        return it == fakeEnvironment.end() ? nullptr : it->second.c_str();
    });
    std::string text;
    const auto tell = [&](const char* name, int value, int byDefault) {
        if (value != byDefault)
            text += (text.empty() ? "" : " ") + std::string(name) + '=' + std::to_string(value);
    };
    tell("all", found.requested[0], -1);
    tell("blas", found.requested[1], -1);
    tell("fft", found.requested[2], -1);
    tell("vec", found.requested[3], -1);
    tell("dynamic", found.dynamic, 1);
    tell("omp", found.ompNumThreads, -1);
    tell("processes", found.mpiProcsPerNode, -1);
    tell("level", found.mpiThreadLevel, -1);
    return text;
}

TEST(ThreadSettings, OfTheEnvironment) {
    const std::string processes = "W_MPI_NUMBER_OF_MPI_PROCESSES_PER_NODE", level = "W_MPI_THREAD_LEVEL",
                      all = "QRV_NUM_THREADS", domains = "QRV_DOMAIN_NUM_THREADS", dynamic = "QRV_DYNAMIC",
                      omp = "OMP_NUM_THREADS";
    const struct {
        std::string name;
        std::vector<std::string> texts; // that say the same
        const char* found;
    } rows[] = {
        {all, {"4"}, "all=4"},
        {all, {"007"}, "all=7"},
        {all, {"abc", "8x", "-3", " 2"}, "all=1"},
        {all, {"0", "00", "", std::string(255, '0') + "4"}, ""}, // the last one is beyond its room
        {all, {"99999999999999999999"}, "all=2147483647"},
        {domains, {"QRV_ALL=4,QRV_BLAS=2;QRV_FFT 3:QRV_VEC=1"}, "all=4 blas=2 fft=3 vec=1"},
        {domains, {"QRV_BLAS=", "QRV_BLAS", "QRV_BLAS=x", "QRV_BLAS=2x"}, "blas=1"},
        {domains, {"QRV_BLAS=0,QRV_BLAS=5", "QRV_BLAS=5,QRV_BLAS=3"}, "blas=5"},
        {domains, {"OTHER=3 QRV_VEC = 2 qrv_blas=3"}, "vec=2"},
        {domains, {"\"QRV_ALL=2\" 'QRV_VEC=5'"}, "all=2 vec=5"},
        {domains, {"QRV_FFT==6", " ,;:\"'QRV_FFT=6"}, "fft=6"},
        {domains, {"=3,QRV_FFT=6", "QRV_ALL,QRV_FFT=6"}, ""}, // an empty key ends the list, a comma no key
        {domains, {"QRV_ALL:QRV_FFT=6 QRV_VEC=1"}, "vec=1"},
        {domains, {"QRV_BLAS=,QRV_FFT=2"}, "blas=1 fft=2"},
        {dynamic, {"FALSE", "false", " \"false\"", "'FALSE' x"}, "dynamic=0"},
        {dynamic, {"False", "0", "no", "true", "falsehood", ""}, ""},
        {omp, {"4,2"}, "omp=1"},
        {omp, {"0"}, ""},
        {processes, {"2"}, "processes=2"},
        {processes, {"0", "2x"}, ""},
        {level, {"3"}, "level=3"},
        {level, {"4", "x"}, "level=0"},
        {level, {""}, ""},
    };
    for (const auto& [name, texts, found] : rows)
        for (const std::string& text : texts)
            EXPECT_EQ(settings_of({{name, text}}), found) << name << '=' << text;
    EXPECT_EQ(settings_of({{all, "2"}, {domains, "QRV_ALL=8"}}), "all=2");
    EXPECT_EQ(settings_of({{all, "0"}, {domains, "QRV_ALL=8"}}), "all=8");
    ThreadSettings given;
    given.requested[QRV_DOMAIN_BLAS] = 0;
    EXPECT_EQ(settings_of({{domains, "QRV_BLAS=8"}}, given), "blas=0") << "a setter's store, even of 0, wins";
}

// ---- Decision ---------------------------------------------------------------------------------------------

const struct {
    const char* what;
    BudgetFacts facts; // on 8 cores, where OpenMP gives 6 threads, unless told otherwise
    int all, blas;     // the budgets
} budgetRows[] = {
    {"no request", {.settings{.dynamic = 1}}, 6, 6},
    {"hyper-threads are not used by default", {.settings{.dynamic = 1}, .ompMaxThreads = 16}, 8, 8},
    {"a request is kept to the cores", {.settings{.requested{16}, .dynamic = 1}}, 8, 8},
    {"unless taken as it is", {.settings{.requested{16, -1}, .dynamic = 0}}, 16, 16},
    {"inside a region", {.settings{.requested{5, 3}, .dynamic = 1}, .inParallel = true}, 1, 1},
    {"nested", {.settings{.requested{16, -1}, .dynamic = 0}, .inParallel = true}, 16, 16},
    {"a domain's request leaves the others to OpenMP", {.settings{.requested{-1, 3}, .dynamic = 1}}, 6, 3},
    {"and wins over the one for all", {.settings{.requested{2, 3}, .dynamic = 1}}, 2, 3},
    {"0 is no request", {.settings{.requested{2, 0}, .dynamic = 1}}, 2, 2},
    {"the runtime's limit", {.settings{.requested{2147483647, 4}, .dynamic = 0}, .threadLimit = 5}, 5, 4},
    {"a limit for all", {.settings{.requested{2147483647, 1025}, .dynamic = 0}, .threadLimit = 1 << 30}, 1024, 1024},
    {"OpenMP's own number", {.settings{.dynamic = 0}, .ompMaxThreads = 5000}, 1024, 1024},
    {"after a fork", {.settings{.requested{16, 3}, .dynamic = 0}, .threadsLost = true}, 1, 1},
    {"processes without thread level", {.settings{.dynamic = 1, .mpiProcsPerNode = 2}}, 1, 1},
    {"a share", {.settings{.dynamic = 1, .mpiProcsPerNode = 2, .mpiThreadLevel = 1}}, 4, 4},
    {"one core a process", {.settings{.dynamic = 1, .mpiProcsPerNode = 5, .mpiThreadLevel = 1}}, 1, 1},
    {"OMP_NUM_THREADS", {.settings{.dynamic = 1, .ompNumThreads = 1, .mpiProcsPerNode = 5}}, 6, 6},
    {"a request and a launcher", {.settings{.requested{7, -1}, .dynamic = 1, .mpiProcsPerNode = 5}}, 7, 7},
    {"told to be single", {.settings{.requested{7, -1}, .dynamic = 1}, .mpiThreaded = 0}, 1, 1},
    {"told to be threaded", {.settings{.dynamic = 1, .mpiProcsPerNode = 5}, .mpiThreaded = 1}, 6, 6},
};

TEST(ThreadBudget, Decision) {
    for (auto row : budgetRows) {
        row.facts.physicalCores = 8;
        if (row.facts.ompMaxThreads == 1)
            row.facts.ompMaxThreads = 6;
        EXPECT_EQ(thread_budget(row.facts, QRV_DOMAIN_ALL).threads, row.all) << row.what;
        EXPECT_EQ(thread_budget(row.facts, QRV_DOMAIN_BLAS).threads, row.blas) << row.what;
        for (const int other : {4, -1})
            EXPECT_EQ(thread_budget(row.facts, other).threads, row.all) << row.what;
    }
}

// ---- Core count -------------------------------------------------------------------------------------------

// A simulated machine: which processors there are, their APIC ids, and what leaves 1 and 4 reserve.
struct SimulatedMachine {
    std::vector<int> apicIds; // by processor number; -1 where there is none
    std::uint32_t logicalPerPackage = 1, coresPerPackage = 1, highestLeaf = 11;
    bool knownVendor = true;
    bool confined = false, refuses = false;
    int pinned = -1;
    int restores = 0;

    bool read_masks(ProcessorMask& process, ProcessorMask& system) {
        for (std::size_t p = 0; p < apicIds.size(); ++p)
            system[p] = apicIds[p] >= 0;
        process = system;
        if (confined)
            process[0] = false;
        return !refuses;
    }
    bool pin(int processor) {
        if (apicIds[static_cast<std::size_t>(processor)] < 0)
            return false;
        pinned = processor;
        return true;
    }
    void restore() {
        pinned = -1;
        ++restores;
    }
    CpuidWords cpuid(int leaf, int) const {
        const auto apicId = static_cast<std::uint32_t>(pinned < 0 ? 0 : apicIds[static_cast<std::size_t>(pinned)]);
        if (leaf == 0)
            return knownVendor ? CpuidWords{highestLeaf, 0x756E6547, 0x6C65746E, 0x49656E69}
                               : CpuidWords{highestLeaf, 1, 2, 3};
        if (leaf == 1)
            return {0, apicId << 24 | logicalPerPackage << 16, 0, 1U << 28};
        return {(coresPerPackage - 1) << 26, 0, 0, 0};
    }
};

// One processor after the other, as far as ids of eight bits go.
std::vector<int> ids(int count) {
    std::vector<int> list;
    for (int i = 0; i < count; ++i)
        list.push_back(i % 256);
    return list;
}

TEST(CoreCount, SimulatedMachines) {
    const struct {
        const char* what;
        SimulatedMachine machine;
        int physical, logical;
        CountOutcome outcome = CountOutcome::counted;
    } rows[] = {
        {"one processor", {ids(1), 1, 1}, 1, 1},
        {"four cores", {ids(4), 4, 4}, 4, 4},
        {"threads numbered after cores", {{0, 2, 4, 6, 1, 3, 5, 7}, 8, 4}, 4, 8},
        {"two packages of two cores, two threads each", {ids(8), 4, 2}, 4, 8},
        {"ids reserved beyond the cores there are", {{0, 1, 2, 3, 4, 5, 16, 17, 18, 19, 20, 21}, 16, 8}, 6, 12},
        {"old leaves only: one core a package", {ids(2), 2, 2, 2}, 1, 2},
        {"foreign vendor: every APIC id its own core", {ids(8), 8, 4, 11, false}, 8, 8},
        {"a hole: the last processor is not looked at", {{0, -1, 2, 3}, 4, 4}, 2, 3},
        {"leaf 1 reserves no ids at all", {ids(4), 0, 4}, 4, 4},
        {"more processors than APIC ids", {ids(300), 1, 1, 11, false}, 256, 300},
        {"confined", {ids(8), 1, 1, 11, true, true}, 1, 1, CountOutcome::confined},
        {"refused", {ids(8), 1, 1, 11, true, false, true}, 1, 1, CountOutcome::refused},
    };
    for (auto [what, machine, physical, logical, outcome] : rows) {
        const CoreCount found = qrv_serv_count_cores(machine);
        EXPECT_EQ(found.physicalCores, physical) << what;
        EXPECT_EQ(found.logicalProcessors, logical) << what;
        EXPECT_EQ(found.outcome, outcome) << what;
        EXPECT_EQ(machine.pinned, -1) << what;
        EXPECT_TRUE(outcome != CountOutcome::counted || machine.restores == 1) << what << ": put back exactly once";
    }
}

// ---- A fresh process --------------------------------------------------------------------------------------

TEST(BudgetEnvironment, OfAFreshProcess) {
    const Environment requests{{"QRV_NUM_THREADS", "7"}, {"QRV_DOMAIN_NUM_THREADS", "QRV_BLAS=8"}},
        eight{{"QRV_NUM_THREADS", "8"}};
    const struct {
        std::vector<std::string> steps;
        Environment environment;
        const char* found;
    } rows[] = {
        {{"ask"}, {}, "affinity_kept=1 dynamic=1 all_inside=1 in_parallel=1"},
        {{"ask"},
         {{"QRV_DYNAMIC", "FALSE"}, {"QRV_NUM_THREADS", "16"}, {"QRV_DOMAIN_NUM_THREADS", "QRV_BLAS=3"}},
         "all=16 blas=3 fft=16 all_inside=16"},
        // Setters win. An unknown domain stores nothing; 0 is no request, and keeps the environment out of a domain.
        {{"request=3", "dynamic=0", "blas=2", "ask", "domain4=2"}, requests, "all=3 blas=2 stored=0"},
        {{"dynamic=0", "request=0", "blas=0", "ask"}, requests, "result=0 all=7 blas=7"},
        {{"mpi_threaded=0", "ask"}, {}, "all=1"},
        {{"dynamic=0", "ask", "set_QRV_NUM_THREADS=5", "ask"}, requests, "all=7"}, // read once
        {{"ask_in_pinned_thread"}, eight, "affinity_kept=1 uncounted=0"}, // the caller's mask is not the process's,
        {{"pin", "ask"}, eight, "uncounted=1 all=1"},                     // which counts as one core
    };
    for (const auto& [steps, environment, found] : rows)
        if (steps[0] != "pin" || std::thread::hardware_concurrency() > 1)
            expect_found(steps, environment, found);
    for (const char* bind : {"true", "spread", "false"}) {
        auto found = probe({"ask"}, {{"QRV_NUM_THREADS", "8"}, {"OMP_PROC_BIND", bind}});
        EXPECT_EQ(found["uncounted"], "0") << bind;
        EXPECT_EQ(found["all"], std::to_string(std::min(8, std::stoi(found["cores"])))) << bind;
    }
    auto found = probe({"ask"}, {});
    EXPECT_EQ(std::stoi(found["all"]), std::min(std::stoi(found["omp"]), std::stoi(found["cores"])));
}

} // namespace
} // namespace qrv::test
