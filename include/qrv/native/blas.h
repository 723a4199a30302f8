/* BLAS, levels 1 to 3. Calling conventions: see qrv/native.h. */

/* Example. The length of (3, 4):
 *
 *     const int n = 2, inc = 1;
 *     const float x[] = {3, 4};
 *     return SNRM2(&n, x, &inc) == 5;
 */
#ifndef QRV_NATIVE_BLAS_H
#define QRV_NATIVE_BLAS_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- BLAS level 1 ---------------------------------------------------------------------------------------- */

/* Operations on vectors of n elements. With n <= 0 nothing is read or written, and a function gives 0. An increment
 * may be negative or 0, but for ISAMAX and ICAMAX; with 0 the same element is used n times. Where two vectors are
 * written or one is read and the other written, they must not overlap. Nothing is ever reported.
 *
 * Source: C. Lawson, R. Hanson, D. Kincaid, F. Krogh, Basic linear algebra subprograms for Fortran usage, ACM TOMS 5
 * (1979); the complex and the modified forms as in their reference set.
 */

/* y := alpha*x + y. With *alpha = 0 neither vector is read. */
QRV_API void SAXPY(const int* n, const float* alpha, const float* x, const int* incx, float* y, const int* incy);
QRV_API void CAXPY(const int* n, const qrv_complex* alpha, const qrv_complex* x, const int* incx, qrv_complex* y,
                   const int* incy);

/* y := x. */
QRV_API void SCOPY(const int* n, const float* x, const int* incx, float* y, const int* incy);
QRV_API void CCOPY(const int* n, const qrv_complex* x, const int* incx, qrv_complex* y, const int* incy);

/* x and y exchanged. */
QRV_API void SSWAP(const int* n, float* x, const int* incx, float* y, const int* incy);
QRV_API void CSWAP(const int* n, qrv_complex* x, const int* incx, qrv_complex* y, const int* incy);

/* x := alpha*x; CSSCAL with a real alpha. x is multiplied also by 0, so a NaN in it stays. */
QRV_API void SSCAL(const int* n, const float* alpha, float* x, const int* incx);
QRV_API void CSCAL(const int* n, const qrv_complex* alpha, qrv_complex* x, const int* incx);
QRV_API void CSSCAL(const int* n, const float* alpha, qrv_complex* x, const int* incx);

/* Sum of x(i)*y(i). CDOTC takes the complex conjugates of the x(i).
 *
 * result  in CDOTC and CDOTU the sum, a first argument ahead of the published ones */
QRV_API float SDOT(const int* n, const float* x, const int* incx, const float* y, const int* incy);
QRV_API void CDOTC(qrv_complex* result, const int* n, const qrv_complex* x, const int* incx, const qrv_complex* y,
                   const int* incy);
QRV_API void CDOTU(qrv_complex* result, const int* n, const qrv_complex* x, const int* incx, const qrv_complex* y,
                   const int* incy);

/* Euclidean norm of x, without overflow or underflow on the way. */
QRV_API float SNRM2(const int* n, const float* x, const int* incx);
QRV_API float SCNRM2(const int* n, const qrv_complex* x, const int* incx);

/* Sum of |x(i)|, of |re| + |im| for complex elements. */
QRV_API float SASUM(const int* n, const float* x, const int* incx);
QRV_API float SCASUM(const int* n, const qrv_complex* x, const int* incx);

/* Position, from 1, of the first element of largest |x(i)|, of |re| + |im| for complex elements; 0 if n < 1 or
 * incx < 1. A NaN takes the place of the largest so far, and the element behind it takes its. */
QRV_API int ISAMAX(const int* n, const float* x, const int* incx);
QRV_API int ICAMAX(const int* n, const qrv_complex* x, const int* incx);

/* Plane rotation of every pair: (x, y) := (c*x + s*y, c*y - s*x). */
QRV_API void SROT(const int* n, float* x, const int* incx, float* y, const int* incy, const float* c, const float* s);

/* The rotation that turns (a, b) into (r, 0).
 *
 * a, b  the pair; overwritten by r and by z, from which the rotation can be restored: z = s if |a| > |b|, else 1/c
 *       if c is not 0, else 1
 * c, s  the rotation; c = 1 and s = r = z = 0 if both are 0 */
QRV_API void SROTG(float* a, float* b, float* c, float* s);

/* Modified rotation of every pair: (x, y) := H (x, y).
 *
 * param  5 floats: flag, h11, h21, h12, h22. flag -1: H as given; 0: h11 = h22 = 1; 1: h12 = 1, h21 = -1;
 *        -2: H is the identity, nothing is done */
QRV_API void SROTM(const int* n, float* x, const int* incx, float* y, const int* incy, const float* param);

/* The modified rotation H that makes the second component of H (sqrt(d1)*x1, sqrt(d2)*y1) 0.
 *
 * d1, d2  squared scale factors; updated
 * x1      first component; updated
 * y1      second component
 * param   5 floats, overwritten in the form of SROTM */
QRV_API void SROTMG(float* d1, float* d2, float* x1, const float* y1, float* param);

/* Sum of x(i)*y(i) with every product and sum in double; SDSDOT rounds it to a float, and begins with sb. */
QRV_API double DSDOT(const int* n, const float* x, const int* incx, const float* y, const int* incy);
QRV_API float SDSDOT(const int* n, const float* sb, const float* x, const int* incx, const float* y, const int* incy);

/* |re(z)| + |im(z)|. */
QRV_API float SCABS1(const qrv_complex* z);

/* SROT and SROTG for complex elements, with real c. CROTG leaves b alone, turns (a, b) into (r, 0) by (c*a + s*b,
 * c*b - conj(s)*a), and stores r in a; for a = 0 c is 0 and s is 1. */
QRV_API void CSROT(const int* n, qrv_complex* x, const int* incx, qrv_complex* y, const int* incy, const float* c,
                   const float* s);
QRV_API void CROTG(qrv_complex* a, const qrv_complex* b, float* c, qrv_complex* s);

/* ---- BLAS level 2 ---------------------------------------------------------------------------------------- */

/* Operations with a matrix and vectors. The arguments mean the same everywhere:
 *
 * trans        'N': op(A) = A; 'T': op(A) = the transpose of A; 'C': its conjugate transpose, for real elements the
 *              same as 'T'
 * uplo         'U', 'L': only the upper or the lower triangle of the n x n matrix A is stored; the other one is neither
 *              read nor written
 * diag         'U': the diagonal of A is taken as 1 and not read; 'N': it is stored
 * m, n         A is m x n (of order n where there is no m); at least 0, and with 0 nothing is read or written
 * alpha, beta  scalars; with *beta = 0 y need not be set, with *alpha = 0 A and x are not read
 * a, lda       A; lda >= max(1, m), or max(1, n) where A is of order n
 * x, incx      a vector, incx not 0; y, incy likewise. What is written must not overlap what is read.
 *
 * Result: 0, or 1 if an argument was bad: its position is reported, and the outputs are unchanged. Positions are those
 * of the options, sizes, leading dimensions and increments; they are named at each routine.
 *
 * Source: J. Dongarra, J. Du Croz, S. Hammarling, R. Hanson, An extended set of Fortran basic linear algebra
 * subprograms, ACM TOMS 14 (1988).
 */

/* y := alpha*op(A)*x + beta*y, for a general matrix. x has n elements and y m for 'N', else x has m and y n.
 * Reported: 1, 2, 3, 6, 8, 11. */
QRV_API int SGEMV(const char* trans, const int* m, const int* n, const float* alpha, const float* a, const int* lda,
                  const float* x, const int* incx, const float* beta, float* y, const int* incy);
QRV_API int CGEMV(const char* trans, const int* m, const int* n, const qrv_complex* alpha, const qrv_complex* a,
                  const int* lda, const qrv_complex* x, const int* incx, const qrv_complex* beta, qrv_complex* y,
                  const int* incy);

/* The same for a matrix with kl diagonals below the main one and ku above it, both at least 0. Element (i, j) of A is
 * a[ku + i - j + j*lda]; lda >= kl + ku + 1. Reported: 1, 2, 3, 4, 5, 8, 10, 13. */
QRV_API int SGBMV(const char* trans, const int* m, const int* n, const int* kl, const int* ku, const float* alpha,
                  const float* a, const int* lda, const float* x, const int* incx, const float* beta, float* y,
                  const int* incy);

/* y := alpha*A*x + beta*y, for a symmetric (SSYMV) or Hermitian (CHEMV) matrix; imaginary parts on the diagonal are not
 * read. Reported: 1, 2, 5, 7, 10. */
QRV_API int SSYMV(const char* uplo, const int* n, const float* alpha, const float* a, const int* lda, const float* x,
                  const int* incx, const float* beta, float* y, const int* incy);
QRV_API int CHEMV(const char* uplo, const int* n, const qrv_complex* alpha, const qrv_complex* a, const int* lda,
                  const qrv_complex* x, const int* incx, const qrv_complex* beta, qrv_complex* y, const int* incy);

/* The same for a symmetric matrix with k >= 0 diagonals on either side of the main one. Element (i, j) of A is
 * a[k + i - j + j*lda] in the upper triangle, a[i - j + j*lda] in the lower one; lda >= k + 1.
 * Reported: 1, 2, 3, 6, 8, 11. */
QRV_API int SSBMV(const char* uplo, const int* n, const int* k, const float* alpha, const float* a, const int* lda,
                  const float* x, const int* incx, const float* beta, float* y, const int* incy);

/* x := op(A)*x, for a triangular matrix. Reported: 1, 2, 3, 4, 6, 8. */
QRV_API int STRMV(const char* uplo, const char* trans, const char* diag, const int* n, const float* a, const int* lda,
                  float* x, const int* incx);
QRV_API int CTRMV(const char* uplo, const char* trans, const char* diag, const int* n, const qrv_complex* a,
                  const int* lda, qrv_complex* x, const int* incx);

/* x := inv(op(A))*x: the solution of op(A)*z = x takes the place of x. A singular matrix is not noticed; division by a
 * zero on the diagonal gives infinities or NaN. Reported: 1, 2, 3, 4, 6, 8. */
QRV_API int STRSV(const char* uplo, const char* trans, const char* diag, const int* n, const float* a, const int* lda,
                  float* x, const int* incx);
QRV_API int CTRSV(const char* uplo, const char* trans, const char* diag, const int* n, const qrv_complex* a,
                  const int* lda, qrv_complex* x, const int* incx);

/* STRMV and STRSV for a triangular matrix with k >= 0 diagonals beside the main one, stored as for SSBMV.
 * Reported: 1, 2, 3, 4, 5, 7, 9. */
QRV_API int STBMV(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const float* a,
                  const int* lda, float* x, const int* incx);
QRV_API int STBSV(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const float* a,
                  const int* lda, float* x, const int* incx);

/* A := alpha*x*y' + A, for a general matrix, where y' is the transpose of y, in CGERC its conjugate transpose. x has m
 * elements, y n. Reported: 1, 2, 5, 7, 9. */
QRV_API int SGER(const int* m, const int* n, const float* alpha, const float* x, const int* incx, const float* y,
                 const int* incy, float* a, const int* lda);
QRV_API int CGERU(const int* m, const int* n, const qrv_complex* alpha, const qrv_complex* x, const int* incx,
                  const qrv_complex* y, const int* incy, qrv_complex* a, const int* lda);
QRV_API int CGERC(const int* m, const int* n, const qrv_complex* alpha, const qrv_complex* x, const int* incx,
                  const qrv_complex* y, const int* incy, qrv_complex* a, const int* lda);

/* A := alpha*x*x' + A, for a symmetric matrix, or with the conjugate transpose for a Hermitian one (CHER, alpha real),
 * whose diagonal comes out real. Reported: 1, 2, 5, 7. */
QRV_API int SSYR(const char* uplo, const int* n, const float* alpha, const float* x, const int* incx, float* a,
                 const int* lda);
QRV_API int CHER(const char* uplo, const int* n, const float* alpha, const qrv_complex* x, const int* incx,
                 qrv_complex* a, const int* lda);

/* A := alpha*x*y' + alpha*y*x' + A, for a symmetric matrix, or A := alpha*x*y^H + conj(alpha)*y*x^H + A for a Hermitian
 * one (CHER2), whose diagonal comes out real. Reported: 1, 2, 5, 7, 9. */
QRV_API int SSYR2(const char* uplo, const int* n, const float* alpha, const float* x, const int* incx, const float* y,
                  const int* incy, float* a, const int* lda);
QRV_API int CHER2(const char* uplo, const int* n, const qrv_complex* alpha, const qrv_complex* x, const int* incx,
                  const qrv_complex* y, const int* incy, qrv_complex* a, const int* lda);

/* The same for complex elements: SGBMV; SSBMV, for a Hermitian matrix; STBMV and STBSV. Positions as there. */
QRV_API int CGBMV(const char* trans, const int* m, const int* n, const int* kl, const int* ku, const qrv_complex* alpha,
                  const qrv_complex* a, const int* lda, const qrv_complex* x, const int* incx, const qrv_complex* beta,
                  qrv_complex* y, const int* incy);
QRV_API int CHBMV(const char* uplo, const int* n, const int* k, const qrv_complex* alpha, const qrv_complex* a,
                  const int* lda, const qrv_complex* x, const int* incx, const qrv_complex* beta, qrv_complex* y,
                  const int* incy);
QRV_API int CTBMV(const char* uplo, const char* trans, const char* diag, const int* n, const int* k,
                  const qrv_complex* a, const int* lda, qrv_complex* x, const int* incx);
QRV_API int CTBSV(const char* uplo, const char* trans, const char* diag, const int* n, const int* k,
                  const qrv_complex* a, const int* lda, qrv_complex* x, const int* incx);

/* The same for a packed triangle, of which ap holds the n*(n + 1)/2 elements column by column: element (i, j), from 0,
 * is ap[i + j*(j + 1)/2] of an upper one, ap[i - j + j*(2*n - j + 1)/2] of a lower one.
 *
 * SSPMV and CHPMV as SSYMV, reported: 1, 2, 6, 9. STPMV and STPSV as STRMV and STRSV, reported: 1, 2, 3, 4, 7. SSPR and
 * CHPR as SSYR and CHER, reported: 1, 2, 5. SSPR2 and CHPR2 as SSYR2 and CHER2, reported: 1, 2, 5, 7. */
QRV_API int SSPMV(const char* uplo, const int* n, const float* alpha, const float* ap, const float* x, const int* incx,
                  const float* beta, float* y, const int* incy);
QRV_API int CHPMV(const char* uplo, const int* n, const qrv_complex* alpha, const qrv_complex* ap, const qrv_complex* x,
                  const int* incx, const qrv_complex* beta, qrv_complex* y, const int* incy);
QRV_API int STPMV(const char* uplo, const char* trans, const char* diag, const int* n, const float* ap, float* x,
                  const int* incx);
QRV_API int CTPMV(const char* uplo, const char* trans, const char* diag, const int* n, const qrv_complex* ap,
                  qrv_complex* x, const int* incx);
QRV_API int STPSV(const char* uplo, const char* trans, const char* diag, const int* n, const float* ap, float* x,
                  const int* incx);
QRV_API int CTPSV(const char* uplo, const char* trans, const char* diag, const int* n, const qrv_complex* ap,
                  qrv_complex* x, const int* incx);
QRV_API int SSPR(const char* uplo, const int* n, const float* alpha, const float* x, const int* incx, float* ap);
QRV_API int CHPR(const char* uplo, const int* n, const float* alpha, const qrv_complex* x, const int* incx,
                 qrv_complex* ap);
QRV_API int SSPR2(const char* uplo, const int* n, const float* alpha, const float* x, const int* incx, const float* y,
                  const int* incy, float* ap);
QRV_API int CHPR2(const char* uplo, const int* n, const qrv_complex* alpha, const qrv_complex* x, const int* incx,
                  const qrv_complex* y, const int* incy, qrv_complex* ap);

/* ---- BLAS level 3 ---------------------------------------------------------------------------------------- */

/* General matrix product C := alpha*op(A)*op(B) + beta*C.
 *
 * transa, transb  'N': op(X) = X; 'T': op(X) = the transpose of X; 'C': its conjugate transpose, for real elements the
 *                 same as 'T'
 * m, n, k         op(A) is m x k, op(B) is k x n, C is m x n; each at least 0
 * alpha, beta     scalars; with *beta = 0 C is not read, with *alpha = 0 A and B are not read
 * a, lda          A, m x k with lda >= max(1, m) for 'N', else k x m with lda >= max(1, k)
 * b, ldb          B, k x n with ldb >= max(1, k) for 'N', else n x k with ldb >= max(1, n)
 * c, ldc          C, overwritten; ldc >= max(1, m); must not overlap A or B
 *
 * Result: 0, or 1 if an argument was bad (reported positions: 1, 2, 3, 4, 5, 8, 10, 13; C is unchanged).
 * Source: J. Dongarra, J. Du Croz, S. Hammarling, I. Duff, A set of level 3 basic linear algebra
 * subprograms, ACM TOMS 16 (1990).
 */
QRV_API int SGEMM(const char* transa, const char* transb, const int* m, const int* n, const int* k, const float* alpha,
                  const float* a, const int* lda, const float* b, const int* ldb, const float* beta, float* c,
                  const int* ldc);
QRV_API int CGEMM(const char* transa, const char* transb, const int* m, const int* n, const int* k,
                  const qrv_complex* alpha, const qrv_complex* a, const int* lda, const qrv_complex* b, const int* ldb,
                  const qrv_complex* beta, qrv_complex* c, const int* ldc);

/* The other operations of level 3. The arguments mean the same everywhere:
 *
 * side            'L': the matrix with structure, A, stands on the left of the product; 'R': on its right
 * uplo            'U' or 'L': which triangle of a triangular, symmetric or Hermitian matrix is stored; the other one is
 *                 neither read nor written
 * transa, trans   op(A): 'N': A; 'T': its transpose; 'C': its conjugate transpose
 * diag            'U': the diagonal of a triangular A is taken as 1 and not read; 'N': it is read
 * m, n, k         sizes, at least 0; with m or n 0 nothing is read or written
 * alpha, beta     scalars, real in CHERK; beta is real in CHERK and CHER2K. With *beta = 0 C is not read, with
 *                 *alpha = 0 A and B are not read.
 * lda, ldb, ldc   leading dimensions, at least the rows stored and at least 1
 *
 * What is written must not overlap what is read. Result: 0, or 1 if an argument was bad and nothing was done; the
 * positions that can be reported are named at each routine.
 */

/* C := alpha*A*B + beta*C ('L', A of order m) or C := alpha*B*A + beta*C ('R', A of order n); B and C are m x n. A is
 * symmetric, in CHEMM Hermitian: imaginary parts on its diagonal are not read. Reported: 1, 2, 3, 4, 7, 9, 12. */
QRV_API int SSYMM(const char* side, const char* uplo, const int* m, const int* n, const float* alpha, const float* a,
                  const int* lda, const float* b, const int* ldb, const float* beta, float* c, const int* ldc);
QRV_API int CSYMM(const char* side, const char* uplo, const int* m, const int* n, const qrv_complex* alpha,
                  const qrv_complex* a, const int* lda, const qrv_complex* b, const int* ldb, const qrv_complex* beta,
                  qrv_complex* c, const int* ldc);
QRV_API int CHEMM(const char* side, const char* uplo, const int* m, const int* n, const qrv_complex* alpha,
                  const qrv_complex* a, const int* lda, const qrv_complex* b, const int* ldb, const qrv_complex* beta,
                  qrv_complex* c, const int* ldc);

/* B := alpha*op(A)*B ('L', A of order m) or B := alpha*B*op(A) ('R', A of order n), for a triangular A; B is m x n.
 * Reported: 1, 2, 3, 4, 5, 6, 9, 11. */
QRV_API int STRMM(const char* side, const char* uplo, const char* transa, const char* diag, const int* m, const int* n,
                  const float* alpha, const float* a, const int* lda, float* b, const int* ldb);
QRV_API int CTRMM(const char* side, const char* uplo, const char* transa, const char* diag, const int* m, const int* n,
                  const qrv_complex* alpha, const qrv_complex* a, const int* lda, qrv_complex* b, const int* ldb);

/* B := the solution X of op(A)*X = alpha*B ('L', A of order m) or X*op(A) = alpha*B ('R', A of order n), for a
 * triangular A; B is m x n. A singular matrix is not noticed; a zero on the diagonal gives infinities or NaN. A
 * solution is multiplied by the reciprocal of a diagonal element. Reported: 1, 2, 3, 4, 5, 6, 9, 11. */
QRV_API int STRSM(const char* side, const char* uplo, const char* transa, const char* diag, const int* m, const int* n,
                  const float* alpha, const float* a, const int* lda, float* b, const int* ldb);
QRV_API int CTRSM(const char* side, const char* uplo, const char* transa, const char* diag, const int* m, const int* n,
                  const qrv_complex* alpha, const qrv_complex* a, const int* lda, qrv_complex* b, const int* ldb);

/* C := alpha*A*A' + beta*C ('N', A is n x k) or C := alpha*A'*A + beta*C (otherwise, A is k x n), for a symmetric C of
 * order n, where A' is the transpose of A. In CHERK C is Hermitian, A' is the conjugate transpose and trans 'N' or 'C';
 * the diagonal of C comes out real, and imaginary parts on it are not read. CSYRK takes 'N' and 'T'.
 * Reported: 1, 2, 3, 4, 7, 10. */
QRV_API int SSYRK(const char* uplo, const char* trans, const int* n, const int* k, const float* alpha, const float* a,
                  const int* lda, const float* beta, float* c, const int* ldc);
QRV_API int CSYRK(const char* uplo, const char* trans, const int* n, const int* k, const qrv_complex* alpha,
                  const qrv_complex* a, const int* lda, const qrv_complex* beta, qrv_complex* c, const int* ldc);
QRV_API int CHERK(const char* uplo, const char* trans, const int* n, const int* k, const float* alpha,
                  const qrv_complex* a, const int* lda, const float* beta, qrv_complex* c, const int* ldc);

/* C := alpha*A*B' + alpha*B*A' + beta*C ('N', A and B are n x k) or C := alpha*A'*B + alpha*B'*A + beta*C (otherwise,
 * k x n), for a symmetric C of order n. In CHER2K the second alpha is its conjugate, and all else is as in CHERK.
 * Reported: 1, 2, 3, 4, 7, 9, 12. */
QRV_API int SSYR2K(const char* uplo, const char* trans, const int* n, const int* k, const float* alpha, const float* a,
                   const int* lda, const float* b, const int* ldb, const float* beta, float* c, const int* ldc);
QRV_API int CSYR2K(const char* uplo, const char* trans, const int* n, const int* k, const qrv_complex* alpha,
                   const qrv_complex* a, const int* lda, const qrv_complex* b, const int* ldb, const qrv_complex* beta,
                   qrv_complex* c, const int* ldc);
QRV_API int CHER2K(const char* uplo, const char* trans, const int* n, const int* k, const qrv_complex* alpha,
                   const qrv_complex* a, const int* lda, const qrv_complex* b, const int* ldb, const float* beta,
                   qrv_complex* c, const int* ldc);

#ifdef __cplusplus
}
#endif

#endif
