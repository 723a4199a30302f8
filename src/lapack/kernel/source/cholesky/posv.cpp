// SPOSV, CPOSV: solution of a positive definite system by Cholesky factorization.
#include "blas/complex.hpp"
#include "lapack/calls/cholesky.hpp"

namespace qrv::lapack {

template <class T>
int posv(Uplo uplo, int n, int nrhs, Matrix<T> a, Matrix<T> b) {
    const int info = potrf(uplo, n, a);
    if (info == 0)
        potrs<T>(uplo, n, nrhs, a, b);
    return info;
}

template int posv(Uplo, int, int, Matrix<float>, Matrix<float>);
template int posv(Uplo, int, int, Matrix<SingleComplex>, Matrix<SingleComplex>);

} // namespace qrv::lapack
