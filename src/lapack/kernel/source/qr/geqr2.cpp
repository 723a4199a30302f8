// SGEQR2, CGEQR2: A = Q R, a column at a time.
//
// The reflector of a column makes it a multiple of a unit vector with a diagonal element that is not negative, and its
// adjoint is applied to the columns behind it. Its vector stays below the diagonal. The last ones are done in a copy.
#include <algorithm>

#include "lapack/calls/qr.hpp"
#include "lapack/kernel/source/qr/small_qr.hpp"

namespace qrv::lapack {
template <class T>
void geqr2(int m, int n, Matrix<T> a, T* tau, T* work) {
    for (int i = 0; i < std::min(m, n); ++i) {
        if (is_small<T>(m - i, n - i))
            return factor_small(m - i, n - i, a.block(i, i), Op::none, tau + i);
        tau[i] = larfp(m - i, a(i, i), a.column(std::min(i + 1, m - 1), i));
        if (i + 1 == n)
            break;
        const T diagonal = a(i, i);
        a(i, i) = scalar<T>(1);
        larf<T>(Side::left, m - i, n - i - 1, a.column(i, i), conj(tau[i]), a.block(i, i + 1), work);
        a(i, i) = diagonal;
    }
}

template void geqr2(int, int, Matrix<float>, float*, float*);
template void geqr2(int, int, Matrix<SingleComplex>, SingleComplex*, SingleComplex*);

} // namespace qrv::lapack
