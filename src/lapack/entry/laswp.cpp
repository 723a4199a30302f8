// Framed entries of the row interchanges.
#include "lapack/lapack.hpp"
#include "service/entry.hpp"

void SLASWP(const int* n, float* a, const int* lda, const int* k1, const int* k2, const int* ipiv, const int* incx) {
    qrv::framed(qrv_lapack_slaswp, n, a, lda, k1, k2, ipiv, incx);
}
void CLASWP(const int* n, qrv_complex* a, const int* lda, const int* k1, const int* k2, const int* ipiv,
            const int* incx) {
    qrv::framed(qrv_lapack_claswp, n, a, lda, k1, k2, ipiv, incx);
}
