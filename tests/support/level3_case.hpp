// Problems of BLAS level 3: operands with guards, and results in double precision.
#pragma once

#include "support/triangle_case.hpp"

namespace qrv::test {

// Where and how a matrix lies.
struct Layout {
    int extra = 0;  // leading dimension beyond the least
    int offset = 0; // floats past a 64-byte boundary
    Guard guard = Guard::canaries;

    operator Level2Case() const { return {0, 0, 1, 1, extra, offset, 1, 1, guard}; }
};

inline std::ostream& operator<<(std::ostream& out, const Layout& l) {
    return out << "ld+" << l.extra << " start " << l.offset << " guard " << static_cast<int>(l.guard);
}

// A matrix in double, with the size of each element at hand.
template <class T>
class WideMatrix {
public:
    // Element (i, j) is what entry(i, j) says.
    template <class Entry>
    WideMatrix(int rows, int columns, const Entry& entry) : rows_(rows), columns_(columns) {
        const auto count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
        elements_.reserve(count);
        sizes_.reserve(count);
        for (int j = 0; j < columns; ++j)
            for (int i = 0; i < rows; ++i) {
                elements_.push_back(entry(i, j));
                sizes_.push_back(std::sqrt(std::norm(elements_.back())));
            }
    }
    explicit WideMatrix(Level2Matrix<T>& x)
        : WideMatrix(x.rows(), x.columns(), [&](int i, int j) { return widen(x(i, j)); }) {}

    int rows() const { return rows_; }
    int columns() const { return columns_; }
    Wide<T> operator()(int i, int j) const { return column(j)[i]; }
    const Wide<T>* column(int j) const { return elements_.data() + offset(j); }
    const double* sizes(int j) const { return sizes_.data() + offset(j); }

private:
    std::ptrdiff_t offset(int j) const { return std::ptrdiff_t{rows_} * j; }

    int rows_, columns_;
    std::vector<Wide<T>> elements_;
    std::vector<double> sizes_;
};

// What a matrix should become, and how far off each element may be.
template <class T>
struct ExpectedMatrix {
    int rows, columns;
    std::vector<Wide<T>> values;
    std::vector<double> allowed;

    // `found` is a matrix or any other thing with elements (i, j); what is not `stored` does not count.
    template <class Found>
    bool near(Found&& found, Stored stored = {}) const {
        bool good = true;
        std::size_t k = 0;
        for (int j = 0; j < columns; ++j)
            for (int i = 0; i < rows; ++i, ++k)
                good = good && (!stored(i, j) || std::abs(found(i, j) - values[k]) <= allowed[k]);
        return good;
    }
    bool held_by(Level2Matrix<T>& c) const {
        return near([&](int i, int j) { return c.stored(i, j) ? widen(c(i, j)) : values[index(i, j)]; }) &&
               c.guards_intact();
    }

private:
    std::size_t index(int i, int j) const { return static_cast<std::size_t>(i + std::ptrdiff_t{rows} * j); }
};

// alpha*A*B + beta*C. A sum of k products may be off by about k roundings of its terms' sizes, a complex product by
// three times as much.
template <class T>
ExpectedMatrix<T> product(Wide<T> alpha, const WideMatrix<T>& a, const WideMatrix<T>& b, Wide<T> beta,
                          const WideMatrix<T>& c) {
    const int m = a.rows(), n = b.columns(), k = a.columns();
    const double steps = isComplex<T> ? 3 * (k + 3) : k + 3;
    ExpectedMatrix<T> result{m, n, {}, {}};
    std::vector<Wide<T>> sum(static_cast<std::size_t>(m));
    std::vector<double> size(sum.size());
    for (int j = 0; j < n; ++j) {
        std::fill(sum.begin(), sum.end(), Wide<T>(0));
        std::fill(size.begin(), size.end(), 0);
        for (int l = 0; l < k; ++l) {
            const Wide<T> factor = b(l, j);
            const double factorSize = b.sizes(j)[l];
            const Wide<T>* const column = a.column(l);
            for (std::size_t i = 0; i < sum.size(); ++i) {
                sum[i] += column[i] * factor;
                size[i] += a.sizes(l)[i] * factorSize;
            }
        }
        for (std::size_t i = 0; i < sum.size(); ++i) {
            const Wide<T> scaled = beta == 0.0 ? 0 : beta * c.column(j)[i];
            result.values.push_back(alpha * sum[i] + scaled);
            result.allowed.push_back(unitRoundoff * (steps * std::abs(alpha) * size[i] + 4 * std::abs(scaled)));
        }
    }
    return result;
}

// Whether alpha*A*B + beta*C is zero but for the roundings of A*B and of beta*C.
template <class T>
bool vanishes(Wide<T> alpha, const WideMatrix<T>& a, const WideMatrix<T>& b, Wide<T> beta, const WideMatrix<T>& c) {
    return product(alpha, a, b, beta, c).near([](int, int) { return Wide<T>(0); });
}

// ---- Triangles ------------------------------------------------------------------------------------------------------

// A triangular solve or product with `count` right-hand sides and a triangle of the order n.
struct TriangularShape {
    char side, uplo, trans, diag;
    int n, count;
    float alpha = 1; // see scalar_of
    Layout layout = {};

    bool left() const { return side == 'L' || side == 'l'; }
    int rows() const { return left() ? n : count; }
    int columns() const { return left() ? count : n; }
};

inline std::ostream& operator<<(std::ostream& out, const TriangularShape& p) {
    return out << p.side << p.uplo << p.trans << p.diag << " order " << p.n << ", " << p.count
               << " right-hand sides, alpha " << p.alpha << ", " << p.layout;
}

// Its operands; what must not be read is NaN.
template <class T>
struct TriangularOperands {
    TriangularShape p;
    T alpha;
    TriangleCase<T> a;
    Level2Matrix<T> b;

    explicit TriangularOperands(const TriangularShape& shape)
        : p(shape), alpha(scalar_of<T>(shape.alpha)),
          a(shape.uplo, shape.trans, shape.diag, order(shape), shape.n, false),
          b(shape.rows(), shape.columns(), shape.layout) {
        restart();
    }
    void restart() { b.fill(3); }

    WideMatrix<T> op_a() { return {p.n, p.n, a.entries()}; }

    // A routine in the native form, with these operands.
    template <class Routine>
    void call(const Routine& routine) {
        const int m = p.rows(), n = p.columns();
        routine(&p.side, &p.uplo, &p.trans, &p.diag, &m, &n, &alpha, a.a.data(), &a.a.ld(), b.data(), &b.ld());
    }

private:
    static Level2Case order(const TriangularShape& shape) {
        Level2Case layout = shape.layout;
        layout.n = shape.n;
        layout.extra ^= 1; // another one than B has
        return layout;
    }
};

// One problem, and whether routines get it right.
template <class T>
class TriangularCheck {
public:
    explicit TriangularCheck(const TriangularShape& p)
        : operands(p), a_(operands.op_a()), before_(operands.b),
          product_(p.left() ? product<T>(alpha(), a_, before_, 0, before_)
                            : product<T>(alpha(), before_, a_, 0, before_)) {}

    template <class Routine>
    bool multiplied_by(const Routine& routine) {
        operands.restart();
        operands.call(routine);
        return product_.held_by(operands.b);
    }
    // A solution is judged by its product with the triangle.
    template <class Routine>
    bool solved_by(const Routine& routine) {
        operands.restart();
        operands.call(routine);
        const WideMatrix<T> x(operands.b);
        return operands.b.guards_intact() && (operands.p.left() ? vanishes<T>(1, a_, x, -alpha(), before_)
                                                                : vanishes<T>(1, x, a_, -alpha(), before_));
    }

    TriangularOperands<T> operands;

private:
    Wide<T> alpha() const { return widen(operands.alpha); }

    WideMatrix<T> a_, before_;
    ExpectedMatrix<T> product_;
};

} // namespace qrv::test
