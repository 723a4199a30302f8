// The nonsymmetric eigenproblem by value, for the rows of its routines and for other families. Real elements only.
#pragma once

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

} // namespace qrv::lapack
