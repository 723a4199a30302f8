// SGBSV: solution of a general band system by LU factorization.
#include "lapack/calls/band.hpp"

namespace qrv::lapack {

int gbsv(const BandShape& shape, int nrhs, float* ab, int ldab, int* ipiv, Matrix<float> b) {
    const int info = gbtrf(shape, ab, ldab, ipiv);
    if (info == 0)
        gbtrs(Op::none, shape, nrhs, ab, ldab, ipiv, b);
    return info;
}

} // namespace qrv::lapack
