// Reflectors as they are stored, applied in double one after the other.
#pragma once

#include "lapack/calls/qr.hpp"
#include "support/oracle.hpp"

namespace qrv::test {

// C := H C or C H for H = I - tau v v^H.
template <class T>
void reflect(bool left, WideMatrix<T>& c, const std::vector<Wide<T>>& v, Wide<T> tau) {
    const int across = left ? c.columns : c.rows, length = left ? c.rows : c.columns;
    for (int j = 0; j < across; ++j) {
        const auto at = [&](int i) -> Wide<T>& { return c.values[left ? c.at(i, j) : c.at(j, i)]; };
        Wide<T> sum = 0;
        for (int i = 0; i < length; ++i)
            sum += left ? conjugate(v[std::size_t(i)]) * at(i) : at(i) * v[std::size_t(i)];
        for (int i = 0; i < length; ++i)
            at(i) -= tau * sum * (left ? v[std::size_t(i)] : conjugate(v[std::size_t(i)]));
    }
}

// k reflectors of length n.
template <class T>
struct StoredQ {
    lapack::Direct direct;
    lapack::StoreV store;
    int n, k;
    const Operand<T>& v;
    const T* tau;

    bool forward() const { return direct == lapack::Direct::forward; }
    bool by_columns() const { return store == lapack::StoreV::columns; }
    int unit(int number) const { return forward() ? number : n - k + number; } // where its 1 is
    Wide<T> tau_of(int number) const { return widen(tau[number]); }
    std::vector<Wide<T>> vector(int number) const {
        std::vector<Wide<T>> x(std::size_t(n), Wide<T>(0));
        const int one = unit(number);
        for (int i = forward() ? one + 1 : 0; i < (forward() ? n : one); ++i)
            x[std::size_t(i)] = by_columns() ? widen(v(i, number)) : conjugate(widen(v(number, i)));
        x[std::size_t(one)] = 1;
        return x;
    }
    // C := op(H) C or C op(H) for the product H of all.
    void apply(bool left, bool adjoint, WideMatrix<T>& c) const {
        const bool firstOnTheLeft = forward() != adjoint; // of the product
        for (int step = 0; step < k; ++step) {
            const int number = firstOnTheLeft == left ? k - 1 - step : step;
            reflect(left, c, vector(number), adjoint ? conjugate(tau_of(number)) : tau_of(number));
        }
    }
    // How far the worst reflector is from a unitary one.
    double far_from_unitary() const {
        double worst = 0;
        for (int number = 0; number < k; ++number) {
            double square = 0;
            for (const Wide<T>& x : vector(number))
                square += std::norm(x);
            const double off = std::abs(2 * std::real(tau_of(number)) - std::norm(tau_of(number)) * square);
            worst = worse(worst, off * square);
        }
        return worst;
    }
};

// Vectors at random, all that is no element of them NaN, or 0 if they are short; nearly unitary, one of them the
// identity. The last `zeros` elements of all are 0, which counts forward.
template <class T>
struct RandomReflectors {
    Operand<T> v;
    GuardedVector<T> tau;
    StoredQ<T> q;

    RandomReflectors(lapack::Direct direct, lapack::StoreV store, int n, int k, int zeros = 0)
        : v(store == lapack::StoreV::columns ? n : k, store == lapack::StoreV::columns ? k : n,
            (store == lapack::StoreV::columns ? n : k) + 3),
          tau(k), q{direct, store, n, k, v, tau.data()} {
        std::minstd_rand random(static_cast<unsigned>(n + 7 * k));
        v.set([&](int i, int j) {
            const int place = q.by_columns() ? i : j, one = q.unit(q.by_columns() ? j : i);
            if (q.forward() ? place <= one : place >= one)
                return n < 10 ? T() : all_parts<T>(nan);
            return place >= n - zeros ? T() : any_size_one<T>(random);
        });
        const float square = 1 + static_cast<float>(n * int(sizeof(T) / sizeof(float))) / 3; // about that of a v
        for (int i = 0; i < k; ++i) {
            tau[i] = scalar<T>(i == k / 2 && k > 2 ? 0 : 1.6F / square);
            set_imaginary(tau[i], tau[i] == T() ? 0 : -0.8F / square);
        }
    }
    RandomReflectors(const RandomReflectors&) = delete;
};

} // namespace qrv::test
