// SORGL2, CUNGL2: the first rows of the Q of an LQ factorization in the place of its reflectors: what SORG2R does, on
// the adjoint.
#include "blas/calls.hpp"
#include "lapack/calls/qr.hpp"
#include "lapack/elements.hpp"
#include "lapack/kernel/source/qr/small_qr.hpp"

namespace qrv::lapack {

template <class T>
void orgl2(int m, int n, int k, Matrix<T> a, const T* tau, T* work) {
    if (is_small<T>(n, m))
        return generate_small(n, m, k, a, adjoint<T>, tau);
    const T zero = scalar<T>(0), one = scalar<T>(1);
    for (int j = 0; j < n; ++j)
        for (int i = k; i < m; ++i)
            a(i, j) = i == j ? one : zero;
    for (int i = k - 1; i >= 0; --i) {
        if (i + 1 < n) {
            const Vector<T> tail = a.row(i, i + 1);
            conjugate(n - i - 1, tail);
            if (i + 1 < m) {
                a(i, i) = one;
                larf<T>(Side::right, m - i - 1, n - i, a.row(i, i), conj(tau[i]), a.block(i + 1, i), work);
            }
            kernel::scal(n - i - 1, -tau[i], tail);
            conjugate(n - i - 1, tail);
        }
        a(i, i) = one - conj(tau[i]);
        for (int l = 0; l < i; ++l)
            a(i, l) = zero;
    }
}

template void orgl2(int, int, int, Matrix<float>, const float*, float*);
template void orgl2(int, int, int, Matrix<SingleComplex>, const SingleComplex*, SingleComplex*);

} // namespace qrv::lapack
