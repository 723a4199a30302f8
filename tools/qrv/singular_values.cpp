#include "singular_values.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "linear_system.hpp"
#include "support/timer.hpp"

namespace tools {
namespace {

using Corvex::Mathematics::LinearAlgebra::Providers::SingleLapack;

int decompose(char16_t job, Matrix<float>& a, std::vector<float>& s, Matrix<float>& u, Matrix<float>& vt) {
    int info = 0;
    provider().Lapack()->Sgesdd(job, a.rows, a.columns, a.values, 0, a.rows, s, u.values, u.rows, vt.values, vt.rows,
                                info);
    return info;
}
int decompose(char16_t job, Matrix<SingleComplex>& a, std::vector<float>& s, Matrix<SingleComplex>& u,
              Matrix<SingleComplex>& vt) {
    int info = 0;
    provider().ComplexLapack()->Cgesdd(job, a.rows, a.columns, a.values, 0, a.rows, s, u.values, u.rows, vt.values,
                                       vt.rows, info);
    return info;
}

float conjugate(float x) {
    return x;
}
SingleComplex conjugate(SingleComplex x) {
    return {x.Re(), -x.Im()};
}

template <class T>
Matrix<T> adjoint(const Matrix<T>& a) {
    Matrix<T> result(a.columns, a.rows);
    for (int j = 0; j < a.columns; ++j)
        for (int i = 0; i < a.rows; ++i)
            result(j, i) = conjugate(a(i, j));
    return result;
}

// Square of the Frobenius norm of A - U S V^H.
template <class T>
double squared_distance(const Matrix<T>& a, const std::vector<float>& s, const Matrix<T>& u, const Matrix<T>& vt) {
    double sum = 0;
    std::vector<support::Wide<T>> column(static_cast<std::size_t>(a.rows));
    for (int j = 0; j < a.columns; ++j) {
        for (int i = 0; i < a.rows; ++i)
            column[static_cast<std::size_t>(i)] = wide(a(i, j));
        for (int k = 0; k < vt.rows; ++k) {
            const auto factor = wide(vt(k, j)) * wide(s[static_cast<std::size_t>(k)]);
            for (int i = 0; i < a.rows; ++i)
                column[static_cast<std::size_t>(i)] -= wide(u(i, k)) * factor;
        }
        for (const auto& element : column)
            sum += std::norm(element);
    }
    return sum;
}

// The largest element of X^H X - I.
template <class T>
double from_orthogonal(const Matrix<T>& x) {
    double worst = 0;
    for (int j = 0; j < x.columns; ++j)
        for (int k = 0; k <= j; ++k) {
            support::Wide<T> sum = j == k ? -1 : 0;
            for (int i = 0; i < x.rows; ++i)
                sum += wide(conjugate(x(i, k))) * wide(x(i, j));
            worst = std::max(worst, std::abs(sum));
        }
    return worst;
}

} // namespace

SingularValues::SingularValues(const std::string& name, const AnyMatrix& a, bool withVectors) {
    const int info = std::visit([&](const auto& matrix) { return solve(matrix, withVectors); }, a);
    if (info != 0)
        throw Unsolvable(name + ": the iteration for singular values did not converge");
    for (const float value : s)
        if (!std::isfinite(value))
            throw Unsolvable(name + ": its singular values are beyond the range of single precision");
}

template <class T>
int SingularValues::solve(Matrix<T> a, bool withVectors) {
    rows = a.rows, columns = a.columns;
    const int k = std::min(rows, columns);
    s.resize(static_cast<std::size_t>(k));
    Matrix<T> left = withVectors ? Matrix<T>(rows, k) : Matrix<T>(1, 1),
              right = withVectors ? Matrix<T>(k, columns) : Matrix<T>(1, 1);
    const Timer timer;
    const int info = decompose(withVectors ? u'S' : u'N', a, s, left, right);
    time = timer.seconds();
    u = std::move(left), vt = std::move(right);
    return info;
}

int SingularValues::rank(double tolerance) const {
    const auto above = [&](float value) { return value > tolerance * wide(s.front()); };
    return static_cast<int>(std::count_if(s.begin(), s.end(), above));
}
double SingularValues::rounding_tolerance() const {
    return std::max(rows, columns) * static_cast<double>(std::numeric_limits<float>::epsilon());
}
double SingularValues::condition() const {
    return wide(s.front()) / wide(s.back());
}

double SingularValues::distance(int k) const {
    double left = 0, all = 0;
    for (int i = count() - 1; i >= 0; --i) {
        all += wide(value(i)) * wide(value(i));
        if (i == k)
            left = all;
    }
    return ratio(std::sqrt(left), std::sqrt(all));
}
int SingularValues::rank_within(double error) const {
    int k = 0;
    while (k < count() && distance(k) > error)
        ++k;
    return k;
}

AnyMatrix SingularValues::values() const {
    Matrix<float> result(count(), 1);
    result.values = s;
    return result;
}
AnyMatrix SingularValues::right() const {
    return std::visit([](const auto& matrix) { return AnyMatrix(adjoint(matrix)); }, vt);
}

double SingularValues::residual(const AnyMatrix& a) const {
    return std::visit(
        [&]<class T>(const Matrix<T>& matrix) {
            double norm = 0;
            for (const T element : matrix.values)
                norm += std::norm(wide(element));
            return ratio(std::sqrt(squared_distance(matrix, s, std::get<Matrix<T>>(u), std::get<Matrix<T>>(vt))),
                         std::sqrt(norm));
        },
        a);
}
double SingularValues::orthogonality() const {
    const auto of = [](const AnyMatrix& x) {
        return std::visit([](const auto& matrix) { return from_orthogonal(matrix); }, x);
    };
    return std::max(of(u), of(right()));
}

Matrix<float> nearest_of_rank(const SingularValues& svd, int k) {
    using Corvex::Mathematics::LinearAlgebra::TransposeOperation;
    const auto &u = std::get<Matrix<float>>(svd.left()), v = std::get<Matrix<float>>(svd.right());
    Matrix<float> scaled = u, result(u.rows, v.rows);
    for (int j = 0; j < k; ++j)
        for (int i = 0; i < u.rows; ++i)
            scaled(i, j) *= svd.value(j);
    provider().BlasLevel3()->Sgemm(TransposeOperation::None, TransposeOperation::Transpose, u.rows, v.rows, k, 1.0F,
                                   scaled.values, 0, u.rows, v.values, 0, v.rows, 0.0F, result.values, 0, u.rows);
    return result;
}

support::Plot decay(const SingularValues& svd, double tolerance, const std::string& title) {
    support::Series points{.name = "singular values", .x = {}, .y = {}, .mark = support::Mark::points, .width = 2.5};
    const double bound = tolerance * wide(svd.value(0));
    for (int k = 0; k < svd.count(); ++k) {
        points.x.push_back(k + 1.0);
        points.y.push_back(wide(svd.value(k)));
    }
    support::Series line{.name = "tolerance of the rank", .x = {1.0, 1.0 * svd.count()}, .y = {bound, bound}};
    line.dashes = "4 3";
    return {title, {.title = "index", .isWhole = true}, {.title = "value", .isLogarithmic = true}, {points, line}};
}

} // namespace tools
