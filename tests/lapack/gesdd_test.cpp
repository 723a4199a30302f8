// Singular value decompositions: every path, at the least work and at full speed.
#include <gtest/gtest.h>

#include "lapack/calls/svd.hpp"
#include "lapack/lapack.hpp"
#include "qrv/native.h"
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/known_values.hpp"
#include "support/teams.hpp"

namespace qrv::test {
namespace {

template <class T>
struct Decomposed {
    char job;
    int m, n, k;
    Operand<T> a, u, vt;
    std::vector<float> s;
    int info = -99;

    // Of work: the best length, the least, and of the square path in place the least that has room for all vectors
    // beside A, and one element less.
    enum Work { best, least, roomy, narrow };
    Decomposed(char option, const Operand<T>& before, Work length)
        : job(option), m(before.rows()), n(before.columns()), k(std::min(m, n)), a(before),
          u(stored(m < n) ? m : 0, job == 'A' ? m : k, std::max(m, 1) + 1),
          vt(stored(m >= n) ? (job == 'A' ? n : k) : 0, n, std::max(n, 1) + 2), s(static_cast<std::size_t>(k)) {
        const auto sizes = lapack::gesdd_work<T>(lapack::svd_job_of(job), m, n);
        const int beside = m * n + (isComplex<T> ? 3 * k : 3 * k * k + 7 * k),
                  lwork = length == best    ? static_cast<int>(sizes.best)
                          : length == least ? static_cast<int>(sizes.least)
                                            : std::max(beside - (length == narrow), static_cast<int>(sizes.least));
        Operand<T> work(lwork, 1, lwork);
        GuardedInts iwork(8 * k);
        GuardedVector<float> rwork(job == 'N' ? 5 * k : 5 * k * k + 7 * k);
        if constexpr (isComplex<T>)
            info = call(CGESDD, job, m, n, a, s, u, vt, work.data(), lwork, rwork, iwork);
        else
            info = call(SGESDD, job, m, n, a, s, u, vt, work.data(), lwork, iwork);
    }
    const Operand<T>& left() const { return job == 'O' && m >= n ? a : u; }
    const Operand<T>& right() const { return job == 'O' && m < n ? a : vt; }

    double error(const Operand<T>& before) const {
        return svd_error(WideMatrix<T>(before), WideMatrix<T>(left()), s, WideMatrix<T>(right()));
    }

private:
    // S and A have both matrices, O the square one.
    bool stored(bool square) const { return job == 'A' || job == 'S' || (job == 'O' && square); }
};

template <class T>
Operand<T> matrix_of(int m, int n, const std::vector<double>& values, unsigned seed) {
    std::mt19937 random(seed);
    const std::vector<double> whole = general_matrix(m, n, values, random);
    Operand<T> a(m, n, std::max(m, 1) + 3);
    // Complex ones: with phases for rows and columns, which change no singular value.
    return a.set([&](int i, int j) {
        const double x = whole[std::size_t(i) + std::size_t(m) * std::size_t(j)], phase = 0.7 * i - 1.3 * j;
        int part = 0;
        return element<T>([&] {
            return static_cast<float>(!isComplex<T> ? x : part++ == 0 ? x * std::cos(phase) : x * std::sin(phase));
        });
    });
}

template <class T>
void expect_decomposed(int m, int n, const Spectrum& spectrum, unsigned seed) {
    SCOPED_TRACE(spectrum.name + ' ' + std::to_string(m) + 'x' + std::to_string(n));
    const Operand<T> before = matrix_of<T>(m, n, spectrum.values, seed);
    const double largest = norm(WideMatrix<T>(before), 'O');
    std::vector<float> first;
    using D = Decomposed<T>;
    combine({D::best, D::least, D::roomy, D::narrow}, "ASON").each([&](auto length, char job) {
        if (job != 'O' && length > D::least)
            return;
        const D d(job, before, length);
        EXPECT_EQ(d.info, 0);
        EXPECT_TRUE(is_descending(d.s));
        EXPECT_LT(job == 'N' ? 0 : d.error(before), 15);
        if (first.empty())
            first = d.s;
        for (std::size_t i = 0; i < first.size(); ++i)
            EXPECT_NEAR(d.s[i], first[i], 10 * std::max(m, n) * 2 * unitRoundoff * largest) << i;
    });
}

// Tall and wide beyond every ratio that decides on a path, at it, and below; undivided and divided.
TEST_OF_ELEMENTS(Svd, ResidualOfEveryPath) {
    unsigned seed = 1;
    constexpr std::pair<int, int> shapes[] = {{1, 1},   {4, 1},   {5, 4},   {22, 12}, {21, 12}, {23, 12}, {20, 12},
                                              {19, 12}, {60, 30}, {34, 30}, {50, 30}, {54, 30}, {150, 4}};
    for (const auto& [longer, shorter] : shapes)
        for (const bool tall : {true, false}) {
            const int m = tall ? longer : shorter, n = tall ? shorter : longer;
            Spectrum spectrum{"geometric", {}};
            for (int i = 0; i < shorter; ++i)
                spectrum.values.push_back(std::pow(0.8, i));
            expect_decomposed<T>(m, n, spectrum, ++seed);
        }
}

TEST_OF_ELEMENTS(Svd, ResidualOfEverySpectrum) {
    for (const auto& [m, n] : {std::pair{26, 26}, {24, 25}, {27, 27}, {60, 52}})
        for (const Spectrum& spectrum : spectra(std::min(m, n))) {
            expect_decomposed<T>(m, n, spectrum, 7);
            if (m == 26)
                for (const double factor : {0x1p-100, 0x1p100})
                    expect_decomposed<T>(m, n, test::times(factor, spectrum), 7);
        }
    expect_decomposed<T>(30, 28, {"zero", std::vector<double>(28, 0.0)}, 3);
}

TEST(Svd, TellsWorkThatNoFloatHasAsALargerOne) {
    for (const int n : {0, 1, 1 << 24, (1 << 24) + 1, 33554433, 33554435, 100000001, 2147483647}) {
        const float told = qrv_lapack_sroundup_work(&n);
        EXPECT_GE(double{told}, n);
        EXPECT_LE(double{told}, n * (1 + 0x1p-21));
    }
    const int between = 33554433;
    EXPECT_EQ(qrv_lapack_sroundup_work(&between), 33554440.0F);
    EXPECT_EQ(lapack::gesdd_work<float>(lapack::SvdJob::overwrite, 40000, 40000).least > 2147483647, true);
}

TEST(Svd, WorkOfPathsOnATeamRaces) {
    const ForcedTeam forced(3);
    expect_decomposed<float>(70, 30, {"equal", std::vector<double>(30, 1.0)}, 9);
}

} // namespace
} // namespace qrv::test
