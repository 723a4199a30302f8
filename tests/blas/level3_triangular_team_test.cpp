// Triangular solves and products on a team: who gets which right-hand sides, and that all of them come out.
#include <gtest/gtest.h>
#include <omp.h>

#include "blas/blas.hpp"
#include "blas/thread/32/level3/level3_threads.hpp"
#include "support/level3_case.hpp"
#include "support/observed_team.hpp"
#include "support/teams.hpp"

namespace qrv::test {
namespace {

constexpr bool same(MatrixSlice x, MatrixSlice y) {
    return x.row == y.row && x.column == y.column && x.m == y.m && x.n == y.n;
}
// Columns go with the left side, rows with the right one; the last thread takes what remains.
static_assert(same(matrix_slice(Side::left, 5, 10, 3, 0), {0, 0, 5, 3}));
static_assert(same(matrix_slice(Side::left, 5, 10, 3, 1), {0, 3, 5, 3}));
static_assert(same(matrix_slice(Side::left, 5, 10, 3, 2), {0, 6, 5, 4}));
static_assert(same(matrix_slice(Side::right, 10, 5, 3, 2), {6, 0, 4, 5}));
static_assert(same(matrix_slice(Side::left, 5, 2, 3, 1), {0, 0, 5, 0}));
static_assert(same(matrix_slice(Side::left, 5, 2, 3, 2), {0, 0, 5, 2}));

struct FourThreads {
    int* asked;
    constexpr int budget() const { return ++*asked, 4; }
};
constexpr int threads_for(int m, int n, int questions) {
    int asked = 0;
    const int threads = sliced_threads(m, n, FourThreads{&asked});
    return asked == questions ? threads : -1;
}
static_assert(threads_for(16, 16, 0) == 1);
static_assert(threads_for(17, 16, 1) == 4);
static_assert(threads_for(1, 17, 1) == 4);

template <class T>
void check_on_team(int team, const TriangularShape& p, int expectedTeam) {
    const ForcedTeam forced(team);
    TriangularCheck<T> check(p);
    largestTeam = 1;
    EXPECT_TRUE(check.solved_by(kernel_for<T>(qrv_blas_strsm, qrv_blas_ctrsm))) << p << " on " << team;
    if (expectedTeam) {
        EXPECT_EQ(largestTeam, expectedTeam) << p << " on " << team;
    }
    largestTeam = 1;
    EXPECT_TRUE(check.multiplied_by(kernel_for<T>(qrv_blas_strmm, qrv_blas_ctrmm))) << p << " on " << team;
    if (expectedTeam) {
        EXPECT_EQ(largestTeam, expectedTeam) << p << " on " << team;
    }
}

// Both routines on teams of which nothing is known but what was asked for.
void check_on_teams(std::initializer_list<int> teams, std::initializer_list<std::pair<int, int>> sizes) {
    for (const int team : teams)
        for (const auto& [n, count] : sizes)
            for (const char side : {'l', 'L', 'R'}) {
                const Layout layout{.extra = 3, .offset = 1, .guard = Guard::canaries};
                check_on_team<float>(team, {side, 'U', 'N', 'N', n, count, 2, layout}, 0);
                check_on_team<SingleComplex>(team, {side, 'L', 'C', 'U', n, count, 0.5F, layout}, 0);
            }
}

TEST(Level3TriangularTeam, EveryTeam) {
    check_on_teams({1, 2, 3, 4, 8}, {{17, 10}, {5, 100}, {70, 3}, {130, 129}});
}

TEST(Level3TriangularTeam, DecidedBySize) {
    if (omp_get_thread_limit() < 3 || omp_get_dynamic())
        GTEST_SKIP() << "teams are limited";
    for (const char side : {'L', 'R'}) {
        check_on_team<float>(3, {side, 'U', 'N', 'N', 16, 16}, 1);
        check_on_team<float>(3, {side, 'U', 'N', 'N', 16, 17}, 3);
        check_on_team<SingleComplex>(3, {side, 'L', 'T', 'N', 17, 1}, 3);
        check_on_team<float>(1, {side, 'L', 'T', 'N', 17, 17}, 1);
    }
}

// The number asked for is an upper bound: the runtime may give less.
TEST(Level3TriangularTeam, SmallerTeamThanAsked) {
    const int before = omp_get_dynamic();
    omp_set_dynamic(1);
    check_on_teams({8, 64}, {{40, 100}});
    omp_set_dynamic(before);
    const int levels = omp_get_max_active_levels();
    omp_set_max_active_levels(1);
#pragma omp parallel num_threads(2)
#pragma omp critical
    check_on_teams({4}, {{40, 100}});
    omp_set_max_active_levels(levels);
}

// Without right-hand sides or unknowns nothing happens, and no thread is asked for without columns.
TEST(Level3TriangularTeam, EmptyMatrices) {
    for (const char side : {'L', 'R'})
        for (const auto& [n, count] : {std::pair{0, 40}, {40, 0}})
            check_on_team<float>(4, {side, 'U', 'N', 'N', n, count}, (side == 'L') == (n == 0) ? 0 : 1);
}

// For the race detector.
TEST(Level3TriangularRaces, SolveAndMultiply) {
    check_on_teams({2, 3}, {{40, 70}});
}

} // namespace
} // namespace qrv::test
