// Rank-k and rank-2k updates of symmetric and Hermitian matrices: the kernels of every build and the threaded routines.
#include <omp.h>

#include "blas/blas.hpp"
#include "blas/thread/32/level3/level3_threads.hpp"
#include "support/observed_team.hpp"
#include "support/symmetric_case.hpp"
#include "support/teams.hpp"

namespace qrv::test {
namespace {

// ---- The routines --------------------------------------------------------------------------------------------------

template <class T>
struct UpdateCall {
    char uplo, trans;
    int n, k;
    T alpha;
    const T *a, *b;
    int lda, ldb;
    T beta;
    T* c;
    int ldc;
};

template <class T>
struct UpdateRoutine {
    const char* name;
    bool hermitian;
    int terms;
    const char* trans; // its options
    void (*kernel)(const VectorBuild& build, const UpdateCall<T>& v);
    void (*threaded)(const UpdateCall<T>& v);
};

#define QRV_RANK_K(alpha, beta) &v.uplo, &v.trans, &v.n, &v.k, &v.alpha, v.a, &v.lda, &v.beta, v.c, &v.ldc
#define QRV_RANK_2K(alpha, beta) &v.uplo, &v.trans, &v.n, &v.k, &v.alpha, v.a, &v.lda, v.b, &v.ldb, &v.beta, v.c, &v.ldc
#define QRV_UPDATE(name, hermitian, terms, trans, arguments)                                                           \
    {                                                                                                                  \
#name, hermitian, terms, trans,                                                                                \
            [](const VectorBuild& build,                                                                               \
               const auto&                                                                                             \
                   v) { build.blas_##name##_kernel(arguments); }, [](const auto& v) { qrv_blas_##name(arguments); }    \
    }
const UpdateRoutine<float> realUpdates[] = {
    QRV_UPDATE(ssyrk, false, 1, "NtC", QRV_RANK_K(alpha, beta)),
    QRV_UPDATE(ssyr2k, false, 2, "nTc", QRV_RANK_2K(alpha, beta)),
};
const UpdateRoutine<SingleComplex> complexUpdates[] = {
    QRV_UPDATE(csyrk, false, 1, "nT", QRV_RANK_K(alpha, beta)),
    QRV_UPDATE(csyr2k, false, 2, "Nt", QRV_RANK_2K(alpha, beta)),
    QRV_UPDATE(cherk, true, 1, "Nc", QRV_RANK_K(alpha.re, beta.re)),
    QRV_UPDATE(cher2k, true, 2, "nC", QRV_RANK_2K(alpha, beta.re)),
};

template <class Body>
void each_update(const Body& body) {
    each_of(realUpdates, complexUpdates, body);
}

// ---- Problems ------------------------------------------------------------------------------------------------------

// What is not read is NaN: C if beta is 0, A and B if alpha is, imaginary parts on a Hermitian diagonal, and whatever
// lies around the elements or in the other triangle of C.
template <class T>
class UpdateProblem {
public:
    UpdateProblem(const UpdateRoutine<T>& routine, char uplo, char trans, const SymmetricCase& p)
        : routine_(routine), p_(p), transposed_(is_transposed(trans)),
          a_(transposed_ ? p.k : p.n, transposed_ ? p.n : p.k, p), b_(a_.rows(), a_.columns(), p),
          before_(p.n, p.n, p, {uplo}), call_{uplo,      trans,       p.n,     p.k,     scalar_of<T>(p.alpha),
                                              a_.data(), b_.data(),   a_.ld(), b_.ld(), scalar_of<T>(p.beta),
                                              nullptr,   before_.ld()} {
        if (routine.hermitian && routine.terms == 1)
            set_imaginary(call_.alpha, 0);
        if (routine.hermitian)
            set_imaginary(call_.beta, 0);
        fill_operand(a_, p.alpha == 0, 1);
        fill_operand(b_, p.alpha == 0, 2);
        fill(before_);
        expect();
    }

    // Whether C comes out, by run(call).
    template <class Run>
    void check(const Run& run, const std::string& what) {
        Level2Matrix<T> c(p_.n, p_.n, p_, {call_.uplo});
        fill(c);
        UpdateCall<T> call = call_;
        call.c = c.data();
        run(call);
        EXPECT_TRUE(c.guards_intact() && held_by(c))
            << routine_.name << ' ' << call.uplo << call.trans << " k=" << call.k << ' ' << p_ << ' ' << what;
    }
    void check_builds() {
        for (const VectorBuild& build : vector_builds())
            check([&](const UpdateCall<T>& v) { routine_.kernel(build, v); }, build.name);
    }
    void check_threaded(const std::string& what) { check(routine_.threaded, what); }

private:
    void fill(Level2Matrix<T>& c) const {
        fill_operand(c, p_.beta == 0, 3);
        if (routine_.hermitian)
            poison_diagonal(c);
    }
    // X*Y' by its elements.
    void expect() {
        const bool hermitian = routine_.hermitian;
        const auto rows = [&](Level2Matrix<T>& x) {
            return widened_rows(p_.n, p_.k, transposed_, transposed_ && hermitian, x);
        };
        const auto x = rows(a_), y = routine_.terms == 1 ? x : rows(b_);
        const Wide<T> alpha = widen(call_.alpha);
        for (int j = 0; j < p_.n; ++j)
            for (int i = 0; i < p_.n; ++i) {
                SizedSum<T> sum;
                if (p_.alpha != 0 && before_.stored(i, j)) {
                    const std::ptrdiff_t row = std::ptrdiff_t{i} * p_.k, column = std::ptrdiff_t{j} * p_.k;
                    sum.add_products(alpha, p_.k, x.data() + row, y.data() + column, hermitian);
                    if (routine_.terms == 2)
                        sum.add_products(hermitian ? conjugate(alpha) : alpha, p_.k, y.data() + row, x.data() + column,
                                         hermitian);
                }
                expected_.push_back(sum);
            }
    }
    bool held_by(Level2Matrix<T>& c) {
        const bool untouched = (p_.alpha == 0 || p_.k == 0) && p_.beta == 1;
        const Wide<T> beta = widen(call_.beta);
        int bad = 0;
        for (int j = 0; j < p_.n; ++j)
            for (int i = 0; i < p_.n; ++i)
                if (c.stored(i, j)) {
                    const bool real = i == j && routine_.hermitian;
                    T old = before_(i, j);
                    if (untouched) {
                        bad += !same_bits(c(i, j), old);
                        continue;
                    }
                    if (real)
                        set_imaginary(old, 0);
                    const Wide<T> scaled = p_.beta == 0 ? 0 : beta * widen(old);
                    const auto& sum = expected_[static_cast<std::size_t>(j) * p_.n + i];
                    bad += !sum.held_by(c(i, j), scaled, p_.k * routine_.terms) ||
                           (real && std::imag(widen(c(i, j))) != 0);
                }
        return bad == 0;
    }

    const UpdateRoutine<T>& routine_;
    SymmetricCase p_;
    bool transposed_;
    Level2Matrix<T> a_, b_, before_;
    UpdateCall<T> call_;
    std::vector<SizedSum<T>> expected_;
};

// body(problem) for the options of all routines: one of `every`, beginning with another one from case to case.
template <class Body>
void each_problem(int n, int k, int every, int number, const Body& body) {
    each_update([&](const auto& routine) {
        const SymmetricCase p(number, n, n, k);
        int combination = 0;
        for (const char uplo : {'U', 'l'})
            for (const char* trans = routine.trans; *trans; ++trans)
                if (combination++ % every == number % every) {
                    UpdateProblem problem(routine, uplo, *trans, p);
                    body(problem);
                }
    });
}

// ---- Kernels -------------------------------------------------------------------------------------------------------

// Blocks along the diagonal; of large triangles an option each.
TEST(RankUpdates, EveryBuildOnEachSize) {
    int number = 0;
    for (const int n : splitSizes) {
        const int every = n < 100 ? 1 : n < 300 ? 3 : n < 600 ? 6 : 12;
        each_problem(n, 3, every, number++, [](auto& problem) { problem.check_builds(); });
        if (n < 300)
            each_problem(n, 17, 2 * every, number++, [](auto& problem) { problem.check_builds(); });
    }
}

// Scalars and nothing to add, with every option.
TEST(RankUpdates, EveryScalar) {
    for (int number = 0; number < 45; ++number)
        for (const int k : {0, 5})
            each_problem(21, k, 1, number, [](auto& problem) { problem.check_builds(); });
}

TEST(RankUpdates, ManyProducts) {
    int number = 0;
    for (const int k : {63, 256, 385, 1025})
        each_problem(37, k, 1, number++, [](auto& problem) { problem.check_builds(); });
}

// ---- Teams ---------------------------------------------------------------------------------------------------------

TEST(RankUpdateBlocks, CoverTheTriangleOnce) {
    for (int n = 1; n < 70; ++n)
        for (int team = 1; team < 20; ++team) {
            std::vector<int> times(static_cast<std::size_t>(n) * n); // by rows of the upper triangle
            for (int part = 0; part < team; ++part) {
                const auto [rows, rest] = triangle_block_row(n, team, part);
                for (int i = rows.first; i < rows.first + rows.count; ++i)
                    for (int j = i; j < rest.first + rest.count; ++j)
                        ++times[static_cast<std::size_t>(i) * n + j];
            }
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j)
                    ASSERT_EQ(times[static_cast<std::size_t>(i) * n + j], i <= j) << n << ' ' << team;
        }
    EXPECT_EQ(triangle_block_row(17, 2, 0).rows.count, 8);
    EXPECT_EQ(triangle_block_row(17, 2, 1).rows.count, 9);
}

void check_on_teams(std::initializer_list<int> teams, std::initializer_list<int> sizes) {
    int number = 0;
    for (const int team : teams) {
        const ForcedTeam forced(team);
        for (const int n : sizes)
            each_problem(n, n % 3 == 0 ? 0 : 9, 1, number++,
                         [&](auto& problem) { problem.check_threaded("on " + std::to_string(team)); });
    }
}

TEST(RankUpdateTeam, EveryRoutineOnEveryTeam) {
    check_on_teams({1, 2, 3, 4, 8}, {0, 1, 16, 17, 40, 129});
    check_on_teams({20}, {17, 18});
}

// The number asked for is an upper bound: the runtime may give less, down to one.
TEST(RankUpdateTeam, SmallerTeamThanAsked) {
    const int levels = omp_get_max_active_levels();
    omp_set_max_active_levels(1);
#pragma omp parallel num_threads(2)
#pragma omp critical
    check_on_teams({4}, {17, 100});
    omp_set_max_active_levels(levels);
    const int before = omp_get_dynamic();
    omp_set_dynamic(1);
    check_on_teams({64}, {100});
    omp_set_dynamic(before);
}

// A small triangle, or nothing to do: no region at all.
TEST(RankUpdateTeam, DecidedBySize) {
    const int team = 3;
    if (omp_get_thread_limit() < team)
        GTEST_SKIP() << "teams are limited";
    const ForcedTeam forced(team);
    const auto team_of = [](int n, int k, int number) {
        std::vector<int> teams;
        each_problem(n, k, 6, number, [&](auto& problem) {
            largestTeam = 0;
            problem.check_threaded("decided");
            teams.push_back(largestTeam);
        });
        return teams;
    };
    const int nothing = 14; // a case with alpha = 0 and beta = 1
    ASSERT_TRUE(SymmetricCase(nothing, 1, 1, 1).alpha == 0 && SymmetricCase(nothing, 1, 1, 1).beta == 1);
    for (const int size : team_of(16, 3, 6))
        EXPECT_EQ(size, 0);
    for (const int size : team_of(100, 3, nothing))
        EXPECT_EQ(size, 0);
    for (const int size : team_of(17, 3, 6))
        EXPECT_EQ(size, team);
}

// For the race detector.
TEST(RankUpdateTeamRaces, EveryRoutine) {
    check_on_teams({2, 3}, {40});
}

} // namespace
} // namespace qrv::test
