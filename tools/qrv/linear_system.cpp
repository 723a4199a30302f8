#include "linear_system.hpp"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <string>

#include "support/flops.hpp"
#include "support/timer.hpp"

namespace tools {

Bandwidth bandwidth_of(const Matrix<float>& a) {
    Bandwidth band;
    for (int j = 0; j < a.columns; ++j)
        for (int i = 0; i < a.rows; ++i)
            if (a(i, j) != 0) {
                band.below = std::max(band.below, i - j);
                band.above = std::max(band.above, j - i);
            }
    return band;
}

bool is_narrow(Bandwidth band, int n) {
    return 4.0 * band.diagonals() <= n;
}

template <class T>
bool may_be_definite(const Matrix<T>& a) {
    for (int j = 0; j < a.columns; ++j) {
        if (!(std::real(wide(a(j, j))) > 0))
            return false;
        for (int i = 0; i <= j; ++i)
            if (wide(a(i, j)) != std::conj(std::complex<double>(wide(a(j, i)))))
                return false;
    }
    return true;
}

template <class T>
LinearSystem<T>::LinearSystem(const std::string& nameOfA, const Matrix<T>& a, Method method)
    : name(nameOfA), normOfA(norm(MatrixNorm::Infinity, a)), order(a.rows), factors(Lu<T>(Matrix<T>(0, 0))) {
    std::optional<Bandwidth> band;
    if constexpr (!isComplex<T>)
        if (method == Method::band || method == Method::automatic) {
            band = bandwidth_of(a);
            if (method == Method::automatic && !is_narrow(*band, a.rows))
                band.reset();
        }
    const bool definite = method != Method::lu && may_be_definite(a);
    if (method == Method::cholesky && !definite)
        throw Unsolvable(name + " is not for Cholesky: it is not symmetric or Hermitian with a positive diagonal");
    if (!definite || !factor_definite_one(a, band)) {
        if (method == Method::cholesky)
            throw Unsolvable(name + " is not positive definite: Cholesky ends at column " + std::to_string(indefinite));
        factor_general(a, band);
    }
    std::visit([this](const auto& f) { require_finite(f.values, "its factors are"); }, factors);
}

// Result: whether it is positive definite.
template <class T>
bool LinearSystem<T>::factor_definite_one(const Matrix<T>& a, [[maybe_unused]] std::optional<Bandwidth> band) {
    if constexpr (!isComplex<T>)
        if (band) {
            indefinite = factor<BandCholesky>(a, *band);
            return indefinite == 0;
        }
    indefinite = factor<Cholesky<T>>(a);
    return indefinite == 0;
}

template <class T>
void LinearSystem<T>::factor_general(const Matrix<T>& a, [[maybe_unused]] std::optional<Bandwidth> band) {
    int zeroPivot = 0;
    if constexpr (!isComplex<T>)
        zeroPivot = band ? factor<BandLu>(a, *band) : factor<Lu<T>>(a);
    else
        zeroPivot = factor<Lu<T>>(a);
    if (zeroPivot > 0)
        throw Unsolvable(name + " is singular: pivot " + std::to_string(zeroPivot) + " of " + std::to_string(order) +
                         " is 0");
}

// In place of what was there, so that there are never two sets of factors.
template <class T>
template <class Kind, class... Arguments>
int LinearSystem<T>::factor(const Arguments&... arguments) {
    auto& untouched = factors.template emplace<Kind>(arguments...);
    const Timer timer;
    const int info = untouched.factor();
    seconds = timer.seconds();
    return info;
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
    std::visit([&](const auto& f) { f.solve(b); }, factors);
    require_finite(b, "the result is");
    return b;
}

template <class T>
Matrix<T> LinearSystem<T>::inverse() && {
    auto& lu = std::get<Lu<T>>(factors);
    invert_factored(lu.values, lu.pivots);
    require_finite(lu.values, "the result is");
    return std::move(lu.values);
}

template <class T>
double LinearSystem<T>::condition() const {
    const float reciprocal = std::visit([this](const auto& f) { return f.reciprocal_condition(normOfA); }, factors);
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
    std::visit([&](const auto& f) { f.solve(correction); }, factors);
    return ratio(largest_element(correction), largest_element(x));
}

template <class T>
double LinearSystem<T>::gflops() const {
    return std::visit([](const auto& f) { return f.work().amount; }, factors) / seconds * 1e-9;
}

template <class T>
const char* LinearSystem<T>::method() const {
    return std::visit([](const auto& f) { return f.name; }, factors);
}

template <class T>
auto LinearSystem<T>::saving() const -> std::optional<Saving> {
    return std::visit(
        [this](const auto& f) -> std::optional<Saving> {
            if constexpr (requires { f.width; }) {
                const double n = order;
                return Saving{f.width, f.values.rows / n, f.work().amount / getrf_work(n, false).amount};
            }
            return std::nullopt;
        },
        factors);
}

template class LinearSystem<float>;
template class LinearSystem<SingleComplex>;

} // namespace tools
