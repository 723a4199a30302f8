// Eigenvalues and eigenvectors of a real matrix, and how good they are.
#pragma once

#include <string>
#include <vector>

#include "linear_system.hpp"
#include "support/plot.hpp"

namespace tools {

struct VectorsWanted {
    bool left = false, right = false;
    bool any() const { return left || right; }
};

class Eigensystem {
public:
    // By the symmetric method where A, which is square, is symmetric; left and right vectors are the same then.
    // Raises Unsolvable if the iteration fails or the result is beyond the range of single precision.
    Eigensystem(const std::string& name, const Matrix<float>& a, VectorsWanted wanted);

    bool by_symmetry() const { return symmetric; }
    double seconds() const { return time; }
    int order() const { return static_cast<int>(re.size()); }

    // Ascending real ones of a symmetric matrix; of others with conjugates side by side.
    SingleComplex value(int k) const { return {re[index(k)], im[index(k)]}; }
    bool all_real() const;

    // In columns, as for a file: real if all values are. A left vector u has u^H A = w u^H.
    AnyMatrix values() const;
    AnyMatrix vectors(bool left) const;

    // Summed up in double precision, and relative to the Frobenius norm of A:
    //   the largest |A v - w v|, or |A^T u - conj(w) u|, for vectors of length 1
    //   the difference of the trace of A and the sum of the values
    double residual(const Matrix<float>& a, bool left) const;
    double trace_error(const Matrix<float>& a) const;
    // The largest element of V^T V - I for a symmetric matrix.
    double orthogonality() const;

private:
    static std::size_t index(int k) { return static_cast<std::size_t>(k); }
    int solve_symmetric(Matrix<float> a, bool withVectors);
    int solve_general(Matrix<float> a, VectorsWanted wanted);
    const Matrix<float>& stored(bool left) const { return left && !symmetric ? leftVectors : rightVectors; }

    bool symmetric;
    double time = 0;
    std::vector<float> re, im;
    Matrix<float> leftVectors, rightVectors; // those of a pair as real and imaginary part of the first one
};

// The values over their index, on a logarithmic axis if that has more to show; or in the complex plane.
support::Plot spectrum(const Eigensystem& system, const std::string& title);

} // namespace tools
