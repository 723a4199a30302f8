// SSYTD2: reduction of a symmetric matrix to tridiagonal form, one reflector after the other.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/calls/symmetric.hpp"

namespace qrv::lapack {
namespace {

constexpr int fewRows = 16; // for which loops are faster than calls of kernels

void apply_to_few(Uplo uplo, int m, float tau, const float* v, Matrix<float> a, float* x) {
    const auto each_column = [&](const auto& body) { // with its rows beside the diagonal
        for (int j = 0; j < m; ++j)
            uplo == Uplo::upper ? body(a.column(j), j, 0, j) : body(a.column(j), j, j + 1, m);
    };
    std::fill_n(x, m, 0.0F);
    each_column([&](float* column, int j, int from, int to) {
        float sum = column[j] * v[j];
        for (int i = from; i < to; ++i) {
            x[i] += column[i] * v[j];
            sum += column[i] * v[i];
        }
        x[j] += sum;
    });
    float product = 0;
    for (int i = 0; i < m; ++i) {
        x[i] *= tau;
        product += x[i] * v[i];
    }
    for (int i = 0; i < m; ++i)
        x[i] -= 0.5F * tau * product * v[i];
    each_column([&](float* column, int j, int from, int to) {
        for (int i = from; i < to; ++i)
            column[i] -= v[i] * x[j] + x[i] * v[j];
        column[j] -= 2 * v[j] * x[j];
    });
}

// The part of A that one reflector with vector v changes, of order m: A := H A H. x: m floats.
void apply_reflector(Uplo uplo, int m, float tau, Vector<float> v, Matrix<float> a, Vector<float> x) {
    if (m <= fewRows)
        return apply_to_few(uplo, m, tau, v.data, a, x.data);
    kernel::hemv(uplo, m, tau, a, v, 0.0F, x);
    const float alpha = -0.5F * tau * kernel::dotu(m, x, v);
    kernel::axpy(m, alpha, v, x);
    kernel::her2(uplo, m, -1.0F, v, x, a);
}

} // namespace

// Vectors of reflectors are made in place; their first element, the new one beside the diagonal, is 1 while they are
// used. tau that is not final yet is room for the vector of the update.
void sytd2(Uplo uplo, int n, Matrix<float> a, float* d, float* e, float* tau) {
    for (int k = 0; k < n - 1; ++k) {
        const bool upper = uplo == Uplo::upper;
        const int i = upper ? n - 2 - k : k, m = upper ? i + 1 : n - 1 - i;
        float& beside = upper ? a(i, i + 1) : a(i + 1, i);
        const Vector<float> v = upper ? a.column(0, i + 1) : a.column(i + 1, i);
        const float factor = larfg(m, beside, upper ? v : v.from(m > 1 ? 1 : 0));
        e[i] = beside;
        if (factor != 0) {
            beside = 1;
            apply_reflector(uplo, m, factor, v, upper ? a : a.block(i + 1, i + 1), Vector{upper ? tau : tau + i});
            beside = e[i];
        }
        tau[i] = factor;
    }
    for (int i = 0; i < n; ++i)
        d[i] = a(i, i);
}

} // namespace qrv::lapack
