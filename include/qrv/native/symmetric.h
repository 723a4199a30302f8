/* LAPACK: eigenvalues and eigenvectors of symmetric and symmetric tridiagonal matrices. Calling conventions: see
 * qrv/native.h.
 *
 * A symmetric tridiagonal matrix T of order n is the n elements d of its diagonal and the n - 1 elements e beside it.
 */

/* Example. The eigenvalues of [2 1; 1 2]:
 *
 *     const int n = 2, lwork = 200, liwork = 20, none = 0;
 *     const float zero = 0;
 *     float a[] = {2, 1, 1, 2}, w[2], work[200];
 *     int iwork[20], m, info;
 *     SSYEVR("N", "A", "L", &n, a, &n, &zero, &zero, &none, &none, &zero, &m, w, NULL, &n, NULL, work, &lwork,
 *            iwork, &liwork, &info);
 *     return info == 0 && m == 2 && fabsf(w[0] - 1) < 1e-5f && fabsf(w[1] - 3) < 1e-5f;
 */
#ifndef QRV_NATIVE_SYMMETRIC_H
#define QRV_NATIVE_SYMMETRIC_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* All eigenvalues of T by QL iteration without square roots.
 *
 * d, e  T, overwritten: d by the eigenvalues in ascending order
 * info  i > 0: i elements of e have not become 0 within 30*n sweeps; d means nothing then
 * Reported: 1.
 *
 * Source: B. Parlett, The Symmetric Eigenvalue Problem, 8.15. */
QRV_API void SSTERF(const int* n, float* d, float* e, int* info);

/* Chosen eigenvalues of T by bisection, each as exactly as abstol says.
 *
 * range   'A': all; 'V': those in (vl, vu]; 'I': those numbered il to iu in ascending order, from 1
 * order   'B': in ascending order within each block of a matrix that comes apart, block by block, as SSTEIN takes
 *         them; 'E': all in ascending order
 * vl, vu, il, iu  looked at for 'V' and 'I' only; vl < vu, 1 <= il <= iu <= n (il = 1, iu = 0 if n is 0)
 * abstol  width of an interval that is narrow enough; if not positive, the precision times the norm of a block. The
 *         most accurate results come with twice the smallest normal number.
 * m       set to the number of eigenvalues found, nsplit to that of the blocks
 * w       n floats, the first *m set to the eigenvalues
 * iblock  n ints: the block of each, from 1, negative if it is less accurate than asked for
 * isplit  n ints: the last row of each block, from 1
 * work    4*n floats, iwork 3*n ints
 * info    1: some eigenvalues are less accurate; 2: fewer than il to iu were found; 3: both; 4: the arithmetic is not
 *         as it should be, or d or e is not finite
 * Reported: 1, 2, 3, 5, 6, 7.
 *
 * Source: W. Kahan, Accurate eigenvalues of a symmetric tri-diagonal matrix, Stanford CS41 (1966). */
QRV_API void SSTEBZ(const char* range, const char* order, const int* n, const float* vl, const float* vu, const int* il,
                    const int* iu, const float* abstol, const float* d, const float* e, int* m, int* nsplit, float* w,
                    int* iblock, int* isplit, float* work, int* iwork, int* info);

/* Chosen eigenvalues and, with jobz 'V', eigenvectors of T by multiple relatively robust representations, in a number
 * of operations that grows as n times m.
 *
 * range, vl, vu, il, iu  as SSTEBZ
 * d, e     T, overwritten; e has n elements, the last of which is scratch
 * m        set to the number of eigenvalues found
 * w        n floats, the first *m set to the eigenvalues in ascending order
 * z, ldz   n x *m, set to the eigenvectors, each of length 1; ldz >= max(1, n). Not touched for jobz 'N', ldz >= 1.
 * nzc      columns of z; -1 asks for how many it must have: that is stored in *z, nothing is computed. At least n for
 *          range 'A', iu - il + 1 for 'I', the eigenvalues in (vl, vu] for 'V'; 0 do for jobz 'N'.
 * isuppz   2*m ints: the first and the last row, from 1, of each vector that are not 0
 * tryrac   asks for eigenvalues of full relative accuracy if not 0; set to 0 if T does not define them so
 * work, lwork    18*n floats, 12*n for jobz 'N', at least 1; lwork = -1 asks for the length
 * iwork, liwork  10*n ints, 8*n for jobz 'N', at least 1; liwork = -1 asks for the length, 2^31 - 1 if there is no int
 *          for it
 * info     10 + |info of SLARRE|: values or representations of a block of T were not found; 22: no representation of a
 *          cluster of eigenvalues
 * Reported: 1, 2, 3, 7 (vl, vu), 8, 9, 13, 14, 17 (lwork), 19 (liwork).
 *
 * Source: I. Dhillon, B. Parlett, C. Vomel, The design and implementation of the MRRR algorithm, ACM TOMS 32 (2006). */
QRV_API void SSTEMR(const char* jobz, const char* range, const int* n, float* d, float* e, const float* vl,
                    const float* vu, const int* il, const int* iu, int* m, float* w, float* z, const int* ldz,
                    const int* nzc, int* isuppz, int* tryrac, float* work, const int* lwork, int* iwork,
                    const int* liwork, int* info);

/* Eigenvectors of T for eigenvalues from SSTEBZ with order 'B', by inverse iteration.
 *
 * m, w, iblock, isplit  as SSTEBZ gives them; 0 <= m <= n
 * z, ldz  n x m, set to the eigenvectors, each of length 1; ldz >= max(1, n)
 * work    5*n floats, iwork n ints
 * ifail   m ints: the numbers, from 1, of vectors that have not converged; may be the same array as iwork, and then
 *         means nothing
 * info    i > 0: i vectors have not converged within 5 solves
 * Reported: 1, 4, 5 (values of a block not in order), 6 (blocks not in order), 9.
 *
 * Source: J. Wilkinson, The Algebraic Eigenvalue Problem, 5.53 to 5.58. */
QRV_API void SSTEIN(const int* n, const float* d, const float* e, const int* m, const float* w, const int* iblock,
                    const int* isplit, float* z, const int* ldz, float* work, int* iwork, int* ifail, int* info);

/* Reduction of a symmetric matrix A of order n, of which the triangle `uplo` is read and written, to a tridiagonal
 * matrix T = Q'*A*Q. Q is a product of reflectors I - tau*v*v': H(1)*H(2)*..*H(n-1) for uplo 'L', where v(i) begins
 * with i zeros and a 1, H(n-1)*..*H(2)*H(1) for 'U', where it ends with a 1 and n - i zeros. May use all threads of the
 * budget.
 *
 * a, lda       the triangle of A, overwritten: T in its three diagonals, the rest of v(i) in column i below it, or in
 *              column i + 1 above it; lda >= max(1, n)
 * d, e, tau    n, n - 1 and n - 1 floats, set to T and the factors of the reflectors
 * work, lwork  at least 1 float; -1 asks for the length for full speed, which *work tells in the end too
 * Reported: 1, 2, 4, 9.
 *
 * Source: J. Dongarra, S. Hammarling, D. Sorensen, Block reduction of matrices to condensed forms for eigenvalue
 * computations, J. Comput. Appl. Math. 27 (1989). */
QRV_API void SSYTRD(const char* uplo, const int* n, float* a, const int* lda, float* d, float* e, float* tau,
                    float* work, const int* lwork, int* info);

/* The same one reflector after the other. Reported: 1, 2, 4. */
QRV_API void SSYTD2(const char* uplo, const int* n, float* a, const int* lda, float* d, float* e, float* tau,
                    int* info);

/* Of the same, the first nb columns of a lower triangle or the last nb ones of an upper one. With V of their vectors,
 * the rest is to become A - V*W' - W*V'; 1 stands in the place of the elements beside the diagonal, which are in e.
 *
 * w, ldw  n x nb, set to W; ldw >= max(1, n) */
QRV_API void SLATRD(const char* uplo, const int* n, const int* nb, float* a, const int* lda, float* e, float* tau,
                    float* w, const int* ldw);

/* C := Q*C, Q'*C (side 'L'), C*Q or C*Q' ('R') with the Q of SSYTRD, by trans 'N' or 'T'.
 *
 * m, n         rows and columns of C; Q is of order m for side 'L', of order n for 'R'
 * a, lda, tau  from SSYTRD with the same uplo
 * c, ldc       C, overwritten; ldc >= max(1, m)
 * work, lwork  n floats for side 'L', m for 'R', at least 1; -1 asks for the length for full speed
 * Reported: 1, 2, 3, 4, 5, 7, 10, 12. */
QRV_API void SORMTR(const char* side, const char* uplo, const char* trans, const int* m, const int* n, const float* a,
                    const int* lda, const float* tau, float* c, const int* ldc, float* work, const int* lwork,
                    int* info);

/* Eigenvalues and, with jobz 'V', eigenvectors of a symmetric matrix of order n.
 *
 * range, vl, vu, il, iu  'A': all; 'V': those in (vl, vu]; 'I': those numbered il to iu in ascending order, from 1.
 *          'V' and 'I' are slower for more than a few, as they take bisection and inverse iteration.
 * uplo     the triangle of A that is read
 * a, lda   A, overwritten; lda >= max(1, n)
 * abstol   as SSTEBZ; looked at for 'V' and 'I', and up to 2*n*2^-23 it allows eigenvalues of full relative accuracy
 *          where the matrix defines them
 * m        set to the number of eigenvalues found
 * w        n floats, the first *m set to the eigenvalues in ascending order
 * z, ldz   n x *m, set to the eigenvectors, each of length 1; ldz >= max(1, n). Not touched for jobz 'N', ldz >= 1.
 * isuppz   2*n ints: for jobz 'V' and all eigenvalues, the first and the last row, from 1, that are not 0 of each
 *          eigenvector of the tridiagonal matrix; else not touched
 * work, lwork    26*n floats, at least 1; lwork = -1 asks for the length for full speed
 * iwork, liwork  10*n ints, at least 1; liwork = -1 asks for the length, 2^31 - 1 if there is no int for it
 * info     i > 0: i eigenvectors have not converged, or as SSTEBZ; only i - 1 eigenvalues mean something if A was far
 *          from size 1
 * Reported: 1, 2, 3, 4, 6, 8 (vl, vu), 9, 10, 15, 18, 20.
 *
 * Sources: with SSYTRD, SSTERF, SSTEMR, SSTEBZ and SSTEIN. */
QRV_API void SSYEVR(const char* jobz, const char* range, const char* uplo, const int* n, float* a, const int* lda,
                    const float* vl, const float* vu, const int* il, const int* iu, const float* abstol, int* m,
                    float* w, float* z, const int* ldz, int* isuppz, float* work, const int* lwork, int* iwork,
                    const int* liwork, int* info);

/* Puts n numbers in order, ascending for id 'I', descending for 'D'; NaN comes last. Reported: 1, 2. */
QRV_API void SLASRT(const char* id, const int* n, float* d, int* info);

/* LU factorization, with interchanges of rows, of T - lambda for a tridiagonal matrix T that need not be symmetric.
 *
 * a, b, c  diagonal, what is above it, what is below it, overwritten by the factors
 * tol      relative to the row, below which a pivot counts as small; at least the rounding error is taken
 * d        n - 2 floats, the second diagonal above the main one of U
 * in       n ints: interchanges; the last one is set to the number of the first small pivot, or 0
 * Reported: 1. */
QRV_API void SLAGTF(const int* n, float* a, const float* lambda, float* b, float* c, const float* tol, float* d,
                    int* in, int* info);

/* Solves with the factors of SLAGTF.
 *
 * job   1: T - lambda; 2: its transpose; -1, -2: the same with pivots enlarged so that nothing overflows
 * y     right-hand side, overwritten by the solution
 * tol   by which pivots are enlarged; set to the rounding error times the largest element of U if it is not positive
 * info  i > 0: element i of the solution would overflow (job 1 and 2)
 * Reported: 1, 2. */
QRV_API void SLAGTS(const int* job, const int* n, const float* a, const float* b, const float* c, const float* d,
                    const int* in, float* y, float* tol, int* info);

/* n random numbers: idist 1 uniform in (0, 1), 2 uniform in (-1, 1), 3 normal. iseed: 4 ints from 0 to 4095, the last
 * one odd, set to the seed of the next call. Nothing is reported.
 *
 * Source: G. Fishman, Multiplicative congruential random number generators with modulus 2^b, Math. Comp. 54 (1990). */
QRV_API void SLARNV(const int* idist, int* iseed, const int* n, float* x);

/* The same, uniform in (0, 1), of which at most 128 are made in a call. */
QRV_API void SLARUV(int* iseed, const int* n, float* x);

/* Singular values of the upper bidiagonal matrix with diagonal d and e above it, each to high relative accuracy.
 *
 * d     n floats, overwritten by the singular values in descending order
 * e     n - 1 floats; work: 4*n floats
 * info  2: not all were found; d means nothing then
 * Reported: 1.
 *
 * Source: B. Parlett, O. Marques, An implementation of the dqds algorithm (positive case), Linear Algebra Appl. 309
 * (2000). */
QRV_API void SLASQ1(const int* n, float* d, float* e, float* work, int* info);

/* Parts of SLASQ1. All eigenvalues, in descending order, of L*L' of a bidiagonal L from the squares of its elements: z
 * has 4*n floats, the first 2*n - 1 of which are q(1), e(1), q(2), ..., q(n). Set behind the eigenvalues: the sum of
 * what was given in z(2*n+1), that of the eigenvalues, and for n > 2 how many transforms there were, their divisions
 * beside n^2, and the percentage of shifts that were too large.
 *
 * info  -(200 + k): element k of z is negative or NaN; 1, 2, 3: no end was found
 * Reported: 1, and 2 for an element of z. */
QRV_API void SLASQ2(const int* n, float* z, int* info);

/* Of rows i0 to n0 of a qd array, which takes four floats a row: q in array 0 and in array 1, then e in both. pp is the
 * array that is given, the other one is written; 2: array 0, which was just turned round. ieee is not looked at.
 *
 * SLASQ3: splits values that have converged off the end (their places in array 0 are set and n0 lowered), and makes one
 * transform of what is left. sigma, desig: the sum of the shifts and its rounding errors, qmax: the largest q; nfail,
 * iter, ndiv count failed shifts, transforms, divisions; ttype, g: how the shift tau was chosen; dmin to dn2 as SLASQ5.
 * SLASQ4: tau, below the smallest eigenvalue, after n0in - n0 values were split off. At least three rows.
 * SLASQ5: one transform with shift tau of at least three rows. dmin, dmin1, dmin2: the least d of all rows, without the
 * last one, without the last two; dn, dnm1, dnm2: the last three. It ends early at a d below 0: tau was too large.
 * SLASQ6: the same without a shift, safe from division by 0. */
QRV_API void SLASQ3(const int* i0, int* n0, float* z, int* pp, float* dmin, float* sigma, float* desig, float* qmax,
                    int* nfail, int* iter, int* ndiv, const int* ieee, int* ttype, float* dmin1, float* dmin2,
                    float* dn, float* dn1, float* dn2, float* g, float* tau);
QRV_API void SLASQ4(const int* i0, const int* n0, const float* z, const int* pp, const int* n0in, const float* dmin,
                    const float* dmin1, const float* dmin2, const float* dn, const float* dn1, const float* dn2,
                    float* tau, int* ttype, float* g);
QRV_API void SLASQ5(const int* i0, const int* n0, float* z, const int* pp, const float* tau, float* dmin, float* dmin1,
                    float* dmin2, float* dn, float* dnm1, float* dnm2, const int* ieee);
QRV_API void SLASQ6(const int* i0, const int* n0, float* z, const int* pp, float* dmin, float* dmin1, float* dmin2,
                    float* dn, float* dnm1, float* dnm2);

/* info 0 if small relative changes of T change its eigenvalues by small relative amounts only, else 1. */
QRV_API void SLARRR(const int* n, float* d, float* e, int* info);

/* Counts eigenvalues: those in (vl, vu], up to vl and up to vu, of T for jobt 'T', of L*D*L' with D in d and L below
 * its diagonal in e for 'L'. pivmin is not looked at; info is set to 0. */
QRV_API void SLARRC(const char* jobt, const int* n, const float* vl, const float* vu, const float* d, const float* e,
                    const float* pivmin, int* eigcnt, int* lcnt, int* rcnt, int* info);

/* The iw-th eigenvalue, from 1, of T by bisection.
 *
 * gl, gu  hold all eigenvalues, but for rounding
 * e2      the squares of e
 * pivmin  smallest pivot that counts; reltol: the width that is narrow enough, beside the value
 * w, werr set to the value and half the width of its interval
 * info    -1: not as narrow as asked for */
QRV_API void SLARRK(const int* n, const int* iw, const float* gl, const float* gu, const float* d, const float* e2,
                    const float* pivmin, const float* reltol, float* w, float* werr, int* info);

/* The number of eigenvalues of L*D*L' below sigma, by a factorization that is twisted at row r, from 1 to n. d: D;
 * lld: the n - 1 products of D and the squares of L. pivmin is not looked at. */
QRV_API int SLANEG(const int* n, const float* d, const float* lld, const float* sigma, const float* pivmin,
                   const int* r);

/* Counts and cuts intervals of eigenvalues of T with diagonal d and squares e2 beside it. ab and nab are mmax x 2: ends
 * of the intervals, and eigenvalues up to them. e, c, work and iwork are not looked at, nor is nbmin.
 *
 * ijob    1: counts for the ends of minp intervals, *mout becomes the sum of their differences
 *         2: halves minp intervals, whose counts are given, until each is narrower than abstol, pivmin or reltol beside
 *         its ends, or holds none; those with values in both halves become two. *mout: how many there are then
 *         3: moves the ends of minp intervals to either side of where the count passes nval
 * nitmax  halvings of one interval at most
 * info    i > 0: the last i intervals have not converged, or mmax + 1: there was no room for more; -1: no such ijob */
QRV_API void SLAEBZ(const int* ijob, const int* nitmax, const int* n, const int* mmax, const int* minp,
                    const int* nbmin, const float* abstol, const float* reltol, const float* pivmin, const float* d,
                    const float* e, const float* e2, int* nval, float* ab, float* c, int* mout, int* nab, float* work,
                    int* iwork, int* info);

/* Parts of SSTEMR, with its blocks, eigenvalues w, half widths werr of the intervals that hold them, and distances wgap
 * to the next interval. pivmin is the smallest pivot that counts, spdiam the length of the spectrum, iblock and indexw
 * the block of a value and its number there, gers 2*n ends of intervals, one for each row of T.
 *
 * SLARRA: sets elements of e and e2 to 0 that are negligible beside -spltol*tnrm or, if spltol > 0, beside spltol and
 * their neighbours in d; nsplit blocks, whose last rows are isplit. info is set to 0.
 * SLARRB: cuts the intervals of values ifirst to ilast of L*D*L', which stand from element ifirst - offset on, until
 * half a width is at most rtol1 beside the gap or rtol2 beside the value. lld as SLANEG, which counts with a
 * factorization twisted at row `twist` if that is one. work and iwork are not looked at, info is set to 0.
 * SLARRJ: the same for T with the squares e2, to rtol beside the value.
 * SLARRD: as SSTEBZ, for a matrix in blocks, with the half widths; [wl, wu] becomes the interval that was searched.
 * gers is not looked at. Reported: 1, 2, 3, 5, 6, 7. */
QRV_API void SLARRA(const int* n, const float* d, float* e, float* e2, const float* spltol, const float* tnrm,
                    int* nsplit, int* isplit, int* info);
QRV_API void SLARRB(const int* n, const float* d, const float* lld, const int* ifirst, const int* ilast,
                    const float* rtol1, const float* rtol2, const int* offset, float* w, float* wgap, float* werr,
                    float* work, int* iwork, const float* pivmin, const float* spdiam, const int* twist, int* info);
QRV_API void SLARRJ(const int* n, const float* d, const float* e2, const int* ifirst, const int* ilast,
                    const float* rtol, const int* offset, float* w, float* werr, float* work, int* iwork,
                    const float* pivmin, const float* spdiam, int* info);
QRV_API void SLARRD(const char* range, const char* order, const int* n, const float* vl, const float* vu, const int* il,
                    const int* iu, const float* gers, const float* reltol, const float* d, const float* e,
                    const float* e2, const float* pivmin, const int* nsplit, const int* isplit, int* m, float* w,
                    float* werr, float* wl, float* wu, int* iblock, int* indexw, float* work, int* iwork, int* info);

/* Splits T and makes each block a root L*D*L' = T - shift in d and e, with the shift behind L; the values w are
 * relative to it. vl, vu become the ends of what was searched; work 6*n floats, iwork 5*n ints.
 *
 * info  -1: no values from bisection; 2: a block has no root; -5, -6: no values from SLASQ2 */
QRV_API void SLARRE(const char* range, const int* n, float* vl, float* vu, const int* il, const int* iu, float* d,
                    float* e, float* e2, const float* rtol1, const float* rtol2, const float* spltol, int* nsplit,
                    int* isplit, int* m, float* w, float* werr, float* wgap, int* iblock, int* indexw, float* gers,
                    float* pivmin, float* work, int* iwork, int* info);

/* dplus, lplus, sigma: a representation L*D*L' - sigma for the values clstrt < clend, with sigma at one end of them.
 * clgapl, clgapr: gaps to their neighbours; work 2*n floats. info 1: there is none. */
QRV_API void SLARRF(const int* n, const float* d, const float* l, const float* ld, const int* clstrt, const int* clend,
                    float* w, float* wgap, float* werr, const float* spdiam, const float* clgapl, const float* clgapr,
                    const float* pivmin, float* sigma, float* dplus, float* lplus, float* work, int* info);

/* Vectors dol to dou of the m values from SLARRE, which become absolute; d and l, the roots, are overwritten. minrgp:
 * the gap beside a value, from which on it stands alone. z is n x m, 0 in other columns; isuppz as SSTEMR; work 12*n
 * floats, iwork 7*n ints. info -2: a cluster has no representation. */
QRV_API void SLARRV(const int* n, const float* vl, const float* vu, float* d, float* l, const float* pivmin,
                    int* isplit, const int* m, const int* dol, const int* dou, const float* minrgp, const float* rtol1,
                    const float* rtol2, float* w, float* werr, float* wgap, int* iblock, int* indexw, float* gers,
                    float* z, const int* ldz, int* isuppz, float* work, int* iwork, int* info);

/* z with (L*D*L' - lambda)*z = mingma*e(r), z(r) = 1, of rows b1 to bn, by a factorization twisted at row r: on entry
 * the row, or 0 for that with the least mingma. ld = D*L, lld = D*L*L.
 *
 * gaptol  z ends where it has decayed to this; isuppz: its first and last row
 * wantnc  if not 0, negcnt is set to the number of values below lambda, else to -1
 * ztz, nrminv, resid, rqcorr  |z|^2, 1 / |z|, the residual of lambda, what to add to it; work 4*n floats */
QRV_API void SLAR1V(const int* n, const int* b1, const int* bn, const float* lambda, const float* d, const float* l,
                    const float* ld, const float* lld, const float* pivmin, const float* gaptol, float* z,
                    const int* wantnc, int* negcnt, float* ztz, float* mingma, int* r, int* isuppz, float* nrminv,
                    float* resid, float* rqcorr, float* work);

/* Eigenvalues of [a b; b c], the one of larger magnitude in *rt1; SLAEV2 sets (*cs1, *sn1) to an eigenvector of length
 * 1 for that one. */
QRV_API void SLAE2(const float* a, const float* b, const float* c, float* rt1, float* rt2);
QRV_API void SLAEV2(const float* a, const float* b, const float* c, float* rt1, float* rt2, float* cs1, float* sn1);

#ifdef __cplusplus
}
#endif

#endif
