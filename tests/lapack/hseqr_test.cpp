// Hessenberg and Schur forms: similarity and orthogonality in double, the shape of the forms, blocks moved within them.
#include <gtest/gtest.h>

#include "lapack/calls/nonsymmetric.hpp"
#include "qrv/native.h"
#include "support/call.hpp"
#include "support/unsymmetric.hpp"

namespace qrv::test {
namespace {

struct Hessenberg {
    Operand<float> h, q;
};

Hessenberg hessenberg_of(const Operand<float>& a, int ilo, int ihi, int workLength) {
    const int n = a.rows();
    Hessenberg form{a, a};
    GuardedVector<float> tau(std::max(0, n - 1));
    const auto reduce = [&](float* work, int lwork) {
        EXPECT_EQ(call(SGEHRD, n, ilo, ihi, form.h, tau, work, lwork), 0);
    };
    const int order = std::max(1, ihi - ilo);
    GuardedVector<float> work(work_length(workLength, std::max(1, n), reduce)),
        second(workLength == fullSpeed ? 64 * order : order);
    reduce(work.data(), work.size());
    for (int j = 0; j < n - 1; ++j)
        EXPECT_TRUE(j + 1 >= ilo && j + 1 < ihi ? std::isfinite(tau[j]) : tau[j] == 0) << j;
    form.q.set([&](int i, int j) { return i > j + 1 && j + 1 >= ilo && i < ihi ? form.h(i, j) : nan; });
    EXPECT_EQ(call(SORGHR, n, ilo, ihi, form.q, tau, second, second.size()), 0);
    return form;
}

TEST(HessenbergForm, Residual) {
    for (const int n : {0, 1, 2, 3, 10, 33, 65, 100, 161})
        for (const int workLength : {fullSpeed, least})
            for (const auto& [name, a] : unsymmetric_matrices(n)) {
                const Hessenberg form = hessenberg_of(a, 1, n, workLength);
                const WideMatrix<float> q(form.q);
                EXPECT_LE(similarity_error(WideMatrix<float>(a), q, upper_part(form.h, 1)), 5) << name << ' ' << n;
                EXPECT_LE(orthogonality_error(q), 5) << name << ' ' << n;
            }
}

// Triangular outside of rows 5 to n - 3.
Operand<float> partly_triangular(int n) {
    Operand<float> a = unsymmetric_matrices(n)[0].a;
    for (int j = 0; j < n; ++j)
        for (int i = j + 1; i < n; ++i)
            if (j < 4 || i >= n - 3)
                a(i, j) = 0;
    return a;
}

TEST(HessenbergForm, ResidualWithinARange) {
    for (const int n : {9, 50, 120}) {
        const Operand<float> a = partly_triangular(n);
        Operand<float> withNaN = a; // in places that are not looked at
        for (int j = 0; j < n; ++j)
            for (int i = j + 2; i < n; ++i)
                if (j < 4 || i >= n - 3)
                    withNaN(i, j) = nan;
        const Hessenberg form = hessenberg_of(withNaN, 5, n - 3, fullSpeed);
        const WideMatrix<float> q(form.q);
        EXPECT_LE(similarity_error(WideMatrix<float>(a), q, upper_part(form.h, 1)), 5) << n;
        EXPECT_LE(orthogonality_error(q), 5) << n;
        form.q.each_stored([&](int i, int j) {
            if (i < 5 || j < 5 || i >= n - 3 || j >= n - 3) {
                ASSERT_EQ(form.q(i, j), i == j ? 1 : 0) << i << ' ' << j;
            }
        });
    }
}

TEST(HessenbergForm, SolutionsAreProductsWithQ) {
    for (const int n : {6, 40, 90})
        for (const char side : {'L', 'R'})
            for (const char trans : {'N', 'T'}) {
                const Operand<float> a = partly_triangular(n);
                const int ilo = 5, ihi = n - 3 < 5 ? 5 : n - 3, m = side == 'L' ? n : 7, columns = side == 'L' ? 7 : n;
                Operand<float> h = a;
                GuardedVector<float> tau(n - 1), work(64 * n);
                call(SGEHRD, n, ilo, ihi, h, tau, work, 64 * n);
                Operand<float> c(m, columns, m + 2);
                std::mt19937 random(3);
                c.fill_random(random);
                const WideMatrix<float> before(c), q(hessenberg_of(a, ilo, ihi, fullSpeed).q, trans);
                EXPECT_EQ(call(SORMHR, side, trans, m, columns, ilo, ihi, h, tau, c, work, 64 * n), 0);
                EXPECT_LE(difference(c, side == 'L' ? q * before : before * q), 20 * n * unitRoundoff)
                    << side << trans << n;
            }
}

// ---- Schur forms ----------------------------------------------------------------------------------------------------

struct Schur {
    Operand<float> t, z;
    GuardedVector<float> wr, wi;
    int info = -1;
};

Schur schur_of(const Operand<float>& h, const Operand<float>& q, char job, char compz, int ilo, int ihi,
               int workLength) {
    const int n = h.rows();
    Schur s{h, q, GuardedVector<float>(n), GuardedVector<float>(n)};
    for (int j = 0; j < n; ++j)
        for (int i = j + 2; i < n; ++i)
            s.t(i, j) = 0;
    const auto find = [&](float* work, int lwork) {
        s.info = call(SHSEQR, job, compz, n, ilo, ihi, s.t, s.wr, s.wi, s.z, work, lwork);
    };
    GuardedVector<float> work(work_length(workLength, std::max(1, n), find));
    find(work.data(), work.size());
    return s;
}

void expect_schur(const WideMatrix<float>& a, const Schur& s, const std::string& what) {
    EXPECT_EQ(s.info, 0) << what;
    EXPECT_TRUE(is_schur_form(s.t, s.wr, s.wi)) << what;
    const WideMatrix<float> z(s.z);
    EXPECT_LE(similarity_error(a, z, upper_part(s.t, 1)), 10) << what;
    EXPECT_LE(orthogonality_error(z), 10) << what;
}

// Each value is near to one of the others.
void expect_same_values(const Schur& one, const Schur& other, double allowed, const std::string& what) {
    for (int i = 0; i < one.wr.size(); ++i) {
        double nearest = infinity;
        for (int j = 0; j < other.wr.size(); ++j)
            nearest = std::min(nearest, std::hypot(double{one.wr[i]} - other.wr[j], double{one.wi[i]} - other.wi[j]));
        EXPECT_LE(nearest, allowed) << what << ' ' << i;
    }
}

TEST(SchurForm, Residual) {
    for (const int n : {0, 1, 2, 3, 10, 11, 12, 49, 50, 51, 75, 76, 150})
        for (const auto& [name, a] : unsymmetric_matrices(n)) {
            const std::string what = name + ' ' + std::to_string(n);
            const Hessenberg form = hessenberg_of(a, 1, n, fullSpeed);
            const Schur s = schur_of(form.h, form.q, 'S', 'V', 1, n, fullSpeed);
            expect_schur(WideMatrix<float>(a), s, what);
            const Schur alone = schur_of(form.h, Operand<float>(n, n, n + 1), 'S', 'I', 1, n, least);
            expect_schur(upper_part(form.h, 1), alone, what + " least work");
            const Schur values = schur_of(form.h, Operand<float>(n, n, n + 1), 'E', 'N', 1, n, fullSpeed);
            EXPECT_EQ(values.info, 0) << what;
            if (name == "random")
                expect_same_values(values, s, 1e-4 * std::sqrt(n + 1), what);
        }
}

TEST(SchurForm, ResidualOfALargeMatrix) {
    for (const auto& [name, a] : unsymmetric_matrices(590))
        if (name == "random") {
            const Hessenberg form = hessenberg_of(a, 1, 590, fullSpeed);
            expect_schur(WideMatrix<float>(a), schur_of(form.h, form.q, 'S', 'V', 1, 590, fullSpeed), name);
        }
}

TEST(SchurForm, ResidualWithinARange) {
    for (const int n : {9, 70, 130}) {
        const Operand<float> a = partly_triangular(n);
        const Hessenberg form = hessenberg_of(a, 5, n - 3, fullSpeed);
        expect_schur(WideMatrix<float>(a), schur_of(form.h, form.q, 'S', 'V', 5, n - 3, fullSpeed), std::to_string(n));
    }
}

// The way of small matrices on which the double-shift iteration fails.
TEST(SchurForm, ResidualWithRoom) {
    for (const int n : {12, 13, 30, 48})
        for (const auto& [name, a] : unsymmetric_matrices(n)) {
            const Hessenberg form = hessenberg_of(a, 1, n, fullSpeed);
            Schur s{form.h, form.q, GuardedVector<float>(n), GuardedVector<float>(n)};
            s.t.set([&](int i, int j) { return i > j + 1 ? 0 : form.h(i, j); });
            s.info = lapack::laqr0_with_room(
                {true, true, n, {0, n}, s.t.view(), s.wr.data(), s.wi.data(), {0, n}, s.z.view()});
            s.t.set([&](int i, int j) { return i > j + 1 ? 0 : s.t(i, j); }); // of scratch
            expect_schur(WideMatrix<float>(a), s, name + ' ' + std::to_string(n));
        }
}

TEST(SchurForm, NoScratchIsLeftWhereNothingConverges) {
    const int n = 40;
    Operand<float> h = unsymmetric_matrices(n)[0].a;
    h(n / 2, n / 2) = nan;
    const Schur values = schur_of(h, h, 'E', 'N', 1, n, fullSpeed);
    EXPECT_GT(values.info, 0);
    for (int j = 0; j < n; ++j)
        for (int i = j + 2; i < n; ++i)
            ASSERT_EQ(values.t(i, j), 0) << i << ' ' << j;
}

// Beside a much larger element: by the size of the diagonal alone the subdiagonal would be negligible, and the smaller
// eigenvalue lost.
TEST(SchurForm, SolutionsOfSmallEigenvalues) {
    const float rows[2][2] = {{1, 100}, {1e-8F, 3e-6F}};
    Operand<float> h(2, 2, 2);
    h.set([&](int i, int j) { return rows[i][j]; });
    const Schur s = schur_of(h, h, 'E', 'N', 1, 2, fullSpeed);
    const double trace = 1 + double{rows[1][1]}, det = double{rows[1][1]} - 100 * double{rows[1][0]};
    const double larger = (trace + std::sqrt(trace * trace - 4 * det)) / 2;
    EXPECT_NEAR(std::min(s.wr[0], s.wr[1]), det / larger, 1e-6 * det);
}

// ---- Parts of the multishift iteration ------------------------------------------------------------------------------

// A Hessenberg matrix with an active range, and Z = I. `tiny`: the row from which on subdiagonal elements are small.
struct ActivePart {
    Operand<float> before, h, z;
    GuardedVector<float> wr, wi;
    lapack::ActiveRange range;

    ActivePart(int n, lapack::ActiveRange active, int tiny)
        : before(n, n, n + 1), h(n, n, n + 1), z(n, n, n + 2), wr(n), wi(n), range(active) {
        std::mt19937 random(static_cast<unsigned>(n));
        std::normal_distribution<float> normal;
        before.set([&](int i, int j) {
            const float x = normal(random);
            const bool joined = i <= j || (i == j + 1 && j >= range.begin && i < range.end);
            return joined ? (i > j && i >= tiny ? 1e-6F * x : x) : 0;
        });
        h.set(before);
        z.set([](int i, int j) { return i == j ? 1.0F : 0.0F; });
    }
    lapack::SchurProblem problem(bool wantT = true) {
        return {wantT, true, h.rows(), range, h.view(), wr.data(), wi.data(), {0, h.rows()}, z.view()};
    }
    void expect_similar(const std::string& what) const {
        EXPECT_LE(similarity_error(WideMatrix<float>(before), WideMatrix<float>(z), upper_part(h, 1)), 5) << what;
        EXPECT_LE(orthogonality_error(WideMatrix<float>(z)), 5) << what;
        for (int j = 0; j < h.columns(); ++j)
            for (int i = j + 2; i < h.rows(); ++i)
                ASSERT_EQ(h(i, j), 0) << what << ' ' << i << ' ' << j;
    }
};

// Elements around which the double-shift iteration has to be careful. `splits`: the last row is cut off as it is.
TEST(SchurForm, ResidualOfSmallForms) {
    const float f = 0x1p56F, g = 0x1p-96F;
    const struct {
        int n;
        bool splits;
        float rows[4][4];
    } cases[] = {
        {3, true, {{1, 1, 1}, {1, 0, 0}, {0, 1e-9F, 0}}}, // small beside its neighbours: the diagonal is zero
        {3, true, {{3, 1, 1}, {1, 1, 1e-8F}, {0, 1e-8F, 1.0001F}}},
        {4, false, {{4, 1, 1, 1}, {f, 4, 1, 1}, {0, g, 4, -f}, {0, 0, 1 / f, 4}}}, // the bulge vanishes inside
        {3, false, {{4, -1 / g, 1}, {g, 4, -f}, {0, 1 / f, 4}}},                   // its first column is zero
    };
    for (const auto& c : cases) {
        ActivePart x(c.n, {0, c.n}, c.n);
        x.before.set([&](int i, int j) { return c.rows[i][j]; });
        x.h.set(x.before);
        const std::string what = "case " + std::to_string(&c - cases);
        GuardedVector<float> work(c.n);
        EXPECT_EQ(lapack::hseqr(x.problem(), false, work.data(), c.n), 0) << what;
        x.expect_similar(what);
        for (int j = 0; c.splits && j + 1 < c.n; ++j)
            EXPECT_EQ(x.z(c.n - 1, j), 0) << what;
    }
}

void sweep(ActivePart& x, std::vector<float> sr, std::vector<float> si, bool accumulates, bool wantT = true) {
    const int ns = static_cast<int>(sr.size()), order = 3 * ns - 3, width = 7;
    Operand<float> v(3, ns / 2, 3), u(order, order, order), wv(width, order, width), wh(order, width, order);
    lapack::laqr5(x.problem(wantT), ns, sr.data(), si.data(),
                  {accumulates, v.view(), u.view(), width, wv.view(), width, wh.view()});
}

// Two real shifts around a pair of conjugates, which are brought together first, and more pairs.
void sweep(ActivePart& x, int ns, bool accumulates, bool paired, bool wantT = true) {
    std::vector<float> sr(std::size_t(ns), 0.5F), si(std::size_t(ns), 0.0F);
    for (int i = 0; i < ns; ++i) {
        const bool real = ns >= 4 && (paired ? i == 2 || i == 3 : i == 0 || i == 3);
        const int pair = paired || ns < 4 || i > 3 ? i / 2 : 0;
        sr[std::size_t(i)] = real ? -0.25F : 0.5F + 0.125F * static_cast<float>(pair);
        si[std::size_t(i)] = real ? 0 : (paired || ns < 4 || i > 3 ? i % 2 == 0 : i == 1) ? 1 : -1;
    }
    sweep(x, std::move(sr), std::move(si), accumulates, wantT);
}

TEST(SchurForm, ResidualOfSweeps) {
    for (const int n : {3, 4, 8, 13, 14, 15, 16, 17, 18, 31, 40})
        for (const int ns : {2, 4, 6, 8})
            for (const lapack::ActiveRange range :
                 {lapack::ActiveRange{0, n}, {1, n}, {n / 4, n - n / 5}, {n / 2, n / 2 + 1}}) {
                const std::string what =
                    std::to_string(n) + " shifts " + std::to_string(ns) + " from " + std::to_string(range.begin);
                ActivePart plain(n, range, n), accumulated = plain, shuffled = plain, values = plain;
                sweep(plain, ns, false, true);
                sweep(accumulated, ns, true, true);
                sweep(shuffled, ns, true, false);
                sweep(values, ns, true, true, false);
                plain.expect_similar(what);
                accumulated.expect_similar(what + " accumulated");
                EXPECT_LE(norm(WideMatrix<float>(plain.h) - WideMatrix<float>(accumulated.h), 'O'), 1e-3 * n) << what;
                EXPECT_TRUE(shuffled.h.same_bits(accumulated.h)) << what;
                EXPECT_LE(norm(WideMatrix<float>(plain.z) - WideMatrix<float>(values.z), 'O'), 1e-4 * n) << what;
            }
}

// A sweep sets subdiagonal elements that have become negligible to zero: the last one, by a shift that is an
// eigenvalue, and one that is small beside its neighbours where the diagonal stays zero.
TEST(SchurForm, SolutionsOfSweepsAreZeroWhereTheyConverge) {
    const int n = 8;
    const auto after_sweeps = [&](const auto& element, float shift, bool accumulates) {
        ActivePart x(n, {0, n}, n);
        x.before.set(element);
        x.h.set(x.before);
        for (int i = 0; i < 3; ++i)
            sweep(x, {shift, shift}, {0, 0}, accumulates);
        x.expect_similar("shift " + std::to_string(shift));
        return x.h;
    };
    for (const bool accumulates : {false, true}) {
        const Operand<float> shifted = after_sweeps(
            [](int i, int j) { return 2.0F * (i == j) + (std::abs(i - j) == 1); }, 3.87938524F, accumulates);
        EXPECT_EQ(shifted(n - 1, n - 2), 0);
        const auto falling = [](int i, int j) { return i > j + 1 ? 0 : 1 / static_cast<float>(j - i + 3); };
        const Operand<float> alternate =
            after_sweeps([&](int i, int j) { return i == 4 && j == 3   ? 1e-12F
                                                    : (j - i) % 2 != 0 ? falling(i, j)
                                                                       : 0; },
                         0, accumulates);
        for (int row = 3; row < 7; ++row) // what a bulge grows by is zero there, but what it has is not negligible
            for (const float shift : {-1.0F, 0.25F, 3.0F})
                after_sweeps([&](int i, int j) { return i == row && j == row - 1 ? 0x1p-149F : falling(i, j); }, shift,
                             accumulates);
        int zeros = 0;
        for (int i = 1; i < n; ++i)
            zeros += alternate(i, i - 1) == 0;
        EXPECT_EQ(zeros, 1);
    }
}

lapack::Deflation deflate(ActivePart& x, int nw) {
    const int order = std::min(nw, x.range.size()), lwork = 80 * order;
    Operand<float> v(order, order, order), t(order, order + 5, order), wv(3, order, 3);
    GuardedVector<float> work(lwork);
    return lapack::laqr3(x.problem(), true, nw, {v.view(), order + 5, t.view(), 3, wv.view(), work.data(), lwork});
}

TEST(SchurForm, ResidualOfDeflations) {
    for (const int n : {12, 40, 61})
        for (const int nw : {1, 2, 3, 8, 17})
            for (const int small : {1, 3, n})
                for (const lapack::ActiveRange range : {lapack::ActiveRange{0, n}, {2, n - 3}}) {
                    const std::string what = std::to_string(n) + " window " + std::to_string(nw) + " small " +
                                             std::to_string(small) + " from " + std::to_string(range.begin);
                    ActivePart x(n, range, range.end - small);
                    const int order = std::min(nw, range.size());
                    const lapack::Deflation found = deflate(x, nw);
                    x.expect_similar(what);
                    EXPECT_EQ(found.shifts + found.deflated, order) << what;
                    const int end = range.end - found.deflated;
                    for (int i = end; i < range.end; ++i)
                        EXPECT_EQ(x.wr[i], x.h(i, i)) << what; // they have converged
                    if (end > range.begin && end < range.end) {
                        EXPECT_EQ(x.h(end, end - 1), 0) << what;
                    }
                    for (int i = end - found.shifts; found.deflated > 0 && i + 1 < end; ++i) // the smallest shifts last
                        EXPECT_GE(std::hypot(x.wr[i], x.wi[i]) * 1.5F, std::hypot(x.wr[i + 1], x.wi[i + 1])) << what;
                }
}

// The last row has the eigenvalue 0 or 1, and a spike of the size of `below` before it.
TEST(SchurForm, SolutionsOfDeflationsCountWhatIsNegligible) {
    const struct {
        int nw;
        float below, last;
        int deflated;
    } cases[] = {{1, 1e-9F, 1, 1}, {1, 1e-6F, 1, 0}, {2, 0x1p-30F, 0x1p-30F, 1}, {2, 0x1p-20F, 0x1p-20F, 0}};
    for (const auto& [nw, below, last, deflated] : cases) {
        ActivePart x(3, {0, 3}, 3);
        const float rows[3][3] = {{2, 1, 1}, {1, 1, 1}, {0, below, last}};
        x.before.set([&](int i, int j) { return rows[i][j]; });
        x.h.set(x.before);
        EXPECT_EQ(deflate(x, nw).deflated, deflated) << nw << ' ' << below;
        x.expect_similar("window " + std::to_string(nw));
        EXPECT_EQ(x.h(2, 1) == 0, deflated == 1) << nw << ' ' << below;
    }
}

TEST(SchurForm, SolutionsAreFirstColumnsOfShiftedProducts) {
    const float h[] = {2, 3, 0.5F, -1, 4, 1, 5, -2, 3}, zero[9] = {}; // by columns
    const int ld = 3;
    float v[3];
    for (const int n : {2, 3})
        for (const float im : {0.0F, 2.0F}) {
            const float r1 = 1, r2 = im == 0 ? -3 : 1, i2 = -im;
            std::complex<double> product[3];
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < n; ++i)
                    product[i] += (double{h[i + ld * j]} - (i == j ? std::complex<double>(r1, im) : 0)) *
                                  (double{h[j]} - (j == 0 ? std::complex<double>(r2, i2) : 0));
            SLAQR1(&n, h, &ld, &r1, &im, &r2, &i2, v);
            for (int i = 1; i < n; ++i)
                EXPECT_NEAR(v[i] * product[0].real(), v[0] * product[i].real(), 3e-4 * std::abs(v[0]));
        }
    SLAQR1(&ld, zero, &ld, zero, zero, zero, zero, v);
    EXPECT_TRUE(v[0] == 0 && v[1] == 0 && v[2] == 0);
}

// ---- Blocks moved ---------------------------------------------------------------------------------------------------

// The first row of the block at row i.
int block_row(const Operand<float>& t, int i) {
    return i > 0 && t(i, i - 1) != 0 ? i - 1 : i;
}

// With pairs so near to each other that they become real on the way, next to real values and other pairs.
Operand<float> with_nearly_real_pairs() {
    const int n = 11;
    std::mt19937 random(11);
    std::normal_distribution<float> normal;
    Operand<float> t(n, n, n + 1);
    t.set([&](int i, int j) { return i < j ? normal(random) : 0; });
    const struct {
        int row;
        float value, below;
    } blocks[] = {{0, 1, 1e-14F}, {2, 3, 0}, {3, 2, 1}, {5, 4, 1e-13F}, {7, -1, 0}, {8, -2, 2e-14F}, {10, 0.5F, 0}};
    for (const auto& b : blocks) {
        t(b.row, b.row) = b.value;
        if (b.below != 0) {
            t(b.row + 1, b.row + 1) = b.value;
            t(b.row, b.row + 1) = 1;
            t(b.row + 1, b.row) = -b.below;
        }
    }
    return t;
}
TEST(SchurForm, ResidualOfBlocksMoved) {
    std::vector<NamedMatrix> matrices = unsymmetric_matrices(14);
    matrices.push_back({"nearly real pairs", with_nearly_real_pairs()});
    int fellApart = 0;
    for (const auto& [name, a] : matrices) {
        const int n = a.rows();
        const bool random = name == "random", pairs = name == "nearly real pairs"; // a Schur form already
        const Operand<float> unit = identity_operand(n);
        const Hessenberg form = pairs ? Hessenberg{a, unit} : hessenberg_of(a, 1, n, fullSpeed);
        Schur s = schur_of(form.h, form.q, 'S', 'V', 1, n, fullSpeed);
        if (pairs) {
            s.t.set(a), s.z.set(unit);
            read_eigenvalues(s.t, s.wr, s.wi);
        }
        for (int from = 0; from < n; ++from)
            for (int to = 0; to < n; ++to) {
                const std::string what = name + ' ' + std::to_string(from) + " to " + std::to_string(to);
                Schur moved = s;
                int ifst = from + 1, ilst = to + 1;
                float unused;
                const int info = call(STREXC, 'V', n, moved.t, moved.z, &ifst, &ilst, &unused);
                read_eigenvalues(moved.t, moved.wr, moved.wi);
                expect_schur(WideMatrix<float>(a), moved, what);
                EXPECT_EQ(ifst, block_row(s.t, from) + 1) << what;
                EXPECT_TRUE(info == 0 || (info == 1 && !random)) << what;
                const int at = ilst - 1, was = ifst - 1;
                EXPECT_TRUE(info != 0 || std::abs(at - to) <= 1) << what; // no farther away than a block's second row
                if (random || (pairs && info == 0)) {                     // its eigenvalue has come along
                    EXPECT_EQ(at, block_row(moved.t, at)) << what;
                    EXPECT_LE(std::hypot(moved.wr[at] - s.wr[was], moved.wi[at] - s.wi[was]), pairs ? 1e-3 : 1e-4)
                        << what;
                }
                fellApart += pairs && std::count(moved.wi.data(), moved.wi.data() + n, 0.0F) > 3;
            }
    }
    EXPECT_GT(fellApart, 0);
}

// Blocks with nearly the same eigenvalues and much between them: exchanged well, or left alone.
TEST(SchurForm, ResidualOfBlocksNearEachOther) {
    std::mt19937 random(12);
    std::normal_distribution<float> normal;
    for (const int n1 : {1, 2})
        for (const int n2 : {1, 2}) {
            int rejected = 0;
            for (int trial = 0; trial < 200; ++trial) {
                const int n = n1 + n2;
                const float near = std::ldexp(1.0F, -trial % 25), skewness = std::ldexp(1.0F, trial % 11);
                Operand<float> t(n, n, n), q = identity_operand(n);
                const auto block = [&](int row, int order, float value) {
                    t(row, row) = t(row + order - 1, row + order - 1) = value;
                    if (order == 2)
                        t(row, row + 1) = skewness, t(row + 1, row) = -1 / skewness;
                };
                t.set([&](int i, int j) { return i < n1 && j >= n1 ? skewness * normal(random) : 0; });
                block(0, n1, 1);
                block(n1, n2, 1 + near);
                Operand<float> moved = t;
                float unused;
                const int info = call(SLAEXC, 1, n, moved, q, 1, n1, n2, &unused);
                rejected += info;
                const std::string what = std::to_string(n1) + std::to_string(n2) + " trial " + std::to_string(trial);
                EXPECT_LE(similarity_error(WideMatrix<float>(t), WideMatrix<float>(q), upper_part(moved, 1)), 5)
                    << what;
                EXPECT_LE(orthogonality_error(WideMatrix<float>(q)), 5) << what;
                EXPECT_TRUE(info == 0 || moved.same_bits(t)) << what;
            }
            EXPECT_EQ(rejected > 0, n1 == 2 && n2 == 2);
        }
}

} // namespace
} // namespace qrv::test
