/* LAPACK: Householder reflectors. Calling conventions: see qrv/native.h.
 *
 * A reflector is H = I - tau*v*v^H with v(1) = 1; tau = 0 gives the identity. It is unitary, and symmetric for real
 * elements. The routines of this part check no arguments. */
#ifndef QRV_NATIVE_QR_H
#define QRV_NATIVE_QR_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The reflector with H^H * (alpha, x) = (beta, 0), beta real.
 *
 * n        length of v, the elements of x and one more; does nothing but tau = 0 for n <= 0
 * alpha    overwritten by beta. SLARFG gives beta the sign opposite to that of alpha, or leaves alpha alone if x = 0
 *          and alpha is real; SLARFP makes it 0 or positive
 * x, incx  n - 1 elements, overwritten by v(2) to v(n); incx > 0
 * tau      set. SLARFG: 0, or at least 1 and at most 2, as its real part is for CLARFG; SLARFP: at most 2, and 2 where
 *          it just changes the sign of alpha. SLARFP takes an x for 0 that is lost beside alpha
 *
 * Sources: A. Householder, J. ACM 5 (1958); for SLARFP J. Demmel, M. Hoemmen, Y. Hida, E. Riedy, SIAM J. Sci. Comput.
 * 31 (2009). */
QRV_API void SLARFG(const int* n, float* alpha, float* x, const int* incx, float* tau);
QRV_API void CLARFG(const int* n, qrv_complex* alpha, qrv_complex* x, const int* incx, qrv_complex* tau);
QRV_API void SLARFP(const int* n, float* alpha, float* x, const int* incx, float* tau);
QRV_API void CLARFP(const int* n, qrv_complex* alpha, qrv_complex* x, const int* incx, qrv_complex* tau);

/* C := H*C for side 'L', C*H for 'R'.
 *
 * m, n     rows and columns of C
 * v, incv  v, all of it, m or n elements; incv is not 0
 * tau      of H; for H^H that of CLARFG is to be conjugated
 * c, ldc   C, overwritten
 * work     n elements for 'L', m for 'R' */
QRV_API void SLARF(const char* side, const int* m, const int* n, const float* v, const int* incv, const float* tau,
                   float* c, const int* ldc, float* work);
QRV_API void CLARF(const char* side, const int* m, const int* n, const qrv_complex* v, const int* incv,
                   const qrv_complex* tau, qrv_complex* c, const int* ldc, qrv_complex* work);

/* The triangular factor T of k reflectors: H = H(1)*H(2)*...*H(k) for direct 'F', with an upper T; H(k)*...*H(2)*H(1)
 * for 'B', with a lower T. For storev 'C' v(i) is column i of V, and H = I - V*T*V^H; for 'R' row i is v(i)^H, and
 * H = I - V^H*T*V. Elements that are 1 or 0 are not read: with 'F' v(i) begins with i - 1 zeros and a 1, with 'B' it
 * ends with a 1 and k - i zeros.
 *
 * n        length of the reflectors, at least k; nothing is done if n or k is 0
 * v, ldv   V: n x k for 'C', k x n for 'R'
 * tau      k elements
 * t, ldt   set to T, k x k; its other triangle is not touched
 *
 * Source: E. Elmroth, F. Gustavson, IBM J. Res. Dev. 44 (2000). */
QRV_API void SLARFT(const char* direct, const char* storev, const int* n, const int* k, const float* v, const int* ldv,
                    const float* tau, float* t, const int* ldt);
QRV_API void CLARFT(const char* direct, const char* storev, const int* n, const int* k, const qrv_complex* v,
                    const int* ldv, const qrv_complex* tau, qrv_complex* t, const int* ldt);

/* C := op(H)*C for side 'L', C*op(H) for 'R', with a block of reflectors and its T as SLARFT makes it.
 *
 * trans         'N': op(H) = H; any other letter: H^H
 * direct, storev, k, v, ldv, t, ldt  of H; its reflectors have length m for 'L', n for 'R', which is at least k
 * m, n          rows and columns of C; nothing is done if one of them is not positive
 * c, ldc        C, overwritten
 * work, ldwork  ldwork x k; ldwork >= n for 'L', >= m for 'R'. Rows beyond are not touched */
QRV_API void SLARFB(const char* side, const char* trans, const char* direct, const char* storev, const int* m,
                    const int* n, const int* k, const float* v, const int* ldv, const float* t, const int* ldt,
                    float* c, const int* ldc, float* work, const int* ldwork);
QRV_API void CLARFB(const char* side, const char* trans, const char* direct, const char* storev, const int* m,
                    const int* n, const int* k, const qrv_complex* v, const int* ldv, const qrv_complex* t,
                    const int* ldt, qrv_complex* c, const int* ldc, qrv_complex* work, const int* ldwork);

/* The last row (ILASLR, ILACLR) or column (ILASLC, ILACLC) of an m x n matrix that is not zero, counted from 1; 0 if
 * there is none. A NaN is not zero. */
QRV_API int ILASLR(const int* m, const int* n, const float* a, const int* lda);
QRV_API int ILACLR(const int* m, const int* n, const qrv_complex* a, const int* lda);
QRV_API int ILASLC(const int* m, const int* n, const float* a, const int* lda);
QRV_API int ILACLC(const int* m, const int* n, const qrv_complex* a, const int* lda);

/* sqrt(x^2 + y^2) and sqrt(x^2 + y^2 + z^2), without overflow or underflow on the way. */
QRV_API float SLAPY2(const float* x, const float* y);
QRV_API float SLAPY3(const float* x, const float* y, const float* z);

/* p + i*q = (a + i*b) / (c + i*d), or x / y, without overflow or underflow on the way.
 *
 * quotient  the result of CLADIV, a first argument ahead of the published ones */
QRV_API void SLADIV(const float* a, const float* b, const float* c, const float* d, float* p, float* q);
QRV_API void CLADIV(qrv_complex* quotient, const qrv_complex* x, const qrv_complex* y);

#ifdef __cplusplus
}
#endif

#endif
