// BLAS on teams.
#include "support/routines.hpp"
#include "support/shapes.hpp"
#include "support/team_battery.hpp"
#include "support/vector_routines.hpp"

namespace qrv::test {
namespace {

template <class X>
std::string text(const X& x) {
    std::ostringstream out;
    out << x;
    return out.str();
}

// ---- Level 1 ---------------------------------------------------------------------------------------------------------

constexpr std::pair<int, int> increments[] = {{1, 1}, {2, 3}, {-1, 1}, {1, -2}, {-3, -1}};

template <class T>
void add_vector_cases(std::vector<TeamCase>& cases, std::initializer_list<int> lengths,
                      std::initializer_list<int> decided) {
    for (const VectorRoutine<T>& routine : vector_routines<T>()) {
        if (!routine.row)
            continue;
        const auto add = [&](const VectorShape& p, bool decides) {
            cases.push_back({text(p) + ' ' + routine.name,
                             [=](int team, bool) {
                                 return comes_out_exactly(routine, p, [&](const VectorCall<T>& v) {
                                     return decides ? routine.decided(v) : routine.on_team(&team, v);
                                 });
                             },
                             nullptr});
            if (decides)
                cases.back().threads = [=] {
                    return vector_threads(*routine.row, p.n, p.incx, p.incy, ThisMachine{});
                };
        };
        for (const int n : lengths)
            for (const auto& [incx, incy] : increments)
                add({.n = n, .incx = incx, .incy = incy}, false);
        for (const int n : decided)
            for (const auto& [incx, incy] : increments)
                add({.n = n, .incx = incx, .incy = incy}, true);
        if (decided.size() > 0 && routine.row != &srotRow) // which would round n times
            add({.n = 7000, .incx = 0}, true);
    }
}
std::vector<TeamCase> level1_cases(std::initializer_list<int> lengths, std::initializer_list<int> decided) {
    std::vector<TeamCase> cases;
    add_vector_cases<float>(cases, lengths, decided);
    add_vector_cases<SingleComplex>(cases, lengths, decided);
    return cases;
}

// The limits of all rows.
INSTANTIATE_TEST_SUITE_P(Level1, Team, testing::Values(TeamFamily{"level 1",
    [] { return level1_cases({-3, 0, 1, 7, 8, 63, 100, 1000},
                             {1, 2000, 2001, 2500, 2501, 3000, 3001, 4000, 4001, 4900, 4901, 5000, 5001, 6001, 20000}); },
    [] { return level1_cases({100, 1000}, {}); }}));

// Two partial sums cancel what a third would lose against them in single precision.
TEST(Level1Team, PartialResultsAreAddedInExtendedPrecision) {
    const int n = 24, one = 1, team = 3;
    std::vector<float> x(24, 0), y(24, 1);
    x[0] = 1e8F;
    x[8] = 1;
    x[16] = -1e8F;
    std::vector<qrv_complex> cx(24), cy(24, {1, 0});
    for (std::size_t i = 0; i < 24; ++i)
        cx[i] = {x[i], x[i]};
    qrv_complex c;
    largestTeam = 0;
    qrv_blas_cdotc_omp(&team, &c, &n, cx.data(), &one, cy.data(), &one);
    if (largestTeam < 3)
        GTEST_SKIP() << "teams are limited";
    EXPECT_EQ(qrv_blas_sdot_omp(&team, &n, x.data(), &one, y.data(), &one), 1);
    EXPECT_EQ(c.re, 1);
    EXPECT_EQ(c.im, -1);
}

// The partial results of a team beyond 128 threads stand in work memory.
TEST(Level1Team, PartialResultsOfLargeTeams) {
    const auto check = [](const auto& routines, int team) {
        for (const auto& routine : routines)
            if (routine.sums && routine.on_team) {
                EXPECT_TRUE(comes_out_exactly(routine, {.n = 1100, .incy = -2},
                                              [&](const auto& v) { return routine.on_team(&team, v); }))
                    << routine.name << " on " << team;
            }
    };
    for (const int team : {128, 129, 130})
        for (const std::size_t refused : {std::size_t{0}, anySize}) {
            const WorkMemoryProbe probe(0, refused);
            check(vector_routines<float>(), team);
            check(vector_routines<SingleComplex>(), team);
            EXPECT_EQ(probe.refusals() > 0, refused > 0 && team > 128) << team;
        }
}

// ---- Levels 2 and 3 --------------------------------------------------------------------------------------------------

template <class T>
TeamCase case_of(const Routine<T>& routine, const Shape& p, bool decides) {
    const auto problem = std::make_shared<const Problem<T>>(routine.operation, p);
    TeamCase one{text(p) + ' ' + routine.name, [=](int team, bool twice) {
                     const auto run = [&](const Call<T>& v) { decides ? routine.decided(v) : routine.on_team(&team, v); };
                     const Operand<T> c = problem->result(run);
                     return problem->right(c) && (!twice || c.same_bits(problem->result(run)));
                 }};
    if (decides && p.m > 0 && p.n > 0)
        one.threads = [=] {
            Operand<T> c = problem->before;
            return problem->untouched() ? 1 : routine.threads(problem->on(c));
        };
    return one;
}

using Pairs = std::initializer_list<std::pair<int, int>>;

// One of `every` options of each routine: with the team given, and by its decision.
std::vector<TeamCase> cases_of_level(bool vectors, Pairs given, Pairs decided, unsigned every) {
    std::vector<TeamCase> cases;
    Turns turns;
    each_routine(vectors, [&]<class T>(const Routine<T>& routine) {
        for (const Shape& options : every_option<T>(routine.operation)) {
            const auto add = [&](std::pair<int, int> size, bool decides) {
                if (!turns.one_in(every))
                    return;
                Shape p = options;
                p.m = size.first, p.n = size.second, p.k = routine.operation.updates() ? size.first : 0;
                cases.push_back(case_of(routine, turns.vary(p), decides));
            };
            for (const auto& size : given)
                if (routine.on_team)
                    add(size, false);
            for (const auto& size : decided)
                if (routine.decided)
                    add(size, true);
        }
    });
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Level2, Team, testing::Values(TeamFamily{"level 2",
    [] { return cases_of_level(true, {{3, 33}, {100, 129}, {1, 1}, {40, 7}, {700, 300}, {9, 1030}},
                               {{0, 500}, {500, 0}, {1, 1}, {127, 127}, {300, 255}, {60, 300}, {20, 1600}}, 2); },
    [] { return cases_of_level(true, {{100, 129}, {40, 60}}, {}, 3); }}));
INSTANTIATE_TEST_SUITE_P(Level3, Team, testing::Values(TeamFamily{"level 3",
    [] { return cases_of_level(false, {}, {{0, 9}, {9, 0}, {16, 16}, {16, 17}, {17, 16}, {5, 100}, {3, 70}, {130, 129}}, 2); },
    [] { return cases_of_level(false, {}, {{9, 40}, {40, 9}, {40, 70}}, 4); }}));

} // namespace
} // namespace qrv::test
