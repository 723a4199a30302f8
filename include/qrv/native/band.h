/* LAPACK: systems with band matrices. Calling conventions: see qrv/native.h.
 *
 * Band storage: column j of a matrix is column j of the array ab, and its diagonals are rows of ab. Element (i, j)
 * stands at ab[d + i - j + j*ldab] (i, j from 0), where row d of ab holds the main diagonal:
 *
 *   general matrix for SGBTRF, kl diagonals below the main one and ku above: d = kl + ku, ldab >= 2*kl + ku + 1; the
 *   first kl rows of ab are for what the factorization adds, and need not be set
 *   triangle with kd diagonals beside the main one: upper d = kd, lower d = 0; ldab >= kd + 1
 *
 * Places of ab that hold no element are neither read nor written. */

/* Example. The tridiagonal system [2 -1 0; -1 2 -1; 0 -1 2] x = (1, 0, 1):
 *
 *     const int n = 3, one = 1, ldab = 4;
 *     float ab[] = {0, 0, 2, -1, 0, -1, 2, -1, 0, -1, 2, 0}, b[] = {1, 0, 1};
 *     int ipiv[3], info;
 *     SGBSV(&n, &one, &one, &one, ab, &ldab, ipiv, b, &n, &info);
 *     return info == 0 && fabsf(b[0] - 1) < 1e-5f && fabsf(b[1] - 1) < 1e-5f && fabsf(b[2] - 1) < 1e-5f;
 */
#ifndef QRV_NATIVE_BAND_H
#define QRV_NATIVE_BAND_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* LU factorization with partial pivoting of an m x n band matrix. U has kl + ku diagonals above the main one; the
 * multipliers stand below it. May use all threads of the budget and calls the progress routine after each block of
 * columns of a wide band; if that asks to stop, ab and ipiv stay as they are then.
 *
 * ab, ldab  A, overwritten by its factors
 * ipiv      min(m, n) ints: row i was interchanged with row ipiv(i)
 * info      i > 0: u(i, i) is exactly 0, the first such element; the factors are complete, but U is singular
 * Reported: 1, 2, 3, 4, 6. SGBTF2, column by column: the same. */
QRV_API void SGBTRF(const int* m, const int* n, const int* kl, const int* ku, float* ab, const int* ldab, int* ipiv,
                    int* info);
QRV_API void SGBTF2(const int* m, const int* n, const int* kl, const int* ku, float* ab, const int* ldab, int* ipiv,
                    int* info);

/* Solution of op(A)*X = B from the factors of SGBTRF.
 *
 * trans     'N': op(A) = A; 'T', 'C': its transpose
 * n, nrhs   order of A, columns of B; at least 0
 * ab, ldab  the factors; ipiv the interchanges
 * b, ldb    B, n x nrhs, overwritten by X; ldb >= max(1, n)
 * info      0. A zero on the diagonal of U is not looked for.
 * Reported: 1, 2, 3, 4, 5, 7, 10. */
QRV_API void SGBTRS(const char* trans, const int* n, const int* kl, const int* ku, const int* nrhs, const float* ab,
                    const int* ldab, const int* ipiv, float* b, const int* ldb, int* info);

/* Solution of A*X = B by SGBTRF and SGBTRS.
 *
 * n, nrhs   order of A, columns of B; at least 0
 * ab, ldab  A, overwritten by its factors; ipiv n ints, the interchanges
 * b, ldb    B, n x nrhs, overwritten by X; ldb >= max(1, n)
 * info      i > 0: u(i, i) is exactly 0; A is factored, and B unchanged
 * Reported: 1, 2, 3, 4, 6, 9. */
QRV_API void SGBSV(const int* n, const int* kl, const int* ku, const int* nrhs, float* ab, const int* ldab, int* ipiv,
                   float* b, const int* ldb, int* info);

/* Reciprocal condition number of a band matrix of order n from its norm and the factors of SGBTRF, as SGECON.
 *
 * norm   '1', 'O': of the 1-norms; 'I': of the infinity norms
 * anorm  norm of A, at least 0
 * rcond  set to the reciprocal condition number; 0 if A is singular to working precision, 1 if n is 0
 * work   3*n floats; iwork n ints
 * Reported: 1, 2, 3, 4, 6, 8. */
QRV_API void SGBCON(const char* norm, const int* n, const int* kl, const int* ku, const float* ab, const int* ldab,
                    const int* ipiv, const float* anorm, float* rcond, float* work, int* iwork, int* info);

/* Cholesky factorization of a symmetric positive definite band matrix of order n: A = U^T*U for uplo 'U', whose upper
 * triangle ab holds, A = L*L^T for 'L'.
 *
 * ab, ldab  the triangle of A, overwritten by the factor
 * info      i > 0: the leading block of order i is not positive definite, or has a NaN in its last pivot
 * Reported: 1, 2, 3, 5. SPBTF2, column by column: the same. */
QRV_API void SPBTRF(const char* uplo, const int* n, const int* kd, float* ab, const int* ldab, int* info);
QRV_API void SPBTF2(const char* uplo, const int* n, const int* kd, float* ab, const int* ldab, int* info);

/* Solution of A*X = B from the factor of SPBTRF; b, ldb: B, n x nrhs, overwritten by X; ldb >= max(1, n).
 * Reported: 1, 2, 3, 4, 6, 8. */
QRV_API void SPBTRS(const char* uplo, const int* n, const int* kd, const int* nrhs, const float* ab, const int* ldab,
                    float* b, const int* ldb, int* info);

/* Solution of A*X = B by SPBTRF and SPBTRS.
 *
 * n, nrhs   order of A, columns of B; at least 0
 * ab, ldab  the triangle of A, overwritten by its factor
 * b, ldb    B, n x nrhs, overwritten by X; ldb >= max(1, n)
 * info      i > 0: as for SPBTRF; B is unchanged
 * Reported: 1, 2, 3, 4, 6, 8. */
QRV_API void SPBSV(const char* uplo, const int* n, const int* kd, const int* nrhs, float* ab, const int* ldab, float* b,
                   const int* ldb, int* info);

/* Reciprocal condition number in the 1-norm of a positive definite band matrix, from its norm and the factor of
 * SPBTRF, as SPOCON. work: 3*n floats; iwork: n ints.
 * Reported: 1, 2, 3, 5, 6. */
QRV_API void SPBCON(const char* uplo, const int* n, const int* kd, const float* ab, const int* ldab, const float* anorm,
                    float* rcond, float* work, int* iwork, int* info);

/* Solves op(A)*X = B for a triangular band matrix of order n with kd diagonals beside the main one; diag 'U': the main
 * one is taken as ones and not read. b, ldb: B, n x nrhs, overwritten by X; ldb >= max(1, n).
 *
 * info  i > 0: element i of the diagonal is exactly 0; A is singular and B unchanged
 * Reported: 1, 2, 3, 4, 5, 6, 8, 10. */
QRV_API void STBTRS(const char* uplo, const char* trans, const char* diag, const int* n, const int* kd, const int* nrhs,
                    const float* ab, const int* ldab, float* b, const int* ldb, int* info);

/* Solves op(A)*x = scale*b for a triangular band matrix, with the scale chosen so that x does not overflow; as SLATRS.
 *
 * normin  'Y': cnorm holds the sums of the absolute values over each column without its diagonal element; 'N': they
 *         are computed
 * x       b, overwritten by x
 * scale   set; 0 if A is singular, with x a null vector
 * cnorm   n floats
 * Reported: 1, 2, 3, 4, 5, 6, 8. */
QRV_API void SLATBS(const char* uplo, const char* trans, const char* diag, const char* normin, const int* n,
                    const int* kd, const float* ab, const int* ldab, float* x, float* scale, float* cnorm, int* info);

#ifdef __cplusplus
}
#endif

#endif
