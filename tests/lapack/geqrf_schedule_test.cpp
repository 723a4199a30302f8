// The schedule of the QR factorization, without threads: a simulated team takes and performs jobs in random
// interleavings.
#include <gtest/gtest.h>
#include <vector>

#include "lapack/kernel/source/qr/geqrf_schedule.hpp"
#include "support/combine.hpp"
#include "support/simulated_team.hpp"

namespace qrv::test {
namespace {

// Block columns, counted from 1, and how many panels each has had; as a panel, one step more.
class ColumnsInBlocks : public SimulatedMatrix {
public:
    using Task = GeqrfTask;

    ColumnsInBlocks(int blocks, int panels, int group)
        : SimulatedMatrix(blocks + 1), blocks_(blocks), panels_(panels),
          words_(geqrf_schedule_bytes(blocks) / sizeof(int) + 1, guard),
          schedule_(geqrf_schedule(words_.data(), blocks, panels, group)) {
        take(1, 1), advance(1, 1), give_back(1); // the first panel
    }
    void begin(int team) { schedule_->team = team; }
    Task first(int) const { return {}; }
    void next(int thread, Task& task) {
        geqrf_schedule_next(*schedule_, thread, task);
        if (!task.held)
            return;
        expect(task.first > task.panel && task.count > 0 && task.first + task.count - 1 <= blocks_, "no such job");
        expect(task.first > task.panel + 1 || task.count == 1, "the next panel with others");
        for (int block = task.first; block < task.first + task.count; ++block)
            take(block, task.panel);
        expect(geqrf_schedule_may_apply(*schedule_, task), "a job with nothing to do");
        widest_ = std::max(widest_, task.count);
    }
    bool perform(Task& task, int) {
        while (geqrf_schedule_may_apply(*schedule_, task)) {
            expect(steps(task.panel) == task.panel, "a panel that is not factored");
            for (int block = task.first; block < task.first + task.count; ++block)
                advance(block, task.panel);
            ++task.panel;
            if (geqrf_schedule_is_panel(*schedule_, task))
                advance(task.first, task.first);
        }
        for (int block = task.first; block < task.first + task.count; ++block)
            give_back(block);
        return true;
    }
    bool complete() const {
        bool complete = true;
        for (int block = 1; block <= blocks_; ++block)
            complete = complete && steps(block) == std::min(block, panels_);
        return complete && words_.back() == guard;
    }
    int widest() const { return widest_; }

private:
    static constexpr int guard = 1; // what the next block column would need first
    int blocks_, panels_;
    std::vector<int> words_;
    GeqrfSchedule* schedule_;
    int widest_ = 0;
};

TEST(GeqrfSchedule, BringsEveryPanelToEveryBlockColumnInOrder) {
    unsigned seed = 0;
    int widest = 0;
    combine({1, 2, 5}, {0, 1, 2, 3}, up_to(1, 24), up_to(1, 9)).each([&](int group, int which, int blocks, int team) {
        const int panels = which == 0 ? 1 : which == 1 ? blocks / 2 : which == 2 ? blocks - 1 : blocks;
        if (panels < 1)
            return;
        ColumnsInBlocks job(blocks, panels, group);
        EXPECT_EQ(simulate(job, team, ++seed), "");
        widest = std::max(widest, job.widest());
    });
    EXPECT_EQ(widest, 5);
}

} // namespace
} // namespace qrv::test
