// Solvers for symmetric tridiagonal matrices: eigenvalues against bisection in double, residuals and orthogonality of
// eigenvectors, on every kind of matrix in support/known_values.hpp.
#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>

#include "lapack/calls/mrrr.hpp"
#include "qrv/native.h"
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/known_values.hpp"

namespace qrv::test {
namespace {

constexpr double ulp = 2 * unitRoundoff, rootOfSmallest = 0x1p-63;
constexpr int sizes[] = {1, 2, 3, 4, 25, 100};

template <class Body>
void each_matrix(const Body& body) {
    for (const int n : sizes)
        combine({n}, tridiagonals(n)).each(body);
}

// A matrix in guarded vectors, as a routine overwrites them.
struct Overwritten {
    GuardedVector<float> d, e;
    explicit Overwritten(const Tridiagonal& t) : d(t.n()), e(t.n() - 1) {
        d.set([&](int i, int) { return t.d[std::size_t(i)]; });
        e.set([&](int i, int) { return t.e[std::size_t(i)]; });
    }
};

// In units of the precision, the norm and the order. Bisection takes squares below the smallest normal number for 0.
double value_error(const Tridiagonal& t, const std::vector<double>& expected, const GuardedVector<float>& w,
                   int first = 0, double slack = 0) {
    double worst = 0;
    for (int i = 0; i < w.size(); ++i) {
        const double error = std::max(std::abs(w[i] - expected[std::size_t(i + first)]) - slack, 0.0);
        worst = error <= worst ? worst : error;
    }
    return worst == 0 ? 0 : worst / (t.norm() * t.n() * ulp);
}

// The first `count` of what was found.
GuardedVector<float> first_of(const GuardedVector<float>& w, int count) {
    GuardedVector<float> found(std::max(count, 0));
    found.set([&](int i, int) { return w[i]; });
    return found;
}

// Of the first columns of Z: what the pairs leave, and what the vectors lack of orthogonality.
void expect_pairs(const Tridiagonal& t, const GuardedVector<float>& w, const Operand<float>& z, int count,
                  double residualBound) {
    const WideMatrix<float> vectors(t.n(), count, [&](int i, int j) { return widen(z(i, j)); });
    EXPECT_LE(similarity_error(tridiagonal_matrix(t.d, t.e), vectors, diagonal<float>(first_of(w, count).widened())),
              residualBound);
    EXPECT_LE(orthogonality_error(vectors), 20);
}

TEST(Tridiagonal, SterfValuesAsSolutions) {
    each_matrix([](int n, const Tridiagonal& t) {
        Overwritten x(t);
        EXPECT_EQ(call(SSTERF, n, x.d, x.e), 0);
        EXPECT_LE(value_error(t, t.eigenvalues(), x.d), 2);
    });
    const Tridiagonal shifted{"", {0, 0, -1}, {1, 1}}; // its shift is its last element, and the first cosine 0
    Overwritten x(shifted);
    std::feclearexcept(FE_ALL_EXCEPT);
    EXPECT_EQ(call(SSTERF, 3, x.d, x.e), 0);
    EXPECT_FALSE(std::fetestexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW));
    EXPECT_TRUE(value_error(shifted, shifted.eigenvalues(), x.d) <= 2);
}

// Bisection and inverse iteration in guarded memory.
struct Bisection {
    int m = -1, nsplit = -1, info;
    GuardedVector<float> w, work;
    GuardedInts iblock, isplit, iwork;

    Bisection(const Tridiagonal& t, char range, char order, float vl, float vu, int il, int iu, float abstol = 0)
        : w(t.n()), work(4 * t.n()), iblock(t.n()), isplit(t.n()), iwork(3 * t.n()) {
        info = call(SSTEBZ, range, order, t.n(), vl, vu, il, iu, abstol, t.d, t.e, &m, &nsplit, w, iblock, isplit, work,
                    iwork);
    }
    // What was found, in ascending order.
    GuardedVector<float> values() const {
        GuardedVector<float> found = first_of(w, m);
        std::sort(found.data(), found.data() + found.size());
        return found;
    }
};

TEST(Tridiagonal, BisectionFindsWhatIsAskedForSolutions) {
    each_matrix([](int n, const Tridiagonal& t) {
        const std::vector<double> expected = t.eigenvalues();
        const auto expect = [&](const Bisection& some, int first, int count, double bound) {
            EXPECT_EQ(some.info, 0);
            EXPECT_EQ(some.m, count);
            EXPECT_LE(value_error(t, expected, some.values(), first, rootOfSmallest), bound);
        };
        for (const char order : {'E', 'B'}) {
            const Bisection all(t, 'A', order, 0, 0, 0, 0);
            expect(all, 0, n, 2);
            EXPECT_TRUE(order == 'B' || std::is_sorted(all.w.data(), all.w.data() + n));
            for (const auto& [first, last] : {std::pair{1, 1}, {n, n}, {1, n}, {(n + 1) / 2, std::max(1, 3 * n / 4)}})
                if (first <= last)
                    expect(Bisection(t, 'I', order, 0, 0, first, last), first - 1, last - first + 1, 3);
        }
        // Between values, well away from any.
        const double span = expected.back() - expected.front() + 1e-3 * t.norm(),
                     margin = n * 8 * ulp * t.norm() + rootOfSmallest;
        const auto count = [&](double x) {
            return int(std::lower_bound(expected.begin(), expected.end(), x) - expected.begin());
        };
        const auto isAway = [&](float x) { return count(x - margin) == count(x + margin); };
        for (const auto& [low, high] : {std::pair{0.25, 0.75}, {-1.0, 0.4}, {0.6, 2.0}}) {
            const auto vl = static_cast<float>(expected.front() + low * span);
            const auto vu = static_cast<float>(expected.front() + high * span);
            if (vl < vu && isAway(vl) && isAway(vu))
                expect(Bisection(t, 'V', 'B', vl, vu, 0, 0), count(vl), count(vu) - count(vl), 2);
        }
    });
}

// The interval is open below and closed above, for blocks of one row exactly.
TEST(Tridiagonal, IntervalsAreHalfOpen) {
    const Tridiagonal t{"", {3, 1, 2, 5}, {0, 0, 0}};
    const Bisection some(t, 'V', 'E', 1, 3, 0, 0);
    EXPECT_EQ(some.m, 2);
    EXPECT_EQ(some.nsplit, 4);
    EXPECT_EQ(some.w[0], 2);
    EXPECT_EQ(some.w[1], 3);
    // Apart comes what is beside the diagonal if its square is less than the smallest number.
    EXPECT_EQ(Bisection({"", {0, 0}, {0x1p-63F}}, 'A', 'E', 0, 0, 0, 0).nsplit, 1);
}

TEST(Tridiagonal, InverseIterationResidual) {
    each_matrix([](int n, const Tridiagonal& t) {
        if (t.name == "tiny")
            return; // its values are as exact as bisection can be, not as the norm
        Bisection values(t, 'A', 'B', 0, 0, 0, 0, 2 * 0x1p-126F);
        Operand<float> z(n, n, n + 3);
        GuardedVector<float> work(5 * n);
        GuardedInts iwork(n), ifail(n);
        EXPECT_EQ(call(SSTEIN, n, t.d, t.e, values.m, values.w, values.iblock, values.isplit, z, work, iwork, ifail),
                  0);
        expect_pairs(t, values.w, z, n, 4);
    });
}

// SSTEMR in guarded memory.
struct Representations {
    int m = -1, info, relative;
    GuardedVector<float> w, work;
    GuardedInts isuppz, iwork;
    Operand<float> z;

    Representations(const Tridiagonal& t, char jobz, char range, float vl = 0, float vu = 0, int il = 0, int iu = 0,
                    bool tryRelative = true)
        : relative(tryRelative), w(t.n()), work((jobz == 'V' ? 18 : 12) * t.n()), isuppz(jobz == 'V' ? 2 * t.n() : 0),
          iwork((jobz == 'V' ? 10 : 8) * t.n()), z(jobz == 'V' ? t.n() : 0, jobz == 'V' ? t.n() : 0, t.n() + 2) {
        Overwritten x(t);
        GuardedVector<float> e(t.n());
        e.set([&](int i, int) { return i < t.n() - 1 ? x.e[i] : nan; });
        info = call(SSTEMR, jobz, range, t.n(), x.d, e, vl, vu, il, iu, &m, w, z, t.n(), isuppz, &relative, work,
                    work.size(), iwork, iwork.size());
    }
};

TEST(Tridiagonal, RepresentationsResidual) {
    each_matrix([](int n, const Tridiagonal& t) {
        const Representations x(t, 'V', 'A'), values(t, 'N', 'A'), plain(t, 'V', 'A', 0, 0, 0, 0, false),
            some(t, 'V', 'I', 0, 0, (n + 2) / 3, n);
        const std::vector<double> expected = t.eigenvalues();
        for (const Representations* one : {&x, &values, &plain}) {
            EXPECT_EQ(one->info, 0);
            EXPECT_EQ(one->m, n);
            EXPECT_TRUE(std::is_sorted(one->w.data(), one->w.data() + n));
            EXPECT_LE(value_error(t, expected, one->w), 3);
        }
        EXPECT_EQ(some.info, 0);
        EXPECT_LE(value_error(t, expected, first_of(some.w, some.m), (n + 2) / 3 - 1), 5);
        expect_pairs(t, some.w, some.z, some.m, 10);
        for (const Representations* one : {&x, &plain}) {
            expect_pairs(t, one->w, one->z, n, 10);
            const int* const support = one->isuppz.data();
            EXPECT_EQ(one->z.count_bad([&](int i, int j, float e) {
                return (i + 1 >= support[2 * j] && i + 1 <= support[2 * j + 1]) || e == 0;
            }),
                      0);
        }
    });
    const Tridiagonal one{"", {2}, {}}, two{"", {2, 2}, {1}}; // 2; 1 and 3
    for (const char jobz : {'V', 'N'}) {                      // intervals are open below
        const Representations none(one, jobz, 'V', 2, 3), least(two, jobz, 'I', 0, 0, 1, 1),
            above(two, jobz, 'V', 1, 3);
        EXPECT_TRUE(none.m == 0 && least.m == 1 && above.m == 1) << jobz;
        EXPECT_TRUE(least.w[0] == 1 && above.w[0] == 3) << jobz;
        const float size =
            0x1p60F; // the interval is scaled with the matrix, which has 2 - sqrt 2, 2 and 2 + sqrt 2 of it
        const Representations middle({"", {2 * size, 2 * size, 2 * size}, {size, size}}, jobz, 'V', size, 3 * size);
        EXPECT_TRUE(middle.m == 1 && std::abs(middle.w[0] / size - 2) < 4 * ulp) << jobz;
    }
}

TEST(Tridiagonal, Sorts) {
    std::mt19937 random(6);
    combine({0, 1, 2, 20, 21, 1000}, "Id").each([&](int n, char id) {
        GuardedVector<float> x(n);
        x.fill([&] { return random() % 7 == 0 ? nan : eighths<float>(random); });
        EXPECT_EQ(call(SLASRT, id, n, x), 0);
        for (int i = 1; i < n; ++i)
            EXPECT_TRUE(std::isnan(x[i]) || (id == 'I' ? x[i - 1] <= x[i] : x[i - 1] >= x[i]));
    });
}

// Against the definition with whole numbers; moments of the other distributions.
TEST(Tridiagonal, RandomNumbers) {
    const int n = 20000;
    std::vector<float> x(n), rest(n);
    int seed[] = {1, 1, 1, 1}, again[] = {1, 1, 1, 1};
    call(SLARNV, 1, &seed[0], n, x);
    std::uint64_t state = 1 + 4096 * (1 + 4096 * (1 + 4096ULL));
    for (int i = 0; i < n; ++i) {
        state = state * 33952834046453ULL % (1ULL << 48);
        EXPECT_TRUE(std::abs(x[std::size_t(i)] - static_cast<double>(state) / 0x1p48) <= 0x1p-24) << i;
        EXPECT_TRUE(x[std::size_t(i)] > 0 && x[std::size_t(i)] < 1);
    }
    EXPECT_EQ(seed[0] * 4096 + seed[1], static_cast<int>(state >> 24));
    EXPECT_EQ(seed[2] * 4096 + seed[3], static_cast<int>(state % (1 << 24)));
    for (const int first : {0, n / 2}) // in two calls the same
        call(SLARNV, 1, &again[0], n / 2, rest.data() + first);
    EXPECT_EQ(x, rest);
    int few[] = {1, 1, 1, 1};
    rest.assign(n, 0);
    call(SLARUV, &few[0], 200, rest);
    EXPECT_TRUE(std::equal(rest.begin(), rest.begin() + 128, x.begin()) && rest[128] == 0);
    for (const auto& [distribution, variance] : {std::pair{2, 1.0 / 3}, {3, 1.0}}) {
        call(SLARNV, distribution, &seed[0], n, x);
        const double sum = std::accumulate(x.begin(), x.end(), 0.0);
        const double squares = std::inner_product(x.begin(), x.end(), x.begin(), 0.0);
        EXPECT_NEAR(sum / n, 0, 0.03);
        EXPECT_NEAR(squares / n, variance, 0.05 * variance);
    }
}

// (T - lambda) x = y from factors and solves, of matrices that need interchanges.
TEST(Tridiagonal, ShiftedSolvesResidual) {
    std::mt19937 random(4);
    const float lambda = 0.3F;
    combine({1, 2, 3, 4, 40}, {1, 2, -1, -2}).each([&](int n, int job) {
        GuardedVector<float> a(n), b(n - 1), c(n - 1), d(n - 2), x(n);
        GuardedInts in(n);
        for (auto* v : {&a, &b, &c, &x})
            v->fill([&] { return any_size_one<float>(random); });
        const WideMatrix<float> t(n, n, [&](int i, int j) -> double {
            return i == j ? double{a[i]} - lambda : j == i + 1 ? b[i] : i == j + 1 ? c[j] : 0;
        });
        const GuardedVector<float> y = x;
        float tolerance = 0;
        EXPECT_EQ(call(SLAGTF, n, a, lambda, b, c, 0.0F, d, in), 0);
        EXPECT_EQ(call(SLAGTS, job, n, a, b, c, d, in, x, &tolerance), 0);
        const WideMatrix<float> found(x), image = (std::abs(job) == 1 ? t : t.adjoint()) * found;
        EXPECT_LE(norm(image - WideMatrix<float>(y), 'M'), 20 * ulp * (1 + norm(found, 'M')));
    });
    for (const int job : {1, 2, -1, -2}) { // of a singular matrix: reported, or a pivot enlarged so that it is finite
        float a[] = {1, 1}, b[] = {0}, c[] = {0}, y[] = {1, 1}, tolerance = 0;
        int in[2];
        call(SLAGTF, 2, &a[0], 1.0F, &b[0], &c[0], 0.0F, nullptr, &in[0]);
        EXPECT_EQ(in[1], 1);
        const int info = call(SLAGTS, job, 2, &a[0], &b[0], &c[0], nullptr, &in[0], &y[0], &tolerance);
        EXPECT_EQ(info, job == 1 ? 2 : job == 2 ? 1 : 0);
        EXPECT_TRUE(job > 0 || (std::isfinite(y[0]) && std::abs(y[0]) > 1e6));
    }
}

// `in` tells of interchanges, and of the first pivot that is small beside its row.
TEST(Tridiagonal, ShiftedFactorsTellOfSmallPivots) {
    struct Row {
        const char* what;
        std::vector<float> a, b, c;
        std::vector<int> in;
    };
    for (Row row : {Row{"an element, none of it left", {2}, {}, {}, {1}},
                    {"an element", {3}, {}, {}, {0}},
                    {"the last pivot is 0", {7, 7, 2}, {0, 0}, {0, 0}, {0, 0, 3}},
                    {"small above, large below", {2, 3}, {1}, {1}, {1, 0}},
                    {"the last pivot beside its row", {0x1p30F, 0x1p30F - 0x1p10F}, {0x1p30F}, {0x1p30F}, {1, 2}},
                    {"the same, and rows of other sizes",
                     {3, 0x1p20F + 2, 0x1p20F + 18},
                     {0, 0x1p20F},
                     {0, 0x1p20F},
                     {0, 0, 3}}}) {
        const int n = int(row.a.size());
        std::vector<float> d(row.a.size());
        std::vector<int> in(row.a.size(), -1);
        EXPECT_EQ(call(SLAGTF, n, row.a, 2.0F, row.b, row.c, 0x1p-10F, d, in), 0);
        EXPECT_EQ(in, row.in) << row.what;
    }
}

// The matrix with 2 and -1, its factors L D L', and eigenvalues.
struct SecondDifference {
    int n;
    std::vector<float> d, e, squares, pivots, l, lld;

    explicit SecondDifference(int order)
        : n(order), d(std::size_t(order), 2.0F), e(std::size_t(order), -1.0F), squares(std::size_t(order), 1.0F) {
        for (int i = 1; i <= n; ++i) {
            pivots.push_back(static_cast<float>(1.0 + 1.0 / i));
            l.push_back(static_cast<float>(-i / (i + 1.0)));
            lld.push_back(pivots.back() * l.back() * l.back());
        }
    }
    int below(float x) const {
        int count = 0;
        while (count < n && value(count + 1) <= x)
            ++count;
        return count;
    }
    double value(int k) const { return 2 - 2 * std::cos(k * 3.14159265358979323846 / (n + 1)); }
};

TEST(Tridiagonal, CountsAndSingleValues) {
    const float tiny = 1e-30F;
    const auto counts = [&](char job, int n, float low, float high, const auto& d, const auto& e) {
        int inside = -1, left = -1, right = -1;
        EXPECT_EQ(call(SLARRC, job, n, low, high, d, e, tiny, &inside, &left, &right), 0);
        EXPECT_EQ(inside, right - left);
        return std::pair(left, right);
    };
    for (const int n : {1, 2, 9, 40, 300}) {
        SecondDifference t(n);
        const float low = 0.5F, high = 3.1F;
        const std::pair expected(t.below(low), t.below(high));
        EXPECT_EQ(counts('T', n, low, high, t.d, t.e), expected) << n;
        EXPECT_EQ(counts('L', n, low, high, t.pivots, t.l), expected) << n;
        for (const int k : {1, (n + 1) / 2, n}) {
            float w = 0, werr = 0;
            EXPECT_EQ(call(SLARRK, n, k, 0.0F, 4.0F, t.d, t.squares, tiny, 1e-6F, &w, &werr), 0);
            EXPECT_TRUE(std::abs(w - t.value(k)) <= 8 * ulp * 4 && werr <= 1e-5F) << n << ' ' << k;
            EXPECT_EQ(call(SLANEG, n, t.pivots, t.lld, low, tiny, k), expected.first) << n << ' ' << k;
            EXPECT_EQ(call(SLANEG, n, t.pivots, t.lld, high, tiny, k), expected.second) << n << ' ' << k;
        }
        EXPECT_EQ(call(SLARRR, n, t.d, t.e), n > 2);
    }
    // A pivot of 0 is followed by one that is infinite, and a quotient of 0; or by quotients that are not numbers.
    const std::vector<float> diagonal{1, 2, -3}, pivots{1, 1, -4}, ones{1, 1};
    EXPECT_EQ(counts('T', 3, 0, 1, diagonal, ones), std::pair(1, 2));
    EXPECT_EQ(counts('L', 3, 0, 1, pivots, ones), std::pair(1, 2));
    for (const float size : {1.0F, 1e30F}) { // also beyond the range of what replaces it
        const std::vector<float> d{size, 2 * size, -9 * size}, lld{size, 5 * size};
        std::feclearexcept(FE_ALL_EXCEPT);
        for (const int r : {1, 2, 3})
            EXPECT_EQ(call(SLANEG, 3, d, lld, size, 1.0F, r), 2);
        for (int odd = 0; odd < lapack::pointsAtOnce; ++odd) { // among points that need no such care
            std::vector<float> points(lapack::pointsAtOnce, size / 10);
            points[std::size_t(odd)] = size;
            int below[lapack::pointsAtOnce];
            lapack::laneg(3, d.data(), lld.data(), points.data(), 2, below);
            EXPECT_EQ(below[odd], 2) << odd;
        }
        EXPECT_FALSE(size == 1 && std::fetestexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW));
    }
}

TEST(Tridiagonal, QdArraysSolutions) {
    for (const int n : {1, 2, 3, 4, 9, 60}) {
        const SecondDifference t(n);
        std::vector<float> given(std::size_t(4 * n)), z;
        for (std::size_t i = 0; i < std::size_t(n); ++i)
            given[2 * i] = t.pivots[i], given[2 * i + 1] = t.lld[i];
        int info = -99;
        z = given;
        SLASQ2(&n, z.data(), &info);
        EXPECT_EQ(info, 0);
        for (int k = 1; k <= n; ++k)
            EXPECT_NEAR(z[std::size_t(n - k)], t.value(k), 8 * ulp * t.value(k) + 2 * n * ulp) << n << ' ' << k;
        const auto end = std::size_t(2 * n);
        if (n > 1) { // the sums of what was given and found
            EXPECT_NEAR(z[end + 1], 2 * n, 4 * n * ulp);
            EXPECT_NEAR(z[end], z[end + 1], 8 * n * ulp);
        }
        EXPECT_TRUE(n < 3 || (z[end + 2] >= 1 && z[end + 2] <= 4 * n && z[end + 3] > 0)) << z[end + 2] << " transforms";
        for (const int bad : {1, 2 * n - 1}) {
            z = given;
            z[std::size_t(bad - 1)] = -1;
            testing::internal::CaptureStdout();
            SLASQ2(&n, z.data(), &info);
            EXPECT_NE(testing::internal::GetCapturedStdout().find("Parameter 2"), std::string::npos);
            EXPECT_EQ(info, -(200 + bad));
        }
    }
}

// The least d of all rows, of all but the last and of all but the last two, where it is the first.
TEST(Tridiagonal, TransformsTellTheLeastPivot) {
    const int first = 1, n = 5, now = 0, yes = 1;
    for (const float tau : {0.0F, 0.125F}) {
        float x[] = {1, 0, 0.5F, 0, 4, 0, 0.25F, 0, 5, 0, 0.5F, 0, 3, 0, 0.5F, 0, 6, 0, 0, 0}, least[3] = {}, last[3];
        if (tau == 0)
            SLASQ6(&first, &n, x, &now, &least[0], &least[1], &least[2], &last[0], &last[1], &last[2]);
        else
            SLASQ5(&first, &n, x, &now, &tau, &least[0], &least[1], &least[2], &last[0], &last[1], &last[2], &yes);
        EXPECT_TRUE(least[0] == 1 - tau && least[1] == least[0] && least[2] == least[0]) << tau;
    }
}

// Counts at the ends of a list, all values of its intervals, and the places of counts.
TEST(Tridiagonal, IntervalsOfAList) {
    const int n = 20, room = 24, none = 0;
    const SecondDifference t(n);
    const float tiny = 1e-30F, width = 1e-5F;
    const auto run = [&](int job, int mmax, float* ab, int* nab, int* wanted, int steps = 60) {
        int count = 2, found = -9, info = -9;
        SLAEBZ(&job, &steps, &n, &mmax, &count, &none, &width, &tiny, &tiny, t.d.data(), t.e.data(), t.squares.data(),
               wanted, ab, nullptr, &found, nab, nullptr, nullptr, &info);
        return std::pair{found, info};
    };
    float ends[2 * room] = {0, 2}, few[] = {0, 2, 0, 2, 4, 0}; // and their upper ends:
    ends[room] = 2, ends[room + 1] = 4;
    int counts[2 * room] = {}, fewCounts[] = {0, n / 2, 0, n / 2, n, 0};
    EXPECT_EQ(run(1, room, ends, counts, nullptr), std::pair(n, 0));
    EXPECT_TRUE(counts[0] == 0 && counts[room] == n / 2 && counts[1] == n / 2 && counts[room + 1] == n);
    EXPECT_EQ(run(2, 3, few, fewCounts, nullptr).second, 4) << "of room for 3";
    EXPECT_EQ(run(2, room, ends, counts, nullptr), std::pair(n, 0));
    for (int i = 0; i < n; ++i) {
        const double value = t.value(counts[room + i]);
        EXPECT_TRUE(counts[room + i] == counts[i] + 1 && ends[room + i] - ends[i] < width) << i;
        EXPECT_TRUE(ends[i] <= value + 4 * ulp && value <= ends[room + i] + 4 * ulp) << i;
    }
    int wanted[] = {3, 17}, aroundCounts[4] = {};
    float around[] = {0, 0, 4, 4};
    EXPECT_EQ(run(3, 2, around, aroundCounts, wanted), std::pair(2, 0));
    for (const int i : {0, 1}) {
        EXPECT_TRUE(wanted[i] == (i == 0 ? 3 : 17) && aroundCounts[i] <= wanted[i] && aroundCounts[2 + i] >= wanted[i]);
        EXPECT_TRUE(around[i] <= t.value(wanted[i] + 1) && around[2 + i] >= t.value(wanted[i]) - width);
    }
    float unequal[] = {0, around[1], 4, around[3]}; // the second is narrow already, and comes first
    EXPECT_EQ(run(3, 2, unequal, aroundCounts, wanted, 1), std::pair(2, 1));
    EXPECT_TRUE(wanted[0] == 17 && wanted[1] == 3 && unequal[0] >= around[1]);
}

// Intervals that are too wide, too narrow, or beside their value become as wide as was asked for, and hold it.
TEST(Tridiagonal, IntervalsAreRefined) {
    const int n = 30, offset = 4, first = 5, last = 20;
    const SecondDifference t(n);
    const float tiny = 1e-30F, diameter = 4;
    combine({0.0F, 0.05F}, {1e-2F, 4e-6F}, {0.02F, 0.0F, -0.3F, 0.3F}, {12, 0, n + 1}) // the last two mean n
        .each([&](float ofGap, float ofValue, float error, int twist) {
            GuardedVector<float> w(last - offset), werr(last - offset), gap(last - offset);
            for (int k = first; k <= last; ++k) {
                w[k - offset - 1] = static_cast<float>(t.value(k)) + error;
                werr[k - offset - 1] = error == 0.02F ? error : 0;
                gap[k - offset - 1] = 0.06F;
            }
            GuardedVector<float> againW = w, againErr = werr;
            EXPECT_EQ(call(SLARRB, n, t.pivots, t.lld, first, last, ofGap, ofValue, offset, w, gap, werr, nullptr,
                           nullptr, tiny, diameter, twist),
                      0);
            EXPECT_EQ(call(SLARRJ, n, t.d, t.squares, first, last, ofValue, offset, againW, againErr, nullptr, nullptr,
                           tiny, diameter),
                      0);
            const auto expect = [&](int k, float x, float width, float allowed) {
                EXPECT_TRUE(width <= 1.01F * std::max(allowed, ofValue * (x + width))) << k;
                EXPECT_TRUE(std::abs(x - t.value(k)) <= width + 8 * ulp * 4) << k;
            };
            for (int k = first, i = k - offset - 1; k <= last; ++k, ++i) {
                expect(k, w[i], werr[i], ofGap * 0.06F);
                expect(k, againW[i], againErr[i], 0);
            }
        });
}

TEST(Tridiagonal, TwistsCountWhatIsBelow) {
    const int n = 25;
    const SecondDifference t(n);
    const float tiny = 1e-30F, all = 0;
    std::vector<float> ld(n), z(n), work(4 * n);
    for (std::size_t i = 0; i < ld.size(); ++i)
        ld[i] = t.pivots[i] * t.l[i];
    combine({0.3F, 1.7F, 3.9F, -1.0F}, up_to(1, n)).each([&](float lambda, int row) {
        int below = -9, support[2];
        float squares, gamma, scale, residual, correction;
        call(SLAR1V, n, 1, n, lambda, t.pivots, t.l, ld, t.lld, tiny, all, z, 1, &below, &squares, &gamma, &row,
             support, &scale, &residual, &correction, work);
        EXPECT_EQ(below, t.below(lambda));
    });
}

// From SLARRD, SLARRE and SLARRV what SSTEMR finds with them; without the vectors of the first value and the last.
TEST(Tridiagonal, RootsAndVectorsResidual) {
    const float rtol1 = 2e-5F, rtol2 = 2e-6F, split = -0x1p-23F, minrgp = 3e-3F;
    const int n = 60, m = 41, dol = 2, dou = m - 1;
    for (const Tridiagonal& t : tridiagonals(n)) {
        if (t.name == "huge" || t.name == "tiny" || t.name == "graded")
            continue; // SSTEMR scales these
        Overwritten x(t);
        GuardedVector<float> e(n), squares(n), w(n), werr(n), gap(n), gers(2 * n), work(12 * n), wanted(m - 2);
        GuardedInts isplit(n), iblock(n), indexw(n), isuppz(2 * n), iwork(7 * n);
        for (int i = 0; i < n - 1; ++i)
            e[i] = x.e[i], squares[i] = x.e[i] * x.e[i];
        float vl = 0, vu = 0, pivmin = 0;
        int blocks = 0, found = 0;
        EXPECT_EQ(call(SLARRE, 'I', n, &vl, &vu, n - m + 1, n, x.d, e, squares, rtol1, rtol2, split, &blocks, isplit,
                       &found, w, werr, gap, iblock, indexw, gers, &pivmin, work, iwork),
                  0)
            << t.name;
        ASSERT_EQ(found, m) << t.name;
        Operand<float> z(n, m, n + 1), vectors(n, m - 2, n);
        EXPECT_EQ(call(SLARRV, n, vl, vu, x.d, e, pivmin, isplit, m, dol, dou, minrgp, rtol1, rtol2, w, werr, gap,
                       iblock, indexw, gers, z, isuppz, work, iwork),
                  0)
            << t.name;
        wanted.set([&](int i, int) { return w[i + 1]; });
        vectors.set([&](int i, int j) { return z(i, j + 1); });
        expect_pairs(t, wanted, vectors, m - 2, 10);
        for (int i = 0; i < n; ++i)
            EXPECT_TRUE(z(i, 0) == 0 && z(i, m - 1) == 0) << t.name;
    }
}

} // namespace
} // namespace qrv::test
