// SPBSV: solution of a positive definite band system by Cholesky factorization.
#include "lapack/calls/band.hpp"

namespace qrv::lapack {

int pbsv(Uplo uplo, int n, int kd, int nrhs, float* ab, int ldab, Matrix<float> b) {
    const int info = pbtrf(uplo, n, kd, ab, ldab);
    if (info == 0)
        pbtrs(uplo, n, kd, nrhs, ab, ldab, b);
    return info;
}

} // namespace qrv::lapack
