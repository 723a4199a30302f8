// The threaded GEMM: every region, on teams of several sizes, against the double-precision oracle, and the same
// bits at each repetition.
#include <cstring>
#include <functional>
#include <omp.h>
#include <thread>

#include "blas/blas.hpp"
#include "blas/thread/common/level3/gemm_team.hpp"
#include "support/subjects.hpp"
#include "support/teams.hpp"
#include "support/work_memory.hpp"

namespace qrv::test {
namespace {

using Way = std::function<void(const GemmProblem<float>&)>;

void driver(const GemmProblem<float>& q) {
    qrv_blas_sgemm(&q.transa, &q.transb, &q.m, &q.n, &q.k, &q.alpha, q.a, &q.lda, q.b, &q.ldb, &q.beta, q.c, &q.ldc);
}
void serial(const GemmProblem<float>& q) {
    qrv_blas_sgemm_kernel(&q.transa, &q.transb, &q.m, &q.n, &q.k, &q.alpha, q.a, &q.lda, q.b, &q.ldb, &q.beta, q.c,
                          &q.ldc);
}

bool same_bits(const GuardedMatrix& x, const GuardedMatrix& y) {
    return x.count_bad([&](int i, int j, float value) {
        return std::bit_cast<std::uint32_t>(value) == std::bit_cast<std::uint32_t>(y(i, j));
    }) == 0;
}

// One case, for any way to compute it. What lies around the operands is NaN.
class Product : public GemmCase {
public:
    explicit Product(GemmShape shape) : GemmCase(spread(shape)), reference_(reference()) {}

    GemmProblem<float> on(GuardedMatrix& c) const {
        return {p.transa, p.transb, p.m,    p.n,    p.k,      p.alpha, a.data(),
                a.ld(),   b.data(), b.ld(), p.beta, c.data(), c.ld()};
    }
    GuardedMatrix by(const Way& way) const {
        GuardedMatrix c = before;
        way(on(c));
        EXPECT_TRUE(c.guards_intact()) << p;
        return c;
    }
    bool is_right(const GuardedMatrix& c) const { return reference_.error(c) <= 1; }

    // Runs the case twice; the result must be right, and the same again.
    void check(const Way& way, const std::string& what) const {
        const GuardedMatrix first = by(way);
        EXPECT_TRUE(is_right(first)) << what << ' ' << p << " error=" << reference_.error(first);
        EXPECT_TRUE(same_bits(first, by(way))) << what << ' ' << p << " differs when repeated";
    }

private:
    static GemmShape spread(GemmShape shape) {
        shape.extraA = shape.extraB = 5;
        shape.extraC = 3;
        shape.startA = shape.startB = shape.startC = 1;
        return shape;
    }
    GemmReference reference_;
};

// Facts of a machine of each class; the build stays the one of this run.
constexpr GemmFacts machines[] = {
    {0, -1, -1}, {32, 1 << 20, 1 << 20}, {33, 6 << 20, 6 << 20}, {66, 1 << 18, 8 << 20}, {33, 1 << 20, 8 << 20}};

// A way through the large region of each class.
void each_class(int team, const std::function<void(const Way& way, const std::string& what)>& body) {
    for (const GemmFacts& facts : machines)
        body([&](const auto& q) { gemm_large_region(q, facts, team); },
             "class " + std::to_string(static_cast<int>(gemm_machine_class(facts))) + " on " + std::to_string(team));
}

// ---- Results -------------------------------------------------------------------------------------------------

constexpr GemmShape small[] = {
    {'N', 'N', 100, 100, 100, 1, 1}, {'T', 'n', 90, 10, 100, 0.5F, 0}, {'N', 'T', 17, 5, 40, -1, 0.5F},
    {'t', 'C', 40, 2, 99, 2, 1},     {'N', 'N', 5, 33, 64, 1, 0},      {'N', 'T', 97, 3, 51, 1, 2},
    {'T', 'T', 3, 3, 100, 1, 0.5F},  {'N', 'N', 1, 100, 7, 1, 1},      {'T', 'N', 100, 1, 7, 1, 0},
    {'N', 'N', 64, 64, 64, 0, 0},    {'N', 'T', 100, 10, 40, 0, 0.5F},
};

// With a plan, in the classes that scale first: plain rows, columns, and rows with shared copies of A; blocks of
// all sizes, k in several blocks and not a multiple of a unit, fewer rows than threads have panels; nothing to
// multiply.
constexpr GemmShape large[] = {
    {'N', 'N', 530, 30, 258, 1, 1},  {'T', 'N', 530, 30, 258, -1, 0},   {'N', 'T', 90, 130, 71, 1, 0.5F},
    {'N', 'N', 120, 120, 131, 1, 0}, {'T', 'C', 121, 121, 613, -1, 1},  {'T', 'T', 131, 131, 71, 0.5F, 1},
    {'N', 'T', 11, 11, 700, 1, 1},   {'N', 'N', 3001, 9, 21, 2, 0},     {'T', 'N', 3001, 9, 21, 1, 2},
    {'N', 'N', 7, 3, 8001, 1, 0},    {'N', 'N', 1, 300, 300, 1, 1},     {'T', 'T', 300, 1, 300, 1, 0},
    {'C', 'N', 101, 17, 3, 1, 0},    {'T', 'T', 150, 150, 260, 1, 0.5}, {'N', 'N', 150, 120, 0, 1, 0},
    {'T', 'N', 90, 40, 0, 1, 1},     {'N', 'T', 130, 130, 0, 1, -2},
};

// For the driver, and where a few of each kind will do.
constexpr GemmShape mixed[] = {small[0], small[1], small[4], large[0], large[2], large[4], large[7], large[16]};

TEST(GemmTeam, EveryRegion) {
    for (const GemmShape& p : small) {
        const Product product(p);
        for (const int team : teamSizes)
            product.check([&](const auto& q) { gemm_small_region(q, team); },
                          "small region on " + std::to_string(team));
    }
    for (const GemmShape& p : large) {
        const Product product(p);
        for (const int team : teamSizes)
            each_class(team, [&](const Way& way, const std::string& what) { product.check(way, what); });
    }
    for (const int team : teamSizes) {
        const ForcedTeam forced(team);
        for (const GemmShape& p : mixed)
            Product(p).check(driver, "driver on " + std::to_string(team));
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
            const auto check = [&](const Way& way, const std::string& what) {
                const GuardedMatrix c = product.by(way);
                const auto scaled = [&](int i, int j, float value) {
                    return value == (beta == 0 ? 0 : beta * product.before(i, j));
                };
                EXPECT_TRUE(beta == 1 ? same_bits(c, product.before) : c.count_bad(scaled) == 0)
                    << what << ' ' << product.p;
            };
            for (const int team : {2, 3, 8}) {
                each_class(team, check);
                const ForcedTeam forced(team);
                check(driver, "driver");
            }
        }
}

TEST(GemmTeam, EmptyMatrixIsLeftAlone) {
    const ForcedTeam forced(4);
    for (const auto& [m, n] : {std::pair{0, 500}, {500, 0}, {-1, 500}, {500, -1}}) {
        float c = 3;
        const int k = 500;
        const float one = 1;
        qrv_blas_sgemm("N", "N", &m, &n, &k, &one, nullptr, &k, nullptr, &k, &one, &c, &k);
        EXPECT_EQ(c, 3);
    }
}

// ---- Who works -----------------------------------------------------------------------------------------------

// Threads that took work memory for one product. All builds take some for blocks of the sizes below, but for the wide
// vector forms, which compute them without packing.
int workers(const GemmShape& p, const Way& way) {
    const RestrictedForm packing(VectorForm::sse);
    const Product product(p);
    const WorkMemoryProbe probe;
    product.by(way);
    return probe.threads();
}

TEST(GemmTeam, UsesTheTeamItAskedFor) {
    if (omp_get_thread_limit() < 8 || omp_get_dynamic())
        GTEST_SKIP() << "teams are limited";
    constexpr GemmShape square{'N', 'N', 240, 240, 120};
    for (const int team : {1, 2, 4, 8}) {
        const ForcedTeam forced(team);
        EXPECT_EQ(workers(square, driver), team);
    }
    {
        const ForcedTeam forced(4);
        EXPECT_LE(workers({'N', 'N', 16, 16, 16}, driver), 1);
        EXPECT_EQ(workers({'N', 'N', 100, 100, 100}, driver), 4);
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
    const ForcedTeam forced(8);
    for (const GemmShape& p : mixed) {
        const Product product(p);
        each_class(8, [&](const Way& way, const std::string& what) { product.check(way, "fewer than " + what); });
        EXPECT_TRUE(product.is_right(product.by(driver))) << p;
    }
    omp_set_dynamic(before);
}

TEST(GemmTeam, LeavesTheCallersOpenMpSettingsAlone) {
    const int before = omp_get_max_threads();
    for (const int callers : {before, 3}) {
        omp_set_num_threads(callers);
        const ForcedTeam forced(4);
        for (const GemmShape& p : mixed)
            Product(p).by(driver);
        EXPECT_EQ(omp_get_max_threads(), callers);
        EXPECT_EQ(omp_get_dynamic(), 0);
        EXPECT_EQ(omp_in_parallel(), 0);
    }
    omp_set_num_threads(before);
}

// ---- Callers that are threads themselves ---------------------------------------------------------------------

// The results of the threads of a region of two, each of which calls the driver.
std::vector<GuardedMatrix> called_in_a_region(const Product& product) {
    std::vector<GuardedMatrix> results(2, product.before);
    std::size_t team = 0;
#pragma omp parallel num_threads(2)
    {
#pragma omp single
        team = static_cast<std::size_t>(omp_get_num_threads());
        driver(product.on(results[static_cast<std::size_t>(omp_get_thread_num())]));
    }
    if (team == 1)
        results.pop_back();
    return results;
}

TEST(GemmTeam, SerialInsideARegion) {
    const RestrictedForm packing(VectorForm::sse);
    qrv_serv_set_dynamic(1);
    const Product product(large[4]);
    const GuardedMatrix expected = product.by(serial);
    const WorkMemoryProbe probe;
    const std::vector<GuardedMatrix> results = called_in_a_region(product);
    EXPECT_EQ(probe.threads(), static_cast<int>(results.size()));
    for (const GuardedMatrix& c : results)
        EXPECT_TRUE(same_bits(c, expected));
}

TEST(GemmTeam, NestedTeamsGiveTheSameBits) {
    const int levels = omp_get_max_active_levels();
    const ForcedTeam forced(3);
    for (const GemmShape& p : mixed) {
        const Product product(p);
        const GuardedMatrix expected = product.by(driver);
        for (const int active : {1, 2}) {
            omp_set_max_active_levels(active);
            for (const GuardedMatrix& c : called_in_a_region(product)) {
                EXPECT_TRUE(product.is_right(c)) << p << " levels " << active;
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
void call_from_host_threads(int hosts, int team, std::initializer_list<GemmShape> cases) {
    const ForcedTeam forced(team);
    std::vector<Product> products;
    std::vector<GuardedMatrix> expected;
    for (const GemmShape& p : cases) {
        products.emplace_back(p);
        expected.push_back(products.back().by(driver));
        EXPECT_TRUE(products.back().is_right(expected.back())) << p;
    }
    std::vector<int> wrong(static_cast<std::size_t>(hosts));
    std::vector<std::thread> threads;
    for (int host = 0; host < hosts; ++host)
        threads.emplace_back([&, host] {
            for (std::size_t i = 0; i < products.size(); ++i) {
                const std::size_t which = (i + static_cast<std::size_t>(host)) % products.size();
                wrong[static_cast<std::size_t>(host)] += !same_bits(products[which].by(driver), expected[which]);
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
    call_from_host_threads(4, 2, {small[0], large[0], large[2], large[4], large[7]});
}

// ---- Refused memory ------------------------------------------------------------------------------------------

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
    constexpr GemmShape cases[] = {{'N', 'N', 120, 120, 131, 1, 0},
                                   {'T', 'T', 121, 121, 613, -0.5F, 0.5F},
                                   {'N', 'T', 3001, 9, 21, 2, 1},
                                   {'T', 'N', 90, 130, 71, 1, 0}};
    for (const GemmShape& p : cases) {
        const Product product(p);
        for (const Refusal& refusal : refusals)
            for (const GemmFacts& facts : machines)
                for (const int team : {2, 4, 8}) {
                    const WorkMemoryProbe probe(refusal.from, refusal.to);
                    const GuardedMatrix c = product.by([&](const auto& q) { gemm_large_region(q, facts, team); });
                    EXPECT_TRUE(product.is_right(c))
                        << refusal.what << " refused, class " << static_cast<int>(gemm_machine_class(facts)) << " on "
                        << team << ": " << p;
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
    for (const GemmShape& p : {GemmShape{'N', 'T', 40, 45, 30, 1, 0.5F}, GemmShape{'T', 'N', 90, 9, 40, 1, 0}})
        Product(p).check([](const auto& q) { gemm_small_region(q, 4); }, "small region");
    for (const GemmShape& p : {GemmShape{'N', 'N', 130, 30, 40, 1, 0.5F}, GemmShape{'N', 'T', 30, 130, 40, 1, 0},
                               GemmShape{'T', 'N', 40, 40, 300, 1, 0.5F}, GemmShape{'N', 'N', 600, 5, 5, 1, 0.5F}})
        for (const int team : {3, 4})
            each_class(team,
                       [product = Product(p)](const Way& way, const std::string& what) { product.check(way, what); });
}

TEST(GemmTeamRaces, HostThreads) {
    call_from_host_threads(2, 2, {small[2], {'N', 'N', 130, 30, 40, 1, 0.5F}, {'T', 'N', 40, 40, 300, 1, 0.5F}});
}

} // namespace
} // namespace qrv::test
