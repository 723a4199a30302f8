// SGECON, CGECON: reciprocal condition number of a general matrix from the factors of SGETRF and its norm.
//
// A solve with A = P L U is one with L and one with U. The interchanges are left out: they change neither the one norm
// nor the infinity norm.
#include "lapack/calls/lu.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/triangular.hpp"
#include "lapack/kernel/source/norms/condition.hpp"

namespace qrv::lapack {

template <class T>
float gecon(Norm norm, int n, Matrix<const T> a, float anorm, EstimateWork<T> workArrays) {
    const auto work = gecon_work(n, workArrays);
    bool sumsKnown = false;
    const auto solve_lower = [&](Op op) {
        return latrs(Uplo::lower, op, Diag::unit, sumsKnown, n, a, work.x, work.sumsL);
    };
    const auto solve_upper = [&](Op op) {
        return latrs(Uplo::upper, op, Diag::nonUnit, sumsKnown, n, a, work.x, work.sumsU);
    };
    const auto solve = [&](Op op) {
        const bool direct = op == Op::none;
        const float first = direct ? solve_lower(op) : solve_upper(op);
        const float second = direct ? solve_upper(op) : solve_lower(op);
        sumsKnown = true;
        return first * second;
    };
    return reciprocal_condition(norm, n, anorm, work.x, work.v, work.isgn, solve);
}

template float gecon(Norm, int, Matrix<const float>, float, EstimateWork<float>);
template float gecon(Norm, int, Matrix<const SingleComplex>, float, EstimateWork<SingleComplex>);

} // namespace qrv::lapack
