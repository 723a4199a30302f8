// Guarded entries of BLAS level 3: the argument check, then the decision routine.
#include "blas/blas.hpp"
#include "qrv/native.h"
#include "service/entry.hpp"

using namespace qrv;

int SGEMM(const char* transa, const char* transb, const int* m, const int* n, const int* k, const float* alpha,
          const float* a, const int* lda, const float* b, const int* ldb, const float* beta, float* c, const int* ldc) {
    return guarded<entry_row("SGEMM")>(qrv_blas_sgemm, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
int CGEMM(const char* transa, const char* transb, const int* m, const int* n, const int* k, const qrv_complex* alpha,
          const qrv_complex* a, const int* lda, const qrv_complex* b, const int* ldb, const qrv_complex* beta,
          qrv_complex* c, const int* ldc) {
    return guarded<entry_row("CGEMM")>(qrv_blas_cgemm, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
