// LU factorization on every route: residuals, pivots, info, NaN, real inputs, teams.
#include <gmock/gmock.h>

#include "lapack/calls/lu.hpp"
#include "matrix_file/matrix_file.hpp"
#include "qrv/native.h"
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/lu.hpp"
#include "support/progress.hpp"
#include "support/teams.hpp"

namespace qrv::test {
namespace {

// The native routines on the threads of this machine, and the threaded bodies in wide and narrow block columns.
template <class T>
std::vector<LuRoute<T>> routes() {
    std::vector<LuRoute<T>> list = native_routes<T>();
    list.push_back(ib_route<T>(2));
    list.push_back(dynamic_route<T>(2, 64));
    list.push_back(dynamic_route<T>(2, 5));
    return list;
}

struct LuShape {
    int m, n;
};

// Nothing, and around the widths of blocks; square, tall and wide.
constexpr LuShape luShapes[] = {{0, 5},     {5, 0},     {1, 1},     {2, 2},    {1, 9},    {9, 1},    {7, 7},
                                {8, 8},     {9, 9},     {16, 16},   {17, 17},  {5, 17},   {17, 5},   {31, 33},
                                {32, 32},   {33, 31},   {64, 64},   {65, 65},  {40, 129}, {129, 40}, {65, 128},
                                {128, 128}, {129, 129}, {200, 130}, {130, 200}};

TEST_OF_ELEMENTS(Getrf, Residual) {
    for (const auto& route : routes<T>()) {
        int k = 0;
        for (const LuKind kind : luKinds)
            for (const auto& [m, n] : luShapes) {
                ++k;
                const auto a = lu_matrix<T>(kind, m, n, k % 3, k % 16);
                const double residual = lu_residual(a, factor(route, a));
                EXPECT_TRUE(residual <= luBound)
                    << residual << " for " << route << ", kind " << static_cast<int>(kind) << ", " << m << " x " << n;
            }
    }
}

TEST_OF_ELEMENTS(Getrf, TheSamePivotsOnEveryRoute) {
    combine(routes<T>(), luShapes).each([](const LuRoute<T>& route, const LuShape& shape) {
        const auto known = known_pivots<T>(shape.m, shape.n, 2);
        const auto f = factor(route, known.a);
        EXPECT_EQ(f.ipiv, known.ipiv) << shape.m << " x " << shape.n;
        EXPECT_EQ(f.info, 0);
    });
    const auto all = native_routes<T>();
    for (const auto& [m, n] : {LuShape{700, 700}, {1025, 300}, {300, 1025}, {1023, 1023}, {1024, 1025}}) {
        const auto known = known_pivots<T>(m, n);
        for (std::size_t r = 0; r < 3; ++r) {
            const auto f = factor(all[r], known.a);
            EXPECT_EQ(f.ipiv, known.ipiv) << all[r] << ", " << m << " x " << n;
            EXPECT_TRUE(m + n > 2000 || lu_residual(known.a, f) <= luBound) << all[r] << ", " << m << " x " << n;
        }
    }
}

// The first zero pivot is reported, wherever in blocks and panels it is, and the factors are complete.
TEST_OF_ELEMENTS(Getrf, InfoIsTheFirstZeroPivot) {
    constexpr int n = 133;
    combine({0, 6, 16, 17, 63, 64, 65, 127, 128, 131, 132}, routes<T>()).each([](int first, const LuRoute<T>& route) {
        auto a = lu_matrix<T>(LuKind::random, n, n);
        for (const int zero : {first, n - 1})
            for (int i = 0; i < n; ++i)
                a(i, zero) = T();
        const auto f = factor(route, a);
        EXPECT_EQ(f.info, first + 1);
        EXPECT_EQ(f.ipiv[static_cast<std::size_t>(first)], first + 1) << "the first row is the pivot";
        EXPECT_LE(lu_residual(a, f), luBound);
    });
}

// They spread and end in factors of some kind; rows that are named exist.
TEST_OF_ELEMENTS(Getrf, NanAndInfinity) {
    combine({LuShape{8, 8}, {100, 100}, {70, 150}, {150, 70}}, {nan, infinity}, {0, 3, 60, 67}, routes<T>())
        .each([](const LuShape& shape, float value, int at, const LuRoute<T>& route) {
            const auto [m, n] = shape;
            auto a = lu_matrix<T>(LuKind::random, m, n, 1);
            a(std::min(at, m - 1), std::min(at * 3 % 70, n - 1)) = all_parts<T>(value);
            const auto f = factor(route, a);
            EXPECT_TRUE(pivots_in_range(f)) << m << " x " << n;
            EXPECT_TRUE(f.info >= 0 && f.info <= std::min(m, n));
            EXPECT_GT(f.lu.count_bad([](int, int, T x) { return is_finite(x); }), 0);
        });
}

// As ISAMAX and ICAMAX choose: |re| + |im| counts, and the element behind a NaN takes over from it.
TEST_OF_ELEMENTS(Getrf, PivotOfAColumn) {
    const T slanted = isComplex<T> ? all_parts<T>(0.8F) : scalar<T>(1.4F);
    for (const int m : {3, 40})
        for (const T third : {slanted, scalar<T>(0.5F)}) {
            Operand<T> a(m, 1, m);
            a.set([&](int i, int) { return i == 0 ? scalar<T>(1.3F) : i == 2 ? third : scalar<T>(0); });
            if (third == scalar<T>(0.5F))
                a(1, 0) = all_parts<T>(nan);
            for (const auto& route : routes<T>())
                EXPECT_EQ(factor(route, a).ipiv[0], 3) << route << ", " << m << " rows";
        }
}

// A pivot whose reciprocal would overflow, or vanish, divides its column.
TEST_OF_ELEMENTS(Getrf, PivotsAtTheEndsOfTheRange) {
    for (const float size : {0x1p-143F, 0x1.8p125F}) {
        const float column[] = {4, 2, -1};
        Operand<T> a(3, 1, 3);
        a.set([&](int i, int) { return all_parts<T>(column[i] * size); });
        for (const auto& route : routes<T>()) {
            const auto f = factor(route, a);
            EXPECT_TRUE(f.lu(1, 0) == scalar<T>(0.5F) && f.lu(2, 0) == scalar<T>(-0.25F)) << route;
        }
    }
}

// ---- Real inputs --------------------------------------------------------------------------------------------------

// As a full matrix with `extra` rows of gap between its columns. A complex file needs a complex T.
template <class T>
Operand<T> read_matrix_market(const std::string& path, int extra = 0) {
    const tools::AnyMatrix file = tools::read_matrix(path).matrix;
    const auto guarded = [extra](const auto& matrix, auto element) {
        return Operand<T>(matrix.rows, matrix.columns, matrix.rows + extra).set([&](int i, int j) {
            return element(matrix(i, j));
        });
    };
    if constexpr (isComplex<T>)
        return guarded(tools::to_complex(file), [](auto value) { return T{value.Re(), value.Im()}; });
    else
        return guarded(std::get<tools::Matrix<float>>(file), [](float value) { return value; });
}

template <class T>
void check_file(const char* name) {
    const auto a = read_matrix_market<T>(std::string(QRV_DATA) + "/" + name, 3);
    for (const auto& route : routes<T>()) {
        const auto f = factor(route, a);
        EXPECT_EQ(f.info, 0) << route << ", " << name;
        EXPECT_TRUE(lu_residual(a, f) <= luBound) << lu_residual(a, f) << " for " << route << ", " << name;
    }
}

TEST(GetrfFiles, Residual) {
    check_file<float>("olm500.mtx");
    check_file<float>("west0479.mtx");
    check_file<SingleComplex>("young1c.mtx");
}

// ---- Teams, of which team_test.cpp tells that their factors are right: bits, progress and stops -------------------

// A block column has the bits that it gets by itself, however many a thread finds ready at once: with these sizes it
// finds up to three, whose product would be large enough for another kernel.
TEST_OF_ELEMENTS(GetrfTeam, TheSameBitsWhateverIsReadyAtOnce) {
    const ForcedTeam forced(1); // for the products outside of the region
    constexpr int nb = 32, rows = nb + 16, columns = 1200;
    const LuRoute<T> oneByOne{
        "one by one", [=](int m, int n, Matrix<T> a, int* ipiv) {
            lapack::FactorResult whole = lapack::getrf_recursive(m, nb, a, ipiv, {0, 0});
            for (int j = nb; j < n; j += nb)
                lapack::getrf_apply_panel(m, a, ipiv, {0, nb}, j, std::min(nb, n - j));
            const auto last = lapack::getrf_recursive(m - nb, n - nb, a.block(nb, nb), ipiv + nb, {0, nb});
            lapack::getrf_append(whole, last, {nb, m - nb}, ipiv);
            lapack::laswp(nb, a, nb + 1, m, ipiv);
            return whole.info;
        }};
    const auto known = known_pivots<T>(rows, columns, 1);
    const auto expected = factor(oneByOne, known.a);
    for (const int team : {2, 3, 4}) {
        const auto f = factor(dynamic_route<T>(team, nb), known.a);
        EXPECT_TRUE(f.lu.same_bits(expected.lu)) << "team " << team;
    }
}

// ---- Progress -----------------------------------------------------------------------------------------------------

template <class T>
int recursive(int m, int n, Matrix<T> a, int* ipiv, int* info, int thread, int offset) {
    const int lda = static_cast<int>(a.ld);
    return routine_for<T>(qrv_lapack_sgetrf_recursive, qrv_lapack_cgetrf_recursive)(&m, &n, a.data, &lda, ipiv, info,
                                                                                    &thread, &offset);
}

// Columns come in leaves of at most 16; the thread and the first column are passed on.
TEST_OF_ELEMENTS(GetrfTeam, ProgressOfTheRecursion) {
    auto known = known_pivots<T>(50, 39);
    std::vector<int> ipiv(39);
    int info = -99;
    {
        const ProgressHook hook(0);
        EXPECT_EQ(recursive<T>(50, 39, known.a.view(), ipiv.data(), &info, 3, 100), 0);
    }
    EXPECT_EQ(info, 0);
    EXPECT_EQ(ipiv, known.ipiv);
    EXPECT_EQ(progress.steps, (std::vector{116, 132, 139}));
    EXPECT_EQ(progress.threads, std::set{3});
    EXPECT_EQ(progress.stages, std::set<std::string>{isComplex<T> ? "CGETRF" : "SGETRF"});
    const ProgressHook hook(2);
    EXPECT_EQ(recursive<T>(50, 39, known.a.view(), ipiv.data(), &info, 0, 0), 1);
}

// Buffers that somebody still holds.
int held_buffers() {
    int buffers = -1;
    qrv_serv_free_buffers();
    qrv_serv_memory_stat(&buffers);
    return buffers;
}

// One run that stops at a leaf, or at none; the leaves that were factored.
template <class T, class Route>
int leaves_until(int stopAt, const KnownPivots<T>& known, const Route& route) {
    const ProgressHook hook(stopAt);
    Operand<T> a = known.a;
    std::vector<int> ipiv(known.ipiv.size(), 1);
    const lapack::FactorResult result = route(a.rows(), a.columns(), a.view(), ipiv.data());
    EXPECT_EQ(result.stopped, stopAt > 0);
    EXPECT_EQ(result.info, 0);
    EXPECT_TRUE(std::is_sorted(progress.steps.begin(), progress.steps.end()));
    EXPECT_EQ(held_buffers(), 0);
    const auto first = ipiv.begin(), behindLeaf = first + progress.steps[0];
    EXPECT_TRUE(std::equal(first, behindLeaf, known.ipiv.begin())) << "pivots of the first leaf";
    return progress.calls;
}

TEST_OF_ELEMENTS(GetrfTeam, StopsAtEachLeaf) {
    const auto known = known_pivots<T>(180, 170);
    const auto check_stops = [&](const std::string& name, const auto& route) {
        const int leaves = leaves_until(0, known, route);
        EXPECT_EQ(progress.steps.back(), 170) << name;
        for (int stopAt = 1; stopAt <= leaves; ++stopAt)
            EXPECT_EQ(leaves_until(stopAt, known, route), stopAt) << name << ": went on after a stop";
    };
    check_stops("recursive",
                [](int m, int n, auto a, int* ipiv) { return lapack::getrf_recursive(m, n, a, ipiv, {}); });
    for (const int team : {1, 2, 4}) {
        check_stops("ib", [=](auto... arguments) { return lapack::getrf_ib(team, arguments...); });
        for (const int nb : {10, 32})
            check_stops("dynamic", [=](auto... arguments) { return lapack::getrf_dynamic(team, nb, arguments...); });
    }
}

} // namespace
} // namespace qrv::test
