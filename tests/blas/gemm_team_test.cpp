// The threaded GEMM: every region, on teams of several sizes, against the double-precision oracle, and the same
// bits at each repetition.
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <omp.h>
#include <thread>

#include "blas/blas.hpp"
#include "blas/thread/common/level3/gemm_team.hpp"
#include "service/vector_form.hpp"
#include "support/matrices.hpp"
#include "support/teams.hpp"

namespace qrv::test {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();

struct TeamCase {
    char transa, transb;
    int m, n, k;
    float alpha, beta;
};

std::ostream& operator<<(std::ostream& out, const TeamCase& p) {
    return out << p.transa << p.transb << " m=" << p.m << " n=" << p.n << " k=" << p.k << " alpha=" << p.alpha
               << " beta=" << p.beta;
}

// A stored operand, with NaN in what lies beyond its rows and columns.
GuardedMatrix operand(int rows, int columns, std::mt19937& random) {
    constexpr int beyond = 3;
    GuardedMatrix x(rows + beyond, columns + beyond, rows + beyond + 2, 1);
    x.fill_random(random);
    for (int j = 0; j < x.columns(); ++j)
        for (int i = 0; i < x.rows(); ++i)
            if (i >= rows || j >= columns)
                x(i, j) = nan;
    return x;
}

// The operands of one case; C starts as NaN where beta is 0.
struct Product {
    TeamCase p;
    GuardedMatrix a, b, before;

    explicit Product(const TeamCase& given, unsigned seed = 1)
        : p(given), a(0, 0, 1), b(0, 0, 1), before(p.m, p.n, p.m + 3, 1) {
        std::mt19937 random(seed);
        const bool ta = is_transposed(p.transa), tb = is_transposed(p.transb);
        a = operand(ta ? p.k : p.m, ta ? p.m : p.k, random);
        b = operand(tb ? p.n : p.k, tb ? p.k : p.n, random);
        if (p.beta == 0)
            before.fill(nan);
        else
            before.fill_random(random);
    }

    GemmProblem<float> on(GuardedMatrix& c) const {
        return {p.transa, p.transb, p.m,    p.n,    p.k,      p.alpha, a.data(),
                a.ld(),   b.data(), b.ld(), p.beta, c.data(), c.ld()};
    }
    // Largest error of a result, in units of the bound; above 1 also if the result reached beyond C.
    double error(const GuardedMatrix& c) const {
        if (!c.guards_intact())
            return 1e9;
        return gemm_error(p.transa, p.transb, p.k, p.alpha, a, b, p.beta, before, c);
    }
};

bool same_bits(const GuardedMatrix& x, const GuardedMatrix& y) {
    for (int j = 0; j < x.columns(); ++j)
        if (std::memcmp(x.data() + x.ld() * j, y.data() + y.ld() * j,
                        sizeof(float) * static_cast<std::size_t>(x.rows())))
            return false;
    return true;
}

void driver(const GemmProblem<float>& q) {
    qrv_blas_sgemm(&q.transa, &q.transb, &q.m, &q.n, &q.k, &q.alpha, q.a, &q.lda, q.b, &q.ldb, &q.beta, q.c, &q.ldc);
}
void serial(const GemmProblem<float>& q) {
    qrv_blas_sgemm_kernel(&q.transa, &q.transb, &q.m, &q.n, &q.k, &q.alpha, q.a, &q.lda, q.b, &q.ldb, &q.beta, q.c,
                          &q.ldc);
}

using Way = std::function<void(const GemmProblem<float>&)>;

GuardedMatrix result_of(const Product& product, const Way& way) {
    GuardedMatrix c = product.before;
    way(product.on(c));
    return c;
}

// Runs a case twice; the result must be right, and the same again.
void check(const Product& product, const Way& way, const std::string& what) {
    const GuardedMatrix first = result_of(product, way);
    const double error = product.error(first);
    EXPECT_TRUE(error <= 1) << what << ' ' << product.p << " error=" << error;
    EXPECT_TRUE(same_bits(first, result_of(product, way))) << what << ' ' << product.p << " differs when repeated";
}

constexpr TeamCase small[] = {
    {'N', 'N', 100, 100, 100, 1, 1}, {'T', 'n', 90, 10, 100, 0.5F, 0}, {'N', 'T', 17, 5, 40, -1, 0.5F},
    {'t', 'C', 40, 2, 99, 2, 1},     {'N', 'N', 5, 33, 64, 1, 0},      {'N', 'T', 97, 3, 51, 1, 2},
    {'T', 'T', 3, 3, 100, 1, 0.5F},  {'N', 'N', 1, 100, 7, 1, 1},      {'T', 'N', 100, 1, 7, 1, 0},
    {'N', 'N', 64, 64, 64, 0, 0},    {'N', 'T', 100, 10, 40, 0, 0.5F},
};

TEST(GemmTeam, SmallRegion) {
    for (const TeamCase& p : small) {
        const Product product(p);
        for (const int team : teamSizes)
            check(
                product, [&](const auto& q) { gemm_small_region(q, team); }, "small region on " + std::to_string(team));
    }
}

// Facts of a machine of each class; the build stays the one of this run.
constexpr GemmFacts machines[] = {
    {0, -1, -1}, {32, 1 << 20, 1 << 20}, {33, 6 << 20, 6 << 20}, {66, 1 << 18, 8 << 20}, {33, 1 << 20, 8 << 20}};

// With a plan, in the classes that scale first: plain rows, columns, and rows with shared copies of A; blocks of
// all sizes, k in several blocks and not a multiple of a unit, fewer rows than threads have panels.
constexpr TeamCase large[] = {
    {'N', 'N', 530, 30, 258, 1, 1},    {'T', 'N', 530, 30, 258, -1, 0}, {'N', 'T', 90, 130, 71, 1, 0.5F},
    {'T', 'T', 131, 131, 71, 0.5F, 1}, {'N', 'N', 120, 120, 131, 1, 0}, {'T', 'C', 121, 121, 613, -1, 0.5F},
    {'N', 'T', 11, 11, 700, 1, 1},     {'N', 'N', 3001, 9, 21, 2, 0},   {'T', 'N', 3001, 9, 21, 1, 2},
    {'N', 'N', 7, 3, 8001, 1, 0},      {'N', 'N', 1, 300, 300, 1, 1},   {'T', 'T', 300, 1, 300, 1, 0},
    {'C', 'N', 101, 17, 3, 1, 0},
};

TEST(GemmTeam, LargeRegionInEveryClass) {
    for (const TeamCase& p : large) {
        const Product product(p);
        for (const GemmFacts& facts : machines)
            for (const int team : teamSizes)
                check(
                    product, [&](const auto& q) { gemm_large_region(q, facts, team); },
                    "class " + std::to_string(static_cast<int>(gemm_machine_class(facts))) + " on " +
                        std::to_string(team));
    }
}

TEST(GemmTeam, DriverOnItsOwnMachine) {
    for (const int team : teamSizes) {
        const ForcedTeam forced(team);
        for (const TeamCase& p : {small[0], small[1], small[4], large[0], large[2], large[5], large[7]})
            check(Product(p), driver, "driver on " + std::to_string(team));
    }
}

// Nothing of A, B or, with beta = 0, C may enter; with alpha = 0 and beta = 1 C stays as it is, NaN included.
TEST(GemmTeam, ScalarsThatLeaveProductsOut) {
    for (const GemmSizes size : {GemmSizes{60, 70, 80}, GemmSizes{150, 140, 130}, GemmSizes{900, 20, 120},
                                 GemmSizes{130, 900, 5}, GemmSizes{120, 120, 130}})
        for (const float beta : {0.0F, 1.0F, 0.5F}) {
            Product product({'N', 'T', size.m, size.n, size.k, 0, beta});
            product.a.fill(nan);
            product.b.fill(nan);
            if (beta == 1)
                product.before.fill(nan);
            const auto check_all = [&](const Way& way, const std::string& what) {
                const GuardedMatrix c = result_of(product, way);
                bool right = c.guards_intact();
                if (beta == 1)
                    right = right && same_bits(c, product.before);
                else
                    for (int j = 0; j < size.n; ++j)
                        for (int i = 0; i < size.m; ++i)
                            right = right && c(i, j) == (beta == 0 ? 0 : beta * product.before(i, j));
                EXPECT_TRUE(right) << what << ' ' << product.p;
            };
            for (const int team : {2, 3, 8}) {
                for (const GemmFacts& facts : machines)
                    check_all([&](const auto& q) { gemm_large_region(q, facts, team); },
                              "class " + std::to_string(static_cast<int>(gemm_machine_class(facts))));
                const ForcedTeam forced(team);
                check_all(driver, "driver");
            }
        }
}

TEST(GemmTeam, NothingToMultiply) {
    for (const float beta : {0.0F, 1.0F, -2.0F})
        for (const TeamCase& p : {TeamCase{'N', 'N', 150, 120, 0, 1, beta}, TeamCase{'T', 'N', 90, 40, 0, 1, beta},
                                  TeamCase{'N', 'T', 130, 130, 0, 1, beta}})
            for (const int team : {1, 3, 4}) {
                const Product product(p);
                for (const GemmFacts& facts : machines)
                    check(
                        product, [&](const auto& q) { gemm_large_region(q, facts, team); }, "k = 0");
                const ForcedTeam forced(team);
                check(product, driver, "k = 0, driver");
            }
}

TEST(GemmTeam, EmptyMatrixIsLeftAlone) {
    const ForcedTeam forced(4);
    const int sizes[][2] = {{0, 500}, {500, 0}, {-1, 500}, {500, -1}};
    for (const auto& [m, n] : sizes) {
        float c = 3;
        const int k = 500, ld = 500;
        const float one = 1;
        qrv_blas_sgemm("N", "N", &m, &n, &k, &one, nullptr, &ld, nullptr, &ld, &one, &c, &ld);
        EXPECT_EQ(c, 3);
    }
}

// ---- Who works -----------------------------------------------------------------------------------------------

// The vector form in which all builds take work memory, and so show who works, for blocks of the sizes below: the wider
// ones compute them without packing.
struct PackingForm {
    PackingForm() { restrict_vector_form(VectorForm::sse); }
    ~PackingForm() { restrict_vector_form(VectorForm::avx512); }
};

// Threads that took work memory for one product.
int workers(const TeamCase& p, const Way& way) {
    const Product product(p);
    const WorkMemoryProbe probe;
    result_of(product, way);
    return probe.threads();
}

TEST(GemmTeam, UsesTheTeamItAskedFor) {
    if (omp_get_thread_limit() < 8 || omp_get_dynamic())
        GTEST_SKIP() << "teams are limited";
    const PackingForm packing;
    constexpr TeamCase square{'N', 'N', 240, 240, 120, 1, 1};
    for (const int team : {1, 2, 4, 8}) {
        const ForcedTeam forced(team);
        EXPECT_EQ(workers(square, driver), team);
    }
    {
        const ForcedTeam forced(4);
        EXPECT_LE(workers({'N', 'N', 16, 16, 16, 1, 1}, driver), 1);
        EXPECT_EQ(workers({'N', 'N', 100, 100, 100, 1, 1}, driver), 4);
    }
    // An odd thread is left out by the classes that scale first, if they have a plan.
    const int ofThree = qrv_blas_sgemm_plan_available() ? 2 : 3;
    EXPECT_EQ(workers(square, [](const auto& q) { gemm_large_region(q, machines[3], 3); }), ofThree);
    EXPECT_EQ(workers(square, [](const auto& q) { gemm_large_region(q, machines[1], 3); }), 3);
}

// The number asked for is an upper bound: the runtime may give less.
TEST(GemmTeam, SmallerTeamThanAsked) {
    const int before = omp_get_dynamic();
    omp_set_dynamic(1);
    for (const TeamCase& p : {small[0], small[1], large[0], large[2], large[5], large[7]}) {
        const Product product(p);
        for (const GemmFacts& facts : machines)
            check(
                product, [&](const auto& q) { gemm_large_region(q, facts, 8); }, "fewer than 8");
        const ForcedTeam forced(8);
        const GuardedMatrix c = result_of(product, driver);
        EXPECT_TRUE(product.error(c) <= 1) << p;
    }
    omp_set_dynamic(before);
}

TEST(GemmTeam, LeavesTheCallersOpenMpSettingsAlone) {
    const int before = omp_get_max_threads();
    for (const int callers : {before, 3}) {
        omp_set_num_threads(callers);
        const ForcedTeam forced(4);
        for (const TeamCase& p : {small[0], large[0], large[5]})
            result_of(Product(p), driver);
        EXPECT_EQ(omp_get_max_threads(), callers);
        EXPECT_EQ(omp_get_dynamic(), 0);
        EXPECT_EQ(omp_in_parallel(), 0);
    }
    omp_set_num_threads(before);
}

// ---- Callers that are threads themselves ---------------------------------------------------------------------

TEST(GemmTeam, SerialInsideARegion) {
    const PackingForm packing;
    qrv_serv_set_dynamic(1);
    const Product product(large[5]);
    const GuardedMatrix expected = result_of(product, serial);
    std::vector<GuardedMatrix> results(2, product.before);
    const WorkMemoryProbe probe;
    int team = 0;
#pragma omp parallel num_threads(2)
    {
#pragma omp single
        team = omp_get_num_threads();
        driver(product.on(results[static_cast<std::size_t>(omp_get_thread_num())]));
    }
    EXPECT_EQ(probe.threads(), team);
    for (int thread = 0; thread < team; ++thread)
        EXPECT_TRUE(same_bits(results[static_cast<std::size_t>(thread)], expected));
}

TEST(GemmTeam, NestedTeamsGiveTheSameBits) {
    const int levels = omp_get_max_active_levels();
    const ForcedTeam forced(3);
    for (const TeamCase& p : {small[0], large[0], large[5]}) {
        const Product product(p);
        const GuardedMatrix expected = result_of(product, driver);
        for (const int active : {1, 2}) {
            omp_set_max_active_levels(active);
            std::vector<GuardedMatrix> results(2, product.before);
            int team = 0;
#pragma omp parallel num_threads(2)
            {
#pragma omp single
                team = omp_get_num_threads();
                driver(product.on(results[static_cast<std::size_t>(omp_get_thread_num())]));
            }
            for (int thread = 0; thread < team; ++thread) {
                const GuardedMatrix& c = results[static_cast<std::size_t>(thread)];
                EXPECT_TRUE(product.error(c) <= 1) << p << " levels " << active;
                // With one level the inner team is one thread; its sums may differ in order.
                if (active == 2 && omp_get_thread_limit() >= 8) {
                    EXPECT_TRUE(same_bits(c, expected)) << p;
                }
            }
        }
    }
    omp_set_max_active_levels(levels);
}

// Several threads of the program, each with teams of its own.
void call_from_host_threads(int hosts, int team, std::initializer_list<TeamCase> cases) {
    const ForcedTeam forced(team);
    std::vector<Product> products;
    std::vector<GuardedMatrix> expected;
    for (const TeamCase& p : cases) {
        products.emplace_back(p);
        expected.push_back(result_of(products.back(), driver));
        EXPECT_TRUE(products.back().error(expected.back()) <= 1) << p;
    }
    std::vector<int> wrong(static_cast<std::size_t>(hosts));
    std::vector<std::thread> threads;
    for (int host = 0; host < hosts; ++host)
        threads.emplace_back([&, host] {
            for (std::size_t i = 0; i < products.size(); ++i) {
                const std::size_t which = (i + static_cast<std::size_t>(host)) % products.size();
                wrong[static_cast<std::size_t>(host)] +=
                    !same_bits(result_of(products[which], driver), expected[which]);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    // A limit on threads is for all hosts together: teams then differ from call to call.
    if (omp_get_thread_limit() >= 8 * hosts) {
        EXPECT_EQ(wrong, std::vector<int>(static_cast<std::size_t>(hosts)));
    }
}

TEST(GemmTeam, SeveralHostThreads) {
    call_from_host_threads(4, 2, {small[0], large[0], large[2], large[5], large[7]});
}

// ---- Refused memory ------------------------------------------------------------------------------------------

constexpr std::size_t anySize = std::numeric_limits<std::size_t>::max();

// Without work memory every build still delivers: whether the shared copies are refused, a thread's own buffers, or
// everything.
TEST(GemmTeam, RefusedMemory) {
    struct Refusal {
        const char* what;
        std::size_t from, to;
    };
    // A shared block of copies is above 100 KB in the cases below, a sliver far below.
    constexpr Refusal refusals[] = {
        {"shared copies", 100000, anySize}, {"slivers", 4096, 50000}, {"everything", 0, anySize}};
    constexpr TeamCase cases[] = {{'N', 'N', 120, 120, 131, 1, 0},
                                  {'T', 'T', 121, 121, 613, -0.5F, 0.5F},
                                  {'N', 'T', 3001, 9, 21, 2, 1},
                                  {'T', 'N', 90, 130, 71, 1, 0}};
    for (const TeamCase& p : cases) {
        const Product product(p);
        for (const Refusal& refusal : refusals)
            for (const GemmFacts& facts : machines)
                for (const int team : {2, 4, 8}) {
                    const WorkMemoryProbe probe(refusal.from, refusal.to);
                    const GuardedMatrix c =
                        result_of(product, [&](const auto& q) { gemm_large_region(q, facts, team); });
                    const double error = product.error(c);
                    EXPECT_TRUE(error <= 1)
                        << refusal.what << " refused, class " << static_cast<int>(gemm_machine_class(facts)) << " on "
                        << team << ": " << p << " error=" << error;
                    // The square cases have shared copies in this class, in the builds with a plan.
                    const bool copies = gemm_machine_class(facts) == GemmMachine::sse42 && p.m == p.n;
                    if (refusal.from == 0 || (copies && qrv_blas_sgemm_plan_available())) {
                        EXPECT_GT(probe.refusals(), 0) << refusal.what;
                    }
                }
    }
}

// ---- For the race detector: a little of everything -----------------------------------------------------------

TEST(GemmTeamRaces, Regions) {
    for (const TeamCase& p : {TeamCase{'N', 'T', 40, 45, 30, 1, 0.5F}, TeamCase{'T', 'N', 90, 9, 40, 1, 0}})
        check(
            Product(p), [](const auto& q) { gemm_small_region(q, 4); }, "small region");
    for (const TeamCase& p : {TeamCase{'N', 'N', 130, 30, 40, 1, 0.5F}, TeamCase{'N', 'T', 30, 130, 40, 1, 0},
                              TeamCase{'T', 'N', 40, 40, 300, 1, 0.5F}, TeamCase{'N', 'N', 600, 5, 5, 1, 0.5F}})
        for (const GemmFacts& facts : machines)
            for (const int team : {3, 4})
                check(
                    Product(p), [&](const auto& q) { gemm_large_region(q, facts, team); }, "large region");
}

TEST(GemmTeamRaces, HostThreads) {
    call_from_host_threads(2, 2, {small[2], {'N', 'N', 130, 30, 40, 1, 0.5F}, {'T', 'N', 40, 40, 300, 1, 0.5F}});
}

} // namespace
} // namespace qrv::test
