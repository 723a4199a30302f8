// What the steps of a merge with all vectors hand on.
#pragma once

#include <cstddef>

#include "blas/calls.hpp"
#include "lapack/kernel/source/svd/deflation.hpp"

namespace qrv::lapack {

// As the published merge of this generation; later ones have 64, which keeps vectors of close values orthogonal in
// single precision. Here roots and z come in double, and they are: with 64 the medians of the residuals of graded,
// repeated and nearly equal values were 0.98, 0.36 and 0.33 units for 0.09, 0.14 and 0.18 with 8, and 0.13, 0.18 and
// 0.24 of the public reference, and the orthogonality no better.
inline constexpr float roundingsOfMerge = 8;

// The vectors of a value are a column of U and a row of V', in its place.
struct Merge : Deflation {
    int nr;
    Matrix<float> u, vt;
    int* group;               // what is kept, by kind: places in the order
    Matrix<float> u2, vt2, q; // old vectors by kind, then the deflated ones; vectors of the secular equation
    int count[3] = {};        // of what is kept by kind, beside value 0

    void deflate(float* d, float alpha, float beta, const int* idxq);
    bool solve(float* d);

    float last_of_left(int i) const { return vt(i, nl); }
    float first_of_right(int i) const { return vt(i, nl + 1); }
    void turn(int i, int j, float c, float s) const {
        kernel::rot(n, u.column(0, i), u.column(0, j), c, s);
        kernel::rot(m, vt.row(i, 0), vt.row(j, 0), c, s);
    }
    void turn_first(float c, float s) const { kernel::rot(m, vt.row(nl, 0), vt.row(m - 1, 0), c, s); }

private:
    void group_vectors();
    bool find_values(float* d);
    void correct_first_row();
    void take_unit_vector(int j, const float* x);
    void form_left_vectors();
    void form_right_vectors();
};

} // namespace qrv::lapack
