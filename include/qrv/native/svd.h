/* LAPACK: singular values of bidiagonal matrices. Calling conventions: see qrv/native.h. */

/* Example. The singular values of diag(3, -2):
 *
 *     const int n = 2, lwork = 500;
 *     float a[] = {3, 0, 0, -2}, s[2], work[500];
 *     int iwork[16], info;
 *     SGESDD("N", &n, &n, a, &n, s, NULL, &n, NULL, &n, work, &lwork, iwork, &info);
 *     return info == 0 && fabsf(s[0] - 3) < 1e-5f && fabsf(s[1] - 2) < 1e-5f;
 */
#ifndef QRV_NATIVE_SVD_H
#define QRV_NATIVE_SVD_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Singular value decomposition of an n x n bidiagonal matrix B = Q S P' by the implicit QR iteration.
 *
 * uplo       'U': B is upper bidiagonal, 'L': lower
 * d          diagonal of B, n; then the singular values in descending order
 * e          elements beside it, n - 1; destroyed
 * vt, u, c   n x ncvt, nru x n and n x ncc: become P' VT, U Q and Q' C. Not touched if that is 0.
 * work       4*n
 *
 * info > 0: so many elements of e did not become zero; d and e are those of a matrix that B was turned into. */
QRV_API void SBDSQR(const char* uplo, const int* n, const int* ncvt, const int* nru, const int* ncc, float* d, float* e,
                    float* vt, const int* ldvt, float* u, const int* ldu, float* c, const int* ldc, float* work,
                    int* info);

/* The same by divide and conquer.
 *
 * compq   'I': vectors, u and vt are n x n; 'P': vectors as factors, which take n log n numbers; 'N': values only
 * q, iq   the factors: n*(11 + 2*s + 8*l) floats and n*(3 + 3*l) ints, s = ILAENV(9, "SBDSDC", ...) and l = log2(n/(s +
 *         1)) cut to a whole number; not touched otherwise
 * work    3*n*n + 4*n ('I'), 6*n ('P'), 4*n; iwork: 8*n
 *
 * For n <= s the factors are U and V' themselves, in the first 2*n*n floats. Else both arrays have columns of n
 * numbers, in this order: q that U(1:s) and VT(1:s+1) of the leaves of all trees; PARTS; ORDER, the numbers of the
 * singular values in the order in which SLASDA has them; and DIFL, DIFR, Z, POLES and GIVNUM of SLASDA; iq its PERM and
 * GIVCOL. B falls into parts where an element beside its diagonal is negligible, and each has a tree of its own in its
 * rows. PARTS has at the first row of a part its size and, of more than s rows, behind it C, S, K and GIVPTR of all its
 * nodes, one array behind the other, as floats. Of a lower B these are the factors of its transpose, so that U and V
 * are exchanged.
 *
 * info > 0: it did not converge. */
QRV_API void SBDSDC(const char* uplo, const char* compq, const int* n, float* d, float* e, float* u, const int* ldu,
                    float* vt, const int* ldvt, float* q, int* iq, float* work, int* iwork, int* info);

/* SBDSQR for a matrix that has a column more (upper) or a row more (lower) if sqre is 1, and then n elements e; the
 * values are in ascending order. VT has n + 1 rows for a column more, U n + 1 columns and C n + 1 rows for a row more.
 */
QRV_API void SLASDQ(const char* uplo, const int* sqre, const int* n, const int* ncvt, const int* nru, const int* ncc,
                    float* d, float* e, float* vt, const int* ldvt, float* u, const int* ldu, float* c, const int* ldc,
                    float* work, int* info);

/* Singular value decomposition of an upper bidiagonal matrix, n x n or, with sqre = 1, n x (n + 1), by divide and
 * conquer. The values come in no order.
 *
 * u, vt   n x n and m x m, m = n + sqre: the identity before, then the vectors
 * smlsiz  rows from which on a problem is divided, 3 at least
 * iwork   8*n; work: 3*m*m + 2*m
 *
 * info > 0: a part did not converge. */
QRV_API void SLASD0(const int* n, const int* sqre, float* d, float* e, float* u, const int* ldu, float* vt,
                    const int* ldvt, const int* smlsiz, int* iwork, float* work, int* info);

/* Its merge of two parts of nl and nr rows with the row between them, alpha at the end of the left part and beta at the
 * beginning of the right one: d, u and vt are those of the parts, and become those of the whole; idxq is the
 * permutation that makes d ascending, of each part and then of the whole. iwork: 4*n, n = nl + nr + 1; work: 3*m*m +
 * 2*m. */
QRV_API void SLASD1(const int* nl, const int* nr, const int* sqre, float* d, const float* alpha, const float* beta,
                    float* u, const int* ldu, float* vt, const int* ldvt, int* idxq, int* iwork, float* work,
                    int* info);

/* The i-th root sigma of 1/rho + sum of z(j)^2 / (d(j)^2 - sigma^2), d ascending from 0 on, z of length 1. delta(j)
 * becomes d(j) - sigma and work(j) d(j) + sigma, to high relative accuracy; both are 1 if n = 1. info = 1: there is
 * none. */
QRV_API void SLASD4(const int* n, const int* i, const float* d, const float* z, float* delta, const float* rho,
                    float* sigma, float* work, int* info);

/* The same for n = 2, to which dsigma becomes. */
QRV_API void SLASD5(const int* i, const float* d, const float* z, float* delta, const float* rho, float* dsigma,
                    float* work);

/* The root tau that is nearest to 0 of rho + sum of z(j) / (d(j) - tau), j = 1, 2, 3, d ascending: between d(2) and
 * d(3) if orgati, else between d(1) and d(2), 0 being there too. finit is the value at 0; kniter is not looked at.
 * info = 1: it was not found. */
QRV_API void SLAED6(const int* kniter, const int* orgati, const float* rho, const float* d, const float* z,
                    const float* finit, float* tau, int* info);

/* The two steps of SLASD1, whose d, alpha and beta are scaled to size 1 before. SLASD2 finds the k values that are to
 * be merged: dsigma, z, and in u2 and vt2 their vectors, by idxc, in groups of coltyp(1), (2) and (3) values whose
 * left vectors reach rows of the left part, of both, and of the right part. The others are in d(k+1) to d(n), their
 * vectors in u and vt. SLASD3 finds the values and their vectors, with coltyp for ctot; z and dsigma are lost.
 *
 * idxp, idx, idxc, idxq, coltyp   n; idxq as for SLASD1, before
 * z, dsigma                       m and n
 * u2, vt2, q                      n x n, m x m, k x k
 *
 * info = 1: a root was not found. */
QRV_API void SLASD2(const int* nl, const int* nr, const int* sqre, int* k, float* d, float* z, const float* alpha,
                    const float* beta, float* u, const int* ldu, float* vt, const int* ldvt, float* dsigma, float* u2,
                    const int* ldu2, float* vt2, const int* ldvt2, int* idxp, int* idx, int* idxc, int* idxq,
                    int* coltyp, int* info);
QRV_API void SLASD3(const int* nl, const int* nr, const int* sqre, const int* k, float* d, float* q, const int* ldq,
                    float* dsigma, float* u, const int* ldu, float* u2, const int* ldu2, float* vt, const int* ldvt,
                    float* vt2, const int* ldvt2, int* idxc, int* ctot, float* z, int* info);

/* SLASD0 with the factors of the vectors (icompq = 1), or without any (0).
 *
 * u, vt               (ldu, smlsiz), (ldu, smlsiz + 1): the vectors of the leaves, each in the rows of its own, and in
 *                     columns from 1 on; of up to smlsiz rows those of the whole
 * difl, z, perm       of each level of the tree a column, in which a node has the rows of its problem; the root's is 1
 * difr, poles         the same with two columns a level, as givcol and givnum; all of leading dimension ldu but perm
 * and givcol, which have ldgcol k, givptr, c, s     of each node an element: SLASDT's nodes, but with each level
 * counted from its end work                6*m + (smlsiz + 1)^2, m = n + sqre; iwork: 7*n
 *
 * With icompq = 0 only k, difl, difr and z are stored, of one node after the other in the same place.
 *
 * info > 0: a part did not converge. */
QRV_API void SLASDA(const int* icompq, const int* smlsiz, const int* n, const int* sqre, float* d, float* e, float* u,
                    const int* ldu, float* vt, int* k, float* difl, float* difr, float* z, float* poles, int* givptr,
                    int* givcol, const int* ldgcol, int* perm, float* givnum, float* c, float* s, float* work,
                    int* iwork, int* info);

/* Its merge: SLASD1 for vf and vl, the first and the last elements of all right vectors, m each. The factors multiply
 * the left vectors of the parts, which are columns 1 to nl and nl + 2 to n, that between them being a unit vector, and
 * the right ones, columns 1 to m:
 *
 *   givcol, givnum   givptr rotations, one behind the other, with c = givnum(r,2) and s = givnum(r,1) of columns
 *                    x = givcol(r,2) and y = givcol(r,1), which become c*x + s*y and c*y - s*x
 *   c, s             with sqre = 1 another one of the right vectors alone, of x = column m and y = column nl + 1
 *   perm             column j comes from there, n of them
 *   poles, difl, difr, z, k   the first k columns are multiplied by vectors v(j) with elements z(i) / (p(i) - x(j)) /
 *                    (p(i) + x(j)), divided by difr(j,2), the length, and on the left by those with elements
 *                    p(i)*v(i), and -1 for the first, divided by theirs; p = poles(:,2), x = poles(:,1), where x(j) -
 * p(j) = difl(j) and x(j) - p(j+1) = difr(j,1). Of k = 1 they are 1 and the sign of z(1).
 *
 * work: 4*m; iwork: 3*n. */
QRV_API void SLASD6(const int* icompq, const int* nl, const int* nr, const int* sqre, float* d, float* vf, float* vl,
                    const float* alpha, const float* beta, int* idxq, int* perm, int* givptr, int* givcol,
                    const int* ldgcol, float* givnum, const int* ldgnum, float* poles, float* difl, float* difr,
                    float* z, int* k, float* c, float* s, float* work, int* iwork, int* info);

/* The two steps of SLASD6, as SLASD2 and SLASD3 are those of SLASD1: zw, vfw and vlw have m elements, idx and idxp n,
 * work 3*k; idxq is lost. SLASD8 makes z that of the factors. */
QRV_API void SLASD7(const int* icompq, const int* nl, const int* nr, const int* sqre, int* k, float* d, float* z,
                    float* zw, float* vf, float* vfw, float* vl, float* vlw, const float* alpha, const float* beta,
                    float* dsigma, int* idx, int* idxp, int* idxq, int* perm, int* givptr, int* givcol,
                    const int* ldgcol, float* givnum, const int* ldgnum, float* c, float* s, int* info);
QRV_API void SLASD8(const int* icompq, const int* k, float* d, float* z, float* vf, float* vl, float* difl, float* difr,
                    const int* lddifr, float* dsigma, float* work, int* info);

/* The tree of subproblems of divide and conquer on n rows: of its nd nodes on lvl levels node p has the children 2p and
 * 2p + 1; inode is the row that it takes out, with ndiml rows of the problem before it and ndimr behind. No problem at
 * the end of the tree has more than msub rows. */
QRV_API void SLASDT(const int* n, int* lvl, int* nd, int* inode, int* ndiml, int* ndimr, const int* msub);

/* The permutation that merges n1 elements and the n2 behind them, each ascending (strd 1) or descending (-1), into
 * ascending order. */
QRV_API void SLAMRG(const int* n1, const int* n2, const float* a, const int* strd1, const int* strd2, int* index);

/* Singular value decomposition A = U S V^H of an m x n matrix by divide and conquer; k = min(m, n).
 *
 * jobz    'A': all of U and V^H; 'S': the first k columns of U and rows of V^H; 'O': the same, the longer ones (U if
 *         m >= n, else V^H) in the place of A; 'N': singular values only
 * a       destroyed, but with 'O'
 * s       singular values in descending order, k
 * u, vt   U and V^H: m x m and n x n, m x k and k x n, or with 'O' the square one of them. Not touched otherwise.
 * work    lwork elements; WORK(1) tells how many for full speed, lwork = -1 asks for that only. At least, with real
 *         elements and max(m, n) large, about 8*k ('N'), 4*k*k + 7*k ('S', 'A') and 5*k*k + 7*k ('O')
 * rwork   complex elements: 5*k ('N'), 5*k*k + 7*k
 * iwork   8*k
 *
 * info > 0: divide and conquer did not converge. */
QRV_API void SGESDD(const char* jobz, const int* m, const int* n, float* a, const int* lda, float* s, float* u,
                    const int* ldu, float* vt, const int* ldvt, float* work, const int* lwork, int* iwork, int* info);
QRV_API void CGESDD(const char* jobz, const int* m, const int* n, qrv_complex* a, const int* lda, float* s,
                    qrv_complex* u, const int* ldu, qrv_complex* vt, const int* ldvt, qrv_complex* work,
                    const int* lwork, float* rwork, int* iwork, int* info);

/* x := conj(x), n elements incx apart. */
QRV_API void CLACGV(const int* n, qrv_complex* x, const int* incx);

/* Products of a complex matrix and a real one: C := A B, A of m x n and B of n x n, and A of m x m and B of m x n.
 * rwork: 2*m*n. */
QRV_API void CLACRM(const int* m, const int* n, const qrv_complex* a, const int* lda, const float* b, const int* ldb,
                    qrv_complex* c, const int* ldc, float* rwork);
QRV_API void CLARCM(const int* m, const int* n, const float* a, const int* lda, const qrv_complex* b, const int* ldb,
                    qrv_complex* c, const int* ldc, float* rwork);

/* B := A, a real m x n matrix; its upper triangle (uplo 'U'), its lower one ('L'), or all. */
QRV_API void CLACP2(const char* uplo, const int* m, const int* n, const float* a, const int* lda, qrv_complex* b,
                    const int* ldb);

#ifdef __cplusplus
}
#endif

#endif
