// STRTI2, CTRTI2: inverse of a triangular matrix, in place, column by column.
//
// With the part that is already inverted in A11', the next column of an upper triangle is
//
//     inv [ A11 a12 ]  =  [ A11'  -A11' a12 / a22 ]
//         [     a22 ]     [           1 / a22     ]
//
// and a lower triangle is the same from its last column on.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/triangular.hpp"

namespace qrv::lapack {
namespace {

// Inverts the diagonal element and gives the factor of its column.
template <class T>
T invert_diagonal(Diag diag, T& a) {
    if (diag == Diag::unit)
        return scalar<T>(-1);
    a = scalar<T>(1) / a;
    return -a;
}

} // namespace

template <class T>
void trti2(Uplo uplo, Diag diag, int n, Matrix<T> a) {
    if (uplo == Uplo::upper) {
        for (int j = 0; j < n; ++j) {
            const T factor = invert_diagonal(diag, a(j, j));
            kernel::trmv(uplo, Op::none, diag, j, a, a.column(0, j));
            kernel::scal(j, factor, a.column(0, j));
        }
    } else {
        for (int j = n - 1; j >= 0; --j) {
            const T factor = invert_diagonal(diag, a(j, j));
            if (const int below = n - 1 - j; below > 0) {
                kernel::trmv(uplo, Op::none, diag, below, a.block(j + 1, j + 1), a.column(j + 1, j));
                kernel::scal(below, factor, a.column(j + 1, j));
            }
        }
    }
}

template void trti2(Uplo, Diag, int, Matrix<float>);
template void trti2(Uplo, Diag, int, Matrix<SingleComplex>);

} // namespace qrv::lapack
