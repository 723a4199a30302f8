// A square matrix in factors, by each of the methods for linear systems. All have the same members:
//
//   name                     for reports
//   values                   the factors
//   factor()                 result: 0, or the number, from 1, of the pivot that is 0 or not positive
//   solve(b)                 A^-1*B in place of B
//   reciprocal_condition(x)  estimate of 1 / (|A| |A^-1|) from x = |A|, in the infinity norm
//   work()                   of the factorization, by the standard count
#pragma once

#include <type_traits>
#include <variant>

#include "routines.hpp"
#include "support/flops.hpp"

namespace tools {

using support::Work;

template <class T>
struct Lu {
    static constexpr const char* name = "LU";
    explicit Lu(const Matrix<T>& a) : values(a), pivots(static_cast<std::size_t>(a.rows)) {}

    int factor() { return tools::factor(values, pivots); }
    void solve(Matrix<T>& b) const { solve_factored(values, pivots, b); }
    float reciprocal_condition(float norm) const {
        return tools::reciprocal_condition(MatrixNorm::Infinity, values, norm);
    }
    Work work() const { return support::getrf_work(values.rows, isComplex<T>); }

    Matrix<T> values;
    std::vector<int> pivots;
};

// Of a symmetric or Hermitian matrix.
template <class T>
struct Cholesky {
    static constexpr const char* name = "Cholesky";
    explicit Cholesky(const Matrix<T>& a) : values(a) {}

    int factor() { return factor_definite(values); }
    void solve(Matrix<T>& b) const { solve_definite(values, b); }
    float reciprocal_condition(float norm) const { return reciprocal_condition_definite(values, norm); }
    Work work() const { return support::potrf_work(values.rows, isComplex<T>); }

    Matrix<T> values;
};

// Diagonals below and above the main one that hold anything but zeros.
struct Bandwidth {
    int below = 0, above = 0;

    // What LU of the band stores: interchanges make U wider.
    int diagonals() const { return 2 * below + above + 1; }
};

struct BandLu {
    static constexpr const char* name = "band LU";
    BandLu(const Matrix<float>& a, Bandwidth band);

    int factor();
    void solve(Matrix<float>& b) const;
    float reciprocal_condition(float norm) const;
    Work work() const { return support::gbtrf_work(values.columns, width.below, width.above); }

    Bandwidth width;
    Matrix<float> values; // in band storage
    std::vector<int> pivots;
};

// Of a symmetric matrix.
struct BandCholesky {
    static constexpr const char* name = "band Cholesky";
    BandCholesky(const Matrix<float>& a, Bandwidth band);

    int factor();
    void solve(Matrix<float>& b) const;
    float reciprocal_condition(float norm) const;
    Work work() const { return support::pbtrf_work(values.columns, width.below); }

    Bandwidth width;
    Matrix<float> values; // the lower triangle in band storage
};

template <class T>
using Factors = std::conditional_t<isComplex<T>, std::variant<Lu<T>, Cholesky<T>>,
                                   std::variant<Lu<T>, Cholesky<T>, BandLu, BandCholesky>>;

} // namespace tools
