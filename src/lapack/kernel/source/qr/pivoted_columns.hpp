// The columns of a pivoted QR factorization and their norms: what SLAQPS and SLAQP2 share.
//
// vn1 is the norm of what is left of a column, kept up to date by what each row takes off it; vn2 is the last one that
// was computed from the column itself. Once the one has shrunk so far below the other that nothing may be left of its
// digits, it must be computed anew. (Z. Drmac, Z. Bujanovic, On the failure of rank-revealing QR factorization
// software, ACM TOMS 35, 2008.)
#pragma once

#include <algorithm>
#include <bit>
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

    // The first one of the longest of [from, end), or the first that is not a number.
    int longest(int from, int end) const {
        int best = from;
        for (int j = from; j < end && !std::isnan(vn1[best]); ++j)
            if (!(vn1[j] <= vn1[best]))
                best = j;
        return best;
    }
    // Brings `count` of the longest to the front. Result: the longest of the others. scratch: n elements.
    float bring_longest(int count, float* scratch) const {
        if (count >= n)
            return 0;
        const auto longer = [](float x, float y) { return std::bit_cast<unsigned>(x) > std::bit_cast<unsigned>(y); };
        std::copy_n(vn1, n, scratch); // as bits, norms have their order, and are longest where they are no numbers
        std::nth_element(scratch, scratch + count, scratch + n, longer);
        const float rest = scratch[count];
        for (int j = count, front = 0; j < n; ++j)
            if (longer(vn1[j], rest)) {
                while (longer(vn1[front], rest))
                    ++front;
                exchange(j, front);
            }
        return rest;
    }
    void exchange(int p, int i) const {
        if (p == i)
            return;
        blas::swap(m, a.column(0, p), a.column(0, i));
        std::swap(jpvt[p], jpvt[i]);
        std::swap(vn1[p], vn1[i]);
        std::swap(vn2[p], vn2[i]);
    }
    // Takes the elements in rows [first, last) off the norm of column j. Result: false if it must be computed anew.
    bool shorten(int first, int last, int j) const {
        constexpr double lost = 0x1p-12; // the root of the rounding error
        if (vn1[j] == 0)
            return true;
        double left = double{vn1[j]} * vn1[j];
        for (int r = first; r < last; ++r)
            left -= squared(a(r, j));
        if (!(left > lost * (double{vn2[j]} * vn2[j])))
            return false;
        vn1[j] = static_cast<float>(std::sqrt(left));
        return true;
    }
    // The norm of column j from row r on.
    void measure(int r, int j) const { vn1[j] = vn2[j] = r < m ? kernel::nrm2(m - r, a.column(r, j)) : 0; }

private:
    static double squared(float x) { return double{x} * x; }
    static double squared(SingleComplex x) { return squared(x.re) + squared(x.im); }
};

} // namespace qrv::lapack
