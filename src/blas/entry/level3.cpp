// Guarded entries of BLAS level 3: the argument check, then the decision routine.
#include "blas/blas.hpp"
#include "qrv/native.h"
#include "service/entry.hpp"

int SGEMM(const char* transa, const char* transb, const int* m, const int* n, const int* k, const float* alpha,
          const float* a, const int* lda, const float* b, const int* ldb, const float* beta, float* c, const int* ldc) {
    return qrv::guarded<qrv::entry_row("SGEMM")>(qrv_blas_sgemm, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta,
                                                 c, ldc);
}
