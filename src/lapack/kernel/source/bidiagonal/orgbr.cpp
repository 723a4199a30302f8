// SORGBR, CUNGBR: Q or P^H of a reduction to bidiagonal form, generated from its reflectors.
//
// Of a matrix that is as long in the direction of the vectors as it is wide, these begin one place further: Q of a wide
// matrix and P of a tall one are 1 and the product of the others. Their reflectors are moved one column or row on.
#include <algorithm>

#include "lapack/calls/bidiagonal.hpp"
#include "lapack/calls/qr.hpp"

namespace qrv::lapack {

template <class T>
std::int64_t orgbr_work(BidiagonalFactor factor, int m, int n, int k) {
    return factor == BidiagonalFactor::q ? orgqr_work<T>(m, n, k) : orglq_work<T>(m, n, k);
}

template <class T>
void orgbr(BidiagonalFactor factor, int m, int n, int k, Matrix<T> a, const T* tau, T* work, int lwork) {
    const bool q = factor == BidiagonalFactor::q;
    if (m == 0 || n == 0) {
        work[0] = scalar<T>(1);
    } else if (q && m >= k) {
        orgqr(m, n, k, a, tau, work, lwork);
    } else if (!q && k < n) {
        orglq(m, n, k, a, tau, work, lwork);
    } else {
        for (int j = n - 1; j >= 0; --j)
            for (int i = m - 1; i >= 0; --i)
                if (i == 0 || j == 0)
                    a(i, j) = scalar<T>(i == j ? 1 : 0);
                else if (q ? i > j : i < j)
                    a(i, j) = q ? a(i, j - 1) : a(i - 1, j);
        if (q && m > 1)
            orgqr(m - 1, m - 1, m - 1, a.block(1, 1), tau, work, lwork);
        else if (!q && n > 1)
            orglq(n - 1, n - 1, n - 1, a.block(1, 1), tau, work, lwork);
    }
}

template std::int64_t orgbr_work<float>(BidiagonalFactor, int, int, int);
template std::int64_t orgbr_work<SingleComplex>(BidiagonalFactor, int, int, int);
template void orgbr(BidiagonalFactor, int, int, int, Matrix<float>, const float*, float*, int);
template void orgbr(BidiagonalFactor, int, int, int, Matrix<SingleComplex>, const SingleComplex*, SingleComplex*, int);

} // namespace qrv::lapack
