// SLANSY: norms of a symmetric matrix, of which one triangle is stored.
#include <cmath>

#include "lapack/calls/norms.hpp"
#include "lapack/kernel/source/norms/matrix_norm.hpp"

namespace qrv::lapack {
namespace {

// What a triangle says of both: an element beside the diagonal counts in the sums of its row and of its column.
float largest_symmetric_sum(Uplo uplo, int n, Matrix<const float> a, float* sums) {
    for (int i = 0; i < n; ++i)
        sums[i] = std::fabs(a(i, i));
    for (int j = 0; j < n; ++j) {
        const int first = uplo == Uplo::upper ? 0 : j + 1, last = uplo == Uplo::upper ? j : n;
        for (int i = first; i < last; ++i) {
            sums[i] += std::fabs(a(i, j));
            sums[j] += std::fabs(a(i, j));
        }
    }
    Largest largest;
    for (int i = 0; i < n; ++i)
        largest.take(sums[i]);
    return largest.value();
}

} // namespace

float lansy(Norm norm, Uplo uplo, int n, Matrix<const float> a, float* work) {
    if (n <= 0)
        return 0;
    const bool upper = uplo == Uplo::upper;
    const auto triangle = [=](int j) { return StoredRows{upper ? 0 : j, upper ? j + 1 : n, false}; };
    switch (norm) {
    case Norm::maximum:
        return largest_element(n, a, triangle);
    case Norm::one:
    case Norm::infinity:
        return largest_symmetric_sum(uplo, n, a, work);
    default: {
        ScaledSquares beside{0, 1};
        for (int j = 0; j < n; ++j)
            beside = upper ? lassq(j, &a(0, j), 1, beside) : lassq(n - j - 1, &a(j, j) + 1, 1, beside);
        return symmetric_frobenius_norm(beside, n, a.data, static_cast<int>(a.ld) + 1);
    }
    }
}

} // namespace qrv::lapack
