// SLATRS, CLATRS: solution of a triangular system, scaled so that it does not overflow.
//
// A bound on the growth of the solution, from the diagonal and the sums of the columns, tells whether the plain solve
// is safe; it nearly always is. Otherwise each step first shrinks all of x, as far as this step could make an element
// of it too large. (E. Anderson, Robust triangular solves for use in condition estimation, LAPACK Working Note 36,
// 1991.)
//
// No step repeats itself, so NaN and infinity in the operands end in a result too. A diagonal element that is 0 or NaN
// counts as singular.
#include <algorithm>
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/triangular.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

using machine::bigNumber;
using machine::smallNumber;

// Complex elements are measured by abs1, which can be twice their largest part: their bounds are half as large.
template <class T>
constexpr float half = isComplex<T> ? 0.5F : 1;

// half * abs1(x), which does not overflow.
float half_abs1(float x) {
    return std::fabs(x);
}
float half_abs1(SingleComplex x) {
    return std::fabs(x.re / 2) + std::fabs(x.im / 2);
}

template <class T>
struct Triangle {
    Uplo uplo;
    Op op;
    Diag diag;
    int n;
    Matrix<const T> a;

    bool unit() const { return diag == Diag::unit; }
    // The row of op(A) that is solved in step k.
    int step(int k) const { return (uplo == Uplo::upper) == (op == Op::none) ? n - 1 - k : k; }
    // Column j without its diagonal element: rows [first(j), first(j) + count(j)).
    int first(int j) const { return uplo == Uplo::upper ? 0 : j + 1; }
    int count(int j) const { return uplo == Uplo::upper ? j : n - 1 - j; }
    const T* column(int j) const { return a.data + first(j) + a.ld * j; }
    // An element as op(A) has it.
    T element(int i, int j) const { return op == Op::adjoint ? conj(a(i, j)) : a(i, j); }
};

// ---- Bounds -------------------------------------------------------------------------------------------------------

// From a bound for the right-hand side that of a solve with a diagonal of ones, by columns or by rows.
template <class T>
float unit_growth(const Triangle<T>& t, float grow, const float* cnorm) {
    grow = std::min(1.0F, grow);
    for (int k = 0; k < t.n && grow > smallNumber; ++k)
        grow /= 1 + cnorm[t.step(k)];
    return grow;
}

// Lower bound for the reciprocal of any |x(i)| on the way of a solve by columns, with op(A) = A: |x(j)| is at most the
// bound so far over the diagonal element, and column j adds to the others at most cnorm[j] times as much.
template <class T>
float column_growth(const Triangle<T>& t, float xmax, const float* cnorm) {
    float grow = half<T> / std::max(xmax, smallNumber);
    if (t.unit())
        return unit_growth(t, grow, cnorm);
    float bound = grow;
    for (int k = 0; k < t.n; ++k) {
        if (!(grow > smallNumber))
            return grow;
        const int j = t.step(k);
        const float size = abs1(t.a(j, j));
        bound = size >= smallNumber ? std::min(bound, std::min(1.0F, size) * grow) : 0;
        grow = size + cnorm[j] >= smallNumber ? grow * (size / (size + cnorm[j])) : 0;
    }
    return bound;
}

// The same of a solve by rows, with the transpose: x(j) is the sum of 1 + cnorm[j] terms over the diagonal element.
template <class T>
float row_growth(const Triangle<T>& t, float xmax, const float* cnorm) {
    float grow = half<T> / std::max(xmax, smallNumber);
    if (t.unit())
        return unit_growth(t, grow, cnorm);
    float bound = grow;
    for (int k = 0; k < t.n; ++k) {
        if (!(grow > smallNumber))
            return grow;
        const int j = t.step(k);
        const float terms = 1 + cnorm[j], size = abs1(t.a(j, j));
        grow = std::min(grow, bound / terms);
        if (size < smallNumber)
            bound = 0;
        else if (terms > size)
            bound *= size / terms;
    }
    return std::min(grow, bound);
}

// ---- The careful solve --------------------------------------------------------------------------------------------

// x solves op(A) * tscal for scale times the right-hand side; no element is above xmax.
template <class T>
class CarefulSolve {
public:
    CarefulSolve(const Triangle<T>& t, float tscal, T* x, const float* cnorm, float halfMax)
        : t_(t), tscal_(tscal), x_(x), cnorm_(cnorm), xmax_(halfMax / half<T>) {
        if (halfMax > bigNumber * half<T>) {
            shrink(bigNumber * half<T> / halfMax);
            xmax_ = bigNumber;
        }
    }

    // Result: scale for op(A).
    float run() {
        for (int k = 0; k < t_.n; ++k)
            if (t_.op == Op::none)
                eliminate_column(t_.step(k));
            else
                solve_row(t_.step(k));
        return scale_ / tscal_;
    }

private:
    void shrink(float factor) {
        kernel::scal(t_.n, factor, Vector{x_});
        scale_ *= factor;
        xmax_ *= factor;
    }

    T diagonal(int j) const { return tscal_ * (t_.unit() ? scalar<T>(1) : t_.element(j, j)); }
    bool divides() const { return !t_.unit() || tscal_ != 1; }

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
        for (int i = 0; i < t_.n; ++i)
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
        if (const int count = t_.count(j); count > 0) {
            T* const rest = x_ + t_.first(j);
            kernel::axpy(count, -(tscal_ * x_[j]), {t_.column(j)}, Vector{rest});
            xmax_ = abs1(rest[kernel::iamax(count, Vector{rest}) - 1]);
        }
    }

    // Takes the products with the elements already known from x(j), and solves for it.
    void solve_row(int j) {
        const T divisor = diagonal(j), plain = scalar<T>(tscal_);
        T factor = plain; // of the products
        if (float room = 1 / std::max(xmax_, 1.0F); cnorm_[j] > (bigNumber - abs1(x_[j])) * room) {
            room *= 0.5F;
            if (const float size = abs1(divisor); size > 1) { // dividing by it first helps
                room = std::min(1.0F, room * size);
                factor = factor / divisor;
            }
            if (room < 1)
                shrink(room);
        }
        const T sum = product_with_known(j, factor);
        if (factor == plain) {
            x_[j] -= sum;
            if (divides())
                divide(j, divisor, 0);
        } else {
            x_[j] = x_[j] / divisor - sum;
        }
        xmax_ = std::max(xmax_, abs1(x_[j]));
    }

    T product_with_known(int j, T factor) const {
        const int first = t_.first(j), count = t_.count(j);
        if (factor == scalar<T>(1))
            return t_.op == Op::adjoint ? kernel::dotc(count, Vector{t_.column(j)}, {x_ + first})
                                        : kernel::dotu(count, Vector{t_.column(j)}, {x_ + first});
        T sum = scalar<T>(0);
        for (int i = first; i < first + count; ++i)
            sum += t_.element(i, j) * factor * x_[i];
        return sum;
    }

    const Triangle<T> t_;
    const float tscal_;
    T* const x_;
    const float* const cnorm_;
    float scale_ = 1;
    float xmax_;
};

} // namespace

template <class T>
float latrs(Uplo uplo, Op op, Diag diag, bool cnormGiven, int n, Matrix<const T> a, T* x, float* cnorm) {
    if (n == 0)
        return 1;
    const Triangle<T> t{uplo, op, diag, n, a};
    if (!cnormGiven)
        for (int j = 0; j < n; ++j)
            cnorm[j] = t.count(j) > 0 ? kernel::asum(t.count(j), Vector{t.column(j)}) : 0;

    // The matrix is scaled too if a column's sum is too large to compute with.
    const float largestSum = cnorm[kernel::iamax(n, Vector{cnorm}) - 1];
    const float tscal = largestSum <= bigNumber * half<T> ? 1 : half<T> / (smallNumber * largestSum);
    if (tscal != 1)
        kernel::scal(n, tscal, Vector{cnorm});

    float halfMax = 0;
    for (int i = 0; i < n; ++i)
        halfMax = std::max(halfMax, half_abs1(x[i]));

    const bool plainIsSafe =
        tscal == 1 && (op == Op::none ? column_growth(t, halfMax, cnorm) : row_growth(t, halfMax, cnorm)) > smallNumber;
    float scale = 1;
    if (plainIsSafe)
        kernel::trsv(uplo, op, diag, n, a, Vector{x});
    else
        scale = CarefulSolve<T>(t, tscal, x, cnorm, halfMax).run();

    if (tscal != 1)
        kernel::scal(n, 1 / tscal, Vector{cnorm});
    return scale;
}

template float latrs(Uplo, Op, Diag, bool, int, Matrix<const float>, float*, float*);
template float latrs(Uplo, Op, Diag, bool, int, Matrix<const SingleComplex>, SingleComplex*, float*);

} // namespace qrv::lapack
