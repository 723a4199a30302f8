// Singular values and vectors of a matrix, A = U S V^H, and how good they are.
#pragma once

#include <string>
#include <vector>

#include "matrix_file/matrix_file.hpp"
#include "routines.hpp"
#include "support/plot.hpp"

namespace tools {

class SingularValues {
public:
    // Raises Unsolvable if the iteration fails or the result is beyond the range of single precision.
    SingularValues(const std::string& name, const AnyMatrix& a, bool withVectors);

    double seconds() const { return time; }
    int count() const { return static_cast<int>(s.size()); }
    float value(int k) const { return s[static_cast<std::size_t>(k)]; } // descending

    // Values above `tolerance` times the largest; one is what roundings of a matrix of this size may be taken for.
    int rank(double tolerance) const;
    double rounding_tolerance() const;
    // The largest over the smallest value: infinite if that is 0.
    double condition() const;
    // The relative distance, in the Frobenius norm, of A from the nearest matrix of rank k; the least rank for which it
    // is no larger than `error`.
    double distance(int k) const;
    int rank_within(double error) const;

    // Of the first `count()` vectors, in columns.
    AnyMatrix values() const;
    const AnyMatrix& left() const { return u; }
    AnyMatrix right() const;

    // Summed up in double precision: |A - U S V^H| / |A| in the Frobenius norm, and the largest element of U^H U - I
    // and of V^H V - I.
    double residual(const AnyMatrix& a) const;
    double orthogonality() const;

private:
    template <class T>
    int solve(Matrix<T> a, bool withVectors);

    int rows, columns;
    double time = 0;
    std::vector<float> s;
    AnyMatrix u, vt;
};

// The matrix of rank k that is nearest to a real one, whose vectors were found.
Matrix<float> nearest_of_rank(const SingularValues& svd, int k);

// The values over their index, on a logarithmic axis, with those that count less than `tolerance` marked.
support::Plot decay(const SingularValues& svd, double tolerance, const std::string& title);

} // namespace tools
