// What the steps of a merge hand on.
#pragma once

#include <cstddef>

#include "blas/matrix.hpp"

namespace qrv::lapack {

// Values are numbered from 0, which stands for the row that the division took out: then come those of the left part,
// then those of the right one. The vectors of value j > 0 are column j - 1 of U and row j - 1 of V' if it is of the
// left part, else column and row j; those of value 0 are at nl.
struct Merge {
    enum Kind : int { ofLeft, ofBoth, ofRight, deflated }; // which rows of U a vector has

    int nl, nr, n, m;
    Matrix<float> u, vt;
    int* order;               // values in ascending order; then those that are kept, and behind them the others
    int* kind;                // of a value
    int* group;               // what is kept, by kind: places in the order
    float *z, *dsigma;        // of the secular equation
    Matrix<float> u2, vt2, q; // old vectors by kind, then the deflated ones; vectors of the secular equation
    int kept = 0;             // values of the secular equation
    int count[3] = {};        // of them by kind, beside value 0

    void deflate(float* d, float alpha, float beta, const int* idxq); // d: then the deflated values behind the others
    bool solve(float* d);

private:
    int place(int value) const { return value == 0 ? nl : value <= nl ? value - 1 : value; }
    float form_first_row(float alpha, float beta, float tolerance);
    void sort(const float* d, const int* idxq);
    void arrange(float* d);

    bool find_values(float* d);
    void correct_first_row();
    void form_left_vectors();
    void form_right_vectors();
};

} // namespace qrv::lapack
