// The four norms of a matrix of which each column stores one run of elements: SLANGE, SLANTR and SLANSY.
//
// Largest magnitudes and sums are chosen by one rule for all norms: a value replaces the largest so far unless it
// compares below it. So a NaN takes its place, and what follows the NaN takes the NaN's.
#pragma once

#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/elements.hpp"

namespace qrv::lapack {

// Rows [first, last) of a column are stored, and its diagonal element is 1 without being stored.
struct StoredRows {
    int first, last;
    bool unitDiagonal;
};

class Largest {
public:
    explicit Largest(float first = 0) : value_(first) {}
    void take(float x) { value_ = value_ > x ? value_ : x; } // one instruction, which has this rule
    template <class T>
    void take(int n, const T* x) {
        for (int i = 0; i < n; ++i)
            take(modulus(x[i]));
    }
    // With the vector kernels, if their order does not matter: a sum of magnitudes is NaN only if one of them is.
    void take(int n, const float* x) {
        if (const float sum = kernel::asum(n, Vector{x}); sum != sum)
            take<float>(n, x);
        else if (n > 0)
            take(modulus(x[kernel::iamax(n, Vector{x}) - 1]));
    }
    float value() const { return value_; }

private:
    float value_;
};

inline float sum_of_moduli(int n, const float* x) {
    return kernel::asum(n, Vector{x});
}
inline float sum_of_moduli(int n, const SingleComplex* x) {
    float sum = 0;
    for (int i = 0; i < n; ++i)
        sum += modulus(x[i]);
    return sum;
}

template <class T, class Stored>
float largest_element(int n, Matrix<const T> a, const Stored& stored) {
    Largest largest(stored(0).unitDiagonal ? 1 : 0);
    for (int j = 0; j < n; ++j) {
        const StoredRows rows = stored(j);
        largest.take(rows.last - rows.first, &a(rows.first, j));
    }
    return largest.value();
}

template <class T, class Stored>
float largest_column_sum(int n, Matrix<const T> a, const Stored& stored) {
    Largest largest;
    for (int j = 0; j < n; ++j) {
        const StoredRows rows = stored(j);
        const float sum = sum_of_moduli(rows.last - rows.first, &a(rows.first, j));
        largest.take(rows.unitDiagonal ? 1 + sum : sum);
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

// Of a symmetric matrix, from the squares on one side of its diagonal.
inline float symmetric_frobenius_norm(ScaledSquares beside, int n, const float* diagonal, int inc) {
    beside.sumsq *= 2;
    const ScaledSquares all = lassq(n, diagonal, inc, beside);
    return all.scale * std::sqrt(all.sumsq);
}

} // namespace qrv::lapack
