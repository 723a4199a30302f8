// Linear systems with a general square matrix by LU.
#pragma once

#include <stdexcept>
#include <string>

#include "matrix_market/matrix_market.hpp"
#include "support/judge.hpp"

namespace tools {

using namespace support;

// A singular matrix, or a result beyond single precision.
class Unsolvable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

template <class T> // float or SingleComplex
class LinearSystem {
public:
    // Factors A, which is square; `name` stands for it in messages. Raises Unsolvable if a pivot is 0 or the factors
    // are not finite.
    LinearSystem(const std::string& name, const Matrix<T>& a);

    // A^-1*B. Raises Unsolvable if the result is not finite.
    Matrix<T> solve(Matrix<T> b) const;

    // In place of the factors, which are gone.
    Matrix<T> inverse() &&;

    // Raises Unsolvable for a backward error as numbers by chance would have it: what was computed solves nothing.
    void require_solved(const BackwardError& error) const;

    // Estimate of the condition number |A| |A^-1| in the infinity norm, seldom more than a few times too small.
    // Infinity if it is beyond single precision.
    double condition() const;

    // Size of the correction to x that a step of refinement would make, in the infinity norm and relative to x, with
    // the residual in double precision: about the error of x, as long as A is not singular to working precision.
    double error_estimate(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b) const;

    // Seconds that the factorization took, and its rate by the standard count of operations.
    double factor_seconds() const { return seconds; }
    double gflops() const;

private:
    void require_finite(const Matrix<T>& values, const char* what) const;

    std::string name;
    float normOfA;
    Matrix<T> lu;
    std::vector<int> pivots;
    double seconds = 0;
};

} // namespace tools
