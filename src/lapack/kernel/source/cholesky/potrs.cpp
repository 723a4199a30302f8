// SPOTRS, CPOTRS: solution of a positive definite system from the factor of SPOTRF.
#include "blas/calls.hpp"
#include "lapack/calls/cholesky.hpp"
#include "lapack/elements.hpp"

namespace qrv::lapack {

template <class T>
void potrs(Uplo uplo, int n, int nrhs, Matrix<const T> a, Matrix<T> b) {
    const bool upper = uplo == Uplo::upper;
    const Op first = upper ? adjoint<T> : Op::none, second = upper ? Op::none : adjoint<T>;
    blas::trsm(Side::left, uplo, first, Diag::nonUnit, n, nrhs, scalar<T>(1), a, b);
    blas::trsm(Side::left, uplo, second, Diag::nonUnit, n, nrhs, scalar<T>(1), a, b);
}

template void potrs(Uplo, int, int, Matrix<const float>, Matrix<float>);
template void potrs(Uplo, int, int, Matrix<const SingleComplex>, Matrix<SingleComplex>);

} // namespace qrv::lapack
