// SGELQ2, CGELQ2: A = L Q, a row at a time: the QR factorization of the adjoint of A, where it lies.
#include <algorithm>

#include "lapack/calls/qr.hpp"
#include "lapack/elements.hpp"
#include "lapack/kernel/source/qr/small_qr.hpp"

namespace qrv::lapack {

template <class T>
void gelq2(int m, int n, Matrix<T> a, T* tau, T* work) {
    for (int i = 0; i < std::min(m, n); ++i) {
        if (is_small<T>(n - i, m - i))
            return factor_small(n - i, m - i, a.block(i, i), adjoint<T>, tau + i);
        conjugate(n - i, a.row(i, i));
        tau[i] = larfp(n - i, a(i, i), a.row(i, std::min(i + 1, n - 1)));
        if (i + 1 < m) {
            const T diagonal = a(i, i);
            a(i, i) = scalar<T>(1);
            larf<T>(Side::right, m - i - 1, n - i, a.row(i, i), tau[i], a.block(i + 1, i), work);
            a(i, i) = diagonal;
        }
        conjugate(n - i, a.row(i, i));
    }
}

template void gelq2(int, int, Matrix<float>, float*, float*);
template void gelq2(int, int, Matrix<SingleComplex>, SingleComplex*, SingleComplex*);

} // namespace qrv::lapack
