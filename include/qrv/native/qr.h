/* LAPACK: QR, QL and LQ factorizations, their Q applied and generated, and Householder reflectors. Calling conventions:
 * see qrv/native.h.
 *
 * Q is a product of reflectors H(i) = I - tau(i)*v(i)*v(i)^H with one element of v(i) equal to 1; tau(i) = 0 gives the
 * identity. From QR it is H(1)*H(2)*...*H(k): v(i) begins with i - 1 zeros and the 1, and the rest lies below the
 * diagonal in column i. From LQ it is H(k)^H*...*H(2)^H*H(1)^H: v(i)^H lies likewise right of the diagonal in row i.
 * From QL it is H(k)*...*H(2)*H(1): v(i) ends with the 1 and k - i zeros, and what is before that lies in column i.
 *
 * work has lwork elements. lwork = -1 asks for the length for full speed in work(1) and does nothing else; otherwise
 * work(1) tells it in the end. */

/* Example. The line through (0, 1), (1, 3), (2, 5) by least squares:
 *
 *     const int m = 3, n = 2, one = 1, lwork = 100;
 *     float a[] = {1, 1, 1, 0, 1, 2}, b[] = {1, 3, 5}, work[100];
 *     int info;
 *     SGELS("N", &m, &n, &one, a, &m, b, &m, work, &lwork, &info);
 *     return info == 0 && fabsf(b[0] - 1) < 1e-5f && fabsf(b[1] - 2) < 1e-5f;
 */
#ifndef QRV_NATIVE_QR_H
#define QRV_NATIVE_QR_H

#include "common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* QR factorization, A = Q*R, of a general m x n matrix; R is upper triangular (trapezoidal if m < n), with a diagonal
 * that is not negative. May use all threads of the budget and calls the progress routine after each panel; if that asks
 * to stop, A and tau stay as they are then, and info is 0.
 *
 * a, lda  A, overwritten by R and, below its diagonal, by the vectors of Q; lda >= max(1, m)
 * tau     min(m, n) elements, set
 * lwork   at least max(1, n). Between that and the length for full speed it takes memory of its own
 * Reported: 1, 2, 4, 7; work(1) is set even so.
 *
 * Source: A. Buttari, J. Langou, J. Kurzak, J. Dongarra, Parallel tiled QR factorization for multicore architectures,
 * Concurrency and Computation 20 (2008), for the order of tasks; E. Elmroth, F. Gustavson, IBM J. Res. Dev. 44 (2000),
 * for the recursive panels. */
QRV_API void SGEQRF(const int* m, const int* n, float* a, const int* lda, float* tau, float* work, const int* lwork,
                    int* info);
QRV_API void CGEQRF(const int* m, const int* n, qrv_complex* a, const int* lda, qrv_complex* tau, qrv_complex* work,
                    const int* lwork, int* info);

/* Least squares: X of least norm(B - op(A)*X), column by column, where op(A) has at least as many rows as columns;
 * else, of the solutions of op(A)*X = B, that of least norm. A, m x n, has full rank.
 *
 * trans     'N': op(A) = A; 'T', for CGELS 'C': its conjugate transpose
 * nrhs      columns of B and X, at least 0
 * a, lda    A, overwritten by its factors of SGEQRF, or of SGELQF if m < n; lda >= max(1, m)
 * b, ldb    B, with as many rows as op(A), overwritten by X; ldb >= max(1, m, n). Of a least squares solution what
 *           stands below X has the norm of the residual, column by column
 * lwork     at least max(1, k + max(k, nrhs)), k the lesser of m and n
 * info      i > 0: element i on the diagonal of the triangle is exactly 0, so that A has not full rank; there is no
 *           solution
 * Reported: 1, 2, 3, 4, 6, 8, 10; work(1) is set for the last one even so.
 *
 * Source: G. Golub, C. Van Loan, Matrix Computations, 5.3. */
QRV_API void SGELS(const char* trans, const int* m, const int* n, const int* nrhs, float* a, const int* lda, float* b,
                   const int* ldb, float* work, const int* lwork, int* info);
QRV_API void CGELS(const char* trans, const int* m, const int* n, const int* nrhs, qrv_complex* a, const int* lda,
                   qrv_complex* b, const int* ldb, qrv_complex* work, const int* lwork, int* info);

/* QR factorization with column pivoting, A*P = Q*R, of a general m x n matrix. The diagonal of R is not negative, and
 * each element of it is at least as large as what is below and right of it in any column.
 *
 * a, lda  A, overwritten as by SGEQRF; lda >= max(1, m)
 * jpvt    n ints: a column whose element is not 0 comes first, before any that is free to be chosen; overwritten by the
 *         number, from 1, of the column of A that stands in each place
 * tau     min(m, n) elements, set
 * lwork   at least 3*n + 1, for CGEQP3 n + 1; at least 1 if m or n is 0
 * rwork   2*n floats
 * Reported: 1, 2, 4, 8; work(1) is set for the last one even so.
 *
 * Sources: G. Quintana-Orti, X. Sun, C. Bischof, SIAM J. Sci. Comput. 19 (1998); Z. Drmac, Z. Bujanovic, ACM TOMS 35
 * (2008), for the norms of columns. */
QRV_API void SGEQP3(const int* m, const int* n, float* a, const int* lda, int* jpvt, float* tau, float* work,
                    const int* lwork, int* info);
QRV_API void CGEQP3(const int* m, const int* n, qrv_complex* a, const int* lda, int* jpvt, qrv_complex* tau,
                    qrv_complex* work, const int* lwork, float* rwork, int* info);

/* Its steps on the n columns of an m-row matrix that are left when `offset` rows are done, with norms of these columns
 * below those rows in vn1 and vn2; both are updated, and jpvt goes with the columns. SLAQP2 takes all columns, SLAQPS
 * at most nb, and sets kb to their number: it ends early where a norm must be computed anew. They check no arguments.
 *
 * work     n elements
 * auxv     nb elements; f, ldf n x nb elements of work, ldf >= n */
QRV_API void SLAQPS(const int* m, const int* n, const int* offset, const int* nb, int* kb, float* a, const int* lda,
                    int* jpvt, float* tau, float* vn1, float* vn2, float* auxv, float* f, const int* ldf);
QRV_API void CLAQPS(const int* m, const int* n, const int* offset, const int* nb, int* kb, qrv_complex* a,
                    const int* lda, int* jpvt, qrv_complex* tau, float* vn1, float* vn2, qrv_complex* auxv,
                    qrv_complex* f, const int* ldf);
QRV_API void SLAQP2(const int* m, const int* n, const int* offset, float* a, const int* lda, int* jpvt, float* tau,
                    float* vn1, float* vn2, float* work);
QRV_API void CLAQP2(const int* m, const int* n, const int* offset, qrv_complex* a, const int* lda, int* jpvt,
                    qrv_complex* tau, float* vn1, float* vn2, qrv_complex* work);

/* LQ factorization, A = L*Q, of a general m x n matrix; L is lower triangular (trapezoidal if m > n), with a diagonal
 * that is not negative.
 *
 * a, lda  A, overwritten by L and, right of its diagonal, by the vectors of Q; lda >= max(1, m)
 * tau     min(m, n) elements, set
 * lwork   at least max(1, m)
 * Reported: 1, 2, 4, 7; work(1) is set even so. */
QRV_API void SGELQF(const int* m, const int* n, float* a, const int* lda, float* tau, float* work, const int* lwork,
                    int* info);
QRV_API void CGELQF(const int* m, const int* n, qrv_complex* a, const int* lda, qrv_complex* tau, qrv_complex* work,
                    const int* lwork, int* info);

/* The same factorizations column by column and row by row. work: n elements, for LQ m. Reported: 1, 2, 4. */
QRV_API void SGEQR2(const int* m, const int* n, float* a, const int* lda, float* tau, float* work, int* info);
QRV_API void CGEQR2(const int* m, const int* n, qrv_complex* a, const int* lda, qrv_complex* tau, qrv_complex* work,
                    int* info);
QRV_API void SGELQ2(const int* m, const int* n, float* a, const int* lda, float* tau, float* work, int* info);
QRV_API void CGELQ2(const int* m, const int* n, qrv_complex* a, const int* lda, qrv_complex* tau, qrv_complex* work,
                    int* info);

/* C := op(Q)*C for side 'L', C*op(Q) for 'R', with Q from QR (..QR), QL (..QL) or LQ (..LQ). May use all threads of the
 * budget; each column (or row) of C is computed in the same order on any number of them.
 *
 * trans    'N': op(Q) = Q; 'T', for complex elements 'C': its adjoint
 * m, n     rows and columns of C
 * k        number of reflectors, at most the order of Q, which is m for 'L' and n for 'R'
 * a, lda   the vectors: k columns, lda >= max(1, order of Q); for LQ k rows, lda >= max(1, k)
 * tau      k elements
 * c, ldc   C, overwritten; ldc >= max(1, m)
 * lwork    at least max(1, n) for 'L', max(1, m) for 'R'. Between that and the length for full speed they take memory
 *          of their own
 * Reported: 1, 2, 3, 4, 5, 7, 10, 12. */
QRV_API void SORMQR(const char* side, const char* trans, const int* m, const int* n, const int* k, const float* a,
                    const int* lda, const float* tau, float* c, const int* ldc, float* work, const int* lwork,
                    int* info);
QRV_API void CUNMQR(const char* side, const char* trans, const int* m, const int* n, const int* k, const qrv_complex* a,
                    const int* lda, const qrv_complex* tau, qrv_complex* c, const int* ldc, qrv_complex* work,
                    const int* lwork, int* info);
QRV_API void SORMQL(const char* side, const char* trans, const int* m, const int* n, const int* k, const float* a,
                    const int* lda, const float* tau, float* c, const int* ldc, float* work, const int* lwork,
                    int* info);
QRV_API void CUNMQL(const char* side, const char* trans, const int* m, const int* n, const int* k, const qrv_complex* a,
                    const int* lda, const qrv_complex* tau, qrv_complex* c, const int* ldc, qrv_complex* work,
                    const int* lwork, int* info);
QRV_API void SORMLQ(const char* side, const char* trans, const int* m, const int* n, const int* k, const float* a,
                    const int* lda, const float* tau, float* c, const int* ldc, float* work, const int* lwork,
                    int* info);
QRV_API void CUNMLQ(const char* side, const char* trans, const int* m, const int* n, const int* k, const qrv_complex* a,
                    const int* lda, const qrv_complex* tau, qrv_complex* c, const int* ldc, qrv_complex* work,
                    const int* lwork, int* info);

/* The same, a reflector at a time. work: n elements for 'L', m for 'R'. Reported: 1, 2, 3, 4, 5, 7, 10. */
QRV_API void SORM2R(const char* side, const char* trans, const int* m, const int* n, const int* k, const float* a,
                    const int* lda, const float* tau, float* c, const int* ldc, float* work, int* info);
QRV_API void CUNM2R(const char* side, const char* trans, const int* m, const int* n, const int* k, const qrv_complex* a,
                    const int* lda, const qrv_complex* tau, qrv_complex* c, const int* ldc, qrv_complex* work,
                    int* info);
QRV_API void SORM2L(const char* side, const char* trans, const int* m, const int* n, const int* k, const float* a,
                    const int* lda, const float* tau, float* c, const int* ldc, float* work, int* info);
QRV_API void CUNM2L(const char* side, const char* trans, const int* m, const int* n, const int* k, const qrv_complex* a,
                    const int* lda, const qrv_complex* tau, qrv_complex* c, const int* ldc, qrv_complex* work,
                    int* info);
QRV_API void SORML2(const char* side, const char* trans, const int* m, const int* n, const int* k, const float* a,
                    const int* lda, const float* tau, float* c, const int* ldc, float* work, int* info);
QRV_API void CUNML2(const char* side, const char* trans, const int* m, const int* n, const int* k, const qrv_complex* a,
                    const int* lda, const qrv_complex* tau, qrv_complex* c, const int* ldc, qrv_complex* work,
                    int* info);

/* The first n columns of the Q of k reflectors from QR, an m x n matrix, m >= n >= k, in the place of their vectors.
 *
 * a, lda   the vectors in the first k columns, overwritten by the columns of Q; lda >= max(1, m)
 * tau      k elements
 * lwork    at least max(1, n)
 * Reported: 1, 2, 3, 5, 8; work(1) is set even so. */
QRV_API void SORGQR(const int* m, const int* n, const int* k, float* a, const int* lda, const float* tau, float* work,
                    const int* lwork, int* info);
QRV_API void CUNGQR(const int* m, const int* n, const int* k, qrv_complex* a, const int* lda, const qrv_complex* tau,
                    qrv_complex* work, const int* lwork, int* info);

/* The first m rows of the Q of k reflectors from LQ, an m x n matrix, n >= m >= k, in the place of their vectors.
 *
 * a, lda   the vectors in the first k rows, overwritten by the rows of Q; lda >= max(1, m)
 * tau      k elements
 * lwork    at least max(1, m)
 * Reported: 1, 2, 3, 5, 8; work(1) is set even so. */
QRV_API void SORGLQ(const int* m, const int* n, const int* k, float* a, const int* lda, const float* tau, float* work,
                    const int* lwork, int* info);
QRV_API void CUNGLQ(const int* m, const int* n, const int* k, qrv_complex* a, const int* lda, const qrv_complex* tau,
                    qrv_complex* work, const int* lwork, int* info);

/* The same, a reflector at a time. work: n elements, for LQ m. Reported: 1, 2, 3, 5. */
QRV_API void SORG2R(const int* m, const int* n, const int* k, float* a, const int* lda, const float* tau, float* work,
                    int* info);
QRV_API void CUNG2R(const int* m, const int* n, const int* k, qrv_complex* a, const int* lda, const qrv_complex* tau,
                    qrv_complex* work, int* info);
QRV_API void SORGL2(const int* m, const int* n, const int* k, float* a, const int* lda, const float* tau, float* work,
                    int* info);
QRV_API void CUNGL2(const int* m, const int* n, const int* k, qrv_complex* a, const int* lda, const qrv_complex* tau,
                    qrv_complex* work, int* info);

/* ---- Reflectors: these routines check no arguments ----------------------------------------------------------------
 */

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
