// Level 1 operations on a team: every routine, team size and pair of increments, with the result of a loop over the
// elements. The numbers are small integers, so every order of summation gives the same bits.
#include <complex>
#include <cstring>
#include <gtest/gtest.h>
#include <omp.h>
#include <vector>

#include "blas/blas.hpp"
#include "support/observed_team.hpp"
#include "support/teams.hpp"
#include "support/work_memory.hpp"

namespace qrv::test {
namespace {

using Complex = std::complex<float>;

qrv_complex* native(Complex* x) {
    return reinterpret_cast<qrv_complex*>(x);
}
float* native(float* x) {
    return x;
}

// Two vectors in arrays with room around and between their elements, and the result of a function.
template <class T>
struct Vectors {
    int n, incx, incy;
    std::vector<T> xs, ys;
    T result{};

    Vectors(int length, int stepx, int stepy) : n(length), incx(stepx), incy(stepy), xs(room(stepx)), ys(room(stepy)) {
        int next = 0;
        for (std::vector<T>* array : {&xs, &ys})
            for (T& value : *array)
                value = number(next++);
    }
    T* x() { return xs.data() + band; }
    T* y() { return ys.data() + band; }
    T& x(int i) { return x()[index(i, incx)]; }
    T& y(int i) { return y()[index(i, incy)]; }
    bool operator==(const Vectors& other) const { return xs == other.xs && ys == other.ys && result == other.result; }

private:
    static constexpr int band = 9;
    std::size_t room(int inc) const { return static_cast<std::size_t>(2 * band + std::max(n, 0) * std::abs(inc)); }
    std::ptrdiff_t index(int i, int inc) const { return std::ptrdiff_t{inc >= 0 ? i : i - (n - 1)} * inc; }
    static T number(int i) {
        const auto digit = [](int k) { return static_cast<float>(k % 17 - 8); };
        if constexpr (std::is_same_v<T, Complex>)
            return {digit(i * 5), digit(i * 3 + 1)};
        else
            return digit(i * 5);
    }
};

template <class T>
constexpr T alpha = 3;
template <>
constexpr Complex alpha<Complex> = {2, -1};
constexpr float rotationC = 2, rotationS = -1;

// One routine: on a team asked for, by its decision, and what it does to element i. Up to `serialUpTo` elements the
// decision is for one thread on the classes 5 and 4 that have a rule.
template <class T>
struct Routine {
    const char* name;
    void (*on_team)(const int* threads, Vectors<T>& v);
    void (*decided)(Vectors<T>& v);
    void (*element)(Vectors<T>& v, int i);
    int class5SerialUpTo, class4SerialUpTo;
};

#define QRV_XY &v.n, native(v.x()), &v.incx, native(v.y()), &v.incy
#define QRV_ALPHA_XY &v.n, &alpha<float>, v.x(), &v.incx, v.y(), &v.incy
#define QRV_CALPHA_XY                                                                                                  \
    &v.n, reinterpret_cast<const qrv_complex*>(&alpha<Complex>), native(v.x()), &v.incx, native(v.y()), &v.incy

const Routine<float> realRoutines[] = {
    {"saxpy", [](const int* t, auto& v) { qrv_blas_saxpy_omp(t, QRV_ALPHA_XY); },
     [](auto& v) { qrv_blas_saxpy(QRV_ALPHA_XY); }, [](auto& v, int i) { v.y(i) += alpha<float> * v.x(i); }, 4000,
     4900},
    {"scopy", [](const int* t, auto& v) { qrv_blas_scopy_omp(t, QRV_XY); }, [](auto& v) { qrv_blas_scopy(QRV_XY); },
     [](auto& v, int i) { v.y(i) = v.x(i); }, 5000, 6000},
    {"sswap", [](const int* t, auto& v) { qrv_blas_sswap_omp(t, QRV_XY); }, [](auto& v) { qrv_blas_sswap(QRV_XY); },
     [](auto& v, int i) { std::swap(v.x(i), v.y(i)); }, 5000, 5000},
    {"sdot", [](const int* t, auto& v) { v.result = qrv_blas_sdot_omp(t, QRV_XY); },
     [](auto& v) { v.result = qrv_blas_sdot(QRV_XY); }, [](auto& v, int i) { v.result += v.x(i) * v.y(i); }, 5000,
     5000},
    {"srot", [](const int* t, auto& v) { qrv_blas_srot_omp(t, QRV_XY, &rotationC, &rotationS); },
     [](auto& v) { qrv_blas_srot(QRV_XY, &rotationC, &rotationS); },
     [](auto& v, int i) {
         const float x = v.x(i), y = v.y(i);
         v.x(i) = rotationC * x + rotationS * y;
         v.y(i) = rotationC * y - rotationS * x;
     },
     4000, 5000},
};
const Routine<Complex> complexRoutines[] = {
    {"caxpy", [](const int* t, auto& v) { qrv_blas_caxpy_omp(t, QRV_CALPHA_XY); },
     [](auto& v) { qrv_blas_caxpy(QRV_CALPHA_XY); }, [](auto& v, int i) { v.y(i) += alpha<Complex> * v.x(i); }, 2000,
     3000},
    {"ccopy", [](const int* t, auto& v) { qrv_blas_ccopy_omp(t, QRV_XY); }, [](auto& v) { qrv_blas_ccopy(QRV_XY); },
     [](auto& v, int i) { v.y(i) = v.x(i); }, 2500, 3000},
    {"cswap", [](const int* t, auto& v) { qrv_blas_cswap_omp(t, QRV_XY); }, [](auto& v) { qrv_blas_cswap(QRV_XY); },
     [](auto& v, int i) { std::swap(v.x(i), v.y(i)); }, 2000, 3000},
    {"cdotc", [](const int* t, auto& v) { qrv_blas_cdotc_omp(t, native(&v.result), QRV_XY); },
     [](auto& v) { qrv_blas_cdotc(native(&v.result), QRV_XY); },
     [](auto& v, int i) { v.result += std::conj(v.x(i)) * v.y(i); }, 2000, 3000},
};

template <class T>
Vectors<T> vectors_for(const Routine<T>&, int n, int incx, int incy) {
    return {n, incx, incy};
}

template <class Body>
void each_routine(const Body& body) {
    each_of(realRoutines, complexRoutines, body);
}

template <class T, class Way>
bool agrees(const Routine<T>& routine, int n, int incx, int incy, const Way& way) {
    Vectors<T> expected(n, incx, incy), found(n, incx, incy);
    for (int i = 0; i < n; ++i)
        routine.element(expected, i);
    way(found);
    return found == expected;
}

constexpr std::pair<int, int> increments[] = {{1, 1}, {2, 3}, {-1, 1}, {1, -2}, {-3, -1}};

void check_on_teams(std::initializer_list<int> teams, std::initializer_list<int> lengths) {
    each_routine([&](const auto& routine) {
        for (const int team : teams)
            for (const int n : lengths)
                for (const auto& [incx, incy] : increments)
                    EXPECT_TRUE(agrees(routine, n, incx, incy, [&](auto& v) { routine.on_team(&team, v); }))
                        << routine.name << " n=" << n << " incx=" << incx << " incy=" << incy << " on " << team;
    });
}

TEST(Level1Team, EveryRoutineOnEveryTeam) {
    check_on_teams({1, 2, 3, 4, 8, 16}, {63, 100, 1000});
    check_on_teams({3}, {-3, 0, 1, 7, 8});
    check_on_teams({128, 129}, {1000});
}

// The partial results of a team beyond 128 threads stand in work memory.
TEST(Level1Team, RefusedMemory) {
    const int team = 130;
    {
        const WorkMemoryProbe probe(0, anySize);
        EXPECT_TRUE(agrees(realRoutines[3], 1000, 1, -2, [&](auto& v) { realRoutines[3].on_team(&team, v); }));
        EXPECT_TRUE(agrees(complexRoutines[3], 1000, 1, -2, [&](auto& v) { complexRoutines[3].on_team(&team, v); }));
        EXPECT_GT(probe.refusals(), 0);
    }
    const int fewer = 128;
    const WorkMemoryProbe probe(0, anySize);
    EXPECT_TRUE(agrees(realRoutines[3], 1000, 1, -2, [&](auto& v) { realRoutines[3].on_team(&fewer, v); }));
    EXPECT_EQ(probe.refusals(), 0);
}

// Two partial sums cancel what a third would lose against them in single precision.
TEST(Level1Team, PartialResultsAreAddedInExtendedPrecision) {
    const int n = 24, one = 1, team = 3;
    std::vector<float> x(24, 0), y(24, 1);
    x[0] = 1e8F;
    x[8] = 1;
    x[16] = -1e8F;
    std::vector<qrv_complex> cx(24), cy(24, {1, 0});
    for (std::size_t i = 0; i < 24; ++i)
        cx[i] = {x[i], x[i]};
    qrv_complex c;
    largestTeam = 0;
    qrv_blas_cdotc_omp(&team, &c, &n, cx.data(), &one, cy.data(), &one);
    if (largestTeam < 3)
        GTEST_SKIP() << "teams are limited";
    EXPECT_EQ(qrv_blas_sdot_omp(&team, &n, x.data(), &one, y.data(), &one), 1);
    EXPECT_EQ(c.re, 1);
    EXPECT_EQ(c.im, -1);
}

// The number asked for is an upper bound: the runtime may give less. Work memory is NaN, so a partial result that no
// thread wrote shows.
TEST(Level1Team, SmallerTeamThanAsked) {
    const WorkMemoryProbe probe;
    const int before = omp_get_dynamic();
    omp_set_dynamic(1);
    check_on_teams({8, 64, 1000}, {100, 1000});
    omp_set_dynamic(before);
    const int levels = omp_get_max_active_levels();
    omp_set_max_active_levels(1);
#pragma omp parallel num_threads(2)
#pragma omp critical
    check_on_teams({4, 200}, {100});
    omp_set_max_active_levels(levels);
}

// Each routine goes by its own row.
TEST(Level1Team, DecidedByLengthAndMachine) {
    const int team = 3;
    if (omp_get_thread_limit() < team)
        GTEST_SKIP() << "teams are limited";
    const ForcedTeam forced(team);
    const int cpuMa = qrv_serv_get_cpu_ma();
    each_routine([&](const auto& routine) {
        const int serialUpTo = cpuMa == 64                  ? routine.class5SerialUpTo
                               : cpuMa == 32 || cpuMa == 33 ? routine.class4SerialUpTo
                                                            : 1000000;
        for (const int n : {1, routine.class5SerialUpTo, routine.class5SerialUpTo + 1, routine.class4SerialUpTo,
                            routine.class4SerialUpTo + 1, 20000})
            for (const auto& [incx, incy] : increments) {
                largestTeam = 1;
                EXPECT_TRUE(agrees(routine, n, incx, incy, routine.decided)) << routine.name << " n=" << n;
                EXPECT_EQ(largestTeam, n > serialUpTo ? team : 1) << routine.name << " n=" << n << " CpuMa " << cpuMa;
            }
        largestTeam = 1;
        auto zero = vectors_for(routine, 20000, 0, 1);
        routine.decided(zero);
        EXPECT_EQ(largestTeam, 1) << routine.name << " incx=0";
    });
}

// For the race detector.
TEST(Level1TeamRaces, EveryRoutine) {
    check_on_teams({2, 3}, {100});
}

} // namespace
} // namespace qrv::test
