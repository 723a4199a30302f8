// Level 2 on packed and banded matrices that have no kernel: column by column with the vector kernels, as one stored
// column is a vector of consecutive elements.
//
// A storage tells the columns of its matrix. Of a triangle or a symmetric matrix the diagonal element is at the end of
// an upper column, and at the beginning of a lower one.
#pragma once

#include <cstdint>

#include "blas/calls.hpp"
#include "blas/complex.hpp"

namespace qrv::blas {

// Elements [first, first + count) of a column.
template <class T>
struct StoredColumn {
    T* data;
    int first, count;

    T& diagonal(Uplo uplo) const { return uplo == Uplo::upper ? data[count - 1] : *data; }
    StoredColumn beside_diagonal(Uplo uplo) const {
        return uplo == Uplo::upper ? StoredColumn{data, first, count - 1}
                                   : StoredColumn{data + 1, first + 1, count - 1};
    }
};

// One triangle of a matrix of order n, its columns one behind the other.
template <class T>
struct PackedTriangle {
    Uplo uplo;
    int n;
    T* ap;

    StoredColumn<T> operator()(int j) const {
        const std::int64_t i = j;
        return uplo == Uplo::upper ? StoredColumn<T>{ap + i * (i + 1) / 2, 0, j + 1}
                                   : StoredColumn<T>{ap + i * (2 * std::int64_t{n} - i + 1) / 2, j, n - j};
    }
};

// An m-row matrix with kl diagonals below the main one and ku above it.
template <class T>
struct BandColumns {
    int m, kl, ku;
    T* ab;
    std::ptrdiff_t ld;

    StoredColumn<T> operator()(int j) const {
        const int first = j > ku ? j - ku : 0, below = kl < m - j ? j + kl + 1 : m;
        return {ab + ld * j + (std::ptrdiff_t{ku} + first - j), first, larger(below - first, 0)};
    }
};
// One triangle of one of order n with k diagonals beside the main one.
template <class T>
BandColumns<T> triangle_of_band(Uplo uplo, int n, int k, T* ab, int ld) {
    return uplo == Uplo::upper ? BandColumns<T>{n, 0, k, ab, ld} : BandColumns<T>{n, k, 0, ab, ld};
}

// A vector as the routines take it, of which parts are operands: with a negative increment, from the far end.
template <class T>
struct WholeVector {
    T* data;
    int n, inc;

    WholeVector(T* x, int length, int increment) : data(x), n(length), inc(increment) {}
    T& operator[](int i) const { return data[std::ptrdiff_t{inc < 0 ? i - n + 1 : i} * inc]; }
    Vector<T> part(int first, int count) const {
        if (count <= 0)
            return {data, inc};
        return {&(*this)[inc < 0 ? first + count - 1 : first], inc};
    }
};

// y := alpha * column + y
template <class T>
void add_multiple(T alpha, const StoredColumn<const T>& column, const WholeVector<T>& y) {
    kernel::axpy<T>(column.count, alpha, {column.data, 1}, y.part(column.first, column.count));
}
// The sum of products with a column, or with its conjugate.
template <class T, class X>
T inner_product(bool conjugated, const StoredColumn<const T>& column, const WholeVector<X>& x) {
    const Vector<const T> elements{column.data, 1}, others = x.part(column.first, column.count);
    return conjugated ? kernel::dotc(column.count, elements, others) : kernel::dotu(column.count, elements, others);
}
template <class T>
void scale_vector(T beta, const WholeVector<T>& y) {
    if (beta == T())
        for (int i = 0; i < y.n; ++i)
            y[i] = T();
    else if (beta != scalar<T>(1))
        kernel::scal<T>(y.n, beta, {y.data, y.inc});
}
// With alpha = 0 the product counts as none.
template <class T>
bool only_scaled(T alpha, T beta, const WholeVector<T>& y) {
    scale_vector(beta, y);
    return alpha == T();
}

// y := alpha*op(A)*x + beta*y, for a general matrix.
template <class T, class Storage>
void multiply(Op op, int m, int n, T alpha, const Storage& a, const T* x, int incx, T beta, T* y, int incy) {
    if (m == 0 || n == 0)
        return;
    const WholeVector<const T> from(x, op == Op::none ? n : m, incx);
    const WholeVector<T> to(y, op == Op::none ? m : n, incy);
    if (only_scaled(alpha, beta, to))
        return;
    for (int j = 0; j < n; ++j)
        if (op == Op::none)
            add_multiple<T>(alpha * from[j], a(j), to);
        else
            to[j] += alpha * inner_product<T>(op == Op::adjoint, a(j), from);
}

// The same for a symmetric matrix, or for a Hermitian one of complex elements.
template <class T, class Storage>
void multiply_symmetric(Uplo uplo, int n, T alpha, const Storage& a, const T* x, int incx, T beta, T* y, int incy) {
    const WholeVector<const T> from(x, n, incx);
    const WholeVector<T> to(y, n, incy);
    if (n == 0 || only_scaled(alpha, beta, to))
        return;
    for (int j = 0; j < n; ++j) {
        const StoredColumn<const T> column = a(j), beside = column.beside_diagonal(uplo);
        T diagonal = column.diagonal(uplo);
        make_real(diagonal);
        add_multiple<T>(alpha * from[j], beside, to);
        to[j] += alpha * (diagonal * from[j] + inner_product<T>(true, beside, from));
    }
}

// Whether the columns are taken from the first to the last: a product begins where nothing else is needed any more, a
// solve where nothing else is needed yet.
constexpr bool walks_up(Uplo uplo, Op op, bool solves) {
    return ((uplo == Uplo::upper) == (op == Op::none)) != solves;
}

// x := op(A)*x, for a triangular matrix.
template <class T, class Storage>
void multiply_triangle(Uplo uplo, Op op, Diag diag, int n, const Storage& a, T* x, int incx) {
    const WholeVector<T> v(x, n, incx);
    for (int step = 0; step < n; ++step) {
        const int j = walks_up(uplo, op, false) ? step : n - 1 - step;
        const StoredColumn<const T> column = a(j), beside = column.beside_diagonal(uplo);
        T factor = scalar<T>(1);
        if (diag == Diag::nonUnit)
            factor = op == Op::adjoint ? conj(column.diagonal(uplo)) : column.diagonal(uplo);
        if (op == Op::none) {
            add_multiple<T>(v[j], beside, v);
            v[j] = factor * v[j];
        } else {
            v[j] = factor * v[j] + inner_product<T>(op == Op::adjoint, beside, v);
        }
    }
}

// x := inv(op(A))*x
template <class T, class Storage>
void solve_triangle(Uplo uplo, Op op, Diag diag, int n, const Storage& a, T* x, int incx) {
    const WholeVector<T> v(x, n, incx);
    for (int step = 0; step < n; ++step) {
        const int j = walks_up(uplo, op, true) ? step : n - 1 - step;
        const StoredColumn<const T> column = a(j), beside = column.beside_diagonal(uplo);
        if (op != Op::none)
            v[j] -= inner_product<T>(op == Op::adjoint, beside, v);
        if (diag == Diag::nonUnit)
            v[j] = v[j] / (op == Op::adjoint ? conj(column.diagonal(uplo)) : column.diagonal(uplo));
        if (op == Op::none)
            add_multiple<T>(-v[j], beside, v);
    }
}

// A := alpha*x*x' + A, symmetric or Hermitian.
template <class T, class Storage>
void update(Uplo uplo, int n, float alpha, const T* x, int incx, const Storage& a) {
    if (alpha == 0)
        return;
    const WholeVector<const T> v(x, n, incx);
    for (int j = 0; j < n; ++j) {
        const StoredColumn<T> column = a(j);
        make_real(column.diagonal(uplo));
        kernel::axpy<T>(column.count, alpha * conj(v[j]), v.part(column.first, column.count), {column.data, 1});
        make_real(column.diagonal(uplo));
    }
}

// A := alpha*x*y' + conj(alpha)*y*x' + A
template <class T, class Storage>
void update2(Uplo uplo, int n, T alpha, const T* x, int incx, const T* y, int incy, const Storage& a) {
    if (alpha == T())
        return;
    const WholeVector<const T> v(x, n, incx), w(y, n, incy);
    for (int j = 0; j < n; ++j) {
        const StoredColumn<T> column = a(j);
        const Vector<T> elements{column.data, 1};
        make_real(column.diagonal(uplo));
        kernel::axpy<T>(column.count, alpha * conj(w[j]), v.part(column.first, column.count), elements);
        kernel::axpy<T>(column.count, conj(alpha * v[j]), w.part(column.first, column.count), elements);
        make_real(column.diagonal(uplo));
    }
}

// ---- Level 1 --------------------------------------------------------------------------------------------------------

// Every product and sum in double.
inline double dot_in_double(double start, int n, const float* x, int incx, const float* y, int incy) {
    const WholeVector<const float> v(x, n, incx), w(y, n, incy);
    for (int i = 0; i < n; ++i)
        start += double{v[i]} * w[i];
    return start;
}

// (x, y) := (c*x + s*y, c*y - s*x), a real rotation of complex elements.
inline void rotate(int n, SingleComplex* x, int incx, SingleComplex* y, int incy, float c, float s) {
    const WholeVector<SingleComplex> v(x, n, incx), w(y, n, incy);
    for (int i = 0; i < n; ++i) {
        const SingleComplex a = v[i], b = w[i];
        v[i] = c * a + s * b;
        w[i] = c * b - s * a;
    }
}

// The rotation with real c that turns (a, b) into (r, 0); a becomes r. In double, squares neither overflow nor vanish.
inline void make_rotation(SingleComplex& a, SingleComplex b, float& c, SingleComplex& s) {
    const double re = a.re, im = a.im, squareA = re * re + im * im, squareB = double{b.re} * b.re + double{b.im} * b.im;
    if (squareA == 0) {
        c = 0;
        s = scalar<SingleComplex>(1);
        a = b;
        return;
    }
    const double ofA = __builtin_sqrt(squareA), length = __builtin_sqrt(squareA + squareB), ratio = length / ofA;
    c = static_cast<float>(ofA / length);
    const double unit = 1 / (ofA * length); // s = a conj(b) / (|a| length)
    s = {static_cast<float>((re * b.re + im * b.im) * unit), static_cast<float>((im * b.re - re * b.im) * unit)};
    a = {static_cast<float>(re * ratio), static_cast<float>(im * ratio)};
}

} // namespace qrv::blas
