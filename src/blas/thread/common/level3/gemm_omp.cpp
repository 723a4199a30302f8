// Decision routine of GEMM. It runs on one thread so far.
#include "blas/blas.hpp"
#include "blas/kernel/kernels.hpp"

void qrv_blas_sgemm(const char* transa, const char* transb, const int* m, const int* n, const int* k,
                    const float* alpha, const float* a, const int* lda, const float* b, const int* ldb,
                    const float* beta, float* c, const int* ldc) {
    if (*m <= 0 || *n <= 0)
        return;
    qrv_blas_sgemm_kernel(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
