// LAPACK's own regions on teams: factors are right, whatever the team and the work memory that is there.
#include <chrono>

#include "blas/thread/common/far_cores.hpp"
#include "blas/thread/common/team_omp.hpp"
#include "lapack/calls/bidiagonal.hpp"
#include "lapack/calls/nonsymmetric.hpp"
#include "lapack/calls/symmetric.hpp"
#include "lapack/kernel/source/band/band_view.hpp"
#include "lapack/kernel/source/band/gbtrf.hpp"
#include "lapack/kernel/source/bidiagonal/labrd.hpp"
#include "lapack/kernel/source/cholesky/potrf.hpp"
#include "lapack/task_team.hpp"
#include "service/vector_form.hpp"
#include "support/cholesky.hpp"
#include "support/lu.hpp"
#include "support/qr.hpp"
#include "support/reduced.hpp"
#include "support/team_battery.hpp"
#include "support/unsymmetric.hpp"

namespace qrv::test {
namespace {

// A task for each of two threads, of which one is late.
struct TaskEach {
    struct Task {
        int turn = 0;
        bool waits() const { return turn == 0; }
        bool ends() const { return turn == 2; }
    };
    int late, team = 0;

    void begin(int size) { team = size; }
    Task first(int) const { return {}; }
    void next(int, Task& task) const { ++task.turn; }
    bool perform(const Task&, int thread) const {
        EXPECT_TRUE(calls_come_from_a_region());
        if (thread == late)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return true;
    }
};

TEST_F(TeamsOnBusyCores, ATeamThatTakesTasksIsNotFormedAgain) {
    for (const int late : {0, 1}) {
        int noted = 0;
        for (int tries = 0; tries < 12; ++tries) {
            aloneUntil = 0;
            TaskEach job{late};
            lapack::TaskTeam(job).run(2);
            EXPECT_EQ(job.team, 2);
            noted += aloneUntil > 0 ? 1 : 0;
        }
        EXPECT_GT(noted, 6) << late; // other work may hold up the other one too, which tells nothing
    }
    aloneUntil = ticks_now() + longestAlone;
    TaskEach alone{-1};
    lapack::TaskTeam(alone).run(2);
    EXPECT_EQ(alone.team, 1);
    EXPECT_FALSE(calls_come_from_a_region());
}

TEST_F(TeamsOnBusyCores, ATeamThatIsKeptIsLeftWhereItWasWaitedFor) {
    int noted = 0, left = 0;
    for (int tries = 0; tries < 12; ++tries) {
        aloneUntil = 0;
        KeptTeam::form(2, [&](KeptTeam& team) {
            team.run([](int, int thread) { std::this_thread::sleep_for(std::chrono::milliseconds(5 * thread)); });
            std::atomic<int> others = 0;
            const int isNoted = aloneUntil > 0;
            team.run([&](int, int) { others += omp_get_thread_num(); });
            noted += isNoted;
            left += isNoted && others == 0;
        });
    }
    EXPECT_GT(noted, 6);
    EXPECT_EQ(left, noted);
}

TEST_F(TeamsOnBusyCores, SoAreThoseOfFarCores) {
    EXPECT_TRUE(cores_are_far(std::chrono::nanoseconds(-1)));
    EXPECT_FALSE(cores_are_far(std::chrono::seconds(1)));
    const auto threads = [] {
        aloneUntil = 0;
        std::atomic<int> others = 0;
        on_team(2, [&](int, int) { others += omp_get_thread_num(); });
        return 1 + others;
    };
    EXPECT_EQ(threads(), 2);
    withoutTeams = true;
    {
        const NearTeams inner(300, 400);
        EXPECT_EQ(threads(), 1);
    }
    EXPECT_EQ(threads(), 1);
    std::jthread([&] { EXPECT_EQ(threads(), 2); }).join();
    qrv_serv_set_dynamic(0);
    EXPECT_EQ(threads(), 2);
    withoutTeams = false;
}

// A band of 80 columns with 10 diagonals on each side.
Operand<float> factored_band(int team) {
    Operand<float> f(qr_matrix<float>(31, 80));
    std::vector<int> ipiv(80);
    lapack::gbtrf_blocked(team, 8, "SGBTRF", {80, 80, 10, 10}, lapack::band_view(f.data(), f.ld(), 20), ipiv.data());
    return f;
}

// Of each factorization a thread is late that tells of a panel.
TEST_F(TeamsOnBusyCores, AFactorizationThatWasWaitedForIsNotMadeByATeamAgain) {
    qrv_serv_set_progress([](const int*, const int*, const char*, int) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return 0;
    });
    const auto expect_noted = [](const char* what, const auto& factor) {
        int noted = 0;
        for (int tries = 0; tries < 9; ++tries) {
            aloneUntil = 0;
            factor();
            noted += aloneUntil > 0 ? 1 : 0;
        }
        EXPECT_GT(noted, 4) << what;
    };
    expect_noted("getrf", [] { factor(dynamic_route<float>(2, 8), known_pivots<float>(64, 64, 1).a); });
    expect_noted("potrf", [] {
        Operand<float> f(definite<float>(Uplo::lower, 64));
        lapack::potrf_tiles(2, {8, 4, 16}, Uplo::lower, 64, f.view());
    });
    expect_noted("geqrf", [] {
        QrResult<float> f(qr_matrix<float>(64, 64), 64);
        factor_on_team(f, 2, 8, 2);
    });
    expect_noted("gbtrf", [] { factored_band(2); });
    expect_noted("geqrf, high", [] {
        QrResult<float> f(qr_matrix<float>(4 * 2048, 2), 2);
        lapack::geqrf_tall(2, f.a.rows(), 2, f.a.view(), f.tau.data());
    });
    qrv_serv_set_progress(nullptr);
}

using Sizes = std::initializer_list<std::pair<int, int>>;

// The look-ahead team, and tasks on block columns of each width, which give the same bits on every team.
template <class T>
void add_lu(std::vector<TeamCase>& cases, Sizes sizes, std::initializer_list<int> widths) {
    for (const auto& [m, n] : sizes) {
        const auto known = std::make_shared<const KnownPivots<T>>(known_pivots<T>(m, n, 1));
        const auto add = [&, size = std::to_string(m) + " x " + std::to_string(n)](int width) {
            cases.push_back({"getrf in columns of " + std::to_string(width) + ", " + size, [=](int team, bool twice) {
                                 const LuRoute<T> route = width ? dynamic_route<T>(team, width) : ib_route<T>(team);
                                 const auto f = factor(route, known->a);
                                 return f.info == 0 && f.ipiv == known->ipiv && lu_residual(known->a, f) <= luBound &&
                                        (!twice || f.lu.same_bits(again([&] { return factor(route, known->a).lu; })));
                             }});
        };
        add(0);
        for (const int width : widths)
            add(width);
    }
}
template <class T>
void add_cholesky(std::vector<TeamCase>& cases, std::initializer_list<int> orders) {
    for (const int n : orders)
        for (const Uplo uplo : {Uplo::upper, Uplo::lower})
            for (const lapack::PotrfGrain grain : {lapack::PotrfGrain{8, 4, 64}, {16, 100, 8}, {5, 1, 1000}}) {
                const auto a = std::make_shared<const Operand<T>>(definite<T>(uplo, n));
                cases.push_back(
                    {"potrf in tiles of " + std::to_string(grain.tile) + ", " + letter(uplo) + std::to_string(n),
                     [=](int team, bool) {
                         Operand<T> f(*a);
                         return lapack::potrf_tiles(team, grain, uplo, n, f.view()).info == 0 &&
                                cholesky_residual(*a, f) < choleskyBound;
                     }});
            }
}

// A bidiagonal panel with its reflectors, X and Y: from a team, or without one (or without memory) from the routine.
template <class T>
struct BidiagonalResult {
    Operand<T> a, x, y, tau;
    GuardedVector<float> d, e;

    BidiagonalResult(const Operand<T>& before, int nb, int team = 0)
        : a(before), x(a.rows(), nb, a.rows() + 1), y(a.columns(), nb, a.columns() + 2), tau(nb, 2, nb), d(nb), e(nb) {
        for (Operand<T>* const part : {&x, &y, &tau})
            part->set([](int, int) { return scalar<T>(0); });
        e.fill([] { return 0.0F; });
        T *const tauq = tau.view().column(0), *const taup = tau.view().column(1);
        const lapack::BidiagonalPanel<T> panel{a.rows(), a.columns(), a.view(), x.view(), y.view()};
        if (team == 0 || !lapack::labrd_on_team(team, panel, nb, d.data(), e.data(), tauq, taup))
            lapack::labrd(panel.m, panel.n, nb, panel.a, d.data(), e.data(), tauq, taup, panel.x, panel.y);
    }
    bool near(const BidiagonalResult& other, double bound) const {
        const auto isNear = [=](const auto& mine, const auto& its) {
            return norm(WideMatrix(mine) - WideMatrix(its), 'M') <= bound;
        };
        return isNear(a, other.a) && isNear(x, other.x) && isNear(y, other.y) && isNear(tau, other.tau) &&
               isNear(d, other.d) && isNear(e, other.e);
    }
};
template <class T>
void add_bidiagonal(std::vector<TeamCase>& cases, Sizes sizes) {
    for (const auto& [m, n] : sizes) {
        std::mt19937 random(7);
        const auto before = std::make_shared<Operand<T>>(m, n, m + 3);
        before->set([&](int, int) { return any_size_one<T>(random); });
        const int nb = std::min({m, n, 6});
        const ForcedTeam alone(1);
        const auto expected = std::make_shared<const BidiagonalResult<T>>(*before, nb);
        cases.push_back({"labrd, " + std::to_string(m) + " x " + std::to_string(n), [=](int team, bool twice) {
                             const BidiagonalResult<T> r(*before, nb, team);
                             return r.near(*expected, 1e-3) &&
                                    (!twice ||
                                     r.near(again([&] { return BidiagonalResult<T>(*before, nb, team); }), 0));
                         }});
    }
}

// In panels, with the unblocked form behind them or by itself; and as SSYTRD decides, which takes a team above 100.
void add_tridiagonal(std::vector<TeamCase>& cases, std::initializer_list<int> orders) {
    for (const int n : orders)
        for (const Uplo uplo : {Uplo::upper, Uplo::lower}) {
            const auto given = std::make_shared<const Operand<float>>(symmetric(uplo, n));
            const auto add = [&](const char* what, const auto& reduce, std::function<int()> threads = nullptr) {
                cases.push_back({std::string(what) + letter(uplo) + std::to_string(n),
                                 [=](int team, bool twice) {
                                     const auto on_team = [&](Reduced& t) { reduce(team, t); };
                                     const Reduced t(uplo, *given, on_team);
                                     return t.error(*given) < reducedBound &&
                                            (!twice ||
                                             t.same_bits(again([&] { return Reduced(uplo, *given, on_team); })));
                                 },
                                 threads});
            };
            if (n > 100) {
                const auto decided = [](int, Reduced& t) {
                    std::vector<float> work(std::size_t(t.n) * 24);
                    lapack::sytrd(t.uplo, t.n, t.a.view(), t.d.data(), t.e.data(), t.tau.data(), work.data(),
                                  static_cast<int>(work.size()));
                };
                add("sytrd, ", decided, [] { // wider kernels go alone up to 600
                    return vector_form_in_use() == VectorForm::sse ? qrv_serv_get_max_threads() : 1;
                });
                continue;
            }
            add("sytrd in panels, ", [](int team, Reduced& t) { t.in_panels(team, {.width = 7, .rest = 25}, 10); });
            add("sytd3, ", [=](int team, Reduced& t) { t.in_panels(team, {.width = 7, .rest = n}, 5); });
        }
}

// A panel of columns for Hessenberg form: that of one thread.
void add_hessenberg(std::vector<TeamCase>& cases, int n, int k, int nb) {
    const auto panel = [=](int team) {
        std::mt19937 random(5);
        const int m = n - k;
        Operand<float> x(n, m + 1 + 2 * nb, n); // A, Y, T
        x.set([&](int, int) { return eighths<float>(random); });
        GuardedVector<float> tau(nb);
        lapack::lahr2(team, n, k, nb, x.view(), tau.data(), x.view().block(0, m + 1), x.view().block(0, m + 1 + nb));
        return x;
    };
    cases.push_back({"lahr2, " + std::to_string(n),
                     [=, expected = std::make_shared<const Operand<float>>(panel(1))](int team, bool twice) {
                         const Operand<float> x = panel(team);
                         return difference(x, WideMatrix<float>(*expected)) < 1e-5 &&
                                (!twice || x.same_bits(again([&] { return panel(team); })));
                     }});
}

// A sweep of bulges beside one without a team. The large one takes threads by itself.
void add_sweeps(std::vector<TeamCase>& cases, std::initializer_list<std::pair<int, int>> sizes) {
    for (const auto& [n, ns] : sizes)
        for (const bool wantT : {true, false}) {
            const auto swept = [=, n = n, ns = ns](int threads) {
                ActivePart x(n, {1, n}, n);
                std::vector<float> sr(std::size_t(ns), 0.5F), si(std::size_t(ns), 1);
                for (int i = 1; i < ns; i += 2)
                    si[std::size_t(i)] = -1;
                sweep(x, sr, si, {.wantT = wantT, .width = n, .threads = threads});
                return x;
            };
            const auto expected = std::make_shared<const ActivePart>(swept(1));
            cases.push_back(
                {"laqr5, " + std::to_string(n) + " by " + std::to_string(ns), [=, n = n](int team, bool twice) {
                     const int threads = n >= 300 ? 0 : team;
                     const ActivePart x = swept(threads);
                     return difference(x.h, expected->h) < 1e-4 * n && difference(x.z, expected->z) < 1e-4 * n &&
                            (!twice || x.h.same_bits(again([&] { return swept(threads); }).h));
                 }});
        }
}

// Eigenvectors of a tridiagonal matrix without clusters of size, and of blocks that are nearly one: those of one
// thread.
void add_representations(std::vector<TeamCase>& cases, int n) {
    for (const float glue : {1.0F, 1e-4F}) {
        const auto vectors = [=] {
            std::mt19937 random(3);
            GuardedVector<float> d(n), e(n), w(n), work(18 * n);
            GuardedInts support(2 * n), ints(10 * n);
            Operand<float> z(n, n, n + 1);
            d.set([&](int i, int) {
                return glue == 1 ? eighths<float>(random) : static_cast<float>(std::abs(i % 21 - 10));
            });
            e.set([&](int i, int) { return i % 21 == 20 ? glue : 1.0F; });
            const lapack::StemrResult r = lapack::stemr(true, {}, n, d.data(), e.data(), w.data(), z.view(),
                                                        support.data(), true, work.data(), ints.data());
            EXPECT_TRUE(r.info == 0 && r.found == n);
            return std::pair(std::move(w), std::move(z));
        };
        const ForcedTeam alone(1);
        const auto expected = std::make_shared<const std::pair<GuardedVector<float>, Operand<float>>>(vectors());
        cases.push_back({"stemr, " + std::to_string(glue),
                         [=](int, bool) {
                             const auto x = vectors();
                             return x.first.same_bits(expected->first) && x.second.same_bits(expected->second);
                         },
                         n > 200 ? qrv_serv_get_max_threads : nullptr});
    }
}

// Vectors of a Schur form with pairs, by way of those of the matrix that is the same: those of one thread.
void add_schur_vectors(std::vector<TeamCase>& cases, int n) {
    const auto vectors = [=] {
        std::mt19937 random(3);
        Operand<float> t(n, n, n), v(n, 2 * n, n);
        t.set([&](int i, int j) {
            const bool pair = j % 5 == 0 && j + 1 < n;
            return i == j + 1 && pair ? -1 : i > j ? 0 : i == j ? float(j - (j % 5 == 1)) : 1 + eighths<float>(random);
        });
        v.set([&](int i, int j) { return i == j % n ? 1 : 0; });
        GuardedVector<float> work(3 * n);
        lapack::trevc({true, true, lapack::EigenvectorsWanted::backTransformed}, n, t.view(), nullptr, v.view(),
                      v.view().block(0, n), work.data());
        return v;
    };
    const ForcedTeam alone(1);
    cases.push_back({"trevc", [=, expected = std::make_shared<const Operand<float>>(vectors())](int, bool) {
                         return vectors().same_bits(*expected);
                     }});
}

// By dataflow in blocks and groups of several widths; each block column by itself, so the bits do not depend on who
// takes it. And Q applied by the driver.
template <class T>
void add_qr(std::vector<TeamCase>& cases, Sizes sizes) {
    for (const auto& [m, n] : sizes) {
        const auto a = std::make_shared<const Operand<T>>(qr_matrix<T>(m, n));
        const std::string size = std::to_string(m) + " x " + std::to_string(n);
        for (const auto& [nb, group] : {std::pair{8, 2}, {20, 1}, {5, 4}})
            cases.push_back({"geqrf in columns of " + std::to_string(nb) + ", " + size,
                             [=, n = n, nb = nb, group = group](int team, bool twice) {
                                 const auto factors = [&] {
                                     QrResult<T> f(*a, n);
                                     if (!factor_on_team(f, team, nb, group))
                                         lapack::geqrf_serial(a->rows(), n, f.a.view(), f.tau.data(), f.work.data(), n);
                                     return f;
                                 };
                                 const QrResult<T> f = factors();
                                 return qr_residual(*a, f, false) < 1 && (!twice || f.a.same_bits(again(factors).a));
                             }});
        for (const Side side : {Side::left, Side::right}) {
            const int order = std::max(m, n), across = std::min(m, n), k = order / 2;
            const auto q =
                std::make_shared<const RandomReflectors<T>>(lapack::Direct::forward, lapack::StoreV::columns, order, k);
            const auto c = std::make_shared<const Operand<T>>(side == Side::left ? qr_matrix<T>(order, across)
                                                                                 : qr_matrix<T>(across, order));
            const auto expected = std::make_shared<WideMatrix<T>>(*c);
            q->q.apply(side == Side::left, false, *expected);
            cases.push_back({std::string("ormqr ") + letter(side) + ", " + size, [=](int, bool twice) {
                                 const auto product = [&] {
                                     Operand<T> x(*c);
                                     GuardedVector<T> work(across);
                                     lapack::orm<T>(lapack::QForm::qr, side, Op::none, x.rows(), x.columns(), k,
                                                    q->v.view(), q->tau.data(), x.view(), work.data(), across);
                                     return x;
                                 };
                                 const Operand<T> x = product();
                                 return difference(x, *expected) < 60 * unitRoundoff &&
                                        (!twice || x.same_bits(again(product)));
                             }});
        }
    }
}

// By blocks of rows, as the driver decides: the same bits on every team.
void add_high_qr(std::vector<TeamCase>& cases, int n) {
    const auto a = std::make_shared<const Operand<float>>(qr_matrix<float>(4 * 2048, n));
    cases.push_back({"geqrf, high", [=](int team, bool twice) {
                         const auto factors = [&] {
                             QrResult<float> f(*a, n);
                             if (lapack::geqrf_tall(team, a->rows(), n, f.a.view(), f.tau.data()) == 0) // no memory
                                 lapack::geqrf(a->rows(), n, f.a.view(), f.tau.data(), f.work.data(), n);
                             return f;
                         };
                         const QrResult<float> f = factors();
                         return qr_residual(*a, f, false) < 24 && (!twice || f.a.same_bits(again(factors).a));
                     }});
}

template <class T>
void add_all(std::vector<TeamCase>& cases) {
    add_bidiagonal<T>(cases, {{40, 40}, {61, 17}, {17, 61}, {6, 6}, {9, 5}, {5, 9}, {1, 4}});
    add_lu<T>(cases, {{200, 200}, {129, 260}, {260, 129}, {257, 257}, {300, 9}, {9, 300}, {301, 21}}, {8, 20, 64});
    add_cholesky<T>(cases, {17, 33, 128, 150});
    add_qr<T>(cases, {{96, 96}, {150, 40}, {33, 70}, {301, 21}});
}
template <class T>
void add_few(std::vector<TeamCase>& cases) {
    add_bidiagonal<T>(cases, {{40, 33}, {20, 31}});
    add_lu<T>(cases, {{150, 130}, {90, 100}}, {8, 16});
    add_cholesky<T>(cases, {100});
    add_qr<T>(cases, {{60, 50}});
}
INSTANTIATE_TEST_SUITE_P(Lapack, Team,
                         testing::Values(TeamFamily{"lapack",
                                                    [] {
                                                        std::vector<TeamCase> cases;
                                                        add_all<float>(cases);
                                                        add_all<SingleComplex>(cases);
                                                        add_tridiagonal(cases, {2, 40, 105});
                                                        add_hessenberg(cases, 107, 3, 20);
                                                        add_sweeps(cases, {{3, 2}, {40, 6}, {130, 8}, {300, 36}});
                                                        add_representations(cases, 210);
                                                        add_schur_vectors(cases, 160);
                                                        return cases;
                                                    },
                                                    [] {
                                                        std::vector<TeamCase> cases;
                                                        add_few<float>(cases);
                                                        add_few<SingleComplex>(cases);
                                                        add_tridiagonal(cases, {30});
                                                        add_high_qr(cases, 9);
                                                        cases.push_back(
                                                            {"gbtrf", [](int team, bool twice) {
                                                                 const auto band = [&] { return factored_band(team); };
                                                                 return !twice || band().same_bits(again(band));
                                                             }});
                                                        add_hessenberg(cases, 75, 2, 9);
                                                        add_sweeps(cases, {{40, 4}, {110, 6}});
                                                        add_representations(cases, 126);
                                                        add_schur_vectors(cases, 110);
                                                        return cases;
                                                    }}));

} // namespace
} // namespace qrv::test
