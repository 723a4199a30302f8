// SGESV, CGESV: solution of a general system by LU factorization.
#include "lapack/calls/lu.hpp"

namespace qrv::lapack {

template <class T>
int gesv(int n, int nrhs, Matrix<T> a, int* ipiv, Matrix<T> b) {
    const int info = getrf(n, n, a, ipiv);
    if (info == 0)
        getrs<T>(Op::none, n, nrhs, a, ipiv, b);
    return info;
}

template int gesv(int, int, Matrix<float>, int*, Matrix<float>);
template int gesv(int, int, Matrix<SingleComplex>, int*, Matrix<SingleComplex>);

} // namespace qrv::lapack
