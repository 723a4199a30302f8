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
 *
 * LAPACK routines with an argument `info` check their arguments themselves: a bad one at position p (from 1) is
 * reported and gives *info = -p, with nothing else done; *info = 0 is success, and what a positive value means is told
 * with each routine.
 *
 * Sources of LAPACK: E. Anderson et al., LAPACK Users' Guide, 3rd edition, SIAM (1999).
 */

/* Example. The product of two matrices:
 *
 *     const int n = 2;
 *     const float one = 1, zero = 0, a[] = {1, 2, 3, 4}, b[] = {5, 6, 7, 8};
 *     float c[4];
 *     SGEMM("N", "N", &n, &n, &n, &one, a, &n, b, &n, &zero, c, &n);
 *     return c[0] == 23 && c[1] == 34 && c[2] == 31 && c[3] == 46;
 */
#ifndef QRV_NATIVE_H
#define QRV_NATIVE_H

#include "native/auxiliary.h"
#include "native/band.h"
#include "native/bidiagonal.h"
#include "native/blas.h"
#include "native/cholesky.h"
#include "native/common.h"
#include "native/lu.h"
#include "native/nonsymmetric.h"
#include "native/qr.h"
#include "native/rotations.h"
#include "native/svd.h"
#include "native/symmetric.h"
#include "native/triangular.h"

#endif
