// Parts of the method of multiple relatively robust representations (SSTEMR).
//
// A representation is L D L' = T - shift whose small relative changes change its small eigenvalues by small relative
// amounts only. Each block of T gets one with the shift at an end of its spectrum (SLARRE). An eigenvalue that is far
// enough from its neighbours, beside its own size, gets its vector by a twisted factorization (SLAR1V); a cluster gets
// a representation of its own with a shift beside it (SLARRF), relative to which its members are further apart, and so
// on (SLARRV). Vectors computed so are orthogonal without being made so.
// Source: I. Dhillon, B. Parlett, Multiple representations to compute orthogonal eigenvectors of symmetric tridiagonal
// matrices, Linear Algebra Appl. 387 (2004); I. Dhillon, B. Parlett, C. Vomel, The design and implementation of the
// MRRR algorithm, ACM TOMS 32 (2006).
#pragma once

#include "lapack/calls/bisection.hpp"
#include "lapack/calls/symmetric.hpp"

namespace qrv::lapack {

// Of order n: the n elements of D, the n - 1 of L below its diagonal, and the products D L and D L L.
struct Representation {
    int n;
    const float *d, *l, *ld, *lld;
};

// Eigenvalues of a block that follow each other: the first is number `number` of the block, from 1. w -+ werr holds
// one, wgap is the distance to the next interval.
struct Values {
    float *w, *werr, *wgap;
    int number;
};

// The numbers of eigenvalues of L D L' below so many x, by a factorization twisted at row r, from 0 (SLANEG).
constexpr int pointsAtOnce = 16; // whose quotients, four vectors of them, fill the time that one row waits for another
void laneg(int n, const float* d, const float* lld, const float* x, int r, int* below);

// How far refine_interval goes: to this part of the gap to the neighbours, or of the value.
struct RefineTolerance {
    float ofGap, ofValue;
};

// Cuts the intervals of values [first, last] of L D L' until they are narrow enough (SLARRB), and tells their gaps.
void larrb(int n, const float* d, const float* lld, const Values& values, int first, int last,
           const RefineTolerance& tolerance, float leastPivot, float diameter, int twist);

// The representation L+ D+ L+' = L D L' - shift for the cluster [first, last], with the shift beside one end of it.
// gapLeft, gapRight: to the neighbours of the cluster. work: 2 n floats. Result: whether there is one.
struct ClusterGaps {
    float left, right;
};
bool larrf(const Representation& parent, const Values& values, int first, int last, float diameter, ClusterGaps gaps,
           float leastPivot, float& shift, float* dPlus, float* lPlus, float* work);

// A vector z with (L D L' - lambda) z = gamma e(r) for the twisted factorization at r, z(r) = 1, and what it tells of
// lambda.
struct Twisted {
    int r = -1;                         // from 0; on entry -1 asks for the r with the least gamma
    int first = 0, last = 0;            // z is 0 outside
    int below = -1;                     // eigenvalues below lambda
    float gamma = 0, squares = 0;       // the sum of those of z
    float scale = 0;                    // 1 / |z|
    float residual = 0, correction = 0; // of lambda, by its Rayleigh quotient

    // Of a part of the rows from number `row` on.
    void store(int row, float* toSquares, float* toGamma, int* toR, int* toSupport, float* toScale, float* toResidual,
               float* toCorrection) const {
        *toSquares = squares;
        *toGamma = gamma;
        *toR = r + row;
        toSupport[0] = first + row;
        toSupport[1] = last + row;
        *toScale = scale;
        *toResidual = residual;
        *toCorrection = correction;
    }
};
// above: L D L of the row above, if these are a part of the rows. negligible: what may be left out of z where it
// decays. work: 4 n floats.
void lar1v(const Representation& rep, float above, float lambda, float leastPivot, float negligible, float* z,
           Twisted& t, float* work);

// The same in double for several at once, the quotients of which do not wait for each other. work: 4 n doubles for one,
// which begin a vector of 16 bytes if there are more, and 4 n vectorsAtOnce for so many.
struct TwistedVector {
    double lambda;
    float negligible;
    float* z;
    Twisted twisted;
};
constexpr int vectorsAtOnce = 4;
void lar1v(const Representation& rep, float leastPivot, TwistedVector* const* vectors, int count, double* work);

// Values of T refined to this accuracy beside their size (SLARRJ): m of them, from this number on.
void larrj(const Sturm& t, int m, int number, float* w, float* werr, float tolerance, float diameter);

// Cuts T where elements beside its diagonal are negligible (SLARRA): beside the norm if the tolerance is negative, else
// beside their neighbours on the diagonal. Result: the number of blocks, whose last rows, from 1, are in isplit.
int larra(int n, const float* d, float* e, float* e2, float tolerance, float norm, int* isplit);

// T as it comes to SSTEMR: a part of a sequence of blocks with what was found of it.
struct Mrrr {
    int n;
    float *d, *e; // T; then D and L of the roots, with the shift of a block behind its L
    float* e2;
    float* gershgorin; // 2 n: an interval for each row of T
    int* isplit;       // last row of each block, from 1
    float *w, *werr, *wgap;
    int *iblock, *indexw;
    int blocks = 0, m = 0;
    float leastPivot = 0;
    Interval searched{}; // what holds the values that are wanted

    void store(float* toLow, float* toHigh, int* toBlocks, int* toM, float* toLeastPivot) const {
        *toLow = searched.low;
        *toHigh = searched.high;
        *toBlocks = blocks;
        *toM = m;
        *toLeastPivot = leastPivot;
    }

    int first_row(int block) const { return block == 0 ? 0 : isplit[block - 1]; }
    int last_row(int block) const { return isplit[block] - 1; }
    // So many values from this one on are of one block.
    int count_in_block(int begin, int block) const {
        int count = 0;
        while (begin + count < m && iblock[begin + count] == block + 1)
            ++count;
        return count;
    }
    // What holds all values of a block.
    Interval rows(int block) const {
        Interval all{gershgorin[2 * first_row(block)], gershgorin[2 * first_row(block) + 1]};
        for (int i = first_row(block) + 1; i <= last_row(block); ++i)
            all.include({gershgorin[2 * i], gershgorin[2 * i + 1]});
        return all;
    }
};

// The roots of all blocks and the eigenvalues relative to their shifts (SLARRE). work: 6 n floats, iwork: 5 n ints.
// Result: 0; -1: the values were not found by bisection; 2: a block has no root; -5: dqds did not find its values, -6:
// or one that is no number.
int larre(const Wanted& wanted, Mrrr& problem, const RefineTolerance& tolerance, float splitTolerance, float* work,
          int* iwork);

// Eigenvectors `first` to `last`, from 1, of the values (SLARRV); w becomes absolute. gap: to the next value that one
// needs to stand alone, beside its size. The bits are the same on every team. work: 12 n floats, iwork: 7 n ints.
// Result: 0, or -2: a cluster has no representation.
struct VectorsWanted {
    int first, last;
    float gap;
};
constexpr float usualGap = 3e-3F;
int larrv(Mrrr& problem, const VectorsWanted& vectors, const RefineTolerance& tolerance, Matrix<float> z, int* isuppz,
          float* work, int* iwork);

} // namespace qrv::lapack
