/* LAPACK: Cholesky factorization, and solves, inverses and condition numbers from it. Calling conventions: see
 * qrv/native.h.
 *
 * Of a matrix A of order n only one triangle is read and written, `uplo` 'U' the upper one, 'L' the lower one;
 * lda >= max(1, n). Of a Hermitian matrix the imaginary parts of the diagonal are not looked at. */

/* Example. A positive definite system:
 *
 *     const int n = 2, one = 1;
 *     float a[] = {4, 2, 0, 5}, b[] = {8, 12};
 *     int info;
 *     SPOTRF("L", &n, a, &n, &info);
 *     if (info == 0)
 *         SPOTRS("L", &n, &one, a, &n, b, &n, &info);
 *     return info == 0 && fabsf(b[0] - 1) < 1e-5f && fabsf(b[1] - 2) < 1e-5f;
 */
#ifndef QRV_NATIVE_CHOLESKY_H
#define QRV_NATIVE_CHOLESKY_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Cholesky factorization of a symmetric or Hermitian positive definite matrix: A = U^H*U for uplo 'U', A = L*L^H for
 * 'L', with a positive diagonal of the factor. May use all threads of the budget and calls the progress routine after
 * each diagonal block of a large matrix; if that asks to stop, A stays as it is then, with *info = 0.
 *
 * a, lda  the triangle of A, overwritten by U or L
 * info    i > 0: the leading block of order i is not positive definite (or has a NaN in its last pivot); the factor of
 *         what is before it may not be complete
 * Reported: 1, 2, 4.
 *
 * Source: G. Golub, C. Van Loan, Matrix Computations, 4.2. */
QRV_API void SPOTRF(const char* uplo, const int* n, float* a, const int* lda, int* info);
QRV_API void CPOTRF(const char* uplo, const int* n, qrv_complex* a, const int* lda, int* info);

/* The same for small matrices. info > 0: the columns before that one are
 * factored, and its pivot is in its place on the diagonal.
 * Reported: 1, 2, 4. */
QRV_API void SPOTF2(const char* uplo, const int* n, float* a, const int* lda, int* info);
QRV_API void CPOTF2(const char* uplo, const int* n, qrv_complex* a, const int* lda, int* info);

/* Solution of A*X = B from the factor of SPOTRF.
 *
 * n, nrhs  order of A, columns of B; at least 0
 * a, lda   the factor
 * b, ldb   B, n x nrhs, overwritten by X; ldb >= max(1, n)
 * Reported: 1, 2, 3, 5, 7. */
QRV_API void SPOTRS(const char* uplo, const int* n, const int* nrhs, const float* a, const int* lda, float* b,
                    const int* ldb, int* info);
QRV_API void CPOTRS(const char* uplo, const int* n, const int* nrhs, const qrv_complex* a, const int* lda,
                    qrv_complex* b, const int* ldb, int* info);

/* Solution of A*X = B by SPOTRF and SPOTRS.
 *
 * n, nrhs  order of A, columns of B; at least 0
 * a, lda   the triangle of A, overwritten by its factor
 * b, ldb   B, n x nrhs, overwritten by X; ldb >= max(1, n)
 * info     i > 0: as for SPOTRF; B is unchanged
 * Reported: 1, 2, 3, 5, 7. */
QRV_API void SPOSV(const char* uplo, const int* n, const int* nrhs, float* a, const int* lda, float* b, const int* ldb,
                   int* info);
QRV_API void CPOSV(const char* uplo, const int* n, const int* nrhs, qrv_complex* a, const int* lda, qrv_complex* b,
                   const int* ldb, int* info);

/* Inverse of A from the factor of SPOTRF: its triangle takes the place of the factor.
 *
 * info  i > 0: element i of the diagonal of the factor is exactly 0; there is no inverse, and the factor is unchanged
 * Reported: 1, 2, 4. */
QRV_API void SPOTRI(const char* uplo, const int* n, float* a, const int* lda, int* info);
QRV_API void CPOTRI(const char* uplo, const int* n, qrv_complex* a, const int* lda, int* info);

/* Reciprocal condition number of A in the 1-norm, 1 / (norm(A)*norm(inv(A))), from its norm and the factor of SPOTRF,
 * with an estimate of the second norm that is at most the norm itself and rarely less than a third of it.
 *
 * anorm  1-norm of A, at least 0
 * rcond  set to the reciprocal condition number; 0 if A is singular to working precision, 1 if n is 0
 * work   3*n floats and iwork n ints; for CPOCON 2*n elements and rwork n floats
 * Reported: 1, 2, 4, 5. */
QRV_API void SPOCON(const char* uplo, const int* n, const float* a, const int* lda, const float* anorm, float* rcond,
                    float* work, int* iwork, int* info);
QRV_API void CPOCON(const char* uplo, const int* n, const qrv_complex* a, const int* lda, const float* anorm,
                    float* rcond, qrv_complex* work, float* rwork, int* info);

/* The product U*U^H or L^H*L of a triangular matrix, whose triangle takes the place of the factor; SLAUU2 row by row.
 * Reported: 1, 2, 4. */
QRV_API void SLAUUM(const char* uplo, const int* n, float* a, const int* lda, int* info);
QRV_API void CLAUUM(const char* uplo, const int* n, qrv_complex* a, const int* lda, int* info);
QRV_API void SLAUU2(const char* uplo, const int* n, float* a, const int* lda, int* info);
QRV_API void CLAUU2(const char* uplo, const int* n, qrv_complex* a, const int* lda, int* info);

#ifdef __cplusplus
}
#endif

#endif
