// The scheduler of the dynamic LU, without threads: a simulated team takes and finishes tasks in random interleavings.
#include <gtest/gtest.h>
#include <ostream>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "lapack/kernel/source/lu/getrf_schedule.hpp"
#include "qrv/native.h"
#include "service/tuning.hpp"

namespace qrv::test {
namespace {

struct Plan {
    int blocks, panels, team, span, tail;
};

std::ostream& operator<<(std::ostream& out, const Plan& p) {
    return out << p.blocks << " block columns, " << p.panels << " panels, team " << p.team << ", span " << p.span
               << ", tail " << p.tail;
}

// A schedule for block columns of one column each.
class Scheduled {
public:
    explicit Scheduled(const Plan& plan) : memory_(getrf_schedule_bytes(plan.blocks, 1) / sizeof(int), -99) {
        const int m = plan.panels + 1, nb = 1;
        qrv_lapack_getrf_sched_init(get(), &m, &plan.blocks, &nb, &plan.team, &plan.span, &plan.tail);
    }
    GetrfSchedule* get() { return reinterpret_cast<GetrfSchedule*>(memory_.data()); }

private:
    std::vector<int> memory_;
};

// Runs a factorization and tells what went wrong first, or nothing.
class Simulation {
public:
    Simulation(const Plan& plan, unsigned seed)
        : plan_(plan), random_(seed), schedule_(plan), columns_(static_cast<std::size_t>(plan.blocks) + 1),
          tasks_(static_cast<std::size_t>(plan.team)) {}

    std::string run() {
        std::vector<int> active;
        for (int thread = 0; thread < plan_.team; ++thread) {
            qrv_lapack_getrf_sched_first(&thread, schedule_.get(), &task(thread));
            if (task(thread).kind == GetrfTaskKind::wait)
                active.push_back(thread);
            else if (task(thread).kind != GetrfTaskKind::done)
                return "a first task with work";
        }
        int waits = 0; // since something was last taken or finished
        while (!active.empty()) {
            const std::size_t turn = random_() % active.size();
            GetrfTask& mine = task(active[turn]);
            if (mine.kind != GetrfTaskKind::wait)
                finish(mine), waits = 0;
            qrv_lapack_getrf_sched_next(&active[turn], schedule_.get(), &mine);
            if (mine.kind == GetrfTaskKind::done)
                active.erase(active.begin() + static_cast<std::ptrdiff_t>(turn));
            else if (mine.kind == GetrfTaskKind::wait)
                ++waits;
            else
                take(mine), waits = 0;
            if (!fault_.empty())
                return fault_;
            if (waits > 100 * plan_.team)
                return "nobody gets on";
        }
        for (int block = 1; block <= plan_.blocks; ++block)
            if (column(block).applied != std::min(block - 1, plan_.panels))
                return "block column " + std::to_string(block) + " lacks panels";
        return factored_ == plan_.panels ? "" : "not all panels are factored";
    }

private:
    struct Column {
        int applied = 0;
        bool held = false;
    };
    GetrfTask& task(int thread) { return tasks_[static_cast<std::size_t>(thread)]; }
    Column& column(int block) { return columns_[static_cast<std::size_t>(block)]; }

    void take(const GetrfTask& t) {
        if (t.firstBlock < 2 || t.firstBlock > t.lastBlock || t.lastBlock > plan_.blocks)
            fault_ = "no such block columns";
        else if (t.lastPanel > factored_)
            fault_ = "a panel that is not factored";
        else if (t.kind == GetrfTaskKind::factor
                     ? t.firstBlock != t.lastBlock || t.firstBlock != factored_ + 1 || t.lastPanel != factored_
                     : t.firstPanel > t.lastPanel)
            fault_ = "not the next panel, or nothing to apply";
        for (int block = t.firstBlock; fault_.empty() && block <= t.lastBlock; ++block) {
            if (column(block).held)
                fault_ = "a block column held twice";
            else if (t.firstPanel != column(block).applied + 1 || t.lastPanel >= block)
                fault_ = "panels out of order";
            column(block).held = true;
        }
    }
    void finish(const GetrfTask& t) {
        for (int block = t.firstBlock; block <= t.lastBlock; ++block)
            column(block) = {t.lastPanel, false};
        if (t.kind == GetrfTaskKind::factor)
            factored_ = t.firstBlock;
    }

    Plan plan_;
    std::mt19937 random_;
    Scheduled schedule_;
    std::vector<Column> columns_;
    std::vector<GetrfTask> tasks_;
    int factored_ = 1;
    std::string fault_;
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
    for (const auto& [span, tail] : shares)
        for (int blocks = 2; blocks <= 40; ++blocks)
            for (int team = 1; team <= 16; ++team)
                for (const int panels : {blocks - 1, blocks / 2}) { // square or tall; wide
                    const Plan plan{blocks, panels, team, span, tail};
                    ASSERT_EQ(Simulation(plan, ++seed).run(), "") << plan;
                }
}

// A thread leaves at once only if it never has work: with no tail, and no group of its own.
TEST(GetrfSchedule, FirstTasks) {
    constexpr auto wait = GetrfTaskKind::wait, done = GetrfTaskKind::done;
    struct Row {
        Plan plan;
        int thread;
        GetrfTaskKind kind;
        int firstBlock, lastBlock;
    };
    for (const Row& row : {Row{{20, 19, 4, 3, 4}, 0, wait, 2, 3}, Row{{20, 19, 4, 3, 4}, 2, wait, 7, 9},
                           Row{{20, 19, 4, 1, 0}, 0, wait, 5, 5}, Row{{20, 19, 4, 1, 0}, 3, wait, 4, 4},
                           Row{{4, 3, 4, 1, 0}, 0, done, 0, 0}, Row{{6, 5, 4, 3, 0}, 2, done, 0, 0},
                           Row{{8, 7, 4, 3, 3}, 1, wait, 4, 5}, Row{{8, 7, 4, 3, 3}, 2, wait, 6, 6},
                           Row{{8, 7, 4, 3, 8}, 0, wait, 1, 1}, Row{{8, 7, 4, 1, 1000000}, 2, wait, 1, 1}}) {
        GetrfTask task;
        qrv_lapack_getrf_sched_first(&row.thread, Scheduled(row.plan).get(), &task);
        EXPECT_EQ(std::tuple(task.kind, task.firstBlock, task.lastBlock),
                  std::tuple(row.kind, row.firstBlock, row.lastBlock))
            << row.plan << ", thread " << row.thread;
    }
}

// 32 bytes, and 4 for each block column but one.
TEST(GetrfSchedule, Size) {
    for (const auto& [n, bytes] : {std::pair{64, 32U}, {65, 36U}, {1000, 92U}})
        EXPECT_EQ(getrf_schedule_bytes(n, 64), bytes) << n;
}

} // namespace
} // namespace qrv::test
