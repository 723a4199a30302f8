#include "eigensystem.hpp"

#include <algorithm>
#include <cmath>

#include "support/timer.hpp"

namespace tools {
namespace {

using Column = std::vector<double>;

double dot(const Column& x, const Column& y) {
    double sum = 0;
    for (std::size_t i = 0; i < x.size(); ++i)
        sum += x[i] * y[i];
    return sum;
}

double length(const Column& x) {
    return std::sqrt(dot(x, x));
}

double frobenius_norm(const Matrix<float>& a) {
    return length(Column(a.values.begin(), a.values.end()));
}

Column column_of(const Matrix<float>& a, int j) {
    const auto first = a.values.begin() + std::ptrdiff_t{j} * a.rows;
    return {first, first + a.rows};
}

Matrix<float> transpose(const Matrix<float>& a) {
    Matrix<float> result(a.columns, a.rows);
    for (int j = 0; j < a.columns; ++j)
        for (int i = 0; i < a.rows; ++i)
            result(j, i) = a(i, j);
    return result;
}

// y := A x - re x + im z: the real part of (A - w) (x + i z), and with -x for z the imaginary part.
Column image(const Matrix<float>& a, double re, double im, const Column& x, const Column& z) {
    Column y(x.size());
    for (std::size_t i = 0; i < y.size(); ++i)
        y[i] = im * z[i] - re * x[i];
    const float* element = a.values.data();
    for (const double factor : x)
        for (double& sum : y)
            sum += factor * wide(*element++);
    return y;
}

} // namespace

Eigensystem::Eigensystem(const std::string& name, const Matrix<float>& a, VectorsWanted wanted)
    : symmetric(is_symmetric(a)), re(index(a.rows)), im(re) {
    const Timer timer;
    const int info = symmetric ? solve_symmetric(a, wanted.any()) : solve_general(a, wanted);
    time = timer.seconds();
    if (info != 0)
        throw Unsolvable(name + ": the iteration for eigenvalues did not converge");
    for (int k = 0; k < order(); ++k)
        if (!std::isfinite(std::abs(wide(value(k)))))
            throw Unsolvable(name + ": its eigenvalues are beyond the range of single precision");
}

int Eigensystem::solve_symmetric(Matrix<float> a, bool withVectors) {
    const int n = a.rows;
    int found = 0, info = 0;
    rightVectors = withVectors ? Matrix<float>(n, n) : Matrix<float>(1, 1);
    provider().Lapack()->Ssyevr(withVectors ? u'V' : u'N', u'A', MatrixTriangleMode::Lower, n, a.values, 0, n, 0, 0, 0,
                                0, 0, found, re, 0, rightVectors.values, 0, rightVectors.rows, nullptr, info);
    return info;
}

int Eigensystem::solve_general(Matrix<float> a, VectorsWanted wanted) {
    const int n = a.rows;
    int info = 0;
    leftVectors = wanted.left ? Matrix<float>(n, n) : Matrix<float>(1, 1);
    rightVectors = wanted.right ? Matrix<float>(n, n) : Matrix<float>(1, 1);
    provider().Lapack()->Sgeev(wanted.left ? u'V' : u'N', wanted.right ? u'V' : u'N', n, a.values, 0, n, re, im,
                               leftVectors.values, leftVectors.rows, rightVectors.values, rightVectors.rows, info);
    return info;
}

bool Eigensystem::all_real() const {
    return std::all_of(im.begin(), im.end(), [](float part) { return part == 0; });
}

AnyMatrix Eigensystem::values() const {
    Matrix<SingleComplex> result(order(), 1);
    for (int k = 0; k < order(); ++k)
        result(k, 0) = value(k);
    if (!all_real())
        return result;
    Matrix<float> real(order(), 1);
    real.values = re;
    return real;
}

AnyMatrix Eigensystem::vectors(bool left) const {
    const Matrix<float>& v = stored(left);
    if (all_real())
        return v;
    Matrix<SingleComplex> result(order(), order());
    for (int k = 0; k < order(); ++k)
        for (int i = 0; i < order(); ++i)
            result(i, k) = im[index(k)] > 0   ? SingleComplex(v(i, k), v(i, k + 1))
                           : im[index(k)] < 0 ? SingleComplex(v(i, k - 1), -v(i, k))
                                              : SingleComplex(v(i, k), 0);
    return result;
}

double Eigensystem::residual(const Matrix<float>& a, bool left) const {
    const Matrix<float> op = left ? transpose(a) : a;
    const Column none(re.size());
    double worst = 0;
    for (int k = 0; k < order(); ++k) {
        const double w = re[index(k)], imaginary = left ? -im[index(k)] : im[index(k)];
        const Column x = column_of(stored(left), k);
        if (imaginary == 0) {
            worst = std::max(worst, length(image(op, w, 0, x, none)));
            continue;
        }
        const Column z = column_of(stored(left), ++k);
        worst =
            std::max(worst, std::hypot(length(image(op, w, imaginary, x, z)), length(image(op, w, -imaginary, z, x))));
    }
    return ratio(worst, frobenius_norm(a));
}

double Eigensystem::trace_error(const Matrix<float>& a) const {
    double difference = 0;
    for (int k = 0; k < order(); ++k)
        difference += wide(a(k, k)) - re[index(k)];
    return ratio(std::abs(difference), frobenius_norm(a));
}

double Eigensystem::orthogonality() const {
    double worst = 0;
    std::vector<Column> columns;
    for (int j = 0; j < order(); ++j) {
        columns.push_back(column_of(rightVectors, j));
        for (int i = 0; i <= j; ++i)
            worst = std::max(worst, std::abs(dot(columns[index(i)], columns[index(j)]) - (i == j ? 1 : 0)));
    }
    return worst;
}

support::Plot spectrum(const Eigensystem& system, const std::string& title) {
    support::Series points{.name = {}, .x = {}, .y = {}, .mark = support::Mark::points, .width = 2.5};
    for (int k = 0; k < system.order(); ++k) {
        const SingleComplex value = system.value(k);
        points.x.push_back(system.by_symmetry() ? 1.0 + k : wide(value.Re()));
        points.y.push_back(system.by_symmetry() ? value.Re() : value.Im());
    }
    if (!system.by_symmetry())
        return {title, {.title = "real part"}, {.title = "imaginary part"}, {points}};
    const bool isWide = points.y.front() > 0 && points.y.back() > 1000 * points.y.front();
    return {title, {.title = "index", .isWhole = true}, {.title = "value", .isLogarithmic = isWide}, {points}};
}

} // namespace tools
