#include "linear_system.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <complex>
#include <limits>
#include <string>

#include "routines.hpp"

namespace tools {
namespace {

double wide(float value) {
    return value;
}
std::complex<double> wide(SingleComplex value) {
    return {value.Re(), value.Im()};
}
void narrow(double value, float& result) {
    result = static_cast<float>(value);
}
void narrow(std::complex<double> value, SingleComplex& result) {
    result = {static_cast<float>(value.real()), static_cast<float>(value.imag())};
}

template <class T>
using Wide = decltype(wide(T{}));

// 0/0 counts as 0: nothing is wrong there.
double ratio(double error, double scale) {
    return error == 0 ? 0 : error / scale;
}

// Keeps a NaN, which std::max drops or keeps by its place.
void raise(double& largest, double value) {
    if (!(value <= largest))
        largest = value;
}

double largest_row_sum(const auto& a) {
    std::vector<double> sums(static_cast<std::size_t>(a.rows));
    for (int j = 0; j < a.columns; ++j)
        for (int i = 0; i < a.rows; ++i)
            sums[static_cast<std::size_t>(i)] += std::abs(wide(a(i, j)));
    return *std::max_element(sums.begin(), sums.end());
}

template <class T>
double largest_element(const Matrix<T>& a) {
    double largest = 0;
    for (const T value : a.values)
        raise(largest, std::abs(wide(value)));
    return largest;
}

// Column k of b - A*x.
template <class T>
std::vector<Wide<T>> residual(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b, int k) {
    std::vector<Wide<T>> result(static_cast<std::size_t>(a.rows));
    for (int i = 0; i < a.rows; ++i)
        result[static_cast<std::size_t>(i)] = wide(b(i, k));
    for (int j = 0; j < a.columns; ++j)
        for (int i = 0; i < a.rows; ++i)
            result[static_cast<std::size_t>(i)] -= wide(a(i, j)) * wide(x(j, k));
    return result;
}

} // namespace

template <class T>
LinearSystem<T>::LinearSystem(const std::string& nameOfA, const Matrix<T>& a)
    : name(nameOfA), normOfA(norm(MatrixNorm::Infinity, a)), lu(a), pivots(static_cast<std::size_t>(a.rows)) {
    const auto start = std::chrono::steady_clock::now();
    const int zeroPivot = factor(lu, pivots);
    seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (zeroPivot > 0)
        throw Unsolvable(name + " is singular: pivot " + std::to_string(zeroPivot) + " of " + std::to_string(a.rows) +
                         " is 0");
}

template <class T>
Matrix<T> LinearSystem<T>::finite(Matrix<T> result) const {
    for (const T value : result.values)
        if (!std::isfinite(std::abs(wide(value))))
            throw Unsolvable(name + ": the result is beyond the range of single precision");
    return result;
}

template <class T>
Matrix<T> LinearSystem<T>::solve(Matrix<T> b) const {
    solve_factored(lu, pivots, b);
    return finite(std::move(b));
}

template <class T>
Matrix<T> LinearSystem<T>::inverse() const {
    Matrix<T> result = lu;
    invert_factored(result, pivots);
    return finite(std::move(result));
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
            narrow(r[static_cast<std::size_t>(i)], correction(i, k));
    }
    solve_factored(lu, pivots, correction);
    return ratio(largest_element(correction), largest_element(x));
}

template <class T>
double LinearSystem<T>::gflops() const {
    return (isComplex<T> ? 4 : 1) * 2.0 / 3 * std::pow(lu.rows, 3) / seconds * 1e-9;
}

template <class T>
BackwardError backward_error(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b) {
    const double normOfA = largest_row_sum(a);
    const auto rows = static_cast<std::size_t>(a.rows);
    BackwardError worst;
    for (int k = 0; k < b.columns; ++k) {
        const std::vector<Wide<T>> r = residual(a, x, b, k);
        std::vector<double> scale(rows); // |A| |x| + |b|
        double normOfX = 0, normOfB = 0, normOfResidual = 0;
        for (int i = 0; i < a.rows; ++i)
            raise(normOfB, scale[static_cast<std::size_t>(i)] = std::abs(wide(b(i, k))));
        for (int j = 0; j < a.columns; ++j) {
            const double xj = std::abs(wide(x(j, k)));
            raise(normOfX, xj);
            for (int i = 0; i < a.rows; ++i)
                scale[static_cast<std::size_t>(i)] += std::abs(wide(a(i, j))) * xj;
        }
        for (std::size_t i = 0; i < rows; ++i) {
            raise(worst.componentwise, ratio(std::abs(r[i]), scale[i]));
            raise(normOfResidual, std::abs(r[i]));
        }
        raise(worst.normwise, ratio(normOfResidual, normOfA * normOfX + normOfB));
    }
    return worst;
}

// |r| = e (|A| |x| + |b|) and |b| <= |A| |x| + |r| give |r| <= 2 e / (1 - e) |A| |x|.
double forward_error_bound(double condition, const BackwardError& error) {
    return error.normwise < 1 ? condition * 2 * error.normwise / (1 - error.normwise)
                              : std::numeric_limits<double>::infinity();
}

template <class T>
Matrix<T> product(const Matrix<T>& a, const Matrix<T>& x) {
    Matrix<T> result(a.rows, x.columns);
    for (int k = 0; k < x.columns; ++k) {
        std::vector<Wide<T>> sums(static_cast<std::size_t>(a.rows));
        for (int j = 0; j < a.columns; ++j)
            for (int i = 0; i < a.rows; ++i)
                sums[static_cast<std::size_t>(i)] += wide(a(i, j)) * wide(x(j, k));
        for (int i = 0; i < a.rows; ++i)
            narrow(sums[static_cast<std::size_t>(i)], result(i, k));
    }
    return result;
}

template <class T>
double relative_difference(const Matrix<T>& x, const Matrix<T>& y) {
    double difference = 0;
    for (std::size_t p = 0; p < x.values.size(); ++p)
        raise(difference, std::abs(wide(x.values[p]) - wide(y.values[p])));
    return ratio(difference, largest_element(y));
}

template class LinearSystem<float>;
template class LinearSystem<SingleComplex>;
template BackwardError backward_error(const Matrix<float>&, const Matrix<float>&, const Matrix<float>&);
template BackwardError backward_error(const Matrix<SingleComplex>&, const Matrix<SingleComplex>&,
                                      const Matrix<SingleComplex>&);
template Matrix<float> product(const Matrix<float>&, const Matrix<float>&);
template Matrix<SingleComplex> product(const Matrix<SingleComplex>&, const Matrix<SingleComplex>&);
template double relative_difference(const Matrix<float>&, const Matrix<float>&);
template double relative_difference(const Matrix<SingleComplex>&, const Matrix<SingleComplex>&);

} // namespace tools
