// QR and LQ factorizations judged in double: matrices, factors and their residual.
#pragma once

#include "lapack/kernel/source/qr/geqrf.hpp"
#include "support/stored_q.hpp"

namespace qrv::test {

// Ordinary, near overflow and underflow, with columns of sizes far apart, equal, nearly equal, zero and zero but for
// their head; the first one lost beside its head; the last one beyond squares, of odd n by itself, of even n a
// multiple of the one before it.
enum class QrKind { plain, huge, tiny, graded, equal, near, sparse, lost, far };
constexpr QrKind qrKinds[] = {QrKind::plain, QrKind::huge,   QrKind::tiny, QrKind::graded, QrKind::equal,
                              QrKind::near,  QrKind::sparse, QrKind::lost, QrKind::far};

template <class T>
Operand<T> qr_matrix(int m, int n, QrKind kind = QrKind::plain) {
    Operand<T> a(m, n, m + 3, 1);
    std::minstd_rand random(static_cast<unsigned>(m + 3 * n));
    const float size = kind == QrKind::huge ? 0x1p120F : kind == QrKind::tiny ? 0x1p-121F : 1;
    a.set([&](int, int) { return size * any_size_one<T>(random); });
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) {
            if (kind == QrKind::graded)
                a(i, j) = std::ldexp(1.0F, -4 * (j % 25)) * a(i, j);
            if (kind == QrKind::equal && j % 3 > 0)
                a(i, j) = a(i, j - j % 3);
            if (kind == QrKind::near && j % 3 > 0)
                a(i, j) = (j % 3 == 2 ? 0.5F : 1.0F) * a(i, j - j % 3) + 0x1p-9F * a(i, j);
            if (kind == QrKind::sparse && (j % 4 == 1 || (j % 4 == 2 && i > 0)))
                a(i, j) = T();
            if (kind == QrKind::lost && j == 0)
                a(i, j) = i == 0 ? scalar<T>(0x1p100F) : 0x1p-16F * a(i, j);
            if (kind == QrKind::far && j > 0 && j == n - 1)
                a(i, j) = 0x1p119F * a(i, n % 2 == 0 ? j - 1 : j);
        }
    return a;
}

template <class T>
struct QrResult {
    Operand<T> a;
    GuardedVector<T> tau, work;
    QrResult(const Operand<T>& of, std::int64_t workLength)
        : a(of), tau(std::min(of.rows(), of.columns())), work(int(workLength)) {}
};

// False if there is no memory for the schedule.
template <class T>
bool factor_on_team(QrResult<T>& f, int threads, int nb, int group) {
    const lapack::GeqrfPlan plan{f.a.rows(), f.a.columns(), threads, nb, group, 2, 0};
    std::vector<T> area(std::size_t(plan.work()), all_parts<T>(nan));
    return lapack::geqrf_team(plan, f.a.view(), f.tau.data(), area.data());
}

// |A - Q R| or |A - L Q| in units of what n roundings of the largest element make; infinite if the diagonal is not as
// it must be.
template <class T>
double qr_residual(const Operand<T>& a, const QrResult<T>& f, bool lq) {
    const int m = a.rows(), n = a.columns(), k = std::min(m, n);
    WideMatrix<T> product(m, n, [&](int i, int j) { return (lq ? j <= i : i <= j) ? widen(f.a(i, j)) : Wide<T>(0); });
    for (int i = 0; i < k; ++i)
        if (!(std::real(widen(f.a(i, i))) >= 0) || std::imag(Wide<SingleComplex>(widen(f.a(i, i)))) != 0)
            return infinity;
    using lapack::Direct, lapack::StoreV;
    const StoredQ<T> q{Direct::forward, lq ? StoreV::rows : StoreV::columns, lq ? n : m, k, f.a, f.tau.data()};
    q.apply(!lq, lq, product);
    return std::max(difference(a, product) / 8, q.far_from_unitary() / 2) / (16 * unitRoundoff);
}

} // namespace qrv::test
