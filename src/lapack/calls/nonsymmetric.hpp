// The nonsymmetric eigenproblem by value, for the rows of its routines and for other families. Real elements only.
#pragma once

#include <cstdint>

#include "blas/options.hpp"

namespace qrv::lapack {

// ---- Small blocks -------------------------------------------------------------------------------------------------

struct Eigenvalue {
    float re, im;
};

// A 2 x 2 block in standard form, which is [cs sn; -sn cs] times the given one times the transpose: either c = 0, or
// a = d and b c < 0, the eigenvalues being a + i sqrt(|b c|) and its conjugate.
struct StandardBlock {
    float a, b, c, d;
    Eigenvalue first, second;
    float cs, sn;

    void store(float* toA, float* toB, float* toC, float* toD, float* rt1r, float* rt1i, float* rt2r, float* rt2i,
               float* toCs, float* toSn) const {
        *toA = a, *toB = b, *toC = c, *toD = d;
        *rt1r = first.re, *rt1i = first.im, *rt2r = second.re, *rt2i = second.im;
        *toCs = cs, *toSn = sn;
    }
};
StandardBlock lanv2(float a, float b, float c, float d);

// A solution of a small system: X belongs to the right-hand side times scale, which keeps it from overflow.
struct SmallSolution {
    float scale, xnorm; // of X, the infinity norm
    bool perturbed;     // the matrix was too near to a singular one

    int store(float* toScale, float* toXnorm) const {
        *toScale = scale;
        *toXnorm = xnorm;
        return perturbed ? 1 : 0;
    }
};

// (ca op(A) - w D) X = scale B, for A of order na = 1 or 2 and the diagonal D of d1 and d2. With nw = 2 the shift
// w = wr + i wi is complex, and B and X have their real parts in the first column, their imaginary parts in the second.
// A matrix with no element above smin is taken for smin times the unit matrix.
struct ShiftedSystem {
    bool transposed;
    int na, nw;
    float smin, ca;
    Matrix<const float> a;
    float d1, d2;
    Matrix<const float> b;
    float wr, wi;
};
SmallSolution laln2(const ShiftedSystem& system, Matrix<float> x);

// op(TL) X + sign X op(TR) = scale B, for TL of order n1 and TR of order n2, each 1 or 2.
struct SmallSylvester {
    bool transposedLeft, transposedRight;
    int sign, n1, n2;
    Matrix<const float> left, right, b;
};
SmallSolution lasy2(const SmallSylvester& system, Matrix<float> x);

// ---- Balancing ----------------------------------------------------------------------------------------------------

// Rows and columns [begin, end) of a matrix, counted from 0: published as ilo = begin + 1 and ihi = end.
struct ActiveRange {
    int begin, end;

    int size() const { return end - begin; }
    void store(int* ilo, int* ihi) const {
        *ilo = begin + 1;
        *ihi = end;
    }
};
constexpr ActiveRange active(int ilo, int ihi) {
    return {ilo - 1, ihi};
}

struct Balance {
    bool permutes, scales;
    float enough = 0.95F; // a row and its column are scaled if the sum of their norms falls below this part of itself
};
constexpr Balance balance_of(char job) {
    const bool both = is_option(job, 'B');
    return {both || is_option(job, 'P'), both || is_option(job, 'S')};
}

// A := inv(D) P' A P D, with a triangle before and behind the range that is returned. scale: the factors of D inside
// the range, outside the rows interchanged by P, counted from 1.
ActiveRange gebal(Balance what, int n, Matrix<float> a, float* scale);

// V := P D V for right eigenvectors, P inv(D) V for left ones; m columns.
void gebak(Balance what, Side side, int n, ActiveRange range, const float* scale, int m, Matrix<float> v);

// ---- Hessenberg form ------------------------------------------------------------------------------------------------

// H = Q' A Q in the place of A, which is triangular outside of the range: Q as size - 1 reflectors below the
// subdiagonal, tau[j] being that of column j. gehd2 does it column by column, with n floats of work; gehrd in blocks,
// with lwork >= n floats, gehrd_work for full speed.
void gehd2(int n, ActiveRange range, Matrix<float> a, float* tau, float* work);
std::int64_t gehrd_work(int n, ActiveRange range);
void gehrd(int n, ActiveRange range, Matrix<float> a, float* tau, float* work, int lwork);

// A panel of nb columns, of a matrix of n rows that begins with them: what is below row k - 1 of the first column, row
// k of the second and so on is reduced by Q = I - V T V', and Y = A V T, n x nb.
void lahr2(int threads, int n, int k, int nb, Matrix<float> a, float* tau, Matrix<float> t, Matrix<float> y);
int lahr2_threads(int n, int k);

// Q itself in the place of its reflectors, and its products C := op(Q) C or C op(Q), C of m x n. work: lwork floats,
// size - 1, or the other dimension of C, at least, .._work for full speed.
std::int64_t orghr_work(ActiveRange range);
void orghr(int n, ActiveRange range, Matrix<float> a, const float* tau, float* work, int lwork);
std::int64_t ormhr_work(Side side, int m, int n, ActiveRange range);
void ormhr(Side side, Op op, int m, int n, ActiveRange range, Matrix<const float> a, const float* tau, Matrix<float> c,
           float* work, int lwork);

// ---- QR iteration ---------------------------------------------------------------------------------------------------

// A Hessenberg matrix H of order n, of which the rows and columns of `range` are not triangular yet, on its way to
// eigenvalues in wr and wi (wantT = false; H is left as it comes) or to Schur form, with the transformations multiplied
// from the right to rows zRows of Z if wantZ.
struct SchurProblem {
    bool wantT, wantZ;
    int n;
    ActiveRange range;
    Matrix<float> h;
    float *wr, *wi;
    ActiveRange zRows;
    Matrix<float> z;
};

// Result: 0, or i if the iteration did not converge: eigenvalues behind row i (from 1) of the range are good then.
// lahqr is for small matrices. laqr0 uses what is below the subdiagonal as scratch; without `recurses` (published as
// SLAQR4) it does not call itself. work: lwork floats, n at least.
int lahqr(const SchurProblem& problem);
int laqr0(const SchurProblem& problem, bool recurses, float* work, int lwork);
int laqr0_with_room(const SchurProblem& problem); // of order 48 at most, in the corner of a larger array
std::int64_t laqr0_work(int n, ActiveRange range, bool recurses);
// As published: work[0] becomes the length for full speed; lwork = -1 asks for nothing else.
int laqr0_telling(const SchurProblem& problem, bool recurses, float* work, int lwork);

// A Hessenberg matrix of order 2 or 3: a multiple of the first column of (H - s1)(H - s2). The shifts are real, or a
// pair of conjugates.
struct ShiftPair {
    Eigenvalue first, second;
};
void laqr1(int n, Matrix<const float> h, const ShiftPair& shifts, float* v);

// Aggressive early deflation in the last nw rows of the range. Eigenvalues of the window go to wr and wi: behind the
// range that is left, deflated ones; before them, those not deflated, to be used as shifts.
struct DeflationWork {
    Matrix<float> v;  // nw x nw
    int columns;      // nw at least
    Matrix<float> t;  // nw x columns
    int rows;         // 1 at least
    Matrix<float> wv; // rows x nw
    float* work;
    int lwork; // 2 * nw at least
};
struct Deflation {
    int shifts, deflated;
};
Deflation laqr3(const SchurProblem& problem, bool recurses, int nw, const DeflationWork& work);
std::int64_t laqr3_work(ActiveRange range, int nw, bool recurses);
void laqr3_telling(const SchurProblem& problem, bool recurses, int nw, const DeflationWork& work, int* shifts,
                   int* deflated); // as laqr0_telling

// One sweep of ns / 2 small bulges over the range, with the shifts in wr and wi [0, ns).
struct SweepWork {
    bool accumulates; // reflectors are multiplied into U first
    Matrix<float> v;  // 3 x ns / 2
    Matrix<float> u;  // 3 * ns - 3 square
    int rows;
    Matrix<float> wv; // rows x 3 * ns - 3
    int columns;
    Matrix<float> wh; // 3 * ns - 3 x columns
    int threads = 0;  // at most; 0: sweep_threads
};
// Of a budget, for windows that leave so many rows and columns to be multiplied by U.
int sweep_threads(std::int64_t lines, int order, int budget);
void laqr5(const SchurProblem& problem, int ns, float* sr, float* si, const SweepWork& work);

// The driver of both. With zIsUnit Z becomes the product of the transformations alone. work: lwork >= n floats,
// hseqr_work for full speed. Result: as above.
int hseqr(const SchurProblem& problem, bool zIsUnit, float* work, int lwork);
std::int64_t hseqr_work(int n, ActiveRange range);

// ---- Schur forms ----------------------------------------------------------------------------------------------------

// H := H C or C H for a reflector, as larf; with loops of its own if that is short. work: as for larf, if it is not.
void larfx(Side side, int m, int n, const float* v, float tau, Matrix<float> c, float* work);

// Exchanges the block of order n1 at row j (from 0) of a Schur form T with that of order n2 behind it, and updates Q.
// False: the two have nearly the same eigenvalues, and nothing is done.
bool laexc(bool wantQ, int n, Matrix<float> t, Matrix<float> q, int j, int n1, int n2);

// Moves the block at row `from` (from 0) of a Schur form T to row `to`, and updates Q. Both places become those of the
// first rows of blocks, in the end. Rejected: the block could not pass a neighbour, and is at `to` now.
struct Place {
    int from, to;
    bool rejected;

    int store(int* ifst, int* ilst) const {
        *ifst = from + 1;
        *ilst = to + 1;
        return rejected ? 1 : 0;
    }
};
Place trexc(bool wantQ, int n, Matrix<float> t, Matrix<float> q, int from, int to);

// Which eigenvectors of a Schur form T are wanted, and of what: all of T, those of T that are selected, or all of the
// matrix Q T Q' whose Q is given in the arrays for the vectors.
struct EigenvectorsWanted {
    enum How : char { all = 'A', backTransformed = 'B', selected = 'S' };
    bool left, right;
    How how;
};
constexpr EigenvectorsWanted eigenvectors_wanted(char side, char howmny) {
    const bool both = is_option(side, 'B');
    return {both || is_option(side, 'L'), both || is_option(side, 'R'),
            is_option(howmny, 'B')   ? EigenvectorsWanted::backTransformed
            : is_option(howmny, 'S') ? EigenvectorsWanted::selected
                                     : EigenvectorsWanted::all};
}

// Columns that the vectors take. Of a pair of complex eigenvalues, for whose vector there are two columns, either may
// be selected.
int trevc_columns(bool selects, const int* select, int n, Matrix<const float> t);

// Each vector has a largest element of size 1; of pairs the first one is selected afterwards. work: 3 * n floats.
// Result: the columns that the vectors take.
int trevc(const EigenvectorsWanted& wanted, int n, Matrix<const float> t, int* select, Matrix<float> vl,
          Matrix<float> vr, float* work);

// ---- The driver ----------------------------------------------------------------------------------------------------

// Eigenvalues and vectors of length 1, of which complex ones have a real element of the largest size. work: lwork
// floats, geev_least_work at least, geev_work for full speed. Result: 0, or i if the eigenvalues behind the i-th only
// are known, and no vectors.
std::int64_t geev_least_work(bool vectors, int n);
std::int64_t geev_work(bool vectors, int n);
int geev(bool left, bool right, int n, Matrix<float> a, float* wr, float* wi, Matrix<float> vl, Matrix<float> vr,
         float* work, int lwork);

} // namespace qrv::lapack
