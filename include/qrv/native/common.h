/* What all native entry routines share: the complex type and the reporter of bad arguments. */
#ifndef QRV_NATIVE_COMMON_H
#define QRV_NATIVE_COMMON_H

#include "../export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A complex number, real part first: the layout of Fortran's COMPLEX, C's float _Complex and std::complex<float>,
 * whose addresses may be passed after a cast. */
typedef struct qrv_complex {
    float re, im;
} qrv_complex;

/* Reporter of a bad argument: prints an empty line and
 *   QRV ERROR: Parameter 8 was incorrect on entry to SGEMM
 * on standard output, for *info = 8, and returns.
 *
 * name    routine name, blank-padded, not terminated; at most 20 characters of it are shown
 * info    position of the argument, counted from 1; a value of 0 or below names an internal condition
 * length  number of characters of name
 *
 * A program that defines XERBLA itself gets the reports of all entries instead, of BLAS and LAPACK alike.
 */
QRV_API void XERBLA(const char* name, const int* info, int length);

#ifdef __cplusplus
}
#endif

#endif
