/* LAPACK: triangular systems, inverses and condition numbers. Calling conventions: see qrv/native.h. */

/* Example. A triangular system:
 *
 *     const int n = 2, one = 1;
 *     const float a[] = {2, 1, 0, 4};
 *     float b[] = {2, 9};
 *     int info;
 *     STRTRS("L", "N", "N", &n, &one, a, &n, b, &n, &info);
 *     return info == 0 && b[0] == 1 && b[1] == 2;
 */
#ifndef QRV_NATIVE_TRIANGULAR_H
#define QRV_NATIVE_TRIANGULAR_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Solves op(A)*y = s*x for a triangular A of order n, with a scale s that keeps y from overflow, and overwrites x with
 * y. A NaN on the diagonal counts as 0.
 *
 * normin  'Y': cnorm holds the sums of |re| + |im| over each column of A without its diagonal element; 'N': they are
 *         computed and stored there
 * scale   set to s, at most 1 unless a column of A has a sum near overflow; with 0 A is singular, and y solves
 *         op(A)*y = 0, or s is too small for a float
 * cnorm   n floats
 * Reported: 1, 2, 3, 4, 5, 7. *info is 0 otherwise. */
QRV_API void SLATRS(const char* uplo, const char* trans, const char* diag, const char* normin, const int* n,
                    const float* a, const int* lda, float* x, float* scale, float* cnorm, int* info);
QRV_API void CLATRS(const char* uplo, const char* trans, const char* diag, const char* normin, const int* n,
                    const qrv_complex* a, const int* lda, qrv_complex* x, float* scale, float* cnorm, int* info);

/* A := inv(A) for a triangular A of order n, column by column; zeros on the diagonal are not noticed.
 * Reported: 1, 2, 3, 5. */
QRV_API void STRTI2(const char* uplo, const char* diag, const int* n, float* a, const int* lda, int* info);
QRV_API void CTRTI2(const char* uplo, const char* diag, const int* n, qrv_complex* a, const int* lda, int* info);

/* A := inv(A) for a triangular A of order n.
 *
 * info  i > 0: a(i, i) is exactly 0; A is singular and unchanged
 * Reported: 1, 2, 3, 5. */
QRV_API void STRTRI(const char* uplo, const char* diag, const int* n, float* a, const int* lda, int* info);
QRV_API void CTRTRI(const char* uplo, const char* diag, const int* n, qrv_complex* a, const int* lda, int* info);

/* Solves op(A)*X = B for a triangular A of order n and the n x nrhs matrix B, which is overwritten with X;
 * ldb >= max(1, n).
 *
 * info  i > 0: a(i, i) is exactly 0; A is singular and B unchanged
 * Reported: 1, 2, 3, 4, 5, 7, 9. */
QRV_API void STRTRS(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs,
                    const float* a, const int* lda, float* b, const int* ldb, int* info);
QRV_API void CTRTRS(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs,
                    const qrv_complex* a, const int* lda, qrv_complex* b, const int* ldb, int* info);

/* Reciprocal condition number of a triangular A of order n, 1 / (norm(A)*norm(inv(A))), with an estimate of the second
 * norm that is at most the norm itself.
 *
 * norm   '1', 'O': of the 1-norms; 'I': of the infinity norms
 * rcond  set to the reciprocal condition number; 0 if A is singular to working precision, 1 if n is 0
 * work   3*n floats and iwork n ints; for CTRCON 2*n elements and rwork n floats
 * Reported: 1, 2, 3, 4, 6. */
QRV_API void STRCON(const char* norm, const char* uplo, const char* diag, const int* n, const float* a, const int* lda,
                    float* rcond, float* work, int* iwork, int* info);
QRV_API void CTRCON(const char* norm, const char* uplo, const char* diag, const int* n, const qrv_complex* a,
                    const int* lda, float* rcond, qrv_complex* work, float* rwork, int* info);

#ifdef __cplusplus
}
#endif

#endif
