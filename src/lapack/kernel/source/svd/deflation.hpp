// What a merge of divide and conquer does before it solves its secular equation: it leaves out what needs no solving.
//
// A value whose element of z is negligible is a singular value already; of two values that are equal, a rotation of
// their vectors makes one such. The text is the same for vectors that are there (lasd2.cpp) and for those of which only
// the ends are kept (lasd7.cpp).
#pragma once

#include <algorithm>
#include <cmath>

#include "lapack/calls/norms.hpp"
#include "lapack/calls/svd.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {

// Values are numbered from 0, which stands for the row that the division took out: then come those of the left part,
// then those of the right one. Value j > 0 has its vectors in place j - 1 if it is of the left part, else in place j;
// value 0 has place nl.
struct Deflation {
    enum Kind : int { ofLeft, ofBoth, ofRight, deflated }; // which rows of U a vector has

    int nl, n, m;      // rows of the left part, of the whole, and its columns
    int* order;        // values in ascending order; then those that are kept, ascending, and behind them the others
    int* kind;         // of a value
    float *z, *dsigma; // of the secular equation
    float units;       // roundings of the largest number: by so much may values differ that count as equal, and so
                       // large may an element of z be that is left out
    int kept = 0;      // values of the secular equation

    int place(int value) const { return value == 0 ? nl : value <= nl ? value - 1 : value; }

    // d: then the deflated values, descending, behind the others. ints and floats: room for n of them; idxq may be in
    // the former. `vectors` has
    //
    //   last_of_left(i)      the last element of right vector i of the left part
    //   first_of_right(i)    the first one of right vector i, counted in all rows, of the right part
    //   turn(i, j, c, s)     rotates the vectors in places i and j
    //   turn_first(c, s)     the same of right vector nl and the last one, which has no value
    template <class Vectors>
    void run(float* d, float alpha, float beta, const int* idxq, int* ints, float* floats, Vectors& vectors) {
        sort(d, idxq);
        for (int i = 0; i < nl; ++i)
            z[i + 1] = alpha * vectors.last_of_left(i);
        for (int i = nl + 1; i < n; ++i)
            z[i] = beta * vectors.first_of_right(i);
        const float own = alpha * vectors.last_of_left(nl), last = m > n ? beta * vectors.first_of_right(m - 1) : 0;
        std::copy_backward(d, d + nl, d + nl + 1); // now by value
        d[0] = 0;
        const float tolerance =
            units * machine::epsilon * std::max({d[order[n - 1]], std::fabs(alpha), std::fabs(beta)});
        kind[0] = ofBoth;
        for (int j = 1; j < n; ++j)
            kind[j] = j <= nl ? ofLeft : ofRight;

        int before = 0; // the value that comes before in the order and is not deflated
        for (int k = 1; k < n; ++k) {
            const int j = order[k];
            if (std::fabs(z[j]) <= tolerance) {
                kind[j] = deflated;
                continue;
            }
            if (before != 0 && d[j] - d[before] <= tolerance) {
                const float length = std::hypot(z[before], z[j]);
                vectors.turn(place(before), place(j), z[j] / length, -z[before] / length);
                z[j] = length;
                if (kind[j] != kind[before])
                    kind[j] = ofBoth;
                kind[before] = deflated;
            }
            before = j;
        }
        z[0] = m > n ? form_first(own, last, tolerance, vectors) : std::fabs(own) <= tolerance ? tolerance : own;
        arrange(d, ints, floats);
        // No pole may meet that at 0.
        if (kept > 1)
            dsigma[1] = std::max(dsigma[1], tolerance / 2);
    }

private:
    // The two parts, each ascending in the order of idxq, into one order.
    void sort(const float* d, const int* idxq) const {
        int left = 0, right = nl + 1;
        for (int k = 1; k < n; ++k) {
            const int l = left < nl ? idxq[left] - 1 : 0, r = right < n ? nl + idxq[right] : 0; // places in d
            const bool fromLeft = right >= n || (left < nl && d[l] <= d[r]);
            order[k] = fromLeft ? l + 1 : r;
            ++(fromLeft ? left : right);
        }
    }

    // The vector of value 0 and the last one, which has no value, are combined such that z reaches the former alone.
    // Result: its element of z.
    template <class Vectors>
    static float form_first(float own, float last, float tolerance, Vectors& vectors) {
        const float length = std::hypot(own, last);
        const bool negligible = length <= tolerance;
        vectors.turn_first(negligible ? 1 : own / length, negligible ? 0 : last / length);
        return negligible ? tolerance : length;
    }

    // What is kept comes first, ascending, then the deflated values, descending.
    void arrange(float* d, int* all, float* byValue) {
        std::copy(order + 1, order + n, all);
        kept = 1;
        order[0] = 0;
        for (int k = 0, behind = n; k < n - 1; ++k)
            if (kind[all[k]] == deflated)
                order[--behind] = all[k];
            else
                order[kept++] = all[k];
        std::copy(z, z + n, byValue);
        for (int k = 0; k < n; ++k) {
            z[k] = byValue[order[k]];
            dsigma[k] = d[order[k]];
        }
        std::copy(dsigma + kept, dsigma + n, d + kept);
    }
};

// A merge with values, alpha and beta scaled to size 1 by `solve(alpha, beta)`, which tells how many values are not
// deflated, or 0 for a failure. idxq becomes the order of all. Result: 0, or 1.
template <class Solve>
int merge_scaled(int nl, int n, float* d, float alpha, float beta, int* idxq, const Solve& solve) {
    d[nl] = 0;
    float norm = std::max(std::fabs(alpha), std::fabs(beta));
    for (int i = 0; i < n; ++i)
        norm = std::max(norm, std::fabs(d[i]));
    if (norm == 0)
        norm = 1;
    lascl({}, norm, 1, n, 1, Matrix<float>{d, n});
    const int kept = solve(alpha / norm, beta / norm);
    if (kept == 0)
        return 1;
    lascl({}, 1, norm, n, 1, Matrix<float>{d, n});
    lamrg(kept, n - kept, d, 1, -1, idxq);
    return 0;
}

} // namespace qrv::lapack
