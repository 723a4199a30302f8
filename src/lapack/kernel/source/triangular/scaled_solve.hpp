// Solution of a triangular system, scaled so that it does not overflow: SLATRS and its band form.
//
// A bound on the growth of the solution, from the diagonal and the sums of the columns, tells whether the plain solve
// is safe; it nearly always is. Otherwise each step first shrinks all of x, as far as this step could make an element
// of it too large. (E. Anderson, Robust triangular solves for use in condition estimation, LAPACK Working Note 36,
// 1991.)
//
// No step repeats itself, so NaN and infinity in the operands end in a result too. A diagonal element that is 0 or NaN
// counts as singular; a column with an infinity or a NaN beside its diagonal is left to the plain solve.
//
// The matrix is seen through a view of its columns, so that dense and band storage share this text:
//
//   Element, n, uplo, diag
//   Element diagonal(int j)               as stored; not asked for if diag is unit
//   StoredColumn<Element> column(int j)   without its diagonal element
//   void solve(Op, Element* x)            the plain solve
#pragma once

#include <algorithm>
#include <cmath>

#include "blas/calls.hpp"
#include "blas/complex.hpp"
#include "blas/options.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {

// Rows [first, first + count).
template <class T>
struct StoredColumn {
    int first, count;
    const T* data;
};

namespace scaled {

using machine::bigNumber;
using machine::smallNumber;

// Complex elements are measured by abs1, which can be twice their largest part: their bounds are half as large.
template <class T>
constexpr float half = isComplex<T> ? 0.5F : 1;
template <class T>
constexpr float largestSum = bigNumber* half<T>;

// half * abs1(x), which does not overflow.
inline float half_abs1(float x) {
    return std::fabs(x);
}
inline float half_abs1(SingleComplex x) {
    return std::fabs(x.re / 2) + std::fabs(x.im / 2);
}

// abs1(x) of a divisor, or the largest number: a bound from below that can be divided by.
template <class T>
float divisor_size(T x) {
    return std::min(abs1(x), machine::overflow);
}

template <class T>
double sum_in_double(const StoredColumn<T>& column) {
    double sum = 0;
    for (int i = 0; i < column.count; ++i)
        if constexpr (isComplex<T>)
            sum += std::fabs(double{column.data[i].re}) + std::fabs(double{column.data[i].im});
        else
            sum += std::fabs(double{column.data[i]});
    return sum;
}

// The steps of a solve, in the order in which they determine the elements of x.
template <class View>
class Steps {
public:
    Steps(const View& a, Op op) : last_(a.n - 1), backward_((a.uplo == Uplo::upper) == (op == Op::none)) {}
    int operator[](int k) const { return backward_ ? last_ - k : k; }

private:
    int last_;
    bool backward_;
};

// ---- Sums of columns ------------------------------------------------------------------------------------------------

// The matrix is scaled too, by `factor`, if the sum of a column is too large to compute with.
struct MatrixScale {
    bool finite; // all sums are
    float factor;
};

// cnorm becomes the sums of the scaled matrix. Sums beyond overflow are formed again in double.
template <class View>
MatrixScale scale_sums(const View& a, float* cnorm) {
    const auto sum = [&](int j) { return std::isfinite(cnorm[j]) ? double{cnorm[j]} : sum_in_double(a.column(j)); };
    double largest = 0;
    for (int j = 0; j < a.n; ++j) {
        const double x = sum(j);
        if (!std::isfinite(x))
            return {false, 1};
        largest = std::max(largest, x);
    }
    constexpr float limit = largestSum<typename View::Element>;
    if (largest <= limit)
        return {true, 1};
    const auto factor = static_cast<float>(limit / largest);
    for (int j = 0; j < a.n; ++j)
        cnorm[j] = static_cast<float>(factor * sum(j));
    return {true, factor};
}

// ---- Bounds of the growth -------------------------------------------------------------------------------------------

// In the middle of a plain solve, lower bounds for the reciprocals of all elements, in magnitude: of those still to be
// solved for, and of those that are.
struct Growth {
    float rest, solved;

    template <class T>
    static Growth begin(float halfMax) {
        const float grow = half<T> / std::max(halfMax, smallNumber);
        return {grow, grow};
    }
    bool hopeless() const { return !(rest > smallNumber); }
};

// With a diagonal of ones, by columns or by rows: each step adds at most cnorm[j] times the largest element so far.
template <class View>
float unit_growth(const View& a, Op op, Growth growth, const float* cnorm) {
    const Steps steps(a, op);
    growth.rest = std::min(1.0F, growth.rest);
    for (int k = 0; k < a.n && !growth.hopeless(); ++k)
        growth.rest /= 1 + cnorm[steps[k]];
    return growth.rest;
}

// By columns, with op(A) = A: |x(j)| is at most the bound so far over the diagonal element, and column j adds to the
// others at most cnorm[j] times as much.
template <class View>
float column_growth(const View& a, Growth growth, const float* cnorm) {
    const Steps steps(a, Op::none);
    for (int k = 0; k < a.n; ++k) {
        if (growth.hopeless())
            return growth.rest;
        const int j = steps[k];
        const float size = divisor_size(a.diagonal(j));
        growth.solved = size >= smallNumber ? std::min(growth.solved, std::min(1.0F, size) * growth.rest) : 0;
        growth.rest = size + cnorm[j] >= smallNumber ? growth.rest * (size / (size + cnorm[j])) : 0;
    }
    return growth.solved;
}

// By rows, with the transpose: x(j) is the sum of 1 + cnorm[j] terms over the diagonal element.
template <class View>
float row_growth(const View& a, Op op, Growth growth, const float* cnorm) {
    const Steps steps(a, op);
    for (int k = 0; k < a.n; ++k) {
        if (growth.hopeless())
            return growth.rest;
        const int j = steps[k];
        const float terms = 1 + cnorm[j], size = divisor_size(a.diagonal(j));
        growth.rest = std::min(growth.rest, growth.solved / terms);
        if (size < smallNumber)
            growth.solved = 0;
        else if (terms > size)
            growth.solved *= size / terms;
    }
    return std::min(growth.rest, growth.solved);
}

template <class View>
bool plain_is_safe(const View& a, Op op, float halfMax, const float* cnorm) {
    const Growth growth = Growth::begin<typename View::Element>(halfMax);
    const float bound = a.diag == Diag::unit ? unit_growth(a, op, growth, cnorm)
                        : op == Op::none     ? column_growth(a, growth, cnorm)
                                             : row_growth(a, op, growth, cnorm);
    return bound > smallNumber;
}

// ---- The careful solve ----------------------------------------------------------------------------------------------

// x solves op(A) * factor for scale times the right-hand side. No element of x is above bigNumber in abs1 but for
// rounding; complex ones may be twice as large just after a division.
template <class View>
class CarefulSolve {
    using T = typename View::Element;

public:
    CarefulSolve(const View& a, Op op, float factor, T* x, const float* cnorm, float halfMax)
        : a_(a), op_(op), factor_(factor), x_(x), cnorm_(cnorm), xmax_(halfMax / half<T>) {
        if (halfMax > largestSum<T>) {
            shrink(largestSum<T> / halfMax);
            xmax_ = bigNumber;
        }
    }

    // Result: scale for op(A).
    float run() {
        const Steps steps(a_, op_);
        for (int k = 0; k < a_.n; ++k) {
            if (op_ == Op::none)
                eliminate_column(steps[k]);
            else
                solve_row(steps[k]);
        }
        return scale_ / factor_;
    }

private:
    void shrink(float factor) {
        kernel::scal(a_.n, factor, Vector{x_});
        scale_ *= factor;
        xmax_ *= factor;
    }

    T element(T x) const { return op_ == Op::adjoint ? conj(x) : x; } // as op(A) has it
    T diagonal(int j) const { return factor_ * (a_.diag == Diag::unit ? scalar<T>(1) : element(a_.diagonal(j))); }
    bool scaled() const { return factor_ != 1; }
    bool divides() const { return a_.diag == Diag::nonUnit || scaled(); }

    // x(j) := x(j) / divisor. A tiny divisor leaves room for the product of x(j) with a column whose sum is
    // `columnSum`.
    void divide(int j, T divisor, float columnSum) {
        const float size = abs1(divisor), xj = abs1(x_[j]);
        if (size > smallNumber) {
            if (size < 1 && xj > size * bigNumber)
                shrink(1 / xj);
        } else if (size > 0) {
            if (xj > size * bigNumber)
                shrink(size * bigNumber / xj / std::max(columnSum, 1.0F));
        } else {
            become_null_vector(j);
            return;
        }
        x_[j] = x_[j] / divisor;
    }

    // A(j, j) = 0: what solves the rest for x(j) = 1 and nothing on the right is a null vector.
    void become_null_vector(int j) {
        for (int i = 0; i < a_.n; ++i)
            x_[i] = scalar<T>(0);
        x_[j] = scalar<T>(1);
        scale_ = 0;
        xmax_ = 0;
    }

    // Solves for x(j) and takes its multiple of column j from the elements still to come.
    void eliminate_column(int j) {
        if (divides())
            divide(j, diagonal(j), cnorm_[j]);
        const float xj = abs1(x_[j]);
        if (xj > 1) {
            if (cnorm_[j] > (bigNumber - xmax_) / xj)
                shrink(0.5F / xj);
        } else if (xj * cnorm_[j] > bigNumber - xmax_) {
            shrink(0.5F);
        }
        if (const auto [first, count, data] = a_.column(j); count > 0) {
            const Vector rest{x_ + first};
            kernel::axpy(count, -(factor_ * x_[j]), Vector{data}, rest);
            xmax_ = abs1(rest[kernel::iamax(count, rest) - 1]);
        }
    }

    // How a step by rows keeps its products within bounds.
    struct RowStep {
        float shrink = 1;          // of all of x
        bool dividedFirst = false; // each product is divided by the diagonal element, not their sum
    };
    RowStep row_step(int j, T divisor) const {
        const float room = 1 / std::max(xmax_, 1.0F);
        if (!(cnorm_[j] > (bigNumber - abs1(x_[j])) * room))
            return {};
        const float size = abs1(divisor);
        return size > 1 ? RowStep{std::min(1.0F, room / 2 * size), true} : RowStep{room / 2, false};
    }

    // Takes the products with the elements already known from x(j), and solves for it.
    void solve_row(int j) {
        const T divisor = diagonal(j);
        const RowStep step = row_step(j, divisor);
        if (step.shrink < 1)
            shrink(step.shrink);
        if (step.dividedFirst) {
            x_[j] = x_[j] / divisor - product_with_known(j, scalar<T>(factor_) / divisor);
        } else {
            x_[j] -= scaled() ? product_with_known(j, scalar<T>(factor_)) : product_with_known(j);
            if (divides())
                divide(j, divisor, 0);
        }
        xmax_ = std::max(xmax_, abs1(x_[j]));
    }

    T product_with_known(int j) const {
        const auto [first, count, data] = a_.column(j);
        return op_ == Op::adjoint ? kernel::dotc(count, Vector{data}, {x_ + first})
                                  : kernel::dotu(count, Vector{data}, {x_ + first});
    }
    T product_with_known(int j, T factor) const {
        const auto [first, count, data] = a_.column(j);
        T sum = scalar<T>(0);
        for (int i = 0; i < count; ++i)
            sum += element(data[i]) * factor * x_[first + i];
        return sum;
    }

    const View a_;
    const Op op_;
    const float factor_; // of the matrix
    T* const x_;
    const float* const cnorm_; // of the scaled matrix
    float scale_ = 1;
    float xmax_; // bound for the elements that the next step reads
};

} // namespace scaled

// Solves op(A) y = scale x and overwrites x with y: `latrs` in lapack/calls/triangular.hpp tells the arguments.
template <class View, class T>
float scaled_solve(const View& a, Op op, bool cnormGiven, T* x, float* cnorm) {
    if (a.n == 0)
        return 1;
    if (!cnormGiven)
        for (int j = 0; j < a.n; ++j) {
            const auto column = a.column(j);
            cnorm[j] = column.count > 0 ? kernel::asum(column.count, Vector{column.data}) : 0;
        }
    float halfMax = 0;
    for (int i = 0; i < a.n; ++i)
        halfMax = std::max(halfMax, scaled::half_abs1(x[i]));

    const scaled::MatrixScale matrix = scaled::scale_sums(a, cnorm);
    const bool rescaled = matrix.factor != 1;
    if (!matrix.finite || (!rescaled && scaled::plain_is_safe(a, op, halfMax, cnorm))) {
        a.solve(op, x);
        return 1;
    }
    const float scale = scaled::CarefulSolve<View>(a, op, matrix.factor, x, cnorm, halfMax).run();
    if (rescaled)
        kernel::scal(a.n, 1 / matrix.factor, Vector{cnorm});
    return scale;
}

} // namespace qrv::lapack
