// Symmetric matrices reduced to tridiagonal form, by SSYTRD or a part of it, and what is checked of them.
#pragma once

#include "lapack/kernel/source/symmetric/sytrd.hpp"
#include "support/stored_q.hpp"

namespace qrv::test {

// Random; in blocks of this order, which reflectors do not mix: the last but one of each block is the identity.
inline Operand<float> symmetric(Uplo uplo, int n, int block = 1 << 30) {
    Operand<float> a(Form{n, n, Form::symmetric, letter(uplo)}, {.extra = 3, .offset = 1});
    std::mt19937 random(static_cast<unsigned>(n));
    return a.set([&](int i, int j) { return i / block == j / block ? eighths<float>(random) : 0; });
}

struct Reduced {
    Uplo uplo;
    int n;
    Operand<float> a; // with the vectors of the reflectors
    GuardedVector<float> d, e, tau;

    template <class Reduce>
    Reduced(Uplo which, const Operand<float>& given, const Reduce& reduce)
        : uplo(which), n(given.rows()), a(given), d(n), e(n - 1), tau(n - 1) {
        reduce(*this);
    }

    void in_panels(int team, const lapack::Panels& panels, int tail) {
        Operand<float> w(n, panels.width, n);
        lapack::sytrd_in_panels(team, panels, tail, uplo, n, a.view(), d.data(), e.data(), tau.data(), w.view());
    }

    // |A x - Q T Q' x| for a vector x, in roundings of |A| |x|. Q leaves the last element alone, or the first one.
    double error(const Operand<float>& given) const {
        const bool upper = uplo == Uplo::upper;
        Operand<float> v(n - 1, n - 1, std::max(n - 1, 1));
        v.set([&](int i, int j) { return upper ? a(i, j + 1) : a(i + 1, j); });
        const StoredQ<float> q{upper ? lapack::Direct::backward : lapack::Direct::forward,
                               lapack::StoreV::columns,
                               n - 1,
                               n - 1,
                               v,
                               tau.data()};
        const auto turned = [&](const WideMatrix<float>& x, bool adjoint) {
            WideMatrix<float> part(n - 1, 1, [&](int i, int) { return x(upper ? i : i + 1, 0); });
            q.apply(true, adjoint, part);
            const int alone = upper ? n - 1 : 0;
            return WideMatrix<float>(n, 1,
                                     [&](int i, int) { return i == alone ? x(i, 0) : part(upper ? i : i - 1, 0); });
        };
        const WideMatrix<float> before(given), x(n, 1, [](int i, int) { return 1.0 + i % 3; }), y = turned(x, true);
        const WideMatrix<float> t(n, 1, [&](int i, int) {
            return d[i] * y(i, 0) + (i > 0 ? e[i - 1] * y(i - 1, 0) : 0) + (i < n - 1 ? e[i] * y(i + 1, 0) : 0);
        });
        return norm(turned(t, false) - before * x) / (norm(before) * norm(x) * unitRoundoff);
    }
    bool same_bits(const Reduced& x) const {
        return a.same_bits(x.a) && d.same_bits(x.d) && e.same_bits(x.e) && tau.same_bits(x.tau);
    }
};
constexpr double reducedBound = 10;

} // namespace qrv::test
