/* LAPACK: tuning values, machine constants, norms, copies and other parts that the families share. Calling
 * conventions: see qrv/native.h. */

/* Example. The largest sum of sizes in a column:
 *
 *     const int n = 2;
 *     const float a[] = {1, -2, 3, 4};
 *     return SLANGE("1", &n, &n, a, &n, NULL) == 7;
 */
#ifndef QRV_NATIVE_AUXILIARY_H
#define QRV_NATIVE_AUXILIARY_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

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

/* Norm of a general m x n matrix A.
 *
 * norm    'M': largest |a(i, j)|; '1', 'O': largest sum of |a(i, j)| over a column; 'I': over a row; 'F', 'E': root of
 *         the sum of squares. No other letter is reported, but the result means nothing then.
 * work    m floats, overwritten, for 'I'; else not touched
 *
 * Result: the norm, 0 if m or n is 0. The largest value or sum so far is replaced by each one that it is not above: so
 * by a NaN, which the next one replaces in turn. */
QRV_API float SLANGE(const char* norm, const int* m, const int* n, const float* a, const int* lda, float* work);
QRV_API float CLANGE(const char* norm, const int* m, const int* n, const qrv_complex* a, const int* lda, float* work);

/* The same of a triangular matrix, or of a trapezoidal one with m <= n for uplo 'U', m >= n for 'L'. */
QRV_API float SLANTR(const char* norm, const char* uplo, const char* diag, const int* m, const int* n, const float* a,
                     const int* lda, float* work);
QRV_API float CLANTR(const char* norm, const char* uplo, const char* diag, const int* m, const int* n,
                     const qrv_complex* a, const int* lda, float* work);

/* The same of a symmetric matrix of order n, of which the triangle `uplo` is read, and of a symmetric tridiagonal one
 * with the n elements d of the diagonal and the n - 1 elements e beside it. Norms over columns and over rows are the
 * same.
 *
 * work  n floats, overwritten, for '1', 'O' and 'I'; else not touched */
QRV_API float SLANSY(const char* norm, const char* uplo, const int* n, const float* a, const int* lda, float* work);
QRV_API float SLANST(const char* norm, const int* n, const float* d, const float* e);

/* Adds the squares of the parts of x to scale^2 * sumsq, without overflow; both are updated. incx >= 0. */
QRV_API void SLASSQ(const int* n, const float* x, const int* incx, float* scale, float* sumsq);
QRV_API void CLASSQ(const int* n, const qrv_complex* x, const int* incx, float* scale, float* sumsq);

/* B := A, for m x n matrices that do not overlap: the upper triangle with the diagonal for uplo 'U', the lower one for
 * 'L', all for any other letter. Nothing is reported. */
QRV_API void SLACPY(const char* uplo, const int* m, const int* n, const float* a, const int* lda, float* b,
                    const int* ldb);
QRV_API void CLACPY(const char* uplo, const int* m, const int* n, const qrv_complex* a, const int* lda, qrv_complex* b,
                    const int* ldb);

/* The same part of an m x n matrix is set: to alpha, on the diagonal to beta. Nothing is reported. */
QRV_API void SLASET(const char* uplo, const int* m, const int* n, const float* alpha, const float* beta, float* a,
                    const int* lda);
QRV_API void CLASET(const char* uplo, const int* m, const int* n, const qrv_complex* alpha, const qrv_complex* beta,
                    qrv_complex* a, const int* lda);

/* A := (cto / cfrom)*A for an m x n matrix, without overflow or underflow on the way to a result that has none.
 *
 * type    how A is stored: 'G' all of it; 'L', 'U' a triangle; 'H' upper Hessenberg; 'B', 'Q' the lower or upper half
 * of a symmetric band, kl = ku, m = n; 'Z' a band as SGBTRF takes it kl, ku  diagonals below and above the main one;
 * looked at for bands only cfrom   not 0; neither it nor cto may be NaN a, lda  lda >= max(1, m); for 'B' kl + 1, 'Q'
 * ku + 1, 'Z' 2*kl + ku + 1 Reported: 1 to 7, 9. */
QRV_API void SLASCL(const char* type, const int* kl, const int* ku, const float* cfrom, const float* cto, const int* m,
                    const int* n, float* a, const int* lda, int* info);
QRV_API void CLASCL(const char* type, const int* kl, const int* ku, const float* cfrom, const float* cto, const int* m,
                    const int* n, qrv_complex* a, const int* lda, int* info);

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

#ifdef __cplusplus
}
#endif

#endif
