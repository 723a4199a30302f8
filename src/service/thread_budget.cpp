#include "service/thread_budget.hpp"

#include <algorithm>
#include <atomic>
#include <omp.h>

#include "service/fork.hpp"
#include "service/lock.hpp"
#include "service/platform.hpp"

namespace qrv {
namespace {

thread_local int regionsOfOne = 0; // of the calling thread, one in the other

// requested_all, requested_blas, requested_fft, requested_vec and the other words that setters and the environment
// reader share, and what the first query found. Setters may store while others query; a query may see a store late.
struct BudgetWords {
    std::atomic<int> requested[threadDomains] = {-1, -1, -1, -1};
    std::atomic<int> dynamic{-1};
    std::atomic<int> mpiThreaded{-1};
    std::atomic<int> threadLimit{-1};
    std::atomic<bool> environmentPending{true};
    // Written by the first query, under its lock, before environmentPending is cleared.
    int ompNumThreads = -1;
    int mpiProcsPerNode = -1;
    int mpiThreadLevel = -1;
    bool numThreadsUnreadable = false;
    CoreCount cores;
};
BudgetWords words;

// Stores into a word that no setter has reached yet.
void fill(std::atomic<int>& word, int value) {
    int unset = -1;
    word.compare_exchange_strong(unset, value, std::memory_order_relaxed);
}

// Run by the first query.
void qrv_serv_read_thread_env() {
    const ThreadSettings read = read_thread_settings({}, process_environment);
    for (int domain = 0; domain < threadDomains; ++domain)
        fill(words.requested[domain], read.requested[domain]);
    fill(words.dynamic, read.dynamic);
    words.ompNumThreads = read.ompNumThreads;
    words.mpiProcsPerNode = read.mpiProcsPerNode;
    words.mpiThreadLevel = read.mpiThreadLevel;
    words.numThreadsUnreadable = read.numThreadsUnreadable;
    fill(words.threadLimit, omp_get_thread_limit());
    AffinityMachine machine;
    words.cores = qrv_serv_count_cores(machine);
}

void ensure_environment() {
    if (!words.environmentPending.load(std::memory_order_acquire))
        return;
    lock_first_query();
    if (words.environmentPending.load(std::memory_order_relaxed)) {
        qrv_serv_read_thread_env();
        words.environmentPending.store(false, std::memory_order_release);
    }
    unlock_first_query();
}

} // namespace

RegionOfOne::RegionOfOne() {
    ++regionsOfOne;
}
RegionOfOne::~RegionOfOne() {
    --regionsOfOne;
}

int request_for(const ThreadSettings& settings, int domain) {
    if (domain > QRV_DOMAIN_ALL && domain < threadDomains && settings.requested[domain] > 0)
        return settings.requested[domain];
    return std::max(settings.requested[QRV_DOMAIN_ALL], 0);
}

ThreadBudget thread_budget(const BudgetFacts& facts, int domain) {
    const ThreadSettings& settings = facts.settings;
    const int request = request_for(settings, domain);
    const bool explicitRequest = request > 0;
    if (facts.threadsLost)
        return {1, BudgetReason::forked, explicitRequest};
    if (settings.dynamic != 0 && facts.inParallel)
        return {1, BudgetReason::insideRegion, explicitRequest};
    const int threads = std::min({explicitRequest ? request : facts.ompMaxThreads, facts.threadLimit, largestTeam});
    if (settings.dynamic == 0)
        return {threads, BudgetReason::asRequested, explicitRequest};

    const ThreadBudget limited{std::min(threads, facts.physicalCores), BudgetReason::withinCores, explicitRequest};
    const ThreadBudget single{1, BudgetReason::mpiOneThread, explicitRequest};
    if (facts.mpiThreaded == 1)
        return limited;
    if (facts.mpiThreaded == 0)
        return single;
    if (settings.mpiProcsPerNode == -1 || explicitRequest || settings.ompNumThreads > 0)
        return limited;
    const int share = facts.physicalCores / settings.mpiProcsPerNode;
    if (settings.mpiThreadLevel > 0 && share > 1)
        return {share, BudgetReason::mpiShare, explicitRequest};
    return single;
}

BudgetFacts current_budget_facts() {
    ensure_environment();
    BudgetFacts facts;
    for (int domain = 0; domain < threadDomains; ++domain)
        facts.settings.requested[domain] = words.requested[domain].load(std::memory_order_relaxed);
    facts.settings.dynamic = words.dynamic.load(std::memory_order_relaxed);
    facts.settings.ompNumThreads = words.ompNumThreads;
    facts.settings.mpiProcsPerNode = words.mpiProcsPerNode;
    facts.settings.mpiThreadLevel = words.mpiThreadLevel;
    facts.settings.numThreadsUnreadable = words.numThreadsUnreadable;
    facts.physicalCores = words.cores.physicalCores;
    facts.mpiThreaded = words.mpiThreaded.load(std::memory_order_relaxed);
    facts.ompMaxThreads = omp_get_max_threads();
    facts.threadLimit = words.threadLimit.load(std::memory_order_relaxed);
    facts.inParallel = omp_in_parallel() != 0 || regionsOfOne > 0;
    facts.threadsLost = threads_lost_in_fork();
    return facts;
}

CoreCount counted_cores() {
    ensure_environment();
    return words.cores;
}

void assume_thread_limit(int threads) {
    words.threadLimit.store(threads, std::memory_order_relaxed);
}

} // namespace qrv

using namespace qrv;

int qrv_serv_get_max_threads() {
    return thread_budget(current_budget_facts(), QRV_DOMAIN_ALL).threads;
}

int qrv_serv_domain_get_max_threads(int domain) {
    return thread_budget(current_budget_facts(), domain).threads;
}

int qrv_serv_get_dynamic() {
    ensure_environment();
    return words.dynamic.load(std::memory_order_relaxed);
}

int qrv_serv_set_num_threads(int n) {
    if (n > 0)
        words.requested[QRV_DOMAIN_ALL].store(n, std::memory_order_relaxed);
    return n;
}

int qrv_serv_domain_set_num_threads(int n, int domain) {
    if (n < 0 || domain < 0 || domain >= threadDomains)
        return 0;
    words.requested[domain].store(n, std::memory_order_relaxed);
    return 1;
}

void qrv_serv_set_dynamic(int flag) {
    words.dynamic.store(flag != 0, std::memory_order_relaxed);
}

void qrv_serv_set_mpi_threaded(int flag) {
    words.mpiThreaded.store(flag == 1, std::memory_order_relaxed);
}

int qrv_serv_in_parallel() {
    return omp_in_parallel();
}
