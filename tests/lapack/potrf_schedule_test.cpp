// The scheduler of the tiled Cholesky factorization, without threads: a simulated team takes, performs and gives back
// tasks in random interleavings.
#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "lapack/kernel/source/cholesky/potrf_schedule.hpp"

namespace qrv::test {
namespace {

// A table for so many tile columns, with a guard behind it.
class Table {
public:
    Table(int tiles, int threads) : words_(static_cast<std::size_t>(qrv_lapack_potrf_sched_size(&tiles)) + 1, guard) {
        qrv_lapack_potrf_sched_init(get(), &tiles, &threads);
    }
    PotrfTable* get() { return reinterpret_cast<PotrfTable*>(words_.data()); }
    bool guard_intact() const { return words_.back() == guard; }

private:
    static constexpr int guard = -99;
    std::vector<int> words_;
};

// Runs a factorization of T x T tiles and tells what went wrong first, or nothing.
class Simulation {
public:
    Simulation(int tiles, int team, int limit, unsigned seed)
        : tiles_(tiles), limit_(limit), random_(seed), table_(tiles, team), threads_(static_cast<std::size_t>(team)),
          state_(static_cast<std::size_t>((tiles + 1) * (tiles + 1))) {
        const PotrfTask leading{1, 1, 0, table_.get()->cell};
        coarsest_ = leading.span;
        qrv_lapack_potrf_sched_release(table_.get(), &leading);
        for_each_tile(leading, [](Tile& tile, int i, int) { tile = {i, false}; });
    }

    std::string run() {
        int idle = 0; // turns since something was last taken or given back
        while (!qrv_lapack_potrf_sched_done(table_.get())) {
            Thread& thread = threads_[random_() % threads_.size()];
            idle = turn(thread) ? 0 : idle + 1;
            if (!fault_.empty())
                return fault_;
            if (idle > 200 * static_cast<int>(threads_.size()))
                return "nobody gets on";
        }
        for (int j = 1; j <= tiles_; ++j)
            for (int i = 1; i <= j; ++i)
                if (tile(i, j).steps != i)
                    return "done, but tile (" + std::to_string(i) + ", " + std::to_string(j) + ") is not";
        return table_.guard_intact() ? "" : "written behind the table";
    }
    int coarsest() const { return coarsest_; } // span of a task

private:
    struct Tile {
        int steps = 0; // that it went through
        bool held = false;
    };
    struct Thread {
        PotrfTask task{};
        bool performed = false;
    };
    Tile& tile(int i, int j) { return state_[static_cast<std::size_t>(j * (tiles_ + 1) + i)]; }
    bool finished(int i, int j) { return tile(i, j).steps == i; }

    template <class Visit>
    void for_each_tile(const PotrfTask& cell, const Visit& visit) {
        for (int j = cell.j; j < std::min(cell.j + cell.span, tiles_ + 1); ++j)
            for (int i = cell.i; i < std::min(cell.i + cell.span, j + 1); ++i)
                visit(tile(i, j), i, j);
    }
    void expect(bool holds, const char* fault) {
        if (!holds && fault_.empty())
            fault_ = fault;
    }

    // Takes, performs or gives back. Whether it did.
    bool turn(Thread& thread) {
        if (thread.task.i < 0 || thread.performed) {
            if (thread.performed)
                give_back(thread);
            thread.performed = false;
            qrv_lapack_potrf_sched_next(table_.get(), &thread.task);
            if (thread.task.i > 0)
                take(thread.task);
            return thread.task.i > 0;
        }
        perform(thread.task);
        thread.performed = true;
        return true;
    }
    void take(const PotrfTask& task) {
        coarsest_ = std::max(coarsest_, task.span);
        expect(task.i <= task.j && task.j <= tiles_ && (task.i - 1) % task.span == 0 && (task.j - 1) % task.span == 0,
               "no such cell");
        for_each_tile(task, [&](Tile& t, int i, int) {
            expect(!t.held, "a tile held twice");
            expect(t.steps == task.step - 1 && t.steps < i, "a cell at another step than its tiles");
            t.held = true;
        });
        expect(qrv_lapack_potrf_sched_depth(table_.get(), &task) > 0, "a task with nothing to do");
    }
    void perform(PotrfTask& task) {
        const int ready = qrv_lapack_potrf_sched_depth(table_.get(), &task);
        const int products = std::min(ready, task.i - task.step), steps = std::min(products, limit_);
        for (int k = task.step; k < task.step + steps; ++k)
            for_each_tile(task, [&](Tile& t, int i, int j) {
                expect(finished(k, i) && finished(k, j), "a product with an unfinished tile");
                expect(t.steps == k - 1, "steps out of order");
                t.steps = k;
            });
        task.step += steps;
        if (task.step < task.i || ready == products)
            return;
        if (task.i != task.j)
            for_each_tile({task.i, task.i, 0, task.span},
                          [&](Tile&, int i, int j) { expect(finished(i, j), "a solve with an unfactored cell"); });
        for_each_tile(task, [](Tile& t, int i, int) { t.steps = i; });
        task.step = 0;
    }
    void give_back(const Thread& thread) {
        for_each_tile(thread.task, [](Tile& t, int, int) { t.held = false; });
        qrv_lapack_potrf_sched_release(table_.get(), &thread.task);
    }

    int tiles_, limit_;
    std::mt19937 random_;
    Table table_;
    std::vector<Thread> threads_;
    std::vector<Tile> state_;
    int coarsest_ = 0;
    std::string fault_;
};

TEST(PotrfSchedule, TakesEveryTileThroughItsStepsInOrder) {
    unsigned seed = 0;
    int coarsest = 0;
    for (int tiles = 1; tiles <= 40; ++tiles)
        for (int team = 1; team <= 16; ++team)
            for (const int limit : {1, 8, 100}) {
                Simulation simulation(tiles, team, limit, ++seed);
                ASSERT_EQ(simulation.run(), "") << tiles << " tile columns, team " << team << ", steps " << limit;
                coarsest = std::max(coarsest, simulation.coarsest());
            }
    EXPECT_EQ(coarsest, 16);
}

// The grain is the largest power of two that leaves every thread some cells; half of the columns are open at first.
TEST(PotrfSchedule, StartsCoarse) {
    struct Row {
        int tiles, threads, cell, reach;
    };
    for (const Row& row : {Row{1, 1, 1, 0}, Row{2, 8, 1, 1}, Row{40, 1, 16, 32}, Row{40, 3, 8, 24}, Row{41, 16, 2, 20},
                           Row{6, 2, 2, 4}}) {
        Table table(row.tiles, row.threads);
        EXPECT_EQ(table.get()->cell, row.cell) << row.tiles;
        EXPECT_EQ(table.get()->reach, row.reach) << row.tiles;
    }
}

} // namespace
} // namespace qrv::test
