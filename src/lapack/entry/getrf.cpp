// Framed entries of the LU factorization.
#include "lapack/lapack.hpp"
#include "service/entry.hpp"

void SGETRF(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info) {
    qrv::framed(qrv_lapack_sgetrf, m, n, a, lda, ipiv, info);
}
void CGETRF(const int* m, const int* n, qrv_complex* a, const int* lda, int* ipiv, int* info) {
    qrv::framed(qrv_lapack_cgetrf, m, n, a, lda, ipiv, info);
}
