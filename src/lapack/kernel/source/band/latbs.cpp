// SLATBS: solution of a triangular band system, scaled so that it does not overflow. The method is told in
// triangular/scaled_solve.hpp.
#include <algorithm>

#include "lapack/calls/band.hpp"
#include "lapack/kernel/source/band/band_view.hpp"
#include "lapack/kernel/source/triangular/scaled_solve.hpp"

namespace qrv::lapack {
namespace {

struct BandTriangle {
    using Element = float;

    Uplo uplo;
    Diag diag;
    int n, kd;
    Matrix<const float> a;  // the dense view
    Matrix<const float> ab; // as stored

    float diagonal(int j) const { return a(j, j); }
    StoredColumn<float> column(int j) const {
        const int first = uplo == Uplo::upper ? std::max(0, j - kd) : j + 1;
        return {first, uplo == Uplo::upper ? j - first : std::min(kd, n - 1 - j), a.block(first, j).data};
    }
    void solve(Op op, float* x) const { kernel::tbsv(uplo, op, diag, n, kd, ab, Vector{x}); }
};

} // namespace

float latbs(Uplo uplo, Op op, Diag diag, bool cnormGiven, int n, int kd, const float* ab, int ldab, float* x,
            float* cnorm) {
    const BandTriangle a{uplo, diag, n, kd, band_view(ab, ldab, uplo == Uplo::upper ? kd : 0), {ab, ldab}};
    return scaled_solve(a, op == Op::none ? op : Op::transpose, cnormGiven, x, cnorm);
}

} // namespace qrv::lapack
