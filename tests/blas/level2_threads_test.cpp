// How many threads a level 2 or 3 operation gets, on machines of every class. (GEMM: gemm_partition_test.cpp.)
#include <functional>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

#include "blas/thread/32/level3/level3_threads.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/level3/gemm_partition.hpp"
#include "support/recorded_machine.hpp"

namespace qrv::test {
namespace {

constexpr int huge = 2000000000;

// ---- Rules, on rows in which every number is another one -----------------------------------------------------------

TEST(Level2Threads, GeneralMatrixByRowsOrColumns) {
    // Any share of a thread repays that is at least 8 wide and 1000 in all.
    constexpr ShareRule rows{.wide = 8, .wideWork = 1000, .narrowWork = huge, .narrowLength = 0, .neverShare = 0};
    constexpr ShareRule columns{.wide = 9, .wideWork = 1100, .narrowWork = huge, .narrowLength = 0, .neverShare = 0};
    constexpr GemvRule rule{
        .serialBelow = 100, .rowShare = rows, .colShare = columns, .byWork = {.rows = 2000, .columns = 1000}};
    struct Row {
        Op op;
        int m, n, budget, threads, cpuMa = 64;
    };
    for (const Row& p : {Row{Op::none, 99, 99, 2, 1},
                         {Op::none, 100, 21, 2, 2}, // shares of 48 rows: 1008 elements
                         {Op::none, 100, 20, 2, 1},
                         {Op::none, 31, 900, 4, 1}, // no 8 rows each
                         {Op::none, 32, 900, 4, 4},
                         {Op::none, huge, huge, 8, 8},
                         {Op::transpose, 22, 100, 2, 2}, // of 50 columns: 1100
                         {Op::adjoint, 21, 100, 2, 1},
                         {Op::transpose, 900, 35, 4, 1}, // of 8 columns
                         {Op::adjoint, 900, 36, 4, 4},
                         {Op::none, 511, 90, 4, 1, 66}, // shares of 255 rows
                         {Op::none, 512, 7, 4, 1, 66},  // of 1792 elements
                         {Op::none, 1000, 8, 8, 3, 66},
                         {Op::none, 1000, 8, 1, 1, 66},
                         {Op::transpose, 900, 15, 4, 1, 66}, // of seven columns
                         {Op::adjoint, 900, 16, 4, 2, 66},
                         {Op::transpose, 100, 19, 4, 1, 66}})
        EXPECT_EQ(gemv_threads(rule, p.op, p.m, p.n, RecordedMachine{p.cpuMa, p.budget}), p.threads)
            << letter(p.op) << ' ' << p.m << " x " << p.n;
}

// From which sizes on how many threads are given, 1 below the first.
struct Steps {
    const char* name;
    std::function<int(int n, const RecordedMachine& machine)> decide;
    int budget;
    bool dynamicThreads;
    std::vector<std::pair<int, int>> from;
};

TEST(Level2Threads, SizesOfSymmetricAndTriangularOnes) {
    const auto symv = [](int n, const RecordedMachine& machine) {
        return symv_threads({.serialBelow = 20, .smallTeamUpTo = 400, .largeTeamFrom = 31}, n, machine);
    };
    const auto trmv = [](int n, const RecordedMachine& machine) {
        return trmv_threads({.serialBelow = 20, .largeTeamFrom = 31, .allFrom = 60}, n, machine);
    };
    const auto syr = [](int n, const RecordedMachine& machine) { return syr_threads({.serialBelow = 70}, n, machine); };
    for (const Steps& p : {
             Steps{"symv", symv, 2, true, {{20, 2}, {401, 1}}},
             {"symv", symv, 8, false, {{20, 8}, {401, 1}}},
             {"symv", symv, 9, true, {{31, 9}}},
             {"trmv", trmv, 4, true, {{20, 4}}},
             {"trmv", trmv, 5, true, {{20, 4}, {60, 5}}},
             {"trmv", trmv, 8, false, {{20, 8}}},
             {"trmv", trmv, 9, true, {{31, 4}, {60, 9}}},
             {"trmv", trmv, 9, false, {{31, 9}}},
             {"syr", syr, 2, true, {{70, 2}}},
             {"syr", syr, 16, false, {{70, 16}}},
         })
        for (const int cpuMa : {0, 32, 33, 64, 66}) {
            const bool hasRule = cpuMa == 32 || cpuMa == 33 || cpuMa == 64;
            int threads = 1;
            const auto expect = [&](int n) {
                const RecordedMachine machine{cpuMa, p.budget, p.dynamicThreads};
                EXPECT_EQ(p.decide(n, machine), hasRule ? threads : 1) << p.name << " n=" << n << ' ' << machine;
                EXPECT_EQ(p.decide(n, {cpuMa, 1, p.dynamicThreads}), 1) << p.name << " n=" << n;
            };
            for (const auto& [n, next] : p.from) {
                expect(n - 1);
                threads = next;
                expect(n);
            }
            expect(huge);
        }
}

// ---- By work -------------------------------------------------------------------------------------------------------

// The newest class: a thread gets a least share of multiply-adds, and eight columns or rows.
TEST(Level3Threads, ByWork) {
    using enum VectorForm;
    struct Row {
        VectorForm form;
        double work;
        int budget, threads;
    };
    for (const Row& row :
         {Row{avx512, 64.0 * 64 * 64, 4, 1}, Row{avx512, 299999, 4, 1}, Row{avx512, 300000, 4, 2},
          Row{avx512, 128.0 * 128 * 128, 16, 13}, Row{avx512, 1e30, 16, 16}, Row{avx2, 239999, 4, 1},
          Row{avx2, 240000, 4, 2}, Row{sse, 99999, 4, 1}, Row{sse, 150000, 4, 3}, Row{sse, 1e9, 1, 1}}) {
        const RecordedMachine machine{66, row.budget, true, -1, row.form};
        EXPECT_EQ(threads_by_work(row.work, machine), row.threads) << row.work;
        EXPECT_EQ(machine.asked, row.threads == 1 && row.budget > 1 ? "f" : "fb") << row.work;
    }
    const RecordedMachine machine{66, 8};
    EXPECT_EQ(sliced_team(symmetric_call<float>(Side::left, 1000, 31), machine).threads, 3);
    EXPECT_EQ(sliced_team(symmetric_call<float>(Side::left, 1000, 15), machine).threads, 1);
    EXPECT_EQ(sliced_team(symmetric_call<float>(Side::right, 31, 1000), machine).threads, 3);
    EXPECT_EQ(sliced_team(product_call<float>(Side::left, 64, 64), machine).threads, 2);
    EXPECT_EQ(sliced_team(solve_call<float>(Side::left, 64, 64), machine).threads, 1);
    EXPECT_EQ(sliced_team(solve_call<SingleComplex>(Side::left, 64, 64), machine).threads, 5);
    EXPECT_EQ(update_team(31, 1e9, machine).threads, 3);
    EXPECT_EQ(gemm_threads_by_work({1, 5000, 5000}, 25e6, machine), 1);
    EXPECT_EQ(gemm_threads_by_work({5000, 1, 5000}, 25e6, machine), 1);
    EXPECT_EQ(gemm_threads_by_work({2, 5000, 5000}, 50e6, machine), 8);
}

} // namespace
} // namespace qrv::test
