// SGBTRS: solution of a banded system from the factors of SGBTRF, many right-hand sides on a team.
//
// L is a sequence of interchanges and eliminations; U is a triangle with kl + ku diagonals beside the main one.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/band.hpp"
#include "lapack/kernel/source/band/band_view.hpp"
#include "lapack/kernel/source/band/right_hand_sides.hpp"
#include "lapack/kernel/source/band/triangular_band.hpp"
#include "qrv/service.h"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

struct BandFactors {
    int n, kl, ku;
    Matrix<const float> a; // the dense view of the band
    const int* ipiv;
};

void interchange(int nrhs, Matrix<float> b, int row, int otherRow) {
    if (otherRow != row)
        kernel::swap(nrhs, b.row(row, 0), b.row(otherRow, 0));
}

// B := inv(L) B with the interchanges between.
void eliminate(const BandFactors& f, int nrhs, Matrix<float> b) {
    if (f.kl == 0)
        return;
    for (int j = 0; j < f.n - 1; ++j) {
        interchange(nrhs, b, j, f.ipiv[j] - 1);
        const int below = std::min(f.kl, f.n - j - 1);
        if (nrhs == 1)
            kernel::axpy(below, -b(j, 0), f.a.column(j + 1, j), b.column(j + 1, 0));
        else
            kernel::geru(below, nrhs, -1, f.a.column(j + 1, j), b.row(j, 0), b.block(j + 1, 0));
    }
}

// B := inv(L)^T B, interchanges undone.
void eliminate_transposed(const BandFactors& f, int nrhs, Matrix<float> b) {
    if (f.kl == 0)
        return;
    for (int j = f.n - 2; j >= 0; --j) {
        const int below = std::min(f.kl, f.n - j - 1);
        if (nrhs == 1)
            b(j, 0) -= kernel::dotu(below, f.a.column(j + 1, j), b.column(j + 1, 0));
        else
            kernel::gemv(Op::transpose, below, nrhs, -1, b.block(j + 1, 0), f.a.column(j + 1, j), 1, b.row(j, 0));
        interchange(nrhs, b, j, f.ipiv[j] - 1);
    }
}

void solve(const BandFactors& f, Op op, int nb, int nrhs, Matrix<float> b) {
    const TriangularBand u{Uplo::upper, op, Diag::nonUnit, f.n, f.kl + f.ku, f.a};
    if (op == Op::none)
        eliminate(f, nrhs, b);
    solve_band(u, nb, nrhs, b);
    if (op != Op::none)
        eliminate_transposed(f, nrhs, b);
}

} // namespace

void gbtrs(Op op, const BandShape& shape, int nrhs, const float* ab, int ldab, const int* ipiv, Matrix<float> b) {
    const int n = shape.n, kl = shape.kl, ku = shape.ku;
    if (n == 0 || nrhs == 0)
        return;
    const BandFactors f{n, kl, ku, band_view(ab, ldab, shape.kv()), ipiv};
    const int threads =
        right_hand_side_threads(nrhs, qrv_serv_get_max_threads(), tuning::crossover("SGBTRS", n, kl + ku, nrhs));
    share_right_hand_sides(threads, nrhs, [&](int first, int count) {
        const int nb = std::min(tuning::block_size("SGBTRS", n, kl + ku, count), kl + ku);
        solve(f, op == Op::none ? op : Op::transpose, nb, count, b.block(0, first));
    });
}

} // namespace qrv::lapack
