#include "judge.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace support {
namespace {

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

} // namespace

template <class T>
double largest_element(const Matrix<T>& a) {
    double largest = 0;
    for (const T value : a.values)
        raise(largest, std::abs(wide(value)));
    return largest;
}

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
            result(i, k) = narrow(sums[static_cast<std::size_t>(i)]);
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

template std::vector<Wide<float>> residual(const Matrix<float>&, const Matrix<float>&, const Matrix<float>&, int);
template BackwardError backward_error(const Matrix<float>&, const Matrix<float>&, const Matrix<float>&);
template Matrix<float> product(const Matrix<float>&, const Matrix<float>&);
template double largest_element(const Matrix<float>&);
template double relative_difference(const Matrix<float>&, const Matrix<float>&);
template std::vector<Wide<SingleComplex>> residual(const Matrix<SingleComplex>&, const Matrix<SingleComplex>&,
                                                   const Matrix<SingleComplex>&, int);
template BackwardError backward_error(const Matrix<SingleComplex>&, const Matrix<SingleComplex>&,
                                      const Matrix<SingleComplex>&);
template Matrix<SingleComplex> product(const Matrix<SingleComplex>&, const Matrix<SingleComplex>&);
template double largest_element(const Matrix<SingleComplex>&);
template double relative_difference(const Matrix<SingleComplex>&, const Matrix<SingleComplex>&);

} // namespace support
