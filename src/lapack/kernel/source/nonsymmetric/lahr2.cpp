// SLAHR2: the panel of the blocked reduction to Hessenberg form.
//
// Of the first nb columns everything below the k-th row is reduced by Q = I - V T V', and Y = A V T is told, with which
// the caller updates the other columns: A := Q' (A - Y V').
//
//   per column:   update it with the reflectors before       b := (I - V T' V') (b - Y v')
//                 make its reflector
//                 its columns of Y and T                     y := tau (A v - Y V' v),  t := -tau T V' v
//   at the end:   the first k rows of Y
//
// The product with A is most of the work. On a team each thread has a share of the rows of y.
//
// Source: G. Quintana-Orti, R. van de Geijn, Improving the performance of reduction to Hessenberg form, ACM TOMS 32
// (2006).
#include <algorithm>

#include "blas/calls.hpp"
#include "blas/thread/common/kept_team.hpp"
#include "blas/thread/common/machine.hpp"
#include "blas/thread/common/slice.hpp"
#include "blas/thread/common/work_threads.hpp"
#include "lapack/calls/nonsymmetric.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/reflectors.hpp"

namespace qrv::lapack {
namespace {

struct Panel {
    int n, k, nb;
    Matrix<float> a, t, y;

    int first_row(int c) const { return k + c; } // of the reflector of column c
    int length(int c) const { return n - k - c; }
    Matrix<float> v1() const { return a.block(k, 0); }                 // unit lower triangle, of order c
    Matrix<float> v2(int c) const { return a.block(first_row(c), 0); } // below it
    Vector<float> reflector(int c) const { return a.column(first_row(c), c); }
};

// Column c by the c reflectors before, whose last one still has its 1 in the place of a subdiagonal element.
void update_column(const Panel& p, int c) {
    const Vector<float> b = p.a.column(p.k, c), b2 = p.reflector(c), w = p.t.column(0, p.nb - 1);
    kernel::gemv(Op::none, p.n - p.k, c, -1, p.y.block(p.k, 0), p.a.row(p.first_row(c) - 1, 0), 1, b);
    kernel::copy(c, b, w);
    kernel::trmv(Uplo::lower, Op::transpose, Diag::unit, c, p.v1(), w);
    kernel::gemv(Op::transpose, p.length(c), c, 1, p.v2(c), b2, 1, w);
    kernel::trmv(Uplo::upper, Op::transpose, Diag::nonUnit, c, p.t, w);
    kernel::gemv(Op::none, p.length(c), c, -1, p.v2(c), w, 1, b2);
    kernel::trmv(Uplo::lower, Op::none, Diag::unit, c, p.v1(), w);
    kernel::axpy(c, -1, w, b);
}

void extend_y_and_t(KeptTeam& members, const Panel& p, int c, float tau) {
    const int rows = p.n - p.k, length = p.length(c);
    const Vector<float> v = p.reflector(c), y = p.y.column(p.k, c), t = p.t.column(0, c);
    const auto multiply = [&](int team, int thread) {
        const Slice own = row_slice(rows, team, thread), columns = tile_slice(c, team, thread, 8);
        kernel::gemv(Op::none, own.count, length, 1, p.a.block(p.k + own.first, c + 1), v, 0, y.from(own.first));
        kernel::gemv(Op::transpose, length, columns.count, 1, p.v2(c).block(0, columns.first), v, 0,
                     t.from(columns.first));
    };
    const auto correct = [&](int team, int thread) {
        const Slice own = row_slice(rows, team, thread);
        kernel::gemv(Op::none, own.count, c, -1, p.y.block(p.k + own.first, 0), t, 1, y.from(own.first));
        kernel::scal(own.count, tau, y.from(own.first));
    };
    members.run(multiply, correct);
    kernel::scal(c, -tau, t);
    kernel::trmv(Uplo::upper, Op::none, Diag::nonUnit, c, p.t, t);
    p.t(c, c) = tau;
}

void finish_y(const Panel& p) {
    const int below = p.n - p.k - p.nb;
    lacpy<float>(Part::whole, p.k, p.nb, p.a.block(0, 1), p.y);
    blas::trmm(Side::right, Uplo::lower, Op::none, Diag::unit, p.k, p.nb, 1, p.v1(), p.y);
    if (below > 0)
        blas::gemm(Op::none, Op::none, p.k, p.nb, below, 1, p.a.block(0, p.nb + 1), p.v2(p.nb), 1, p.y);
    blas::trmm(Side::right, Uplo::upper, Op::none, Diag::nonUnit, p.k, p.nb, 1, p.t, p.y);
}

} // namespace

int lahr2_threads(int n, int k) {
    constexpr double leastElements = 30000; // of A, for each thread
    return threads_for_shares(static_cast<double>(n - k) * (n - k) / leastElements, ThisMachine());
}

void lahr2(int threads, int n, int k, int nb, Matrix<float> a, float* tau, Matrix<float> t, Matrix<float> y) {
    if (n <= 1)
        return;
    const Panel p{n, k, nb, a, t, y};
    KeptTeam::form(threads, [&](KeptTeam& team) {
        float beta = 0; // where the last reflector has its 1
        for (int c = 0; c < nb; ++c) {
            const int row = p.first_row(c);
            if (c > 0) {
                update_column(p, c);
                a(row - 1, c - 1) = beta;
            }
            tau[c] = larfg(p.length(c), a(row, c), a.column(std::min(row + 1, n - 1), c));
            beta = a(row, c);
            a(row, c) = 1;
            extend_y_and_t(team, p, c, tau[c]);
        }
        a(k + nb - 1, nb - 1) = beta;
    });
    finish_y(p);
}

} // namespace qrv::lapack
