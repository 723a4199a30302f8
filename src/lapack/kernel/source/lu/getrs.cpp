// SGETRS, CGETRS: solution of a general system from the factors of SGETRF, A = P L U.
#include "lapack/calls/lu.hpp"

#include "blas/calls.hpp"

namespace qrv::lapack {

template <class T>
void getrs(Op op, int n, int nrhs, Matrix<const T> a, const int* ipiv, Matrix<T> b) {
    if (n == 0 || nrhs == 0)
        return;
    const T one = scalar<T>(1);
    if (op == Op::none) {
        laswp(nrhs, b, 1, n, ipiv);
        blas::trsm(Side::left, Uplo::lower, op, Diag::unit, n, nrhs, one, a, b);
        blas::trsm(Side::left, Uplo::upper, op, Diag::nonUnit, n, nrhs, one, a, b);
    } else {
        blas::trsm(Side::left, Uplo::upper, op, Diag::nonUnit, n, nrhs, one, a, b);
        blas::trsm(Side::left, Uplo::lower, op, Diag::unit, n, nrhs, one, a, b);
        laswp(nrhs, b, 1, n, ipiv, -1);
    }
}

template void getrs(Op, int, int, Matrix<const float>, const int*, Matrix<float>);
template void getrs(Op, int, int, Matrix<const SingleComplex>, const int*, Matrix<SingleComplex>);

} // namespace qrv::lapack
