// The scheduler of the tiled Cholesky factorization, without threads: a simulated team takes and performs tasks in
// random interleavings.
#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

#include "lapack/kernel/source/cholesky/potrf_tiles.hpp"
#include "lapack/task_team.hpp"
#include "support/cholesky.hpp"
#include "support/combine.hpp"
#include "support/simulated_team.hpp"

namespace qrv::test {
namespace {

// The table of T x T tiles, counted from 1, and how far each of them is. A task takes so many steps at most.
class Tiles : public SimulatedMatrix {
public:
    struct Task : PotrfTask {
        bool done = false;
        bool waits() const { return i < 0 && !done; }
        bool ends() const { return done; }
    };

    explicit Tiles(int tiles, int limit = 1)
        : SimulatedMatrix((tiles + 1) * (tiles + 1)), tiles_(tiles), limit_(limit),
          words_(static_cast<std::size_t>(qrv_lapack_potrf_sched_size(&tiles)) + 1, guard) {}

    PotrfTable* table() { return reinterpret_cast<PotrfTable*>(words_.data()); }
    int coarsest() const { return coarsest_; } // span of a task

    // As the leading cell is factored before there is a team.
    void begin(int team) {
        qrv_lapack_potrf_sched_init(table(), &tiles_, &team);
        const PotrfTask leading{1, 1, 0, table()->cell};
        coarsest_ = leading.span;
        for_each_tile(leading, [&](int tile, int i, int) { take(tile, 1), advance(tile, i), give_back(tile); });
        qrv_lapack_potrf_sched_release(table(), &leading);
    }
    Task first(int) const { return {}; }
    void next(int, Task& task) {
        qrv_lapack_potrf_sched_next(table(), &task);
        task.done = qrv_lapack_potrf_sched_done(table());
        if (task.i < 0)
            return;
        coarsest_ = std::max(coarsest_, task.span);
        expect(task.i <= task.j && task.j <= tiles_ && (task.i - 1) % task.span == 0 && (task.j - 1) % task.span == 0,
               "no such cell");
        for_each_tile(task, [&](int tile, int i, int) {
            expect(steps(tile) < i, "a finished tile");
            take(tile, task.step);
        });
        expect(qrv_lapack_potrf_sched_depth(table(), &task) > 0, "a task with nothing to do");
    }
    bool perform(PotrfTask& task, int) {
        const int ready = qrv_lapack_potrf_sched_depth(table(), &task), products = std::min(ready, task.i - task.step);
        for (const int end = task.step + std::min(products, limit_); task.step < end; ++task.step)
            for_each_tile(task, [&](int tile, int i, int j) {
                expect(finished(task.step, i) && finished(task.step, j), "a product with an unfinished tile");
                advance(tile, task.step);
            });
        if (task.step == task.i && ready > products) {
            if (task.i != task.j)
                for_each_tile({task.i, task.i, 0, task.span},
                              [&](int, int i, int j) { expect(finished(i, j), "a solve with an unfactored cell"); });
            for_each_tile(task, [&](int tile, int i, int) { advance(tile, i); });
            task.step = 0;
        }
        for_each_tile(task, [&](int tile, int, int) { give_back(tile); });
        qrv_lapack_potrf_sched_release(table(), &task);
        return true;
    }
    bool complete() const {
        bool complete = words_.back() == guard;
        for (int j = 1; j <= tiles_; ++j)
            for (int i = 1; i <= j; ++i)
                complete = complete && finished(i, j);
        return complete;
    }

private:
    static constexpr int guard = -99;

    int tile(int i, int j) const { return j * (tiles_ + 1) + i; }
    bool finished(int i, int j) const { return steps(tile(i, j)) == i; }

    template <class Visit>
    void for_each_tile(const PotrfTask& cell, const Visit& visit) const {
        for (int j = cell.j; j < std::min(cell.j + cell.span, tiles_ + 1); ++j)
            for (int i = cell.i; i < std::min(cell.i + cell.span, j + 1); ++i)
                visit(tile(i, j), i, j);
    }

    int tiles_, limit_;
    std::vector<int> words_;
    int coarsest_ = 0;
};

TEST(PotrfSchedule, TakesEveryTileThroughItsStepsInOrder) {
    unsigned seed = 0;
    int coarsest = 0;
    combine({1, 8, 100}, up_to(1, 40), up_to(1, 16)).each([&](int limit, int tiles, int team) {
        Tiles job(tiles, limit);
        EXPECT_EQ(simulate(job, team, ++seed), "");
        coarsest = std::max(coarsest, job.coarsest());
    });
    EXPECT_EQ(coarsest, 16);
    const int most = 100'000; // beyond what an int counts
    EXPECT_GT(qrv_lapack_potrf_sched_size(&most), std::int64_t{most} * most / 2);
}

// The tasks themselves on a small matrix. One whose cell fails keeps it: a teammate that takes one more before it sees
// the stop must not factor what is left of the cell.
struct SimulatedFactorization : SimulatedMatrix, lapack::TiledMatrix<float> {
    SimulatedFactorization(Uplo triangle, int order, Matrix<float> matrix, std::vector<int>& words)
        : SimulatedMatrix(0), TiledMatrix{triangle, order, 8, 2, matrix, reinterpret_cast<PotrfTable*>(words.data())} {}
    void begin(int team) {
        const int tiles = (n - 1) / nb + 1;
        qrv_lapack_potrf_sched_init(table, &tiles, &team);
        const PotrfTask leading{1, 1, 0, table->cell};
        lapack::potrf_serial(uplo, length(1, leading.span), a, {});
        qrv_lapack_potrf_sched_release(table, &leading);
    }
};
TEST(PotrfSchedule, KeepsACellThatFails) {
    constexpr int n = 90;
    combine({Uplo::upper, Uplo::lower}, {n, 37, 62, 85}, up_to(0, 19)).each([](Uplo uplo, int bad, int seed) {
        const Operand<float> good = definite<float>(uplo, n);
        Operand<float> whole(good), a(good);
        ASSERT_EQ(lapack::potrf_serial(uplo, n, whole.view(), {}).info, 0);
        if (bad < n)
            a(bad, bad) = -1;
        std::vector<int> words(200);
        SimulatedFactorization job(uplo, n, a.view(), words);
        EXPECT_EQ(simulate(job, 4, unsigned(seed)), "");
        EXPECT_EQ(job.result.info, bad < n ? bad + 1 : 0);
        for (int j = 0; j < bad; ++j)
            EXPECT_NEAR(a(j, j), whole(j, j), 1e-4) << j;
    });
}

// Threads give cells back without a lock, tile by tile, and others claim them at once. Tasks that do nothing else make
// such moments frequent: a tile that goes back in its steps stays unfinished for ever, or is worked on twice.
struct IdleTiles {
    using Task = Tiles::Task;

    explicit IdleTiles(int columns)
        : tiles(columns), words(static_cast<std::size_t>(qrv_lapack_potrf_sched_size(&tiles))), solves(words.size()) {}

    PotrfTable* table() { return reinterpret_cast<PotrfTable*>(words.data()); }
    void begin(int team) {
        qrv_lapack_potrf_sched_init(table(), &tiles, &team);
        const PotrfTask leading{1, 1, 0, table()->cell};
        qrv_lapack_potrf_sched_release(table(), &leading);
    }
    Task first(int) const { return {}; }
    void next(int, Task& task) {
        qrv_lapack_potrf_sched_next(table(), &task);
        task.done = qrv_lapack_potrf_sched_done(table()) || ++calls > enough;
    }
    bool perform(Task& task, int) {
        if (const int ready = qrv_lapack_potrf_sched_depth(table(), &task); task.step + ready > task.i) {
            ++solves[static_cast<std::size_t>(task.j * (task.j - 1) / 2 + task.i - 1)];
            task.step = 0;
        } else {
            task.step += std::min(ready, 1);
        }
        qrv_lapack_potrf_sched_release(table(), &task);
        return true;
    }

    static constexpr int enough = 1'000'000;
    int tiles, calls = 0;
    std::vector<int> words;
    std::vector<std::atomic<int>> solves; // of the cells with their corners there
};
TEST(PotrfScheduleRaces, CellsGivenBackPartByPart) {
    for (int run = 0; run < 1000; ++run) {
        IdleTiles job(60 + run % 8);
        lapack::TaskTeam(job).run(3 + run % 6);
        ASSERT_TRUE(qrv_lapack_potrf_sched_done(job.table())) << "ran dry";
        ASSERT_TRUE(std::all_of(job.solves.begin(), job.solves.end(), [](int times) { return times <= 1; }));
    }
}

} // namespace
} // namespace qrv::test
