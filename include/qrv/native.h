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
