// SLANTR, CLANTR: norms of a triangular or trapezoidal matrix.
#include "lapack/calls/norms.hpp"
#include "lapack/kernel/source/norms/matrix_norm.hpp"

namespace qrv::lapack {

template <class T>
float lantr(Norm norm, Uplo uplo, Diag diag, int m, int n, Matrix<const T> a, float* work) {
    if (m <= 0 || n <= 0)
        return 0;
    const bool unit = diag == Diag::unit;
    const auto triangle = [=](int j) {
        const int first = uplo == Uplo::upper ? 0 : smaller(unit ? j + 1 : j, m);
        const int last = uplo == Uplo::upper ? smaller(unit ? j : j + 1, m) : m;
        return StoredRows{first, last, unit && j < m};
    };
    switch (norm) {
    case Norm::maximum:
        return largest_element(n, a, triangle);
    case Norm::one:
        return largest_column_sum(n, a, triangle);
    case Norm::infinity:
        return largest_row_sum(m, n, a, triangle, work);
    default:
        return frobenius_norm(n, a, triangle,
                              unit ? ScaledSquares{1, static_cast<float>(smaller(m, n))} : ScaledSquares{0, 1});
    }
}

template float lantr(Norm, Uplo, Diag, int, int, Matrix<const float>, float*);
template float lantr(Norm, Uplo, Diag, int, int, Matrix<const SingleComplex>, float*);

} // namespace qrv::lapack
