// SLATRD: reflectors for the first columns of a lower triangle, or the last ones of an upper triangle, without the
// update of the rest.
//
// With the vectors V of the reflectors so far, the reduced matrix is A - V W' - W V'. Only the column that comes next
// is brought up to date, from both sums, and the product of the rest with the new vector is corrected for them:
//
//   x = A v - V (W' v) - W (V' v),  w = tau x - (tau^2 x' v / 2) v
//
// On a team the product A v is shared out (latrd_omp.cpp).
#include <algorithm>

#include "lapack/calls/reflectors.hpp"
#include "lapack/calls/symmetric.hpp"
#include "lapack/kernel/source/symmetric/sytrd.hpp"
#include "lapack/workspace.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

// x := A v - V (W' v) - W (V' v)
struct Product {
    KeptTeam* team; // if there is one
    PanelPlan plan;
    Matrix<float> results; // of a team: a column for each thread

    void operator()(const PanelColumn& c) const {
        const Vector<const float> v = c.reflector;
        const bool all = team && plan == PanelPlan::all;
        if (team)
            multiply_on_team(*team, plan, c, results);
        else
            blas::hemv(c.uplo, c.m, 1.0F, c.rest, v, 0.0F, c.x);
        if (!all)
            kernel::gemv(Op::transpose, c.m, c.earlier, 1.0F, c.w, v, 0.0F, c.products);
        kernel::gemv(Op::none, c.m, c.earlier, -1.0F, c.v, c.products, 1.0F, c.x);
        if (all)
            kernel::copy(c.earlier, results.column(0, 0), c.products);
        else
            kernel::gemv(Op::transpose, c.m, c.earlier, 1.0F, c.v, v, 0.0F, c.products);
        kernel::gemv(Op::none, c.m, c.earlier, -1.0F, c.w, c.products, 1.0F, c.x);
    }
};

void make_w(float tau, const PanelColumn& c) {
    kernel::scal(c.m, tau, c.x);
    kernel::axpy(c.m, -0.5F * tau * kernel::dotu(c.m, c.x, c.reflector), c.reflector, c.x);
}

// x -= V w + W v for rows v and w of V and W.
void bring_up_to_date(int m, int earlier, Matrix<const float> v, Matrix<const float> w, Vector<const float> vRow,
                      Vector<const float> wRow, Vector<float> x) {
    kernel::gemv(Op::none, m, earlier, -1.0F, v, wRow, 1.0F, x);
    kernel::gemv(Op::none, m, earlier, -1.0F, w, vRow, 1.0F, x);
}

void reduce_upper(int n, int nb, Matrix<float> a, float* e, float* tau, Matrix<float> w, const Product& product) {
    for (int i = n - 1; i >= n - nb && i >= 0; --i) {
        const int k = i - n + nb, earlier = n - 1 - i; // column of W, those behind it
        const Matrix<float> v = a.block(0, i + 1), x = w.block(0, k + 1);
        bring_up_to_date(i + 1, earlier, v, x, v.row(i, 0), x.row(i, 0), a.column(0, i));
        if (i == 0)
            continue;
        tau[i - 1] = larfg(i, a(i - 1, i), a.column(0, i));
        e[i - 1] = a(i - 1, i);
        a(i - 1, i) = 1;
        const PanelColumn column{Uplo::upper,       i + 1, i, earlier, a, v, x, a.column(0, i), w.column(0, k),
                                 w.column(i + 1, k)};
        product(column);
        make_w(tau[i - 1], column);
    }
}

void reduce_lower(int n, int nb, Matrix<float> a, float* e, float* tau, Matrix<float> w, const Product& product) {
    for (int i = 0; i < nb && i < n; ++i) {
        const int m = n - 1 - i;
        bring_up_to_date(m + 1, i, a.block(i, 0), w.block(i, 0), a.row(i, 0), w.row(i, 0), a.column(i, i));
        if (m == 0)
            continue;
        tau[i] = larfg(m, a(i + 1, i), a.column(smaller(i + 2, n - 1), i));
        e[i] = a(i + 1, i);
        a(i + 1, i) = 1;
        const PanelColumn column{Uplo::lower,
                                 i + 1,
                                 m,
                                 i,
                                 a.block(i + 1, i + 1),
                                 a.block(i + 1, 0),
                                 w.block(i + 1, 0),
                                 a.column(i + 1, i),
                                 w.column(i + 1, i),
                                 w.column(0, i)};
        product(column);
        make_w(tau[i], column);
    }
}

} // namespace

void latrd(int threads, Uplo uplo, int n, int nb, Matrix<float> a, float* e, float* tau, Matrix<float> w) {
    if (n <= 0)
        return;
    if (n > tuning::crossover("SLATRD", n))
        threads = 1;
    const WorkArea<float> results(nullptr, 0, threads > 1 ? std::int64_t{n} * threads : 0);
    const PanelPlan plan =
        tuning::value(19, "SLATRD", "", {n, threads}) == 0 ? PanelPlan::productAlone : PanelPlan::all;
    const auto reduce = [&](KeptTeam* team) {
        (uplo == Uplo::upper ? reduce_upper : reduce_lower)(n, nb, a, e, tau, w, {team, plan, {results.data(), n}});
    };
    if (results.data())
        KeptTeam::form(threads, [&](KeptTeam& team) { reduce(&team); });
    else
        reduce(nullptr);
}

} // namespace qrv::lapack
