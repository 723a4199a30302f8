// Hessenberg and Schur forms: similarity and orthogonality in double, the shape of the forms, blocks moved within them.
#include <gtest/gtest.h>

#include "lapack/calls/nonsymmetric.hpp"
#include "qrv/native.h"
#include "support/call.hpp"
#include "support/combine.hpp"
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

void expect_hessenberg(const Operand<float>& a, const Hessenberg& form) {
    expect_similar(WideMatrix<float>(a), WideMatrix<float>(form.q), upper_part(form.h, 1), 5);
}

TEST(HessenbergForm, Residual) {
    combine({fullSpeed, least}, {0, 1, 2, 3, 10, 33, 65, 100, 161}).each([](int workLength, int n) {
        for (const auto& [name, a] : unsymmetric_matrices(n)) {
            SCOPED_TRACE(name);
            expect_hessenberg(a, hessenberg_of(a, 1, n, workLength));
        }
    });
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
        expect_hessenberg(a, form);
        form.q.each_stored([&](int i, int j) {
            if (i < 5 || j < 5 || i >= n - 3 || j >= n - 3) {
                ASSERT_EQ(form.q(i, j), i == j ? 1 : 0) << i << ' ' << j;
            }
        });
    }
}

TEST(HessenbergForm, SolutionsAreProductsWithQ) {
    combine({6, 40, 90}, "LR", "NT").each([](int n, char side, char trans) {
        const Operand<float> a = partly_triangular(n);
        const int ilo = 5, ihi = std::max(n - 3, 5), m = side == 'L' ? n : 7, columns = side == 'L' ? 7 : n;
        Operand<float> h = a, c = random_matrix<float>(m, columns, 3);
        GuardedVector<float> tau(n - 1), work(64 * n);
        call(SGEHRD, n, ilo, ihi, h, tau, work, 64 * n);
        const WideMatrix<float> before(c), q(hessenberg_of(a, ilo, ihi, fullSpeed).q, trans);
        EXPECT_EQ(call(SORMHR, side, trans, m, columns, ilo, ihi, h, tau, c, work, 64 * n), 0);
        EXPECT_LE(difference(c, side == 'L' ? q * before : before * q), 20 * n * unitRoundoff);
    });
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
    SCOPED_TRACE(what);
    EXPECT_EQ(s.info, 0);
    EXPECT_TRUE(is_schur_form(s.t, s.wr, s.wi));
    expect_similar(a, WideMatrix<float>(s.z), upper_part(s.t, 1), 10);
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
    for (const int n : {0, 1, 2, 3, 10, 11, 12, 13, 30, 48, 49, 50, 51, 75, 76, 150, 590})
        for (const auto& [name, a] : unsymmetric_matrices(n)) {
            const std::string what = name + ' ' + std::to_string(n);
            if (n > 500 && name != "random")
                continue;
            const Hessenberg form = hessenberg_of(a, 1, n, fullSpeed);
            const Schur s = schur_of(form.h, form.q, 'S', 'V', 1, n, fullSpeed);
            expect_schur(WideMatrix<float>(a), s, what);
            if (n > 500)
                continue;
            const Schur alone = schur_of(form.h, Operand<float>(n, n, n + 1), 'S', 'I', 1, n, least);
            expect_schur(upper_part(form.h, 1), alone, what + " least work");
            const Schur values = schur_of(form.h, Operand<float>(n, n, n + 1), 'E', 'N', 1, n, fullSpeed);
            EXPECT_EQ(values.info, 0) << what;
            if (name == "random")
                expect_same_values(values, s, 1e-4 * std::sqrt(n + 1), what);
            if (n < 12 || n > 48)
                continue; // the way of small matrices on which the double-shift iteration fails
            Schur roomy{form.h, form.q, GuardedVector<float>(n), GuardedVector<float>(n), 0};
            roomy.t.set([&](int i, int j) { return i > j + 1 ? 0 : form.h(i, j); });
            roomy.info = lapack::laqr0_with_room(
                {true, true, n, {0, n}, roomy.t.view(), roomy.wr.data(), roomy.wi.data(), {0, n}, roomy.z.view()});
            roomy.t.set([&](int i, int j) { return i > j + 1 ? 0 : roomy.t(i, j); }); // of scratch
            expect_schur(WideMatrix<float>(a), roomy, what + " with room");
        }
}

TEST(SchurForm, ResidualWithinARange) {
    for (const int n : {9, 70, 130}) {
        const Operand<float> a = partly_triangular(n);
        const Hessenberg form = hessenberg_of(a, 5, n - 3, fullSpeed);
        expect_schur(WideMatrix<float>(a), schur_of(form.h, form.q, 'S', 'V', 5, n - 3, fullSpeed), std::to_string(n));
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
    Operand<float> h(2, 2, 2);
    h(0, 0) = 1, h(0, 1) = 100, h(1, 0) = 1e-8F, h(1, 1) = 3e-6F;
    const Schur s = schur_of(h, h, 'E', 'N', 1, 2, fullSpeed);
    const double trace = 1 + double{h(1, 1)}, det = double{h(1, 1)} - 100 * double{h(1, 0)};
    const double larger = (trace + std::sqrt(trace * trace - 4 * det)) / 2;
    EXPECT_NEAR(std::min(s.wr[0], s.wr[1]), det / larger, 1e-6 * det);
}

// ---- Parts of the multishift iteration ------------------------------------------------------------------------------

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
        x.set([&](int i, int j) { return c.rows[i][j]; });
        const std::string what = "case " + std::to_string(&c - cases);
        GuardedVector<float> work(c.n);
        EXPECT_EQ(lapack::hseqr(x.problem(), false, work.data(), c.n), 0) << what;
        x.expect_kept(what);
        for (int j = 0; c.splits && j + 1 < c.n; ++j)
            EXPECT_EQ(x.z(c.n - 1, j), 0) << what;
    }
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
    sweep(x, std::move(sr), std::move(si), {.accumulates = accumulates, .wantT = wantT});
}

TEST(SchurForm, ResidualOfSweeps) {
    combine({3, 4, 8, 13, 14, 15, 16, 17, 18, 31, 40}, {2, 4, 6, 8}, {0, 1, 2, 3}).each([](int n, int ns, int part) {
        const lapack::ActiveRange ranges[] = {{0, n}, {1, n}, {n / 4, n - n / 5}, {n / 2, n / 2 + 1}};
        ActivePart plain(n, ranges[part], n), accumulated = plain, shuffled = plain, values = plain;
        sweep(plain, ns, false, true);
        sweep(accumulated, ns, true, true);
        sweep(shuffled, ns, true, false);
        sweep(values, ns, true, true, false);
        plain.expect_kept("plain");
        accumulated.expect_kept("accumulated");
        EXPECT_LE(norm(WideMatrix<float>(plain.h) - WideMatrix<float>(accumulated.h), 'O'), 1e-3 * n);
        EXPECT_TRUE(shuffled.h.same_bits(accumulated.h));
        EXPECT_LE(norm(WideMatrix<float>(plain.z) - WideMatrix<float>(values.z), 'O'), 1e-4 * n);
    });
}

// A sweep sets subdiagonal elements that have become negligible to zero: the last one, by a shift that is an
// eigenvalue, and one that is small beside its neighbours where the diagonal stays zero.
TEST(SchurForm, SolutionsOfSweepsAreZeroWhereTheyConverge) {
    const int n = 8;
    const auto after_sweeps = [&](const auto& element, float shift, bool accumulates) {
        ActivePart x(n, {0, n}, n);
        x.set(element);
        for (int i = 0; i < 3; ++i)
            sweep(x, {shift, shift}, {0, 0}, {.accumulates = accumulates});
        x.expect_kept("shift " + std::to_string(shift));
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
        EXPECT_EQ(alternate.count_bad([](int i, int j, float x) { return i != j + 1 || x != 0; }), 1);
    }
}

lapack::Deflation deflate(ActivePart& x, int nw) {
    const int order = std::min(nw, x.range.size()), lwork = 80 * order;
    Operand<float> v(order, order, order), t(order, order + 5, order), wv(3, order, 3);
    GuardedVector<float> work(lwork);
    return lapack::laqr3(x.problem(), true, nw, {v.view(), order + 5, t.view(), 3, wv.view(), work.data(), lwork});
}

TEST(SchurForm, ResidualOfDeflations) {
    combine({12, 40, 61}, {1, 2, 3, 8, 17}, {1, 3, 61}, std::vector{false, true})
        .each([](int n, int nw, int small, bool inside) {
            const lapack::ActiveRange range = inside ? lapack::ActiveRange{2, n - 3} : lapack::ActiveRange{0, n};
            ActivePart x(n, range, range.end - small);
            const lapack::Deflation found = deflate(x, nw);
            x.expect_kept();
            EXPECT_EQ(found.shifts + found.deflated, std::min(nw, range.size()));
            const int end = range.end - found.deflated;
            for (int i = end; i < range.end; ++i)
                EXPECT_EQ(x.wr[i], x.h(i, i)); // they have converged
            EXPECT_TRUE(end == range.begin || end == range.end || x.h(end, end - 1) == 0);
            for (int i = end - found.shifts; found.deflated > 0 && i + 1 < end; ++i) // the smallest shifts last
                EXPECT_GE(std::hypot(x.wr[i], x.wi[i]) * 1.5F, std::hypot(x.wr[i + 1], x.wi[i + 1]));
        });
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
        x.set([&](int i, int j) { return rows[i][j]; });
        EXPECT_EQ(deflate(x, nw).deflated, deflated) << nw << ' ' << below;
        x.expect_kept("window " + std::to_string(nw));
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
    const float values[] = {1, 1, 3, 2, 2, 4, 4, -1, -2, -2, 0.5F},
                below[] = {1e-14F, 0, 0, 1, 0, 1e-13F, 0, 0, 2e-14F, 0};
    std::mt19937 random(11);
    std::normal_distribution<float> normal;
    Operand<float> t(n, n, n + 1);
    return t.set([&](int i, int j) {
        const float beside = normal(random);
        return i == j ? values[i] : i == j + 1 ? -below[j] : i > j ? 0 : j == i + 1 && below[i] > 0 ? 1 : beside;
    });
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
        combine(up_to(0, n - 1), up_to(0, n - 1)).each([&, &what = name, &before = a](int from, int to) {
            Schur moved = s;
            int ifst = from + 1, ilst = to + 1;
            float unused;
            const int info = call(STREXC, 'V', n, moved.t, moved.z, &ifst, &ilst, &unused);
            read_eigenvalues(moved.t, moved.wr, moved.wi);
            expect_schur(WideMatrix<float>(before), moved, what);
            EXPECT_EQ(ifst, block_row(s.t, from) + 1);
            EXPECT_TRUE(info == 0 || (info == 1 && !random));
            const int at = ilst - 1, was = ifst - 1;
            EXPECT_TRUE(info != 0 || std::abs(at - to) <= 1); // a block's second row at most
            EXPECT_TRUE(!(random || (pairs && info == 0)) ||  // its eigenvalue has come along
                        (at == block_row(moved.t, at) &&
                         std::hypot(moved.wr[at] - s.wr[was], moved.wi[at] - s.wi[was]) <= (pairs ? 1e-3 : 1e-4)));
            fellApart += pairs && std::count(moved.wi.data(), moved.wi.data() + n, 0.0F) > 3;
        });
    }
    EXPECT_GT(fellApart, 0);
}

// Blocks with nearly the same eigenvalues and much between them: exchanged well, or left alone.
TEST(SchurForm, ResidualOfBlocksNearEachOther) {
    std::mt19937 random(12);
    std::normal_distribution<float> normal;
    combine({1, 2}, {1, 2}).each([&](int n1, int n2) {
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
            SCOPED_TRACE(trial);
            expect_similar(WideMatrix<float>(t), WideMatrix<float>(q), upper_part(moved, 1), 5);
            EXPECT_TRUE(info == 0 || moved.same_bits(t));
        }
        EXPECT_EQ(rejected > 0, n1 == 2 && n2 == 2);
    });
}

} // namespace
} // namespace qrv::test
