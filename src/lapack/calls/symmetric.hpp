// Eigenvalues and eigenvectors of symmetric and symmetric tridiagonal matrices, by value, for the rows of their
// routines and for other families. All of real elements.
//
// A tridiagonal matrix T of order n is its diagonal d and the n - 1 elements e beside it.
#pragma once

#include <cstdint>

#include "blas/options.hpp"
#include "lapack/workspace.hpp"
#include "service/options.hpp"

namespace qrv::lapack {

// ---- Small parts --------------------------------------------------------------------------------------------------

// Eigenvalues of [a b; b c], the one of larger magnitude first, and a vector (cosine, sine) of length 1 for that one.
struct Eigenvalues2 {
    float larger, smaller;
    void store(float* toLarger, float* toSmaller) const {
        *toLarger = larger;
        *toSmaller = smaller;
    }
};
Eigenvalues2 lae2(float a, float b, float c);
struct Eigenvector2 {
    Eigenvalues2 values;
    float cosine, sine;
    void store(float* toLarger, float* toSmaller, float* toCosine, float* toSine) const {
        values.store(toLarger, toSmaller);
        *toCosine = cosine;
        *toSine = sine;
    }
};
Eigenvector2 laev2(float a, float b, float c);

enum class Order : char { ascending = 'I', descending = 'D' };
void sort(Order order, int n, float* d);

enum class Distribution : int { uniform01 = 1, uniform11 = 2, normal = 3 };
void larnv(Distribution distribution, int* seed, int n, float* x);

// P L U = T - lambda for a tridiagonal T with its diagonal in a, what is above in b, below in c: U in a, b and d, the
// multipliers of L in c, in[k] = 1 where rows k and k + 1 changed places. in[n - 1] becomes the place, from 1, of the
// first pivot that is small beside its row, or 0.
template <class Float, class Int>
struct ShiftedLu {
    Float *a, *b, *c, *d;
    Int* in;
};
using ShiftedLuOut = ShiftedLu<float, int>;
using ShiftedLuIn = ShiftedLu<const float, const int>;
void lagtf(int n, float lambda, float tolerance, const ShiftedLuOut& f);

// Solves with the factors, in place. Result: 0, or the place, from 1, where the solution overflows; a perturbed solve
// enlarges pivots so that none does, by `tolerance`, which is chosen here unless it is positive.
enum class Solve : int { plain = 1, transposed = 2, perturbed = -1, transposedPerturbed = -2 };
int lagts(int n, Solve what, const ShiftedLuIn& f, float* y, float& tolerance);

// ---- Tridiagonal matrices -----------------------------------------------------------------------------------------

// Makes d the eigenvalues in ascending order, e is overwritten. Result: 0, or how many elements of e did not become 0.
int sterf(int n, float* d, float* e);

// Eigenvalues of the tridiagonal matrix whose Cholesky factors are, squared and in turn, q(1), e(1), q(2), ... in z, 4
// n floats: z begins with them in descending order. Result: 0; -(200 + k): element k of z, from 1, is negative or NaN;
// 1: the mark of a split has the wrong sign; 2: a block took too many transforms; 3: there were too many blocks.
int lasq2(int n, float* z);

// Eigenvalues that are asked for: all, those in (low, high], or those numbered first to last, from 1.
enum class Range : char { all = 'A', values = 'V', indices = 'I' };
constexpr Range range_of(char option) {
    return static_cast<Range>(fold_case(option));
}
struct Wanted {
    Range range = Range::all;
    float low = 0, high = 0;
    int first = 0, last = 0;
};

struct StebzResult {
    int found = 0, blocks = 0;
    int info = 0; // 1: some are less accurate; 2: too few; 3: both; 4: the interval of all eigenvalues was wrong
    void store(int* toFound, int* toBlocks, int* toInfo) const {
        *toFound = found;
        *toBlocks = blocks;
        *toInfo = info;
    }
};
// Eigenvalues by bisection to abstol (if not positive: as far as rounding lets): w in ascending order, or in that order
// block by block of the matrix that has come apart; iblock: the block of each, from 1, negative if less accurate;
// isplit: the last row of each block, from 1. work: 4 n floats, iwork: 3 n ints.
StebzResult stebz(const Wanted& wanted, bool byBlock, int n, float abstol, const float* d, const float* e, float* w,
                  int* iblock, int* isplit, float* work, int* iwork);

constexpr std::int64_t stemr_work(bool vectors, int n) {
    return n > 0 ? std::int64_t{n} * (vectors ? 18 : 12) : 1;
}
constexpr std::int64_t stemr_ints(bool vectors, int n) {
    return n > 0 ? std::int64_t{n} * (vectors ? 10 : 8) : 1;
}
// Vectors that there may be.
int stemr_columns(bool vectors, const Wanted& wanted, int n, const float* d, const float* e);

struct StemrResult {
    int found = 0;
    int info = 0;          // 10 and the size of that of larre, 20 and that of larrv
    bool relative = false; // the eigenvalues have full relative accuracy
    void store(int* toFound, int* toRelative, int* toInfo) const {
        *toFound = found;
        *toRelative = relative;
        *toInfo = info;
    }
};
// Eigenvalues in ascending order and eigenvectors by relatively robust representations; d and e (n elements) are
// overwritten. isuppz: first and last row, from 1, of each vector that are not 0. tryRelative asks for relative
// accuracy where T allows it. work: 18 n floats, 12 n without vectors; iwork: 10 n, 8 n ints.
StemrResult stemr(bool vectors, Wanted wanted, int n, float* d, float* e, float* w, Matrix<float> z, int* isuppz,
                  bool tryRelative, float* work, int* iwork);

// Parts of it by themselves. Whether small relative changes of T change its eigenvalues by small relative amounts.
bool larrr(int n, const float* d, const float* e);

// Eigenvalues in (low, high], up to low and up to high, of T with diagonal d and e beside it or, `factored`, of L D L'
// with D in d and L below its diagonal in e.
struct EndCounts {
    int inside = 0, upToLow = 0, upToHigh = 0;
    void store(int* toInside, int* toLow, int* toHigh) const {
        *toInside = inside;
        *toLow = upToLow;
        *toHigh = upToHigh;
    }
};
EndCounts larrc(bool factored, int n, float low, float high, const float* d, const float* e);

// The eigenvalue of this number, from 1, of T with the squares e2, from an interval that holds all.
struct FoundValue {
    float value = 0, halfWidth = 0;
    bool converged = true;
    void store(float* toValue, float* toHalfWidth, int* toInfo) const {
        *toValue = value;
        *toHalfWidth = halfWidth;
        *toInfo = converged ? 0 : -1;
    }
};
FoundValue larrk(int n, int number, float low, float high, const float* d, const float* e2, float leastPivot,
                 float relativeTolerance);

// Eigenvalues of L D L' below x, by a factorization twisted at row r, from 0; lld: the products D L L.
int laneg(int n, const float* d, const float* lld, float x, int r);

// What stein needs of its values: blocks numbered upward, each with its values in ascending order.
constexpr bool blocks_in_order(int m, const int* iblock) {
    bool all = m <= 0 || iblock[0] >= 1;
    for (int j = 1; j < m; ++j)
        all = all && iblock[j] >= iblock[j - 1];
    return all;
}
constexpr bool values_in_order(int m, const float* w, const int* iblock) {
    bool all = true;
    for (int j = 1; j < m; ++j)
        all = all && !(iblock[j] == iblock[j - 1] && w[j] < w[j - 1]);
    return all;
}

// Eigenvectors for m values from stebz, block by block, into the columns of z. Result: how many did not converge, whose
// numbers, from 1, are in ifail. work: 5 n floats, iwork: n ints. ifail may be the same as iwork, and then means
// nothing.
int stein(int n, const float* d, const float* e, int m, const float* w, const int* iblock, const int* isplit,
          Matrix<float> z, float* work, int* iwork, int* ifail);

// ---- Dense matrices, of which one triangle is read and written ----------------------------------------------------

// Q' A Q = T: d and e of T, whose elements stay in the triangle too; the vectors of the reflectors of Q in its other
// elements, tau: n - 1 floats. sytd2 one by one; sytrd in panels, work: lwork >= 1 floats, sytrd_work for full speed.
void sytd2(Uplo uplo, int n, Matrix<float> a, float* d, float* e, float* tau);
std::int64_t sytrd_work(int n);
void sytrd(Uplo uplo, int n, Matrix<float> a, float* d, float* e, float* tau, float* work, int lwork);

// The first nb columns of a lower triangle, or the last ones of an upper one, and in w, n x nb, what the rest is to be
// updated with. The elements beside the diagonal are in e, and 1 in their places.
void latrd(int threads, Uplo uplo, int n, int nb, Matrix<float> a, float* e, float* tau, Matrix<float> w);

// C := op(Q) C or C op(Q), C of m x n, with the Q of sytrd. work: n elements on the left, m on the right, ormtr_work
// for full speed.
std::int64_t ormtr_work(Side side, Uplo uplo, int m, int n);
void ormtr(Side side, Uplo uplo, Op op, int m, int n, Matrix<const float> a, const float* tau, Matrix<float> c,
           float* work, int lwork);

constexpr std::int64_t syevr_least_work(int n) {
    return n > 0 ? 26 * std::int64_t{n} : 1;
}
constexpr std::int64_t syevr_ints(int n) {
    return n > 0 ? 10 * std::int64_t{n} : 1;
}
std::int64_t syevr_work(int n);

struct SyevrResult {
    int found = 0;
    int info = 0;
    void store(int* toFound, int* toInfo) const {
        *toFound = found;
        *toInfo = info;
    }
};
// Eigenvalues in ascending order and eigenvectors; a is overwritten. isuppz is written only where all values and
// vectors are wanted. info: of stein, or of stebz.
SyevrResult syevr(bool vectors, Wanted wanted, Uplo uplo, int n, Matrix<float> a, float abstol, float* w,
                  Matrix<float> z, int* isuppz, float* work, int lwork, int* iwork);

} // namespace qrv::lapack
