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

template <class T>
class GemmTeam : public testing::Test {};
TYPED_TEST_SUITE(GemmTeam, Elements);
template <class T>
class GemmTeamRaces : public testing::Test {};
TYPED_TEST_SUITE(GemmTeamRaces, Elements);

template <class T>
using Way = std::function<void(const GemmCall<T>&)>;

template <class T>
void driver(const GemmCall<T>& q) {
    const auto call = [&](auto& routine) {
        native::call(routine, q.opA, q.opB, q.m, q.n, q.k, q.alpha, q.a, q.b, q.beta, q.c);
    };
    if constexpr (isComplex<T>)
        call(qrv_blas_cgemm);
    else
        call(qrv_blas_sgemm);
}
template <class T>
Way<T> the_driver() {
    return [](const GemmCall<T>& q) { driver(q); };
}

template <class T>
bool same_bits(const BasicGuardedMatrix<T>& x, const BasicGuardedMatrix<T>& y) {
    return x.count_bad([&](int i, int j, T value) {
        const T other = y(i, j);
        return std::memcmp(&value, &other, sizeof(T)) == 0;
    }) == 0;
}

// One case, for any way to compute it. What lies around the operands is NaN.
template <class T>
class Product : public GemmCase<T> {
public:
    using Matrix = BasicGuardedMatrix<T>;
    using GemmCase<T>::p;
    using GemmCase<T>::a;
    using GemmCase<T>::b;

    explicit Product(GemmShape shape) : GemmCase<T>(spread(shape)), reference_(this->reference()) {}

    GemmCall<T> on(Matrix& c) const {
        return {op_of(p.transa), op_of(p.transb),   p.m, p.n, p.k, this->alpha, {a.data(), a.ld()}, {b.data(), b.ld()},
                this->beta,      {c.data(), c.ld()}};
    }
    Matrix by(const Way<T>& way) const {
        Matrix c = this->before;
        way(on(c));
        EXPECT_TRUE(c.guards_intact()) << p;
        return c;
    }
    bool is_right(const Matrix& c) const { return reference_.error(c) <= 1; }

    // Runs the case twice; the result must be right, and the same again.
    void check(const Way<T>& way, const std::string& what) const {
        const Matrix first = by(way);
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
    GemmReference<T> reference_;
};

// Facts of a machine of each class; the build stays the one of this run.
constexpr GemmFacts machines[] = {{0, -1}, {32, 1 << 20}, {33, 6 << 20}, {66, 1 << 18}, {33, 1 << 20}};

// A way through the large region of each class; for complex operands all are one.
template <class T>
void each_class(int team, const std::function<void(const Way<T>& way, const std::string& what)>& body) {
    for (const GemmFacts& facts : machines)
        if (!isComplex<T> || facts.cpuMa == 66)
            body([&](const auto& q) { gemm_large_region(q, facts, team); },
                 "class " + std::to_string(static_cast<int>(gemm_machine_class(facts))) + " on " +
                     std::to_string(team));
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

TYPED_TEST(GemmTeam, EveryRegion) {
    for (const GemmShape& p : small) {
        const Product<TypeParam> product(p);
        for (const int team : teamSizes)
            product.check([&](const auto& q) { gemm_small_region(q, team); },
                          "small region on " + std::to_string(team));
    }
    for (const GemmShape& p : large) {
        const Product<TypeParam> product(p);
        for (const int team : teamSizes)
            each_class<TypeParam>(
                team, [&](const Way<TypeParam>& way, const std::string& what) { product.check(way, what); });
    }
    for (const int team : teamSizes) {
        const ForcedTeam forced(team);
        for (const GemmShape& p : mixed)
            Product<TypeParam>(p).check(the_driver<TypeParam>(), "driver on " + std::to_string(team));
    }
}

// Nothing of A, B or, with beta = 0, C may enter; with alpha = 0 and beta = 1 C stays as it is, NaN included.
TYPED_TEST(GemmTeam, ScalarsThatLeaveProductsOut) {
    for (const GemmSizes size : {GemmSizes{60, 70, 80}, GemmSizes{150, 140, 130}, GemmSizes{900, 20, 120},
                                 GemmSizes{130, 900, 5}, GemmSizes{120, 120, 130}})
        for (const float beta : {0.0F, 1.0F, 0.5F}) {
            Product<TypeParam> product({'N', 'T', size.m, size.n, size.k, 0, beta});
            product.a.fill(nan);
            product.b.fill(nan);
            if (beta == 1)
                product.before.fill(nan);
            const auto check = [&](const Way<TypeParam>& way, const std::string& what) {
                const auto c = product.by(way);
                const auto scaled = [&](int i, int j, TypeParam value) { return value == product.scaled(i, j); };
                EXPECT_TRUE(beta == 1 ? same_bits(c, product.before) : c.count_bad(scaled) == 0)
                    << what << ' ' << product.p;
            };
            for (const int team : {2, 3, 8}) {
                each_class<TypeParam>(team, check);
                const ForcedTeam forced(team);
                check(the_driver<TypeParam>(), "driver");
            }
        }
}

TYPED_TEST(GemmTeam, EmptyMatrixIsLeftAlone) {
    const ForcedTeam forced(4);
    for (const auto& [m, n] : {std::pair{0, 500}, {500, 0}, {-1, 500}, {500, -1}}) {
        auto c = all_parts<TypeParam>(3);
        const auto one = scalar<TypeParam>(1);
        driver<TypeParam>({Op::none, Op::none, m, n, 500, one, {nullptr, 500}, {nullptr, 500}, one, {&c, 500}});
        EXPECT_TRUE(c == all_parts<TypeParam>(3));
    }
}

// ---- Who works -----------------------------------------------------------------------------------------------

// Threads that took work memory for one product. All builds take some for blocks of the sizes below, but for the wide
// vector forms, which compute them without packing.
template <class T>
int workers(const GemmShape& p, const Way<T>& way) {
    const RestrictedForm packing(VectorForm::sse);
    const Product<T> product(p);
    const WorkMemoryProbe probe;
    product.by(way);
    return probe.threads();
}

TYPED_TEST(GemmTeam, UsesTheTeamItAskedFor) {
    using T = TypeParam;
    if (omp_get_thread_limit() < 8 || omp_get_dynamic())
        GTEST_SKIP() << "teams are limited";
    constexpr GemmShape square{'N', 'N', 240, 240, 120};
    for (const int team : {1, 2, 4, 8}) {
        const ForcedTeam forced(team);
        EXPECT_EQ(workers<T>(square, the_driver<T>()), team);
    }
    {
        const ForcedTeam forced(4);
        EXPECT_LE(workers<T>({'N', 'N', 16, 16, 16}, the_driver<T>()), 1);
        EXPECT_EQ(workers<T>({'N', 'N', 100, 100, 100}, the_driver<T>()), 4);
    }
    // Of a complex product a team of two need not promise a gain.
    const auto team_for_few = [](int threads) {
        const ForcedTeam forced(threads);
        return std::max(1, workers<T>({'T', 'N', 10, 20, 10}, the_driver<T>()));
    };
    EXPECT_EQ(team_for_few(2), isComplex<T> ? 2 : 1);
    EXPECT_EQ(team_for_few(8), 1);
    // An odd thread is left out by the classes that scale first, if they have a plan.
    const int ofThree = !isComplex<T> && qrv_blas_sgemm_plan_available() ? 2 : 3;
    EXPECT_EQ(workers<T>(square, [](const auto& q) { gemm_large_region(q, machines[3], 3); }), ofThree);
    EXPECT_EQ(workers<T>(square, [](const auto& q) { gemm_large_region(q, machines[1], 3); }), 3);
}

// The number asked for is an upper bound: the runtime may give less.
TYPED_TEST(GemmTeam, SmallerTeamThanAsked) {
    const int before = omp_get_dynamic();
    omp_set_dynamic(1);
    const ForcedTeam forced(8);
    for (const GemmShape& p : mixed) {
        const Product<TypeParam> product(p);
        each_class<TypeParam>(
            8, [&](const Way<TypeParam>& way, const std::string& what) { product.check(way, "fewer than " + what); });
        EXPECT_TRUE(product.is_right(product.by(the_driver<TypeParam>()))) << p;
    }
    omp_set_dynamic(before);
}

TYPED_TEST(GemmTeam, LeavesTheCallersOpenMpSettingsAlone) {
    const int before = omp_get_max_threads();
    for (const int callers : {before, 3}) {
        omp_set_num_threads(callers);
        const ForcedTeam forced(4);
        for (const GemmShape& p : mixed)
            Product<TypeParam>(p).by(the_driver<TypeParam>());
        EXPECT_EQ(omp_get_max_threads(), callers);
        EXPECT_EQ(omp_get_dynamic(), 0);
        EXPECT_EQ(omp_in_parallel(), 0);
    }
    omp_set_num_threads(before);
}

// ---- Callers that are threads themselves ---------------------------------------------------------------------

// The results of the threads of a region of two, each of which calls the driver.
template <class T>
std::vector<BasicGuardedMatrix<T>> called_in_a_region(const Product<T>& product) {
    std::vector<BasicGuardedMatrix<T>> results(2, product.before);
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

TYPED_TEST(GemmTeam, SerialInsideARegion) {
    const RestrictedForm packing(VectorForm::sse);
    qrv_serv_set_dynamic(1);
    const Product<TypeParam> product(large[4]);
    const auto expected = product.by([](const auto& q) { serial(q); });
    const WorkMemoryProbe probe;
    const auto results = called_in_a_region(product);
    EXPECT_EQ(probe.threads(), static_cast<int>(results.size()));
    for (const auto& c : results)
        EXPECT_TRUE(same_bits(c, expected));
}

TYPED_TEST(GemmTeam, NestedTeamsGiveTheSameBits) {
    const int levels = omp_get_max_active_levels();
    const ForcedTeam forced(3);
    for (const GemmShape& p : mixed) {
        const Product<TypeParam> product(p);
        const auto expected = product.by(the_driver<TypeParam>());
        for (const int active : {1, 2}) {
            omp_set_max_active_levels(active);
            for (const auto& c : called_in_a_region(product)) {
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
template <class T>
void call_from_host_threads(int hosts, int team, std::initializer_list<GemmShape> cases) {
    const ForcedTeam forced(team);
    std::vector<Product<T>> products;
    std::vector<BasicGuardedMatrix<T>> expected;
    for (const GemmShape& p : cases) {
        products.emplace_back(p);
        expected.push_back(products.back().by(the_driver<T>()));
        EXPECT_TRUE(products.back().is_right(expected.back())) << p;
    }
    std::vector<int> wrong(static_cast<std::size_t>(hosts));
    std::vector<std::thread> threads;
    for (int host = 0; host < hosts; ++host)
        threads.emplace_back([&, host] {
            for (std::size_t i = 0; i < products.size(); ++i) {
                const std::size_t which = (i + static_cast<std::size_t>(host)) % products.size();
                wrong[static_cast<std::size_t>(host)] +=
                    !same_bits(products[which].by(the_driver<T>()), expected[which]);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    // A limit on threads is for all hosts together: teams then differ from call to call.
    if (omp_get_thread_limit() >= 8 * hosts) {
        EXPECT_EQ(wrong, std::vector<int>(static_cast<std::size_t>(hosts)));
    }
}

TYPED_TEST(GemmTeam, SeveralHostThreads) {
    call_from_host_threads<TypeParam>(4, 2, {small[0], large[0], large[2], large[4], large[7]});
}

// ---- Refused memory ------------------------------------------------------------------------------------------

// Without work memory every build still delivers: whether the shared copies are refused, a thread's own buffers, or
// everything.
TYPED_TEST(GemmTeam, RefusedMemory) {
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
        const Product<TypeParam> product(p);
        for (const Refusal& refusal : refusals)
            for (const GemmFacts& facts : machines)
                for (const int team : {2, 4, 8}) {
                    const WorkMemoryProbe probe(refusal.from, refusal.to);
                    const auto c = product.by([&](const auto& q) { gemm_large_region(q, facts, team); });
                    EXPECT_TRUE(product.is_right(c))
                        << refusal.what << " refused, class " << static_cast<int>(gemm_machine_class(facts)) << " on "
                        << team << ": " << p;
                    // The square cases have shared copies in this class, in the builds with a plan.
                    const bool copies =
                        !isComplex<TypeParam> && gemm_machine_class(facts) == GemmMachine::sse42 && p.m == p.n;
                    if (refusal.from == 0 || (copies && qrv_blas_sgemm_plan_available())) {
                        EXPECT_GT(probe.refusals(), 0) << refusal.what;
                    }
                }
    }
}

// ---- For the race detector: a little of everything -----------------------------------------------------------

TYPED_TEST(GemmTeamRaces, Regions) {
    for (const GemmShape& p : {GemmShape{'N', 'T', 40, 45, 30, 1, 0.5F}, GemmShape{'T', 'N', 90, 9, 40, 1, 0}})
        Product<TypeParam>(p).check([](const auto& q) { gemm_small_region(q, 4); }, "small region");
    for (const GemmShape& p : {GemmShape{'N', 'N', 130, 30, 40, 1, 0.5F}, GemmShape{'N', 'T', 30, 130, 40, 1, 0},
                               GemmShape{'T', 'N', 40, 40, 300, 1, 0.5F}, GemmShape{'N', 'N', 600, 5, 5, 1, 0.5F}})
        for (const int team : {3, 4})
            each_class<TypeParam>(
                team, [product = Product<TypeParam>(p)](const Way<TypeParam>& way, const std::string& what) {
                    product.check(way, what);
                });
}

TYPED_TEST(GemmTeamRaces, HostThreads) {
    call_from_host_threads<TypeParam>(2, 2,
                                      {small[2], {'N', 'N', 130, 30, 40, 1, 0.5F}, {'T', 'N', 40, 40, 300, 1, 0.5F}});
}

} // namespace
} // namespace qrv::test
