// Level 2 operations on a team: every routine, its options and increments, with the result of its serial kernel. The
// numbers are small integers, so every order of summation gives the same bits.
#include <cstring>
#include <gtest/gtest.h>
#include <omp.h>
#include <vector>

#include "blas/blas.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "blas/thread/common/machine.hpp"
#include "support/level2_case.hpp"
#include "support/observed_team.hpp"
#include "support/teams.hpp"
#include "support/work_memory.hpp"

namespace qrv::test {
namespace {

// Arguments of any of the routines. A holds m x n elements, x and y as many as the larger dimension.
template <class T>
struct Operands {
    char uplo, trans, diag;
    int m, n, incx, incy, lda;
    T alpha, beta;
    std::vector<T> a, xs, ys;

    Operands(const char* options, int rows, int columns, int stepx, int stepy, float unit = 1)
        : uplo(options[0]), trans(options[1]), diag(options[2]), m(rows), n(columns), incx(stepx), incy(stepy),
          lda(rows + 3), alpha(scalar<T>(2)), beta(scalar<T>(-1)), a(static_cast<std::size_t>(lda * columns)),
          xs(room(stepx)), ys(room(stepy)) {
        int next = 0;
        for (std::vector<T>* array : {&a, &xs, &ys})
            for (T& value : *array)
                value = element<T>([&] { return unit * static_cast<float>((next += 5) % 11 - 5); });
    }
    T* x() { return xs.data() + band; }
    T* y() { return ys.data() + band; }
    bool operator==(const Operands& other) const {
        return same_bits(a, other.a) && same_bits(xs, other.xs) && same_bits(ys, other.ys);
    }

private:
    static constexpr int band = 9; // elements around those of a vector
    std::size_t room(int inc) const { return static_cast<std::size_t>(2 * band + std::max(m, n) * std::abs(inc)); }
    static bool same_bits(const std::vector<T>& v, const std::vector<T>& w) {
        return std::memcmp(v.data(), w.data(), v.size() * sizeof(T)) == 0;
    }
};

// One routine: its serial kernel, on a team asked for, by its decision, and for how many threads that is.
template <class T>
struct Routine {
    const char* name;
    std::vector<const char*> options; // uplo, trans, diag
    bool square;
    void (*serial)(Operands<T>& v);
    void (*on_team)(const int* threads, Operands<T>& v);
    void (*decided)(Operands<T>& v);
    int (*threads)(const Operands<T>& v);
};

#define QRV_GEMV_OF(v) &v.trans, &v.m, &v.n, &v.alpha, v.a.data(), &v.lda, v.x(), &v.incx, &v.beta, v.y(), &v.incy
#define QRV_SYMV_OF(v) &v.uplo, &v.n, &v.alpha, v.a.data(), &v.lda, v.x(), &v.incx, &v.beta, v.y(), &v.incy
#define QRV_TRMV_OF(v) &v.uplo, &v.trans, &v.diag, &v.n, v.a.data(), &v.lda, v.x(), &v.incx
#define QRV_SYR_OF(v) &v.uplo, &v.n, &v.alpha, v.x(), &v.incx, v.a.data(), &v.lda
#define QRV_SYR2_OF(v) &v.uplo, &v.n, &v.alpha, v.x(), &v.incx, v.y(), &v.incy, v.a.data(), &v.lda

#define QRV_ROUTINE(routine, options, square, arguments, threads)                                                      \
    {                                                                                                                  \
#routine, options, square, [](auto& v) { qrv_blas_##routine##_kernel(arguments(v)); },                         \
            [](const int* team, auto& v) { qrv_blas_##routine##_omp(team, arguments(v)); },                            \
            [](auto& v) { qrv_blas_##routine(arguments(v)); }, [](const auto& v) { return threads; }       \
    }

const std::vector<const char*> transOnly{"UNN", "UtN", "UCN"}, uploOnly{"UNN", "lNN"},
    allOptions{"UNN", "uTn", "UcU", "LNU", "lTN", "LCn"};

const Routine<float> realRoutines[] = {
    QRV_ROUTINE(sgemv, transOnly, false, QRV_GEMV_OF, gemv_threads(sgemvRule, op_of(v.trans), v.m, v.n, ThisMachine{})),
    QRV_ROUTINE(ssymv, uploOnly, true, QRV_SYMV_OF, symv_threads(ssymvRule, v.n, ThisMachine{})),
    QRV_ROUTINE(strmv, allOptions, true, QRV_TRMV_OF, trmv_threads(strmvRule, v.n, ThisMachine{})),
    QRV_ROUTINE(ssyr, uploOnly, true, QRV_SYR_OF, syr_threads(ssyrRule, v.n, ThisMachine{})),
    QRV_ROUTINE(ssyr2, uploOnly, true, QRV_SYR2_OF, syr_threads(ssyrRule, v.n, ThisMachine{})),
};
const Routine<SingleComplex> complexRoutines[] = {
    QRV_ROUTINE(cgemv, transOnly, false, QRV_GEMV_OF, gemv_threads(cgemvRule, op_of(v.trans), v.m, v.n, ThisMachine{})),
    QRV_ROUTINE(ctrmv, allOptions, true, QRV_TRMV_OF, trmv_threads(ctrmvRule, v.n, ThisMachine{})),
};

template <class Body>
void each_routine(const Body& body) {
    each_of(realRoutines, complexRoutines, body);
}

// Runs way(operands) for each set of options, the sizes and increments given; it must change the operands as the serial
// kernel does, to the bit.
template <class T, class Way>
void expect_as_serial(const Routine<T>& routine, std::pair<int, int> size, const Way& way, const std::string& what) {
    for (const char* options : routine.options)
        for (const auto& [incx, incy] : {std::pair{1, 1}, {-2, 3}, {1, -1}}) {
            Operands<T> expected(options, routine.square ? size.second : size.first, size.second, incx, incy);
            Operands<T> found = expected;
            routine.serial(expected);
            way(found);
            EXPECT_TRUE(found == expected) << routine.name << ' ' << options << ' ' << size.first << " x "
                                           << size.second << " inc " << incx << ", " << incy << ' ' << what;
        }
}

void check_on_teams(std::initializer_list<int> teams, std::initializer_list<std::pair<int, int>> sizes) {
    each_routine([&](const auto& routine) {
        for (const int team : teams)
            for (const auto& size : sizes)
                expect_as_serial(
                    routine, size, [&](auto& v) { routine.on_team(&team, v); }, "on " + std::to_string(team));
    });
}

TEST(Level2Team, EveryRoutineOnEveryTeam) {
    check_on_teams({1, 2, 3, 4, 8, 9}, {{3, 33}, {100, 129}});
    check_on_teams({2, 9}, {{1, 1}, {40, 7}});
    check_on_teams({2, 3, 9}, {{700, 300}, {9, 1030}});
}

// The number asked for is an upper bound: the runtime may give less. Work memory is NaN, so that a copy that is not
// whole shows.
TEST(Level2Team, SmallerTeamThanAsked) {
    const WorkMemoryProbe probe;
    const int before = omp_get_dynamic();
    omp_set_dynamic(1);
    check_on_teams({8, 64}, {{100, 129}});
    omp_set_dynamic(before);
    const int levels = omp_get_max_active_levels();
    omp_set_max_active_levels(1);
#pragma omp parallel num_threads(2)
#pragma omp critical
    check_on_teams({4}, {{100, 129}});
    omp_set_max_active_levels(levels);
}

// The triangular product then does without its copy of x.
TEST(Level2Team, RefusedMemory) {
    const WorkMemoryProbe probe(0, anySize);
    check_on_teams({2, 3}, {{100, 129}});
    EXPECT_GT(probe.refusals(), 0);
}

// Numbers that round: a team of one size gives the same bits again.
template <class T>
Operands<T> rounded_on_team(const Routine<T>& routine, const char* options, int team) {
    Operands<T> v(options, 129, 129, 1, -1, 0.1F);
    routine.on_team(&team, v);
    return v;
}
TEST(Level2Team, RepeatsToTheBit) {
    each_routine([](const auto& routine) {
        for (const char* options : routine.options)
            for (const int team : {2, 3, 8})
                EXPECT_TRUE(rounded_on_team(routine, options, team) == rounded_on_team(routine, options, team))
                    << routine.name << ' ' << options << " on " << team;
    });
}

// Each routine goes by its own rule; an empty matrix leaves everything as it is.
TEST(Level2Team, DecidedBySizeAndMachine) {
    const int team = 3;
    if (omp_get_thread_limit() < team)
        GTEST_SKIP() << "teams are limited";
    const ForcedTeam forced(team);
    each_routine([&](const auto& routine) {
        for (const auto& size : {std::pair{1, 1}, {127, 127}, {300, 255}, {60, 300}, {20, 1600}})
            expect_as_serial(
                routine, size,
                [&](auto& v) {
                    largestTeam = 1;
                    routine.decided(v);
                    EXPECT_EQ(largestTeam, routine.threads(v)) << routine.name << ' ' << v.m << " x " << v.n;
                },
                "decided");
    });
    for (const auto& [m, n] : {std::pair{0, 500}, {500, 0}}) {
        Operands<float> v("UNN", 500, 500, 1, 1);
        const Operands<float> before = v;
        v.m = m;
        v.n = n;
        v.beta = 0;
        qrv_blas_sgemv(QRV_GEMV_OF(v));
        EXPECT_TRUE(v == before);
    }
}

// For the race detector.
TEST(Level2TeamRaces, EveryRoutine) {
    check_on_teams({2, 3}, {{40, 100}});
}

} // namespace
} // namespace qrv::test
