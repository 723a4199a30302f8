// Reduction to bidiagonal form: the matrix from its parts, in double.
#include <gtest/gtest.h>

#include "lapack/calls/bidiagonal.hpp"
#include "qrv/native.h"
#include "support/call.hpp"
#include "support/stored_q.hpp"

namespace qrv::test {
namespace {

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
                reflect(true, x, v, widen(tauq[i]));
            if (column < n)
                reflect(false, x, u, conjugate(widen(taup[i])));
        }
        return x;
    }
    double error(const Operand<T>& before) const {
        for (int i = 0; i < size(); ++i) // the signs of d and e
            for (const double tau : {std::real(widen(tauq[i])), std::real(widen(taup[i]))})
                EXPECT_TRUE(tau == 0 || tau >= 1) << i;
        const WideMatrix<T> a0(before);
        return in_roundings(norm(product() - a0, 'O'), std::max(a0.rows, a0.columns), norm(a0, 'O'));
    }
};

template <class T>
Operand<T> matrix_with_zeros(int m, int n) {
    std::mt19937 random(static_cast<unsigned>(31 * m + n));
    Operand<T> a(m, n, std::max(1, m) + 2);
    return a.set([&](int i, int j) { return i == 3 && j > 3 ? scalar<T>(0) : any_size_one<T>(random); });
}

constexpr std::pair<int, int> shapes[] = {{1, 1},   {1, 4},   {4, 1},   {2, 2},    {5, 3},    {3, 5},
                                          {40, 33}, {33, 40}, {70, 70}, {150, 40}, {40, 150}, {140, 133}};

TEST_OF_ELEMENTS(Bidiagonal, Residual) {
    for (const auto& [m, n] : shapes) {
        const Operand<T> before = matrix_with_zeros<T>(m, n);
        const auto optimum = static_cast<int>(lapack::gebrd_work<T>(m, n));
        for (const int lwork : {std::max(m, n), 5 * (m + n), optimum}) { // the least, blocks that fit, full blocks
            if (lwork > optimum)
                continue;
            Reduced<T> r(before);
            GuardedVector<T> work(lwork);
            EXPECT_EQ(call_for<T>(SGEBRD, CGEBRD, m, n, r.a, r.d, r.e, r.tauq, r.taup, work, lwork), 0);
            EXPECT_LT(r.error(before), 10) << m << 'x' << n << " work " << lwork;
        }
        // In panels, also where products with elements of a row vanish or overflow, by its size or that of the others.
        for (const auto& [ofRow, ofRest] : {std::pair{1.0F, 1.0F}, {1e-25F, 1e-25F}, {1e25F, 1e25F}, {1e14F, 1e32F}}) {
            if (std::min(m, n) < 30)
                continue;
            Operand<T> scaled(m, n, m + 2);
            scaled.set([&, row = ofRow, rest = ofRest](int i, int j) {
                return (i == 0 ? row : j == 0 && row != rest ? 0 : rest) * before(i, j);
            });
            Reduced<T> r(scaled);
            GuardedVector<T> work(7 * (m + n));
            lapack::gebrd_in_panels<T>({7, 15}, m, n, r.a.view(), r.d.data(), r.e.data(), r.tauq.data(), r.taup.data(),
                                       work.data());
            EXPECT_LT(r.error(scaled), 10) << m << 'x' << n << " in panels, " << ofRow << ' ' << ofRest;
        }
        Reduced<T> r(before);
        GuardedVector<T> work(std::max(m, n));
        auto& shorter = m >= n ? r.taup : r.tauq; // its last reflector is none
        shorter[r.size() - 1] = scalar<T>(9);
        call_for<T>(SGEBD2, CGEBD2, m, n, r.a, r.d, r.e, r.tauq, r.taup, work);
        EXPECT_LT(r.error(before), 10) << m << 'x' << n;
        EXPECT_EQ(std::abs(widen(shorter[r.size() - 1])), 0);
    }
}

// Q and P^H generated, and applied to the identity.
TEST_OF_ELEMENTS(Bidiagonal, ResidualOfItsFactors) {
    const char adjoint = isComplex<T> ? 'C' : 'T';
    for (const auto& [m, n] : shapes) {
        SCOPED_TRACE(std::to_string(m) + 'x' + std::to_string(n));
        const Operand<T> before = matrix_with_zeros<T>(m, n);
        Reduced<T> r(before);
        const int k = r.size(), lwork = 64 * (m + n);
        std::vector<T> work(static_cast<std::size_t>(lwork));
        call_for<T>(SGEBRD, CGEBRD, m, n, r.a, r.d, r.e, r.tauq, r.taup, work, lwork);
        Operand<T> q(m, k, m + 1), ph(k, n, k + 2);
        q.set(r.a), ph.set(r.a);
        EXPECT_EQ(call_for<T>(SORGBR, CUNGBR, 'Q', m, k, n, q, r.tauq, work, lwork), 0);
        EXPECT_EQ(call_for<T>(SORGBR, CUNGBR, 'P', k, n, m, ph, r.taup, work, lwork), 0);
        const WideMatrix<T> b(k, k, [&, above = m >= n ? 1 : -1](int i, int j) {
            return i == j ? r.d[i] : j == i + above ? r.e[std::min(i, j)] : 0;
        });
        EXPECT_LT(norm(WideMatrix<T>(q) * b * WideMatrix<T>(ph) - WideMatrix<T>(before), 'M'),
                  50 * unitRoundoff * std::sqrt(double(m) * n));

        Operand<T> left = identity_operand<T>(m), right = identity_operand<T>(n), back = left;
        call_for<T>(SORMBR, CUNMBR, 'Q', 'L', 'N', m, m, n, r.a, r.tauq, left, work, lwork);
        call_for<T>(SORMBR, CUNMBR, 'P', 'R', adjoint, n, n, m, r.a, r.taup, right, work, lwork);
        call_for<T>(SORMBR, CUNMBR, 'Q', 'R', adjoint, m, m, n, r.a, r.tauq, back, work, lwork);
        const auto expect_near = [](const Operand<T>& x, const WideMatrix<T>& y) {
            EXPECT_EQ(x.count_bad([&](int i, int j, T e) { return std::abs(widen(e) - y(i, j)) <= 1e-5; }), 0);
        };
        expect_near(q, WideMatrix<T>(left));
        expect_near(ph, WideMatrix<T>(right));
        expect_near(back, WideMatrix<T>(left).adjoint());
    }
}

} // namespace
} // namespace qrv::test
