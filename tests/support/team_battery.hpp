// What every routine must stand that runs on a team: told once, for families of cases.
//
// A family is instantiated with INSTANTIATE_TEST_SUITE_P. Tests called Races are few and small, for the race detector.
#pragma once

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <omp.h>
#include <thread>

#include "blas/thread/common/crowd.hpp"
#include "blas/thread/common/work_threads.hpp"
#include "service/thread_budget.hpp"
#include "support/teams.hpp"
#include "support/work_memory.hpp"

// The largest team of any region since the value was last set. Regions ask for the size of their team, and the linker
// sends that question through here.
namespace qrv::test {
inline std::atomic<int> largestTeam{0};
}

extern "C" int __real_omp_get_num_threads();
extern "C" [[gnu::used]] inline int __wrap_omp_get_num_threads() {
    const int team = __real_omp_get_num_threads();
    auto& most = qrv::test::largestTeam;
    for (int largest = most; largest < team && !most.compare_exchange_weak(largest, team);)
        ;
    return team;
}

namespace qrv::test {

class DynamicAdjustment {
public:
    explicit DynamicAdjustment(int on) : before_(qrv_serv_get_dynamic()) { qrv_serv_set_dynamic(on); }
    ~DynamicAdjustment() {
        qrv_serv_set_dynamic(before_);
        aloneUntil = 0;
    }
    DynamicAdjustment(const DynamicAdjustment&) = delete;
    DynamicAdjustment& operator=(const DynamicAdjustment&) = delete;

private:
    int before_;
};

// One thread is then enough for them.
inline bool calls_come_from_a_region() {
    return current_budget_facts().inParallel;
}

// With dynamic adjustment, unless teams are limited.
class TeamsOnBusyCores : public testing::Test {
protected:
    void SetUp() override {
        if (omp_get_thread_limit() < 8 || omp_get_dynamic())
            GTEST_SKIP() << "teams are limited";
    }

private:
    const DynamicAdjustment dynamic_{1};
};

// Where a case runs twice.
inline void (*beforeSecondRun)() = [] {};
auto again(const auto& run) {
    beforeSecondRun();
    return run();
}

struct TeamCase {
    std::string name;
    // Whether it comes out on a team of at most so many, and if it runs twice then with the same bits.
    std::function<bool(int team, bool twice)> right;
    // How many threads it asks for of the present budget, if that is its own decision.
    std::function<int()> threads = nullptr;
};

struct TeamFamily {
    const char* name;
    std::function<std::vector<TeamCase>()> all, few;
};

inline std::ostream& operator<<(std::ostream& out, const TeamFamily& family) {
    return out << family.name;
}

class Team : public testing::TestWithParam<TeamFamily> {
protected:
    static void expect(const std::vector<TeamCase>& cases, std::initializer_list<int> teams, bool twice) {
        for (const int team : teams) {
            const ForcedTeam forced(team);
            for (const TeamCase& one : cases)
                EXPECT_TRUE(one.right(team, twice)) << one.name << " on " << team;
        }
    }
};

TEST_P(Team, OfEverySize) {
    expect(GetParam().all(), {1, 2, 3, 4, 8}, true);
}

// The number asked for is an upper bound: the runtime may give less, down to one. Work memory is NaN, so that what no
// thread wrote shows.
TEST_P(Team, SmallerThanAsked) {
    const WorkMemoryProbe probe;
    const std::vector<TeamCase> cases = GetParam().few();
    if (omp_get_thread_limit() < 8)
        expect(cases, {200}, false); // above 128 a reduction takes work memory
    const int dynamic = omp_get_dynamic(), levels = omp_get_max_active_levels();
    omp_set_dynamic(1);
    expect(cases, {8, 64}, false);
    omp_set_dynamic(dynamic);
    omp_set_max_active_levels(1);
#pragma omp parallel num_threads(2)
#pragma omp critical
    expect(cases, {4}, false);
    omp_set_max_active_levels(levels);
}

TEST_P(Team, WithoutWorkMemory) {
    const WorkMemoryProbe refusing(0, anySize);
    expect(GetParam().few(), {1, 2, 3}, false);
}

TEST_P(Team, AsDecided) {
    constexpr int team = 3;
    if (omp_get_thread_limit() < team)
        GTEST_SKIP() << "teams are limited";
    const std::vector<TeamCase> cases = GetParam().all(); // before the team: some are made without one
    const ForcedTeam forced(team);
    for (const TeamCase& one : cases)
        if (one.threads) {
            largestTeam = 1;
            EXPECT_TRUE(one.right(team, false)) << one.name;
            EXPECT_EQ(largestTeam, one.threads()) << one.name;
        }
}

// The caller does the parts of all, with the bits of the team.
TEST_P(Team, OnBusyCores) {
    if (omp_get_dynamic())
        GTEST_SKIP() << "teams differ from call to call";
    const DynamicAdjustment dynamic(1);
    beforeSecondRun = [] { aloneUntil = ticks_now() + longestAlone; };
    for (const TeamCase& one : GetParam().few()) {
        aloneUntil = 0;
        EXPECT_TRUE(one.right(5, true)) << one.name;
        beforeSecondRun();
        largestTeam = 0;
        EXPECT_TRUE(one.right(5, false)) << one.name;
        // Some of older classes form teams all the same.
        const bool formsTeams = qrv_serv_get_cpu_ma() != newestClass || one.name.find(" region") < one.name.size();
        EXPECT_TRUE(largestTeam < 2 || formsTeams) << one.name;
    }
    beforeSecondRun = [] {};
}

// Each with teams of its own; a limit on threads is for all of them together, and teams then differ from call to call.
TEST_P(Team, OfEachHostThreadRaces) {
    const std::vector<TeamCase> cases = GetParam().few();
    const ForcedTeam forced(2);
    for (const TeamCase& one : cases)
        EXPECT_TRUE(one.right(2, false)) << one.name;
    std::vector<std::jthread> hosts;
    for (std::size_t host = 0; host < 3; ++host)
        hosts.emplace_back([&, host] {
            for (std::size_t i = 0; i < cases.size(); ++i) {
                const TeamCase& one = cases[(i + host) % cases.size()];
                EXPECT_TRUE(one.right(2, omp_get_thread_limit() >= 24)) << one.name;
            }
        });
}

TEST_P(Team, Races) {
    expect(GetParam().few(), {2, 3, 4}, true);
}

} // namespace qrv::test
