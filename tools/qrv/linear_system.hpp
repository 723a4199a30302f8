// Linear systems with a square matrix: LU, or what its symmetry and its zeros allow.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

#include "factors.hpp"
#include "matrix_file/matrix_file.hpp"
#include "support/judge.hpp"

namespace tools {

using namespace support;

// A singular matrix, or a result beyond single precision.
class Unsolvable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// band: Cholesky or LU within the band of a real matrix. automatic: the band if it is narrow, Cholesky if A may be
// positive definite, and LU where Cholesky finds that it is not.
enum class Method { automatic, lu, cholesky, band };

// Its nonzero elements lie near the diagonal: LU of the band stores a quarter of a full matrix at most.
Bandwidth bandwidth_of(const Matrix<float>& a);
bool is_narrow(Bandwidth band, int n);

// Symmetric or Hermitian, with a positive diagonal.
template <class T>
bool may_be_definite(const Matrix<T>& a);

template <class T> // float or SingleComplex
class LinearSystem {
public:
    // Factors A, which is square; `name` stands for it in messages. Raises Unsolvable if a pivot is 0, the factors are
    // not finite, or A is not for the method.
    LinearSystem(const std::string& name, const Matrix<T>& a, Method method = Method::lu);

    // A^-1*B. Raises Unsolvable if the result is not finite.
    Matrix<T> solve(Matrix<T> b) const;

    // In place of the factors, which are gone; of LU only.
    Matrix<T> inverse() &&;

    // Raises Unsolvable for a backward error as numbers by chance would have it: what was computed solves nothing.
    void require_solved(const BackwardError& error) const;

    // Estimate of the condition number |A| |A^-1| in the infinity norm, seldom more than a few times too small.
    // Infinity if it is beyond single precision.
    double condition() const;

    // Size of the correction to x that a step of refinement would make, in the infinity norm and relative to x, with
    // the residual in double precision: about the error of x, as long as A is not singular to working precision.
    double error_estimate(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b) const;

    // How the factors were made at last; the column at which Cholesky gave up before, from 1, or 0.
    const char* method() const;
    int indefinite_column() const { return indefinite; }
    // Of a band: the share of a full matrix that is stored, and of the operations of its LU. Empty for other methods.
    struct Saving {
        Bandwidth band;
        double numbers, operations;
    };
    std::optional<Saving> saving() const;

    // Seconds that the factorization took, and its rate by the standard count of operations.
    double factor_seconds() const { return seconds; }
    double gflops() const;

private:
    bool factor_definite_one(const Matrix<T>& a, std::optional<Bandwidth> band);
    void factor_general(const Matrix<T>& a, std::optional<Bandwidth> band);
    template <class Kind, class... Arguments>
    int factor(const Arguments&... arguments);
    void require_finite(const Matrix<T>& values, const char* what) const;

    std::string name;
    float normOfA;
    int order;
    Factors<T> factors;
    int indefinite = 0;
    double seconds = 0;
};

} // namespace tools
