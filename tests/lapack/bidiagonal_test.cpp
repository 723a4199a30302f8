// Reduction to bidiagonal form: the matrix from its parts, in double.
#include <gtest/gtest.h>

#include "lapack/calls/bidiagonal.hpp"
#include "qrv/native.h"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

template <class T>
struct Bidiagonal : testing::Test {};

TYPED_TEST_SUITE(Bidiagonal, Elements);

template <class T>
struct Reduced {
    Operand<T> a;
    GuardedVector<float> d, e;
    GuardedVector<T> tauq, taup;

    explicit Reduced(const Operand<T>& before)
        : a(before), d(size()), e(std::max(0, size() - 1)), tauq(size()), taup(size()) {}
    int size() const { return std::min(a.rows(), a.columns()); }

    // Q B P^H: what the reflectors make of B, from the last one to the first.
    WideMatrix<T> product() const {
        const int m = a.rows(), n = a.columns(), above = m >= n;
        WideMatrix<T> x(m, n, [&](int i, int j) -> Wide<T> {
            return i == j ? d[i] : (above ? j == i + 1 : i == j + 1) && std::max(i, j) < size() ? e[std::min(i, j)] : 0;
        });
        for (int i = size() - 1; i >= 0; --i) {
            const int row = above ? i : i + 1, column = above ? i + 1 : i; // where the vectors begin
            std::vector<Wide<T>> v(static_cast<std::size_t>(m)), u(static_cast<std::size_t>(n));
            for (int k = row; k < m; ++k)
                v[std::size_t(k)] = k == row ? 1 : widen(a(k, i));
            for (int k = column; k < n; ++k)
                u[std::size_t(k)] = k == column ? 1 : conjugate(widen(a(i, k)));
            if (row < m)
                for (int j = 0; j < n; ++j)
                    reflect(
                        widen(tauq[i]), v, [&, j](int k) -> Wide<T>& { return x.values[x.at(k, j)]; }, m, false);
            if (column < n)
                for (int k = 0; k < m; ++k)
                    reflect(
                        conjugate(widen(taup[i])), u, [&, k](int j) -> Wide<T>& { return x.values[x.at(k, j)]; }, n,
                        true);
        }
        return x;
    }

private:
    // A column x := x - tau v (v^H x), or a row x := x - tau (x v) v^H.
    template <class Element>
    static void reflect(Wide<T> tau, const std::vector<Wide<T>>& v, const Element& x, int n, bool row) {
        Wide<T> sum = 0;
        for (int k = 0; k < n; ++k)
            sum += times(row ? v[std::size_t(k)] : conjugate(v[std::size_t(k)]), x(k));
        for (int k = 0; k < n; ++k)
            x(k) -= times(times(tau, sum), row ? conjugate(v[std::size_t(k)]) : v[std::size_t(k)]);
    }
};

template <class T>
double residual(const Operand<T>& before, const Reduced<T>& r) {
    const WideMatrix<T> x = r.product();
    double error = 0, norm = 1e-300;
    for (int j = 0; j < x.columns; ++j) {
        double difference = 0, sum = 0;
        for (int i = 0; i < x.rows; ++i) {
            difference += std::abs(x.values[x.at(i, j)] - widen(before(i, j)));
            sum += std::abs(widen(before(i, j)));
        }
        error = std::isnan(difference) ? difference : std::max(error, difference);
        norm = std::max(norm, sum);
    }
    return error / (norm * std::max(x.rows, x.columns) * 2 * unitRoundoff);
}

template <class T>
Operand<T> random_matrix(int m, int n) {
    std::mt19937 random(static_cast<unsigned>(31 * m + n));
    Operand<T> a(m, n, std::max(1, m) + 2);
    return a.set([&](int i, int j) { return i == 3 && j > 3 ? scalar<T>(0) : any_size_one<T>(random); });
}

constexpr std::pair<int, int> shapes[] = {{1, 1},   {1, 4},   {4, 1},   {2, 2},    {5, 3},   {3, 5},
                                          {40, 33}, {33, 40}, {70, 70}, {150, 40}, {40, 150}};

TYPED_TEST(Bidiagonal, Residual) {
    using T = TypeParam;
    for (const auto& [m, n] : shapes) {
        const Operand<T> before = random_matrix<T>(m, n);
        const auto optimum = static_cast<int>(lapack::gebrd_work<T>(m, n));
        for (const int lwork : {std::max(m, n), 5 * (m + n), optimum}) { // the least, blocks that fit, full blocks
            if (lwork > optimum)
                continue;
            Reduced<T> r(before);
            GuardedVector<T> work(lwork);
            int info = -1;
            routine_for<T>(SGEBRD, CGEBRD)(&r.a.form().rows, &r.a.form().columns, r.a.data(), &r.a.ld(), r.d.data(),
                                           r.e.data(), r.tauq.data(), r.taup.data(), work.data(), &lwork, &info);
            EXPECT_EQ(info, 0);
            EXPECT_LT(residual(before, r), 10) << m << 'x' << n << " work " << lwork;
        }
        Reduced<T> r(before);
        GuardedVector<T> work(std::max(m, n));
        int info = -1;
        routine_for<T>(SGEBD2, CGEBD2)(&r.a.form().rows, &r.a.form().columns, r.a.data(), &r.a.ld(), r.d.data(),
                                       r.e.data(), r.tauq.data(), r.taup.data(), work.data(), &info);
        EXPECT_LT(residual(before, r), 10) << m << 'x' << n;
    }
}

// A - V Y^H - X U behind the panel is what the unblocked reduction leaves there; so the rest reduces to the same B.
TYPED_TEST(Bidiagonal, ResidualOfAPanel) {
    using T = TypeParam;
    for (const auto& [m, n] : {std::pair{30, 22}, {22, 30}, {25, 25}})
        for (const int nb : {1, 4, 7}) {
            const Operand<T> before = random_matrix<T>(m, n);
            Reduced<T> r(before);
            Operand<T> x(m, nb, m + 1), y(n, nb, n + 2);
            routine_for<T>(SLABRD, CLABRD)(&r.a.form().rows, &r.a.form().columns, &nb, r.a.data(), &r.a.ld(),
                                           r.d.data(), r.e.data(), r.tauq.data(), r.taup.data(), x.data(), &x.ld(),
                                           y.data(), &y.ld());
            Operand<T> rest(m - nb, n - nb, m);
            rest.set([&, rows = m](int i, int j) {
                Wide<T> sum = widen(r.a(nb + i, nb + j));
                for (int k = 0; k < nb; ++k)
                    sum -= times(widen(r.a(nb + i, k)), conjugate(widen(y(nb + j, k)))) +
                           times(widen(x(nb + i, k)), widen(r.a(k, nb + j)));
                int part = 0;
                return element<T>([&] { return static_cast<float>(part++ == 0 ? std::real(sum) : std::imag(sum)); });
            });
            for (int k = 0; k < nb; ++k)
                (m >= n ? r.a(k, k + 1) : r.a(k + 1, k)) = scalar<T>(r.e[k]);
            Reduced<T> tail(rest);
            GuardedVector<T> work(std::max(m, n));
            int info = -1;
            routine_for<T>(SGEBD2, CGEBD2)(&rest.form().rows, &rest.form().columns, tail.a.data(), &tail.a.ld(),
                                           tail.d.data(), tail.e.data(), tail.tauq.data(), tail.taup.data(),
                                           work.data(), &info);
            for (int i = 0; i < tail.size(); ++i) {
                r.d[nb + i] = tail.d[i], r.tauq[nb + i] = tail.tauq[i], r.taup[nb + i] = tail.taup[i];
                if (i + 1 < tail.size())
                    r.e[nb + i] = tail.e[i];
            }
            rest.each_stored([&](int i, int j) { r.a(nb + i, nb + j) = tail.a(i, j); });
            EXPECT_LT(residual(before, r), 10) << m << 'x' << n << " panel " << nb;
        }
}

// Q and P^H generated, and applied to the identity.
TYPED_TEST(Bidiagonal, ResidualOfItsFactors) {
    using T = TypeParam;
    const char adjoint = isComplex<T> ? 'C' : 'T';
    for (const auto& [rows, columns] : shapes) {
        const int m = rows, n = columns;
        const Operand<T> before = random_matrix<T>(m, n);
        Reduced<T> r(before);
        const int k = r.size(), lwork = 64 * (m + n);
        std::vector<T> work(static_cast<std::size_t>(lwork));
        int info = -1;
        routine_for<T>(SGEBRD, CGEBRD)(&m, &n, r.a.data(), &r.a.ld(), r.d.data(), r.e.data(), r.tauq.data(),
                                       r.taup.data(), work.data(), &lwork, &info);
        Operand<T> q(m, k, m + 1), ph(k, n, k + 2);
        q.set([&](int i, int j) { return r.a(i, j); });
        ph.set([&](int i, int j) { return r.a(i, j); });
        routine_for<T>(SORGBR, CUNGBR)("Q", &m, &k, &n, q.data(), &q.ld(), r.tauq.data(), work.data(), &lwork, &info);
        EXPECT_EQ(info, 0);
        routine_for<T>(SORGBR, CUNGBR)("P", &k, &n, &m, ph.data(), &ph.ld(), r.taup.data(), work.data(), &lwork, &info);
        EXPECT_EQ(info, 0);
        const auto b = [&](int i, int j) -> double {
            return i == j ? r.d[i] : j == i + (m >= n ? 1 : -1) ? r.e[std::min(i, j)] : 0;
        };
        double error = 0;
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i) {
                Wide<T> sum = -widen(before(i, j));
                for (int x = 0; x < k; ++x)
                    for (int y = std::max(0, x - 1); y < std::min(k, x + 2); ++y)
                        sum += times(widen(q(i, x)) * b(x, y), widen(ph(y, j)));
                error = std::abs(sum) <= error ? error : std::abs(sum);
            }
        EXPECT_LT(error, 50 * unitRoundoff * std::sqrt(double(m) * n)) << m << 'x' << n;

        const auto identity = [](int size) {
            Operand<T> x(size, size, size + 1);
            x.set([](int i, int j) { return scalar<T>(i == j); });
            return x;
        };
        Operand<T> left = identity(m), right = identity(n), back = identity(m);
        const auto apply = routine_for<T>(SORMBR, CUNMBR);
        apply("Q", "L", "N", &m, &m, &n, r.a.data(), &r.a.ld(), r.tauq.data(), left.data(), &left.ld(), work.data(),
              &lwork, &info);
        apply("P", "R", &adjoint, &n, &n, &m, r.a.data(), &r.a.ld(), r.taup.data(), right.data(), &right.ld(),
              work.data(), &lwork, &info);
        apply("Q", "R", &adjoint, &m, &m, &n, r.a.data(), &r.a.ld(), r.tauq.data(), back.data(), &back.ld(),
              work.data(), &lwork, &info);
        const auto near = [](Wide<T> x, Wide<T> y) { return std::abs(x - y) <= 1e-5; };
        EXPECT_EQ(q.count_bad([&](int i, int j, T x) { return near(widen(x), widen(left(i, j))); }), 0)
            << m << 'x' << n;
        EXPECT_EQ(ph.count_bad([&](int i, int j, T x) { return near(widen(x), widen(right(i, j))); }), 0)
            << m << 'x' << n;
        EXPECT_EQ(back.count_bad([&](int i, int j, T x) { return near(widen(x), conjugate(widen(left(j, i)))); }), 0)
            << m << 'x' << n;
    }
}

} // namespace
} // namespace qrv::test
