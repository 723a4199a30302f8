/* A module as interpreters load them: a call with a bad argument, and, if it is built so, a reporter of its own. */
#include <stddef.h>

void cblas_sgemm(int order, int transa, int transb, int m, int n, int k, float alpha, const float* a, int lda,
                 const float* b, int ldb, float beta, float* c, int ldc);
void sgetrf_(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info);

int reported; /* the position that arrived here */

#ifdef OWN_REPORTER
void xerbla_(const char* name, const int* info, size_t length) {
    if (length == 6 && name[0] == 'S')
        reported = *info;
}
#endif

void call_blas(void) {
    float x = 1;
    cblas_sgemm(102, 111, 111, 1, -1, 1, 1, &x, 1, &x, 1, 0, &x, 1);
}
void call_lapack(void) {
    const int n = 1, lda = 0;
    float x = 1;
    int pivot, info;
    sgetrf_(&n, &n, &x, &lda, &pivot, &info);
}
