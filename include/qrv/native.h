/* Native entry routines: the published names in upper case, every argument by address.
 *
 * Indices and sizes are signed 32-bit integers, elements are floats or complex numbers of two floats. A character
 * option is the address of a text of which only the first character is read, in either case. All routines may be
 * called from any number of threads at once.
 *
 * Vectors: x, incx names n elements of which each lies incx elements behind the one before. The address given is that
 * of the first one if incx >= 0, and of the last one if incx < 0: element i (from 1) is x[(i - 1)*incx], or
 * x[(i - n)*incx]. The array holds 1 + (n - 1)*|incx| elements.
 *
 * Matrices are column-major: element (i, j) of a, lda (from 0) is a[i + j*lda].
 *
 * A bad argument of a BLAS level 2 or 3 entry is reported through XERBLA; the outputs stay unchanged and the entry
 * returns 1. Level 1 entries check nothing and report nothing.
 */
#ifndef QRV_NATIVE_H
#define QRV_NATIVE_H

#include "export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A complex number, real part first: the layout of Fortran's COMPLEX, C's float _Complex and std::complex<float>,
 * whose addresses may be passed after a cast. */
typedef struct qrv_complex {
    float re, im;
} qrv_complex;

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

/* ---- LAPACK ---------------------------------------------------------------------------------------------- */

/* Routines with an argument `info` check their arguments themselves: a bad one at position p (from 1) is reported
 * through XERBLA and gives *info = -p, with nothing else done; *info = 0 is success, and what a positive value means
 * is told with each routine. The arguments of BLAS mean the same here.
 *
 * Source: E. Anderson et al., LAPACK Users' Guide, 3rd edition, SIAM (1999).
 */

/* Tuning values: block sizes and crossovers of the LAPACK routines.
 *
 * ispec           what is asked:
 *                   1      block size; 1 if the routine does not block
 *                   2      least block size worth blocking for
 *                   3      crossover: size below which the unblocked or serial form is used
 *                   4, 5   shifts, least column dimension of the classic QR iteration
 *                   6      rows from which an SVD of n1 x n2 begins with a QR factorization
 *                   7      number of processors (1)
 *                   8, 9   crossover to multishift QR; size of the smallest subproblems of divide and conquer
 *                   10, 11 1: NaN and infinity can be trusted
 *                   12-16  parameters of the multishift QR iteration, as IPARMQ (n1 to n4 are its n, ilo, ihi, lwork);
 *                          12 for names that end in TRF or QRF a block size of their panels
 *                   17, 18 SGETRF, CGETRF with matrix size n2 and n3 threads: block columns that a thread owns side by
 *                          side, and block columns at the right end that are free for any
 *                   19     processor class, see qrv_serv_get_cpu_type
 * name            routine name of six letters; D and Z names are answered as S and C
 * opts            options of the routine, joined; " " if there are none
 * n1, n2, n3, n4  sizes that the routine's arguments give, -1 for those not in use
 * name_length, opts_length  number of characters of name and opts, by value
 *
 * Result: the value; 1 for ispec 1 to 3 if name begins with none of S, D, C, Z; -1 for any other ispec. */
QRV_API int ILAENV(const int* ispec, const char* name, const char* opts, const int* n1, const int* n2, const int* n3,
                   const int* n4, int name_length, int opts_length);

/* Parameters of the multishift QR iteration on rows and columns ilo to ihi of an n x n Hessenberg matrix.
 *
 * ispec  12 least order for which it is used; 13 deflation window; 14 percentage of deflations in it from which on a
 *        sweep is skipped; 15 simultaneous shifts; 16 how reflectors are accumulated (0 or 2)
 * name, opts, n, lwork  not looked at
 *
 * Result: the value, -1 for any other ispec. */
QRV_API int IPARMQ(const int* ispec, const char* name, const char* opts, const int* n, const int* ilo, const int* ihi,
                   const int* lwork, int name_length, int opts_length);

/* Constants of the arithmetic.
 *
 * cmach  'E' rounding error, 2^-24; 'P' 'E' times the base; 'S' smallest number with a finite reciprocal; 'U' smallest
 *        normal number; 'O' largest number; 'B' base; 'N' digits; 'R' 1: rounds to nearest; 'M', 'L' least and largest
 *        exponent; 'A' 2^-42, 'F' 2^-51, 'I' 2^42, 'X' 2^51, 'T' 8
 *
 * Result: the constant, 0 for any other letter. */
QRV_API float SLAMCH(const char* cmach);

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

/* Inverse of a matrix from the factors of SGETRF, in their place.
 *
 * n         order of A, at least 0
 * a, lda    the factors, overwritten by inv(A); lda >= max(1, n)
 * ipiv      the interchanges
 * work      lwork elements; work(1) becomes the length for full speed
 * lwork     at least max(1, n), 64*n for full speed; -1: work(1) becomes that length, and nothing else is done
 * info      0; -1, -3, -6 for a bad argument; i > 0: diagonal element i of U is exactly 0, A is singular and a
 * unchanged
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

/* Norm of a general m x n matrix A.
 *
 * norm    'M': largest |a(i, j)|; '1', 'O': largest sum of |a(i, j)| over a column; 'I': over a row; 'F', 'E': root of
 *         the sum of squares. Nothing else is reported, but gives no useful result.
 * work    m floats, overwritten, for 'I'; else not touched
 *
 * Result: the norm, 0 if m or n is 0. The largest value or sum is replaced by one that does not compare below it: by a
 * NaN, which in turn is replaced by the next. */
QRV_API float SLANGE(const char* norm, const int* m, const int* n, const float* a, const int* lda, float* work);
QRV_API float CLANGE(const char* norm, const int* m, const int* n, const qrv_complex* a, const int* lda, float* work);

/* The same of a triangular matrix, or of a trapezoidal one with m <= n for uplo 'U', m >= n for 'L'. */
QRV_API float SLANTR(const char* norm, const char* uplo, const char* diag, const int* m, const int* n, const float* a,
                     const int* lda, float* work);
QRV_API float CLANTR(const char* norm, const char* uplo, const char* diag, const int* m, const int* n,
                     const qrv_complex* a, const int* lda, float* work);

/* Adds the squares of the parts of x to scale^2 * sumsq, without overflow; both are updated. incx >= 0. */
QRV_API void SLASSQ(const int* n, const float* x, const int* incx, float* scale, float* sumsq);
QRV_API void CLASSQ(const int* n, const qrv_complex* x, const int* incx, float* scale, float* sumsq);

/* B := A, for m x n matrices that do not overlap: the upper triangle with the diagonal for uplo 'U', the lower one for
 * 'L', all for any other letter. Nothing is reported. */
QRV_API void SLACPY(const char* uplo, const int* m, const int* n, const float* a, const int* lda, float* b,
                    const int* ldb);
QRV_API void CLACPY(const char* uplo, const int* m, const int* n, const qrv_complex* a, const int* lda, qrv_complex* b,
                    const int* ldb);

/* x := x / *sa for a real divisor, without overflow or underflow on the way to a result that has none. incx >= 0. */
QRV_API void SRSCL(const int* n, const float* sa, float* sx, const int* incx);
QRV_API void CSRSCL(const int* n, const float* sa, qrv_complex* sx, const int* incx);

/* Estimate of the 1-norm of an n x n matrix A that the caller multiplies with vectors: set *kase = 0, then call until
 * *kase is 0 again, and after each other call replace x by A*x if *kase is 1, by A'*x (the conjugate transpose) if it
 * is 2. At most 11 products are asked for. n >= 1.
 *
 * v      n elements; in the end v = A*w with norm(v) / norm(w) = *est
 * x      n elements, not to be changed otherwise
 * isgn   n ints, isave 3 ints: kept between calls for the routine
 * est    in the end the estimate, which is at most the norm
 *
 * Source: N. Higham, FORTRAN codes for estimating the one-norm of a real or complex matrix, ACM TOMS 14 (1988). */
QRV_API void SLACN2(const int* n, float* v, float* x, int* isgn, float* est, int* kase, int* isave);
QRV_API void CLACN2(const int* n, qrv_complex* v, qrv_complex* x, float* est, int* kase, int* isave);

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

/* ---- Reports --------------------------------------------------------------------------------------------- */

/* Reporter of a bad argument: prints an empty line and
 *   QRV ERROR: Parameter 8 was incorrect on entry to SGEMM
 * on standard output, for *info = 8, and returns.
 *
 * name    routine name, blank-padded, not terminated; at most 20 characters of it are shown
 * info    position of the argument, counted from 1; a value of 0 or below names an internal condition
 * length  number of characters of name
 *
 * A program that defines XERBLA itself gets the reports of all BLAS entries instead.
 */
QRV_API void XERBLA(const char* name, const int* info, int length);

#ifdef __cplusplus
}
#endif

#endif
