// A QR factorization of any matrix, and least squares problems with it.
#pragma once

#include <string>

#include "linear_system.hpp"

namespace tools {

// Of a least squares solution, in the 2-norm, with the residual in double precision. Of several right-hand sides the
// worst counts.
struct FitQuality {
    double residual = 0;      // |b - A x|
    double share = 0;         // of |b|
    double backwardError = 0; // relative size of a change of A for which x is an exact solution
    double errorBound = 0;    // of x, relative to it, as far as the columns that are used determine it
};

template <class T> // float or SingleComplex
class QrFactors {
public:
    // `name` stands for A in messages. Raises Unsolvable if the factors are not finite.
    QrFactors(const std::string& name, const Matrix<T>& a, bool pivoted);

    // Elements of the diagonal of R that stand out of the rounding errors; with pivoting, the rank of A as far as these
    // let it be known.
    int rank() const { return rank_; }
    bool has_full_rank() const { return rank_ == factors.columns; }

    // Estimate of the condition number of the leading block of R of that order, in the 1-norm.
    double condition() const;

    // x with the least |b - A x| for each column of b. Of columns that depend on others, as pivoting finds them, x is
    // 0. Raises Unsolvable if there are such without pivoting, or if x is not finite.
    Matrix<T> solve(Matrix<T> b) const;
    FitQuality quality(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b) const;

    // m x k and k x n, k the smaller dimension of A: A P = Q R. And the number, from 1, of the column of A that stands
    // in each place.
    Matrix<T> q() const;
    Matrix<T> r() const;
    const std::vector<int>& order() const { return places; }

    double factor_seconds() const { return seconds; }
    double gflops() const;

private:
    double inverse_norm() const; // of the leading block of R, about, in the 2-norm

    std::string name;
    Matrix<T> factors;
    std::vector<T> tau;
    std::vector<int> places;
    bool isPivoted;
    int rank_ = 0;
    double seconds = 0;
};

// |A P - Q R| / |A| and |Q^H Q - I| in the Frobenius norm, about: by products with a vector of random signs.
struct FactorErrors {
    double factors, orthogonality;
};
template <class T>
FactorErrors factor_errors(const QrFactors<T>& factors, const Matrix<T>& a);

} // namespace tools
