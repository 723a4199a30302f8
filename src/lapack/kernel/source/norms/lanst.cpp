// SLANST: norms of a symmetric tridiagonal matrix.
#include <cmath>

#include "lapack/calls/norms.hpp"
#include "lapack/kernel/source/norms/matrix_norm.hpp"

namespace qrv::lapack {
namespace {

float element_or_zero(const float* e, int i, int n) {
    return i >= 0 && i < n - 1 ? std::fabs(e[i]) : 0;
}

} // namespace

float lanst(Norm norm, int n, const float* d, const float* e) {
    if (n <= 0)
        return 0;
    Largest largest;
    switch (norm) {
    case Norm::maximum:
        largest.take(n, d);
        largest.take(n - 1, e);
        return largest.value();
    case Norm::one:
    case Norm::infinity:
        for (int i = 0; i < n; ++i)
            largest.take(element_or_zero(e, i - 1, n) + std::fabs(d[i]) + element_or_zero(e, i, n));
        return largest.value();
    default:
        return symmetric_frobenius_norm(lassq(n - 1, e, 1, {0, 1}), n, d, 1);
    }
}

} // namespace qrv::lapack
