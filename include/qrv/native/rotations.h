/* LAPACK: plane rotations. Calling conventions: see qrv/native.h. */

/* Example. The rotation that turns (3, 4) into (5, 0):
 *
 *     const float f = 3, g = 4;
 *     float cs, sn, r;
 *     SLARTG(&f, &g, &cs, &sn, &r);
 *     return fabsf(r - 5) < 1e-5f && fabsf(cs - 0.6f) < 1e-6f && fabsf(sn - 0.8f) < 1e-6f;
 */
#ifndef QRV_NATIVE_ROTATIONS_H
#define QRV_NATIVE_ROTATIONS_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A rotation with [cs sn; -sn cs] * (f, g) = (r, 0) and cs^2 + sn^2 = 1, without overflow or underflow on the way to a
 * result that has none. g = 0 gives cs = 1, f = 0 gives sn = 1; otherwise cs > 0 if |f| > |g|, and r > 0 if not. */
QRV_API void SLARTG(const float* f, const float* g, float* cs, float* sn, float* r);

/* Singular values of the triangle [f g; 0 h], both >= 0. */
QRV_API void SLAS2(const float* f, const float* g, const float* h, float* ssmin, float* ssmax);

/* Singular value decomposition of the triangle [f g; 0 h]:
 *
 *   [csl snl; -snl csl] * [f g; 0 h] * [csr -snr; snr csr] = [ssmax 0; 0 ssmin],   |ssmax| >= |ssmin|
 *
 * ssmax and ssmin carry signs. */
QRV_API void SLASV2(const float* f, const float* g, const float* h, float* ssmin, float* ssmax, float* snr, float* csr,
                    float* snl, float* csl);

/* A sequence of plane rotations on an m x n matrix A.
 *
 * side    'L': A := P * A, the rotations turn its rows; 'R': A := A * P', its columns
 * pivot   the lines that rotation k turns: 'V' k and k + 1; 'T' 1 and k + 1; 'B' k and the last
 * direct  'F': P = P(z - 1) * ... * P(1) for z lines, 'B': P = P(1) * ... * P(z - 1)
 * c, s    z - 1 each: P(k) = [c(k) s(k); -s(k) c(k)]. Rotations with c = 1 and s = 0 are left out.
 *
 * A bad argument is reported, and nothing is done. */
QRV_API void SLASR(const char* side, const char* pivot, const char* direct, const int* m, const int* n, const float* c,
                   const float* s, float* a, const int* lda);

#ifdef __cplusplus
}
#endif

#endif
