// SLATRD: reflectors for the first columns of a lower triangle, or the last ones of an upper triangle, without the
// update of the rest.
//
// With the vectors V of the reflectors so far, the reduced matrix is A - V W' - W V'. Only the column that comes next
// is brought up to date, from both sums, and the product of the rest with the new vector is corrected for them:
//
//   x = A v - V (W' v) - W (V' v),  w = tau x - (tau^2 x' v / 2) v
#include <initializer_list>
#include <utility>

#include "blas/calls.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/calls/symmetric.hpp"

namespace qrv::lapack {
namespace {

// A reflector on the last columns of the part that is left: `earlier` columns of V and W, rows of that part only.
struct Column {
    int m, earlier;
    Matrix<const float> rest, v, w;
    Vector<float> reflector, x;
    Vector<float> products; // `earlier` floats
};

void multiply(Uplo uplo, float tau, const Column& c) {
    const Vector<const float> v = c.reflector;
    blas::hemv(uplo, c.m, 1.0F, c.rest, v, 0.0F, c.x);
    for (const auto& [first, second] : {std::pair{c.w, c.v}, std::pair{c.v, c.w}}) {
        blas::gemv(Op::transpose, c.m, c.earlier, 1.0F, first, v, 0.0F, c.products);
        blas::gemv(Op::none, c.m, c.earlier, -1.0F, second, c.products, 1.0F, c.x);
    }
    kernel::scal(c.m, tau, c.x);
    blas::axpy(c.m, -0.5F * tau * blas::dotc(c.m, c.x, v), v, c.x);
}

// x -= V w + W v for rows v and w of V and W.
void bring_up_to_date(int m, int earlier, Matrix<const float> v, Matrix<const float> w, Vector<const float> vRow,
                      Vector<const float> wRow, Vector<float> x) {
    blas::gemv(Op::none, m, earlier, -1.0F, v, wRow, 1.0F, x);
    blas::gemv(Op::none, m, earlier, -1.0F, w, vRow, 1.0F, x);
}

} // namespace

void latrd(Uplo uplo, int n, int nb, Matrix<float> a, float* e, float* tau, Matrix<float> w) {
    if (uplo == Uplo::upper) {
        for (int i = n - 1; i >= n - nb && i >= 0; --i) {
            const int k = i - n + nb, earlier = n - 1 - i; // column of W, those behind it
            const Matrix<float> v = a.block(0, i + 1), x = w.block(0, k + 1);
            bring_up_to_date(i + 1, earlier, v, x, v.row(i, 0), x.row(i, 0), a.column(0, i));
            if (i == 0)
                continue;
            tau[i - 1] = larfg(i, a(i - 1, i), a.column(0, i));
            e[i - 1] = a(i - 1, i);
            a(i - 1, i) = 1;
            multiply(uplo, tau[i - 1], {i, earlier, a, v, x, a.column(0, i), w.column(0, k), w.column(i + 1, k)});
        }
    } else {
        for (int i = 0; i < nb && i < n; ++i) {
            const int m = n - 1 - i;
            bring_up_to_date(m + 1, i, a.block(i, 0), w.block(i, 0), a.row(i, 0), w.row(i, 0), a.column(i, i));
            if (m == 0)
                continue;
            tau[i] = larfg(m, a(i + 1, i), a.column(smaller(i + 2, n - 1), i));
            e[i] = a(i + 1, i);
            a(i + 1, i) = 1;
            multiply(uplo, tau[i],
                     {m, i, a.block(i + 1, i + 1), a.block(i + 1, 0), w.block(i + 1, 0), a.column(i + 1, i),
                      w.column(i + 1, i), w.column(0, i)});
        }
    }
}

} // namespace qrv::lapack
