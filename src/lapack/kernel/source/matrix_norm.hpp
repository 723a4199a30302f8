// The four norms of a matrix of which each column stores one run of elements: SLANGE and SLANTR.
//
// Largest magnitudes and sums are chosen by one rule for all norms: a value replaces the largest so far unless it
// compares below it. So a NaN takes its place, and what follows the NaN takes the NaN's.
#pragma once

#include "lapack/calls.hpp"

namespace qrv::lapack {

// Rows [first, last) of a column are stored, and its diagonal element is 1 without being stored.
struct StoredRows {
    int first, last;
    bool unitDiagonal;
};

class Largest {
public:
    explicit Largest(float first = 0) : value_(first) {}
    void take(float x) {
        if (!(x < value_))
            value_ = x;
    }
    float value() const { return value_; }

private:
    float value_;
};

template <class T, class Stored>
float largest_element(int n, Matrix<const T> a, const Stored& stored) {
    Largest largest(stored(0).unitDiagonal ? 1 : 0);
    for (int j = 0; j < n; ++j) {
        const StoredRows rows = stored(j);
        for (int i = rows.first; i < rows.last; ++i)
            largest.take(modulus(a(i, j)));
    }
    return largest.value();
}

template <class T, class Stored>
float largest_column_sum(int n, Matrix<const T> a, const Stored& stored) {
    Largest largest;
    for (int j = 0; j < n; ++j) {
        const StoredRows rows = stored(j);
        float sum = rows.unitDiagonal ? 1 : 0;
        for (int i = rows.first; i < rows.last; ++i)
            sum += modulus(a(i, j));
        largest.take(sum);
    }
    return largest.value();
}

template <class T, class Stored>
float largest_row_sum(int m, int n, Matrix<const T> a, const Stored& stored, float* sums) {
    for (int i = 0; i < m; ++i)
        sums[i] = i < n && stored(i).unitDiagonal ? 1 : 0;
    for (int j = 0; j < n; ++j) {
        const StoredRows rows = stored(j);
        for (int i = rows.first; i < rows.last; ++i)
            sums[i] += modulus(a(i, j));
    }
    Largest largest;
    for (int i = 0; i < m; ++i)
        largest.take(sums[i]);
    return largest.value();
}

// `sum` stands for the unit diagonal, if there is one.
template <class T, class Stored>
float frobenius_norm(int n, Matrix<const T> a, const Stored& stored, ScaledSquares sum) {
    for (int j = 0; j < n; ++j) {
        const StoredRows rows = stored(j);
        sum = lassq(rows.last - rows.first, &a(rows.first, j), 1, sum);
    }
    return sum.scale * std::sqrt(sum.sumsq);
}

} // namespace qrv::lapack
