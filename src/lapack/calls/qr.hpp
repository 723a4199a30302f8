// QR, QL and LQ factorizations by value, for the rows of their routines and for other families. Instantiated for both
// element types. Reflectors and their tau: see lapack/calls/reflectors.hpp.
#pragma once

#include <cstdint>

#include "lapack/calls/reflectors.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {

// A = Q R and A = L Q in the place of A, an m x n matrix, column by column or row by row, with a diagonal of R or L
// that is not negative. work: n elements for geqr2, m for gelq2.
template <class T>
void geqr2(int m, int n, Matrix<T> a, T* tau, T* work);
template <class T>
void gelq2(int m, int n, Matrix<T> a, T* tau, T* work);

// The same in blocks, geqrf on a team. work: lwork elements, n or m at least, ge.._work for full speed, of which
// work[0] tells in the end. With less, geqrf takes memory of its own. geqrf_team_work is what a team would want,
// whatever the sizes.
template <class T>
std::int64_t geqrf_work(int m, int n);
template <class T>
std::int64_t geqrf_team_work(int m, int n);
template <class T>
std::int64_t gelqf_work(int m, int n);
template <class T>
void geqrf(int m, int n, Matrix<T> a, T* tau, T* work, int lwork);
template <class T>
void gelqf(int m, int n, Matrix<T> a, T* tau, T* work, int lwork);

// A P = Q R with column pivoting. Columns whose jpvt is not 0 come first; in the end jpvt(j) is the column, from 1,
// that stands in place j. work: lwork elements, geqp3_least_work at least, geqp3_work for full speed, of which work[0]
// tells in the end. norms: 2n floats, with which the work of real elements begins.
template <class T>
std::int64_t geqp3_least_work(int m, int n);
template <class T>
std::int64_t geqp3_work(int m, int n);
template <class T>
void geqp3(int m, int n, Matrix<T> a, int* jpvt, T* tau, T* work, int lwork, float* norms);

// Its steps on the n columns that are left when `offset` rows are done; vn1 and vn2 are their norms below these. laqp2
// takes all of them; work: n elements. laqps takes a block of at most nb, whose pivots it looks for among the `window`
// longest columns, and tells how many it took; aux: nb elements, f: n x nb. A window of less than all has at least nb,
// and f no gaps then.
template <class T>
void laqp2(int m, int n, int offset, Matrix<T> a, int* jpvt, T* tau, float* vn1, float* vn2, T* work);
template <class T>
int laqps(int m, int n, int window, int offset, int nb, Matrix<T> a, int* jpvt, T* tau, float* vn1, float* vn2, T* aux,
          Matrix<T> f);

// The forms in which k reflectors make a Q: H(1) H(2) .. H(k) by columns from QR, H(k) .. H(2) H(1) by columns that end
// with their 1 from QL, H(k)^H .. H(2)^H H(1)^H by rows from LQ.
enum class QForm { qr, ql, lq };

// The order of Q, if C is m x n; the other dimension of C.
constexpr int order_of_q(char side, int m, int n) {
    return side_of(side) == Side::left ? m : n;
}
constexpr int across_q(char side, int m, int n) {
    return side_of(side) == Side::left ? n : m;
}

// C := op(Q) C or C op(Q), C of m x n, one reflector after the other. work: n elements on the left, m on the right.
template <class T>
void orm2(QForm form, Side side, Op op, int m, int n, int k, Matrix<const T> a, const T* tau, Matrix<T> c, T* work);

// The same in blocks on a team. work: as many elements at least, orm_work for full speed; with less, memory of its own.
template <class T>
std::int64_t orm_work(QForm form, Side side, int m, int n, int k);
template <class T>
void orm(QForm form, Side side, Op op, int m, int n, int k, Matrix<const T> a, const T* tau, Matrix<T> c, T* work,
         int lwork);

// The first n columns of the Q of k reflectors from QR, m x n; the first m rows of that from LQ: in the place of the
// reflectors, one by one, and in blocks. work: n elements or m, org.._work for full speed.
template <class T>
void org2r(int m, int n, int k, Matrix<T> a, const T* tau, T* work);
template <class T>
void orgl2(int m, int n, int k, Matrix<T> a, const T* tau, T* work);
template <class T>
std::int64_t orgqr_work(int m, int n, int k);
template <class T>
std::int64_t orglq_work(int m, int n, int k);
template <class T>
void orgqr(int m, int n, int k, Matrix<T> a, const T* tau, T* work, int lwork);
template <class T>
void orglq(int m, int n, int k, Matrix<T> a, const T* tau, T* work, int lwork);

// X of least |B - op(A) X|, or of least |X| among the solutions of op(A) X = B, in the place of the columns of B, which
// has room for the larger of m and n rows; A, of full rank, becomes its QR or LQ. work: lwork elements, as many as the
// lesser of m and n and the larger of that and nrhs at least, gels_work for full speed. Result: 0, or the position of a
// zero on the diagonal of the triangle.
template <class T>
std::int64_t gels_work(int m, int n, int nrhs);
template <class T>
int gels(Op op, int m, int n, int nrhs, Matrix<T> a, Matrix<T> b, T* work, int lwork);

} // namespace qrv::lapack
