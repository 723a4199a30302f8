// Symmetric matrices reduced to tridiagonal form, by SSYTRD or a part of it, and what is checked of them.
#pragma once

#include "lapack/kernel/source/symmetric/sytrd.hpp"
#include "support/oracle.hpp"

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

    // |A x - Q T Q' x| for a vector x, in roundings of |A| |x|.
    double error(const Operand<float>& given) const {
        const WideMatrix<float> before(given);
        std::vector<double> x, t(std::size_t(n), 0.0);
        for (int i = 0; i < n; ++i)
            x.push_back(1 + i % 3);
        const WideMatrix<float> y = before * WideMatrix<float>(n, 1, x);
        const double size = norm(before) * norm(WideMatrix<float>(n, 1, x));
        const bool upper = uplo == Uplo::upper;
        for (int k = 0; k < n - 1; ++k)
            reflect(upper ? n - 2 - k : k, x);
        for (int i = 0; i < n; ++i)
            t[std::size_t(i)] = d[i] * x[std::size_t(i)] + (i > 0 ? e[i - 1] * x[std::size_t(i - 1)] : 0) +
                                (i < n - 1 ? e[i] * x[std::size_t(i + 1)] : 0);
        for (int k = n - 2; k >= 0; --k)
            reflect(upper ? n - 2 - k : k, t);
        return norm(WideMatrix<float>(n, 1, t) - y) / (size * unitRoundoff);
    }
    bool same_bits(const Reduced& x) const {
        return a.same_bits(x.a) && d.same_bits(x.d) && e.same_bits(x.e) && tau.same_bits(x.tau);
    }

private:
    // x := H(k) x; the first element of its vector, a 1, stands for T.
    void reflect(int k, std::vector<double>& x) const {
        const bool upper = uplo == Uplo::upper;
        const int one = upper ? k : k + 1, first = upper ? 0 : one, end = upper ? k + 1 : n;
        const auto v = [&](int i) { return i == one ? 1.0 : upper ? a(i, k + 1) : a(i, k); };
        double product = 0;
        for (int i = first; i < end; ++i)
            product += v(i) * x[std::size_t(i)];
        for (int i = first; i < end; ++i)
            x[std::size_t(i)] -= tau[k] * product * v(i);
    }
};
constexpr double reducedBound = 10;

} // namespace qrv::test
