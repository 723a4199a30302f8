// Singular values of bidiagonal matrices by value, for the rows of their routines and for other families.
#pragma once

#include <cstdint>

#include "blas/complex.hpp"
#include "blas/options.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/elements.hpp"

namespace qrv::lapack {

// Matrices that follow the singular vectors: V' of ncvt columns, which is multiplied from the left, U of nru rows,
// which is multiplied from the right, and C of ncc columns, multiplied by the adjoint of U.
struct BidiagonalVectors {
    int ncvt = 0, nru = 0, ncc = 0;
    Matrix<float> vt{nullptr, 1}, u{nullptr, 1}, c{nullptr, 1};

    bool any() const { return ncvt > 0 || nru > 0 || ncc > 0; }
};

// Singular values of an n x n bidiagonal matrix with diagonal d and n - 1 elements e beside it, descending, in the
// place of d. work: 4*n floats. Result: 0, or how many elements beside the diagonal did not become zero.
int bdsqr(Uplo uplo, int n, float* d, float* e, const BidiagonalVectors& vectors, float* work);

// The values of an upper bidiagonal matrix alone, faster. work: 4*n floats. If it comes to no end, which is false, d is
// as it was; e is always.
bool lasq1(int n, float* d, const float* e, float* work);

// The same as bdsqr for a matrix that, if `longer`, has a column more (upper) or a row more (lower) and n elements e;
// ascending.
int lasdq(Uplo uplo, bool longer, int n, float* d, float* e, const BidiagonalVectors& vectors, float* work);

// Whether all elements of a square bidiagonal matrix are.
bool all_finite(int n, const float* d, const float* e);

// Makes a square bidiagonal matrix of n rows lower if it is upper, by rotations c, s of its columns, and upper if it is
// lower, by rotations of its rows: n - 1 of them, from the first two on.
void rotate_to_other_triangle(int n, float* d, float* e, float* c, float* s);

// The tree of subproblems of at most `leaf` rows, in the order of a heap: node p has its children at 2p + 1 and 2p + 2,
// the row `center`, counted from 1, which the division takes out, and so many rows on either side. The arrays have n
// elements.
struct DivisionTree {
    int levels, nodes;
    void store(int* toLevels, int* toNodes) const {
        *toLevels = levels;
        *toNodes = nodes;
    }
};
constexpr int division_levels(int n, int leaf) {
    int levels = 1;
    for (std::int64_t size = std::int64_t{leaf} + 1; size * 2 <= n; size *= 2)
        ++levels;
    return levels;
}
DivisionTree lasdt(int n, int* center, int* left, int* right, int leaf);

// The permutation, counted from 1, that merges two runs of n1 and n2 elements, one behind the other, into ascending
// order; a run with step -1 is descending. Of equal elements those of the first run come first.
void lamrg(int n1, int n2, const float* a, int step1, int step2, int* index);

// The i-th root sigma, counted from 0, of 1/rho + sum of z(j)^2 / (d(j)^2 - sigma^2), d >= 0 ascending, z of length 1.
// delta(j) becomes d(j) - sigma and sum(j) d(j) + sigma, each with high relative accuracy; both are 1 if n = 1. Result:
// 0, or 1 if there is no root.
int lasd4(int n, int i, const float* d, const float* z, float* delta, float rho, float* sigma, float* sum);

// The same for n = 2.
void lasd5(int i, const float* d, const float* z, float* delta, float rho, float* sigma, float* sum);

// The root tau that is nearest to 0 of rho + sum of z(j) / (d(j) - tau), j = 1, 2, 3, d ascending: between the first
// two poles or the last two, 0 being there too; `atZero` is the value at 0. Result: 0, or 1 if it was not found.
int laed6(bool betweenLast, float rho, const float* d, const float* z, float atZero, float* tau);

// The two steps of the merge below, for callers that keep its arrays; lasd1 has them in one.
constexpr std::int64_t rows_of_merge(int nl, int nr, int sqre) {
    return std::int64_t{nl} + nr + 1 + sqre;
}
struct MergeOrders {
    int *idxp, *idx, *idxc, *idxq, *coltyp;
};
void lasd2(int nl, int nr, bool longer, int* k, float* d, float* z, float alpha, float beta, Matrix<float> u,
           Matrix<float> vt, float* dsigma, Matrix<float> u2, Matrix<float> vt2, const MergeOrders& orders);
int lasd3(int nl, int nr, bool longer, int k, float* d, Matrix<float> q, float* dsigma, Matrix<float> u,
          Matrix<float> u2, Matrix<float> vt, Matrix<float> vt2, int* idxc, const int* ctot, float* z);

// Singular values, ascending in the order of idxq, of a matrix
//
//   [ B1  alpha*last row  0  ]      the two triangles are those whose decompositions are in d, U and V', of nl and nr
//   [ 0   beta*first row  B2 ]      rows, the first with a column more, and the second too if `longer`
//
// U is n x n and V' m x m, n = nl + nr + 1, m = n + longer. work: 3*m*m + 2*m floats, iwork: 4*n ints. Result: 0, or 1.
int lasd1(int nl, int nr, bool longer, float* d, float alpha, float beta, Matrix<float> u, Matrix<float> vt, int* idxq,
          int* iwork, float* work);

// Singular values of an upper bidiagonal matrix of n rows, n + 1 columns if `longer`, by divide and conquer. U and V'
// are the identity before. iwork: 8*n ints, work: 3*m*m + 2*m floats, m the columns. Result: 0, or a failure.
int lasd0(int n, bool longer, float* d, float* e, Matrix<float> u, Matrix<float> vt, int leaf, int* iwork, float* work);

// Singular values, descending, and vectors of an n x n bidiagonal matrix; the values alone. work: 3*n*n + 4*n floats
// and 8*n ints, or 4*n floats.
int bdsdc(Uplo uplo, int n, float* d, float* e, Matrix<float> u, Matrix<float> vt, float* work, int* iwork);
int bdsdc_values(Uplo uplo, int n, float* d, float* e, float* work);

// ---- Divide and conquer that keeps the factors of the vectors ------------------------------------------------------

// Where a merge leaves its factors: the number k of values of the secular equation, the order that the vectors were
// brought into, the rotations before it, the equation's values and poles, the differences of its values from the pole
// before and from that behind, with the lengths of the right vectors, its z, and the rotation of the first and the last
// right vector. In all of these, vectors are counted from 1.
struct CompactMerge {
    int *k, *perm, *givptr;
    Matrix<int> givcol;
    Matrix<float> givnum, poles;
    float* difl;
    Matrix<float> difr;
    float *z, *c, *s;
};
// The first and the last elements of all right vectors, and room.
struct CompactVectors {
    float *vf, *vfw, *vl, *vlw;
};
struct CompactOrders {
    int *idx, *idxp, *idxq;
};

// lasd1 with first and last elements of right vectors for the vectors, and its two steps. Without `factors` only k,
// difl, difr and z are stored. work: 4*m floats, 3*n ints; of lasd8 3*k floats. Results: 0, or 1.
int lasd6(bool factors, int nl, int nr, bool longer, float* d, float* vf, float* vl, float alpha, float beta, int* idxq,
          const CompactMerge& to, float* work, int* iwork);
void lasd7(bool factors, int nl, int nr, bool longer, float* d, float* zw, const CompactVectors& v, float alpha,
           float beta, float* dsigma, const CompactOrders& orders, const CompactMerge& to);
int lasd8(bool factors, int k, float* d, float* z, float* vf, float* vl, float* difl, Matrix<float> difr,
          const float* dsigma, float* work);

// The factors of a whole tree: U and V' of its leaves, in the rows of theirs; of each level a column, or two, in which
// a merge has the rows of its values; of each merge an element of k, givptr, c and s.
struct CompactForm {
    Matrix<float> u, vt;
    int* k;
    Matrix<float> difl, difr, z, poles;
    int* givptr;
    Matrix<int> givcol, perm;
    Matrix<float> givnum;
    float *c, *s;

    // Of merge `number` on a level, from a row on; without factors all merges have the same place.
    CompactMerge merge(bool factors, int row, int level, int number) const {
        if (!factors)
            row = level = number = 0;
        return {k + number,
                perm.column(level) + row,
                givptr + number,
                givcol.block(row, 2 * level),
                givnum.block(row, 2 * level),
                poles.block(row, 2 * level),
                difl.column(level) + row,
                difr.block(row, 2 * level),
                z.column(level) + row,
                c + number,
                s + number};
    }
};

// lasd0 with the factors of the vectors, or without any. iwork: 7*n ints, work: 6*m floats, m the columns, and without
// factors (leaf + 1)^2 more.
int lasda(bool factors, int leaf, int n, bool longer, float* d, float* e, const CompactForm& to, float* work,
          int* iwork);

// bdsdc of an upper matrix with the factors of the vectors in q and iq. work: 6*n floats, 8*n ints.
int bdsdc_compact(int n, float* d, float* e, float* q, int* iq, float* work, int* iwork);

// Products of a complex and a real matrix: C := A B, A of m x n and B square, or A square and B of m x n. work: 2*m*n.
void lacrm(int m, int n, Matrix<const SingleComplex> a, Matrix<const float> b, Matrix<SingleComplex> c, float* work);
void larcm(int m, int n, Matrix<const float> a, Matrix<const SingleComplex> b, Matrix<SingleComplex> c, float* work);
// B := A, the named part of an m x n matrix.
void lacp2(Part part, int m, int n, Matrix<const float> a, Matrix<SingleComplex> b);

// Which vectors of an m x n matrix A = U S V^H: all; the smaller number of m and n; the same, those of the longer side
// in the place of A; none.
enum class SvdJob : char { all = 'A', some = 'S', overwrite = 'O', none = 'N' };

constexpr SvdJob svd_job_of(char option) {
    return is_option(option, 'A')   ? SvdJob::all
           : is_option(option, 'S') ? SvdJob::some
           : is_option(option, 'O') ? SvdJob::overwrite
                                    : SvdJob::none;
}
// The rows that the matrices of vectors have at least: 1 if there is none.
constexpr int rows_of_u(SvdJob job, int m, int n) {
    const bool any = job == SvdJob::all || job == SvdJob::some || (job == SvdJob::overwrite && m < n);
    return any && m > 1 ? m : 1;
}
constexpr int rows_of_vt(SvdJob job, int m, int n) {
    const int rows = job == SvdJob::all || (job == SvdJob::overwrite && m >= n) ? n
                     : job == SvdJob::some                                      ? smaller(m, n)
                                                                                : 1;
    return larger(rows, 1);
}

// Elements of work that are needed, and those for full speed.
struct SvdWork {
    std::int64_t least, best;
};
template <class T>
SvdWork gesdd_work(SvdJob job, int m, int n);
template <class T>
std::int64_t gesdd_least_work(SvdJob job, int m, int n); // without a look at the tuning values

// Singular values, descending, and vectors. iwork: 8*k ints, k = min(m, n); rwork, for complex elements: 5*k floats for
// values alone, else 5*k*k + 5*k. Result: 0, or a failure of divide and conquer.
template <class T>
int gesdd(SvdJob job, int m, int n, Matrix<T> a, float* s, Matrix<T> u, Matrix<T> vt, T* work, int lwork, float* rwork,
          int* iwork);

} // namespace qrv::lapack
