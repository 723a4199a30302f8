/* LAPACK: LU factorization, and solves, inverses and condition numbers from it. Calling conventions: see
 * qrv/native.h. */

/* Example. A system with two unknowns:
 *
 *     const int n = 2, one = 1;
 *     float a[] = {3, 1, 1, 2}, b[] = {9, 8};
 *     int ipiv[2], info;
 *     SGETRF(&n, &n, a, &n, ipiv, &info);
 *     if (info == 0)
 *         SGETRS("N", &n, &one, a, &n, ipiv, b, &n, &info);
 *     return info == 0 && fabsf(b[0] - 2) < 1e-5f && fabsf(b[1] - 3) < 1e-5f;
 */
#ifndef QRV_NATIVE_LU_H
#define QRV_NATIVE_LU_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* LU factorization with partial pivoting, A = P*L*U, of a general m x n matrix. L is unit lower triangular (trapezoidal
 * if m > n), U upper triangular (trapezoidal if m < n). May use all threads of the budget and calls the progress
 * routine after each panel; if that asks to stop, A and ipiv stay as they are then.
 *
 * a, lda  A, overwritten by U and, below its diagonal, by L without its diagonal; lda >= max(1, m)
 * ipiv    min(m, n) ints: row i was interchanged with row ipiv(i), in this order for i = 1, 2, ...
 * info    i > 0: u(i, i) is exactly 0, the first such element; the factors are complete, but U is singular
 * Reported: 1, 2, 4.
 *
 * Source: S. Toledo, Locality of reference in LU decomposition with partial pivoting, SIAM J. Matrix Anal. Appl. 18
 * (1997), for the recursive panels. */
QRV_API void SGETRF(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info);
QRV_API void CGETRF(const int* m, const int* n, qrv_complex* a, const int* lda, int* ipiv, int* info);

/* Solution of op(A)*X = B from the factors of SGETRF.
 *
 * trans     'N': op(A) = A; 'T': its transpose; 'C': its conjugate transpose
 * n, nrhs   order of A, columns of B; at least 0
 * a, lda    the factors; lda >= max(1, n)
 * ipiv      the interchanges
 * b, ldb    B, n x nrhs, overwritten by X; ldb >= max(1, n)
 * info      0, or -1, -2, -3, -5, -8 for a bad argument. A zero on the diagonal of U is not looked for.
 */
QRV_API void SGETRS(const char* trans, const int* n, const int* nrhs, const float* a, const int* lda, const int* ipiv,
                    float* b, const int* ldb, int* info);
QRV_API void CGETRS(const char* trans, const int* n, const int* nrhs, const qrv_complex* a, const int* lda,
                    const int* ipiv, qrv_complex* b, const int* ldb, int* info);

/* Solution of A*X = B by SGETRF and SGETRS.
 *
 * n, nrhs   order of A, columns of B; at least 0
 * a, lda    A, overwritten by its factors; lda >= max(1, n)
 * ipiv      n ints, the interchanges
 * b, ldb    B, n x nrhs, overwritten by X; ldb >= max(1, n)
 * info      i > 0: u(i, i) is exactly 0; A is factored, and B unchanged
 * Reported: 1, 2, 4, 7. */
QRV_API void SGESV(const int* n, const int* nrhs, float* a, const int* lda, int* ipiv, float* b, const int* ldb,
                   int* info);
QRV_API void CGESV(const int* n, const int* nrhs, qrv_complex* a, const int* lda, int* ipiv, qrv_complex* b,
                   const int* ldb, int* info);

/* Inverse of a matrix from the factors of SGETRF, in their place.
 *
 * n         order of A, at least 0
 * a, lda    the factors, overwritten by inv(A); lda >= max(1, n)
 * ipiv      the interchanges
 * work      lwork elements; work(1) becomes the length for full speed
 * lwork     at least max(1, n), 64*n for full speed; -1: work(1) becomes that length, and nothing else is done
 * info      0; -1, -3, -6 for a bad argument; i > 0: diagonal element i of U is exactly 0, A is singular and its
 *           factors are unchanged
 */
QRV_API void SGETRI(const int* n, float* a, const int* lda, const int* ipiv, float* work, const int* lwork, int* info);
QRV_API void CGETRI(const int* n, qrv_complex* a, const int* lda, const int* ipiv, qrv_complex* work, const int* lwork,
                    int* info);

/* Reciprocal condition number of a matrix, 1 / (norm(A)*norm(inv(A))), from its norm and the factors of SGETRF, with an
 * estimate of the second norm that is at most the norm itself and rarely less than a third of it.
 *
 * norm      '1', 'O': of the 1-norms; 'I': of the infinity norms
 * n         order of A, at least 0
 * a, lda    the factors; lda >= max(1, n)
 * anorm     norm of A, at least 0
 * rcond     set to the reciprocal condition number; 0 if A is singular to working precision, 1 if n is 0
 * work      4*n floats and iwork n ints; for CGECON 2*n elements and rwork 2*n floats
 * info      0, or -1, -2, -4, -5 for a bad argument
 */
QRV_API void SGECON(const char* norm, const int* n, const float* a, const int* lda, const float* anorm, float* rcond,
                    float* work, int* iwork, int* info);
QRV_API void CGECON(const char* norm, const int* n, const qrv_complex* a, const int* lda, const float* anorm,
                    float* rcond, qrv_complex* work, float* rwork, int* info);

/* Interchanges row k of A with row ipiv(k1 + (k - k1)*|incx|), in all n columns: for k = k1, k1 + 1, ..., k2 if
 * incx > 0, for k = k2, k2 - 1, ..., k1 if incx < 0. Does nothing for incx = 0. Nothing is reported.
 *
 * n        columns of A
 * a, lda   A, overwritten; it has all rows that are named
 * k1, k2   first and last row that is interchanged with another, from 1; 1 <= k1 <= k2
 * ipiv     row numbers, from 1, k1 + (k2 - k1)*|incx| of them, as the factorizations with pivoting give them
 * incx     distance between the pivots of neighbouring rows; negative to undo what the same positive one did
 */
QRV_API void SLASWP(const int* n, float* a, const int* lda, const int* k1, const int* k2, const int* ipiv,
                    const int* incx);
QRV_API void CLASWP(const int* n, qrv_complex* a, const int* lda, const int* k1, const int* k2, const int* ipiv,
                    const int* incx);

#ifdef __cplusplus
}
#endif

#endif
