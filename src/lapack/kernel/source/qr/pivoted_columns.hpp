// The columns of a pivoted QR factorization and their norms: what SLAQPS and SLAQP2 share.
//
// vn1 is the norm of what is left of a column, kept up to date by what each row takes off it; vn2 is the last one that
// was computed from the column itself. Once the one has shrunk so far below the other that nothing may be left of its
// digits, it must be computed anew. (Z. Drmac, Z. Bujanovic, On the failure of rank-revealing QR factorization
// software, ACM TOMS 35, 2008.)
#pragma once

#include <algorithm>
#include <cmath>
#include <utility>

#include "blas/calls.hpp"
#include "lapack/elements.hpp"

namespace qrv::lapack {

template <class T>
struct PivotedColumns {
    int m, n;
    Matrix<T> a;
    int* jpvt;
    float *vn1, *vn2;

    // The first one of the longest from `from` on, or the first that is not a number.
    int longest(int from) const {
        int best = from;
        for (int j = from; j < n && !std::isnan(vn1[best]); ++j)
            if (!(vn1[j] <= vn1[best]))
                best = j;
        return best;
    }
    // Column p takes the place of column i, whose norms go with it; those of p are not needed any more.
    void exchange(int p, int i) const {
        if (p == i)
            return;
        blas::swap(m, a.column(0, p), a.column(0, i));
        std::swap(jpvt[p], jpvt[i]);
        vn1[p] = vn1[i];
        vn2[p] = vn2[i];
    }
    // Takes the element in row r off the norm of column j. Result: false if the norm must be computed anew.
    bool shorten(int r, int j) const {
        constexpr float lost = 0x1p-12F; // the root of the rounding error
        if (vn1[j] == 0)
            return true;
        const float share = modulus(a(r, j)) / vn1[j], left = std::max(0.0F, (1 + share) * (1 - share));
        const float ratio = vn1[j] / vn2[j];
        if (!(left * ratio * ratio > lost))
            return false;
        vn1[j] *= std::sqrt(left);
        return true;
    }
    // The norm of column j from row r on.
    void measure(int r, int j) const { vn1[j] = vn2[j] = r < m ? kernel::nrm2(m - r, a.column(r, j)) : 0; }
};

} // namespace qrv::lapack
