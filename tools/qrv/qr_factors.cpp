#include "qr_factors.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

#include "support/timer.hpp"

namespace tools {
namespace {

template <class T>
double squares(const std::vector<T>& x) {
    return std::accumulate(x.begin(), x.end(), 0.0, [](double sum, T value) { return sum + std::norm(value); });
}
template <class T>
double frobenius(const Matrix<T>& a) {
    double sum = 0;
    for (const T value : a.values)
        sum += std::norm(wide(value));
    return std::sqrt(sum);
}

// The first rows of a matrix.
template <class T>
Matrix<T> top(const Matrix<T>& a, int rows) {
    Matrix<T> result(rows, a.columns);
    for (int j = 0; j < a.columns; ++j)
        for (int i = 0; i < rows; ++i)
            result(i, j) = a(i, j);
    return result;
}

template <class T>
std::vector<Wide<T>> times(const Matrix<T>& a, const std::vector<Wide<T>>& x) {
    std::vector<Wide<T>> y(static_cast<std::size_t>(a.rows));
    for (int j = 0; j < a.columns; ++j)
        for (int i = 0; i < a.rows; ++i)
            y[static_cast<std::size_t>(i)] += wide(a(i, j)) * x[static_cast<std::size_t>(j)];
    return y;
}
double conjugate(double x) {
    return x;
}
std::complex<double> conjugate(std::complex<double> x) {
    return std::conj(x);
}
template <class T>
std::vector<Wide<T>> adjoint_times(const Matrix<T>& a, const std::vector<Wide<T>>& x) {
    std::vector<Wide<T>> y(static_cast<std::size_t>(a.columns));
    for (int j = 0; j < a.columns; ++j)
        for (int i = 0; i < a.rows; ++i)
            y[static_cast<std::size_t>(j)] += conjugate(wide(a(i, j))) * x[static_cast<std::size_t>(i)];
    return y;
}

// |E v| for a vector of random signs is about |E| in the Frobenius norm.
template <class T>
std::vector<Wide<T>> signs(int n) {
    std::vector<Wide<T>> v(static_cast<std::size_t>(n));
    std::minstd_rand generator(1);
    for (Wide<T>& value : v)
        value = generator() % 2 == 0 ? 1 : -1;
    return v;
}
template <class T>
double distance(const std::vector<T>& x, std::vector<T> y) {
    for (std::size_t i = 0; i < y.size(); ++i)
        y[i] -= x[i];
    return std::sqrt(squares(y));
}

} // namespace

template <class T>
QrFactors<T>::QrFactors(const std::string& nameOfA, const Matrix<T>& a, bool pivoted)
    : name(nameOfA), factors(a), tau(static_cast<std::size_t>(std::min(a.rows, a.columns))),
      places(static_cast<std::size_t>(a.columns)), isPivoted(pivoted) {
    const support::Timer timer;
    if (pivoted) {
        factor_pivoted(factors, places, tau);
    } else {
        std::iota(places.begin(), places.end(), 1);
        factor_orthogonal(factors, tau);
    }
    seconds = timer.seconds();
    for (const T value : factors.values)
        if (!std::isfinite(std::abs(wide(value))))
            throw Unsolvable(name + ": its factors are beyond the range of single precision");

    double largest = 0;
    for (std::size_t i = 0; i < tau.size(); ++i)
        largest = std::max(largest, std::abs(wide(factors(int(i), int(i)))));
    const double negligible = largest * std::max(a.rows, a.columns) * double(std::numeric_limits<float>::epsilon()) / 2;
    for (std::size_t i = 0; i < tau.size(); ++i)
        rank_ += std::abs(wide(factors(int(i), int(i)))) > negligible;
}

template <class T>
double QrFactors<T>::condition() const {
    const float reciprocal = rank_ > 0 ? reciprocal_condition_triangular(MatrixNorm::One, factors, rank_) : 0;
    return reciprocal > 0 ? 1.0 / reciprocal : std::numeric_limits<double>::infinity();
}

// By |R^-1|^2 <= |R^-1|_1 |R^-1|_inf.
template <class T>
double QrFactors<T>::inverse_norm() const {
    double product = 1;
    for (const MatrixNorm kind : {MatrixNorm::One, MatrixNorm::Infinity})
        product /= 1.0 * reciprocal_condition_triangular(kind, factors, rank_) * norm_triangular(kind, factors, rank_);
    return std::sqrt(product);
}

template <class T>
Matrix<T> QrFactors<T>::solve(Matrix<T> b) const {
    if (!isPivoted && !has_full_rank())
        throw Unsolvable(name + " has columns that depend on others; pivoting finds them");
    apply_adjoint(factors, tau, b);
    Matrix<T> leading = top(b, rank_), x(factors.columns, b.columns);
    solve_triangular(factors, leading);
    for (int k = 0; k < b.columns; ++k)
        for (int i = 0; i < rank_; ++i) {
            if (!std::isfinite(std::abs(wide(leading(i, k)))))
                throw Unsolvable(name + ": the result is beyond the range of single precision");
            x(places[static_cast<std::size_t>(i)] - 1, k) = leading(i, k);
        }
    return x;
}

// x solves the problem exactly for A + E, with E of either of two sizes: |A^H r| / |r|, or |r| / |x|, which removes the
// residual. The bound is what such an E does to x. Sources: G. Stewart, Research, development and LINPACK, in
// Mathematical Software III (1977); N. Higham, Accuracy and Stability of Numerical Algorithms, 2nd edition, theorem
// 20.1.
template <class T>
FitQuality QrFactors<T>::quality(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b) const {
    FitQuality worst;
    const double size = frobenius(a), inverse = rank_ > 0 ? inverse_norm() : 0;
    for (int k = 0; k < b.columns; ++k) {
        const std::vector<Wide<T>> r = residual(a, x, b, k);
        double sizeOfX = 0, sizeOfB = 0;
        for (int i = 0; i < x.rows; ++i)
            sizeOfX += std::norm(wide(x(i, k)));
        for (int i = 0; i < b.rows; ++i)
            sizeOfB += std::norm(wide(b(i, k)));
        sizeOfX = std::sqrt(sizeOfX);
        const double missing = std::sqrt(squares(r));
        const double change =
            std::min(ratio(std::sqrt(squares(adjoint_times(a, r))), missing), ratio(missing, sizeOfX));
        const double grown = change * inverse; // the change beside the least singular value
        const double bound =
            grown < 1 ? grown / (1 - grown) * (2 + inverse * ratio(missing, sizeOfX) * (1 + 1 / (size * inverse)))
                      : std::numeric_limits<double>::infinity();
        worst.residual = std::max(worst.residual, missing);
        worst.share = std::max(worst.share, ratio(missing, std::sqrt(sizeOfB)));
        worst.backwardError = std::max(worst.backwardError, ratio(change, size));
        worst.errorBound = std::max(worst.errorBound, bound);
    }
    return worst;
}

template <class T>
Matrix<T> QrFactors<T>::r() const {
    Matrix<T> result(static_cast<int>(tau.size()), factors.columns);
    for (int j = 0; j < result.columns; ++j)
        for (int i = 0; i <= std::min(j, result.rows - 1); ++i)
            result(i, j) = factors(i, j);
    return result;
}

template <class T>
Matrix<T> QrFactors<T>::q() const {
    Matrix<T> result(factors.rows, static_cast<int>(tau.size()));
    std::copy_n(factors.values.begin(), result.values.size(), result.values.begin());
    generate_orthogonal(result, tau);
    return result;
}

template <class T>
double QrFactors<T>::gflops() const {
    return support::geqrf_work(factors.rows, factors.columns, isComplex<T>).amount / seconds * 1e-9;
}

template <class T>
FactorErrors factor_errors(const QrFactors<T>& factors, const Matrix<T>& a) {
    const Matrix<T> q = factors.q();
    const std::vector<Wide<T>> v = signs<T>(a.columns), w = signs<T>(q.columns);
    std::vector<Wide<T>> pv(v.size());
    for (std::size_t j = 0; j < v.size(); ++j)
        pv[static_cast<std::size_t>(factors.order()[j] - 1)] = v[j];
    return {ratio(distance(times(a, pv), times(q, times(factors.r(), v))), frobenius(a)),
            distance(adjoint_times(q, times(q, w)), w)};
}

template class QrFactors<float>;
template class QrFactors<SingleComplex>;
template FactorErrors factor_errors(const QrFactors<float>&, const Matrix<float>&);
template FactorErrors factor_errors(const QrFactors<SingleComplex>&, const Matrix<SingleComplex>&);

} // namespace tools
