// SGETRS, CGETRS: solution of a general system from the factors of SGETRF, A = P L U.
#include "lapack/calls/lu.hpp"

#include "blas/calls.hpp"

namespace qrv::lapack {
namespace {

// One right-hand side of so few equations takes loops, since calls of kernels cost more than what they do.
constexpr int fewEquations = 16;

// x - factor*y, in the place of x
template <class T>
void subtract(int n, T factor, const T* y, T* x) {
#pragma omp simd
    for (int i = 0; i < n; ++i)
        x[i] -= y[i] * factor;
}

// x := inv(U) inv(L) x
template <class T>
void solve_by_columns(int n, Matrix<const T> a, T* x) {
    for (int j = 0; j < n - 1; ++j)
        subtract(n - j - 1, x[j], &a(j + 1, j), x + j + 1);
    for (int j = n - 1; j >= 0; --j) {
        x[j] = x[j] / a(j, j);
        subtract(j, x[j], a.column(j), x);
    }
}

// x := inv(op(L)) inv(op(U)) x of transposes
template <class T>
void solve_by_rows(Op op, int n, Matrix<const T> a, T* x) {
    const auto element = [&](int i, int j) { return op == Op::adjoint ? conj(a(i, j)) : a(i, j); };
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < j; ++i)
            x[j] -= element(i, j) * x[i];
        x[j] = x[j] / element(j, j);
    }
    for (int j = n - 2; j >= 0; --j)
        for (int i = j + 1; i < n; ++i)
            x[j] -= element(i, j) * x[i];
}

template <class T>
void solve_by_loops(Op op, int n, Matrix<const T> a, const int* ipiv, Matrix<T> x) {
    if (op == Op::none) {
        laswp(1, x, 1, n, ipiv);
        solve_by_columns(n, a, x.data);
    } else {
        solve_by_rows(op, n, a, x.data);
        laswp(1, x, 1, n, ipiv, -1);
    }
}

} // namespace

template <class T>
void getrs(Op op, int n, int nrhs, Matrix<const T> a, const int* ipiv, Matrix<T> b) {
    if (n == 0 || nrhs == 0)
        return;
    if (nrhs == 1 && n <= fewEquations)
        return solve_by_loops(op, n, a, ipiv, b);
    const T one = scalar<T>(1);
    if (op == Op::none) {
        laswp(nrhs, b, 1, n, ipiv);
        blas::trsm(Side::left, Uplo::lower, op, Diag::unit, n, nrhs, one, a, b);
        blas::trsm(Side::left, Uplo::upper, op, Diag::nonUnit, n, nrhs, one, a, b);
    } else {
        blas::trsm(Side::left, Uplo::upper, op, Diag::nonUnit, n, nrhs, one, a, b);
        blas::trsm(Side::left, Uplo::lower, op, Diag::unit, n, nrhs, one, a, b);
        laswp(nrhs, b, 1, n, ipiv, -1);
    }
}

template void getrs(Op, int, int, Matrix<const float>, const int*, Matrix<float>);
template void getrs(Op, int, int, Matrix<const SingleComplex>, const int*, Matrix<SingleComplex>);

} // namespace qrv::lapack
