// Reduction to tridiagonal form, and eigenvalues and eigenvectors of symmetric matrices: residuals and orthogonality in
// double, on spectra of every kind.
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

#include "qrv/native.h"
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/known_values.hpp"
#include "support/reduced.hpp"
#include "support/teams.hpp"

namespace qrv::test {
namespace {

constexpr double ulp = 2 * unitRoundoff;

// A dense symmetric matrix in double, and as a routine takes it.
struct Symmetric {
    int n;
    Operand<float> a;                // one triangle
    double norm;                     // largest sum over a column
    std::vector<double> eigenvalues; // ascending

    explicit Symmetric(const Spectrum& s)
        : n(static_cast<int>(s.values.size())), a(Form{n, n, Form::symmetric, 'L'}, {}), eigenvalues(s.values) {
        std::mt19937 random(9);
        const WideMatrix<float> exact(n, n, symmetric_matrix(s.values, random));
        a.set([&](int i, int j) { return static_cast<float>(exact(i, j)); });
        norm = test::norm(wide(), 'O');
        std::sort(eigenvalues.begin(), eigenvalues.end());
    }
    WideMatrix<float> wide() const { return WideMatrix<float>(a); }
    Operand<float> stored(char uplo, int extra = 3) const {
        Operand<float> x(Form{n, n, Form::symmetric, uplo}, Layout{extra});
        return x.set([&](int i, int j) { return static_cast<float>(a.entry(i, j)); });
    }
};

// SSYTRD with work of this length, and its Q by SORMTR on the identity.
struct Reduction {
    Operand<float> a, q;
    GuardedVector<float> d, e, tau;

    Reduction(const Symmetric& s, char uplo, bool leastWork)
        : a(s.stored(uplo)), q(identity_operand(s.n)), d(s.n), e(s.n - 1), tau(s.n - 1) {
        const int n = s.n, least = std::max(1, n);
        float wanted = 0;
        EXPECT_EQ(call(SSYTRD, uplo, n, nullptr, a.ld(), nullptr, nullptr, nullptr, &wanted, -1), 0);
        GuardedVector<float> work(leastWork ? 1 : static_cast<int>(wanted)), more(least);
        EXPECT_EQ(call(SSYTRD, uplo, n, a, d, e, tau, work, work.size()), 0);
        EXPECT_EQ(call(SORMTR, 'L', uplo, 'N', n, n, a, tau, q, more, least), 0);
    }
};

void expect_reduced(const Symmetric& s, char uplo, bool leastWork) {
    const Reduction r(s, uplo, leastWork);
    expect_similar(s.wide(), WideMatrix<float>(r.q), tridiagonal_matrix(r.d, r.e), 5);
    for (int i = 0; i < s.n; ++i) { // T stands in the triangle too
        EXPECT_EQ(r.a(i, i), r.d[i]);
        EXPECT_TRUE(i == s.n - 1 || (uplo == 'U' ? r.a(i, i + 1) : r.a(i + 1, i)) == r.e[i]);
        EXPECT_TRUE(i == s.n - 1 || r.tau[i] == 0 || r.tau[i] >= 1) << "the sign of e";
    }
}

// Around panels and the crossover, with work for panels and without.
TEST(SymmetricReduction, Residual) {
    const ForcedTeam alone(1);
    combine({0, 1, 2, 3, 31, 32, 33, 100, 250, 251, 271, 300}, {false, true}, "UL")
        .each([](int n, bool leastWork, char uplo) {
            if (!leastWork || n <= 250 || n == 271)
                expect_reduced(Symmetric(spectra(n)[1]), uplo, leastWork);
        });
    combine({1.0, 0x1p60, -0x1p-60}, "UL", spectra(60)).each([](double scale, char uplo, const Spectrum& s) {
        expect_reduced(Symmetric(times(scale, s)), uplo, false);
    });
}

// Q applied from both sides, transposed or not: all agree with Q itself.
TEST(SymmetricReduction, ProductsWithQSolutions) {
    std::mt19937 random(7);
    combine({1, 2, 30, 70}, "UL", "LR", "NT").each([&](int n, char uplo, char side, char trans) {
        const Reduction r(Symmetric(spectra(n)[1]), uplo, false);
        const int other = 5, m = side == 'L' ? n : other, k = side == 'L' ? other : n;
        Operand<float> c(m, k, m + 2);
        c.fill_random(random);
        const WideMatrix<float> q(r.q, trans), before(c);
        const auto expected = side == 'L' ? product(1.0, q, before, 0.0, c) : product(1.0, before, q, 0.0, c);
        std::vector<float> work(100 * other);
        EXPECT_EQ(call(SORMTR, side, uplo, trans, m, k, r.a, r.tau, c, work, 100 * other), 0);
        EXPECT_TRUE(expected.error(c) <= 20);
    });
}

// SSYEVR in guarded memory.
struct Eigen {
    int m = -1, info;
    GuardedVector<float> w;
    GuardedInts isuppz;
    Operand<float> z;

    Eigen(const Symmetric& s, char jobz, char range, char uplo, float vl = 0, float vu = 0, int il = 0, int iu = 0,
          bool leastWork = false, float abstol = 0)
        : w(s.n), isuppz(2 * s.n), z(jobz == 'V' ? s.n : 0, jobz == 'V' ? s.n : 0, s.n + 1) {
        const int n = s.n;
        Operand<float> a = s.stored(uplo);
        float wanted = 0;
        int ints = 0;
        call(SSYEVR, jobz, range, uplo, n, nullptr, a.ld(), vl, vu, il, iu, abstol, nullptr, nullptr, nullptr, z.ld(),
             nullptr, &wanted, -1, &ints, -1);
        EXPECT_EQ(ints, std::max(1, 10 * n));
        GuardedVector<float> work(leastWork ? std::max(1, 26 * n) : static_cast<int>(wanted));
        GuardedInts iwork(ints);
        info = call(SSYEVR, jobz, range, uplo, n, a, vl, vu, il, iu, abstol, &m, w, z, isuppz, work, work.size(), iwork,
                    ints);
    }
};

// Of all of them or a part: order, values beside those of the whole spectrum, vectors.
void expect_eigen(const Symmetric& s, const Eigen& x, bool vectors, int first, int count, const std::string& what,
                  double orthogonality = 6) {
    EXPECT_EQ(x.info, 0) << what;
    ASSERT_EQ(x.m, count) << what;
    EXPECT_TRUE(std::is_sorted(x.w.data(), x.w.data() + count)) << what;
    std::vector<double> w;
    for (int i = 0; i < count; ++i) {
        w.push_back(x.w[i]);
        const double expected = s.eigenvalues[std::size_t(first + i)];
        EXPECT_TRUE(std::abs(w.back() - expected) <= 3 * s.n * ulp * s.norm + 1e-300) << what << ' ' << i;
    }
    if (!vectors)
        return;
    const WideMatrix<float> z(s.n, count, [&](int i, int j) { return widen(x.z(i, j)); });
    EXPECT_LE(similarity_error(s.wide(), z, diagonal<float>(w)), 10) << what;
    EXPECT_LE(orthogonality_error(z), orthogonality) << what;
}

TEST(SymmetricEigen, Residual) {
    combine({1, 2, 3, 25, 100}, {1.0, 0x1p60, -0x1p-60}, "UL").each([](int n, double scale, char uplo) {
        for (const Spectrum& kind : spectra(n)) {
            if (n == 100 && scale > 1)
                continue;
            const Symmetric s(times(scale, kind));
            expect_eigen(s, Eigen(s, 'V', 'A', uplo, 0, 0, 0, 0, uplo == 'L'), true, 0, n, kind.name);
            expect_eigen(s, Eigen(s, 'N', 'A', uplo, 0, 0, 0, 0, uplo == 'U'), false, 0, n, kind.name);
        }
    });
}

TEST(SymmetricEigen, ByIndexAndIntervalResidual) {
    combine({1, 2, 3, 25, 60}, "VN", "UL").each([](int n, char jobz, char uplo) {
        for (const Spectrum& kind : {spectra(n)[1], spectra(n)[2], spectra(n)[6], times(0x1p60, spectra(n)[1])}) {
            const Symmetric s(kind);
            for (const auto& [il, iu] : {std::pair{1, 1}, {n, n}, {1, n}, {(n + 1) / 2, std::max(1, 3 * n / 4)}})
                if (il <= iu)
                    expect_eigen(s, Eigen(s, jobz, 'I', uplo, 0, 0, il, iu, true), jobz == 'V', il - 1, iu - il + 1,
                                 kind.name + " by index");
            if (n < 3)
                continue;
            // From below the second value to above the last but one.
            const auto& v = s.eigenvalues;
            const auto last = std::size_t(n - 1);
            const auto from = static_cast<float>((v[0] + v[1]) / 2),
                       to = static_cast<float>((v[last] + v[last - 1]) / 2);
            if (v[1] - v[0] > 1e-4 * s.norm && v[last] - v[last - 1] > 1e-4 * s.norm)
                expect_eigen(s, Eigen(s, jobz, 'V', uplo, from, to), jobz == 'V', 1, n - 2, kind.name + " by interval");
        }
    });
}

TEST(SymmetricEigen, OfOneRow) {
    const Symmetric s(Spectrum{"", {2}});
    EXPECT_EQ(Eigen(s, 'V', 'V', 'U', 2, 3).m, 0); // open below
    EXPECT_EQ(Eigen(s, 'V', 'V', 'U', 1, 2).m, 1); // closed above
    const Eigen x(s, 'V', 'A', 'L');
    const int* const support = x.isuppz.data();
    EXPECT_TRUE(x.w[0] == 2 && x.z(0, 0) == 1 && support[0] == 1 && support[1] == 1);
}

// Clusters of clusters of small values on both sides of 0, down to far below the precision of the largest, and values
// of which neighbours are hardly apart enough to have vectors without a representation of their own: vectors that every
// rounding on the way turns.
TEST(SymmetricEigen, GradedAndCloseResidual) {
    std::mt19937 random(3);
    for (const int n : {25, 25, 25, 25, 25, 25, 25, 25, 100, 300}) {
        Spectrum graded{"graded both ways", {}}, close{"close in the middle", {-1, 1}};
        for (int i = 0; i < n; ++i)
            graded.values.push_back(std::pow(2.0, -40.0 * i / n) * (random() % 2 ? 1 : -1));
        for (int i = 2; i < n; ++i)
            close.values.push_back(0.0032 * (i - n / 2));
        for (const Spectrum& kind : {graded, close}) {
            const Symmetric s(kind);
            const double orthogonality = n > 100 ? 12 : kind.name == close.name ? 2 : 6;
            expect_eigen(s, Eigen(s, 'V', 'A', 'L'), true, 0, n, kind.name, orthogonality);
            if (n < 300)
                expect_eigen(s, Eigen(s, 'V', 'I', 'U', 0, 0, n / 3, n - 1), true, n / 3 - 1, n - n / 3, kind.name, 12);
        }
    }
}

// A large tolerance only makes relative accuracy not asked for.
TEST(SymmetricEigen, WithToleranceResidual) {
    const Symmetric s(spectra(50)[2]);
    expect_eigen(s, Eigen(s, 'V', 'A', 'L', 0, 0, 0, 0, false, 1e-3F), true, 0, 50, "tolerance");
    const Symmetric large(times(0x1p60, spectra(50)[1])); // is scaled with the tolerance
    expect_eigen(large, Eigen(large, 'V', 'I', 'L', 0, 0, 2, 50, false, 0x1p40F), true, 1, 49, "scaled tolerance");
    // Values so crude that inverse iteration fails for some: their number is told, and only those before it are scaled
    // back.
    Symmetric crude(spectra(200)[1]);
    std::mt19937 random(1);
    int failed = 0;
    for (int turn = 0; turn < 6 && failed == 0; ++turn) {
        crude.a.set([&](int, int) { return 0x1p60F * any_size_one<float>(random); });
        const Eigen x(crude, 'V', 'I', 'L', 0, 0, 2, 200, false, 0x1p120F);
        EXPECT_EQ(x.m, 199);
        failed = x.info;
        const auto scaledBack = [](float value) { return std::abs(value) > 0x1p45F; };
        EXPECT_EQ(std::count_if(x.w.data(), x.w.data() + 199, scaledBack), failed > 0 ? failed - 1 : 199);
    }
    EXPECT_GT(failed, 0);
}

} // namespace
} // namespace qrv::test
