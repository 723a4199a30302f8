#include "linear_system.hpp"

#include <cmath>
#include <limits>
#include <string>

#include "routines.hpp"
#include "support/flops.hpp"
#include "support/timer.hpp"

namespace tools {

template <class T>
LinearSystem<T>::LinearSystem(const std::string& nameOfA, const Matrix<T>& a)
    : name(nameOfA), normOfA(norm(MatrixNorm::Infinity, a)), lu(a), pivots(static_cast<std::size_t>(a.rows)) {
    const Timer timer;
    const int zeroPivot = factor(lu, pivots);
    seconds = timer.seconds();
    if (zeroPivot > 0)
        throw Unsolvable(name + " is singular: pivot " + std::to_string(zeroPivot) + " of " + std::to_string(a.rows) +
                         " is 0");
    require_finite(lu, "its factors are");
}

template <class T>
void LinearSystem<T>::require_finite(const Matrix<T>& values, const char* what) const {
    for (const T value : values.values)
        if (!std::isfinite(std::abs(wide(value))))
            throw Unsolvable(name + ": " + what + " beyond the range of single precision");
}

template <class T>
void LinearSystem<T>::require_solved(const BackwardError& error) const {
    // An equation is missed by as much as its terms are large, and that is more than the rounding of small ones.
    constexpr double halfTheDigits = 2.4e-4; // square root of the unit roundoff
    if (!(error.componentwise < 0.5) && !(error.normwise < halfTheDigits))
        throw Unsolvable(name + ": the elimination failed, what it gives does not solve the system");
}

template <class T>
Matrix<T> LinearSystem<T>::solve(Matrix<T> b) const {
    solve_factored(lu, pivots, b);
    require_finite(b, "the result is");
    return b;
}

template <class T>
Matrix<T> LinearSystem<T>::inverse() && {
    invert_factored(lu, pivots);
    require_finite(lu, "the result is");
    return std::move(lu);
}

template <class T>
double LinearSystem<T>::condition() const {
    const float reciprocal = reciprocal_condition(MatrixNorm::Infinity, lu, normOfA);
    return reciprocal > 0 ? 1.0 / reciprocal : std::numeric_limits<double>::infinity();
}

template <class T>
double LinearSystem<T>::error_estimate(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b) const {
    Matrix<T> correction(b.rows, b.columns);
    for (int k = 0; k < b.columns; ++k) {
        const std::vector<Wide<T>> r = residual(a, x, b, k);
        for (int i = 0; i < b.rows; ++i)
            correction(i, k) = narrow(r[static_cast<std::size_t>(i)]);
    }
    solve_factored(lu, pivots, correction);
    return ratio(largest_element(correction), largest_element(x));
}

template <class T>
double LinearSystem<T>::gflops() const {
    return getrf_work(lu.rows, isComplex<T>).amount / seconds * 1e-9;
}

template class LinearSystem<float>;
template class LinearSystem<SingleComplex>;

} // namespace tools
