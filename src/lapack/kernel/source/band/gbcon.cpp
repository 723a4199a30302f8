// SGBCON: reciprocal condition number of a band matrix from the factors of SGBTRF and its norm; SPBCON: of a positive
// definite one from the factor of SPBTRF.
#include <algorithm>
#include <utility>

#include "blas/calls.hpp"
#include "lapack/calls/band.hpp"
#include "lapack/kernel/source/band/band_view.hpp"
#include "lapack/kernel/source/norms/condition.hpp"

namespace qrv::lapack {
namespace {

// x := inv(L) x, with the interchanges between the eliminations.
void eliminate(const BandShape& shape, Matrix<const float> a, const int* ipiv, float* x) {
    for (int j = 0; j < shape.n - 1; ++j) {
        std::swap(x[j], x[ipiv[j] - 1]);
        const int below = std::min(shape.kl, shape.n - j - 1);
        kernel::axpy(below, -x[j], a.column(j + 1, j), Vector{x + j + 1});
    }
}

// x := inv(L)^T x, with the interchanges undone between.
void eliminate_transposed(const BandShape& shape, Matrix<const float> a, const int* ipiv, float* x) {
    for (int j = shape.n - 2; j >= 0; --j) {
        const int below = std::min(shape.kl, shape.n - j - 1);
        x[j] -= kernel::dotu(below, a.column(j + 1, j), {x + j + 1});
        std::swap(x[j], x[ipiv[j] - 1]);
    }
}

} // namespace

float gbcon(Norm norm, const BandShape& shape, const float* ab, int ldab, const int* ipiv, float anorm,
            EstimateWork<float> workArrays) {
    const int n = shape.n;
    const auto work = triangle_work(n, workArrays);
    const Matrix<const float> a = band_view(ab, ldab, shape.kv());
    bool sumsKnown = false;
    const auto solve_upper = [&](Op op) {
        const float scale =
            latbs(Uplo::upper, op, Diag::nonUnit, sumsKnown, n, shape.kv(), ab, ldab, work.x, work.sums);
        sumsKnown = true;
        return scale;
    };
    const auto solve = [&](Op op) {
        const bool direct = op == Op::none;
        if (direct && shape.kl > 0)
            eliminate(shape, a, ipiv, work.x);
        const float scale = solve_upper(op);
        if (!direct && shape.kl > 0)
            eliminate_transposed(shape, a, ipiv, work.x);
        return scale;
    };
    return reciprocal_condition(norm, n, anorm, work.x, work.v, work.isgn, solve);
}

float pbcon(Uplo uplo, int n, int kd, const float* ab, int ldab, float anorm, EstimateWork<float> workArrays) {
    const auto work = triangle_work(n, workArrays);
    const bool upper = uplo == Uplo::upper;
    bool sumsKnown = false;
    const auto solve_factor = [&](Op op) {
        const float scale = latbs(uplo, op, Diag::nonUnit, sumsKnown, n, kd, ab, ldab, work.x, work.sums);
        sumsKnown = true;
        return scale;
    };
    const auto solve = [&](Op) { // A is its own adjoint
        const float first = solve_factor(upper ? Op::transpose : Op::none);
        return first * solve_factor(upper ? Op::none : Op::transpose);
    };
    return reciprocal_condition(Norm::one, n, anorm, work.x, work.v, work.isgn, solve);
}

} // namespace qrv::lapack
