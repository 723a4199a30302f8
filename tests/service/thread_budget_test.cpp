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

const char* fake_reader(const char* name) {
    const auto found = fakeEnvironment.find(name);
    return found == fakeEnvironment.end() ? nullptr : found->second.c_str();
}

ThreadSettings settings_of(std::map<std::string, std::string> environment, ThreadSettings given = {}) {
    fakeEnvironment = std::move(environment);
    return read_thread_settings(given, fake_reader);
}

TEST(ThreadSettings, NumberOfThreads) {
    const struct {
        const char* text;
        int expected;
    } rows[] = {{"4", 4}, {"abc", 1}, {"8x", 1}, {"0", -1},  {"00", -1},
                {"", -1}, {"-3", 1},  {" 2", 1}, {"007", 7}, {"99999999999999999999", 2147483647}};
    for (const auto& row : rows)
        EXPECT_EQ(settings_of({{"QRV_NUM_THREADS", row.text}}).requested[0], row.expected) << row.text;
    EXPECT_EQ(settings_of({{"QRV_NUM_THREADS", std::string(255, '0') + "4"}}).requested[0], -1)
        << "a text beyond its room counts as unset";
}

TEST(ThreadSettings, DomainList) {
    const struct {
        const char* text;
        int all, blas, fft, vec;
    } rows[] = {
        {"QRV_ALL=4,QRV_BLAS=2;QRV_FFT 3", 4, 2, 3, -1},
        {"QRV_BLAS=", -1, 1, -1, -1},
        {"QRV_BLAS=x", -1, 1, -1, -1},
        {"QRV_BLAS=2x", -1, 1, -1, -1},
        {"QRV_BLAS=0", -1, -1, -1, -1},
        {"QRV_BLAS=0,QRV_BLAS=5", -1, 5, -1, -1},
        {"QRV_BLAS=3,QRV_BLAS=5", -1, 3, -1, -1},
        {"qrv_blas=3", -1, -1, -1, -1},
        {"OTHER=3 QRV_VEC = 2", -1, -1, -1, 2},
        {"\"QRV_ALL=2\" 'QRV_VEC=5'", 2, -1, -1, 5},
        {"QRV_FFT==6", -1, -1, 6, -1},
        {" ,;:\"'QRV_FFT=6", -1, -1, 6, -1},
        {"=3,QRV_FFT=6", -1, -1, -1, -1},      // an empty key ends the list
        {"QRV_ALL,QRV_FFT=6", -1, -1, -1, -1}, // a comma does not end a key
        {"QRV_ALL:QRV_FFT=6 QRV_VEC=1", -1, -1, -1, 1},
        {"QRV_ALL", 1, -1, -1, -1},
        {"QRV_BLAS=,QRV_FFT=2", -1, 1, 2, -1},
    };
    for (const auto& row : rows) {
        const ThreadSettings found = settings_of({{"QRV_DOMAIN_NUM_THREADS", row.text}});
        EXPECT_TRUE(found.requested[0] == row.all && found.requested[1] == row.blas && found.requested[2] == row.fft &&
                    found.requested[3] == row.vec)
            << row.text << " gave " << found.requested[0] << ' ' << found.requested[1] << ' ' << found.requested[2]
            << ' ' << found.requested[3];
    }
    EXPECT_EQ(settings_of({{"QRV_NUM_THREADS", "2"}, {"QRV_DOMAIN_NUM_THREADS", "QRV_ALL=8"}}).requested[0], 2);
    EXPECT_EQ(settings_of({{"QRV_NUM_THREADS", "0"}, {"QRV_DOMAIN_NUM_THREADS", "QRV_ALL=8"}}).requested[0], 8);
    ThreadSettings given;
    given.requested[QRV_DOMAIN_BLAS] = 0;
    EXPECT_EQ(settings_of({{"QRV_DOMAIN_NUM_THREADS", "QRV_BLAS=8"}}, given).requested[1], 0)
        << "a setter's store, even of 0, wins over the environment";
}

TEST(ThreadSettings, DynamicAndLaunchers) {
    for (const char* off : {"FALSE", "false", " \"false\"", "'FALSE' x"})
        EXPECT_EQ(settings_of({{"QRV_DYNAMIC", off}}).dynamic, 0) << off;
    for (const char* on : {"False", "0", "no", "true", "falsehood", ""})
        EXPECT_EQ(settings_of({{"QRV_DYNAMIC", on}}).dynamic, 1) << on;
    EXPECT_EQ(settings_of({}).dynamic, 1);

    EXPECT_EQ(settings_of({{"OMP_NUM_THREADS", "4,2"}}).ompNumThreads, 1);
    EXPECT_EQ(settings_of({{"OMP_NUM_THREADS", "0"}}).ompNumThreads, -1);
    const auto procs = [](const char* text) {
        return settings_of({{"W_MPI_NUMBER_OF_MPI_PROCESSES_PER_NODE", text}}).mpiProcsPerNode;
    };
    EXPECT_EQ(procs("2"), 2);
    EXPECT_EQ(procs("0"), -1);
    EXPECT_EQ(procs("2x"), -1);
    const auto level = [](const char* text) { return settings_of({{"W_MPI_THREAD_LEVEL", text}}).mpiThreadLevel; };
    EXPECT_EQ(level("3"), 3);
    EXPECT_EQ(level("4"), 0);
    EXPECT_EQ(level("x"), 0);
    EXPECT_EQ(level(""), -1) << "empty is unset";
}

// ---- Decision ---------------------------------------------------------------------------------------------

struct BudgetRow {
    const char* what;
    BudgetFacts facts; // on 8 cores, where OpenMP gives 6 threads, unless told otherwise
    int all, blas;     // the budgets
};

const BudgetRow budgetRows[] = {
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
    for (BudgetRow row : budgetRows) {
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

CoreCount count(SimulatedMachine machine) {
    const CoreCount result = qrv_serv_count_cores(machine);
    EXPECT_EQ(machine.pinned, -1);
    if (result.outcome == CountOutcome::counted) {
        EXPECT_EQ(machine.restores, 1) << "the thread is put back exactly once";
    }
    return result;
}

TEST(CoreCount, SimulatedMachines) {
    const struct {
        const char* what;
        std::vector<int> apicIds;
        std::uint32_t logicalPerPackage, coresPerPackage;
        int physical, logical;
        std::uint32_t highestLeaf = 11;
        bool knownVendor = true;
    } rows[] = {
        {"one processor", ids(1), 1, 1, 1, 1},
        {"four cores", ids(4), 4, 4, 4, 4},
        {"four cores, two threads each", ids(8), 8, 4, 4, 8},
        {"threads numbered after cores", {0, 2, 4, 6, 1, 3, 5, 7}, 8, 4, 4, 8},
        {"two packages of two cores, two threads each", ids(8), 4, 2, 4, 8},
        {"ids reserved beyond the cores there are", {0, 1, 2, 3, 4, 5, 16, 17, 18, 19, 20, 21}, 16, 8, 6, 12},
        {"old leaves only: one core a package", ids(2), 2, 2, 1, 2, 2},
        {"foreign vendor: every APIC id its own core", ids(8), 8, 4, 8, 8, 11, false},
        {"a hole: the last processor is not looked at", {0, -1, 2, 3}, 4, 4, 2, 3},
        {"leaf 1 reserves no ids at all", ids(4), 0, 4, 4, 4},
        {"48 processors", ids(48), 48, 24, 24, 48},
        {"more processors than APIC ids", ids(300), 1, 1, 256, 300, 11, false},
    };
    for (const auto& row : rows) {
        const CoreCount found =
            count({row.apicIds, row.logicalPerPackage, row.coresPerPackage, row.highestLeaf, row.knownVendor});
        EXPECT_EQ(found.physicalCores, row.physical) << row.what;
        EXPECT_EQ(found.logicalProcessors, row.logical) << row.what;
    }
}

TEST(CoreCount, OneWhereNothingCanBeCounted) {
    const SimulatedMachine confined{.apicIds = ids(8), .confined = true}, refusing{.apicIds = ids(8), .refuses = true};
    for (const auto& [machine, outcome] :
         {std::pair(confined, CountOutcome::confined), {refusing, CountOutcome::refused}}) {
        const CoreCount found = count(machine);
        EXPECT_EQ(found.outcome, outcome);
        EXPECT_EQ(found.physicalCores, 1);
        EXPECT_EQ(found.logicalProcessors, 1);
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
        {{"affinity", "threads", "inside"}, {}, "affinity_kept=1 dynamic=1 all_inside=1 in_parallel=1"},
        {{"threads", "inside"},
         {{"QRV_DYNAMIC", "FALSE"}, {"QRV_NUM_THREADS", "16"}, {"QRV_DOMAIN_NUM_THREADS", "QRV_BLAS=3"}},
         "all=16 blas=3 fft=16 all_inside=16"},
        // Setters win. An unknown domain stores nothing; 0 is no request, and keeps the environment out of a domain.
        {{"request=3", "dynamic=0", "blas=2", "threads", "domain4=2"}, requests, "all=3 blas=2 stored=0"},
        {{"dynamic=0", "request=0", "blas=0", "threads"}, requests, "result=0 all=7 blas=7"},
        {{"mpi_threaded=0", "threads"}, {}, "all=1"},
        {{"dynamic=0", "threads", "set_QRV_NUM_THREADS=5", "threads"}, requests, "all=7"}, // read once
        {{"pinned_thread", "threads"}, eight, "affinity_kept=1 uncounted=0"}, // the caller's mask is not the process's,
        {{"pin", "threads"}, eight, "uncounted=1 all=1"},                     // which counts as one core
    };
    for (const auto& [steps, environment, found] : rows)
        if (steps[0] != "pin" || std::thread::hardware_concurrency() > 1)
            expect_found(steps, environment, found);
    for (const char* bind : {"true", "spread", "false"}) {
        auto found = probe({"threads"}, {{"QRV_NUM_THREADS", "8"}, {"OMP_PROC_BIND", bind}});
        EXPECT_EQ(found["uncounted"], "0") << bind;
        EXPECT_EQ(found["all"], std::to_string(std::min(8, std::stoi(found["cores"])))) << bind;
    }
    auto found = probe({"threads"}, {});
    EXPECT_EQ(std::stoi(found["all"]), std::min(std::stoi(found["omp"]), std::stoi(found["cores"])));
}

} // namespace
} // namespace qrv::test
