// Triangular test matrices for LAPACK, their options, and what they are in double.
#pragma once

#include <cmath>
#include <ostream>
#include <vector>

#include "support/level2_case.hpp"
#include "support/matrices.hpp"

namespace qrv::test {

enum class TriangleKind {
    tame,         // well-conditioned
    growing,      // solutions grow as 2^n
    tinyDiagonal, // some element is too small to divide a large number by: the middle, in large orders both ends
    singular,     // the middle of the diagonal is 0
    huge,         // column sums near overflow
    oneRow,       // norms by rows are larger than by columns: 1 beside the diagonal in the longest row, else 0
};

template <class T>
struct TriangularMatrix {
    char uplo, diag;
    TriangleKind kind;
    BasicGuardedMatrix<T> a;

    // What is not stored is NaN: the other triangle, and a unit diagonal.
    TriangularMatrix(char uploOption, char diagOption, int n, TriangleKind k = TriangleKind::tame)
        : uplo(uploOption), diag(diagOption), kind(k), a(n, n, n + 1 + n % 3, n % 5) {
        std::mt19937 random(static_cast<unsigned>(n));
        a.set([&](int i, int j) {
            return !stored(i, j) ? all_parts<T>(nan) : i == j ? diagonal(i, random) : beside(i, random);
        });
    }
    int n() const { return a.rows(); }
    bool unit() const { return diag == 'U'; }
    bool stored(int i, int j) const { return (uplo == 'U' ? i < j : i > j) || (i == j && !unit()); }

    // Element of op(A).
    Wide<T> entry(char trans, int i, int j) const {
        if (trans != 'N')
            std::swap(i, j);
        const Wide<T> x = stored(i, j) ? widen(a(i, j)) : Wide<T>(i == j ? 1 : 0);
        return trans == 'C' ? conjugate(x) : x;
    }

    // Whether nothing but the stored triangle of `other`, of this shape, is a number.
    bool rest_untouched(const BasicGuardedMatrix<T>& other) const {
        return other.guards_intact() &&
               other.count_bad([&](int i, int j, T x) { return stored(i, j) || has_nan(x); }) == 0;
    }

private:
    T diagonal(int i, std::mt19937& random) const {
        switch (kind) {
        case TriangleKind::tinyDiagonal:
            return scalar<T>(n() < 50 ? (i == n() / 2 ? 0x1p-104F : 1) : i == 0 || i == n() - 1 ? 0x1p-40F : 1);
        case TriangleKind::singular:
            return scalar<T>(i == n() / 2 ? 0 : 1);
        case TriangleKind::huge:
            return scalar<T>(0x1p115F);
        default:
            return scalar<T>(1.5F) + scalar<T>(0.5F) * any_size_one<T>(random);
        }
    }
    T beside(int i, std::mt19937& random) const {
        switch (kind) {
        case TriangleKind::growing:
            return scalar<T>(-1);
        case TriangleKind::oneRow:
            return scalar<T>(i == (uplo == 'U' ? 0 : n() - 1) ? 1 : 0);
        case TriangleKind::huge:
            return scalar<T>(0x1p115F) * any_size_one<T>(random);
        default:
            return scalar<T>(2 / static_cast<float>(n() + 1)) * any_size_one<T>(random);
        }
    }
};

template <class T>
std::ostream& operator<<(std::ostream& out, const TriangularMatrix<T>& t) {
    return out << t.uplo << t.diag << " of order " << t.n() << ", kind " << static_cast<int>(t.kind);
}

// Both triangles with both diagonals: each(uplo, diag).
template <class Each>
void each_triangle_shape(const Each& each) {
    for (const char uplo : {'U', 'L'})
        for (const char diag : {'N', 'U'})
            each(uplo, diag);
}

// Whether op(A) x = scale b, but for the roundings of a backward stable solve: |A| |x| times the length of the sums.
// Elements that underflow are off by the smallest float.
template <class T>
bool solves(const TriangularMatrix<T>& t, char trans, const T* x, float scale, const std::vector<T>& b) {
    for (int i = 0; i < t.n(); ++i) {
        Wide<T> sum = -double{scale} * widen(b[static_cast<std::size_t>(i)]);
        double size = std::abs(sum), coefficients = 1;
        for (int j = 0; j < t.n(); ++j) {
            const Wide<T> term = t.entry(trans, i, j) * widen(x[j]);
            sum += term;
            size += std::abs(term);
            coefficients += std::abs(t.entry(trans, i, j));
        }
        const double steps = (isComplex<T> ? 4 : 1) * (t.n() + 6);
        if (!(std::abs(sum) <= steps * (unitRoundoff * size + 0x1p-149 * coefficients)))
            return false;
    }
    return true;
}

} // namespace qrv::test
