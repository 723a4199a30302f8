/* LAPACK: reduction to bidiagonal form. Calling conventions: see qrv/native.h. */

/* Example. The size of the first diagonal element: the length of the first column:
 *
 *     const int n = 2, lwork = 100;
 *     float a[] = {3, 4, 1, 2}, d[2], e[1], tauq[2], taup[2], work[100];
 *     int info;
 *     SGEBRD(&n, &n, a, &n, d, e, tauq, taup, work, &lwork, &info);
 *     return info == 0 && fabsf(fabsf(d[0]) - 5) < 1e-5f;
 */
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

/* Q (vect 'Q') or P^H ('P') of a reduction, generated in the place of its reflectors: m x n, m >= n >= min(m, k) for Q
 * and n >= m >= min(n, k) for P^H, where k is the other dimension of the matrix that was reduced, its columns for Q and
 * its rows for P^H.
 *
 * tau    tauq or taup
 * work   lwork elements, max(1, min(m, n)) at least; the block size times that for full speed, which WORK(1) tells;
 *        lwork = -1 asks for that only */
QRV_API void SORGBR(const char* vect, const int* m, const int* n, const int* k, float* a, const int* lda,
                    const float* tau, float* work, const int* lwork, int* info);
QRV_API void CUNGBR(const char* vect, const int* m, const int* n, const int* k, qrv_complex* a, const int* lda,
                    const qrv_complex* tau, qrv_complex* work, const int* lwork, int* info);

/* C := op(Q) C or C op(Q), with vect 'P' op(P) in the place of op(Q), C of m x n. a, tau and k as for SORGBR. trans is
 * 'N', 'T' with real and 'C' with complex elements. work: lwork elements, n from the left and m from the right at
 * least; WORK(1) tells how many for full speed, lwork = -1 asks for that only. */
QRV_API void SORMBR(const char* vect, const char* side, const char* trans, const int* m, const int* n, const int* k,
                    const float* a, const int* lda, const float* tau, float* c, const int* ldc, float* work,
                    const int* lwork, int* info);
QRV_API void CUNMBR(const char* vect, const char* side, const char* trans, const int* m, const int* n, const int* k,
                    const qrv_complex* a, const int* lda, const qrv_complex* tau, qrv_complex* c, const int* ldc,
                    qrv_complex* work, const int* lwork, int* info);

#ifdef __cplusplus
}
#endif

#endif
