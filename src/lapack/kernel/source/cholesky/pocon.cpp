// SPOCON, CPOCON: reciprocal condition number of a positive definite matrix from the factor of SPOTRF and its norm. The
// one norm and the infinity norm are the same here, and so is the inverse of the adjoint.
#include "lapack/calls/cholesky.hpp"
#include "lapack/calls/triangular.hpp"
#include "lapack/elements.hpp"
#include "lapack/kernel/source/norms/condition.hpp"

namespace qrv::lapack {

template <class T>
float pocon(Uplo uplo, int n, Matrix<const T> a, float anorm, EstimateWork<T> workArrays) {
    const auto work = triangle_work(n, workArrays);
    const bool upper = uplo == Uplo::upper;
    const Op first = upper ? adjoint<T> : Op::none, second = upper ? Op::none : adjoint<T>;
    bool sumsKnown = false;
    const auto solve_factor = [&](Op op) {
        const float scale = latrs(uplo, op, Diag::nonUnit, sumsKnown, n, a, work.x, work.sums);
        sumsKnown = true;
        return scale;
    };
    const auto solve = [&](Op) { // A is its own adjoint
        const float scale = solve_factor(first);
        return scale * solve_factor(second);
    };
    return reciprocal_condition(Norm::one, n, anorm, work.x, work.v, work.isgn, solve);
}

template float pocon(Uplo, int, Matrix<const float>, float, EstimateWork<float>);
template float pocon(Uplo, int, Matrix<const SingleComplex>, float, EstimateWork<SingleComplex>);

} // namespace qrv::lapack
