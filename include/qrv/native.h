/* Native entry routines: the published names in upper case, every argument by address.
 *
 * Matrices are column-major with a leading dimension, in floats; indices are signed 32-bit integers. A
 * character option is the address of a text of which only the first character is read, in either case.
 * All routines may be called from any number of threads at once.
 *
 * A bad argument of a BLAS level 2 or 3 entry is reported through XERBLA; the outputs stay unchanged.
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

/* General matrix product C := alpha*op(A)*op(B) + beta*C, in single precision.
 *
 * transa, transb  'N': op(X) = X; 'T' or 'C': op(X) = the transpose of X
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
