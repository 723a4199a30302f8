// SLANGE, CLANGE: norms of a general matrix.
#include "lapack/calls/norms.hpp"
#include "lapack/kernel/source/norms/matrix_norm.hpp"

namespace qrv::lapack {

template <class T>
float lange(Norm norm, int m, int n, Matrix<const T> a, float* work) {
    if (m <= 0 || n <= 0)
        return 0;
    const auto wholeColumn = [m](int) { return StoredRows{0, m, false}; };
    switch (norm) {
    case Norm::maximum:
        return largest_element(n, a, wholeColumn);
    case Norm::one:
        return largest_column_sum(n, a, wholeColumn);
    case Norm::infinity:
        return largest_row_sum(m, n, a, wholeColumn, work);
    default:
        return frobenius_norm(n, a, wholeColumn, {0, 1});
    }
}

template float lange(Norm, int, int, Matrix<const float>, float*);
template float lange(Norm, int, int, Matrix<const SingleComplex>, float*);

} // namespace qrv::lapack
