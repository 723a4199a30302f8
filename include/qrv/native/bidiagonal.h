/* LAPACK: reduction to bidiagonal form. Calling conventions: see qrv/native.h. */
#ifndef QRV_NATIVE_BIDIAGONAL_H
#define QRV_NATIVE_BIDIAGONAL_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Reduction of an m x n matrix to real bidiagonal form, Q^H A P = B, B upper bidiagonal if m >= n, else lower, by
 * blocks.
 *
 * a           then B, and beside it the reflectors of Q (below) and P (to the right)
 * d           diagonal of B, min(m, n); e: the elements beside it, one fewer
 * tauq, taup  factors of the reflectors, min(m, n) each
 * work        lwork elements, max(1, m, n) at least; (m + n) times the block size for full speed, which WORK(1) tells;
 *             lwork = -1 asks for that only */
QRV_API void SGEBRD(const int* m, const int* n, float* a, const int* lda, float* d, float* e, float* tauq, float* taup,
                    float* work, const int* lwork, int* info);
QRV_API void CGEBRD(const int* m, const int* n, qrv_complex* a, const int* lda, float* d, float* e, qrv_complex* tauq,
                    qrv_complex* taup, qrv_complex* work, const int* lwork, int* info);

/* The same without blocks. work: max(m, n). */
QRV_API void SGEBD2(const int* m, const int* n, float* a, const int* lda, float* d, float* e, float* tauq, float* taup,
                    float* work, int* info);
QRV_API void CGEBD2(const int* m, const int* n, qrv_complex* a, const int* lda, float* d, float* e, qrv_complex* tauq,
                    qrv_complex* taup, qrv_complex* work, int* info);

/* The first nb rows and columns of A reduced, and X (m x nb) and Y (n x nb), by which the rest becomes A - V Y^H - X U.
 * V and U are the reflectors of Q and P as they lie in A, where their elements 1 stand in the place of d and e. */
QRV_API void SLABRD(const int* m, const int* n, const int* nb, float* a, const int* lda, float* d, float* e,
                    float* tauq, float* taup, float* x, const int* ldx, float* y, const int* ldy);
QRV_API void CLABRD(const int* m, const int* n, const int* nb, qrv_complex* a, const int* lda, float* d, float* e,
                    qrv_complex* tauq, qrv_complex* taup, qrv_complex* x, const int* ldx, qrv_complex* y,
                    const int* ldy);

#ifdef __cplusplus
}
#endif

#endif
