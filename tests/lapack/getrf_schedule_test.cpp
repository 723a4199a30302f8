// The scheduler of the dynamic LU, without threads: a simulated team takes and finishes tasks in random interleavings.
#include <gtest/gtest.h>
#include <set>
#include <vector>

#include "lapack/kernel/source/lu/getrf_schedule.hpp"
#include "qrv/native.h"
#include "service/tuning.hpp"
#include "support/combine.hpp"
#include "support/simulated_team.hpp"

namespace qrv::test {
namespace {

struct Plan {
    int blocks, panels, span, tail;
};

// The schedule of block columns of one column each, and how far each of them is.
class Scheduled : public SimulatedMatrix {
public:
    using Task = GetrfTask;

    explicit Scheduled(const Plan& plan)
        : SimulatedMatrix(plan.blocks + 1), plan_(plan), memory_(getrf_schedule_bytes(plan.blocks, 1) / sizeof(int)) {}

    void begin(int team) {
        const int m = plan_.panels + 1, nb = 1;
        qrv_lapack_getrf_sched_init(schedule(), &m, &plan_.blocks, &nb, &team, &plan_.span, &plan_.tail);
    }
    Task first(int thread) {
        Task task;
        qrv_lapack_getrf_sched_first(&thread, schedule(), &task);
        expect(task.waits() || task.ends(), "a first task with work");
        return task;
    }
    void next(int thread, Task& task) {
        if (!task.waits())
            finish(task);
        qrv_lapack_getrf_sched_next(&thread, schedule(), &task);
        if (!task.waits() && !task.ends())
            check(task);
    }
    bool perform(const Task& t, int) {
        for (int block = t.firstBlock; block <= t.last_block(); ++block)
            advance(block, t.lastPanel);
        return true;
    }
    bool complete() const {
        int complete = factored_ == plan_.panels;
        for (int block = 1; block <= plan_.blocks; ++block)
            complete &= steps(block) == std::min(block - 1, plan_.panels);
        return complete;
    }

private:
    GetrfSchedule* schedule() { return reinterpret_cast<GetrfSchedule*>(memory_.data()); }

    void check(const Task& t) {
        const bool next = t.firstBlock == t.lastBlock && t.firstBlock == factored_ + 1 && t.lastPanel == factored_;
        expect(t.kind == GetrfTaskKind::factor ? next : t.firstPanel <= t.lastPanel,
               "not the next panel, or nothing to apply");
        expect(t.lastPanel <= factored_ && t.lastPanel < t.firstBlock, "a panel that is not factored");
        expect(2 <= t.firstBlock && t.firstBlock <= t.lastBlock && t.lastBlock <= plan_.blocks,
               "no such block columns");
        for (int block = t.firstBlock; fault().empty() && block <= t.lastBlock; ++block)
            take(block, t.firstPanel);
    }
    void finish(const Task& t) {
        for (int block = t.firstBlock; block <= t.lastBlock; ++block)
            give_back(block);
        if (t.kind == GetrfTaskKind::factor)
            factored_ = t.firstBlock;
    }

    Plan plan_;
    std::vector<int> memory_;
    int factored_ = 1;
};

// Every pair of span and tail in the tuning tables.
std::set<std::pair<int, int>> tuned_shares() {
    std::set<std::pair<int, int>> pairs;
    for (const char* name : {"SGETRF", "CGETRF"})
        for (int n = 100; n < 8000; n += 100)
            for (const int team : {1, 2, 5, 9, 12})
                pairs.insert({tuning::lu_span(name, n, team), tuning::lu_tail(name, n, team)});
    return pairs;
}

TEST(GetrfSchedule, AppliesEveryPanelOnceAndInOrder) {
    const auto shares = tuned_shares();
    ASSERT_GE(shares.size(), 10U);
    unsigned seed = 0;
    combine({false, true}, shares, up_to(2, 40), up_to(1, 16))
        .each([&](bool isWide, const auto& share, int blocks, int team) { // or square or tall
            Scheduled job({blocks, isWide ? blocks / 2 : blocks - 1, share.first, share.second});
            EXPECT_EQ(simulate(job, team, ++seed), "");
        });
}

} // namespace
} // namespace qrv::test
