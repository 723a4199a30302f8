// Matrices on which the nonsymmetric eigenvalue iterations have a hard time, and what should hold of their results, in
// the units of the published tests: good up to 20.
#pragma once

#include <cmath>
#include <string>

#include "lapack/calls/nonsymmetric.hpp"
#include "support/oracle.hpp"

namespace qrv::test {

constexpr int fullSpeed = -1, least = 1;

// The length of work of a routine: all that it can use, which ask(work, -1) tells, or the least.
template <class Ask>
int work_length(int which, int leastLength, const Ask& ask) {
    float answer = 0;
    if (which == fullSpeed)
        ask(&answer, -1);
    return std::max(leastLength, static_cast<int>(answer));
}

struct NamedMatrix {
    std::string name;
    Operand<float> a;
};

inline std::vector<NamedMatrix> unsymmetric_matrices(int n) {
    std::vector<NamedMatrix> all;
    std::mt19937 random(static_cast<unsigned>(n) + 1);
    std::normal_distribution<float> normal;
    const auto add = [&](const char* name, const auto& element) {
        all.push_back({name, Operand<float>(n, n, n + 3, 1)});
        all.back().a.set(element);
    };
    const auto power = [](int e) { return std::ldexp(1.0F, e); };
    add("random", [&](int, int) { return normal(random); });
    add("companion", [&](int i, int j) { return i == 0 ? normal(random) : i == j + 1 ? 1 : 0; });
    add("cycle", [&](int i, int j) { return i == (j + 1) % n ? 1 : 0; }); // every shift is exceptional or zero
    add("Grcar", [](int i, int j) { return i == j + 1 ? -1 : j >= i && j <= i + 3 ? 1 : 0; });
    add("Jordan block", [](int i, int j) { return i == j ? 2 : j == i + 1 ? 1 : 0; });
    add("Frank", [n](int i, int j) { return i <= j + 1 ? static_cast<float>(n - std::max(i, j)) : 0; });
    add("graded", [&](int i, int j) { return normal(random) * power(-i - j); });
    add("badly scaled", [&](int i, int j) {
        return normal(random) * power((i * 7 % 13 - i * 5 % 11) * 2 - (j * 7 % 13 - j * 5 % 11) * 2);
    });
    add("nearly equal", [&](int i, int j) {
        const float x = normal(random);
        return i == j ? 1 + 1e-6F * x : i < j ? 0.1F * x : i == j + 1 && j % 2 == 0 ? 1e-7F * x : 0;
    });
    add("nearly decoupled", [&](int i, int j) {
        return i / 4 == j / 4 ? normal(random) : i <= j ? 1 : i == j + 1 ? 1e-20F : 0;
    });
    add("zero", [](int, int) { return 0; });
    return all;
}

// The matrix that is meant is the upper part, from so many diagonals below the main one on.
inline WideMatrix<float> upper_part(const Operand<float>& x, int below) {
    return {x.rows(), x.columns(), [&](int i, int j) { return i <= j + below ? x.entry(i, j) : 0.0; }};
}
// The eigenvalues that a Schur form with blocks in standard form tells itself.
inline void read_eigenvalues(const Operand<float>& t, GuardedVector<float>& wr, GuardedVector<float>& wi) {
    const int n = t.rows();
    for (int k = 0; k < n; ++k) {
        wr[k] = t(k, k), wi[k] = 0;
        if (k + 1 == n || t(k + 1, k) == 0)
            continue;
        wi[k] = std::sqrt(std::abs(t(k, k + 1))) * std::sqrt(std::abs(t(k + 1, k)));
        wr[k + 1] = t(k + 1, k + 1), wi[k + 1] = -wi[k];
        ++k;
    }
}
// Whether T is a Schur form with blocks in standard form, and wr and wi are its eigenvalues.
inline bool is_schur_form(const Operand<float>& t, const GuardedVector<float>& wr, const GuardedVector<float>& wi) {
    bool good = true;
    const int n = t.rows();
    for (int j = 0; j < n; ++j)
        for (int i = j + 2; i < n; ++i)
            good = good && t(i, j) == 0;
    for (int k = 0; k < n; ++k) {
        good = good && wr[k] == t(k, k);
        if (k + 1 == n || t(k + 1, k) == 0) {
            good = good && wi[k] == 0;
            continue;
        }
        const double b = t(k, k + 1), c = t(k + 1, k), im = std::sqrt(std::abs(b)) * std::sqrt(std::abs(c));
        good = good && t(k, k) == t(k + 1, k + 1) && wr[k + 1] == wr[k] && b * c < 0 && wi[k] > 0 &&
               wi[k + 1] == -wi[k] && std::abs(wi[k] - im) <= 4 * unitRoundoff * im &&
               (k + 2 == n || t(k + 2, k + 1) == 0);
        ++k;
    }
    return good;
}

// A Hessenberg matrix with an active range, and Z = I. `tiny`: the row from which on subdiagonal elements are small.
struct ActivePart {
    Operand<float> before, h, z;
    GuardedVector<float> wr, wi;
    lapack::ActiveRange range;

    ActivePart(int n, lapack::ActiveRange active, int tiny)
        : before(n, n, n + 1), h(n, n, n + 1), z(n, n, n + 2), wr(n), wi(n), range(active) {
        std::mt19937 random(static_cast<unsigned>(n));
        std::normal_distribution<float> normal;
        set([&](int i, int j) {
            const float x = normal(random);
            const bool joined = i <= j || (i == j + 1 && j >= range.begin && i < range.end);
            return joined ? (i > j && i >= tiny ? 1e-6F * x : x) : 0;
        });
        z.set(identity_operand(n));
    }
    template <class Element>
    void set(const Element& element) {
        h.set(before.set(element));
    }
    lapack::SchurProblem problem(bool wantT = true) {
        return {wantT, true, h.rows(), range, h.view(), wr.data(), wi.data(), {0, h.rows()}, z.view()};
    }
    void expect_kept(const std::string& what = "") const {
        SCOPED_TRACE(what);
        expect_similar(WideMatrix<float>(before), WideMatrix<float>(z), upper_part(h, 1), 5);
        EXPECT_EQ(h.count_bad([](int i, int j, float x) { return i <= j + 1 || x == 0; }), 0);
    }
};

struct SweepOptions {
    bool accumulates = true, wantT = true;
    int width = 7, threads = 0; // lines that are multiplied by U at once
};
inline void sweep(ActivePart& x, std::vector<float> sr, std::vector<float> si, const SweepOptions& o) {
    const int ns = static_cast<int>(sr.size()), order = 3 * ns - 3;
    Operand<float> v(3, ns / 2, 3), u(order, order, order), wv(o.width, order, o.width), wh(order, o.width, order);
    lapack::laqr5(x.problem(o.wantT), ns, sr.data(), si.data(),
                  {o.accumulates, v.view(), u.view(), o.width, wv.view(), o.width, wh.view(), o.threads});
}

} // namespace qrv::test
