// STRTRS, CTRTRS: solution of a triangular system with many right-hand sides, after a test for a singular matrix.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/triangular.hpp"

namespace qrv::lapack {

template <class T>
int trtrs(Uplo uplo, Op op, Diag diag, int n, int nrhs, Matrix<const T> a, Matrix<T> b) {
    if (diag == Diag::nonUnit)
        if (const int zero = zero_on_diagonal(n, a))
            return zero;
    if (n > 0)
        blas::trsm(Side::left, uplo, op, diag, n, nrhs, scalar<T>(1), a, b);
    return 0;
}

template int trtrs(Uplo, Op, Diag, int, int, Matrix<const float>, Matrix<float>);
template int trtrs(Uplo, Op, Diag, int, int, Matrix<const SingleComplex>, Matrix<SingleComplex>);

} // namespace qrv::lapack
