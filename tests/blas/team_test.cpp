// BLAS on teams.
#include <chrono>

#include "blas/thread/common/level3/gemm_team.hpp"
#include "blas/thread/common/team_omp.hpp"
#include "support/gemm.hpp"
#include "support/routines.hpp"
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

// ---- Busy cores ----------------------------------------------------------------------------------------------------

TEST_F(TeamsOnBusyCores, GiveWayAfterALossAndForAWhile) {
    EXPECT_EQ(ticks_alone(2, 40000, leastDelay), 0) << "no time slice";
    EXPECT_GT(ticks_alone(2, 40000, leastDelay + 1), leastDelay);
    EXPECT_EQ(ticks_alone(64, 200000, 12800000), 0) << "one thread takes as long";
    EXPECT_EQ(ticks_alone(3, 0, Ticks{1} << 60), longestAlone);
    EXPECT_TRUE(is_alone(longestAlone, 0) && !is_alone(longestAlone, longestAlone) && !is_alone(longestAlone, -1));
}

// Whoever of the two comes late. Other work may hold up the other one too, which tells nothing.
TEST_F(TeamsOnBusyCores, ATeamThatWasWaitedForIsNotFormedAgain) {
    for (const int late : {0, 1}) {
        aloneUntil = 0;
        for (int tries = 0; tries < 20 && aloneUntil == 0; ++tries)
            on_team(2, [&](int, int thread) {
                if (thread == late)
                    std::this_thread::sleep_for(std::chrono::milliseconds(5));
            });
        EXPECT_GT(aloneUntil, 0) << late;
    }
    aloneUntil = 0;
    std::jthread([] { // whose team is new
        for (int loss = 0; loss < lossesForgiven; ++loss)
            note_region(2, 0, 0, 2 * leastDelay);
        EXPECT_EQ(aloneUntil, 0);
        note_region(2, 0, 0, 2 * leastDelay);
    })
        .join();
    EXPECT_GT(aloneUntil, 0);
    const auto largest_of_parts = [] {
        aloneUntil = ticks_now() + longestAlone;
        largestTeam = 0;
        std::atomic<int> parts = 0;
        on_team(3, [&](int team, int thread) {
            parts += team * (1 << thread);
            EXPECT_TRUE(calls_come_from_a_region());
        });
        EXPECT_EQ(parts, 21);
        parts = 0;
        on_team_in_pieces(2, 3, [&](int team, int share, int piece) {
            parts += team * (1 << (share * 3 + piece));
            EXPECT_TRUE(calls_come_from_a_region());
        });
        EXPECT_EQ(parts, 126);
        return largestTeam.load();
    };
    EXPECT_EQ(largest_of_parts(), 0);
    qrv_serv_set_dynamic(0);
    EXPECT_EQ(largest_of_parts(), 3);
}

// A thread that stays with its piece is waited for only there.
TEST_F(TeamsOnBusyCores, PiecesGoToWhoeverIsFree) {
    for (const int held : {0, 1}) {
        aloneUntil = 0;
        std::atomic<int> done[6] = {}, all = 0;
        largestTeam = 0;
        on_team_in_pieces(2, 3, [&](int team, int share, int piece) {
            ++done[share * 3 + piece];
            const auto given_up = std::chrono::steady_clock::now() + std::chrono::seconds(20);
            while (team == 2 && omp_get_thread_num() == held && all < 5 && std::chrono::steady_clock::now() < given_up)
                std::this_thread::yield();
            EXPECT_TRUE(team < 2 || omp_get_thread_num() != held || all == 5);
            ++all;
        });
        EXPECT_TRUE(std::all_of(std::begin(done), std::end(done), [](int n) { return n == 1; })) << held;
        EXPECT_EQ(largestTeam, 2);
    }
}

// ---- Level 1 -------------------------------------------------------------------------------------------------------

// What an increment of 0 would have round n times.
constexpr const VectorRow* inPlace[] = {&srotRow, &srotmRow, &sscalRow, &cscalRow, &csscalRow};

constexpr std::pair<int, int> increments[] = {{1, 1}, {2, 3}, {-1, 1}, {1, -2}, {-3, -1}};

// What routines of one vector find on a team is what one thread finds: squares and magnitudes are exact, and of several
// largest elements and of NaN the place tells.
template <class T>
void add_norm_cases(std::vector<TeamCase>& cases, std::initializer_list<int> lengths, bool decides) {
    for (const int n : lengths)
        for (const int inc : {1, 2, -3}) {
            const auto right = [=](int team, bool) {
                const auto same = [](float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); };
                const auto as_alone = [&](const auto& kernel, const auto& decided, const auto& onTeam, const T* x) {
                    return same(static_cast<float>(kernel(&n, x, &inc)),
                                static_cast<float>(decides ? decided(&n, x, &inc) : onTeam(&team, &n, x, &inc)));
                };
                std::minstd_rand random(static_cast<unsigned>(n + inc + team));
                GuardedVector<T> x(n, inc);
                bool all = true;
                for (const float size : {1.0F, 0x1p120F, 0x1p-146F})
                    for (int special = 0; special < (n > 1000 ? 1 : 4); ++special) {
                        x.fill([&] { return size * eighths<T>(random); });
                        for (int i = 0; n > 0 && i < special; ++i)
                            x[static_cast<int>(random() % static_cast<unsigned>(n))] =
                                scalar<T>(i == 1 ? infinity : nan);
                        using N = kernel::Native<T>;
                        using D = blas::Native<T>;
                        all = all && as_alone(N::asum, D::asum, routine_for<T>(qrv_blas_sasum_omp, qrv_blas_scasum_omp),
                                              x.data());
                        all = all && as_alone(N::nrm2, D::nrm2, routine_for<T>(qrv_blas_snrm2_omp, qrv_blas_scnrm2_omp),
                                              x.data());
                        all = all && as_alone(N::iamax, D::iamax,
                                              routine_for<T>(qrv_blas_isamax_omp, qrv_blas_icamax_omp), x.data());
                    }
                return all;
            };
            cases.push_back({"norms of " + std::to_string(n) + " inc " + std::to_string(inc), right, nullptr});
            if (decides)
                cases.back().threads = [=] {
                    int most = 1;
                    for (const VectorRow* row : {&row_for<T>(sasumRow, scasumRow), &row_for<T>(snrm2Row, scnrm2Row),
                                                 &row_for<T>(isamaxRow, icamaxRow)})
                        most = std::max(most, vector_threads(*row, n, inc, inc, ThisMachine{}));
                    return most;
                };
        }
}

std::vector<TeamCase> level1_cases(std::initializer_list<int> lengths, std::initializer_list<int> decided) {
    std::vector<TeamCase> cases;
    for_both_elements([&]<class T>() {
        for (const VectorRoutine<T>& routine : vector_routines<T>()) {
            if (!routine.row)
                continue;
            const auto add = [&](const VectorShape& p, bool decides) {
                const auto right = [=](int team, bool) {
                    return comes_out_exactly(routine, p, [&](const VectorCall<T>& v) {
                        return decides ? routine.decided(v) : routine.on_team(&team, v);
                    });
                };
                const auto threads = [=] { return vector_threads(*routine.row, p.n, p.incx, p.incy, ThisMachine{}); };
                cases.push_back({text(p) + ' ' + routine.name, right, nullptr});
                if (decides)
                    cases.back().threads = threads;
            };
            for (const auto& [incx, incy] : increments) {
                for (const int n : lengths)
                    add({.n = n, .incx = incx, .incy = incy}, false);
                for (const int n : decided)
                    if (n <= 20000 || incy < 0)
                        add({.n = n, .incx = incx, .incy = incy}, true);
            }
            if (decided.size() > 0 && std::count(std::begin(inPlace), std::end(inPlace), routine.row) == 0)
                add({.n = 7000, .incx = 0}, true);
        }
        add_norm_cases<T>(cases, lengths, false);
        if (decided.size() > 0)
            add_norm_cases<T>(cases, {0, 1000, isComplex<T> ? 120001 : 230001}, true);
    });
    return cases;
}

// The limits of all rows.
const TeamFamily level1{"level 1",
                        [] {
                            return level1_cases({-3, 0, 1, 7, 8, 63, 100, 1000},
                                                {1, 2000, 2001, 2500, 2501, 3000, 3001, 4000, 4001, 4900, 4901, 5000,
                                                 5001, 6001, 20000, 230001});
                        },
                        [] {
                            return level1_cases({100, 1000}, {});
                        }};
INSTANTIATE_TEST_SUITE_P(Level1, Team, testing::Values(level1));

// Two partial sums cancel what a third would lose against them in single precision.
TEST(Level1Team, PartialResultsAreAddedInExtendedPrecision) {
    const int n = 24, one = 1, team = 3;
    std::vector<float> x(24, 0);
    x[0] = 1e8F, x[8] = 1, x[16] = -1e8F;
    const std::vector<float> ones(24, 1);
    std::vector<qrv_complex> cx(24), cy(24, {1, 0});
    std::transform(x.begin(), x.end(), cx.begin(), [](float xi) { return qrv_complex{xi, xi}; });
    qrv_complex c;
    largestTeam = 0;
    qrv_blas_cdotc_omp(&team, &c, &n, cx.data(), &one, cy.data(), &one);
    if (largestTeam < 3)
        GTEST_SKIP() << "teams are limited";
    EXPECT_EQ(qrv_blas_sdot_omp(&team, &n, x.data(), &one, ones.data(), &one), 1);
    EXPECT_TRUE(c.re == 1 && c.im == -1);
}

// The partial results of a team beyond 128 threads stand in work memory.
TEST(Level1Team, PartialResultsOfLargeTeams) {
    for (const int team : {128, 129, 130})
        for (const std::size_t refused : {std::size_t{0}, anySize}) {
            const WorkMemoryProbe probe(0, refused);
            for_both_elements([&]<class T>() {
                for (const VectorRoutine<T>& routine : vector_routines<T>())
                    if (routine.sums() && routine.on_team) {
                        EXPECT_TRUE(comes_out_exactly(routine, {.n = 1100, .incy = -2},
                                                      [&](const auto& v) { return routine.on_team(&team, v); }))
                            << routine.name << " on " << team;
                    }
            });
            EXPECT_EQ(probe.refusals() > 0, refused > 0 && team > 128) << team;
        }
}

// ---- Levels 2 and 3 ------------------------------------------------------------------------------------------------

// run(team, call) comes out right, and twice with the same bits.
template <class T, class Run>
TeamCase case_of(const std::string& name, std::shared_ptr<const Problem<T>> problem, const Run& run) {
    return {name + ' ' + text(problem->p), [=](int team, bool twice) {
                const auto once = [&](const Call<T>& v) { run(team, v); };
                const Operand<T> c = problem->result(once);
                if (!twice)
                    return problem->right(c);
                beforeSecondRun();
                return problem->right(c) && c.same_bits(problem->result(once));
            }};
}
template <class T>
TeamCase case_of(const Routine<T>& routine, const Shape& p, bool decides) {
    const auto problem = std::make_shared<const Problem<T>>(routine.operation, p);
    TeamCase one = case_of(routine.name, problem, [=](int team, const Call<T>& v) {
        decides ? routine.decided(v) : routine.on_team(&team, v);
    });
    if (!decides && routine.operation.updates()) // each element by one thread, as one thread alone would
        one.right = [=, right = one.right](int team, bool twice) {
            const auto on = [&](int threads) {
                return problem->result([&](const Call<T>& v) { routine.on_team(&threads, v); });
            };
            return right(team, twice) && on(team).same_bits(on(1));
        };
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

const TeamFamily level2{
    "level 2",
    [] {
        return cases_of_level(
            true, {{3, 33}, {100, 129}, {1, 1}, {40, 7}, {700, 300}, {9, 1030}},
            {{0, 500}, {500, 0}, {1, 1}, {127, 127}, {200, 200}, {300, 255}, {60, 300}, {20, 1600}, {400, 480}}, 2);
    },
    [] {
        return cases_of_level(true, {{100, 129}, {40, 60}}, {}, 3);
    }};
const TeamFamily level3{
    "level 3",
    [] {
        return cases_of_level(
            false, {}, {{0, 9}, {9, 0}, {16, 16}, {16, 17}, {17, 16}, {5, 100}, {3, 70}, {90, 140}, {150, 129}}, 2);
    },
    [] {
        return cases_of_level(false, {}, {{9, 40}, {40, 70}, {110, 120}}, 6);
    }};
INSTANTIATE_TEST_SUITE_P(Level2, Team, testing::Values(level2));
INSTANTIATE_TEST_SUITE_P(Level3, Team, testing::Values(level3));

// ---- GEMM ----------------------------------------------------------------------------------------------------------

template <class T>
GemmCall<T> problem_of(const Call<T>& v) {
    return {op_of(v.trans), op_of(v.transb), v.m, v.n, v.k, v.alpha, {v.a, v.lda}, {v.b, v.ldb}, v.beta, {v.c, v.ldc}};
}
template <class T>
void driver(const Call<T>& v) {
    call_gemm(routine_for<T>(qrv_blas_sgemm, qrv_blas_cgemm), v);
}

// Facts of a machine of each class; the build stays the one of this run. For complex operands all classes are one.
constexpr GemmFacts machines[] = {{66, 1 << 18}, {0, -1}, {32, 1 << 20}, {33, 6 << 20}, {33, 1 << 20}};

struct GemmSize {
    int m, n, k;
};

// In the small region.
constexpr GemmSize small[] = {{100, 100, 100}, {90, 10, 100}, {17, 5, 40}, {40, 2, 99}, {5, 33, 64},
                              {97, 3, 51},     {3, 3, 100},   {1, 100, 7}, {100, 1, 7}, {64, 64, 0}};
// With a plan, in the classes that scale first: plain rows, columns, and rows with shared copies of A; blocks of
// all sizes, k in several blocks and not a multiple of a unit, fewer rows than threads have panels; nothing to
// multiply.
constexpr GemmSize large[] = {{530, 30, 258}, {90, 130, 71},   {120, 120, 131}, {121, 121, 613}, {131, 131, 71},
                              {11, 11, 700},  {3001, 9, 21},   {7, 3, 8001},    {1, 300, 300},   {300, 1, 300},
                              {101, 17, 3},   {150, 150, 260}, {150, 120, 0},   {130, 900, 5}};

template <class T>
using Way = std::function<void(int team, const Call<T>& v)>;

template <class T>
struct NamedWay {
    std::string name;
    Way<T> run;
};
template <class T>
std::vector<NamedWay<T>> large_ways() {
    std::vector<NamedWay<T>> ways;
    for (const GemmFacts& facts : machines)
        if (ways.empty() || !isComplex<T>)
            ways.push_back({"large region of class " + std::to_string(static_cast<int>(gemm_machine_class(facts))),
                            [&](int team, const Call<T>& v) { gemm_large_region(problem_of(v), facts, team); }});
    ways.push_back({"pieces", [](int team, const Call<T>& v) { gemm_grid_region(problem_of(v), team, 3); }});
    ways.push_back({"driver", [](int, const Call<T>& v) { driver(v); }});
    return ways;
}

std::vector<TeamCase> gemm_cases(std::initializer_list<GemmSize> few) {
    std::vector<TeamCase> cases;
    for_both_elements([&]<class T>() {
        Turns turns;
        const std::vector<Shape> options = every_option<T>({What::product});
        const auto add = [&](const GemmSize& s, const std::vector<NamedWay<T>>& ways, bool scaledOnly = false) {
            Shape p = turns.pick(options);
            p.m = s.m, p.n = s.n, p.k = s.k;
            p = turns.vary(p, !scaledOnly);
            if (scaledOnly)
                p.alpha = 0;
            const auto problem = std::make_shared<const GemmCase<T>>(p);
            for (const NamedWay<T>& way : ways)
                cases.push_back(case_of<T>(way.name, problem, way.run));
        };
        const std::vector<NamedWay<T>> smallWay{
            {"small region", [](int team, const Call<T>& v) { gemm_small_region(problem_of(v), team); }},
            {"grid", [](int team, const Call<T>& v) { gemm_grid_region(problem_of(v), team, 1); }}};
        if (few.size() == 0) {
            for (const GemmSize& s : small)
                add(s, smallWay);
            for (const GemmSize& s : large)
                add(s, large_ways<T>()), add(s, large_ways<T>(), s.k < 100);
        }
        add({40, 45, 30}, smallWay);
        for (const GemmSize& s : few)
            add(s, large_ways<T>());
    });
    return cases;
}
const TeamFamily products{
    "gemm", [] { return gemm_cases({}); },
    [] {
        return gemm_cases({{130, 30, 40}, {30, 130, 40}, {40, 40, 300}, {600, 5, 5}, {120, 120, 131}});
    }};
INSTANTIATE_TEST_SUITE_P(Gemm, Team, testing::Values(products));

// Threads that took work memory for one product. All builds take some for blocks of the sizes below, but for the wide
// vector forms, which compute them without packing.
template <class T>
int workers(const Shape& p, const Way<T>& way, int team) {
    const RestrictedForm packing(VectorForm::sse);
    const GemmCase<T> problem(p);
    const WorkMemoryProbe probe;
    problem.check([&](const Call<T>& v) { way(team, v); }, "workers");
    return probe.threads();
}

TEST_OF_ELEMENTS(GemmTeam, UsesTheTeamItAskedFor) {
    if (omp_get_thread_limit() < 8 || omp_get_dynamic())
        GTEST_SKIP() << "teams are limited";
    const Shape square{.m = 240, .n = 240, .k = 120};
    const Way<T> byDriver = [](int team, const Call<T>& v) {
        const ForcedTeam forced(team);
        driver(v);
    };
    for (const int team : {1, 2, 4, 8})
        EXPECT_EQ(workers<T>(square, byDriver, team), team);
    EXPECT_LE(workers<T>({.m = 16, .n = 16, .k = 16}, byDriver, 4), 1);
    EXPECT_EQ(workers<T>({.m = 100, .n = 100, .k = 100}, byDriver, 4), 4);
    // Of a complex product a team of two need not promise a gain, but where threads go by work.
    const Shape few{.trans = 'T', .m = 10, .n = 20, .k = 10};
    EXPECT_EQ(std::max(1, workers<T>(few, byDriver, 2)), isComplex<T> && !goes_by_work(ThisMachine{}) ? 2 : 1);
    EXPECT_LE(workers<T>(few, byDriver, 8), 1);
    // An odd thread is left out by the classes that scale first, if they have a plan.
    const auto of_three = [&](const GemmFacts& facts) {
        return workers<T>(
            square, [&](int team, const Call<T>& v) { gemm_large_region(problem_of(v), facts, team); }, 3);
    };
    EXPECT_EQ(of_three(machines[0]), !isComplex<T> && qrv_blas_sgemm_plan_available() ? 2 : 3);
    EXPECT_EQ(of_three(machines[2]), 3);
}

// Whether the shared copies are refused, which are above 100 KB in these cases, or a thread's own sliver, far below.
TEST_OF_ELEMENTS(GemmTeam, PartOfTheMemoryRefused) {
    for (const GemmSize& s : {GemmSize{120, 120, 131}, {121, 121, 613}, {3001, 9, 21}, {90, 130, 71}}) {
        const GemmCase<T> problem({.transb = 'T', .m = s.m, .n = s.n, .k = s.k, .alpha = -0.5F, .beta = 0.5F});
        for (const auto& [from, to] : {std::pair{std::size_t{100000}, anySize}, {4096, 50000}})
            for (const NamedWay<T>& way : large_ways<T>())
                for (const int team : {2, 4, 8}) {
                    const WorkMemoryProbe probe(from, to);
                    problem.check([&](const Call<T>& v) { way.run(team, v); }, way.name);
                    // The square cases have shared copies in the first class, in the builds with a plan.
                    if (!isComplex<T> && way.name == large_ways<T>()[0].name && s.m == s.n &&
                        qrv_blas_sgemm_plan_available()) {
                        EXPECT_GT(probe.refusals(), 0) << problem.p << " on " << team;
                    }
                }
    }
}

TEST_OF_ELEMENTS(GemmTeam, LeavesTheCallersOpenMpSettingsAlone) {
    const int before = omp_get_max_threads();
    for (const int callers : {before, 3})
        for (const auto& [m, n] : {std::pair{120, 120}, {0, 500}, {500, -1}}) {
            omp_set_num_threads(callers);
            const ForcedTeam forced(4);
            GemmCase<T>({.m = m, .n = n, .k = 131}).check(driver<T>, "driver");
            EXPECT_TRUE(omp_get_max_threads() == callers && omp_get_dynamic() == 0 && omp_in_parallel() == 0);
        }
    omp_set_num_threads(before);
}

TEST_OF_ELEMENTS(GemmTeam, IsAloneInARegion) {
    const GemmCase<T> problem({.m = 121, .n = 121, .k = 613});
    qrv_serv_set_dynamic(1);
    largestTeam = 1;
#pragma omp parallel num_threads(2)
    problem.result(driver<T>);
    EXPECT_EQ(largestTeam, 1);
}

} // namespace
} // namespace qrv::test
