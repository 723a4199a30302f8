// The thread budget: how many threads a routine may use at most, decided from what the user asked for, what the
// OpenMP runtime would give, and the machine's cores.
#pragma once

#include "qrv/service.h"
#include "service/core_count.hpp"
#include "service/thread_settings.hpp"

namespace qrv {

constexpr int largestTeam = 1024; // whatever is asked for

struct BudgetFacts {
    ThreadSettings settings;
    int physicalCores = 1;
    int mpiThreaded = -1; // 1 yes, 0 no, -1 not told
    int ompMaxThreads = 1;
    int threadLimit = largestTeam; // of the OpenMP runtime
    bool inParallel = false;
    bool threadsLost = false; // in a fork
};

// Which rule gave the budget.
enum class BudgetReason { forked, insideRegion, asRequested, withinCores, mpiShare, mpiOneThread };

struct ThreadBudget {
    int threads;
    BudgetReason reason;
    bool explicitRequest; // a request was given; otherwise the OpenMP runtime's number was taken
};

// The request in force for a domain: its own if above 0, else the one for everything, else 0.
int request_for(const ThreadSettings& settings, int domain);

ThreadBudget thread_budget(const BudgetFacts& facts, int domain);

// While it lives, calls of this thread are as inside a parallel region: one thread does what a team would.
class RegionOfOne {
public:
    RegionOfOne();
    ~RegionOfOne();
    RegionOfOne(const RegionOfOne&) = delete;
    RegionOfOne& operator=(const RegionOfOne&) = delete;
};

// The facts of this process, as a query would use them now.
BudgetFacts current_budget_facts();

// Result of the core count, made at the first query.
CoreCount counted_cores();

// Takes `threads` for the limit of the OpenMP runtime, so that tests can ask it for more than it gives.
void assume_thread_limit(int threads);

} // namespace qrv
