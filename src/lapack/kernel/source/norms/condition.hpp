// The norm of an inverse that is known by solves only: what the condition estimates of all families share.
#pragma once

#include "blas/calls.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/elements.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {

// Estimate of norm(inv(A)), for the one norm or the infinity norm of a matrix of order n. solve(op) overwrites x with
// scale * inv(op(A)) * x and gives scale; for the adjoint it is called with that of the element type. Result 0: some
// solution is too large to be scaled back, its largest element times `smallest` above the scale.
//
// x, v: n elements each; isgn: n ints for real elements.
template <class T, class Solve>
float inverse_norm(Norm norm, int n, T* x, T* v, int* isgn, float smallest, const Solve& solve) {
    const int direct = norm == Norm::one ? 1 : 2; // the request that is a product with inv(A) itself
    float estimate = 0;
    int request = 0, state[3] = {};
    for (;;) {
        lacn2(n, v, x, isgn, &estimate, &request, state);
        if (request == 0)
            return estimate;
        const float scale = solve(request == direct ? Op::none : adjoint<T>);
        if (scale != 1) {
            const float largest = abs1(x[kernel::iamax(n, Vector{x}) - 1]);
            if (scale < largest * smallest || scale == 0)
                return 0;
            rscl(n, scale, x, 1);
        }
    }
}

// The reciprocal condition number of a matrix of norm `anorm`, from solves as above: 1 for an empty one, 0 for a norm
// of 0 and where the estimate fails.
template <class T, class Solve>
float reciprocal_condition(Norm norm, int n, float anorm, T* x, T* v, int* isgn, const Solve& solve) {
    if (n == 0)
        return 1;
    if (anorm == 0)
        return 0;
    const float inverseNorm = inverse_norm(norm, n, x, v, isgn, machine::safeMinimum, solve);
    return inverseNorm != 0 ? 1 / inverseNorm / anorm : 0;
}

} // namespace qrv::lapack
