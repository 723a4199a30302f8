// SPOTRI, CPOTRI: inverse of a positive definite matrix from the factor of SPOTRF: the inverse of the factor, times its
// own adjoint. Only the triangle of the factor is read and overwritten.
#include "lapack/calls/cholesky.hpp"
#include "lapack/calls/triangular.hpp"

namespace qrv::lapack {

template <class T>
int potri(Uplo uplo, int n, Matrix<T> a) {
    const int info = trtri(uplo, Diag::nonUnit, n, a);
    if (info == 0)
        lauum(uplo, n, a);
    return info;
}

template int potri(Uplo, int, Matrix<float>);
template int potri(Uplo, int, Matrix<SingleComplex>);

} // namespace qrv::lapack
