// Products with symmetric and Hermitian matrices: the kernels of every build and the threaded routines.
#include <omp.h>

#include "blas/blas.hpp"
#include "support/level3_case.hpp"
#include "support/observed_team.hpp"
#include "support/symmetric_case.hpp"
#include "support/teams.hpp"
#include "support/work_memory.hpp"

namespace qrv::test {
namespace {

// ---- The routines --------------------------------------------------------------------------------------------------

template <class T>
struct SymmCall {
    char side, uplo;
    int m, n;
    T alpha;
    const T *a, *b;
    int lda, ldb;
    T beta;
    T* c;
    int ldc;
};

template <class T>
struct SymmRoutine {
    const char* name;
    bool hermitian;
    void (*kernel)(const VectorBuild& build, const SymmCall<T>& v);
    void (*threaded)(const SymmCall<T>& v);
};

#define QRV_SYMM_OF(v) &v.side, &v.uplo, &v.m, &v.n, &v.alpha, v.a, &v.lda, v.b, &v.ldb, &v.beta, v.c, &v.ldc
#define QRV_SYMM(name, hermitian)                                                                                      \
    {                                                                                                                  \
#name, hermitian,                                                                                              \
            [](const VectorBuild& build,                                                                               \
               const auto&                                                                                             \
                   v) { build.blas_##name##_kernel(QRV_SYMM_OF(v)); }, [](const auto&                                  \
                                                                              v) { qrv_blas_##name(QRV_SYMM_OF(v)); }  \
    }
const SymmRoutine<float> realRoutines[] = {QRV_SYMM(ssymm, false)};
const SymmRoutine<SingleComplex> complexRoutines[] = {QRV_SYMM(csymm, false), QRV_SYMM(chemm, true)};

// ---- Problems ------------------------------------------------------------------------------------------------------

// What is not read is NaN: C if beta is 0, A and B if alpha is, the other triangle of A, imaginary parts on a Hermitian
// diagonal, and whatever lies around the elements.
template <class T>
class SymmProblem {
public:
    SymmProblem(const SymmRoutine<T>& routine, char side, char uplo, const SymmetricCase& p)
        : routine_(routine), p_(p), order_(side == 'L' ? p.m : p.n), a_(order_, order_, p, {uplo}), b_(p.m, p.n, p),
          before_(p.m, p.n, p), call_{side,      uplo,        p.m,     p.n,     scalar_of<T>(p.alpha),
                                      a_.data(), b_.data(),   a_.ld(), b_.ld(), scalar_of<T>(p.beta),
                                      nullptr,   before_.ld()} {
        fill_operand(a_, p.alpha == 0, 1);
        fill_operand(b_, p.alpha == 0, 2);
        fill_operand(before_, p.beta == 0, 3);
        if (routine.hermitian)
            poison_diagonal(a_);
        const WideMatrix<T> a(order_, order_, [this](int i, int j) { return entry(i, j); });
        const WideMatrix<T> b(p.m, p.n, [this](int i, int j) { return p_.alpha == 0 ? 0 : widen(b_(i, j)); });
        const WideMatrix<T> c(before_);
        const Wide<T> alpha = widen(call_.alpha), beta = widen(call_.beta);
        expected_ = side == 'L' ? product(alpha, a, b, beta, c) : product(alpha, b, a, beta, c);
    }

    // Whether C comes out, by run(call).
    template <class Run>
    void check(const Run& run, const std::string& what) {
        Level2Matrix<T> c(p_.m, p_.n, p_);
        fill_operand(c, p_.beta == 0, 3);
        SymmCall<T> call = call_;
        call.c = c.data();
        run(call);
        EXPECT_TRUE(expected_.held_by(c)) << routine_.name << ' ' << call.side << call.uplo << ' ' << p_ << ' ' << what;
    }
    void check_builds() {
        for (const VectorBuild& build : vector_builds())
            check([&](const SymmCall<T>& v) { routine_.kernel(build, v); }, build.name);
    }
    void check_threaded(const std::string& what) { check(routine_.threaded, what); }

private:
    // Of the whole matrix, in double.
    Wide<T> entry(int i, int j) {
        if (p_.alpha == 0)
            return 0;
        if (i == j && routine_.hermitian)
            return real_part(a_(i, i));
        if (a_.stored(i, j))
            return widen(a_(i, j));
        return routine_.hermitian ? conjugate(widen(a_(j, i))) : widen(a_(j, i));
    }

    const SymmRoutine<T>& routine_;
    SymmetricCase p_;
    int order_;
    Level2Matrix<T> a_, b_, before_;
    SymmCall<T> call_;
    ExpectedMatrix<T> expected_;
};

// body(problem) for A of this order with `length` columns of B or rows of it, for the options of all routines: one of
// `every`, beginning with another one from case to case.
template <class Body>
void each_problem(int order, int length, int every, int number, const Body& body) {
    each_of(realRoutines, complexRoutines, [&](const auto& routine) {
        int combination = 0;
        for (const char side : {'L', 'R'})
            for (const char uplo : {'u', 'L'})
                if (combination++ % every == number % every) {
                    const bool left = side == 'L';
                    SymmProblem problem(
                        routine, side, uplo,
                        SymmetricCase(number + combination, left ? order : length, left ? length : order, 0));
                    body(problem);
                }
    });
}
const auto checkBuilds = [](auto& problem) { problem.check_builds(); };

// ---- Kernels -------------------------------------------------------------------------------------------------------

// Squares, walked blocks and halves of A.
TEST(SymmetricProducts, EveryBuildOnEachOrder) {
    int number = 0;
    for (const int order : splitSizes) {
        const int every = order < 100 ? 1 : order < 300 ? 2 : 4;
        each_problem(order, 3, every, number++, checkBuilds);
        if (order < 300)
            each_problem(order, 18, 2 * every, number++, checkBuilds);
    }
}

TEST(SymmetricProducts, EveryLength) {
    int number = 0;
    for (const int length : {0, 1, 2, 16, 33, 129, 511, 512, 513, 1025})
        each_problem(21, length, 1, number++, checkBuilds);
}

TEST(SymmetricProducts, EveryScalar) {
    for (int number = 0; number < 45; ++number)
        each_problem(19, 6, 1, number, checkBuilds);
}

// Small squares take the place of that in work memory, which is NaN where it is not written.
TEST(SymmetricProducts, RefusedMemory) {
    for (const std::size_t refused : {std::size_t{0}, anySize}) {
        const WorkMemoryProbe probe(0, refused);
        for (const int order : {5, 33, 200})
            each_problem(order, 7, 1, order, checkBuilds);
        EXPECT_EQ(probe.refusals() > 0, refused > 0);
    }
}

// ---- Teams ---------------------------------------------------------------------------------------------------------

void check_on_teams(std::initializer_list<int> teams, std::initializer_list<std::pair<int, int>> sizes) {
    int number = 0;
    for (const int team : teams) {
        const ForcedTeam forced(team);
        for (const auto& [order, length] : sizes)
            each_problem(order, length, 1, number++,
                         [&](auto& problem) { problem.check_threaded("on " + std::to_string(team)); });
    }
}

TEST(SymmetricProductTeam, EveryRoutineOnEveryTeam) {
    check_on_teams({1, 2, 3, 4, 8}, {{0, 9}, {9, 0}, {16, 16}, {16, 17}, {17, 3}, {70, 41}});
}

// The number asked for is an upper bound: the runtime may give less, down to one.
TEST(SymmetricProductTeam, SmallerTeamThanAsked) {
    const int levels = omp_get_max_active_levels();
    omp_set_max_active_levels(1);
#pragma omp parallel num_threads(2)
#pragma omp critical
    check_on_teams({4}, {{17, 20}});
    omp_set_max_active_levels(levels);
    const int before = omp_get_dynamic();
    omp_set_dynamic(1);
    check_on_teams({64}, {{20, 30}});
    omp_set_dynamic(before);
}

TEST(SymmetricProductTeam, DecidedBySize) {
    const int team = 3;
    if (omp_get_thread_limit() < team)
        GTEST_SKIP() << "teams are limited";
    const ForcedTeam forced(team);
    const auto expect_team = [](int order, int length, int number, int expected) {
        each_problem(order, length, 4, number, [&](auto& problem) {
            largestTeam = 0;
            problem.check_threaded("decided");
            EXPECT_EQ(largestTeam, expected) << order << ' ' << length;
        });
    };
    expect_team(16, 16, 0, 0);
    expect_team(17, 16, 0, team);
    expect_team(1, 17, 0, team);
    // alpha = 0 and beta = 1: nothing to do
    const int nothing = 17, options = nothing % 4 + 1;
    ASSERT_TRUE(SymmetricCase(nothing + options, 1, 1, 0).alpha == 0 &&
                SymmetricCase(nothing + options, 1, 1, 0).beta == 1);
    expect_team(40, 40, nothing, 0);
}

// For the race detector.
TEST(SymmetricProductTeamRaces, EveryRoutine) {
    check_on_teams({2, 3}, {{40, 20}});
}

} // namespace
} // namespace qrv::test
