// SORG2R, CUNG2R: the first columns of the Q of a QR factorization in the place of its reflectors, which are applied
// one after the other to columns of the identity matrix, the last one first: so it meets those behind it only.
#include "blas/calls.hpp"
#include "lapack/calls/qr.hpp"
#include "lapack/kernel/source/qr/small_qr.hpp"

namespace qrv::lapack {

template <class T>
void org2r(int m, int n, int k, Matrix<T> a, const T* tau, T* work) {
    if (is_small<T>(m, n))
        return generate_small(m, n, k, a, Op::none, tau);
    const T zero = scalar<T>(0), one = scalar<T>(1);
    for (int j = k; j < n; ++j) {
        for (int i = 0; i < m; ++i)
            a(i, j) = zero;
        a(j, j) = one;
    }
    for (int i = k - 1; i >= 0; --i) {
        if (i + 1 < n) {
            a(i, i) = one;
            larf<T>(Side::left, m - i, n - i - 1, a.column(i, i), tau[i], a.block(i, i + 1), work);
        }
        if (i + 1 < m)
            kernel::scal(m - i - 1, -tau[i], a.column(i + 1, i));
        a(i, i) = one - tau[i];
        for (int l = 0; l < i; ++l)
            a(l, i) = zero;
    }
}

template void org2r(int, int, int, Matrix<float>, const float*, float*);
template void org2r(int, int, int, Matrix<SingleComplex>, const SingleComplex*, SingleComplex*);

} // namespace qrv::lapack
