// Triangular test matrices for LAPACK, and what is right of a solve with one.
#pragma once

#include "support/oracle.hpp"

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
Operand<T> triangular_matrix(char uplo, char diag, int n, TriangleKind kind = TriangleKind::tame) {
    Operand<T> a(Form{n, n, Form::triangular, uplo, diag}, {.extra = 1 + n % 3, .offset = n % 5});
    std::mt19937 random(static_cast<unsigned>(n));
    const auto element = [&](int i, int j) {
        const T any = any_size_one<T>(random);
        switch (kind) {
        case TriangleKind::growing:
            return i == j ? scalar<T>(1.5F) + scalar<T>(0.5F) * any : scalar<T>(-1);
        case TriangleKind::oneRow:
            return scalar<T>(i == j || i == (uplo == 'U' ? 0 : n - 1) ? 1 : 0);
        case TriangleKind::huge:
            return scalar<T>(0x1p115F) * (i == j ? scalar<T>(1) : any);
        case TriangleKind::tinyDiagonal:
            if (i == j)
                return scalar<T>(n < 50 ? (i == n / 2 ? 0x1p-104F : 1) : i == 0 || i == n - 1 ? 0x1p-40F : 1);
            break;
        case TriangleKind::singular:
            if (i == j)
                return scalar<T>(i == n / 2 ? 0 : 1);
            break;
        default:
            break;
        }
        return i == j ? scalar<T>(1.5F) + scalar<T>(0.5F) * any : scalar<T>(2 / static_cast<float>(n + 1)) * any;
    };
    return a.set(element);
}

// Both triangles with both diagonals: each(uplo, diag).
template <class Each>
void each_triangle_shape(const Each& each) {
    for (const char uplo : {'U', 'L'})
        for (const char diag : {'N', 'U'})
            each(uplo, diag);
}

// |A X - scale B| by elements over the roundings of a backward stable solve: |A| |X| times the length of the sums.
// Elements that underflow are off by the smallest float.
template <class T>
double scaled_residual(const WideMatrix<T>& a, const Operand<T>& x, float scale, const Operand<T>& b) {
    Expected<T> rest = product<T>(1, a, WideMatrix<T>(x), -double{scale}, b);
    for (int i = 0; i < a.rows; ++i) {
        double coefficients = 1;
        for (int j = 0; j < a.columns; ++j)
            coefficients += a.sizes[a.at(i, j)];
        for (int j = 0; j < x.columns(); ++j)
            rest.allowed[rest.values.at(i, j)] += (a.rows + 6) * 0x1p-147 * coefficients;
    }
    return rest.error(Operand<T>(x.form(), {}).fill(0));
}

} // namespace qrv::test
