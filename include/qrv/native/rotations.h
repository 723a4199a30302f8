/* LAPACK: plane rotations. Calling conventions: see qrv/native.h. */
#ifndef QRV_NATIVE_ROTATIONS_H
#define QRV_NATIVE_ROTATIONS_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A rotation with [cs sn; -sn cs] * (f, g) = (r, 0) and cs^2 + sn^2 = 1, without overflow or underflow on the way to a
 * result that has none. g = 0 gives cs = 1, f = 0 gives sn = 1; otherwise cs > 0 if |f| > |g|, and r > 0 if not. */
QRV_API void SLARTG(const float* f, const float* g, float* cs, float* sn, float* r);

#ifdef __cplusplus
}
#endif

#endif
