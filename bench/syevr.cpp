// Eigenvalues and eigenvectors of symmetric matrices, and the reduction to tridiagonal form that comes first.
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <vector>

#include "case.hpp"
#include "routine.hpp"

namespace bench {
namespace {

using Doubles = std::vector<double>;

double length(const Doubles& x) {
    double squares = 0;
    for (const double element : x)
        squares += element * element;
    return std::sqrt(squares);
}

// A symmetric matrix of which the routines see one triangle.
class Symmetric {
public:
    Symmetric(char uplo_, int n_) : n(n_), uplo(uplo_), given(n, n, 1), a(n, n, 1) {}

    double element(int i, int j) const { return (uplo == 'U') == (i <= j) ? double(given(i, j)) : double(given(j, i)); }
    Doubles times(const Doubles& x) const {
        Doubles y(std::size_t(n), 0.0);
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i)
                y[std::size_t(i)] += element(i, j) * x[std::size_t(j)];
        return y;
    }
    double frobenius_norm() const {
        double squares = 0;
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i)
                squares += element(i, j) * element(i, j);
        return std::sqrt(squares);
    }
    // x = y but for rounding of what has gone into them.
    bool agree(const Doubles& x, Doubles y) const {
        for (std::size_t i = 0; i < y.size(); ++i)
            y[i] -= x[i];
        return length(y) <= (n + 8) * double(std::numeric_limits<float>::epsilon()) * frobenius_norm();
    }

    int n;
    char uplo;
    Operand<float> given, a;
};

class SytrdWorkload : public Workload {
public:
    SytrdWorkload(char uplo, int n)
        : m_(uplo, n), d_(n, 1, 2), e_(n, 1, 2), tau_(n, 1, 2), lwork_(64 * n), work_(lwork_, 1, 2),
          routine_("ssytrd", "UnAndetwli",
                   {{'U', &m_.uplo},
                    {'n', &m_.n},
                    {'A', m_.a.data.get()},
                    {'d', d_.data.get()},
                    {'e', e_.data.get()},
                    {'t', tau_.data.get()},
                    {'w', work_.data.get()},
                    {'l', &lwork_},
                    {'i', &info_}}) {}

    // A x = Q T Q' x for one vector.
    Verdict judge(const Library& library) override {
        if (!routine_.once(library, [this] { m_.a.restore(m_.given), info_ = -1; }))
            return Verdict::absent;
        const int n = m_.n;
        Doubles x(std::size_t(n), 1 / std::sqrt(double(n))), t(std::size_t(n), 0.0);
        const Doubles right = m_.times(x);
        const bool upper = m_.uplo == 'U';
        for (int i = 0; i < n - 1; ++i)
            reflect(upper ? n - 2 - i : i, x);
        for (int i = 0; i < n; ++i) {
            t[std::size_t(i)] += d_(i, 0) * x[std::size_t(i)];
            if (i < n - 1) {
                t[std::size_t(i)] += e_(i, 0) * x[std::size_t(i + 1)];
                t[std::size_t(i + 1)] += e_(i, 0) * x[std::size_t(i)];
            }
        }
        for (int i = n - 2; i >= 0; --i)
            reflect(upper ? n - 2 - i : i, t);
        return info_ == 0 && m_.agree(t, right) ? Verdict::correct : Verdict::wrong;
    }

    void run(benchmark::State& state, const Library& library) override {
        routine_.repeat(state, library, [&] { m_.a.restore(m_.given); });
    }

private:
    // x := H(i) x, with the vector of H(i) where the routine leaves it.
    void reflect(int i, Doubles& x) const {
        const bool upper = m_.uplo == 'U';
        const int one = upper ? i : i + 1, first = upper ? 0 : one, end = upper ? i + 1 : m_.n;
        const auto v = [&](int row) { return row == one ? 1.0 : double(upper ? m_.a(row, i + 1) : m_.a(row, i)); };
        double product = 0;
        for (int row = first; row < end; ++row)
            product += v(row) * x[std::size_t(row)];
        for (int row = first; row < end; ++row)
            x[std::size_t(row)] -= double(tau_(i, 0)) * product * v(row);
    }

    Symmetric m_;
    Operand<float> d_, e_, tau_;
    int lwork_, info_ = 0;
    Operand<float> work_;
    Routine routine_;
};

class SyevrWorkload : public Workload {
public:
    SyevrWorkload(bool vectors, char uplo, int n)
        : m_(uplo, n), job_(vectors ? 'V' : 'N'), w_(n, 1, 2), z_(n, vectors ? n : 1, 2), isuppz_(2 * std::size_t(n)),
          lwork_(64 * n), liwork_(10 * n), work_(lwork_, 1, 2), iwork_(std::size_t(liwork_)),
          routine_("ssyevr", "TDUnAnssoosmwZnpWlJji",
                   {{'T', &job_},
                    {'D', "A"},
                    {'U', &m_.uplo},
                    {'n', &m_.n},
                    {'A', m_.a.data.get()},
                    {'s', &zero_},
                    {'o', &one_},
                    {'m', &found_},
                    {'w', w_.data.get()},
                    {'Z', z_.data.get()},
                    {'p', isuppz_.data()},
                    {'W', work_.data.get()},
                    {'l', &lwork_},
                    {'J', iwork_.data()},
                    {'j', &liwork_},
                    {'i', &info_}}) {}

    // The sum of the eigenvalues and of their squares, and A z = w z for some vectors.
    Verdict judge(const Library& library) override {
        if (!routine_.once(library, [this] { m_.a.restore(m_.given), info_ = -1; }))
            return Verdict::absent;
        const int n = m_.n;
        double trace = 0, sum = 0, squares = 0;
        for (int i = 0; i < n; ++i) {
            trace += m_.element(i, i);
            sum += w_(i, 0);
            squares += double(w_(i, 0)) * double(w_(i, 0));
        }
        bool good = info_ == 0 && found_ == n && m_.agree({trace}, {sum}) &&
                    m_.agree({m_.frobenius_norm()}, {std::sqrt(squares)});
        for (int j = 0; job_ == 'V' && j < n; j += 1 + n / 16) {
            Doubles z, scaled;
            for (int i = 0; i < n; ++i) {
                z.push_back(z_(i, j));
                scaled.push_back(double(w_(j, 0)) * z.back());
            }
            good = good && std::abs(length(z) - 1) < 1e-4 && m_.agree(scaled, m_.times(z));
        }
        return good ? Verdict::correct : Verdict::wrong;
    }

    void run(benchmark::State& state, const Library& library) override {
        routine_.repeat(state, library, [&] { m_.a.restore(m_.given); });
    }

private:
    Symmetric m_;
    char job_;
    float zero_ = 0;
    int one_ = 1, found_ = 0, info_ = 0;
    Operand<float> w_, z_;
    std::vector<int> isuppz_;
    int lwork_, liwork_;
    Operand<float> work_;
    std::vector<int> iwork_;
    Routine routine_;
};

void add_sytrd(std::vector<Case>& cases, char uplo, int n, int threads) {
    cases.push_back({fmt::format("ssytrd/{}/{}/t{}", uplo, n, threads), threads, sytrd_work(n),
                     fmt::format("ssytrd/{}", uplo), n, [=] { return std::make_unique<SytrdWorkload>(uplo, n); }});
}
void add_syevr(std::vector<Case>& cases, bool vectors, char uplo, int n, int threads) {
    const std::string plot = fmt::format("ssyevr/{}{}", vectors ? 'V' : 'N', uplo);
    cases.push_back({fmt::format("{}/{}/t{}", plot, n, threads), threads, syevr_work(n, vectors), plot, n,
                     [=] { return std::make_unique<SyevrWorkload>(vectors, uplo, n); }});
}

} // namespace

std::vector<Case> syevr_cases(const CaseOptions& options) {
    std::vector<Case> cases;
    for (const int threads : options.threads)
        for (const char uplo : {'L', 'U'}) {
            const auto sizes = [&](std::vector<int> full) { return options.quick ? std::vector{60} : full; };
            for (const int n : sizes({100, 200, 500, 1000, 2000}))
                add_sytrd(cases, uplo, n, threads);
            for (const bool vectors : {false, true})
                for (const int n : sizes({4, 8, 16, 32, 64, 200, 1000, 2000}))
                    add_syevr(cases, vectors, uplo, n, threads);
        }
    return cases;
}

} // namespace bench
