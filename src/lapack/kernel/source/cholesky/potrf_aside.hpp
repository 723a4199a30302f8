// A triangle factored in a copy whose columns do not share sets of the caches (goes_aside in potrf_route.hpp), where
// there is memory for it.
#pragma once

#include "lapack/calls/norms.hpp"
#include "lapack/kernel/source/cholesky/potrf_route.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {

// factor(x) for the triangle or for its copy, which then comes back as factor left it.
template <class T, class Factor>
FactorResult factor_aside(Uplo uplo, int n, Matrix<T> a, const Factor& factor) {
    if (!goes_aside(uplo, n, a.ld, sizeof(T)))
        return factor(a);
    const int ld = dimension_aside(n, sizeof(T));
    const WorkArea<T> area(nullptr, 0, std::int64_t{ld} * n);
    if (!area.data())
        return factor(a);
    const Matrix<T> copy{area.data(), ld};
    const Part part = uplo == Uplo::upper ? Part::upper : Part::lower;
    lacpy<T>(part, n, n, a, copy);
    const FactorResult result = factor(copy);
    lacpy<T>(part, n, n, copy, a);
    return result;
}

} // namespace qrv::lapack
