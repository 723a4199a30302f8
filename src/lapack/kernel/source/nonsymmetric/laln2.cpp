// SLALN2: a linear system of order 1 or 2 with a real or complex shift, scaled so that its solution cannot overflow.
//
// Gaussian elimination with complete pivoting on a matrix of which each pivot below `smallest` is replaced by that.
#include <algorithm>

#include "blas/complex.hpp"
#include "lapack/calls/nonsymmetric.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

constexpr float least = 2 * machine::safeMinimum, largest = 1 / least;

// The shift and the columns of B and X as numbers of one kind.
template <class T>
struct Column;
template <>
struct Column<float> {
    static float shift(const ShiftedSystem& s) { return s.wr; }
    static float get(Matrix<const float> b, int i) { return b(i, 0); }
    static void set(Matrix<float> x, int i, float value) { x(i, 0) = value; }
};
template <>
struct Column<SingleComplex> {
    static SingleComplex shift(const ShiftedSystem& s) { return {s.wr, s.wi}; }
    static SingleComplex get(Matrix<const float> b, int i) { return {b(i, 0), b(i, 1)}; }
    static void set(Matrix<float> x, int i, SingleComplex value) { x(i, 0) = value.re, x(i, 1) = value.im; }
};

// Element (i, j) of the matrix.
template <class T>
T coefficient(const ShiftedSystem& s, int i, int j) {
    const float x = s.ca * (s.transposed ? s.a(j, i) : s.a(i, j));
    return i == j ? scalar<T>(x) - (i == 0 ? s.d1 : s.d2) * Column<T>::shift(s) : scalar<T>(x);
}

// What a right-hand side of size b is scaled by, that its quotient by a number of size c stays below overflow.
float scale_for_quotient(float b, float c) {
    return c < 1 && b > 1 && b > largest * c ? 1 / b : 1;
}

template <class T>
SmallSolution solve_one(const ShiftedSystem& s, float smallest, Matrix<float> x) {
    T divisor = coefficient<T>(s, 0, 0);
    const bool tiny = abs1(divisor) < smallest;
    if (tiny)
        divisor = scalar<T>(smallest);
    const T b = Column<T>::get(s.b, 0);
    const float scale = scale_for_quotient(abs1(b), abs1(divisor));
    const T solution = scale * b / divisor;
    Column<T>::set(x, 0, solution);
    return {scale, abs1(solution), tiny};
}

template <class T>
SmallSolution divide_by_smallest(const ShiftedSystem& s, float smallest, Matrix<float> x) {
    const T b[2] = {Column<T>::get(s.b, 0), Column<T>::get(s.b, 1)};
    const float bnorm = std::max(abs1(b[0]), abs1(b[1]));
    const float scale = scale_for_quotient(bnorm, smallest), factor = scale / smallest;
    for (int i = 0; i < 2; ++i)
        Column<T>::set(x, i, factor * b[i]);
    return {scale, factor * bnorm, true};
}

template <class T>
SmallSolution solve_two(const ShiftedSystem& s, float smallest, Matrix<float> x) {
    T c[2][2];
    int row = 0, column = 0;
    float cmax = 0;
    for (int j = 0; j < 2; ++j)
        for (int i = 0; i < 2; ++i) {
            c[i][j] = coefficient<T>(s, i, j);
            if (abs1(c[i][j]) > cmax) {
                cmax = abs1(c[i][j]);
                row = i, column = j;
            }
        }
    if (cmax < smallest)
        return divide_by_smallest<T>(s, smallest, x);

    const int otherRow = 1 - row, otherColumn = 1 - column;
    const T inverse11 = scalar<T>(1) / c[row][column];
    const T l21 = inverse11 * c[otherRow][column], u12 = c[row][otherColumn];
    T u22 = c[otherRow][otherColumn] - u12 * l21;
    const bool tiny = abs1(u22) < smallest;
    if (tiny)
        u22 = scalar<T>(smallest);

    const T b1 = Column<T>::get(s.b, row), b2 = Column<T>::get(s.b, otherRow) - l21 * b1;
    const float bound = std::max(abs1(b1) * (abs1(u22) * abs1(inverse11)), abs1(b2));
    float scale = scale_for_quotient(bound, abs1(u22));
    T x2 = scale * b2 / u22;
    T x1 = scale * b1 * inverse11 - x2 * (inverse11 * u12);
    float xnorm = std::max(abs1(x1), abs1(x2));
    if (xnorm > 1 && cmax > 1 && xnorm > largest / cmax) { // a product with the matrix would overflow
        const float factor = largest / cmax / xnorm;
        x1 = factor * x1, x2 = factor * x2;
        xnorm *= factor;
        scale *= factor;
    }
    Column<T>::set(x, column, x1);
    Column<T>::set(x, otherColumn, x2);
    return {scale, xnorm, tiny};
}

template <class T>
SmallSolution solve(const ShiftedSystem& s, Matrix<float> x) {
    const float smallest = std::max(s.smin, least);
    return s.na == 1 ? solve_one<T>(s, smallest, x) : solve_two<T>(s, smallest, x);
}

} // namespace

SmallSolution laln2(const ShiftedSystem& system, Matrix<float> x) {
    return system.nw == 1 ? solve<float>(system, x) : solve<SingleComplex>(system, x);
}

} // namespace qrv::lapack
