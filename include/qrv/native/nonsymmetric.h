/* LAPACK: eigenvalues and eigenvectors of general matrices, of real elements. Calling conventions: see qrv/native.h.
 *
 * Several routines work on rows and columns ilo to ihi (from 1) of a matrix of order n, outside of which it is upper
 * triangular: 1 <= ilo <= ihi <= n, or ilo = 1 and ihi = 0 if n is 0. */
#ifndef QRV_NATIVE_NONSYMMETRIC_H
#define QRV_NATIVE_NONSYMMETRIC_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Balances a matrix A of order n: a permutation that isolates eigenvalues, and a diagonal scaling that makes the norms
 * of rows and columns nearly equal. The eigenvalues stay the same, those of the scaled matrix are often more accurate.
 *
 * job       'N' nothing but ilo, ihi and scale are set; 'P' permutes; 'S' scales; 'B' both
 * a, lda    A, overwritten by the balanced matrix; lda >= max(1, n)
 * ilo, ihi  the balanced matrix is upper triangular outside of rows and columns ilo to ihi
 * scale     n floats: from ilo to ihi the powers of two by which columns were multiplied and rows divided; j < ilo and
 *           j > ihi: the row and column (from 1) with which j was interchanged, from n down to ihi + 1 and then from 1
 *           to ilo - 1
 * A NaN ends the scaling, with *info = 0.
 * Reported: 1, 2, 4.
 *
 * Source: B. Parlett, C. Reinsch, Balancing a matrix for calculation of eigenvalues and eigenvectors, Numer. Math. 13
 * (1969). */
QRV_API void SGEBAL(const char* job, const int* n, float* a, const int* lda, int* ilo, int* ihi, float* scale,
                    int* info);

/* Eigenvectors of A from those of the matrix that SGEBAL made of it.
 *
 * job              as for SGEBAL
 * side             'R': right eigenvectors, 'L': left ones
 * ilo, ihi, scale  of SGEBAL
 * v, ldv           n x m, the vectors in its columns, overwritten; m >= 0, ldv >= max(1, n)
 * Reported: 1 to 5, 7, 9. */
QRV_API void SGEBAK(const char* job, const char* side, const int* n, const int* ilo, const int* ihi, const float* scale,
                    const int* m, float* v, const int* ldv, int* info);

/* Standard form of a 2 x 2 matrix [a b; c d], overwritten by [cs sn; -sn cs] times it times the transpose: either c is
 * 0, with real eigenvalues a and d, or a = d and b*c < 0, with the complex ones a +- i*sqrt(|b*c|).
 *
 * rt1r, rt1i, rt2r, rt2i  the eigenvalues; of complex ones the first has the positive imaginary part
 *
 * Source: Z. Bai, J. Demmel, On swapping diagonal blocks in real Schur form, Linear Algebra Appl. 186 (1993). */
QRV_API void SLANV2(float* a, float* b, float* c, float* d, float* rt1r, float* rt1i, float* rt2r, float* rt2i,
                    float* cs, float* sn);

/* Solution of (ca*A - w*D)*X = scale*B, or with A' for A, where A has order na = 1 or 2, D is diagonal and w is real
 * (nw = 1) or complex (nw = 2), with scale <= 1 such that X does not overflow.
 *
 * ltrans          not 0: A' is meant
 * smin            pivots smaller than this are replaced by it
 * d1, d2          the diagonal of D
 * b, ldb, x, ldx  na x nw; for nw = 2 the imaginary parts are in the second column
 * wr, wi          w; wi is not used for nw = 1
 * scale, xnorm    the factor; the infinity norm of X
 * info            0; 1: a pivot was replaced */
QRV_API void SLALN2(const int* ltrans, const int* na, const int* nw, const float* smin, const float* ca, const float* a,
                    const int* lda, const float* d1, const float* d2, const float* b, const int* ldb, const float* wr,
                    const float* wi, float* x, const int* ldx, float* scale, float* xnorm, int* info);

/* Solution of op(TL)*X + isgn*X*op(TR) = scale*B, where TL has order n1, TR order n2, each 1 or 2, with scale <= 1 such
 * that X does not overflow.
 *
 * ltranl, ltranr  not 0: TL' or TR' is meant
 * isgn            1 or -1
 * scale, xnorm    the factor; the infinity norm of X
 * info            0; 1: TL and -isgn*TR have nearly the same eigenvalue, and a pivot was replaced */
QRV_API void SLASY2(const int* ltranl, const int* ltranr, const int* isgn, const int* n1, const int* n2,
                    const float* tl, const int* ldtl, const float* tr, const int* ldtr, const float* b, const int* ldb,
                    float* scale, float* x, const int* ldx, float* xnorm, int* info);

#ifdef __cplusplus
}
#endif

#endif
