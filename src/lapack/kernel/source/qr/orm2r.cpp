// SORM2R, CUNM2R, SORM2L, CUNM2L, SORML2, CUNML2: a Q from QR, QL or LQ applied to a matrix, a reflector at a time. Its
// vectors are only read, so several threads may apply the same Q.
#include "blas/calls.hpp"
#include "lapack/kernel/source/qr/apply_q.hpp"
#include "lapack/kernel/source/reflectors/small_columns.hpp"

namespace qrv::lapack {
namespace {

// A reflector whose vector is v with a 1 in front or behind: C in the row or column that meets the 1, and the rest.
template <class T>
void reflect(Side side, int rest, int across, Vector<const T> v, T tau, Vector<T> one, Matrix<T> c, T* work) {
    if (tau == scalar<T>(0) || across <= 0)
        return;
    const T unit = scalar<T>(1);
    const Vector<T> w{work};
    kernel::copy(across, one, w);
    if (side == Side::left) { // w = C^H v
        conjugate(across, w);
        blas::gemv(adjoint<T>, rest, across, unit, c, v, unit, w);
        blas::gerc(rest, across, -tau, v, w, c);
        conjugate(across, w);
    } else { // w = C v
        blas::gemv(Op::none, across, rest, unit, c, v, unit, w);
        blas::gerc(across, rest, -tau, w, v, c);
    }
    kernel::axpy(across, -tau, w, one);
}

// The panel is one reflector, whose vector without the 1 is v.
template <class T>
void apply_one(Side side, Op op, int m, int n, const QPanel<T>& panel, bool oneBehind, Vector<const T> v, T tau,
               Matrix<T> c, T* work) {
    const bool left = side == Side::left;
    const int rest = panel.length - 1, across = left ? n : m;
    const int one = panel.row + (oneBehind ? rest : 0), others = panel.row + (oneBehind ? 0 : 1);
    const Vector<T> meetsOne = left ? c.row(one, 0) : c.column(0, one);
    const Matrix<T> other = rest == 0 ? c : left ? c.block(others, 0) : c.block(0, others);
    reflect(side, rest, across, v, op == Op::none ? tau : conj(tau), meetsOne, other, work);
}

constexpr int shortRow = 64; // copied on the stack to be conjugated

// A copy pays as long as reflectors are no wider than a few vectors of it.
template <class T>
bool goes_small(int order, int across) {
    return is_small<T>(order, across) && (!isComplex<T> || order <= 12);
}
// In a copy of C; from the right, in one of its adjoint.
template <class T>
void apply_small(const ReflectorsOfQ<T>& q, Side side, Op op, int across, Matrix<T> c) {
    const bool left = side == Side::left, up = q.first_comes_first(side, op), behind = q.form == QForm::ql;
    const bool plain = left == (q.op_of_product(op) == Op::none);
    SmallColumns<T> columns(q.order, across, c, left ? Op::none : adjoint<T>);
    for (int step = 0; step < q.k; ++step) {
        const int i = up ? step : q.k - 1 - step;
        const QPanel<T> panel = q.panel(i, 1);
        T v[smallSide<T>] = {};
        for (int r = behind ? 0 : 1; r < panel.length - (behind ? 1 : 0); ++r)
            v[panel.row + r] = q.form == QForm::lq ? conj(panel.v(0, r)) : panel.v(r, 0);
        v[panel.row + (behind ? panel.length - 1 : 0)] = scalar<T>(1);
        columns.take(v, panel.row);
        columns.apply(plain ? q.tau[i] : conj(q.tau[i]), 0);
    }
    columns.store(c);
}

} // namespace

template <class T>
void orm2(QForm form, Side side, Op op, int m, int n, int k, Matrix<const T> a, const T* tau, Matrix<T> c, T* work) {
    const bool left = side == Side::left;
    const ReflectorsOfQ<T> q{form, left ? m : n, k, a, tau};
    if (goes_small<T>(q.order, left ? n : m))
        return apply_small(q, side, op, left ? n : m, c);
    const bool up = q.first_comes_first(side, op);
    const Op opOfProduct = q.op_of_product(op);
    for (int step = 0; step < k; ++step) {
        const int i = up ? step : k - 1 - step;
        const QPanel<T> panel = q.panel(i, 1);
        const int rest = panel.length - 1;
        const auto apply = [&](Vector<const T> v) {
            apply_one(side, opOfProduct, m, n, panel, form == QForm::ql, v, tau[i], c, work);
        };
        if (form != QForm::lq) {
            apply(panel.v.column(form == QForm::ql ? 0 : smaller(1, rest), 0));
        } else if (const Vector<const T> row = panel.v.row(0, smaller(1, rest)); !isComplex<T>) {
            apply(row);
        } else if (rest <= shortRow) { // a row is v^H
            T v[shortRow];
            for (int r = 0; r < rest; ++r)
                v[r] = conj(row[r]);
            apply({v, 1});
        } else {
            const Matrix<T> touched = left ? c.block(panel.row, 0) : c.block(0, panel.row);
            larfb<T>(side, opOfProduct, {q.direct(), q.store(), 1, panel.v, {tau + i, 1}}, left ? panel.length : m,
                     left ? n : panel.length, touched, {work, left ? n : m});
        }
    }
}

template void orm2(QForm, Side, Op, int, int, int, Matrix<const float>, const float*, Matrix<float>, float*);
template void orm2(QForm, Side, Op, int, int, int, Matrix<const SingleComplex>, const SingleComplex*,
                   Matrix<SingleComplex>, SingleComplex*);

} // namespace qrv::lapack
