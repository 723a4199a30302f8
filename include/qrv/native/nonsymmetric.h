/* LAPACK: eigenvalues and eigenvectors of general matrices, of real elements. Calling conventions: see qrv/native.h.
 *
 * Several routines work on rows and columns ilo to ihi (from 1) of a matrix of order n, outside of which it is upper
 * triangular: 1 <= ilo <= ihi <= n, or ilo = 1 and ihi = 0 if n is 0. */

/* Example. The eigenvalues 1 + 2i and 1 - 2i of [1 -2; 2 1]:
 *
 *     const int n = 2, lwork = 100;
 *     float a[] = {1, 2, -2, 1}, wr[2], wi[2], work[100];
 *     int info;
 *     SGEEV("N", "N", &n, a, &n, wr, wi, NULL, &n, NULL, &n, work, &lwork, &info);
 *     return info == 0 && fabsf(wr[0] - 1) < 1e-5f && fabsf(fabsf(wi[1]) - 2) < 1e-5f;
 */
#ifndef QRV_NATIVE_NONSYMMETRIC_H
#define QRV_NATIVE_NONSYMMETRIC_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Eigenvalues and, if they are wanted, eigenvectors of a matrix A of order n: A*v = w*v, u^H*A = w*u^H. A is balanced
 * as SGEBAL does it, but norms within a factor of four of each other stay.
 *
 * jobvl, jobvr      'V': the left vectors u, the right vectors v are computed; 'N': they are not
 * a, lda            A, overwritten; lda >= max(1, n)
 * wr, wi            n floats each: real and imaginary parts; of a pair of conjugates the one with wi > 0 comes first
 * vl, ldvl          n x n, the left vectors in the order of the eigenvalues: column j, or for a pair the real part in
 * vr, ldvr          column j and the imaginary part in j + 1, the second vector being its conjugate. Each has length 1,
 *                   and a complex one a real element of the largest size. Right ones in vr. What is not computed is not
 *                   touched; ldvl, ldvr >= n if it is, else >= 1
 * work              lwork floats; work[0] is set to the lwork for full speed, also if lwork is too small
 * lwork             at least 4*n with vectors, 3*n without, and 1; -1 asks for the length only
 * info              i > 0: the iteration did not converge; there are no vectors, and of wr and wi only what is behind
 *                   element i is good, besides some at the begin
 * Reported: 1, 2, 3, 5, 9, 11, 13. */
QRV_API void SGEEV(const char* jobvl, const char* jobvr, const int* n, float* a, const int* lda, float* wr, float* wi,
                   float* vl, const int* ldvl, float* vr, const int* ldvr, float* work, const int* lwork, int* info);

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
 * Sources: B. Parlett, C. Reinsch, Balancing a matrix for calculation of eigenvalues and eigenvectors, Numer. Math. 13
 * (1969); R. James, J. Langou, B. Lowery, On matrix balancing and eigenvector computation (2014), for the norms, which
 * are Euclidean and have the diagonal in them. */
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

/* Hessenberg form H = Q'*A*Q of a matrix A of order n that is upper triangular outside of rows and columns ilo to ihi.
 * SGEHD2 works column by column, with work of n floats and without lwork.
 *
 * a, lda  A, overwritten by H and, below its subdiagonal, by the reflectors that make Q: column j < ihi (from 1) has
 *         those elements of v(j) that are behind v(j)[j + 1] = 1; lda >= max(1, n)
 * tau     n - 1 floats, of which those of columns ilo to ihi - 1 are the reflectors' factors, the others 0
 * work    lwork floats; work[0] is set to the lwork for full speed, also when a later argument is bad
 * lwork   at least max(1, n); -1 asks for the length only
 * Reported: 1, 2, 3, 5, 8.
 *
 * Source: G. Quintana-Orti, R. van de Geijn, Improving the performance of reduction to Hessenberg form, ACM TOMS 32
 * (2006). */
QRV_API void SGEHRD(const int* n, const int* ilo, const int* ihi, float* a, const int* lda, float* tau, float* work,
                    const int* lwork, int* info);
QRV_API void SGEHD2(const int* n, const int* ilo, const int* ihi, float* a, const int* lda, float* tau, float* work,
                    int* info);

/* A panel of SGEHRD: reduces the first nb columns of a matrix of n rows and n - k + 1 columns below row k by a product
 * Q = I - V*T*V' of nb reflectors, and tells T and Y = A*V*T.
 *
 * a, lda  the matrix; of its first nb columns, what is below row k is overwritten by their new elements and V
 * tau     nb floats
 * t, ldt  nb x nb, upper triangular
 * y, ldy  n x nb */
QRV_API void SLAHR2(const int* n, const int* k, const int* nb, float* a, const int* lda, float* tau, float* t,
                    const int* ldt, float* y, const int* ldy);

/* The matrix Q of SGEHRD, of order n.
 *
 * a, lda, tau  of SGEHRD; a is overwritten by Q
 * work         lwork floats; work[0] is set to the lwork for full speed
 * lwork        at least max(1, ihi - ilo); -1 asks for the length only
 * Reported: 1, 2, 3, 5, 8. */
QRV_API void SORGHR(const int* n, const int* ilo, const int* ihi, float* a, const int* lda, const float* tau,
                    float* work, const int* lwork, int* info);

/* C := Q*C, Q'*C, C*Q or C*Q' with the matrix Q of SGEHRD; C is m x n.
 *
 * side          'L': Q, of order m, stands on the left; 'R': on the right, of order n
 * trans         'N': Q; 'T': Q'
 * a, lda, tau   of SGEHRD
 * c, ldc        C, overwritten; ldc >= max(1, m)
 * work          lwork floats; work[0] is set to the lwork for full speed
 * lwork         at least max(1, n) for side 'L', max(1, m) for 'R'; -1 asks for the length only
 * Reported: 1 to 6, 8, 11, 13. */
QRV_API void SORMHR(const char* side, const char* trans, const int* m, const int* n, const int* ilo, const int* ihi,
                    const float* a, const int* lda, const float* tau, float* c, const int* ldc, float* work,
                    const int* lwork, int* info);

/* Eigenvalues of a Hessenberg matrix H of order n that is upper triangular outside of rows and columns ilo to ihi, and
 * its Schur form T = Z'*H*Z: upper triangular but for blocks of order 2 in standard form (see SLANV2), one for each
 * pair of complex eigenvalues.
 *
 * job      'E': eigenvalues only, H is overwritten by something else; 'S': H is overwritten by T
 * compz    'N': no Z; 'I': Z is set to the transformation; 'V': Z, which makes H of another matrix, is multiplied by it
 * wr, wi   n floats each: real and imaginary parts; of a pair, the one with wi > 0 comes first
 * z, ldz   n x n, not touched for compz 'N'; ldz >= max(1, n), or 1 for 'N'
 * work     lwork floats; work[0] is set to the lwork for full speed
 * lwork    at least max(1, n); -1 asks for the length only
 * info     i > 0: no convergence; wr and wi are good before row ilo and behind row i, and H and Z hold a similarity
 * that is not finished Reported: 1 to 5, 7, 11, 13.
 *
 * Sources: G. Golub, C. Van Loan, Matrix Computations, 7.5; K. Braman, R. Byers, R. Mathias, The multishift QR
 * algorithm I and II, SIAM J. Matrix Anal. Appl. 23 (2002). */
QRV_API void SHSEQR(const char* job, const char* compz, const int* n, const int* ilo, const int* ihi, float* h,
                    const int* ldh, float* wr, float* wi, float* z, const int* ldz, float* work, const int* lwork,
                    int* info);

/* The same for small matrices, by the double-shift iteration, on wantt 0 or 1 (T) and wantz 0 or 1 (rows iloz to ihiz
 * of Z are multiplied). Nothing is reported. info: as for SHSEQR. */
QRV_API void SLAHQR(const int* wantt, const int* wantz, const int* n, const int* ilo, const int* ihi, float* h,
                    const int* ldh, float* wr, float* wi, const int* iloz, const int* ihiz, float* z, const int* ldz,
                    int* info);

/* The same for large ones, by the multishift iteration, with the arguments of SLAHQR. SLAQR4 does not call itself on
 * its deflation windows. What is below the subdiagonal of H is scratch.
 *
 * work     lwork floats; work[0] is set to the lwork for full speed
 * lwork    at least max(1, n); -1 asks for the length only
 * Nothing is reported.
 *
 * Source: K. Braman, R. Byers, R. Mathias, The multishift QR algorithm I and II, SIAM J. Matrix Anal. Appl. 23 (2002).
 */
QRV_API void SLAQR0(const int* wantt, const int* wantz, const int* n, const int* ilo, const int* ihi, float* h,
                    const int* ldh, float* wr, float* wi, const int* iloz, const int* ihiz, float* z, const int* ldz,
                    float* work, const int* lwork, int* info);
QRV_API void SLAQR4(const int* wantt, const int* wantz, const int* n, const int* ilo, const int* ihi, float* h,
                    const int* ldh, float* wr, float* wi, const int* iloz, const int* ihiz, float* z, const int* ldz,
                    float* work, const int* lwork, int* info);

/* Aggressive early deflation in the last nw of the rows ktop to kbot of H, as a part of SLAQR0; SLAQR2, which uses
 * the double-shift iteration only, as a part of SLAQR4.
 *
 * ns, nd   set to the number of eigenvalues that may serve as shifts, and of those that are deflated
 * sr, si   kbot floats each: the shifts in rows kbot - nd - ns + 1 to kbot - nd, then the deflated ones
 * v, t, wv scratch: nw x nw; nw x nh, nh >= nw; nv x nw, nv >= 1
 * work     lwork floats, at least 2*nw; work[0] is set to the lwork for full speed, for which -1 asks
 * Nothing is reported. Source: as above. */
QRV_API void SLAQR3(const int* wantt, const int* wantz, const int* n, const int* ktop, const int* kbot, const int* nw,
                    float* h, const int* ldh, const int* iloz, const int* ihiz, float* z, const int* ldz, int* ns,
                    int* nd, float* sr, float* si, float* v, const int* ldv, const int* nh, float* t, const int* ldt,
                    const int* nv, float* wv, const int* ldwv, float* work, const int* lwork);
QRV_API void SLAQR2(const int* wantt, const int* wantz, const int* n, const int* ktop, const int* kbot, const int* nw,
                    float* h, const int* ldh, const int* iloz, const int* ihiz, float* z, const int* ldz, int* ns,
                    int* nd, float* sr, float* si, float* v, const int* ldv, const int* nh, float* t, const int* ldt,
                    const int* nv, float* wv, const int* ldwv, float* work, const int* lwork);

/* One sweep of nshfts shifts, an even number, over the rows ktop to kbot of H, as a part of SLAQR0.
 *
 * kacc22      0: reflectors are applied one by one; 1, 2: they are multiplied first
 * sr, si      nshfts floats each: the shifts; conjugates come to lie side by side
 * v, u        scratch: 3 x nshfts/2; square, of order 3*nshfts - 3
 * nv, wv      nv x (3*nshfts - 3), nv >= 1
 * nh, wh      (3*nshfts - 3) x nh, nh >= 1
 * Nothing is reported. Source: as above. */
QRV_API void SLAQR5(const int* wantt, const int* wantz, const int* kacc22, const int* n, const int* ktop,
                    const int* kbot, const int* nshfts, float* sr, float* si, float* h, const int* ldh, const int* iloz,
                    const int* ihiz, float* z, const int* ldz, float* v, const int* ldv, float* u, const int* ldu,
                    const int* nv, float* wv, const int* ldwv, const int* nh, float* wh, const int* ldwh);

/* v, of n elements, n being 2 or 3, is a multiple of the first column of (H - s1)*(H - s2), which is scaled to avoid
 * overflow. The shifts sr1 + i*si1 and sr2 + i*si2 are real or conjugates. Nothing is reported. */
QRV_API void SLAQR1(const int* n, const float* h, const int* ldh, const float* sr1, const float* si1, const float* sr2,
                    const float* si2, float* v);

/* Eigenvectors of a Schur form T of order n, or of A = Q*T*Q'.
 *
 * side      'R': right, 'L': left, 'B': both
 * howmny    'A': all of T; 'B': all of A, whose Q is in vl and vr on entry; 'S': those of T that are selected
 * select    n ints, for 'S' only: not 0 selects; of a pair either one does, and the first is 1 then, the second 0
 * t, ldt    T with blocks in standard form (see SLANV2); ldt >= max(1, n)
 * vl, ldvl  the vectors one behind the other as for SGEEV; each has a largest element of size 1. The array that is not
 * vr, ldvr  asked for is not touched; its leading dimension is at least 1, that of the other n
 * mm, m     columns of vl and vr; set to the number of those that are used, n but for 'S', which mm must not be below
 * work      3*n floats
 * Reported: 1, 2, 4, 6, 8, 10, 11.
 *
 * Source: G. Golub, C. Van Loan, Matrix Computations, 7.6.4. */
QRV_API void STREVC(const char* side, const char* howmny, int* select, const int* n, const float* t, const int* ldt,
                    float* vl, const int* ldvl, float* vr, const int* ldvr, const int* mm, int* m, float* work,
                    int* info);

/* Moves a block of a Schur form T = Q'*A*Q to another place by orthogonal transformations.
 *
 * compq       'V': Q is multiplied by them; 'N': it is not touched
 * t, ldt      T, overwritten; ldt >= max(1, n)
 * q, ldq      Q; ldq >= n for 'V', else >= 1
 * ifst, ilst  a row of the block, a row of the place (from 1); become those of the first rows of the blocks
 * work        not used
 * info        1: two blocks have nearly the same eigenvalues and were not exchanged; the block is at ilst then
 * Reported: 1, 2, 4, 6, 7, 8.
 *
 * Source: Z. Bai, J. Demmel, On swapping diagonal blocks in real Schur form, Linear Algebra Appl. 186 (1993). */
QRV_API void STREXC(const char* compq, const int* n, float* t, const int* ldt, float* q, const int* ldq, int* ifst,
                    int* ilst, float* work, int* info);

/* Exchanges the block of order n1 at row j1 (from 1) with the one of order n2 behind it. wantq: not 0 updates Q. work
 * is not used. info: 1: the two have nearly the same eigenvalues, nothing is done. */
QRV_API void SLAEXC(const int* wantq, const int* n, float* t, const int* ldt, float* q, const int* ldq, const int* j1,
                    const int* n1, const int* n2, float* work, int* info);

/* C := H*C (side 'L') or C*H ('R') for the reflector H = I - tau*v*v' of whole vectors v; C is m x n. work: n or m
 * floats if H has an order above 10; else not touched. */
QRV_API void SLARFX(const char* side, const int* m, const int* n, const float* v, const float* tau, float* c,
                    const int* ldc, float* work);

#ifdef __cplusplus
}
#endif

#endif
