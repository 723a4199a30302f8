// Linear systems with a general square matrix by LU, and how good their solutions are.
#pragma once

#include <stdexcept>
#include <string>

#include "matrix_market/matrix.hpp"

namespace tools {

// A singular matrix, or a result beyond single precision.
class Unsolvable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

template <class T> // float or SingleComplex
class LinearSystem {
public:
    // Factors A, which is square; `name` stands for it in messages. Raises Unsolvable if a pivot is 0.
    LinearSystem(const std::string& name, const Matrix<T>& a);

    // A^-1*B. Raises Unsolvable if the result is not finite.
    Matrix<T> solve(Matrix<T> b) const;
    Matrix<T> inverse() const;

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
    Matrix<T> finite(Matrix<T> result) const;

    std::string name;
    float normOfA;
    Matrix<T> lu;
    std::vector<int> pivots;
    double seconds = 0;
};

// How far the data would have to be changed for x to be the exact solution, relative to them: the smallest e with
// |b - A x| <= e (|A| |x| + |b|), elementwise and in the infinity norm. Residuals are accumulated in double precision.
// Of several right-hand sides the worst counts.
//
// Source: N. Higham, Accuracy and Stability of Numerical Algorithms, 2nd edition, SIAM (2002), theorems 7.1 and 7.3.
struct BackwardError {
    double componentwise = 0, normwise = 0;
};
template <class T>
BackwardError backward_error(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b);

// Largest error of x in the infinity norm, relative to x, that a condition number allows: |A^-1 r| / |x|.
double forward_error_bound(double condition, const BackwardError& error);

// A*x in double precision, rounded once.
template <class T>
Matrix<T> product(const Matrix<T>& a, const Matrix<T>& x);

// Largest |x - y| relative to the largest |y|.
template <class T>
double relative_difference(const Matrix<T>& x, const Matrix<T>& y);

} // namespace tools
