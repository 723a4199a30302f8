// SSYTD2: reduction of a symmetric matrix to tridiagonal form, one reflector after the other.
#include "blas/calls.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/calls/symmetric.hpp"

namespace qrv::lapack {
namespace {

// The part of A that one reflector with vector v changes, of order m: A := H A H. x: m floats.
void apply_reflector(Uplo uplo, int m, float tau, Vector<float> v, Matrix<float> a, Vector<float> x) {
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
