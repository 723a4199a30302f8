// STRCON, CTRCON: reciprocal condition number of a triangular matrix, from its norm and an estimate of its inverse's.
#include "lapack/calls/norms.hpp"
#include "lapack/calls/triangular.hpp"
#include "lapack/kernel/source/norms/condition.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {

template <class T>
float trcon(Norm norm, Uplo uplo, Diag diag, int n, Matrix<const T> a, EstimateWork<T> workArrays) {
    if (n == 0)
        return 1;
    const auto work = triangle_work(n, workArrays);
    const float anorm = lantr(norm, uplo, diag, n, n, a, work.sums);
    if (!(anorm > 0))
        return 0;
    bool sumsKnown = false;
    const auto solve = [&](Op op) {
        const float scale = latrs(uplo, op, diag, sumsKnown, n, a, work.x, work.sums);
        sumsKnown = true;
        return scale;
    };
    const float smallest = machine::safeMinimum * static_cast<float>(n);
    const float inverseNorm = inverse_norm(norm, n, work.x, work.v, work.isgn, smallest, solve);
    return inverseNorm != 0 ? 1 / anorm / inverseNorm : 0;
}

template float trcon(Norm, Uplo, Diag, int, Matrix<const float>, EstimateWork<float>);
template float trcon(Norm, Uplo, Diag, int, Matrix<const SingleComplex>, EstimateWork<SingleComplex>);

} // namespace qrv::lapack
