// LU factorization on teams: bits, progress and stops. That factors are right is in team_test.cpp.
#include <algorithm>

#include "lapack/calls/lu.hpp"
#include "support/lu.hpp"
#include "support/progress.hpp"
#include "support/teams.hpp"

namespace qrv::test {
namespace {

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
